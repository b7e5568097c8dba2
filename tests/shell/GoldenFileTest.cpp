// A module file written byte by byte at the offsets of the file layout, not by our writer:
// it pins the header offsets that a save-load-save round trip can't, since a writer and a
// reader that agree on a wrong offset still round-trip.

#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "modules/midi/ChannelOutputs.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

class Bytes {
public:
    explicit Bytes(size_t size) : b_(size, 0) {}
    void i16(size_t at, int v) {
        b_[at] = static_cast<uint8_t>(v & 0xFF);
        b_[at + 1] = static_cast<uint8_t>((v >> 8) & 0xFF);
    }
    void i32(size_t at, int32_t v) {
        for (size_t i = 0; i < 4; ++i) b_[at + i] = static_cast<uint8_t>((static_cast<uint32_t>(v) >> (8 * i)) & 0xFF);
    }
    void fixed(size_t at, const std::string& s, size_t n) {
        for (size_t i = 0; i < n; ++i) b_[at + i] = static_cast<uint8_t>(i < s.size() ? s[i] : ' ');
    }
    // Appending, for the records.
    void u8(int v) { b_.push_back(static_cast<uint8_t>(v)); }
    void w16(int v) {
        u8(v & 0xFF);
        u8((v >> 8) & 0xFF);
    }
    void w32(int32_t v) {
        for (int i = 0; i < 4; ++i) u8(static_cast<int>((static_cast<uint32_t>(v) >> (8 * i)) & 0xFF));
    }
    void str(const std::string& s) {
        w16(static_cast<int>(s.size()));
        for (char c : s) u8(static_cast<unsigned char>(c));
    }
    // The 18-byte head and the name.
    void head(const std::string& name, int page) {
        w16(-1);  // Active
        w16(-1);  // Enabled
        w16(0);   // OutSlot: replaced on load
        w16(0);   // Priority "Default"
        w16(page);
        w32(480);   // Top
        w32(1200);  // Left
        str(name);
    }
    std::vector<uint8_t>& bytes() { return b_; }

private:
    std::vector<uint8_t> b_;
};

int at16(const std::vector<uint8_t>& b, size_t at) { return static_cast<int16_t>(b[at] | b[at + 1] << 8); }

std::vector<uint8_t> goldenPatch() {
    Bytes f(8276);
    f.i32(0x0101, 111);  // FileMagic
    f.i32(0x0105, 29);   // FormatVersion
    f.i16(0x0109, 0);    // CurrentSnapshot
    f.i16(0x010B, 1);    // SnapshotCount
    f.fixed(0x010D, "Golden", 24);
    for (size_t s = 1; s < 128; ++s) f.fixed(0x010D + 24 * s, "", 24);
    f.i16(0x18CB, 133);  // Tempo
    f.i16(0x18CD, 3);    // CurrentPage
    f.fixed(0x1B51, "", 32);
    f.fixed(0x1B71, "", 32);
    f.bytes()[0x1B91] = 200;       // slider 1: more than 7 bits
    f.bytes()[0x1B91 + 15] = 5;    // slider 16
    for (size_t s = 0; s < 16; ++s) f.fixed(0x1BA1 + 32 * s, "", 32);
    f.i16(0x1F3F, 250);   // AbsClock0
    f.i16(0x1F41, 1000);  // AbsClock1
    f.bytes()[0x1F4D] = 127;  // RunState
    f.i16(0x1F52 + 2 * 8, 1);            // one Div, file slot 8 (TypeCountsLow)
    f.i16(0x1DA7 + 2 * (184 - 129), 1);  // one MIDIPoly, file slot 184 (TypeCountsHigh)

    // Div: H 256s 512b. Snapshot 0 divides 127 by 4; the others are unconnected.
    f.head("1Div-", 3);
    for (int s = 0; s < 128; ++s) {
        f.str(s == 0 ? "~ 127" : "");
        f.str(s == 0 ? "~   4" : "");
    }
    for (int i = 0; i < 256; ++i) f.w16(0);

    // MIDIPoly: H 128s 512b: input names, positions, ChanPort and key per snapshot.
    f.head("1PolyOut-", 3);
    for (int s = 0; s < 128; ++s) f.str(s == 0 ? "~  90" : "");
    for (int s = 0; s < 128; ++s) f.w16(0);
    for (int s = 0; s < 128; ++s) f.u8(s == 0 ? 37 : 0);
    for (int s = 0; s < 128; ++s) f.u8(s == 0 ? 60 : 64);
    return f.bytes();
}

}  // namespace

TEST(GoldenFile, AHandBuiltPatchLoadsWithEveryHeaderFieldInPlace) {
    ScratchDir dir;
    const std::vector<uint8_t> golden = goldenPatch();
    // Div: head 18, name 7, 2 names of 7 and 254 empty ones, 512; MIDIPoly: 18, 11, 7 + 127 x 2, 512.
    ASSERT_EQ(golden.size(), 8276u + (18 + 7 + 14 + 508 + 512) + (18 + 11 + 7 + 254 + 512));
    writeBytes(dir.file("golden.qmp"), golden);

    SessionHarness h;
    ASSERT_EQ(h.load(dir.file("golden.qmp")), "");
    Engine& e = h.session.engine;
    EXPECT_EQ(e.Tempo(), 133);
    EXPECT_EQ(e.CurrentPage(), 3);
    EXPECT_EQ(e.SnapshotCount, 1);
    EXPECT_EQ(h.session.snapshots.SnapshotNames[0], "Golden");
    EXPECT_EQ(e.bus[sysbus::FirstSlider], 200) << "slider values are kept as the header holds them";
    EXPECT_EQ(e.bus[static_cast<BusId>(sysbus::FirstSlider + 15)], 5);
    EXPECT_EQ(e.options.absClockA, 250);
    EXPECT_EQ(e.options.absClockB, 1000);
    EXPECT_EQ(e.bus[sysbus::Run], 127);
    EXPECT_EQ(h.moduleCount(), 2u);

    Module* div = e.findModule("1Div-");
    ASSERT_NE(div, nullptr);
    EXPECT_EQ(div->Page, 3);
    EXPECT_EQ(div->Top, 480);
    EXPECT_EQ(div->Left, 1200);
    EXPECT_EQ(div->priority(), priority::Default);
    ModuleTypeSlot& polys = e.typeSlot(*typeIdByName("MIDIPoly"));
    ASSERT_EQ(polys.SaveCount(), 1u) << "the count of a type past slot 128 stands in the high block";
    const auto& poly = static_cast<const MIDIPoly&>(*polys.at(0));
    EXPECT_EQ(poly.ChanPort, 37);
    EXPECT_EQ(poly.key, 60);
    EXPECT_EQ(poly.InputBus[0], constantBus(90));
    {
        auto held = e.lock();
        e.tick();
    }
    EXPECT_EQ(e.bus[div->OutBus], 31) << "the Div's stored names connected it";

    // Saved again, the same fields stand at the same offsets.
    ASSERT_EQ(h.save(dir.file("again.qmp")), "");
    const auto again = readBytes(dir.file("again.qmp"));
    ASSERT_EQ(again.size(), golden.size());
    for (size_t at : {size_t{0x0101}, size_t{0x0105}, size_t{0x010B}, size_t{0x18CB}, size_t{0x18CD}, size_t{0x1F3F},
                      size_t{0x1F41}, size_t{0x1F52 + 16}, size_t{0x1DA7 + 110}})
        EXPECT_EQ(at16(again, at), at16(golden, at)) << "offset 0x" << std::hex << at;
    EXPECT_EQ(again[0x1F4D], 127);
    EXPECT_EQ(again[0x1B91], 200);
    EXPECT_EQ(again[0x1B91 + 15], 5);
}
