#pragma once
// The general tables shipped as data/default.tbl: curves for modulation, the notes of common
// scales for TFit to fit to, rhythms and accents; every table after them is left empty for
// the user. tables/tools/MakeDefaultTables writes them; the file in the tree is its output.

#include "tables/GeneralTables.h"

namespace quillmer {

GeneralTables DefaultGeneralTables();

}  // namespace quillmer
