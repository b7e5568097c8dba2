#pragma once
// What the two table editors do besides the page-table operations (tables/PageTable.h): the
// bank and the tuning tables copied into an editor's working table and back, and the edits
// of one tuning row by step count, by semitone and bend, or by cents.

#include "tables/GeneralTables.h"
#include "tables/PageTable.h"
#include "tables/ToneTables.h"

namespace quillmer {

PageTable workingCopy(const GeneralTables& tables);
PageTable workingCopy(const ToneTables& tones);
void storeWorkingCopy(const PageTable& table, GeneralTables& tables);
void storeWorkingCopy(const PageTable& table, ToneTables& tones);
// Which rows or names differ: -1 none, a row number when only that one, 128 for more.
int changedTables(const PageTable& table, const GeneralTables& tables);

namespace tone {
// A tuning row of one step at the root, unbent.
void blank(Row& row);
int steps(const Row& row);  // 1..64 as the editor shows it
// 1..64; a step that comes into use continues a semitone above the one before it, unbent.
void setSteps(Row& row, int steps);
// The semitone (0..127) and the bend byte (1 none .. 64) of a step; step 63 has no bend.
void setSemitones(Row& row, int step, int semitones);
void setBend(Row& row, int step, int bend);
// Sets semitone and bend to the nearest 1/64 semitone; false (nothing changes) for a
// pitch below the root, beyond 127 semitones, or bent on step 63.
bool setCents(Row& row, int step, double cents);
double cents(const Row& row, int step);
}  // namespace tone

}  // namespace quillmer
