#include "modules/processors/Events.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kKickerId = *typeIdByName("Kicker");
constexpr int kQuarterCode = 24;
constexpr int kStrobe = 127;
}  // namespace

Kicker::Kicker() : Module(kKickerId, kInputs) {}

void Kicker::update(Engine& engine) {
    const int value = in(0) & 127;
    if (value != lastValue_) {
        lastValue_ = value;
        if (!seen_[static_cast<size_t>(value)]) {
            seen_[static_cast<size_t>(value)] = true;
            ++tally_;
            shownTally = tally_;
            periodHasContent_ = true;
            viewChanged = true;
        }
    }
    int out = 0;
    if (!engine.counters.atZero(kQuarterCode)) {
        quarterArmed_ = true;
    } else if (quarterArmed_) {
        // Several passes may run in one tick (absolute clocks): only the first counts.
        quarterArmed_ = false;
        if (countdown_ != 0) {
            --countdown_;
        } else {
            countdown_ = std::max(1, static_cast<int>(in(1)));
            if (tally_ <= in(2)) out = kStrobe;
            tally_ = 0;
            if (periodHasContent_) {
                seen_.fill(false);
                periodHasContent_ = false;
            }
        }
    }
    setOutput(out);
}

}  // namespace quillmer
