#pragma once
// The tuning tables shipped as data/default.pbt: row 0 chromatic, then scales a composer
// reaches for, microtonal rows after them, and the chromatic row in every row left over.
// tables/tools/MakeDefaultTones writes them; the file in the tree is its output.

#include <span>

#include "tables/ToneTables.h"

namespace quillmer {

// Fills a row with one octave of steps, each given in cents above the root (ascending,
// below 1200): the semitone below each step and the bend up to it, to the nearest 1/64 of
// a semitone. At most 64 steps; step 63 can't bend.
void setScaleRow(ToneTable::Row row, std::span<const double> cents);

ToneTables DefaultToneTables();

}  // namespace quillmer
