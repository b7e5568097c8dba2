#pragma once
// Meter: four level meters that hold their peaks. Each peak stays for a whole note, then
// falls back toward the level. No output. Needs the engine lock.

#include <array>

#include "engine/Module.h"

namespace quillmer {

class Meter final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" In 1", "Level shown by meter 1", sysbus::Off},
        {" In 2", "Level shown by meter 2", sysbus::Off},
        {" In 3", "Level shown by meter 3", sysbus::Off},
        {" In 4", "Level shown by meter 4", sysbus::Off},
    };
    static constexpr int kMeters = 4;
    static constexpr int kHoldTicks = 96;  // a whole note
    static constexpr int kFallPerTick = 2;

    Meter();
    int level(int meter) const { return level_[static_cast<size_t>(meter)]; }
    int peak(int meter) const { return peak_[static_cast<size_t>(meter)]; }
    // A click on the meters drops every peak to its level.
    void clearPeaks();
    void update(Engine& engine) override;

private:
    std::array<int, kMeters> level_{};
    std::array<int, kMeters> peak_{};
    std::array<int, kMeters> hold_{};
};

}  // namespace quillmer
