// Fuzz target: the tuning table reader (.pbt). Any bytes read into the tables; the names read
// back as UTF-8, and a whole file writes back byte for byte.

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "tables/ToneTables.h"

using namespace quillmer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ToneTables tables;
    const ToneLoad load = readToneTables(std::span<const uint8_t>(data, size), tables);
    if ((load == ToneLoad::Loaded) != (size >= kToneFileSize)) std::abort();
    size_t total = 0;
    for (int t = 0; t < kToneTableCount; ++t) {
        total += tables.names.name(t).size();
        total += static_cast<size_t>(tables.rows.steps(t) + tables.rows.semitones(t, t) + tables.rows.bend(t, t));
        tables.names.setName(t, tables.names.name(t));  // UTF-8 back to the file's code page
    }
    if (load == ToneLoad::Loaded) {
        const std::vector<uint8_t> written = toneTableFileBytes(tables);
        for (size_t i = 0; i < kToneRowsBytes; ++i)
            if (written[i] != data[i]) std::abort();
    }
    return total == SIZE_MAX ? 1 : 0;
}
