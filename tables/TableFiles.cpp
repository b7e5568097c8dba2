#include "tables/TableFiles.h"

#include <algorithm>
#include <fstream>

#include "engine/AtomicFile.h"
#include "engine/RegularFile.h"

namespace quillmer {

namespace {

bool sizeIs(std::span<const uint8_t> bytes, size_t expected, std::string& problem) {
    if (bytes.size() == expected) return true;
    problem = (bytes.size() < expected ? "The file is too short: " : "The file is too long: ") +
              std::to_string(bytes.size()) + " bytes where " + std::to_string(expected) + " belong.";
    return false;
}

// Reads one byte past the format's size, so that a long file shows as long.
bool readWhole(const std::string& path, size_t size, std::vector<uint8_t>& bytes, std::string& error) {
    std::string reason;
    if (readRegularFile(path, size + 1, bytes, reason)) return true;
    error = "Unable to Load: " + path + "\n" + reason;
    return false;
}

bool writeBytes(const std::string& path, const std::vector<uint8_t>& bytes, std::string& error) {
    AtomicFile file(path);
    std::string reason;
    bool ok = file.create(reason);
    if (ok) {
        std::ofstream out(file.tempPath(), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        ok = static_cast<bool>(out.flush());
    }
    if (ok) ok = file.commit(reason);
    if (!ok) error = "Error writing to: " + path;
    return ok;
}

}  // namespace

std::vector<uint8_t> tableFileBytes(const GeneralTables& tables) {
    std::vector<uint8_t> bytes(tables.bank.data(), tables.bank.data() + kGeneralTableBytes);
    bytes.insert(bytes.end(), tables.names.data(), tables.names.data() + kToneNamesBytes);
    return bytes;
}

bool readTableFile(std::span<const uint8_t> bytes, GeneralTables& tables, std::string& problem) {
    if (!sizeIs(bytes, kTableFileSize, problem)) return false;
    const auto high = std::find_if(bytes.begin(), bytes.begin() + kGeneralTableBytes, [](uint8_t b) { return b > 127; });
    if (high != bytes.begin() + kGeneralTableBytes) {
        const auto at = static_cast<size_t>(high - bytes.begin());
        problem = "Table " + std::to_string(at / kGeneralTableSteps) + " step " + std::to_string(at % kGeneralTableSteps) +
                  " holds " + std::to_string(*high) + ": a table value is 0 to 127. This is not a table file.";
        return false;
    }
    std::copy_n(bytes.begin(), kGeneralTableBytes, tables.bank.data());
    std::copy_n(bytes.begin() + kGeneralTableBytes, kToneNamesBytes, tables.names.data());
    return true;
}

bool readToneFile(std::span<const uint8_t> bytes, ToneTables& tables, std::string& problem) {
    if (!sizeIs(bytes, kToneFileSize, problem)) return false;
    return readToneTables(bytes, tables) == ToneLoad::Loaded;
}

bool LoadTableFile(const std::string& path, GeneralTables& tables, std::string& error) {
    std::vector<uint8_t> bytes;
    if (!readWhole(path, kTableFileSize, bytes, error)) return false;
    std::string problem;
    if (readTableFile(bytes, tables, problem)) return true;
    error = "Unable to Load: " + path + "\n" + problem;
    return false;
}

bool LoadToneFile(const std::string& path, ToneTables& tables, std::string& error) {
    std::vector<uint8_t> bytes;
    if (!readWhole(path, kToneFileSize, bytes, error)) return false;
    std::string problem;
    if (readToneFile(bytes, tables, problem)) return true;
    error = "Unable to Load: " + path + "\n" + problem;
    return false;
}

bool LoadTableNames(const std::string& path, TableNames& names, std::string& error) {
    // 128 lines of a few hundred characters at the most are plenty.
    constexpr size_t kLimit = 1 << 20;
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kLimit + 1, bytes, reason) || bytes.size() > kLimit) {
        error = "Unable to Load: " + path + "\n" + (reason.empty() ? "The file is too long for a list of names." : reason);
        return false;
    }
    if (std::find(bytes.begin(), bytes.end(), uint8_t{0}) != bytes.end()) {
        error = "Unable to Load: " + path + "\nThis is not a text file.";
        return false;
    }
    const std::string text(bytes.begin(), bytes.end());
    TableNames read = names;
    size_t start = 0;
    for (int table = 0; table < kGeneralTablePages && start < text.size(); ++table) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        read.setName(table, line);
        start = end + 1;
    }
    names = read;
    return true;
}

bool SaveTableFile(const std::string& path, const GeneralTables& tables, std::string& error) {
    return writeBytes(path, tableFileBytes(tables), error);
}

bool SaveToneFile(const std::string& path, const ToneTables& tables, std::string& error) {
    return writeBytes(path, toneTableFileBytes(tables), error);
}

}  // namespace quillmer
