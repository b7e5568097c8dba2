#include "modules/processors/Scaling.h"

#include <algorithm>
#include <cmath>

namespace quillmer {

namespace {
int word(const uint8_t* b) { return static_cast<int16_t>(b[0] | (b[1] << 8)); }
}  // namespace

Computed ScalerOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    const double v = in[0] * (in[1] / 100.0) + in[2];
    return Computed{roundToInt(std::min(v, 127.0))};
}

Computed LevelOp::compute(std::span<const int> in, const std::array<uint8_t, 4>& settings) {
    const double level = word(&settings[kLevel]) / 100.0;
    const int offset = word(&settings[kOffset]);
    return Computed{clampBus(static_cast<int>(std::trunc(in[0] * level + 0.5)) + offset)};
}

Computed OctaveOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    const int range = std::min(in[1] + 1, 10);
    return Computed{std::min(in[0] % 12 + 12 * ((in[0] / 12) % range) + in[2], 127)};
}

Computed BoundsOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    int v = in[0];
    if (v < in[1]) v = in[1];
    if (v > in[2]) v = in[2];
    return Computed{v};
}

Computed MixerOp::compute(std::span<const int> in, const std::array<uint8_t, 5>& settings) {
    double sum = 0;
    for (size_t k = 0; k < 4; ++k) sum += in[k] * (settings[k] / 100.0);
    return Computed{clampBus(roundToInt(sum * (settings[kMix] / 100.0)))};
}

}  // namespace quillmer
