#pragma once
// Arithmetic processors: plain functions of bus values.

#include "engine/Module.h"

namespace quillmer {

// a / b for two bus bytes (0..255) without a hardware division; b is not 0.
int divideBytes(uint8_t numerator, uint8_t divisor);

// Divide: numerator / divisor, truncated; a divisor of 0 holds the last value.
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
