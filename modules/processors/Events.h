#pragma once
// Event detectors: Kicker, a detector of lack of variety.
// Everything here needs the engine lock.

#include <array>

#include "engine/Module.h"

namespace quillmer {

// Tallies the different values its input takes in a period of quarter notes; at the end
// of a period whose tally is at most the threshold it gives one pass of 127.
class Kicker final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"In", "Input to test", sysbus::Off},
        {"Period", "Period to test, in quarter notes", sysbus::Off},
        {"Thresh", "Minimum threshold before kick", sysbus::Off},
    };
    Kicker();

    int tally() const { return tally_; }
    // lblTally: the last tally shown. It is rewritten only by a new value, so it keeps the
    // last count after a period ends.
    int shownTally = 0;
    void update(Engine& engine) override;

private:
    int lastValue_ = 0;
    int tally_ = 0;
    bool periodHasContent_ = false;
    int countdown_ = 0;          // quarter notes left in the period
    bool quarterArmed_ = true;   // first pass of a quarter-note tick only
    std::array<bool, 128> seen_{};
};

}  // namespace quillmer
