#pragma once
// The keys of the harmonic sort: twelve rows, each an order of pitch classes that ends at
// the first entry 255. Rows 0..2 are built in; the others are the user's, kept with the
// chosen row in hsort.bin (a 32-bit current row, 144 key bytes, twelve names).

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/RandomSource.h"

namespace quillmer {

class HarmonicKeys {
public:
    static constexpr int kRows = 12;
    static constexpr int kBuiltIn = 3;
    static constexpr uint8_t kEnd = 255;
    static constexpr const char* kFileName = "hsort.bin";

    HarmonicKeys();

    std::span<const uint8_t> key(int row) const { return keys_.at(static_cast<size_t>(row)); }
    std::span<const uint8_t> currentKey() const { return key(current); }
    const std::string& name(int row) const { return names_.at(static_cast<size_t>(row)); }
    void setName(int row, std::string text) { names_.at(static_cast<size_t>(row)) = std::move(text); }

    // The key as numbers with blanks: "0 7 5 4".
    std::string keyText(int row) const;
    // Typed text: digits pass, any other character is a blank.
    static std::string filterTyped(std::string_view text);
    // A key from its text: a word that is not a pitch class 0..11 ends it.
    void setKeyText(int row, std::string_view text);
    // A random key of twelve pitch classes: each place takes, at even odds, that place of a
    // built-in key; the rest are drawn so that no pitch class repeats a drawn one.
    void randomKey(int row, RandomSource& random);

    // A missing file is no error and changes nothing; a damaged one is refused whole.
    bool load(const std::string& path, std::string& reason);
    bool save(const std::string& path, std::string& reason) const;

    int32_t current = 0;

private:
    std::array<std::array<uint8_t, kRows>, kRows> keys_{};  // [row][place]
    std::array<std::string, kRows> names_;
};

}  // namespace quillmer
