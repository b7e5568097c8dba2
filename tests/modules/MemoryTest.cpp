// Processors with memory: the delay ring in 32nds and in Turbo, its tap, the slew that
// never overshoots, and the edge-driven Sample, Diff, Tally, HiLo and Accum.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/processors/Memory.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
// Ticks until m's output becomes `value`; -1 after `limit` ticks.
int ticksUntil(ModuleHarness& h, const Module& m, int value, int limit) {
    for (int n = 1; n <= limit; ++n) {
        h.ticks(1);
        if (h.out(m) == value) return n;
    }
    return -1;
}
}  // namespace

TEST(Delay, TurboDelaysByTicks) {
    ModuleHarness h;
    auto& delay = static_cast<Delay&>(h.add("Delay"));
    delay.setTurbo(true);
    h.set(delay, 1, 3);
    for (int t = 1; t <= 40; ++t) {
        h.set(delay, 0, t);
        h.ticks(1);
        EXPECT_EQ(h.out(delay), t > 3 ? t - 3 : 0) << t;
    }
    h.set(delay, 1, 0);
    h.set(delay, 0, 99);
    h.ticks(1);
    EXPECT_EQ(h.out(delay), 99) << "a delay of 0 is the input itself";
}

TEST(Delay, ThirtySecondsStepEveryThreeTicks) {
    ModuleHarness h;
    auto& delay = static_cast<Delay&>(h.add("Delay"));
    h.set(delay, 1, 2);
    h.ticks(7);
    h.set(delay, 0, 10);
    const int first = ticksUntil(h, delay, 10, 20);
    EXPECT_GE(first, 4);
    EXPECT_LE(first, 6);
    h.set(delay, 1, 10);
    h.set(delay, 0, 20);
    const int second = ticksUntil(h, delay, 20, 60);
    EXPECT_GE(second, 28);
    EXPECT_LE(second, 30);
    h.set(delay, 1, 127);
    h.set(delay, 0, 30);
    EXPECT_EQ(ticksUntil(h, delay, 30, 3 * 126), -1) << "127 32nds back is not there yet";
}

TEST(Delay, TapReadsTheChosenRingAndZeroOnceItIsGone) {
    ModuleHarness h;
    auto& delay = static_cast<Delay&>(h.add("Delay"));
    auto& tap = static_cast<DLTap&>(h.add("DLTap"));
    delay.setTurbo(true);
    h.set(tap, 0, 5);
    for (int t = 1; t <= 10; ++t) {
        h.set(delay, 0, t);
        h.ticks(1);
    }
    EXPECT_EQ(h.out(tap), 0) << "no master chosen";
    ASSERT_EQ(tap.masterChoices().size(), 1u);
    tap.chooseMaster(tap.masterChoices()[0].index);
    h.ticks(1);
    EXPECT_EQ(delay.tap(5), 6) << "10 was written twice";
    EXPECT_EQ(h.out(tap), 6);
    h.engine->Delete(delay);
    h.ticks(1);
    EXPECT_EQ(h.out(tap), 0);
}

TEST(Delay, ATapCanOnlyFollowADelayItsRecordCanName) {
    ModuleHarness h;
    auto& tap = static_cast<DLTap&>(h.add("DLTap"));
    std::vector<Module*> delays;
    for (int i = 0; i < 256; ++i) delays.push_back(&h.add("Delay"));
    const std::vector<MasterChoice> list = tap.masterChoices();
    ASSERT_EQ(list.size(), 255u) << "a byte per snapshot names instances 0..254";
    EXPECT_EQ(list.back().index, 254);
    tap.chooseMaster(254);
    EXPECT_EQ(tap.masterIndex(), 254);
    tap.chooseMaster(255);
    EXPECT_EQ(tap.masterIndex(), -1) << "never another Delay than the one asked for";
}

TEST(Slew, NeverOvershootsEitherWay) {
    ModuleHarness h;
    auto& slew = static_cast<Slew&>(h.add("Slew"));
    for (int amount : {1, 40, 64, 127}) {
        h.set(slew, 1, amount);
        h.set(slew, 0, 100);
        int last = h.out(slew);
        for (int i = 0; i < 3000 && h.out(slew) != 100; ++i) {
            h.ticks(1);
            ASSERT_GE(h.out(slew), last) << amount;
            ASSERT_LE(slew.follower(), 100.0) << amount;
            last = h.out(slew);
        }
        EXPECT_EQ(h.out(slew), 100) << amount;
        h.set(slew, 0, 20);
        for (int i = 0; i < 3000 && h.out(slew) != 20; ++i) {
            h.ticks(1);
            ASSERT_LE(h.out(slew), last) << amount;
            ASSERT_GE(slew.follower(), 20.0) << amount;
            last = h.out(slew);
        }
        EXPECT_EQ(h.out(slew), 20) << amount;
    }
    h.set(slew, 1, 127);
    h.set(slew, 0, 120);
    h.ticks(10);
    EXPECT_LT(h.out(slew), 40) << "the slowest slew moves 1/256 of the way a tick";
    h.set(slew, 1, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(slew), 120) << "0 follows at once";
}

TEST(Edges, SampleAndDiff) {
    ModuleHarness h;
    Module& sample = h.add("Sample");
    h.set(sample, 0, 33);
    h.edge(sample, 1);
    EXPECT_EQ(h.out(sample), 33);
    h.set(sample, 0, 44);
    h.ticks(2);
    EXPECT_EQ(h.out(sample), 33) << "held while the strobe stays up";
    h.edge(sample, 1);
    EXPECT_EQ(h.out(sample), 44);

    Module& diff = h.add("Diff");
    h.set(diff, 0, 10);
    h.ticks(1);
    EXPECT_EQ(h.out(diff), 10);
    h.set(diff, 0, 4);
    h.ticks(1);
    EXPECT_EQ(h.out(diff), 6);
    h.ticks(3);
    EXPECT_EQ(h.out(diff), 6) << "holds while nothing changes";
}

TEST(Edges, TallyCountsDifferentValuesUntilReset) {
    ModuleHarness h;
    auto& tally = static_cast<Tally&>(h.add("Tally"));
    for (int v : {5, 5, 7, 127, 7}) {
        h.set(tally, 1, v);
        h.edge(tally, 0);
    }
    EXPECT_EQ(h.out(tally), 3);
    h.set(tally, 2, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(tally), 0);
    h.set(tally, 1, 5);
    h.set(tally, 0, 0);
    h.ticks(1);
    h.set(tally, 0, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(tally), 1) << "an edge under a held reset counts anew";
    h.ticks(1);
    EXPECT_EQ(h.out(tally), 0) << "the reset still held clears again after the edge";
    h.set(tally, 2, 0);
    for (int v = 0; v < 128; ++v) {
        h.set(tally, 1, v);
        h.edge(tally, 0);
    }
    EXPECT_EQ(tally.count(), 128);
    EXPECT_EQ(h.out(tally), 127) << "kept to the bus range";
}

TEST(Edges, HiLoRunsHighestOrLowest) {
    ModuleHarness h;
    auto& hilo = static_cast<HiLo&>(h.add("HiLo"));
    for (int v : {10, 30, 20}) {
        h.set(hilo, 0, v);
        h.ticks(1);
    }
    EXPECT_EQ(h.out(hilo), 30);
    h.set(hilo, 1, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(hilo), 0) << "reset restarts highest at 0";
    h.set(hilo, 1, 0);
    hilo.setLowest(true);
    h.set(hilo, 1, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(hilo), 127) << "and lowest at 127";
    h.set(hilo, 1, 0);
    for (int v : {50, 60, 40}) {
        h.set(hilo, 0, v);
        h.ticks(1);
    }
    EXPECT_EQ(h.out(hilo), 40);
}

TEST(Edges, AccumTurnsAtItsLimitsUnlessAutoIsOff) {
    ModuleHarness h;
    auto& accum = static_cast<Accum&>(h.add("Accum"));
    h.set(accum, 1, 4);
    h.set(accum, 4, 10);
    h.set(accum, 5, 0);
    std::vector<int> seen;
    for (int i = 0; i < 8; ++i) {
        h.edge(accum, 0);
        seen.push_back(h.out(accum));
    }
    EXPECT_EQ(seen, (std::vector<int>{4, 8, 10, 6, 2, 0, 4, 8}));

    h.edge(accum, 2);  // reverse: now going down
    EXPECT_FALSE(accum.goingUp());
    h.edge(accum, 0);
    EXPECT_EQ(h.out(accum), 4);

    h.set(accum, 3, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(accum), 0) << "reset to Lower";
    EXPECT_TRUE(accum.goingUp());
    h.set(accum, 3, 0);
    accum.setNoAutoTurn(true);
    seen.clear();
    for (int i = 0; i < 5; ++i) {
        h.edge(accum, 0);
        seen.push_back(h.out(accum));
    }
    EXPECT_EQ(seen, (std::vector<int>{4, 8, 10, 10, 10}));

    h.set(accum, 4, 0);
    h.set(accum, 5, 0);
    h.edge(accum, 0);
    EXPECT_EQ(h.out(accum), 10) << "no accumulation unless Upper is above Lower";
}
