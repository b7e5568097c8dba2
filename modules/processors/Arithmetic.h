#pragma once
// Arithmetic processors: plain functions of bus values.

#include "engine/Module.h"

namespace quillmer {

// Divide: numerator / divisor, truncated; a divisor of 0 holds the last value.
class Div final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Numerator", "Numerator", sysbus::Off},
        {" Divisor", "Divisor", sysbus::Off},
    };
    Div();

protected:
    void update(Engine& engine) override;
};

}  // namespace quillmer
