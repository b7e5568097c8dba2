// Undo and redo of every kind of patch edit, applied as the desktop program applies them;
// and an open that fails leaving the open patch whole.

#include <gtest/gtest.h>

#include "modules/sequencers/Steps.h"
#include "shell/EditCommands.h"
#include "tests/shell/SessionHarness.h"

namespace quillmer::testing {
namespace {

ModuleTypeId type(std::string_view name) { return *typeIdByName(name); }

Module* find(Session& s, const std::string& name) {
    Module* found = nullptr;
    s.engine.forEachModule([&](Module& m) {
        if (m.Name == name) found = &m;
    });
    return found;
}

uint16_t position(Session& s, std::string_view output) {
    return static_cast<uint16_t>(s.engine.names.sortedPosition(output));
}

std::string inputName(Session& s, const std::string& module, int input) {
    Module* m = find(s, module);
    return m ? std::string(s.engine.names.sortedName(m->InputPosition.at(static_cast<size_t>(input)))) : "(gone)";
}

struct Undo : SessionHarness {
    void undo() {
        std::string error;
        ASSERT_TRUE(session.history.undo(error)) << error;
    }
    void redo() {
        std::string error;
        ASSERT_TRUE(session.history.redo(error)) << error;
    }
};

TEST(EditHistory, PlaceDeleteAndMoveGoBackAndForth) {
    Undo h;
    Session& s = h.session;
    Module& first = placeModule(s, type("Div"), 0, 300, 600);
    const std::string name = first.Name;
    placeModule(s, type("Div"), 2, 900, 900);
    EXPECT_EQ(h.moduleCount(), 2u);
    EXPECT_TRUE(s.ModifiedMark);

    moveModule(s, *find(s, name), 1, 4500, 3000);
    deleteModule(s, *find(s, name));
    EXPECT_EQ(h.moduleCount(), 1u);

    h.undo();  // the delete
    ASSERT_NE(find(s, name), nullptr);
    EXPECT_EQ(find(s, name)->Page, 1);
    EXPECT_EQ(find(s, name)->Top, 4500);
    h.undo();  // the move
    EXPECT_EQ(find(s, name)->Page, 0);
    EXPECT_EQ(find(s, name)->Left, 600);
    h.undo();  // the second place
    EXPECT_EQ(h.moduleCount(), 1u);
    h.undo();
    EXPECT_EQ(h.moduleCount(), 0u);
    EXPECT_FALSE(s.history.canUndo());

    for (int i = 0; i < 4; ++i) h.redo();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_EQ(find(s, name), nullptr);
    EXPECT_FALSE(s.history.canRedo());
}

TEST(EditHistory, ConnectionsInTheLiveStateAndInSnapshotsComeBack) {
    Undo h;
    Session& s = h.session;
    const std::string div = placeModule(s, type("Div"), 0, 0, 0).Name;
    const std::string add = placeModule(s, type("Add"), 0, 0, 2000).Name;
    storeSnapshot(s, true);  // slot 0: Div's first input unconnected
    connectInput(s, *find(s, div), 0, position(s, add));
    EXPECT_EQ(inputName(s, div, 0), add);

    h.undo();
    EXPECT_EQ(inputName(s, div, 0), " Off (0)") << "a live connection that was never stored is undone too";
    h.redo();
    EXPECT_EQ(inputName(s, div, 0), add);

    // Stored into a second snapshot, then undone: only one snapshot is left, the live
    // connection stays.
    storeSnapshot(s, true);
    EXPECT_EQ(s.engine.SnapshotCount, 2);
    h.undo();
    EXPECT_EQ(s.engine.SnapshotCount, 1);
    EXPECT_EQ(s.engine.CurrentSnapshot, 0);
    EXPECT_EQ(inputName(s, div, 0), add);

    // Recall of slot 0 shows what it stored, not what the undo steps held in the spare row.
    s.snapshots.select(0);
    EXPECT_EQ(inputName(s, div, 0), " Off (0)");
}

TEST(EditHistory, ClearingSnapshotsIsUndoneWithTheirNames) {
    Undo h;
    Session& s = h.session;
    placeModule(s, type("Div"), 0, 0, 0);
    s.snapshots.comboText = "Verse";
    storeSnapshot(s, true);
    s.snapshots.comboText = "Chorus";
    storeSnapshot(s, true);
    clearSnapshots(s);
    EXPECT_EQ(s.engine.SnapshotCount, 0);
    h.undo();
    EXPECT_EQ(s.engine.SnapshotCount, 2);
    EXPECT_EQ(s.snapshots.SnapshotNames[0], "000 Verse");
    EXPECT_EQ(s.snapshots.SnapshotNames[1], "001 Chorus");
    EXPECT_EQ(s.engine.CurrentSnapshot, 1);
}

TEST(EditHistory, StageValuesAndTempoAndOneStepPerGesture) {
    Undo h;
    Session& s = h.session;
    const std::string name = placeModule(s, type("Step8"), 0, 0, 0).Name;
    const auto stage = [&] { return static_cast<StepSequencer*>(find(s, name))->stageValue(3); };
    // Typing "1", "12", "120" into one box: three edits, one step.
    for (const char* typed : {"1", "12", "120"})
        s.history.apply(EditKind::StageValue, "Stage", name + "/3", [&] {
            static_cast<StepSequencer*>(find(s, name))->editStageText(3, typed);
        });
    EXPECT_EQ(stage(), 120);
    const size_t steps = s.history.size();
    setTempo(s, 140);
    setTempo(s, 150);  // the same slider drag
    s.history.seal();
    setTempo(s, 90);
    EXPECT_EQ(s.history.size(), steps + 2);

    h.undo();
    EXPECT_EQ(s.engine.Tempo(), 150);
    h.undo();
    EXPECT_EQ(s.engine.Tempo(), 120);
    h.undo();
    EXPECT_EQ(stage(), 0) << "the whole typing is one step";
    h.redo();
    EXPECT_EQ(stage(), 120);
}

TEST(EditHistory, KeepsTheLimitDropsTheRedoTailAndSkipsEditsThatChangeNothing) {
    Undo h;
    Session& s = h.session;
    const std::string name = placeModule(s, type("Div"), 0, 0, 0).Name;
    const auto top = [&] { return find(s, name)->Top; };
    for (int i = 1; i <= 260; ++i) moveModule(s, *find(s, name), 0, 15 * i, 0);
    EXPECT_EQ(s.history.size(), s.history.limit());
    EXPECT_GE(s.history.limit(), 200u);
    for (int i = 0; i < 200; ++i) h.undo();
    EXPECT_EQ(top(), 15 * 60);

    moveModule(s, *find(s, name), 0, top(), 0);  // nothing changes: no step, the redo tail stays
    EXPECT_TRUE(s.history.canRedo());
    setTempo(s, 77);
    EXPECT_FALSE(s.history.canRedo());
    h.undo();
    EXPECT_EQ(top(), 15 * 60);
    EXPECT_EQ(s.engine.Tempo(), 120);
}

TEST(EditHistory, UndoKeepsTheTransportThePageAndTheFileName) {
    Undo h;
    Session& s = h.session;
    s.engine.StartTimers();
    s.CurrentFileName = "/tmp/song.qmp";
    placeModule(s, type("Clock"), 0, 0, 0);
    s.engine.setRun(true);
    s.engine.showPage(5);
    h.undo();
    EXPECT_EQ(h.moduleCount(), 0u);
    EXPECT_EQ(s.engine.bus[sysbus::Run], 127);
    EXPECT_EQ(s.engine.CurrentPage(), 5);
    EXPECT_EQ(s.CurrentFileName, "/tmp/song.qmp");
    EXPECT_TRUE(s.engine.timersRunning());
    EXPECT_TRUE(s.ChangedMark);
    h.timers.advanceByMs(500);  // the patch ticks on after an undo
}

TEST(EditHistory, APlacementRefusedLeavesNoStep) {
    Undo h;
    Session& s = h.session;
    const std::string div = placeModule(s, type("Div"), 0, 0, 0).Name;
    s.engine.options.lockModules = true;
    const size_t steps = s.history.size();
    connectInput(s, *find(s, div), 0, position(s, "~  12"));  // locked: refused
    EXPECT_EQ(s.history.size(), steps);
}

// --- opening a file that doesn't load ---

TEST(OpenFailure, ATruncatedFileLeavesTheOpenPatchItsNameAndItsChangedMark) {
    ScratchDir dir;
    Undo h;
    Session& s = h.session;
    placeModule(s, type("Div"), 0, 0, 0);
    placeModule(s, type("Div"), 0, 0, 3000);
    ASSERT_EQ(h.save(dir.file("good.qmp")), "");
    s.CurrentFileName = dir.file("good.qmp");
    placeModule(s, type("Step16"), 0, 0, 6000);
    ASSERT_TRUE(s.ModifiedMark);

    std::vector<uint8_t> bytes = readBytes(dir.file("good.qmp"));
    bytes.resize(bytes.size() - 40);
    writeBytes(dir.file("cut.qmp"), bytes);
    std::string error;
    EXPECT_FALSE(s.OpenFile(dir.file("cut.qmp"), error));
    EXPECT_EQ(error, "Unable to Load: " + dir.file("cut.qmp"));
    EXPECT_NE(s.loadProblem.find("truncated at byte " + std::to_string(bytes.size())), std::string::npos) << s.loadProblem;
    EXPECT_NE(s.loadProblem.find("record 2 of 2 of type Div"), std::string::npos) << s.loadProblem;
    EXPECT_EQ(h.moduleCount(), 3u);
    EXPECT_EQ(s.CurrentFileName, dir.file("good.qmp"));
    EXPECT_TRUE(s.ModifiedMark);
    EXPECT_TRUE(s.history.canUndo()) << "the undo list stays with the patch";

    // A foreign file is refused as such, the same way.
    writeBytes(dir.file("foreign.qmp"), std::vector<uint8_t>(9000, 0x41));
    EXPECT_FALSE(s.OpenFile(dir.file("foreign.qmp"), error));
    EXPECT_EQ(error, "Incompatible File: " + dir.file("foreign.qmp"));
    EXPECT_EQ(h.moduleCount(), 3u);

    // The good file still opens, and its undo list starts empty.
    EXPECT_TRUE(s.OpenFile(dir.file("good.qmp"), error)) << error;
    EXPECT_EQ(h.moduleCount(), 2u);
    EXPECT_FALSE(s.history.canUndo());
    EXPECT_FALSE(s.ModifiedMark);
}

TEST(OpenFailure, ARecordThatDoesNotParseIsNamedWithItsPlace) {
    ScratchDir dir;
    Undo h;
    placeModule(h.session, type("Div"), 0, 0, 0);
    ASSERT_EQ(h.save(dir.file("one.qmp")), "");
    std::vector<uint8_t> bytes = readBytes(dir.file("one.qmp"));
    bytes.resize(8276 + 30);  // inside the only record
    std::string reason;
    EXPECT_FALSE(checkModuleBytes(bytes, reason));
    EXPECT_NE(reason.find("record 1 of 1 of type Div"), std::string::npos) << reason;
    EXPECT_NE(reason.find("starts at byte 8276"), std::string::npos) << reason;
}

TEST(Caption, FileNameFirstThenTheAuthorAndAStarWhileChanged) {
    Undo h;
    Session& s = h.session;
    EXPECT_EQ(s.caption(), "Quillmer");
    s.SetModified(true);
    EXPECT_EQ(s.caption(), "*Quillmer");
    s.CurrentFileName = "/home/u/e.qmp";
    s.author = "Quillmer";
    s.modifier = "Quillmer";
    s.fileVersion = 10;
    s.SetModified(false);
    EXPECT_EQ(s.caption(), "e.qmp (Auth: Quillmer)  Quillmer");
    s.modifier = "ann";
    s.SetModified(true);
    EXPECT_EQ(s.caption(), "*e.qmp (Mod: ann  Auth: Quillmer)  Quillmer");
}

}  // namespace
}  // namespace quillmer::testing
