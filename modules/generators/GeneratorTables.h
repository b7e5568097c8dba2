#pragma once
// The fixed tables the generators read. RanFunTable: 128 rows of 128 numbers in 0..1,
// neighbours at least 0.02 apart; row s is what seed s means to a chaos map or a fractal.
// OneOverFTable: numbers that wander, each within 0.02..0.2 of the mean of the four before.
// Both are built from the "RanSeed" setting by a generator of their own, so they stay the
// same for a seed whatever the random modules draw. Sine and triangle rows for FunGen.
// Rebuilding needs the engine lock; reading too.

#include <array>
#include <cstddef>
#include <cstdint>

namespace quillmer {

constexpr int kRanFunRows = 128;
constexpr int kRanFunSize = 16384;

struct GeneratorTables {
    std::array<float, kRanFunSize> ranFun{};
    std::array<float, kRanFunSize> oneOverF{};
    std::array<uint8_t, 128> sine{};
    std::array<uint8_t, 128> triangle{};
    int32_t seed = 0;

    // T[s][k]: the seed row s, entry k (both taken AND 127).
    float row(int s, int k) const { return ranFun[static_cast<std::size_t>(((s & 127) << 7) | (k & 127))]; }
    // T[k] over the whole table (k AND 16383).
    float at(int k) const { return ranFun[static_cast<std::size_t>(k & (kRanFunSize - 1))]; }
};

GeneratorTables buildGeneratorTables(int32_t ranSeed);
// The program's tables, built from seed 0 on first use unless rebuilt from a stored seed.
const GeneratorTables& generatorTables();
void rebuildGeneratorTables(int32_t ranSeed);

}  // namespace quillmer
