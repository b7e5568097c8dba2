#pragma once
// Musical time as counters: every duration in a patch is the index of one of 110 counters
// that all run off the tick, 96 ticks to a whole note.

#include <array>
#include <cstdint>
#include <string_view>

#include "engine/Constants.h"

namespace quillmer {

// Period in ticks of each DurationCode 0..109: 0 is an eighth (12), 1 a quarter (24),
// 2..96 the code itself, then the long values up to 2048.
extern const std::array<uint16_t, kDurationCodeCount> DurationReload;

struct TimeBaseEntry {
    std::string_view name;  // as shown in duration selectors
    uint8_t code;           // DurationCode, or 126 for Turbo
};
// The 31 durations offered in selectors ("t" triplet, "d" dotted).
extern const std::array<TimeBaseEntry, 31> TimeBaseTable;
// TimeBaseTable's first 30 entries in ascending musical length.
extern const std::array<uint8_t, 30> TimeBaseOrder;
// "Cn", "C#", ... "Bn", read through note % 12.
extern const std::array<std::string_view, 12> PitchNames;

constexpr uint8_t kTurboCode = 126;
constexpr uint8_t kFallbackCode = 6;  // what codes 110..125 count as

// Milliseconds between ticks at a tempo in quarter notes a minute: 2500 / tempo, rounded
// to the nearest integer with ties to even (21 at 120, 2 at 1000).
int32_t TickPeriodFor(int tempo);

class DurationCounters {
public:
    DurationCounters() { reset(); }

    // Every counter to 0: every duration fires on the next tick.
    void reset() { counters_.fill(0); }
    // End of a tick: a counter at 0 reloads to its period minus 1, any other counts down.
    void advance();

    bool atZero(int code) const { return counters_[static_cast<size_t>(code)] == 0; }
    int32_t value(int code) const { return counters_[static_cast<size_t>(code)]; }

private:
    std::array<int32_t, kDurationCodeCount> counters_{};
};

// How a duration input shows above its button.
enum class DurationLabel : uint8_t { Dur, DurYellow, Turbo };

// The clock rule for a duration input: a bus value read as a DurationCode.
struct DurationInput {
    uint8_t code = 0;  // 0..109, or kTurboCode
    DurationLabel label = DurationLabel::Dur;

    bool turbo() const { return label == DurationLabel::Turbo; }
    // Whether the input fires in this tick.
    bool fires(const DurationCounters& counters) const { return turbo() || counters.atZero(code); }
};

// Below 110 the code itself; 110..125 count as code 6 with a yellow label; 126 and 127 are
// Turbo, every tick.
constexpr DurationInput readDuration(uint8_t v) {
    if (v < kDurationCodeCount) return {v, DurationLabel::Dur};
    if (v < kTurboCode) return {kFallbackCode, DurationLabel::DurYellow};
    return {kTurboCode, DurationLabel::Turbo};
}

}  // namespace quillmer
