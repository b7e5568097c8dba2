#include "engine/VirtualTimerService.h"

namespace quillmer {

TimerId VirtualTimerService::addTimer(std::string name, Callback onFire) {
    timers_.push_back(Timer{std::move(name), std::move(onFire), 0, 0});
    return static_cast<TimerId>(timers_.size() - 1);
}

void VirtualTimerService::setInterval(TimerId timer, int32_t intervalMs) {
    Timer& t = timers_.at(static_cast<size_t>(timer));
    t.intervalMs = intervalMs < 0 ? 0 : intervalMs;
    t.dueMicros = now_ + int64_t{t.intervalMs} * 1000;
}

int32_t VirtualTimerService::interval(TimerId timer) const {
    return timers_.at(static_cast<size_t>(timer)).intervalMs;
}

int64_t VirtualTimerService::nextDue() const {
    int64_t best = -1;
    for (const Timer& t : timers_)
        if (t.intervalMs > 0 && (best < 0 || t.dueMicros < best)) best = t.dueMicros;
    return best;
}

bool VirtualTimerService::fireNext() {
    const int64_t due = nextDue();
    if (due < 0) return false;
    if (due > now_) now_ = due;
    // One firing per timer due now, in creation order; a callback may change any timer.
    for (size_t i = 0; i < timers_.size(); ++i) {
        Timer& t = timers_[i];
        if (t.intervalMs <= 0 || t.dueMicros != due) continue;
        t.dueMicros += int64_t{t.intervalMs} * 1000;
        Callback call = t.onFire;  // the callback may add timers and move the vector
        if (call) call();
    }
    return true;
}

void VirtualTimerService::advanceTo(int64_t untilMicros) {
    for (;;) {
        const int64_t due = nextDue();
        if (due < 0 || due > untilMicros) break;
        fireNext();
    }
    if (untilMicros > now_) now_ = untilMicros;
}

}  // namespace quillmer
