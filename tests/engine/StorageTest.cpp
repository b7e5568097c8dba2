// How modules and their connections are kept: free indices, shared snapshot rows, the
// name lists kept in order one name at a time, pass lists, and the end of the bus.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Harness.h"
#include "engine/SnapshotRows.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(Storage, FreedIndicesAreReusedLowestFirstWhateverTheOrderOfDeletes) {
    Harness h;
    std::vector<Module*> divs;
    for (int i = 0; i < 10; ++i) divs.push_back(&h.add("Div"));
    for (int index : {7, 2, 5}) h.engine->Delete(*divs[static_cast<size_t>(index)]);
    h.add("Clock");  // another type's placing leaves Div's free slots alone
    std::vector<int16_t> given;
    for (int i = 0; i < 4; ++i) given.push_back(h.add("Div").Index);
    EXPECT_EQ(given, (std::vector<int16_t>{2, 5, 7, 10}));
    EXPECT_NE(h.engine->findModule("3Div-"), nullptr) << "the new module takes the old name";
    EXPECT_EQ(h.engine->typeSlot(Harness::id("Div")).slotCount(), 11u);
}

TEST(Storage, AModuleThatWouldWritePastTheBusIsRefusedAndNothingChanges) {
    Harness h;
    const ModuleTypeId free = Harness::id("Free");
    const int room = Engine::maxInstances(free);
    ASSERT_EQ(room, kBusSize - typeInfo(free).busFamily * kIdsPerFamily);
    std::vector<Module*> placed;
    for (int i = 0; i < room; ++i) placed.push_back(&h.engine->placeForBulk(free));
    h.engine->endBulk();
    EXPECT_EQ(placed.back()->OutBus, kBusSize - 1) << "the last one writes the bus's last byte";
    const size_t names = h.engine->names.sortedCount();
    EXPECT_THROW(h.engine->New(free), PlacementError);
    EXPECT_EQ(h.engine->names.sortedCount(), names);
    EXPECT_EQ(h.engine->typeSlot(free).slotCount(), static_cast<size_t>(room));
    h.engine->Delete(*placed[40]);
    EXPECT_EQ(h.add("Free").Index, 40) << "a freed index makes room again";
}

TEST(Storage, ARunOfPlacesAndDeletesKeepsTheSortedListAsAFullSortWouldHaveIt) {
    Harness h(std::vector<std::string>{});
    std::mt19937 random(7);
    const char* kinds[] = {"Div", "Clock", "Step8", "Counter", "Pulse", "Notes"};
    std::vector<std::string> live;
    for (int step = 0; step < 600; ++step) {
        if (live.empty() || random() % 3 != 0) {
            live.push_back(h.add(kinds[random() % 6]).Name);
        } else {
            const size_t victim = random() % live.size();
            h.engine->Delete(*h.engine->findModule(live[victim]));
            live.erase(live.begin() + static_cast<std::ptrdiff_t>(victim));
        }
    }
    const OutputNames& kept = h.engine->names;
    OutputNames sorted = kept;
    sorted.RebuildSortedList();
    ASSERT_EQ(kept.SortedNameList(), sorted.SortedNameList());
    EXPECT_EQ(kept.SortedIdList(), sorted.SortedIdList());
    for (const std::string& name : live) EXPECT_EQ(kept.sortedPosition(name), sorted.sortedPosition(name)) << name;
}

TEST(Storage, EveryInputFollowsItsOutputAcrossPlacesAndDeletes) {
    Harness h(std::vector<std::string>{});
    Module& reader = h.add("Div");
    Module& source = h.add("Div");
    h.connect(reader, 0, source.Name);
    for (int i = 0; i < 50; ++i) h.add(i % 2 ? "Clock" : "Div");
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), "2Div-");
    h.engine->Delete(*h.engine->findModule("5Div-"));
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), "2Div-");
    h.engine->Delete(source);
    EXPECT_EQ(reader.inputCaption(0, h.engine->names), " Off (0)");
}

TEST(SnapshotRows, AlikeSnapshotsShareARowAndADifferentOneCostsOneMore) {
    SnapshotRows rows(2);
    EXPECT_EQ(rows.distinctRows(), 1u);
    rows.set(5, 1, StoredInput{9, 40});
    EXPECT_EQ(rows.distinctRows(), 2u);
    rows.set(6, 1, StoredInput{9, 40});
    EXPECT_EQ(rows.distinctRows(), 2u) << "snapshot 6 now holds what 5 holds";
    rows.set(5, 1, StoredInput{});
    rows.set(6, 1, StoredInput{});
    EXPECT_EQ(rows.distinctRows(), 1u) << "a row no snapshot uses is gone";
    EXPECT_EQ(rows.get(127, 0), StoredInput{});
}

TEST(SnapshotRows, ResolvingTheFirstSnapshotsLeavesLaterOnesAsTheyWere) {
    SnapshotRows rows(1);
    rows.setInAll(0, StoredInput{3, 10});
    rows.resolveFirst(2, [](std::span<StoredInput> row) {
        row[0].position = 11;
        return true;
    });
    EXPECT_EQ(rows.get(0, 0).position, 11);
    EXPECT_EQ(rows.get(1, 0).position, 11);
    EXPECT_EQ(rows.get(2, 0).position, 10) << "past the count, untouched";
    EXPECT_EQ(rows.get(127, 0).position, 10);
}

TEST(Storage, SnapshotsOfALargePatchStoreRecallAndFollowADelete) {
    Harness h(std::vector<std::string>{});
    Engine& e = *h.engine;
    std::vector<Module*> divs;
    for (int i = 0; i < 300; ++i) divs.push_back(&e.placeForBulk(Harness::id("Div")));
    e.endBulk();
    const auto wire = [&](int snapshot) {
        for (size_t i = 0; i < divs.size(); ++i)
            h.connect(*divs[i], 0, divs[(i + 1 + static_cast<size_t>(snapshot)) % divs.size()]->Name);
    };
    e.SnapshotCount = 3;
    for (int16_t s = 0; s < 3; ++s) {
        e.CurrentSnapshot = s;
        wire(s);
        e.StoreAllPatches();
    }
    EXPECT_EQ(divs[0]->snapshotRows().distinctRows(), 4u) << "0, 1, 2, and one for the 125 never stored";
    for (int16_t s = 2; s >= 0; --s) {
        e.CurrentSnapshot = s;
        e.RecallAllPatches();
        for (size_t i = 0; i < divs.size(); i += 37) {
            const Module& expected = *divs[(i + 1 + static_cast<size_t>(s)) % divs.size()];
            EXPECT_EQ(divs[i]->InputBus[0], expected.OutBus) << "snapshot " << s << ", module " << i;
            EXPECT_EQ(divs[i]->inputCaption(0, e.names), expected.Name);
        }
    }
    const std::string gone = divs[2]->Name;
    e.Delete(*divs[2]);
    EXPECT_EQ(divs[0]->storedName(1, 0), " Off (0)") << "snapshot 1 read the deleted module";
    EXPECT_EQ(divs[0]->stored(1, 0).position, 0);
    EXPECT_EQ(divs[0]->storedName(2, 0), divs[3]->Name);
    EXPECT_EQ(divs[0]->storedName(100, 0), "") << "never stored, never resolved";
    EXPECT_EQ(divs[1]->storedName(0, 0), " Off (0)");
    EXPECT_NE(divs[1]->storedName(1, 0), gone);
}

TEST(Storage, APriorityChangedBetweenTicksMovesTheModuleToItsNewPass) {
    Harness h;
    Module& a = h.add("Unity");
    Module& b = h.add("Unity");
    h.engine->tick();
    EXPECT_EQ(h.log, (std::vector<std::string>{a.Name, b.Name}));
    h.log.clear();
    a.setPriority(priority::Last);
    h.engine->tick();
    EXPECT_EQ(h.log, (std::vector<std::string>{b.Name, a.Name}));
}
