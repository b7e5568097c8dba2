#include "shell/VoiceNames.h"

#include <filesystem>
#include <fstream>

#include "engine/Cp1252.h"
#include "shell/DataFiles.h"

namespace quillmer {

namespace {

constexpr const char* kNamesFolder = "Names";
constexpr const char* kBankFile = "Banks.txt";

// At most `limit` lines of a text file; nothing when it can't be read.
std::vector<std::string> readLines(const std::string& path, int limit) {
    std::vector<std::string> lines;
    if (path.empty()) return lines;
    std::ifstream in(path, std::ios::binary);
    for (std::string line; static_cast<int>(lines.size()) < limit && std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(cp1252ToUtf8(line));
    }
    return lines;
}

std::string defaultBankName(int bank) { return "Bank " + std::to_string(bank); }

}  // namespace

VoiceNames::VoiceNames() {
    for (int b = 0; b < kBanks; ++b) banks_[static_cast<size_t>(b)] = defaultBankName(b);
}

template <class Find>
void VoiceNames::load(const Find& find) {
    const std::vector<std::string> lines = readLines(find(kBankFile), kBanks);
    for (int b = 0; b < kBanks; ++b) {
        const auto at = static_cast<size_t>(b);
        banks_[at] = at < lines.size() && !lines[at].empty() ? lines[at] : defaultBankName(b);
        voices_[at] = readLines(find(utf8ToCp1252(banks_[at]) + ".txt"), kVoices);
    }
}

void VoiceNames::loadFromDataFolders() {
    load([](const std::string& file) { return findDataFile(std::string(kNamesFolder) + "/" + file); });
}

void VoiceNames::loadFrom(const std::string& folder) {
    load([&folder](const std::string& file) {
        const std::filesystem::path path = std::filesystem::path(folder) / file;
        std::error_code error;
        return std::filesystem::is_regular_file(path, error) ? path.string() : std::string();
    });
}

std::string VoiceNames::bankName(int bank) const {
    return bank >= 0 && bank < kBanks ? banks_[static_cast<size_t>(bank)] : std::string();
}

std::string VoiceNames::voiceName(int bank, int program) const {
    if (bank < 0 || bank >= kBanks || program < 0) return {};
    const std::vector<std::string>& voices = voices_[static_cast<size_t>(bank)];
    return static_cast<size_t>(program) < voices.size() ? voices[static_cast<size_t>(program)] : std::string();
}

}  // namespace quillmer
