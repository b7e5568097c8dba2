#include "tables/ToneTables.h"

#include <algorithm>
#include <fstream>

#include "engine/AtomicFile.h"
#include "engine/Cp1252.h"
#include "engine/RegularFile.h"

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
    // Only a regular file, and never more than the format's 18944 bytes of it.
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kToneFileSize, bytes, reason)) return ToneLoad::Missing;
    return readToneTables(bytes, tables);
}

ToneLoad readToneTables(std::span<const uint8_t> bytes, ToneTables& tables) {
    // Straight into the two blocks, as far as the bytes go.
    const size_t rows = std::min(bytes.size(), kToneRowsBytes);
    std::copy_n(bytes.begin(), rows, tables.rows.data());
    if (rows < kToneRowsBytes) return ToneLoad::Short;
    const size_t names = std::min(bytes.size() - kToneRowsBytes, kToneNamesBytes);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(kToneRowsBytes), names, tables.names.data());
    return names < kToneNamesBytes ? ToneLoad::Short : ToneLoad::Loaded;
}

std::vector<uint8_t> toneTableFileBytes(const ToneTables& tables) {
    std::vector<uint8_t> bytes(tables.rows.data(), tables.rows.data() + kToneRowsBytes);
    bytes.insert(bytes.end(), tables.names.data(), tables.names.data() + kToneNamesBytes);
    return bytes;
}

bool SaveToneTables(const std::string& path, const ToneTables& tables) {
    // Atomic, and only over a regular file, as every save.
    AtomicFile file(path);
    std::string error;
    if (!file.create(error)) return false;
    {
        std::ofstream out(file.tempPath(), std::ios::binary | std::ios::trunc);
        const std::vector<uint8_t> bytes = toneTableFileBytes(tables);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush()) return false;
    }
    return file.commit(error);
}

std::string NoteName(int value) {
    if (value < 0) value = 0;
    return std::string(NoteNameTable[static_cast<size_t>(value % 12)]) + " : " + std::to_string(value / 12);
}

}  // namespace quillmer
