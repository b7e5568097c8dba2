#include "platform/RealTimeStampedOutput.h"

#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>

#include <chrono>

namespace quillmer {
namespace {

// One step below the top of the real-time range: above ordinary threads, below the system's
// own emergency work.
bool askForRealTimeScheduling() {
    sched_param param{};
    param.sched_priority = sched_get_priority_max(SCHED_FIFO) - 1;
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &param) == 0;
}

}  // namespace

RealTimeStampedOutput::RealTimeStampedOutput(std::unique_ptr<MidiOutputDevice> device, const TimerService& clock)
    : TimeStampedOutput(std::move(device), clock) {
    thread_ = std::thread([this] { run(); });
}

RealTimeStampedOutput::~RealTimeStampedOutput() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void RealTimeStampedOutput::scheduleChanged() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        changed_ = true;
    }
    wake_.notify_one();
}

void RealTimeStampedOutput::run() {
    realTime_ = askForRealTimeScheduling();
    // Wake-ups land within a microsecond instead of the default 50 µs slack.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);

    for (;;) {
        const int64_t nextDue = deliverDue(clock_.nowMicros());
        std::unique_lock<std::mutex> held(mutex_);
        if (stopping_) return;
        if (changed_) {
            changed_ = false;
            continue;
        }
        const auto woken = [this] { return changed_ || stopping_; };
        if (nextDue < 0) {
            wake_.wait(held, woken);
        } else {
            const auto wait = std::chrono::microseconds(nextDue - clock_.nowMicros());
            wake_.wait_until(held, std::chrono::steady_clock::now() + wait, woken);
        }
        changed_ = false;
    }
}

}  // namespace quillmer
