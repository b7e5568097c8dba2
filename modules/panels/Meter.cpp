#include "modules/panels/Meter.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

Meter::Meter() : Module(*typeIdByName("Meter"), kInputs) {}

void Meter::clearPeaks() {
    peak_ = level_;
    hold_.fill(0);
    viewChanged = true;
}

void Meter::update(Engine&) {
    for (size_t k = 0; k < kMeters; ++k) {
        const int v = in(static_cast<int>(k));
        const int wasLevel = level_[k];
        const int wasPeak = peak_[k];
        level_[k] = v;
        if (v >= peak_[k]) {
            peak_[k] = v;
            hold_[k] = kHoldTicks;
        } else if (hold_[k] > 0) {
            --hold_[k];
        } else {
            peak_[k] = std::max(v, peak_[k] - kFallPerTick);
        }
        if (level_[k] != wasLevel || peak_[k] != wasPeak) viewChanged = true;
    }
}

}  // namespace quillmer
