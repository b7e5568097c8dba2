#pragma once
// Operations on a row of up to 128 values 0..127, as the Fill dialog applies them to a
// table. They know nothing of modules or windows, so every table-like type, the command
// line and the tests share them. A range is Start..End inclusive; Start past End does
// nothing. Values are kept within 0..127.

#include <array>
#include <cstdint>
#include <span>

#include "engine/RandomSource.h"

namespace quillmer {

constexpr int kRowLength = 128;
using Row = std::array<uint8_t, kRowLength>;

// The five knobs of the dialog.
struct FillKnobs {
    int start = 0;
    int end = kRowLength - 1;
    int low = 0;
    int high = 127;
    int scale = 127;  // the caller's ceiling
};

// The scale choices, by their radio button.
enum class ScaleChoice { Major, Minor, Pentatonic, WholeTone, OctaveFifths, Jitter, MinorTriad, MajorTriad };
constexpr int kScaleChoices = 8;

namespace rowops {

// v moved onto the chosen scale (Jitter draws from `random`); may exceed 127.
int quantizeValue(int v, ScaleChoice choice, RandomSource& random);

void subtractLow(Row& row, const FillKnobs& k);
void addLow(Row& row, const FillKnobs& k);
void fillFromStart(Row& row, const FillKnobs& k);
void erase(Row& row, const FillKnobs& k);
void randomFill(Row& row, const FillKnobs& k, RandomSource& random);
void count(Row& row, const FillKnobs& k);
void randomWalk(Row& row, const FillKnobs& k, RandomSource& random);
void removeDuplicates(Row& row);
void zap(Row& row, const FillKnobs& k);
void invert(Row& row, const FillKnobs& k);
void sortAscending(Row& row, const FillKnobs& k);
void reverse(Row& row, const FillKnobs& k);
void scatter(Row& row, const FillKnobs& k, RandomSource& random);
void quantize(Row& row, const FillKnobs& k, ScaleChoice choice, RandomSource& random);
void normalise(Row& row, const FillKnobs& k);
void exchange(Row& row, const FillKnobs& k);
void trim(Row& row, const FillKnobs& k);
void smooth(Row& row, const FillKnobs& k);
void patternAdd(Row& row, const FillKnobs& k);
void paste(Row& row, const Row& clipboard, const FillKnobs& k);
void makeScale(Row& row, const FillKnobs& k, ScaleChoice choice, RandomSource& random);
// Zero every value in range whose place is 0 in `earlier`.
void restoreZeros(Row& row, const Row& earlier, const FillKnobs& k);
// Every 0 of `row` takes the value at its place in `from`.
void mergeZeros(Row& row, const Row& from);
// row[(i + position) mod 128] = copy[i] for every i.
void rotate(Row& row, const Row& copy, int position);
// Values whose pitch class comes first in `key` go first, in the key's order; the rest
// follow as they stood. A key ends at the first entry above 11. Needs End - Start >= 2.
void harmonicSort(Row& row, const FillKnobs& k, std::span<const uint8_t> key);

}  // namespace rowops
}  // namespace quillmer
