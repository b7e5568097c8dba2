#pragma once
// The general tables: 128 tables of 128 values 0..127 with a name each, one bank per patch.
// Table modules, the table editor and formulas read and write the bank through the engine,
// which holds a pointer to its bytes (Engine::setGeneralTables), so every change needs the
// engine lock.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "tables/ToneTables.h"

namespace quillmer {

constexpr int kGeneralTablePages = 128;
constexpr int kGeneralTableSteps = 128;
constexpr size_t kGeneralTableBytes = size_t{kGeneralTablePages} * kGeneralTableSteps;  // 16384

// 128 rows of 128 bytes, all zero until loaded. Unlike a tuning table no byte is reserved.
class TableBank {
public:
    using Row = std::span<uint8_t, kGeneralTableSteps>;
    using ConstRow = std::span<const uint8_t, kGeneralTableSteps>;

    // A table number is a bus value; only its low seven bits count.
    Row row(int table) { return Row(bytes_.data() + offset(table), kGeneralTableSteps); }
    ConstRow row(int table) const { return ConstRow(bytes_.data() + offset(table), kGeneralTableSteps); }

    const uint8_t* data() const { return bytes_.data(); }
    uint8_t* data() { return bytes_.data(); }
    void clear() { bytes_.fill(0); }

private:
    static size_t offset(int table) { return static_cast<size_t>(table & 127) * kGeneralTableSteps; }
    std::array<uint8_t, kGeneralTableBytes> bytes_{};
};

// The general tables' names are kept as the tuning tables' are: 20 characters, blank padded.
using TableNames = ToneTableNames;

// The bank and its names, as one .tbl file carries them.
struct GeneralTables {
    TableBank bank;
    TableNames names;
};

}  // namespace quillmer
