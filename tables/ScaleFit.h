#pragma once
// The nine fixed scales a value snaps to (Qscale, and FitScale of the formulas): 1 major,
// 2 minor, 3 pentatonic, 4 whole tone, 5 fifths, 6 octaves, 7 major triad, 8 minor triad;
// 0 and any other number leave the value as it is.

#include <cstdint>

namespace quillmer {

int64_t fitToScale(int64_t value, int64_t scale);

}  // namespace quillmer
