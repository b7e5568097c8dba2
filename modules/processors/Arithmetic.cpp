#include "modules/processors/Arithmetic.h"

#include <array>

namespace quillmer {

namespace {
const ModuleTypeId kDivId = *typeIdByName("Div");

// ceil(2^16 / d): n * r >> 16 is n / d exactly while n * d < 2^16, so for any two bus bytes.
constexpr std::array<uint32_t, 256> kReciprocals = [] {
    std::array<uint32_t, 256> r{};
    for (uint32_t d = 1; d < 256; ++d) r[d] = (65536 + d - 1) / d;
    return r;
}();
}  // namespace

int divideBytes(uint8_t numerator, uint8_t divisor) {
    return static_cast<int>((uint32_t{numerator} * kReciprocals[divisor]) >> 16);
}

Div::Div() : Module(kDivId, kInputs) {}

// A divisor of 0 leaves the output alone: Div holds its last value, as Modu does.
void Div::update(Engine&) {
    if (sameInputsAsLastUpdate(2)) return;  // a held value stays held too
    const uint8_t divisor = in(1);
    if (divisor != 0) setOutput(divideBytes(in(0), divisor));
}

}  // namespace quillmer
