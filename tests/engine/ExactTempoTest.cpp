// Exact tempo: the tick timer runs at 2500/Tempo ms without drift, the output stamps and
// the recorded tempo follow it, and TickPeriod keeps its whole milliseconds.

#include <gtest/gtest.h>

#include "engine/TimerPeriod.h"
#include "tests/engine/Harness.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

constexpr int64_t kHourMs = 3'600'000;

// Ticks the engine runs in `ms` of virtual time from a fresh start at `tempo`.
uint64_t ticksIn(Harness& h, int tempo, int64_t ms) {
    h.engine->setExtendedTempo(true);
    h.engine->SetNewTempo(tempo);
    h.engine->StartTimers();
    const uint64_t before = h.engine->ticksRun();
    h.timers.advanceByMs(ms);
    return h.engine->ticksRun() - before;
}

class TempoSink final : public MidiFileSink {
public:
    void begin(int) override {}
    void beginRecording(int, uint32_t micros) override { quarterMicros = micros; }
    void add(int, uint32_t, std::span<const uint8_t>) override {}
    bool save(const std::string&, std::span<const int>, std::string&) override { return true; }
    uint32_t quarterMicros = 0;
};

}  // namespace

TEST(ExactTempo, AVirtualHourHoldsTheIdealTickCountWithinOneTick) {
    for (int tempo : {1, 7, 33, 97, 120, 140, 200, 254, 333, 1000}) {
        Harness h;
        h.engine->setExactTempo(true);
        const int64_t ideal = kHourMs * tempo / 2500;  // 2500/tempo ms a tick
        const auto ran = static_cast<int64_t>(ticksIn(h, tempo, kHourMs));
        EXPECT_LE(std::abs(ran - ideal), 1) << "tempo " << tempo;
        // TickPeriod keeps its rounded meaning, and the timer reads it back.
        EXPECT_EQ(h.engine->TickPeriod(), TickPeriodFor(tempo));
        EXPECT_EQ(h.timers.interval(h.engine->tickTimer()), TickPeriodFor(tempo));
    }
}

TEST(ExactTempo, OffTicksInWholeMillisecondsAsBefore) {
    Harness h;
    ASSERT_FALSE(h.engine->options.exactTempo);
    EXPECT_EQ(ticksIn(h, 120, 10'000), 10'000u / 21u);  // 476, not 480
}

TEST(ExactTempo, OutputStampsKeepPaceWithTheTicksOverAnHour) {
    for (bool exact : {true, false}) {
        Harness h;
        h.engine->setExactTempo(exact);
        h.engine->ports.setLatency(50);
        const uint64_t ran = ticksIn(h, 120, kHourMs);
        const int32_t advanced = h.engine->OutputStamp - 50;  // latency >= TickPeriod: starts at latency
        if (exact) {
            // Within a millisecond of the ticks' exact time.
            EXPECT_LE(std::abs(advanced - static_cast<int64_t>(ran) * 2500 / 120), 1);
        } else {
            EXPECT_EQ(advanced, static_cast<int32_t>(ran) * 21);
        }
    }
}

TEST(ExactTempo, SwitchingWhileRunningKeepsThePhaseAndChangesThePeriod) {
    Harness h;
    h.engine->StartTimers();
    h.ticks(10);
    const int32_t phase = h.engine->counters.value(24);
    h.engine->setExactTempo(true);
    EXPECT_EQ(h.engine->counters.value(24), phase);
    // From the switch on, 3 ticks take 62.5 ms, not 63.
    const uint64_t before = h.engine->ticksRun();
    h.timers.advanceTo(h.timers.nowMicros() + 62'500);
    EXPECT_EQ(h.engine->ticksRun() - before, 3u);
    h.engine->setExactTempo(false);
    h.timers.advanceTo(h.timers.nowMicros() + 62'999);
    EXPECT_EQ(h.engine->ticksRun() - before, 5u);
    h.timers.advanceTo(h.timers.nowMicros() + 1);
    EXPECT_EQ(h.engine->ticksRun() - before, 6u);
}

TEST(ExactTempo, AStoppedEngineStaysStoppedWhenTheOptionChanges) {
    Harness h;
    h.engine->setExactTempo(true);
    h.timers.advanceByMs(1000);
    EXPECT_EQ(h.engine->ticksRun(), 0u);
    EXPECT_EQ(h.timers.interval(h.engine->tickTimer()), 0);
}

TEST(ExactTempo, TheRecordedTempoIsTheTempoThatPlayed) {
    for (bool exact : {true, false}) {
        Harness h;
        TempoSink sink;
        h.engine->setExactTempo(exact);
        h.engine->ports.setRecordSink(&sink);
        h.engine->ports.setRecording(true);
        h.engine->setRun(true);
        h.engine->StartTimers();
        h.timers.fireNext();
        // 120: 500000 us a quarter exactly; whole ms: 24 ticks of 21 ms.
        EXPECT_EQ(sink.quarterMicros, exact ? 500'000u : 504'000u);
    }
}

TEST(TimerPeriods, RoundAndRefuseAsDocumented) {
    EXPECT_EQ(TimerPeriod::exact(2500, 120).roundedMs(), 21);
    EXPECT_EQ(TimerPeriod::exact(2500, 1000).roundedMs(), 2);  // 2.5: ties to even
    EXPECT_EQ(TimerPeriod::exact(2500, 714).roundedMs(), 4);   // 3.501
    EXPECT_EQ(TimerPeriod::exact(1, 3).roundedMs(), 1);        // never 0 while running
    EXPECT_FALSE(TimerPeriod::exact(1, 2000).running());      // under a microsecond
    EXPECT_FALSE(TimerPeriod::exact(0, 5).running());
    EXPECT_FALSE(TimerPeriod::exact(5, 0).running());
    EXPECT_FALSE(TimerPeriod::wholeMs(-3).running());
    // The n-th firing counts from the anchor: no rounding error piles up.
    EXPECT_EQ(TimerPeriod::exact(2500, 120).offsetOf(172'800, 1000), 3'600'000'000);
}

TEST(TimerPeriods, VirtualTimersFireAtFlooredExactTimesAndRestartFromNow) {
    VirtualTimerService timers;
    std::vector<int64_t> at;
    const TimerId id = timers.addTimer("t", [&] { at.push_back(timers.nowMicros()); });
    timers.advanceTo(1000);
    timers.setExactInterval(id, 10, 3);  // 3.333 ms
    timers.advanceTo(1000 + 10'000);
    EXPECT_EQ(at, (std::vector<int64_t>{4333, 7666, 11000}));
    timers.setInterval(id, 2);  // back to whole ms, from now
    timers.advanceTo(15'000);
    EXPECT_EQ(at.back(), 15'000);
    EXPECT_EQ(at.size(), 5u);
    timers.setExactInterval(id, 0, 1);  // off
    EXPECT_EQ(timers.nextDue(), -1);
}
