#pragma once
// The names of the tables an engine plays through, for the modules that show them. Whoever
// owns an engine's tables lists their names here while they live; an engine without an
// entry has empty names. Read and written under that engine's lock.

#include <cstdint>
#include <string>

#include "tables/GeneralTables.h"

namespace quillmer {

class Engine;

// The table-load strobe's value for "every table changed"; a table number names one.
constexpr uint8_t kAllTablesStrobe = 128;

// Lists the names (nullptr for none); both null removes the engine's entry.
void listTableNames(const Engine& engine, const ToneTableNames* tones, const TableNames* tables);
std::string toneTableName(const Engine& engine, int table);
std::string generalTableName(const Engine& engine, int table);

}  // namespace quillmer
