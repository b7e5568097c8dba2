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

#include "engine/TimerService.h"

namespace quillmer {

class RealTimeTimerService final : public TimerService {
public:
    RealTimeTimerService();
    // Stops the thread; see stop().
    ~RealTimeTimerService() override;

    TimerId addTimer(std::string name, Callback onFire) override;
    void setInterval(TimerId timer, int32_t intervalMs) override;
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
        int32_t intervalMs = 0;
        Clock::time_point due;
    };

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
