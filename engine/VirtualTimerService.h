#pragma once
// Timers in virtual time: a discrete-event clock that only moves when asked to.
// Tests, benchmarks and offline rendering advance it as fast as the CPU allows, and a
// run repeats exactly. Timers due at the same instant fire in creation order.
// Not thread-safe: one thread owns it.

#include <vector>

#include "engine/TimerPeriod.h"
#include "engine/TimerService.h"

namespace quillmer {

class VirtualTimerService final : public TimerService {
public:
    TimerId addTimer(std::string name, Callback onFire) override;
    void setInterval(TimerId timer, int32_t intervalMs) override;
    void setExactInterval(TimerId timer, int64_t numeratorMs, int32_t denominator) override;
    int32_t interval(TimerId timer) const override;
    int64_t nowMicros() const override { return now_; }

    // Fires every timer due up to and including `untilMicros`, in time order, then sets the
    // clock there. Callbacks see nowMicros() at their own due time.
    void advanceTo(int64_t untilMicros);
    void advanceByMs(int64_t ms) { advanceTo(now_ + ms * 1000); }
    // Advances to the next due timer and fires everything due then; false when no timer runs.
    bool fireNext();
    // Time of the next firing, or -1 when every timer is off.
    int64_t nextDue() const;

private:
    struct Timer {
        std::string name;
        Callback onFire;
        TimerPeriod period;
        int64_t anchorMicros = 0;  // when the period last started
        int64_t firings = 0;       // the next firing's number from the anchor
        int64_t dueMicros = 0;
    };
    void start(Timer& t, TimerPeriod period);
    std::vector<Timer> timers_;
    int64_t now_ = 0;
};

}  // namespace quillmer
