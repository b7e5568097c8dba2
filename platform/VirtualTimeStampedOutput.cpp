#include "platform/VirtualTimeStampedOutput.h"

#include <algorithm>
#include <limits>

namespace quillmer {

VirtualTimeStampedOutput::VirtualTimeStampedOutput(std::unique_ptr<MidiOutputDevice> device, TimerService& timers)
    : TimeStampedOutput(std::move(device), timers), timers_(timers) {
    timer_ = timers_.addTimer("time-stamped queue of " + name(), [this] {
        // The timer repeats unless told otherwise: whatever comes next is armed afresh.
        armedFor_ = std::numeric_limits<int64_t>::min();
        scheduleChanged();
    });
}

VirtualTimeStampedOutput::~VirtualTimeStampedOutput() { timers_.setInterval(timer_, 0); }

void VirtualTimeStampedOutput::scheduleChanged() { armFor(deliverDue(clock_.nowMicros())); }

void VirtualTimeStampedOutput::armFor(int64_t dueMicros) {
    if (dueMicros < 0) {
        if (armedFor_ != -1) timers_.setInterval(timer_, 0);
        armedFor_ = -1;
        return;
    }
    if (armedFor_ >= dueMicros && armedFor_ < dueMicros + 1000) return;  // already armed for it
    // Timers count whole milliseconds from now; a due time off that grid fires at the next
    // millisecond after it.
    const int64_t now = clock_.nowMicros();
    const int64_t waitMs = std::max<int64_t>(1, (dueMicros - now + 999) / 1000);
    timers_.setInterval(timer_, static_cast<int32_t>(waitMs));
    armedFor_ = now + waitMs * 1000;
}

}  // namespace quillmer
