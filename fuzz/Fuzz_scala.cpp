// Fuzz target: the Scala scale and keyboard map readers, and a .tbl file. Whatever the
// bytes, a scale either goes into a tuning row whole or leaves it as it was, a row that
// was filled writes out as a scale that reads back to the same row, and a .tbl is taken
// only when it is exactly a table file.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tables/Scala.h"
#include "tables/TableFiles.h"

using namespace quillmer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ScalaScale scale;
    KeyMap map;
    std::string problem;
    std::vector<std::string> notes;
    std::array<uint8_t, 128> row{};
    row.fill(7);
    const bool withMap = parseKeyMap(text, map, problem);
    if (parseScala(text, scale, problem)) {
        const auto before = row;
        if (scaleToToneRow(scale, withMap ? &map : nullptr, row, problem, notes)) {
            std::string written;
            if (toneRowToScala(ToneTable::ConstRow(row.data(), 128), "fuzz", written, problem) && !withMap) {
                ScalaScale again;
                std::array<uint8_t, 128> back{};
                if (!parseScala(written, again, problem) || !scaleToToneRow(again, nullptr, back, problem, notes)) std::abort();
                if (!std::equal(back.begin(), back.begin() + 64, row.begin()) || back[127] != row[127]) std::abort();
            }
        } else if (row != before) {
            std::abort();
        }
    }
    GeneralTables tables;
    const bool taken = readTableFile(std::span<const uint8_t>(data, size), tables, problem);
    if (taken && (size != kTableFileSize || tableFileBytes(tables) != std::vector<uint8_t>(data, data + size))) std::abort();
    return 0;
}
