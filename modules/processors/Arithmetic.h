#pragma once
// Arithmetic processors: plain functions of bus values.

#include "engine/Module.h"

namespace quillmer {

// Divide: numerator / divisor, truncated; 0 for a divisor of 0.
class Div final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Numerator", "Numerator", sysbus::Off},
        {" Divisor", "Divisor", sysbus::Off},
    };
    Div();
    void update(Engine& engine) override;
};

}  // namespace quillmer
