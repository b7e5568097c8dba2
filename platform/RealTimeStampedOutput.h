#pragma once
// The time-stamped queue in real time: a delivery thread of its own sleeps until the next
// stamp falls due on the clock and sends it. The thread asks for SCHED_FIFO and the finest
// timer slack, and runs on as an ordinary thread when refused.

#include <atomic>
#include <condition_variable>
#include <thread>

#include "platform/TimeStampedOutput.h"

namespace quillmer {

class RealTimeStampedOutput final : public TimeStampedOutput {
public:
    // `clock` should run in real time (the real-time timer service); it must outlive this.
    RealTimeStampedOutput(std::unique_ptr<MidiOutputDevice> device, const TimerService& clock);
    // Ends the delivery thread; what is still queued is dropped.
    ~RealTimeStampedOutput() override;

    // Whether the delivery thread got real-time scheduling.
    bool realTimeScheduling() const { return realTime_; }

private:
    void scheduleChanged() override;
    void run();

    std::condition_variable wake_;
    bool changed_ = false;   // under mutex_
    bool stopping_ = false;  // under mutex_
    std::atomic<bool> realTime_{false};
    std::thread thread_;
};

}  // namespace quillmer
