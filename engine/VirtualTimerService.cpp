#include "engine/VirtualTimerService.h"

namespace quillmer {

TimerId VirtualTimerService::addTimer(std::string name, Callback onFire) {
    timers_.push_back(Timer{std::move(name), std::move(onFire), {}, 0, 0, 0});
    return static_cast<TimerId>(timers_.size() - 1);
}

void VirtualTimerService::start(Timer& t, TimerPeriod period) {
    t.period = period;
    t.anchorMicros = now_;
    t.firings = 1;
    t.dueMicros = now_ + period.offsetOf(1, 1000);
}

void VirtualTimerService::setInterval(TimerId timer, int32_t intervalMs) {
    start(timers_.at(static_cast<size_t>(timer)), TimerPeriod::wholeMs(intervalMs));
}

void VirtualTimerService::setExactInterval(TimerId timer, int64_t numeratorMs, int32_t denominator) {
    start(timers_.at(static_cast<size_t>(timer)), TimerPeriod::exact(numeratorMs, denominator));
}

int32_t VirtualTimerService::interval(TimerId timer) const {
    return timers_.at(static_cast<size_t>(timer)).period.roundedMs();
}

int64_t VirtualTimerService::nextDue() const {
    int64_t best = -1;
    for (const Timer& t : timers_)
        if (t.period.running() && (best < 0 || t.dueMicros < best)) best = t.dueMicros;
    return best;
}

bool VirtualTimerService::fireNext() {
    const int64_t due = nextDue();
    if (due < 0) return false;
    if (due > now_) now_ = due;
    // One firing per timer due now, in creation order; a callback may change any timer.
    for (size_t i = 0; i < timers_.size(); ++i) {
        Timer& t = timers_[i];
        if (!t.period.running() || t.dueMicros != due) continue;
        ++t.firings;
        t.dueMicros = t.anchorMicros + t.period.offsetOf(t.firings, 1000);
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
