// Loading and saving a whole patch: the header, then every type's records in file order.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "engine/AtomicFile.h"
#include "engine/FileLayout.h"
#include "engine/RegularFile.h"
#include "shell/AuthorName.h"
#include "shell/PatchJson.h"
#include "shell/Session.h"

namespace quillmer {

namespace {

std::string trimmed(const std::string& text) {
    const size_t end = text.find_last_not_of(' ');
    return end == std::string::npos ? std::string() : text.substr(0, end + 1);
}

// A layout without "H" keeps the same words in its leading block, and the name wherever its
// type puts it: such a type reads and writes the whole block, and its name, in its body.
void writeHead(ByteWriter& out, const Module& m) {
    out.i16(m.Active);
    out.i16(m.Enabled);
    out.i16(m.OutSlot);
    out.i16(m.priority());
    out.i16(m.Page);
    if (const auto word = m.headWord()) {
        out.i16(static_cast<int16_t>(m.Top));
        out.u16(*word);
    } else {
        out.i32(m.Top);
    }
    out.i32(m.Left);
    m.writeHeadTail(out);
    out.str(m.Name);
}

void readHead(ByteReader& in, Module& m) {
    m.Active = in.i16();
    m.Enabled = in.i16();
    m.OutSlot = in.i16();
    m.setPriority(in.i16());
    m.Page = in.i16();
    m.Top = in.i32();
    if (m.headWord()) {
        m.setHeadWord(static_cast<uint16_t>(static_cast<uint32_t>(m.Top) >> 16));
        m.Top = static_cast<int16_t>(m.Top & 0xFFFF);
    }
    m.Left = in.i32();
    m.readHeadTail(in);
    m.Name = in.str();
}

// A placeholder's record as read: the head words stand first whatever the layout.
void readPlaceholderHead(PlaceholderModule& m, const std::vector<LayoutToken>& layout) {
    ByteReader in(m.record);
    m.Active = in.i16();
    m.Enabled = in.i16();
    m.OutSlot = in.i16();
    m.setPriority(in.i16());
    m.Page = in.i16();
    if (in.remaining() >= 8) {
        m.Top = in.i32();
        m.Left = in.i32();
    }
    if (layout.front().kind == LayoutToken::Kind::Head) {
        m.Name = in.str();
    } else if (m.info().hasOutput() && layout.size() > 1 && layout[1].kind == LayoutToken::Kind::Strings) {
        ByteReader afterBlock(m.record.data() + layout[0].count, m.record.size() - layout[0].count);
        m.Name = afterBlock.str();
    }
}

// A placeholder made in this session: a blank record of its layout with its head filled in.
std::vector<uint8_t> placeholderRecord(const Module& m, const std::vector<LayoutToken>& layout) {
    std::vector<uint8_t> blank = blankRecordBytes(layout);
    ByteWriter head;
    writeHead(head, m);
    if (layout.front().kind == LayoutToken::Kind::Head) {
        std::vector<uint8_t> bytes = head.bytes();
        bytes.insert(bytes.end(), blank.begin() + 20, blank.end());  // after 18 head bytes and an empty name
        return bytes;
    }
    const size_t words = std::min<size_t>(10, blank.size());
    std::copy_n(head.bytes().begin(), words, blank.begin());
    return blank;
}

// Reads one record's bytes into `m`, a blank record of its type.
void readModule(Module& m, OutputNames& names, std::span<const uint8_t> record, const std::vector<LayoutToken>& layout) {
    if (m.isPlaceholder()) {
        auto& p = static_cast<PlaceholderModule&>(m);
        p.record.assign(record.begin(), record.end());
        readPlaceholderHead(p, layout);
        return;
    }
    ByteReader in(record.data(), record.size());
    if (!m.writesOwnHead()) readHead(in, m);
    m.readBody(in, names);
    if (in.remaining() != 0) throw RecordFormatError("record longer than its type reads");
}

// Appends one record to `out`.
void writeModule(ByteWriter& out, const Module& m, const OutputNames& names, const std::vector<LayoutToken>& layout) {
    if (m.isPlaceholder()) {
        const auto& p = static_cast<const PlaceholderModule&>(m);
        out.raw(p.record.empty() ? placeholderRecord(m, layout) : p.record);
        return;
    }
    if (!m.writesOwnHead()) writeHead(out, m);
    m.writeBody(out, names);
}

// The largest .qmp file its own header allows: the header and every counted record at its
// longest. Nothing past that is read (a longer file's old tail is never looked at).
uint64_t largestFileFor(const FileHeader& header) {
    uint64_t total = kHeaderSize;
    for (const FileSlot& slot : fileOrder()) {
        const int16_t count = header.typeCounts[static_cast<size_t>(slot.k)];
        if (count <= 0) continue;
        const uint64_t record = maxRecordBytes(parseLayout(slot.layout));
        if (record > (UINT64_MAX - total) / static_cast<uint64_t>(count)) return UINT64_MAX;
        total += record * static_cast<uint64_t>(count);
    }
    return total;
}

}  // namespace

bool readModuleFileBytes(const std::string& path, std::vector<uint8_t>& bytes, std::string& reason) {
    bytes.clear();
    if (isPatchJsonPath(path)) return readPatchJsonFile(path, bytes, reason);
    RegularFile file;
    if (!file.open(path, reason) || !file.read(kHeaderSize, bytes, reason)) return false;
    if (bytes.size() < kHeaderSize) {
        reason = "the file is shorter than a module file's header";
        return false;
    }
    const uint64_t largest = largestFileFor(FileHeader::read(bytes.data())) - kHeaderSize;
    return file.read(static_cast<size_t>(std::min<uint64_t>(largest, SIZE_MAX)), bytes, reason);
}

bool checkModuleBytes(const std::vector<uint8_t>& bytes, std::string& reason) {
    if (bytes.size() < kHeaderSize) {
        reason = "the file is shorter than a module file's header";
        return false;
    }
    const FileHeader header = FileHeader::read(bytes.data());
    if (header.magic != kFileMagic || header.version > kFormatVersion) {
        reason = "it is not a module file of a version this program reads";
        return false;
    }
    ByteReader in(bytes.data() + kHeaderSize, bytes.size() - kHeaderSize);
    for (const FileSlot& slot : fileOrder()) {
        const int16_t count = header.typeCounts[static_cast<size_t>(slot.k)];
        if (count == 0) continue;
        const std::string type = slot.retired() ? "a retired type" : "type " + std::string(slot.type);
        if (count < 0) {
            reason = "the count of " + type + " is negative (" + std::to_string(count) + ")";
            return false;
        }
        const std::vector<LayoutToken> layout = parseLayout(slot.layout);
        for (int16_t i = 0; i < count; ++i) {
            const size_t start = kHeaderSize + in.position();
            try {
                skipRecord(in, layout);
            } catch (const RecordFormatError& e) {
                const std::string which = "record " + std::to_string(i + 1) + " of " + std::to_string(count) + " of " + type;
                if (std::string_view(e.what()) == "record ends early")
                    reason = "the file is truncated at byte " + std::to_string(bytes.size()) + ", inside " + which +
                             " (which starts at byte " + std::to_string(start) + ")";
                else
                    reason = which + " at byte " + std::to_string(start) + " does not parse: " + e.what();
                return false;
            }
        }
    }
    return true;
}

bool readPatchJsonFile(const std::string& path, std::vector<uint8_t>& bytes, std::string& reason) {
    RegularFile file;
    std::vector<uint8_t> text;
    if (!file.open(path, reason)) return false;
    if (file.size() > kLargestPatchJson) {
        reason = "the file is larger than any patch text (" + std::to_string(file.size()) + " bytes)";
        return false;
    }
    if (!file.read(kLargestPatchJson, text, reason)) return false;
    return patchFromJson({reinterpret_cast<const char*>(text.data()), text.size()}, bytes, reason);
}

namespace {

// Appends what an existing, longer file holds past the end of `bytes`; only that is read.
bool appendOldTail(const std::string& path, std::vector<uint8_t>& bytes, std::string& reason) {
    RegularFile old;
    if (!old.open(path, reason)) return false;
    if (old.size() <= bytes.size()) return true;
    return old.readAt(bytes.size(), static_cast<size_t>(old.size() - bytes.size()), bytes, reason);
}

// Writes `bytes` to a temporary file beside `path` and renames it over `path`.
bool writeAtomically(AtomicFile& file, const std::vector<uint8_t>& bytes, std::string& error) {
    const int fd = ::open(file.tempPath().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) {
        error = saveError(file.target(), std::strerror(errno));
        return false;
    }
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            error = saveError(file.target(), n < 0 ? std::strerror(errno) : "nothing could be written");
            ::close(fd);
            return false;
        }
        written += static_cast<size_t>(n);
    }
    if (::close(fd) != 0) {
        error = saveError(file.target(), std::strerror(errno));
        return false;
    }
    return file.commit(error);
}

}  // namespace

bool writeWholeFile(const std::string& path, const std::vector<uint8_t>& bytes, std::string& error) {
    AtomicFile file(path);
    return file.create(error) && writeAtomically(file, bytes, error);
}

bool Session::LoadModuleFile(const std::string& path, std::string& error) {
    // The modules go first whatever happens: here on a failed read, else in LoadModuleBytes.
    std::vector<uint8_t> bytes;
    loadProblem.clear();
    if (!readModuleFileBytes(path, bytes, loadProblem)) {
        RemoveAllModules();
        engine.names.Init();
        error = "Unable to Load: " + path;
        return false;
    }
    return LoadModuleBytes(bytes, path, error);
}

bool Session::LoadModuleBytes(const std::vector<uint8_t>& bytes, const std::string& path, std::string& error) {
    RemoveAllModules();
    loadProblem.clear();
    bool restoring = false;  // some records may be in place
    const auto fail = [&](const std::string& message, const std::string& problem) {
        if (restoring) RemoveAllModules();
        engine.names.Init();
        error = message + path;
        loadProblem = problem;
        return false;
    };
    if (bytes.size() < kHeaderSize) return fail("Unable to Load: ", "the file is shorter than a module file's header");
    const FileHeader header = FileHeader::read(bytes.data());
    // Only a wrong magic or a newer format is refused; any older version number loads.
    if (header.magic != kFileMagic || header.version > kFormatVersion)
        return fail("Incompatible File: ", "it is not a module file of a version this program reads");

    kept = header;
    composer.resetPosition();  // the play position isn't stored
    engine.SetNewTempo(header.tempo);
    engine.CurrentSnapshot = std::clamp<int16_t>(header.currentSnapshot, 0, kSnapshotCount - 1);
    engine.SnapshotCount = std::clamp<int16_t>(header.snapshotCount, 0, kSnapshotCount);
    for (size_t i = 0; i < snapshots.SnapshotNames.size(); ++i) snapshots.SnapshotNames[i] = trimmed(header.snapshotNames[i]);
    author = trimmed(transformName(header.authorName));
    modifier = trimmed(transformName(header.modifierName));
    fileVersion = header.versionNumber();
    engine.options.lockModules = header.lockModules != 0;
    for (int i = 0; i < kSliderCount; ++i)  // the byte as the header holds it
        engine.bus[static_cast<BusId>(sysbus::FirstSlider + i)] = header.sliderValues[static_cast<size_t>(i)];
    engine.options.absClockA = header.absClock0;
    engine.options.absClockB = header.absClock1;

    restoring = true;
    try {
        ByteReader in(bytes.data() + kHeaderSize, bytes.size() - kHeaderSize);
        for (const FileSlot& slot : fileOrder()) {
            const int16_t count = header.typeCounts[static_cast<size_t>(slot.k)];
            if (count == 0) continue;
            if (count < 0) throw RecordFormatError("negative record count");
            const std::vector<LayoutToken> layout = parseLayout(slot.layout);
            if (slot.retired()) {
                for (int16_t i = 0; i < count; ++i) readRecordBytes(in, layout);  // parsed and dropped
                continue;
            }
            const ModuleTypeId type = *typeIdByName(slot.type);
            for (int16_t i = 0; i < count; ++i)
                readModule(engine.loadRecord(type), engine.names, recordSpan(in, layout), layout);
            engine.restoreInstances(type);
        }
    } catch (const RecordFormatError& e) {
        return fail("Unable to Load: ", e.what());
    } catch (const std::exception& e) {
        return fail("Unable to Load: ", e.what());
    }

    engine.finishRestore();
    snapshots.SetNewPatch();
    SetModified(false);
    engine.showPage(std::clamp<int>(header.currentPage, 0, kPageCount - 1));
    engine.bus[sysbus::Page] = static_cast<uint8_t>(engine.CurrentPage());
    engine.markPatchLoaded();
    engine.setRun(header.runState != 0);
    return true;
}

bool Session::SaveModuleFile(const std::string& path, std::string& error) {
    std::vector<uint8_t> bytes;
    if (!ModuleFileBytes(bytes, path, error)) return false;
    std::string reason;
    if (isPatchJsonPath(path)) {
        std::string text;
        const auto built = [this](ModuleTypeId id) { return engine.registry().isBuilt(id); };
        if (!patchToJson(bytes, built, text, reason)) {
            error = saveError(path, reason);
            return false;
        }
        bytes.assign(text.begin(), text.end());
    }
    // Only a regular file is replaced, through its symbolic links, keeping its mode.
    AtomicFile file(path);
    if (!file.create(error)) return false;
    // A shorter patch saved over a longer file leaves the old tail behind it, unread.
    if (!isPatchJsonPath(path) && file.targetExists() && !appendOldTail(file.resolvedTarget(), bytes, reason)) {
        error = saveError(path, reason);
        return false;
    }
    if (!writeAtomically(file, bytes, error)) return false;
    // The saved mark follows success only.
    SetModified(false);
    return true;
}

bool Session::ModuleFileBytes(std::vector<uint8_t>& bytes, const std::string& path, std::string& error) {
    snapshots.doPatchAuto();

    FileHeader header = kept;
    header.modifierName = transformName(userName.substr(0, 32));
    header.authorName = author.empty() ? header.modifierName : transformName(trimmed(author.substr(0, 32)));
    modifier = userName;
    if (author.empty()) author = userName;
    header.versionMajor = ProgramVersion::major;
    header.versionMinor = ProgramVersion::minor;
    header.versionRevision = ProgramVersion::revision;
    fileVersion = header.versionNumber();
    return encodePatch(header, bytes, path, error);
}

bool Session::encodePatch(FileHeader header, std::vector<uint8_t>& bytes, const std::string& path, std::string& error) {
    header.magic = kFileMagic;
    header.version = kFormatVersion;
    header.currentSnapshot = engine.CurrentSnapshot;
    header.snapshotCount = engine.SnapshotCount;
    for (size_t i = 0; i < header.snapshotNames.size(); ++i) header.snapshotNames[i] = snapshots.SnapshotNames[i];
    header.tempo = static_cast<int16_t>(engine.Tempo());
    header.currentPage = static_cast<int16_t>(engine.CurrentPage());
    header.lockModules = engine.options.lockModules ? 1 : 0;
    header.runState = engine.bus[sysbus::Run];
    for (int i = 0; i < kSliderCount; ++i)
        header.sliderValues[static_cast<size_t>(i)] = engine.bus[static_cast<BusId>(sysbus::FirstSlider + i)];
    header.absClock0 = static_cast<int16_t>(engine.options.absClockA);
    header.absClock1 = static_cast<int16_t>(engine.options.absClockB);

    // The records after the header, each checked against its layout where it was written.
    ByteWriter out;
    out.reserve(lastSaveBytes_);  // a patch saved again is mostly as long as it was
    out.raw(FileHeader{}.write());
    for (const FileSlot& slot : fileOrder()) {
        header.typeCounts[static_cast<size_t>(slot.k)] = 0;
        if (slot.retired()) continue;
        const ModuleTypeSlot& type = engine.typeSlot(*typeIdByName(slot.type));
        const size_t count = type.SaveCount();
        header.typeCounts[static_cast<size_t>(slot.k)] = static_cast<int16_t>(count);
        const std::vector<LayoutToken> layout = parseLayout(slot.layout);
        for (size_t i = 0; i < count; ++i) {
            const size_t start = out.size();
            writeModule(out, *type.at(static_cast<int16_t>(i)), engine.names, layout);
            ByteReader check(out.bytes().data() + start, out.size() - start);
            bool fits = false;
            try {
                skipRecord(check, layout);
                fits = check.remaining() == 0;
            } catch (const RecordFormatError&) {
            }
            if (!fits) {
                error = saveError(path, "a " + std::string(slot.type) + " record doesn't fit its layout");
                return false;
            }
        }
    }
    lastSaveBytes_ = out.size();
    bytes = out.take();
    const std::vector<uint8_t> head = header.write();
    std::copy(head.begin(), head.end(), bytes.begin());
    return true;
}

}  // namespace quillmer
