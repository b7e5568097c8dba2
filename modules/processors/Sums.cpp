#include "modules/processors/Sums.h"

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kMinusId = *typeIdByName("Minus");
const ModuleTypeId kCarryId = *typeIdByName("Carry");

// A result kept to the bus range, the light on when it had to be.
Computed limited(int v) { return Computed{clampBus(v), v > 127 || v < 0}; }
}  // namespace

Computed AddOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) { return limited(in[0] + in[1] + in[2]); }

Computed Add2Op::compute(std::span<const int> in, const std::array<uint8_t, 0>&) { return limited(in[0] + in[1]); }

Computed AddDivOp::compute(std::span<const int> in, const std::array<uint8_t, 2>& settings) {
    const bool negate = (settings[0] | settings[1]) != 0;
    const int sum = in[0] + in[1] + (negate ? -in[2] : in[2]);
    return limited(sum / (in[3] == 0 ? 1 : in[3]));  // truncates toward 0
}

Computed MultOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) { return limited(in[0] * in[1]); }

Computed MulAddOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    return limited(in[0] * in[1] + in[2]);
}

Computed MulDivOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    const int divisor = in[2] == 0 ? 1 : in[2];
    return limited(roundToInt(static_cast<double>(in[0] * in[1]) / divisor));
}

Computed ModuOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    if (in[1] == 0) return Computed{0, false, true};
    return Computed{in[0] % in[1]};
}

Computed PercentOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    return Computed{clampBus(in[0] * in[1] / 100)};
}

// --- Minus ---

Minus::Minus() : SettingsModule<0>(kMinusId, kInputs) {}

void Minus::update(Engine&) {
    if (sameInputsAsLastUpdate(2)) return;
    const int difference = in(0) - in(1);
    const int borrow = difference < 0 ? -difference : 0;
    if (borrow != borrow_) {
        if ((borrow != 0) != (borrow_ != 0)) viewChanged = true;  // the light
        borrow_ = borrow;
    }
    setOutput(difference < 0 ? 0 : difference);
}

// --- Carry ---

Carry::Carry() : TapModule<2, 2>(kCarryId, kMinusId, {}) {}

void Carry::update(Engine& engine) {
    if (mastersGrew(engine)) viewChanged = true;
    const auto* minus = static_cast<const Minus*>(master(engine));
    setOutput(minus != nullptr ? minus->borrow() & 127 : 0);
}

}  // namespace quillmer
