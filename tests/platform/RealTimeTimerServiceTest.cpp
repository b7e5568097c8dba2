#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/RealTimeTimerService.h"

using namespace quillmer;
using namespace std::chrono_literals;

namespace {
// Waits until `done` holds, for at most a few seconds (a slow machine is not a failure of
// the timer; a timer that never fires is).
template <class F>
bool eventually(F done) {
    for (int i = 0; i < 400 && !done(); ++i) std::this_thread::sleep_for(10ms);
    return done();
}
}  // namespace

TEST(RealTimeTimers, FireRepeatedlyAndStopWhenTheIntervalIsZero) {
    RealTimeTimerService timers;
    std::atomic<int> fired{0};
    const TimerId t = timers.addTimer("test", [&] { ++fired; });
    timers.setInterval(t, 2);
    EXPECT_TRUE(eventually([&] { return fired >= 5; }));
    timers.setInterval(t, 0);
    std::this_thread::sleep_for(20ms);
    const int settled = fired;
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(fired, settled);
    EXPECT_EQ(timers.interval(t), 0);
}

TEST(RealTimeTimers, ACallbackMayStopItsOwnTimerAndStartAnother) {
    RealTimeTimerService timers;
    std::atomic<int> first{0}, second{0};
    TimerId b = -1;
    const TimerId a = timers.addTimer("one-shot", [&] {
        ++first;
        timers.setInterval(a, 0);
        timers.setInterval(b, 1);
    });
    b = timers.addTimer("follower", [&] { ++second; });
    timers.setInterval(a, 1);
    EXPECT_TRUE(eventually([&] { return second >= 3; }));
    EXPECT_EQ(first, 1);
}

TEST(RealTimeTimers, StopEndsTheThreadAndTheClockRuns) {
    RealTimeTimerService timers;
    const int64_t t0 = timers.nowMicros();
    std::atomic<int> fired{0};
    const TimerId t = timers.addTimer("test", [&] { ++fired; });
    timers.setInterval(t, 1);
    EXPECT_TRUE(eventually([&] { return fired >= 1; }));
    timers.stop();
    const int settled = fired;
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(fired, settled);
    EXPECT_GT(timers.nowMicros(), t0);
}
