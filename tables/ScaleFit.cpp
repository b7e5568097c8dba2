#include "tables/ScaleFit.h"

#include <array>
#include <cstddef>

namespace quillmer {

namespace {

using PitchRow = std::array<int, 12>;
// What each pitch class becomes, by scale 1..8 (5 and 6 have rules of their own).
constexpr PitchRow kMajor{0, 0, 2, 4, 4, 5, 7, 7, 7, 9, 9, 11};
constexpr PitchRow kMinor{0, 0, 2, 3, 3, 5, 7, 7, 7, 9, 9, 11};
constexpr PitchRow kPentatonic{1, 1, 3, 3, 3, 6, 6, 8, 8, 10, 10, 10};
constexpr PitchRow kWholeTone{0, 0, 2, 4, 4, 5, 7, 7, 9, 9, 9, 11};
constexpr PitchRow kFifths{0, 0, 0, 0, 0, 7, 7, 7, 7, 7, 0, 0};
// Pitch classes 10 and 11 fall to the root of their own octave, not up to the next.
constexpr PitchRow kMajorTriad{0, 0, 0, 4, 4, 4, 7, 7, 7, 7, 0, 0};
constexpr PitchRow kMinorTriad{0, 0, 0, 3, 3, 3, 7, 7, 7, 7, 0, 0};

}  // namespace

int64_t fitToScale(int64_t value, int64_t scale) {
    const int64_t pitch = ((value % 12) + 12) % 12;
    const int64_t base = value - pitch;
    const auto p = static_cast<size_t>(pitch);
    switch (scale) {
        case 1: return base + kMajor[p];
        case 2: return base + kMinor[p];
        case 3: return base + kPentatonic[p];
        case 4: return base + kWholeTone[p];
        case 5: return base + kFifths[p];
        case 6: return ((value + 6) / 12) * 12;
        case 7: return base + kMajorTriad[p];
        case 8: return base + kMinorTriad[p];
        default: return value;
    }
}

}  // namespace quillmer
