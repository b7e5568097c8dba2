#pragma once
// The output bus: one byte per BusId, every value 0..127 by convention. Never cleared
// while the program runs: a deleted module's last value stays in its element.

#include <array>
#include <cstdint>
#include <string>

#include "engine/Constants.h"

namespace quillmer {

// BusIds of the system outputs (family 0 and 1). NameSlot equals BusId for all of them.
namespace sysbus {
constexpr BusId Off = 0;
constexpr BusId On = 1;
constexpr BusId Mid = 2;
constexpr BusId FirstConstant = 3;  // "~   0": BusId N holds N - 3, up to 130
constexpr BusId Begin = 131;
constexpr BusId End = 132;
constexpr BusId Page = 133;
constexpr BusId KeyChar = 134;
constexpr BusId KeyCtrl = 135;
constexpr BusId KeyDown = 136;
constexpr BusId Run = 137;
constexpr BusId Stop = 138;
constexpr BusId TLoad = 139;
constexpr BusId TStart = 140;
constexpr BusId Turbo = 141;
constexpr BusId Whole = 142;
constexpr BusId FirstSlider = 143;  // "~ slider  1" .. "~ slider 16"
}  // namespace sysbus

struct SystemOutput {
    std::string name;
    uint8_t initialValue;
};

// Name and initial value of system output `id` (0..158).
SystemOutput systemOutput(BusId id);

// The constant output that carries `value` (0..127): "~  24" is a quarter note's code.
constexpr BusId constantBus(int value) { return static_cast<BusId>(sysbus::FirstConstant + value); }

constexpr BusId busIdOf(int busFamily, int instanceIndex) {
    return static_cast<BusId>(busFamily * kIdsPerFamily + instanceIndex);
}

class OutputBus {
public:
    OutputBus() { values_.fill(0); }

    uint8_t operator[](BusId id) const { return values_[id]; }
    uint8_t& operator[](BusId id) { return values_[id]; }
    const uint8_t* data() const { return values_.data(); }

    // Writes the system outputs' initial values; leaves every module element alone.
    void writeSystemValues();

private:
    std::array<uint8_t, kBusSize> values_;
};

}  // namespace quillmer
