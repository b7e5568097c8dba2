// The text form of a patch: byte-exact round trips, hand edits, small diffs, and documents
// that must be refused without touching the open patch.

#include <gtest/gtest.h>

#include <sstream>

#include "engine/RegularFile.h"
#include "shell/FileHeader.h"
#include "shell/PatchJson.h"
#include "tests/shell/SessionHarness.h"

namespace quillmer {
namespace {

using testing::ScratchDir;
using testing::SessionHarness;

bool builtHere(ModuleTypeId id) { return builtTypes().isBuilt(id); }

std::string toText(const std::vector<uint8_t>& bytes) {
    std::string text;
    std::string reason;
    EXPECT_TRUE(patchToJson(bytes, builtHere, text, reason)) << reason;
    return text;
}

std::vector<uint8_t> fromText(const std::string& text) {
    std::vector<uint8_t> bytes;
    std::string reason;
    EXPECT_TRUE(patchFromJson(text, bytes, reason)) << reason;
    return bytes;
}

std::string refusal(const std::string& text) {
    std::vector<uint8_t> bytes;
    std::string reason;
    EXPECT_FALSE(patchFromJson(text, bytes, reason));
    return reason;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Lines of `b` that `a` doesn't have at the same place (both of one length).
size_t changedLines(const std::string& a, const std::string& b) {
    const auto x = linesOf(a);
    const auto y = linesOf(b);
    if (x.size() != y.size()) return SIZE_MAX;
    size_t n = 0;
    for (size_t i = 0; i < x.size(); ++i) n += x[i] != y[i];
    return n;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

std::vector<std::string> shippedPatches() {
    std::vector<std::string> paths;
    for (const char* folder : {"/tests/data", "/examples", "/fuzz/corpus/qmp"})
        for (const auto& entry : std::filesystem::directory_iterator(std::string(QUILLMER_SOURCE_DIR) + folder))
            if (entry.path().extension() == ".qmp") paths.push_back(entry.path().string());
    return paths;
}

TEST(PatchJson, EveryShippedPatchComesBackByteForByte) {
    const auto paths = shippedPatches();
    ASSERT_GE(paths.size(), 3u);
    for (const std::string& path : paths) {
        std::vector<uint8_t> bytes;
        std::string reason;
        ASSERT_TRUE(readRegularFile(path, size_t{64} << 20, bytes, reason)) << reason;
        const std::string text = toText(bytes);
        EXPECT_EQ(fromText(text), bytes) << path;
        EXPECT_EQ(toText(fromText(text)), text) << path;  // the text is stable too
    }
}

TEST(PatchJson, WhatTheHeaderDoesNotModelAndBytesPastTheContentSurvive) {
    SessionHarness h;
    h.add("Div");
    std::vector<uint8_t> bytes;
    std::string error;
    ASSERT_TRUE(h.session.ModuleFileBytes(bytes, "x.qmp", error)) << error;
    bytes[3] = 0x5A;       // a reserved byte that isn't zero
    bytes[0x1E40] = 0x01;  // another reserved area
    bytes.insert(bytes.end(), {1, 2, 3, 4, 5});  // an old tail
    const std::string text = toText(bytes);
    EXPECT_NE(text.find("\"headerBytes\""), std::string::npos);
    EXPECT_NE(text.find("\"tail\""), std::string::npos);
    EXPECT_EQ(fromText(text), bytes);
}

TEST(PatchJson, RecordsInRetiredSlotsStayWholeAsBase64) {
    std::string error;
    // A record in a retired slot (k 9), which the loader drops, is kept by the text.
    SessionHarness empty;
    std::vector<uint8_t> small;
    ASSERT_TRUE(empty.session.ModuleFileBytes(small, "x.qmp", error)) << error;
    FileHeader smallHeader = FileHeader::read(small.data());
    smallHeader.typeCounts[9] = 1;
    const std::vector<uint8_t> head = smallHeader.write();
    std::copy(head.begin(), head.end(), small.begin());
    std::vector<uint8_t> retired = blankRecordBytes(parseLayout(fileOrder()[9].layout));
    retired[0] = 0xFF;
    retired[1] = 0xFF;
    small.insert(small.end(), retired.begin(), retired.end());
    const std::string withRetired = toText(small);
    EXPECT_NE(withRetired.find("\"retired\": 9"), std::string::npos);
    EXPECT_EQ(fromText(withRetired), small);
}

TEST(PatchJson, SnapshotsAModuleHoldsAlikeAreWrittenOnce) {
    SessionHarness h;
    Module& step = h.add("Step8");
    (void)step;
    std::vector<uint8_t> bytes;
    std::string error;
    ASSERT_TRUE(h.session.ModuleFileBytes(bytes, "x.qmp", error)) << error;
    const std::string text = toText(bytes);
    // Snapshot 0 (stored by the save) and slot 1, where the 127 alike start; no more.
    EXPECT_NE(text.find("\"0\": {\"inputs\":[\" Off (0)\"],\"ids\":[0],\"settings\":[0,0,0,0,0,0,0,0]}"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\"1\": {\"inputs\":[\"\"]}"), std::string::npos) << text;  // only what differs
    EXPECT_EQ(text.find("\"2\": {"), std::string::npos) << text;
    EXPECT_LT(linesOf(text).size(), 120u);
}

TEST(PatchJson, ASmallChangeIsASmallDiff) {
    SessionHarness h;
    h.add("Step8");
    Module& div = h.add("Div");
    h.add("Add");
    std::vector<uint8_t> before;
    std::string error;
    ASSERT_TRUE(h.session.ModuleFileBytes(before, "x.qmp", error)) << error;
    h.connect(div, 1, "~ Turbo");
    div.PatchStore(h.session.engine);  // into the current snapshot
    h.session.engine.bus[sysbus::FirstSlider] = 99;  // and one header field
    std::vector<uint8_t> after;
    ASSERT_TRUE(h.session.ModuleFileBytes(after, "x.qmp", error)) << error;
    const std::string a = toText(before);
    const std::string b = toText(after);
    ASSERT_NE(a, b);
    EXPECT_LE(changedLines(a, b), 3u);
}

TEST(PatchJson, AHandEditedTextLoadsWithItsChange) {
    ScratchDir dir;
    SessionHarness h;
    Module& div = h.add("Div");
    div.Name = "3Div-";
    ASSERT_EQ(h.save(dir.file("a.qmj")), "");
    std::vector<uint8_t> raw;
    std::string reason;
    ASSERT_TRUE(readRegularFile(dir.file("a.qmj"), 1 << 24, raw, reason));
    std::string text(raw.begin(), raw.end());
    text = replaced(text, "\"tempo\": 120", "\"tempo\": 97");
    text = replaced(text, "\"000 AutoSave\"", "\"000 AutoSave\", \"001 Chorus\"");
    text = replaced(text, "\"snapshotCount\": 1", "\"snapshotCount\": 2");
    testing::writeBytes(dir.file("b.qmj"), {text.begin(), text.end()});

    SessionHarness other;
    std::string error;
    auto held = other.session.engine.lock();
    ASSERT_TRUE(other.session.OpenFile(dir.file("b.qmj"), error)) << error << other.session.loadProblem;
    EXPECT_EQ(other.session.engine.Tempo(), 97);
    EXPECT_EQ(other.session.engine.SnapshotCount, 2);
    EXPECT_EQ(other.session.snapshots.SnapshotNames[1], "001 Chorus");
    EXPECT_EQ(other.moduleCount(), 1u);
    EXPECT_EQ(other.session.CurrentFileName, dir.file("b.qmj"));
}

TEST(PatchJson, AnInputRenamedInTheTextIsConnectedOnLoad) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("a.qmj")), "");
    std::vector<uint8_t> raw;
    std::string reason;
    ASSERT_TRUE(readRegularFile(dir.file("a.qmj"), 1 << 24, raw, reason));
    const std::string text = std::string(raw.begin(), raw.end());
    const size_t inputs = text.find("\"inputs\":[");
    ASSERT_NE(inputs, std::string::npos);
    const size_t end = text.find(']', inputs);
    const std::string edited = text.substr(0, inputs) + "\"inputs\":[\"~ Turbo\",\"~ Turbo\"" + text.substr(end);
    testing::writeBytes(dir.file("b.qmj"), {edited.begin(), edited.end()});

    SessionHarness other;
    ASSERT_EQ(other.load(dir.file("b.qmj")), "");
    Module* loaded = nullptr;
    other.session.engine.forEachModule([&](Module& m) { loaded = &m; });
    ASSERT_NE(loaded, nullptr);
    const auto& names = other.session.engine.names;
    EXPECT_EQ(loaded->inputCaption(0, names), "~ Turbo");
    EXPECT_EQ(loaded->inputCaption(1, names), "~ Turbo");
}

TEST(PatchJson, MalformedDocumentsAreRefusedWithTheirPlace) {
    EXPECT_NE(refusal("{\n  \"format\": \"Quillmer patch\",\n  \"header\": {,}\n}").find("line 3, column 14"),
              std::string::npos)
        << refusal("{\n  \"format\": \"Quillmer patch\",\n  \"header\": {,}\n}");
    EXPECT_NE(refusal("").find("line 1, column 1"), std::string::npos);
    EXPECT_NE(refusal("[1,2]").find("object"), std::string::npos);
    EXPECT_NE(refusal("{\"format\": \"something else\"}").find("not a Quillmer patch text"), std::string::npos);
    EXPECT_NE(refusal("{\"format\": \"Quillmer patch\", \"textVersion\": 9}").find("newer"), std::string::npos);
}

TEST(PatchJson, WrongValuesAreRefusedNamingWhereTheyStand) {
    SessionHarness h;
    h.add("Div");
    h.add("Div");
    std::vector<uint8_t> bytes;
    std::string error;
    ASSERT_TRUE(h.session.ModuleFileBytes(bytes, "x.qmp", error)) << error;
    const std::string text = toText(bytes);

    EXPECT_NE(refusal(replaced(text, "\"tempo\": 120", "\"tempo\": 99999")).find("\"tempo\""), std::string::npos);
    EXPECT_NE(refusal(replaced(text, "\"index\": 1,", "\"index\": 2,")).find("skip index 1"), std::string::npos);
    EXPECT_NE(refusal(replaced(text, "\"index\": 1,", "\"index\": 0,")).find("twice"), std::string::npos);
    EXPECT_NE(refusal(replaced(text, "\"type\": \"Div\"", "\"type\": \"Nope\"")).find("not a module type"),
              std::string::npos);
    EXPECT_NE(refusal(replaced(text, "\"ids\":[0,0]", "\"ids\":[0]")).find("list of 2"), std::string::npos);
    EXPECT_NE(refusal(replaced(text, "\"000 AutoSave\"", "\"a name far longer than twenty-four\""))
                  .find("longer than 24"),
              std::string::npos);
}

TEST(PatchJson, AFailedTextLoadLeavesTheOpenPatchAsItWas) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("good.qmp")), "");
    testing::writeBytes(dir.file("bad.qmj"), {'{', '\n', '"', 'x'});
    auto held = h.session.engine.lock();
    std::string error;
    ASSERT_TRUE(h.session.OpenFile(dir.file("good.qmp"), error)) << error;
    EXPECT_FALSE(h.session.OpenFile(dir.file("bad.qmj"), error));
    EXPECT_EQ(error, "Unable to Load: " + dir.file("bad.qmj"));
    EXPECT_NE(h.session.loadProblem.find("line 2, column"), std::string::npos) << h.session.loadProblem;
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_EQ(h.session.CurrentFileName, dir.file("good.qmp"));
}

TEST(PatchJson, SavingTheTextFormAndOpeningItKeepsThePatch) {
    ScratchDir dir;
    SessionHarness h;
    Module& step = h.add("Step8");
    step.Name = "Riff-";
    h.session.engine.SetNewTempo(133);
    ASSERT_EQ(h.save(dir.file("song.qmj")), "");
    EXPECT_FALSE(h.session.ModifiedMark);
    ASSERT_EQ(h.save(dir.file("song.qmp")), "");

    SessionHarness other;
    ASSERT_EQ(other.load(dir.file("song.qmj")), "");
    ASSERT_EQ(other.save(dir.file("again.qmp")), "");
    // The same user saved both: the files match except nothing.
    EXPECT_EQ(testing::readBytes(dir.file("again.qmp")), testing::readBytes(dir.file("song.qmp")));
    EXPECT_EQ(other.session.engine.Tempo(), 133);
}

}  // namespace
}  // namespace quillmer
