#include "shell/FileHeader.h"

#include "engine/RecordBytes.h"

namespace quillmer {

namespace {

// Offsets of the fields that stand after a reserved gap.
constexpr size_t kMagicAt = 0x0101;
constexpr size_t kAuthorAt = 0x1B51;
constexpr size_t kCountsHighAt = 0x1DA7;
constexpr size_t kLockPageHideAt = 0x1E35;
constexpr size_t kAbsClockAt = 0x1F3F;
constexpr int kLowCounts = 129;  // file slots 0..128; 129..196 stand earlier in the header

void pad(ByteWriter& out, size_t to) {
    while (out.size() < to) out.u8(0);
}

}  // namespace

std::vector<uint8_t> FileHeader::write() const {
    ByteWriter out;
    pad(out, kMagicAt);
    out.i32(magic);
    out.i32(version);
    out.i16(currentSnapshot);
    out.i16(snapshotCount);
    for (const std::string& name : snapshotNames) out.fixed(name, 24);
    for (uint8_t s : composerSnapshots) out.u8(s);
    for (int16_t m : composerMeasures) out.i16(m);
    out.i16(composerCount);
    out.i16(composerEnd);
    out.i16(composerBegin);
    out.i16(tempo);
    out.i16(currentPage);
    pad(out, kAuthorAt);
    out.fixed(authorName, 32);
    out.fixed(modifierName, 32);
    for (uint8_t v : sliderValues) out.u8(v);
    for (const std::string& label : sliderLabels) out.fixed(label, 32);
    out.i16(sliderPanelTop);
    out.i16(sliderPanelLeft);
    out.i16(0);
    for (int k = kLowCounts; k < kFileSlotCount; ++k) out.i16(typeCounts[static_cast<size_t>(k)]);
    pad(out, kLockPageHideAt);
    out.u8(lockPageHide);
    out.u8(pageHide);
    out.u8(lockModules);
    pad(out, kAbsClockAt);
    out.i16(absClock0);
    out.i16(absClock1);
    out.i16(versionMajor);
    out.i16(versionMinor);
    out.i16(versionRevision);
    out.u8(sliderSend);
    out.u8(sliderChannel);
    out.u8(sliderGroup1);
    out.u8(sliderGroup2);
    out.u8(runState);
    out.i16(mainWidth);
    out.i16(mainHeight);
    for (int k = 0; k < kLowCounts; ++k) out.i16(typeCounts[static_cast<size_t>(k)]);
    return out.bytes();
}

FileHeader FileHeader::read(const uint8_t* bytes) {
    FileHeader h;
    ByteReader in(bytes, kHeaderSize);
    in.raw(kMagicAt);
    h.magic = in.i32();
    h.version = in.i32();
    h.currentSnapshot = in.i16();
    h.snapshotCount = in.i16();
    for (std::string& name : h.snapshotNames) name = in.fixed(24);
    for (uint8_t& s : h.composerSnapshots) s = in.u8();
    for (int16_t& m : h.composerMeasures) m = in.i16();
    h.composerCount = in.i16();
    h.composerEnd = in.i16();
    h.composerBegin = in.i16();
    h.tempo = in.i16();
    h.currentPage = in.i16();
    in.raw(kAuthorAt - in.position());
    h.authorName = in.fixed(32);
    h.modifierName = in.fixed(32);
    for (uint8_t& v : h.sliderValues) v = in.u8();
    for (std::string& label : h.sliderLabels) label = in.fixed(32);
    h.sliderPanelTop = in.i16();
    h.sliderPanelLeft = in.i16();
    in.i16();
    for (int k = kLowCounts; k < kFileSlotCount; ++k) h.typeCounts[static_cast<size_t>(k)] = in.i16();
    in.raw(kLockPageHideAt - in.position());
    h.lockPageHide = in.u8();
    h.pageHide = in.u8();
    h.lockModules = in.u8();
    in.raw(kAbsClockAt - in.position());
    h.absClock0 = in.i16();
    h.absClock1 = in.i16();
    h.versionMajor = in.i16();
    h.versionMinor = in.i16();
    h.versionRevision = in.i16();
    h.sliderSend = in.u8();
    h.sliderChannel = in.u8();
    h.sliderGroup1 = in.u8();
    h.sliderGroup2 = in.u8();
    h.runState = in.u8();
    h.mainWidth = in.i16();
    h.mainHeight = in.i16();
    for (int k = 0; k < kLowCounts; ++k) h.typeCounts[static_cast<size_t>(k)] = in.i16();
    return h;
}

}  // namespace quillmer
