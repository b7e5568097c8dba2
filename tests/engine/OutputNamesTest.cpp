#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "engine/OutputBus.h"
#include "engine/OutputNames.h"

using namespace quillmer;

TEST(SystemOutputs, NewListHoldsExactlyTheSystemNamesInByteOrder) {
    OutputNames names;
    ASSERT_EQ(names.sortedCount(), 159u);
    EXPECT_EQ(names.TopNameSlot(), 158);
    EXPECT_EQ(names.SortedNameList()[0], " Off (0)");
    EXPECT_EQ(names.SortedNameList()[1], " On (127)");
    EXPECT_EQ(names.SortedNameList()[2], " mid (64)");
    EXPECT_EQ(names.SortedIdList()[2], sysbus::Mid);
    EXPECT_TRUE(std::is_sorted(names.SortedNameList().begin(), names.SortedNameList().end()));
    EXPECT_EQ(names.SortedNameList().back(), "~ slider 16");
}

TEST(SystemOutputs, NamesIdsAndInitialValues) {
    EXPECT_EQ(systemOutput(3).name, "~   0");
    EXPECT_EQ(systemOutput(27).name, "~  24");
    EXPECT_EQ(systemOutput(27).initialValue, 24);
    EXPECT_EQ(systemOutput(130).name, "~ 127");
    EXPECT_EQ(systemOutput(130).initialValue, 127);
    EXPECT_EQ(systemOutput(sysbus::Stop).initialValue, 127);
    EXPECT_EQ(systemOutput(sysbus::Run).initialValue, 0);
    EXPECT_EQ(systemOutput(143).name, "~ slider  1");
    EXPECT_EQ(systemOutput(158).name, "~ slider 16");
    EXPECT_EQ(systemOutput(159).name, "");  // never used
    OutputBus bus;
    bus.writeSystemValues();
    EXPECT_EQ(bus[sysbus::On], 127);
    EXPECT_EQ(bus[sysbus::Mid], 64);
    EXPECT_EQ(bus[constantBus(100)], 100);
}

TEST(NameSlots, FreedSlotsAreReusedLowestFirstAndUnknownNamesFindSlotZero) {
    OutputNames names;
    const NameSlot a = names.AllocNameSlot();
    names.enter(a, "1Div-", 3072);
    const NameSlot b = names.AllocNameSlot();
    names.enter(b, "2Div-", 3073);
    const NameSlot c = names.AllocNameSlot();
    names.enter(c, "3Div-", 3074);
    EXPECT_EQ(a, 159);
    EXPECT_EQ(c, 161);
    names.free(c);
    names.free(a);
    EXPECT_EQ(names.AllocNameSlot(), a);
    EXPECT_EQ(names.FindNameSlot("2Div-"), b);
    EXPECT_EQ(names.FindNameSlot("9Nope-"), 0);
    EXPECT_EQ(names.FindNameSlot("2div-"), 0);  // case-sensitive
}

TEST(SortedList, OrdersByCharacterCode) {
    OutputNames names;
    for (const char* n : {"2Div-", "10Div-", "1abc-", "1Zed-"}) {
        const NameSlot s = names.AllocNameSlot();
        names.enter(s, n, 0);
        names.insertSorted(s);
    }
    EXPECT_LT(names.sortedPosition("10Div-"), names.sortedPosition("2Div-"));
    EXPECT_LT(names.sortedPosition("1Zed-"), names.sortedPosition("1abc-"));
    EXPECT_GT(names.sortedPosition("1abc-"), names.sortedPosition(" mid (64)"));
    EXPECT_LT(names.sortedPosition("2Div-"), names.sortedPosition("~   0"));
}

// After every insertion or removal the lists hold exactly the live names, sorted, and
// PositionMap carries each surviving name's old position to its new one.
TEST(SortedList, InvariantsHoldOverMixedInsertsAndDeletes) {
    OutputNames names;
    std::mt19937 random(7);
    std::vector<std::pair<NameSlot, std::string>> live;
    int serial = 0;
    for (int step = 0; step < 400; ++step) {
        const std::vector<std::string> before = names.SortedNameList();
        std::string changed;
        bool removing = !live.empty() && random() % 3 == 0;
        if (removing) {
            const size_t pick = random() % live.size();
            changed = live[pick].second;
            names.removeSorted(live[pick].first);
            names.free(names.FindNameSlot(changed));
            live.erase(live.begin() + static_cast<long>(pick));
        } else {
            ++serial;
            changed = std::to_string(serial % 97 + 1) + (random() % 2 ? "Div-" : "Step08-") + std::to_string(serial);
            const NameSlot s = names.AllocNameSlot();
            names.enter(s, changed, static_cast<BusId>(s));
            live.emplace_back(s, changed);
            names.insertSorted(s);
        }
        const auto& sorted = names.SortedNameList();
        ASSERT_TRUE(std::is_sorted(sorted.begin(), sorted.end()));
        ASSERT_EQ(sorted.size(), 159 + live.size());
        for (size_t old = 0; old < before.size(); ++old) {
            if (before[old] == changed && removing) {
                ASSERT_EQ(names.PositionMap()[old], 0) << "a removed name falls to Off";
                continue;
            }
            ASSERT_EQ(sorted[names.PositionMap()[old]], before[old]) << "step " << step;
        }
        for (size_t p = 0; p < sorted.size(); ++p)
            ASSERT_EQ(names.OutputId(names.FindNameSlot(sorted[p])), names.SortedIdList()[p]);
    }
}

TEST(SortedList, StalePositionsReadAsOff) {
    OutputNames names;
    EXPECT_EQ(names.sortedName(60000), " Off (0)");
    EXPECT_EQ(names.sortedId(60000), 0);
    EXPECT_EQ(names.mapPosition(60000), 0);
}
