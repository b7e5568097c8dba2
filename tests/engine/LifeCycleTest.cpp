#include <gtest/gtest.h>

#include "Harness.h"
#include "engine/Placement.h"

using namespace quillmer;
using quillmer::testing::Harness;

namespace {
constexpr int kDivFamily = 24;
}

TEST(New, FirstInstanceIsIndexZeroWithItsNameOnTheBusFamily) {
    Harness h;
    Module& m = h.add("Div");
    EXPECT_EQ(m.Index, 0);
    EXPECT_EQ(m.Name, "1Div-");
    EXPECT_EQ(m.OutBus, kDivFamily * 128);
    EXPECT_EQ(m.Active, -1);
    EXPECT_EQ(m.Enabled, -1);
    EXPECT_EQ(m.priority(), priority::Default);
    EXPECT_EQ(h.engine->names.OutputName(m.OutSlot), "1Div-");
    EXPECT_EQ(h.engine->names.OutputId(m.OutSlot), m.OutBus);
    EXPECT_GE(h.engine->names.sortedPosition("1Div-"), 3);
    EXPECT_TRUE(h.engine->patchChanged());
    EXPECT_EQ(h.engine->LastModuleType, Harness::id("Div"));
}

TEST(New, TheHundredAndTwentyNinthInstanceSpillsIntoTheNextFamily) {
    Harness h;
    Module* last = nullptr;
    for (int i = 0; i < 129; ++i) last = &h.engine->placeForBulk(Harness::id("Div"));
    h.engine->endBulk();
    EXPECT_EQ(last->Index, 128);
    EXPECT_EQ(last->Name, "129Div-");
    EXPECT_EQ(last->OutBus, (kDivFamily + 1) * 128);
}

TEST(New, PlacesOnTheCurrentPageAndAtTheCursorOnce) {
    Harness h;
    h.engine->showPage(5);
    h.engine->placeAtCursor(2400, 3600);
    Module& a = h.add("Div");
    Module& b = h.add("Div");
    EXPECT_EQ(a.Page, 5);
    EXPECT_EQ(a.Top, 2400);
    EXPECT_EQ(a.Left, 3600);
    EXPECT_EQ(b.Top, 0);
}

TEST(NewLastModule, MakesAMidiVoiceBeforeAnythingElseThenRepeatsTheLastType) {
    Harness h;
    Module& first = h.engine->NewLastModule();
    EXPECT_EQ(first.info().type, "MIDIVoice");
    EXPECT_EQ(first.Name, "1Voice-");
    EXPECT_EQ(h.engine->names.sortedPosition("1Voice-"), -1) << "a type without output takes no name";
    h.add("Div");
    EXPECT_EQ(h.engine->NewLastModule().Name, "2Div-");
}

TEST(Delete, NextNewTakesTheLowestFreeIndexAndNameSlot) {
    Harness h;
    Module& a = h.add("Div");
    const NameSlot slotA = a.OutSlot;
    h.add("Div");
    h.engine->Delete(a);
    EXPECT_EQ(h.engine->names.sortedPosition("1Div-"), -1);
    EXPECT_EQ(h.engine->names.OutputName(slotA), "~~");
    Module& c = h.add("Div");
    EXPECT_EQ(c.Index, 0);
    EXPECT_EQ(c.Name, "1Div-");
    EXPECT_EQ(c.OutSlot, slotA);
    EXPECT_NE(h.engine->findModule("2Div-"), nullptr);
}

// The deliberate behaviours around a deleted output: the label says Off, the input goes on
// reading the old element, frozen, and follows a new owner of that index.
TEST(Delete, InputsOfADeletedOutputShowOffButKeepReadingItsElement) {
    Harness h;
    Module& source = h.add("Div");
    Module& reader = h.add("Div");
    h.connect(source, 0, "~ 100");
    h.connect(source, 1, "~   2");
    h.connect(reader, 0, "1Div-");
    h.connect(reader, 1, "~   1");
    h.engine->StartTimers();
    h.ticks(1);
    ASSERT_EQ(h.out(reader), 50);
    const BusId oldBus = source.OutBus;

    h.engine->Delete(source);
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), " Off (0)");
    EXPECT_EQ(reader.InputBus[0], oldBus);
    EXPECT_EQ(h.engine->bus[oldBus], 50) << "the bus is never cleared";
    h.ticks(3);
    EXPECT_EQ(h.out(reader), 50);

    Module& heir = h.add("Div");  // takes index 0 again
    EXPECT_EQ(heir.OutBus, oldBus);
    h.connect(heir, 0, "~  90");
    h.connect(heir, 1, "~   3");
    h.ticks(1);
    EXPECT_EQ(h.out(reader), 30) << "the input silently follows the new instance";
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), " Off (0)");
}

TEST(Delete, AStoredConnectionToADeletedOutputRecallsAsOff) {
    Harness h;
    Module& source = h.add("Div");
    Module& reader = h.add("Div");
    h.engine->SnapshotCount = 2;
    h.connect(reader, 0, "1Div-");
    h.engine->CurrentSnapshot = 1;
    reader.PatchStore(*h.engine);
    EXPECT_EQ(reader.storedName(1, 0), "1Div-");

    h.engine->Delete(source);
    EXPECT_EQ(reader.storedName(1, 0), " Off (0)");
    EXPECT_EQ(reader.stored(1, 0).position, 0);
    reader.PatchChange(*h.engine);
    EXPECT_EQ(reader.InputBus[0], sysbus::Off);
}

TEST(Delete, StoredPositionsFollowTheNamesWhenTheListShifts) {
    Harness h;
    h.add("Div");
    Module& reader = h.add("Div");
    h.engine->SnapshotCount = 1;
    h.connect(reader, 0, "2Div-");
    reader.PatchStore(*h.engine);
    const uint16_t before = reader.stored(0, 0).position;
    h.add("Div");  // "3Div-" sorts after; "10Div-" would sort before
    for (int i = 0; i < 7; ++i) h.add("Div");
    ASSERT_NE(h.engine->findModule("10Div-"), nullptr);
    EXPECT_EQ(reader.stored(0, 0).position, before + 1);
    EXPECT_EQ(reader.InputPosition[0], before + 1);
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), "2Div-");
}

TEST(Delete, PlacingOrDeletingATypeWithoutAnOutputMovesNoConnection) {
    Harness h;
    Module& reader = h.add("Div");
    h.connect(reader, 0, "~  12");
    h.add("Div");  // shifts the list: "~  12" moves one place
    Module& silent = h.add("MIDIKey");
    h.add("MIDIKey");
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), "~  12");
    h.engine->Delete(silent);
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), "~  12");
}

TEST(StatusDialog, PriorityIndexSwapsZeroAndOneAndDisabledShowsPictureNine) {
    EXPECT_EQ(priorityIndexOf(0), 1);
    EXPECT_EQ(priorityIndexOf(1), 0);
    EXPECT_EQ(priorityIndexOf(6), 6);
    EXPECT_EQ(storedPriorityOf(0), 1);
    EXPECT_EQ(storedPriorityOf(4), 4);
    EXPECT_EQ(statusPicture(0, true), 2);
    EXPECT_EQ(statusPicture(1, false), 9);
    EXPECT_EQ(priorityCaption(1), "2 = Default");

    Harness h;
    Module& m = h.add("Div");
    h.engine->applyStatus(m, {0, true, false, true});
    EXPECT_EQ(m.priority(), priority::Default) << "cancel changes nothing";
    h.engine->applyStatus(m, {0, false, false, false});
    EXPECT_EQ(m.priority(), priority::First);
    EXPECT_EQ(m.Enabled, 0);
    h.engine->applyStatus(m, {1, true, true, false});
    EXPECT_EQ(h.engine->findModule("1Div-"), nullptr);
}

TEST(ModuleMap, CommandsFindModulesByName) {
    Harness h;
    h.add("Div");
    h.add("Div");
    EXPECT_TRUE(h.engine->MapCommand("2Div-", 0, 7));
    EXPECT_EQ(h.engine->findModule("2Div-")->Page, 7);
    EXPECT_TRUE(h.engine->MapCommand("2Div-", 2, 0));
    EXPECT_EQ(h.engine->findModule("2Div-")->Enabled, 0);
    EXPECT_TRUE(h.engine->MapCommand("2Div-", 3, 0));
    EXPECT_EQ(h.engine->findModule("2Div-")->Enabled, -1);
    EXPECT_TRUE(h.engine->MapCommand("1Div-", 1, 0));
    EXPECT_EQ(h.engine->findModule("1Div-"), nullptr);
    EXPECT_FALSE(h.engine->MapCommand("9Div-", 2, 0));
}

TEST(CloseAllModules, LeavesTheSystemNamesAndUnusedTypes) {
    Harness h;
    h.add("Div");
    h.engine->NewLastModule();
    h.engine->bus[sysbus::Run] = 127;
    h.engine->CloseAllModules();
    EXPECT_EQ(h.engine->names.sortedCount(), 159u);
    EXPECT_FALSE(h.engine->typeSlot(Harness::id("Div")).TypeUsed);
    EXPECT_EQ(h.engine->bus[sysbus::Run], 0);
    EXPECT_EQ(h.add("Div").Name, "1Div-");
}

TEST(Div, DividesTruncatingAndHoldsItsLastValueOnADivisorOfZero) {
    Harness h;
    Module& d = h.add("Div");
    h.connect(d, 1, "~   0");
    h.engine->StartTimers();
    h.ticks(1);
    EXPECT_EQ(h.out(d), 0) << "nothing to hold yet";
    h.connect(d, 0, "~ 127");
    h.connect(d, 1, "~   4");
    h.ticks(1);
    EXPECT_EQ(h.out(d), 31);
    h.connect(d, 1, "~   0");
    h.ticks(3);
    EXPECT_EQ(h.out(d), 31);
    h.connect(d, 0, "~  60");
    h.ticks(1);
    EXPECT_EQ(h.out(d), 31) << "a new numerator over 0 changes nothing either";
    h.connect(d, 1, "~   7");
    h.ticks(1);
    EXPECT_EQ(h.out(d), 8);
}

TEST(Disabled, FreezesTheOutputButStillFlipsPages) {
    Harness h;
    Module& d = h.add("Div");
    h.connect(d, 0, "~ Turbo");
    h.connect(d, 1, "~   1");
    h.engine->StartTimers();
    h.ticks(5);
    const uint8_t frozen = h.out(d);
    d.Enabled = 0;
    h.ticks(5);
    EXPECT_EQ(h.out(d), frozen);
    h.engine->pageFlip = true;
    d.Left = -300;
    h.ticks(1);
    EXPECT_EQ(d.Page, 3);  // West of group 0
    EXPECT_EQ(h.engine->CurrentPage(), 3);
    EXPECT_EQ(h.engine->bus[sysbus::Page], 3);
}
