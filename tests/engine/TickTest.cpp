#include <gtest/gtest.h>

#include "Harness.h"

using namespace quillmer;
using quillmer::testing::Harness;
using quillmer::testing::Probe;

// A value travels forward along the type order within a tick and backward with one tick of
// delay; connections never change the order. "Clock" runs before "Unity" in the passes.
TEST(UpdateOrder, ForwardWithinATickBackwardOneTickLate) {
    Harness h;
    Module& early = h.add("Clock");  // probe: output = input + 1
    Module& late = h.add("Unity");
    h.connect(late, 0, "1Clock-");
    h.connect(early, 0, "1Unity-");
    h.engine->StartTimers();
    h.ticks(1);
    EXPECT_EQ(h.out(early), 1);  // read Unity's 0 of the previous tick
    EXPECT_EQ(h.out(late), 2);   // saw this tick's 1
    h.ticks(1);
    EXPECT_EQ(h.out(early), 3);
    EXPECT_EQ(h.out(late), 4);
}

TEST(UpdateOrder, PrioritiesMakeFivePassesAndGroupsRunAroundThem) {
    Harness h;
    Module& last = h.add("Clock");
    Module& first = h.add("Unity");
    Module& late = h.add("Unity");
    Module& midiIn = h.add("Clock");
    h.add("Clock");  // default
    Module& absA = h.add("Unity");
    h.add("Tempox");   // after the passes
    h.add("MIDIKey");  // last of the tick
    last.setPriority(priority::Last);
    first.setPriority(priority::First);
    late.setPriority(priority::Late);
    midiIn.setPriority(priority::MidiInput);
    absA.setPriority(priority::AbsClockA);
    h.engine->StartTimers();
    h.ticks(1);
    const std::vector<std::string> expected{"1Unity-", "3Clock-", "2Clock-", "2Unity-",
                                            "1Clock-", "1Tempo-", "1KeyOut-"};
    EXPECT_EQ(h.log, expected);

    // The MIDI input path runs pass 6 at once; the next tick then skips it, once.
    h.log.clear();
    h.engine->runMidiInputPass();
    EXPECT_EQ(h.log, (std::vector<std::string>{"2Clock-", "1KeyOut-"}));
    h.log.clear();
    h.ticks(1);
    EXPECT_EQ(std::count(h.log.begin(), h.log.end(), "2Clock-"), 0);
    h.log.clear();
    h.ticks(1);
    EXPECT_EQ(std::count(h.log.begin(), h.log.end(), "2Clock-"), 1);
}

TEST(AbsoluteClocks, RunTheirPassesWhileTheTickIsStopped) {
    Harness h;
    Module& a = h.add("Unity");
    Module& b = h.add("Unity");
    a.setPriority(priority::AbsClockA);
    b.setPriority(priority::AbsClockB);
    h.engine->options.absClockA = 10;
    h.engine->options.absClockB = 25;
    h.engine->options.syncMode = SyncMode::Slave;  // the tick timer stays off
    h.engine->StartTimers();
    h.timers.advanceByMs(100);
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 0) << "no tick ran";
    EXPECT_EQ(std::count(h.log.begin(), h.log.end(), "1Unity-"), 10);
    EXPECT_EQ(std::count(h.log.begin(), h.log.end(), "2Unity-"), 4);
}

TEST(DurationCounters, EveryDurationFiresOnTheFirstTickAfterReset) {
    DurationCounters c;
    for (int code = 0; code < kDurationCodeCount; ++code) EXPECT_TRUE(c.atZero(code)) << code;
    c.advance();
    EXPECT_EQ(c.value(109), 2047);
    EXPECT_EQ(c.value(0), 11);
}

TEST(DurationCounters, CodesZeroAndOneAreEighthAndQuarterAndSixIsSixTicks) {
    auto firingTicks = [](int code, int ticks) {
        DurationCounters c;
        std::vector<int> fired;
        for (int t = 1; t <= ticks; ++t) {
            if (readDuration(static_cast<uint8_t>(code)).fires(c)) fired.push_back(t);
            c.advance();
        }
        return fired;
    };
    EXPECT_EQ(firingTicks(6, 20), (std::vector<int>{1, 7, 13, 19}));
    EXPECT_EQ(firingTicks(0, 30), (std::vector<int>{1, 13, 25}));
    EXPECT_EQ(firingTicks(1, 50), (std::vector<int>{1, 25, 49}));
    EXPECT_EQ(firingTicks(110, 20), firingTicks(6, 20));
    EXPECT_EQ(firingTicks(126, 5), (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(ClockRule, LabelsAndCodes) {
    EXPECT_EQ(readDuration(109).code, 109);
    EXPECT_EQ(readDuration(109).label, DurationLabel::Dur);
    EXPECT_EQ(readDuration(110).code, 6);
    EXPECT_EQ(readDuration(110).label, DurationLabel::DurYellow);
    EXPECT_EQ(readDuration(125).label, DurationLabel::DurYellow);
    EXPECT_TRUE(readDuration(126).turbo());
    EXPECT_TRUE(readDuration(127).turbo());
}

TEST(TimeBase, TablesAsShown) {
    EXPECT_EQ(DurationReload[97], 128);
    EXPECT_EQ(DurationReload[109], 2048);
    EXPECT_EQ(TimeBaseTable[16].name, "  Whl");
    EXPECT_EQ(TimeBaseTable[17].code, 98);
    EXPECT_EQ(TimeBaseTable[30].code, 126);
    EXPECT_EQ(TimeBaseOrder[2], 3);
    EXPECT_EQ(PitchNames[1], "C#");
    // TimeBaseOrder lists the first 30 in ascending length.
    for (size_t i = 1; i < TimeBaseOrder.size(); ++i)
        EXPECT_LE(DurationReload[TimeBaseTable[TimeBaseOrder[i - 1]].code],
                  DurationReload[TimeBaseTable[TimeBaseOrder[i]].code]);
}

TEST(Tempo, TickPeriodRoundsToNearestWithTiesToEven) {
    EXPECT_EQ(TickPeriodFor(120), 21);  // 20.83
    EXPECT_EQ(TickPeriodFor(250), 10);
    EXPECT_EQ(TickPeriodFor(1000), 2);  // 2.5
    EXPECT_EQ(TickPeriodFor(200), 12);  // 12.5
    EXPECT_EQ(TickPeriodFor(1), 2500);
    EXPECT_EQ(TickPeriodFor(714), 4);   // 3.50
    EXPECT_EQ(TickPeriodFor(556), 4);   // 4.496
}

TEST(Tempo, LimitsFollowTheExtendedTempoOption) {
    Harness h;
    h.engine->SetNewTempo(0);
    EXPECT_EQ(h.engine->Tempo(), 1);
    h.engine->SetNewTempo(900);
    EXPECT_EQ(h.engine->Tempo(), 254);
    h.engine->setExtendedTempo(true);
    h.engine->SetNewTempo(1200);
    EXPECT_EQ(h.engine->Tempo(), 1000);
    EXPECT_EQ(h.engine->TickPeriod(), 2);
    h.engine->setExtendedTempo(false);
    EXPECT_EQ(h.engine->Tempo(), 254);
}

TEST(Tempo, AChangeKeepsThePhaseOfTheCounters) {
    Harness h;
    h.engine->StartTimers();
    h.ticks(5);
    const int32_t before = h.engine->counters.value(24);
    h.engine->SetNewTempo(60);
    EXPECT_EQ(h.engine->counters.value(24), before);
    EXPECT_EQ(h.engine->TickPeriod(), 42);
    const int64_t t0 = h.timers.nowMicros();
    h.timers.advanceByMs(42);
    EXPECT_EQ(h.engine->counters.value(24), before - 1);
    EXPECT_EQ(h.timers.nowMicros() - t0, 42000);
}

TEST(ResyncPulse, LastsThreeTickPeriodsOfTimerTime) {
    Harness h;
    h.engine->options.resetModules = true;
    h.engine->markPatchLoaded();
    h.engine->StartTimers();
    h.timers.advanceByMs(21);  // first tick starts the pulse
    EXPECT_TRUE(h.engine->resyncPulseActive());
    EXPECT_EQ(h.engine->bus[sysbus::TStart], 127);
    EXPECT_EQ(h.engine->bus[sysbus::TLoad], 127);
    h.timers.advanceByMs(21 * 3 - 1);
    EXPECT_EQ(h.engine->bus[sysbus::TStart], 127);
    h.timers.advanceByMs(1);
    EXPECT_EQ(h.engine->bus[sysbus::TStart], 0);
    EXPECT_EQ(h.engine->bus[sysbus::TLoad], 0);
    EXPECT_FALSE(h.engine->ResyncPending);
}

TEST(ResyncPulse, ModulesSeeResyncPendingForOneTickAndTriggersOffKeepsTStartLow) {
    Harness h;
    h.engine->options.resetModules = true;
    h.engine->options.triggersOff = true;
    h.engine->StartTimers();
    EXPECT_TRUE(h.engine->ResyncPending);
    h.ticks(1);
    EXPECT_TRUE(h.engine->ResyncPending);
    EXPECT_EQ(h.engine->bus[sysbus::TStart], 0);
    h.ticks(1);
    EXPECT_FALSE(h.engine->ResyncPending);
}

TEST(Transport, RunStartResetsCountersAndWholeCountsAfterTheDelay) {
    Harness h;
    h.engine->options.wholeDelay = 2;
    h.engine->StartTimers();
    h.ticks(10);
    EXPECT_EQ(h.engine->bus[sysbus::Whole], 0) << "stopped: no whole notes counted";
    h.engine->setRun(true);
    h.ticks(1);
    EXPECT_TRUE(h.engine->runStarted());
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 1) << "the run start reset the tick counter";
    h.ticks(1);
    EXPECT_FALSE(h.engine->runStarted());
    h.ticks(96 * 2 - 2);
    EXPECT_EQ(h.engine->bus[sysbus::Whole], 0);
    h.ticks(1);  // the third whole note after the start
    EXPECT_EQ(h.engine->bus[sysbus::Whole], 1);
    h.ticks(96);
    EXPECT_EQ(h.engine->bus[sysbus::Whole], 2);
}

TEST(Transport, TurboCountsModulo128) {
    Harness h;
    h.engine->StartTimers();
    h.ticks(130);
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 2);
}

TEST(Transport, StopRunsOneLastTickUnderTheStoppingFlag) {
    Harness h;
    auto& probe = static_cast<Probe&>(h.add("Unity"));
    h.engine->StartTimers();
    h.ticks(3);
    EXPECT_FALSE(probe.sawStopping);
    h.log.clear();
    h.engine->StopTimers();
    EXPECT_EQ(h.log.size(), 1u);
    EXPECT_TRUE(probe.sawStopping);
    EXPECT_FALSE(h.engine->stopping());
    EXPECT_FALSE(h.engine->timersRunning());
    h.timers.advanceByMs(500);
    EXPECT_EQ(h.log.size(), 1u) << "the tick timer is off";
    EXPECT_TRUE(h.engine->counters.atZero(109));
}

TEST(Transport, ResetClocksRestartsTheCountersAndTheTickTimer) {
    Harness h;
    h.engine->StartTimers();
    h.ticks(7);
    h.engine->ResetClocks();
    EXPECT_TRUE(h.engine->counters.atZero(6));
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 0);
    EXPECT_EQ(h.timers.interval(h.engine->tickTimer()), 21);
}

TEST(Lamps, TickLampTogglesEveryEighthAndActivityLampsFlash) {
    Harness h;
    h.engine->StartTimers();
    h.ticks(1);
    EXPECT_TRUE(h.engine->lamps.tick);
    h.ticks(12);
    EXPECT_FALSE(h.engine->lamps.tick);
    h.engine->lamps.midiOutFlag = true;
    h.ticks(1);
    EXPECT_TRUE(h.engine->lamps.midiOut);
    h.ticks(1);
    EXPECT_FALSE(h.engine->lamps.midiOut);
    EXPECT_FALSE(h.engine->lamps.midiOutFlag);
}

TEST(TableLoadStrobe, LastsExactlyOneTick) {
    Harness h;
    h.engine->StartTimers();
    h.engine->requestTableLoadStrobe(9);
    h.ticks(1);
    EXPECT_TRUE(h.engine->tableLoadStrobe());
    EXPECT_EQ(h.engine->tableLoadValue(), 9);
    h.ticks(1);
    EXPECT_FALSE(h.engine->tableLoadStrobe());
}

TEST(Keys, KeyDownCountsRepeatsUpTo127AndKeyUpClearsIt) {
    Harness h;
    h.engine->keyDown(0x141, 2);  // a code above 127 keeps its low seven bits
    EXPECT_EQ(h.engine->bus[sysbus::KeyChar], 0x41);
    EXPECT_EQ(h.engine->bus[sysbus::KeyCtrl], 2);
    EXPECT_EQ(h.engine->bus[sysbus::KeyDown], 1);
    for (int i = 0; i < 200; ++i) h.engine->keyDown('A', 0);
    EXPECT_EQ(h.engine->bus[sysbus::KeyDown], 127);
    h.engine->keyUp();
    EXPECT_EQ(h.engine->bus[sysbus::KeyDown], 0);
    EXPECT_EQ(h.engine->bus[sysbus::KeyChar], 'A') << "the last key stays";
}

namespace {
// Counts what the engine tells the parts outside it about seeding.
class SeedSeams final : public EngineSeams {
public:
    void reseedRandom(int32_t seed) override { seeds.push_back(seed); }
    std::vector<int32_t> seeds;
};
std::vector<float> draws(Engine& e, int n) {
    std::vector<float> v;
    for (int i = 0; i < n; ++i) v.push_back(e.random.next());
    return v;
}
}  // namespace

TEST(RandomSeed, ResetClocksRepeatsTheSequenceOfANonZeroSeedAndZeroLeavesItRunning) {
    VirtualTimerService timers;
    ModuleRegistry registry;
    registerBuiltTypes(registry);
    SeedSeams seams;
    Engine e(timers, registry, &seams);
    auto held = e.lock();
    e.options.randomSeed = 0;
    e.ResetClocks();
    EXPECT_TRUE(seams.seeds.empty()) << "no seed, no reseed";
    const std::vector<float> unseeded = draws(e, 8);
    e.ResetClocks();
    EXPECT_NE(draws(e, 8), unseeded) << "seed 0: the sequence runs on";

    e.options.randomSeed = 4242;
    e.ResetClocks();
    const std::vector<float> first = draws(e, 8);
    for (int i = 0; i < 100; ++i) e.random.next();
    e.ResetClocks();
    EXPECT_EQ(draws(e, 8), first);
    EXPECT_EQ(seams.seeds, (std::vector<int32_t>{4242, 4242}));
    e.seedRandom(4243);
    EXPECT_NE(draws(e, 8), first) << "another seed, another sequence";
    for (float f : first) {
        EXPECT_GE(f, 0.0f);
        EXPECT_LT(f, 1.0f);
    }
}

TEST(RandomSeed, WholeNumbersCoverBothBoundsAndNothingOutside) {
    RandomSource random;
    random.seed(-17);
    int low = 0, high = 0;
    for (int i = 0; i < 20000; ++i) {
        const int v = random.between(-3, 3);
        ASSERT_GE(v, -3);
        ASSERT_LE(v, 3);
        low += v == -3;
        high += v == 3;
    }
    EXPECT_GT(low, 2000);
    EXPECT_GT(high, 2000);
    EXPECT_EQ(random.between(5, 5), 5);
    EXPECT_EQ(random.between(9, 2), 9);
}
