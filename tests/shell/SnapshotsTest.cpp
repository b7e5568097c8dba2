#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "modules/panels/Chain.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(SnapshotNames, NumberInFrontNeverDoubled) {
    EXPECT_EQ(Snapshots::buildName("Verse", 2), "002 Verse");
    EXPECT_EQ(Snapshots::buildName("001 Verse", 2), "002 Verse");
    EXPECT_EQ(Snapshots::buildName("", 0), "000 Unnamed");
    EXPECT_EQ(Snapshots::buildName("AutoSave", 0), "000 Unnamed");
    EXPECT_EQ(Snapshots::buildName("AutoSave", 0, true), "000 AutoSave");
    EXPECT_EQ(Snapshots::buildName("12 bars", 3), "003 bars") << "digits and blanks of the first four go";
    EXPECT_EQ(Snapshots::buildName("A very long snapshot name indeed", 9).size(), 24u);
}

TEST(Snapshots, StoreRecallAndTheLimit) {
    SessionHarness h;
    Engine& e = h.session.engine;
    Snapshots& s = h.session.snapshots;
    Module& d = h.add("Div");
    std::string message;
    s.showMessage = [&](const std::string& m) { message = m; };
    h.connect(d, 0, "~  10");
    EXPECT_TRUE(s.StoreNewPatch());
    EXPECT_EQ(s.SnapshotNames[0], "000 Unnamed");
    h.connect(d, 0, "~  20");
    s.comboText = "Verse";
    EXPECT_TRUE(s.StoreNewPatch());
    EXPECT_EQ(e.CurrentSnapshot, 1);
    s.select(0);
    EXPECT_EQ(d.inputCaption(0, e.names), "~  10");
    EXPECT_EQ(e.bus[sysbus::Page], 0);
    s.select(1);
    EXPECT_EQ(e.bus[sysbus::Page], 1) << "bus 133 holds the snapshot number after a recall";
    e.showPage(6);
    EXPECT_EQ(e.bus[sysbus::Page], 6) << "and the page after a page change";
    while (e.SnapshotCount < 128) s.StoreNewPatch();
    EXPECT_FALSE(s.StoreNewPatch());
    EXPECT_EQ(message, " Can't make more patches.");
    EXPECT_EQ(e.SnapshotCount, 128);
    s.WipePatchList();
    EXPECT_EQ(e.SnapshotCount, 0);
    EXPECT_EQ(e.CurrentSnapshot, 0);
    EXPECT_EQ(s.comboText, "AutoSave");
    EXPECT_EQ(h.session.kept.composerMeasures[999], 7);
}

TEST(Snapshots, AutoStoreKeepsTheEditedSlotAndRecallsItsStoredForm) {
    SessionHarness h;
    Engine& e = h.session.engine;
    Snapshots& s = h.session.snapshots;
    Module& d = h.add("Div");
    s.StoreNewPatch();
    h.connect(d, 0, "~  30");
    s.StoreNewPatch();  // slot 1 holds ~ 30
    h.connect(d, 0, "~  40");  // edited, not stored
    s.doPatchAuto();
    EXPECT_EQ(e.CurrentSnapshot, 1);
    EXPECT_EQ(d.storedName(0, 0), "~  40") << "slot 0 has the live state";
    EXPECT_EQ(s.SnapshotNames[0], "000 AutoSave");
    EXPECT_EQ(d.inputCaption(0, e.names), "~  30") << "the stored form came back on the panel";
}

TEST(Snapshots, ProgramChangesRecallOnlyNewSlotsInRange) {
    SessionHarness h;
    Engine& e = h.session.engine;
    Module& d = h.add("Div");
    for (int i = 0; i < 3; ++i) {
        h.connect(d, 0, "~  " + std::to_string(10 * (i + 1)));
        h.session.snapshots.StoreNewPatch();
    }
    e.ports.progChgToSnapshot = true;
    e.ports.progChgChannelSlot = 1;
    h.connect(d, 0, "~  99");  // live edit: a recall would undo it
    e.ports.onInputData(0, {{0xC1, 2, 0}});
    EXPECT_EQ(d.inputCaption(0, e.names), "~  99") << "the current slot isn't recalled again";
    e.ports.onInputData(0, {{0xC1, 5, 0}});
    EXPECT_EQ(e.CurrentSnapshot, 2) << "at or above the count: ignored";
    e.ports.onInputData(0, {{0xC0, 0, 0}});
    EXPECT_EQ(e.CurrentSnapshot, 2) << "another channel: ignored";
    e.ports.onInputData(0, {{0xC1, 0, 0}});
    EXPECT_EQ(e.CurrentSnapshot, 0);
    EXPECT_EQ(d.inputCaption(0, e.names), "~  10");
    EXPECT_EQ(e.ports.in.InProgram[1], 0);
}

TEST(Chain, AHeldStrobeFiresOnceAndLoadsAfterATenthOfASecond) {
    ScratchDir dir;
    SessionHarness next;
    next.add("Div");
    next.add("Div");
    ASSERT_EQ(next.save(dir.file("next.qmp")), "");

    SessionHarness h;
    Engine& e = h.session.engine;
    auto& chain = static_cast<Chain&>(h.add("Chain"));
    chain.fileName = dir.file("next.qmp");
    h.connect(chain, 0, " On (127)");
    e.StartTimers();
    h.timers.advanceByMs(21);
    h.connect(chain, 1, " On (127)");
    h.timers.advanceByMs(21 * 2);
    EXPECT_EQ(h.session.ChainFile, dir.file("next.qmp"));
    EXPECT_EQ(h.moduleCount(), 1u) << "no load inside the tick";
    h.timers.advanceByMs(100);
    EXPECT_EQ(h.moduleCount(), 2u);
    EXPECT_EQ(h.session.CurrentFileName, dir.file("next.qmp"));
    EXPECT_TRUE(e.timersRunning());
}

TEST(Chain, ExitQuillmerAsksTheProgramToClose) {
    SessionHarness h;
    Engine& e = h.session.engine;
    bool exitAsked = false;
    h.session.exitRequested = [&] { exitAsked = true; };
    Module& chain = h.add("Chain");
    h.connect(chain, 0, " On (127)");
    e.StartTimers();
    h.timers.advanceByMs(21);
    h.connect(chain, 1, "~ Turbo");
    h.timers.advanceByMs(21 * 5 + 100);
    EXPECT_TRUE(exitAsked);
}
