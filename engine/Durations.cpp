#include "engine/Durations.h"

namespace quillmer {

const std::array<uint16_t, kDurationCodeCount> DurationReload = [] {
    std::array<uint16_t, kDurationCodeCount> reload{};
    reload[0] = 12;
    reload[1] = 24;
    for (int code = 2; code <= 96; ++code) reload[static_cast<size_t>(code)] = static_cast<uint16_t>(code);
    constexpr uint16_t kLong[] = {128, 144, 192, 256, 288, 384, 512, 576, 768, 1024, 1152, 1536, 2048};
    for (size_t i = 0; i < std::size(kLong); ++i) reload[97 + i] = kLong[i];
    return reload;
}();

const std::array<TimeBaseEntry, 31> TimeBaseTable{{
    {"t 32nd", 2},   {"  32nd", 3},    {"d 32nd", 4},   {"t 16th", 4},   {"  16th", 6},
    {"d 16th", 9},   {"t 8th", 8},     {"  8th", 12},   {"d 8th", 18},   {"t 4th", 16},
    {"  4th", 24},   {"d 4th", 36},    {"t Half", 32},  {"  Half", 48},  {"d Half", 72},
    {"t Whole", 64}, {"  Whl", 96},    {"d Whole", 98}, {"t Dbl", 97},   {"  Dbl", 99},
    {"d Dbl", 101},  {"t Quad", 100},  {"  Quad", 102}, {"d Quad", 104}, {"t Bar", 103},
    {"  Bar", 105},  {"d Bar", 107},   {"t 2Bar", 106}, {"  2Bar", 108}, {"   BFN", 109},
    {" Turbo", kTurboCode},
}};

const std::array<uint8_t, 30> TimeBaseOrder{0,  1,  3,  2,  4,  6,  5,  7,  9,  8,
                                            10, 12, 11, 13, 15, 14, 16, 18, 17, 19,
                                            21, 20, 22, 24, 23, 25, 27, 26, 28, 29};

const std::array<std::string_view, 12> PitchNames{"Cn", "C#", "Dn", "D#", "En", "Fn",
                                                  "F#", "Gn", "G#", "An", "A#", "Bn"};

int32_t TickPeriodFor(int tempo) {
    if (tempo < 1) tempo = 1;
    const int quotient = 2500 / tempo;
    const int twiceRemainder = 2 * (2500 % tempo);
    if (twiceRemainder > tempo) return quotient + 1;
    if (twiceRemainder == tempo) return quotient + (quotient & 1);  // tie: to the even one
    return quotient;
}

void DurationCounters::advance() {
    for (size_t i = 0; i < counters_.size(); ++i)
        counters_[i] = counters_[i] == 0 ? DurationReload[i] - 1 : counters_[i] - 1;
}

}  // namespace quillmer
