#pragma once
// The files of the table bank and the tuning tables as the editors and the command line open
// them: a .tbl or .pbt must be exactly 18944 bytes (the rows, then 128 names of 20 bytes), and
// a .tbl may hold no value above 127. A file that isn't so is refused with a message naming
// it, and the tables stay as they were. A .txt file gives the bank's names, one a line.

#include <span>
#include <string>
#include <vector>

#include "tables/GeneralTables.h"
#include "tables/ToneTables.h"

namespace quillmer {

constexpr size_t kTableFileSize = kGeneralTableBytes + kToneNamesBytes;  // 18944

// The 18944 bytes of a .tbl file.
std::vector<uint8_t> tableFileBytes(const GeneralTables& tables);
// Checks and takes the bytes of a .tbl file; false with `problem` (what is wrong, no path).
bool readTableFile(std::span<const uint8_t> bytes, GeneralTables& tables, std::string& problem);
// The same for a .pbt file: only its size is checked, every byte of a tuning row is valid.
bool readToneFile(std::span<const uint8_t> bytes, ToneTables& tables, std::string& problem);

// From a file; false with `error`: "Unable to Load: PATH" and the reason on a second line.
bool LoadTableFile(const std::string& path, GeneralTables& tables, std::string& error);
bool LoadToneFile(const std::string& path, ToneTables& tables, std::string& error);
// Each line of a text file is the name of the next table from 0; lines past 128 are ignored
// and tables past the last line keep their names.
bool LoadTableNames(const std::string& path, TableNames& names, std::string& error);

// Atomic saves; false with `error`: "Error writing to: PATH".
bool SaveTableFile(const std::string& path, const GeneralTables& tables, std::string& error);
bool SaveToneFile(const std::string& path, const ToneTables& tables, std::string& error);

}  // namespace quillmer
