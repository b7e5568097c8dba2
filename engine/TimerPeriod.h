#pragma once
// A timer's period as a fraction of a millisecond, and when its n-th firing falls due.
// Both timer services count firings from an anchor instead of adding periods, so a period
// like 2500/120 ms keeps its exact length over any number of firings.

#include <cstdint>

namespace quillmer {

struct TimerPeriod {
    int64_t numeratorMs = 0;  // 0: stopped
    int32_t denominator = 1;

    static TimerPeriod wholeMs(int32_t ms) { return {ms > 0 ? ms : 0, 1}; }
    static TimerPeriod exact(int64_t numeratorMs, int32_t denominator) {
        // Below a microsecond a period means nothing to either clock.
        if (numeratorMs < 1 || denominator < 1 || numeratorMs * 1000 < denominator) return {};
        return {numeratorMs, denominator};
    }
    bool running() const { return numeratorMs > 0; }
    // Rounded to whole ms, ties to even, at least 1 while running.
    int32_t roundedMs() const {
        if (!running()) return 0;
        const int64_t whole = numeratorMs / denominator;
        const int64_t twice = 2 * (numeratorMs % denominator);
        int64_t ms = whole;
        if (twice > denominator || (twice == denominator && (whole & 1) != 0)) ++ms;
        return static_cast<int32_t>(ms < 1 ? 1 : ms);
    }
    // Offset of the n-th firing from the anchor, in units of 1/unitsPerMs ms (1000 for
    // microseconds, 1000000 for nanoseconds), rounded down.
    int64_t offsetOf(int64_t firing, int64_t unitsPerMs) const {
        return firing * numeratorMs * unitsPerMs / denominator;
    }
};

}  // namespace quillmer
