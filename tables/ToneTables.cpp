#include "tables/ToneTables.h"

#include <algorithm>
#include <fstream>

#include "engine/Cp1252.h"

namespace quillmer {

std::string ToneTableNames::name(int table) const {
    const auto* first = bytes_.data() + static_cast<size_t>(table & 127) * kToneNameSize;
    size_t n = kToneNameSize;
    while (n > 0 && first[n - 1] == ' ') --n;
    return cp1252ToUtf8(std::string_view(reinterpret_cast<const char*>(first), n));
}

void ToneTableNames::setName(int table, std::string_view text) {
    auto* first = bytes_.data() + static_cast<size_t>(table & 127) * kToneNameSize;
    const std::string bytes = utf8ToCp1252(text);
    for (size_t i = 0; i < kToneNameSize; ++i)
        first[i] = i < bytes.size() ? static_cast<uint8_t>(bytes[i]) : uint8_t{' '};
}

ToneLoad LoadToneTables(const std::string& path, ToneTables& tables) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return ToneLoad::Missing;
    // Straight into the two blocks, as far as the file goes.
    file.read(reinterpret_cast<char*>(tables.rows.data()), static_cast<std::streamsize>(kToneRowsBytes));
    const auto rowsRead = static_cast<size_t>(file.gcount());
    if (rowsRead < kToneRowsBytes) return ToneLoad::Short;
    file.read(reinterpret_cast<char*>(tables.names.data()), static_cast<std::streamsize>(kToneNamesBytes));
    const auto namesRead = static_cast<size_t>(file.gcount());
    return namesRead < kToneNamesBytes ? ToneLoad::Short : ToneLoad::Loaded;
}

std::vector<uint8_t> toneTableFileBytes(const ToneTables& tables) {
    std::vector<uint8_t> bytes(tables.rows.data(), tables.rows.data() + kToneRowsBytes);
    bytes.insert(bytes.end(), tables.names.data(), tables.names.data() + kToneNamesBytes);
    return bytes;
}

bool SaveToneTables(const std::string& path, const ToneTables& tables) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    const std::vector<uint8_t> bytes = toneTableFileBytes(tables);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(file);
}

std::string NoteName(int value) {
    if (value < 0) value = 0;
    return std::string(NoteNameTable[static_cast<size_t>(value % 12)]) + " : " + std::to_string(value / 12);
}

}  // namespace quillmer
