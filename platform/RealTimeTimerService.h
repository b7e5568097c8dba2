#pragma once
// Timers in real time: one high-priority thread with drift-free deadlines on the steady
// clock. Deadlines advance by whole intervals from where they started, so a late firing
// doesn't shift the ones after it; firings that can't be delivered in time are dropped.
// Callbacks run on the timer thread with none of the service's locks held.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/TimerPeriod.h"
#include "engine/TimerService.h"

namespace quillmer {

class RealTimeTimerService final : public TimerService {
public:
    RealTimeTimerService();
    // Stops the thread; see stop().
    ~RealTimeTimerService() override;

    TimerId addTimer(std::string name, Callback onFire) override;
    void setInterval(TimerId timer, int32_t intervalMs) override;
    void setExactInterval(TimerId timer, int64_t numeratorMs, int32_t denominator) override;
    int32_t interval(TimerId timer) const override;
    int64_t nowMicros() const override;

    // Ends the timer thread after the callback in progress. Call it before destroying what
    // the callbacks use. Safe from any thread but the timer thread.
    void stop();

    // Called on the timer thread before each firing with how late it is, in microseconds.
    // Set it before the first interval.
    void setLatenessObserver(std::function<void(TimerId, int64_t)> observer) { observer_ = std::move(observer); }

    // Whether the thread got real-time scheduling (SCHED_FIFO); it runs on without it.
    bool realTimeScheduling() const { return realTime_.load(); }

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        std::string name;
        Callback onFire;
        TimerPeriod period;
        Clock::time_point anchor;  // when the period last started
        int64_t firings = 0;       // the next firing's number from the anchor
        Clock::time_point due;

        Clock::time_point dueOf(int64_t firing) const {
            return anchor + std::chrono::nanoseconds(period.offsetOf(firing, 1'000'000));
        }
    };

    void start(TimerId timer, TimerPeriod period);
    void run();

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<Timer> timers_;
    Clock::time_point start_ = Clock::now();
    std::function<void(TimerId, int64_t)> observer_;
    bool stopping_ = false;
    std::atomic<bool> realTime_{false};  // written by the timer thread as it starts
    std::thread thread_;
};

}  // namespace quillmer
