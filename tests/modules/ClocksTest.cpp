#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/processors/Events.h"
#include "modules/sequencers/Clocks.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
std::string dots(int n) { return std::string(static_cast<size_t>(n), '.'); }
std::string highs(int n) { return std::string(static_cast<size_t>(n), 'X'); }
}  // namespace

TEST(GateTicks, EdgesOfTheOnTimeRule) {
    EXPECT_EQ(GateTicks(1, 0), 0) << "0 % is one tick";
    EXPECT_EQ(GateTicks(2, 127), 0) << "100 % and more is P - 2";
    EXPECT_EQ(GateTicks(0, 100), 10);
    EXPECT_EQ(GateTicks(0, 99), 10) << "kept below the period";
    EXPECT_EQ(GateTicks(2, 1), 0) << "kept at one tick at least";
    EXPECT_EQ(GateTicks(0, 64), 7);
    EXPECT_EQ(GateTicks(109, 50), 1023);
}

TEST(Clock, QuarterWithNoOnTimeIsOneTickIn24) {
    ModuleHarness h;
    Module& clock = h.add("Clock");
    h.set(clock, 0, 1);
    h.set(clock, 1, 0);
    EXPECT_EQ(h.gates(clock, 48), repeat(std::string("X").append(dots(23)), 2));
}

TEST(Clock, FullOnTimeOnAPeriodOfTwoStillFalls) {
    ModuleHarness h;
    Module& clock = h.add("Clock");
    h.set(clock, 0, 2);
    h.set(clock, 1, 127);
    EXPECT_EQ(h.gates(clock, 8), "X.X.X.X.");
}

TEST(Clock, DefaultOnTimeIsAboutTwoThirds) {
    ModuleHarness h;
    Module& clock = h.add("Clock");  // "% On" starts on " mid (64)"
    EXPECT_EQ(clock.InputPosition[1], sysbus::Mid);
    EXPECT_EQ(h.gates(clock, 24), repeat(highs(8) + dots(4), 2));
}

TEST(Clock, HoldDropsTheGateAndTheRestWaitsForTheNextBeat) {
    ModuleHarness h;
    Module& clock = h.add("Clock");  // an eighth, 8 ticks high
    EXPECT_EQ(h.gates(clock, 3), "XXX");
    h.set(clock, 2, 127);
    EXPECT_EQ(h.gates(clock, 2), "..");
    h.set(clock, 2, 0);
    EXPECT_EQ(h.gates(clock, 8), dots(7) + "X") << "the held gate doesn't come back";
}

TEST(Clock, OutOfRangeDurationsRunAtCodeSixWithAYellowLabel) {
    ModuleHarness h;
    auto& clock = static_cast<Clock&>(h.add("Clock"));
    h.set(clock, 0, 120);
    EXPECT_EQ(h.gates(clock, 12), "XXXX..XXXX..");
    EXPECT_EQ(clock.durLabel, DurationLabel::DurYellow);
    h.set(clock, 0, 126);
    EXPECT_EQ(h.gates(clock, 6), "XXXX..") << "a Clock has no Turbo";
    h.set(clock, 0, 6);
    h.ticks(1);
    EXPECT_EQ(clock.durLabel, DurationLabel::Dur);
}

TEST(Free, ZeroDurationAndMultiplierMakeAnEighth) {
    ModuleHarness h;
    Module& free = h.add("Free");
    EXPECT_EQ(h.gates(free, 24), repeat("XX" + dots(10), 2)) << "0 % still gives an on-time of 1";
    h.set(free, 0, 2);
    EXPECT_EQ(h.gates(free, 48), repeat("XX" + dots(22), 2));
}

TEST(Free, ResyncAndHoldStartThePeriodOver) {
    ModuleHarness h;
    Module& free = h.add("Free");
    EXPECT_EQ(h.gates(free, 5), "XX...");
    h.engine->ResyncPending = true;
    EXPECT_EQ(h.gates(free, 3), "XX.");
    h.set(free, 2, 127);
    EXPECT_EQ(h.gates(free, 3), "...");
    h.set(free, 2, 0);
    EXPECT_EQ(h.gates(free, 13), "XX" + dots(10) + "X");
}

TEST(Sync, WithBAlwaysHighEachRiseOfAPassesOnTheSamePass) {
    ModuleHarness h;
    Module& sync = h.add("Sync");
    h.set(sync, 1, 127);
    for (int round = 0; round < 3; ++round) {
        h.set(sync, 0, 0);
        EXPECT_EQ(h.gates(sync, 1), ".");
        h.set(sync, 0, 127);
        EXPECT_EQ(h.gates(sync, 3), "X..") << "one pass only, while A stays high";
    }
}

TEST(Sync, ARiseWaitsForBAndBAloneGivesNothing) {
    ModuleHarness h;
    Module& sync = h.add("Sync");
    h.edge(sync, 0);
    h.set(sync, 0, 0);
    EXPECT_EQ(h.gates(sync, 3), "...") << "armed, A gone low, no B yet";
    h.set(sync, 1, 127);
    EXPECT_EQ(h.gates(sync, 2), "X.");
    h.set(sync, 1, 0);
    h.ticks(1);
    h.set(sync, 1, 127);
    EXPECT_EQ(h.gates(sync, 2), "..") << "a new B without a new A";
}

TEST(Counter, CountsEdgesAndWrapsAtAnInclusiveLimit) {
    ModuleHarness h;
    Module& counter = h.add("Counter");
    EXPECT_EQ(counter.InputPosition[4], sysbus::On) << "Limit starts on \" On (127)\"";
    h.set(counter, 4, 3);
    std::vector<int> seen;
    for (int i = 0; i < 5; ++i) {
        h.edge(counter, 0);
        seen.push_back(h.out(counter));
    }
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 0, 1}));
    h.set(counter, 1, 127);  // Rev
    seen.clear();
    for (int i = 0; i < 3; ++i) {
        h.edge(counter, 0);
        seen.push_back(h.out(counter));
    }
    EXPECT_EQ(seen, (std::vector<int>{0, 3, 2}));
}

TEST(Counter, LimitZeroStaysAtZero) {
    ModuleHarness h;
    Module& counter = h.add("Counter");
    h.set(counter, 4, 0);
    for (int rev : {0, 127}) {
        h.set(counter, 1, rev);
        for (int i = 0; i < 3; ++i) {
            h.edge(counter, 0);
            EXPECT_EQ(h.out(counter), 0) << "rev " << rev;
        }
    }
}

TEST(Counter, ResetHeldThenAGateCountsOnlyAfterGoingLow) {
    ModuleHarness h;
    auto& counter = static_cast<Counter&>(h.add("Counter"));
    h.edge(counter, 0);
    h.edge(counter, 0);
    ASSERT_EQ(h.out(counter), 2);
    h.set(counter, 2, 127);  // Rset, with the gate still high
    EXPECT_EQ(h.values(counter, 2), (std::vector<int>{0, 0}));
    h.set(counter, 2, 0);
    EXPECT_EQ(h.values(counter, 2), (std::vector<int>{0, 0})) << "the gate that was high doesn't count";
    h.edge(counter, 0);
    EXPECT_EQ(h.out(counter), 1);

    h.set(counter, 4, 9);
    h.set(counter, 3, 127);  // Hold together with Rset: the count goes to Limit
    h.set(counter, 2, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(counter), 9);
    h.set(counter, 2, 0);
    h.edge(counter, 0);
    EXPECT_EQ(h.out(counter), 9) << "Hold alone keeps the count";
    h.set(counter, 3, 0);
    h.engine->ResyncPending = true;
    h.ticks(1);
    EXPECT_EQ(counter.count(), 0) << "a resync resets";
}

TEST(Pulse, AnInputAlreadyHighGivesNoPulseUntilItHasBeenLow) {
    ModuleHarness h;
    Module& pulse = h.add("Pulse");
    h.set(pulse, 0, 127);
    EXPECT_EQ(h.gates(pulse, 3), "...");
    h.set(pulse, 0, 0);
    EXPECT_EQ(h.gates(pulse, 1), ".");
    h.set(pulse, 0, 5);
    EXPECT_EQ(h.gates(pulse, 4), "X...");
}

TEST(GHold, TurboStepsEveryPass) {
    ModuleHarness h;
    auto& hold = static_cast<GHold&>(h.add("GHold"));
    hold.turbo = true;
    h.set(hold, 1, 2);
    h.set(hold, 2, 3);
    h.ticks(1);
    h.set(hold, 0, 127);
    EXPECT_EQ(h.gates(hold, 7), "..XXX..");
}

TEST(GHold, WithoutTurboAStepIsAThirtySecond) {
    ModuleHarness h;
    Module& hold = h.add("GHold");
    h.set(hold, 1, 2);
    h.set(hold, 2, 1);
    h.ticks(1);  // tick 1; the 32nd counter is due on ticks 1, 4, 7, 10 ...
    h.set(hold, 0, 127);
    EXPECT_EQ(h.gates(hold, 10), "......XXX.");
}

TEST(GHold, ARetriggerRestartsTheCycleAHeldTriggerDoesNot) {
    ModuleHarness h;
    auto& hold = static_cast<GHold&>(h.add("GHold"));
    hold.turbo = true;
    h.set(hold, 1, 1);
    h.set(hold, 2, 10);
    h.ticks(1);
    h.set(hold, 0, 127);
    EXPECT_EQ(h.gates(hold, 3), ".XX");
    h.set(hold, 0, 0);
    EXPECT_EQ(h.gates(hold, 1), "X");
    h.set(hold, 0, 127);
    EXPECT_EQ(h.gates(hold, 12), std::string(".").append(highs(10)).append("."));
}

TEST(GHold, TurboIsKeptPerSnapshot) {
    ModuleHarness h;
    auto& hold = static_cast<GHold&>(h.add("GHold"));
    hold.turbo = true;
    hold.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 1;
    hold.turbo = false;
    hold.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 0;
    hold.PatchChange(*h.engine);
    EXPECT_TRUE(hold.turbo);
    h.engine->CurrentSnapshot = 1;
    hold.PatchChange(*h.engine);
    EXPECT_FALSE(hold.turbo);
}

TEST(Kicker, KicksWhenAPeriodHasTooLittleVarietyAndKeepsTheLastTallyShown) {
    ModuleHarness h;
    auto& strict = static_cast<Kicker&>(h.add("Kicker"));
    auto& lenient = static_cast<Kicker&>(h.add("Kicker"));
    auto feed = [&](int v) {
        h.set(strict, 0, v);
        h.set(lenient, 0, v);
    };
    h.set(strict, 2, 1);
    h.set(lenient, 2, 3);
    feed(5);
    // Period 0 counts as 1: a period ends on every second quarter note, the first at once.
    EXPECT_EQ(h.gates(strict, 49), std::string("X").append(dots(47)).append("X"));
    EXPECT_EQ(strict.shownTally, 1);
    EXPECT_EQ(strict.tally(), 0);

    for (int v : {10, 20, 10, 30}) {
        feed(v);
        h.ticks(1);
    }
    EXPECT_EQ(strict.tally(), 3) << "a value seen before in the period doesn't count again";
    EXPECT_EQ(h.gates(strict, 44), dots(44)) << "three values are more than 1";
    EXPECT_EQ(h.out(lenient), 127) << "three is within a threshold of 3";
    EXPECT_EQ(strict.shownTally, 3) << "the label keeps the count after the period";
    EXPECT_EQ(h.gates(strict, 48), dots(47) + "X") << "then nothing changed for a period";
}

TEST(Kicker, TheLongerPeriodIsCountedInQuarterNotes) {
    ModuleHarness h;
    auto& kicker = static_cast<Kicker&>(h.add("Kicker"));
    h.set(kicker, 1, 3);
    h.set(kicker, 2, 127);
    EXPECT_EQ(h.gates(kicker, 97), std::string("X").append(dots(95)).append("X"));
}

TEST(Tempox, TheSetStrobeSetsTwiceTheInputOnceForEachRise) {
    ModuleHarness h;
    auto& tempo = static_cast<Tempox&>(h.add("Tempox"));
    h.ticks(1);
    EXPECT_EQ(tempo.shownTempo, 128) << "the input starts on \" mid (64)\"";
    EXPECT_EQ(h.engine->Tempo(), 120) << "the input only prepares";
    h.set(tempo, 2, 127);
    h.ticks(1);
    EXPECT_EQ(h.engine->Tempo(), 128);
    h.set(tempo, 0, 100);
    h.ticks(2);
    EXPECT_EQ(tempo.shownTempo, 200);
    EXPECT_EQ(h.engine->Tempo(), 128) << "the strobe is still high";
    h.edge(tempo, 2);
    EXPECT_EQ(h.engine->Tempo(), 200);
    h.set(tempo, 0, 0);
    h.edge(tempo, 2);
    EXPECT_EQ(tempo.shownTempo, 1);
    EXPECT_EQ(h.engine->Tempo(), 1) << "an input of 0 sets tempo 1";
}

TEST(Tempox, ExtendedTempoTimesFourAndDisabledDoesNothing) {
    ModuleHarness h;
    h.engine->setExtendedTempo(true);
    auto& tempo = static_cast<Tempox&>(h.add("Tempox"));
    h.set(tempo, 0, 127);
    h.edge(tempo, 2);
    EXPECT_EQ(h.engine->Tempo(), 508);
    tempo.Enabled = 0;
    h.set(tempo, 0, 10);
    h.edge(tempo, 2);
    EXPECT_EQ(h.engine->Tempo(), 508);
}

TEST(Tempox, TheResetStrobeRestartsEveryClockFromThatTick) {
    ModuleHarness h;
    auto& tempo = static_cast<Tempox&>(h.add("Tempox"));
    Module& clock = h.add("Clock");
    h.set(clock, 0, 1);
    h.set(clock, 1, 0);
    h.ticks(10);
    h.set(tempo, 3, 127);
    h.ticks(1);  // tick 11 resets after the clock ran
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 1) << "\"~ Turbo\" started over";
    EXPECT_EQ(h.gates(clock, 24), dots(23) + "X") << "the quarter falls 24 ticks after the reset, not on tick 25";
    EXPECT_EQ(h.gates(clock, 24), dots(23) + "X") << "a strobe held high resets once";
}
