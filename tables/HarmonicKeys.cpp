#include "tables/HarmonicKeys.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "engine/RecordBytes.h"
#include "engine/RegularFile.h"

namespace quillmer {

namespace {
constexpr std::array<std::array<uint8_t, 12>, HarmonicKeys::kBuiltIn> kBuiltInKeys = {{
    {0, 7, 5, 4, 3, 9, 8, 2, 10, 6, 11, 1},
    {0, 7, 5, 4, 3, 9, 8, 2, 10, 11, 1, 6},
    {0, 7, 4, 10, 2, 6, 8, 11, 1, 3, 5, 9},
}};
constexpr const char* kBuiltInNames[] = {
    "Harmonic order (Common)",
    "Harmonic order (Tritone at end)",
    "Harm. series (1, 3, 5, 7,  9,11,13, 15,17,19,21, 27)",
};
// The current row, the keys and twelve names of at most 64 KiB each.
constexpr size_t kLargestFile = 4 + 144 + 12 * (2 + 65535);
}  // namespace

HarmonicKeys::HarmonicKeys() {
    for (auto& row : keys_) row.fill(kEnd);
    for (size_t r = 0; r < kBuiltIn; ++r) {
        keys_[r] = kBuiltInKeys[r];
        names_[r] = kBuiltInNames[r];
    }
}

std::string HarmonicKeys::keyText(int row) const {
    std::string text;
    for (uint8_t pitch : key(row)) {
        if (pitch == kEnd) break;
        if (!text.empty()) text += ' ';
        text += std::to_string(pitch);
    }
    return text;
}

std::string HarmonicKeys::filterTyped(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (!std::isdigit(static_cast<unsigned char>(c))) c = ' ';
    return out;
}

void HarmonicKeys::setKeyText(int row, std::string_view text) {
    auto& key = keys_.at(static_cast<size_t>(row));
    key.fill(kEnd);
    std::istringstream words{std::string(text)};
    std::string word;
    size_t place = 0;
    while (place < key.size() && words >> word) {
        if (word.size() > 2 || !std::all_of(word.begin(), word.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); }))
            break;
        const int pitch = std::stoi(word);
        if (pitch > 11) break;
        key[place++] = static_cast<uint8_t>(pitch);
    }
}

void HarmonicKeys::randomKey(int row, RandomSource& random) {
    auto& key = keys_.at(static_cast<size_t>(row));
    key.fill(kEnd);
    for (size_t place = 0; place < key.size(); ++place) {
        if (random.next() > 0.5f)
            key[place] = kBuiltInKeys[static_cast<size_t>(random.between(0, kBuiltIn - 1))][place];
    }
    for (uint8_t& pitch : key) {
        if (pitch != kEnd) continue;
        uint8_t drawn;
        do drawn = static_cast<uint8_t>(random.between(0, 11));
        while (std::find(key.begin(), key.end(), drawn) != key.end());
        pitch = drawn;
    }
    names_.at(static_cast<size_t>(row)) = "Random";
}

bool HarmonicKeys::load(const std::string& path, std::string& reason) {
    std::vector<uint8_t> bytes;
    RegularFile file;
    if (!file.open(path, reason)) {
        if (errno == ENOENT || reason == std::strerror(ENOENT)) {
            reason.clear();
            return true;
        }
        return false;
    }
    if (!file.read(kLargestFile, bytes, reason)) return false;
    try {
        ByteReader in(bytes);
        const int32_t chosen = in.i32();
        std::array<std::array<uint8_t, kRows>, kRows> keys{};
        for (auto& row : keys)
            for (uint8_t& b : row) b = in.u8();
        std::array<std::string, kRows> names;
        for (std::string& name : names) name = in.str();
        current = std::clamp<int32_t>(chosen, 0, kRows - 1);
        keys_ = keys;
        names_ = names;
    } catch (const RecordFormatError&) {
        reason = "the file is too short for harmonic sort keys";
        return false;
    }
    return true;
}

bool HarmonicKeys::save(const std::string& path, std::string& reason) const {
    ByteWriter out;
    out.i32(current);
    for (const auto& row : keys_)
        for (uint8_t b : row) out.u8(b);
    for (const std::string& name : names_) out.str(name);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (file) file.write(reinterpret_cast<const char*>(out.bytes().data()), static_cast<std::streamsize>(out.bytes().size()));
    if (!file) {
        reason = std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace quillmer
