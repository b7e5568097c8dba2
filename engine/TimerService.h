#pragma once
// Periodic timers in whole milliseconds, as the engine's clocks need them.
// Two implementations: real time (platform/RealTimeTimerService) and virtual time
// (engine/VirtualTimerService) for tests, benchmarks and offline rendering.

#include <cstdint>
#include <functional>
#include <string>

namespace quillmer {

using TimerId = int;

class TimerService {
public:
    using Callback = std::function<void()>;

    virtual ~TimerService() = default;

    // Creates a stopped timer. Timers due at the same instant fire in creation order.
    virtual TimerId addTimer(std::string name, Callback onFire) = 0;

    // Interval in ms; 0 stops the timer. Any non-zero value restarts the period from now.
    // Safe from any thread, including from inside a callback.
    virtual void setInterval(TimerId timer, int32_t intervalMs) = 0;
    // A period of numeratorMs / denominator ms, for periods that aren't whole milliseconds.
    // Firings fall due at start + n * numeratorMs / denominator, so they never drift.
    // interval() then gives the period rounded to whole ms, at least 1. A numerator or
    // denominator below 1 stops the timer.
    virtual void setExactInterval(TimerId timer, int64_t numeratorMs, int32_t denominator) = 0;
    // The interval in ms, 0 when stopped.
    virtual int32_t interval(TimerId timer) const = 0;

    // The service's clock in microseconds since it was made. Safe from any thread.
    virtual int64_t nowMicros() const = 0;
};

}  // namespace quillmer
