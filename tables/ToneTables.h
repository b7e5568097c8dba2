#pragma once
// Tuning tables and note names.
//
// A tuning table is a row of 128 bytes: bytes 0..63 the semitone offset of scale steps 0..63,
// bytes 64..126 the bend byte of steps 0..62 (1 is no bend, each unit 1/64 of a semitone
// above it), byte 127 the number of steps minus one. A .pbt file holds 128 such rows and
// then 128 names of 20 bytes, padded with blanks: 18944 bytes, no header.
//
// The tables belong to whoever owns the patch; note modules read them under the engine lock,
// so every change to them needs the engine lock too.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Durations.h"

namespace quillmer {

constexpr int kToneTableCount = 128;
constexpr int kToneRowSize = 128;
constexpr int kToneNameSize = 20;
constexpr int kMaxScaleSteps = 64;
constexpr int kBendSteps = 63;            // steps 0..62 have a bend byte
constexpr uint8_t kNoBend = 1;            // sent as 1 + 63 = 64, the centre
constexpr int kBendUnitsPerSemitone = 64;
constexpr size_t kToneRowsBytes = size_t{kToneTableCount} * kToneRowSize;      // 16384
constexpr size_t kToneNamesBytes = size_t{kToneTableCount} * kToneNameSize;    // 2560
constexpr size_t kToneFileSize = kToneRowsBytes + kToneNamesBytes;             // 18944

// 128 rows of 128 bytes. All zero until loaded: every table then has one step, 0.
class ToneTable {
public:
    using Row = std::span<uint8_t, kToneRowSize>;
    using ConstRow = std::span<const uint8_t, kToneRowSize>;

    // A table number is a bus value; only its low seven bits count.
    Row row(int table) { return Row(bytes_.data() + offset(table), kToneRowSize); }
    ConstRow row(int table) const { return ConstRow(bytes_.data() + offset(table), kToneRowSize); }
    int steps(int table) const { return row(table)[127] + 1; }  // 1..256
    int semitones(int table, int step) const { return row(table)[static_cast<size_t>(step & 63)]; }
    // The bend byte of a step; step 63 has none of its own (byte 127 is the count).
    int bend(int table, int step) const { return row(table)[64 + static_cast<size_t>(step & 63)]; }

    // All 16384 bytes, row after row: what the engine's note modules read.
    const uint8_t* data() const { return bytes_.data(); }
    uint8_t* data() { return bytes_.data(); }
    void clear() { bytes_.fill(0); }

private:
    static size_t offset(int table) { return static_cast<size_t>(table & 127) * kToneRowSize; }
    std::array<uint8_t, kToneRowsBytes> bytes_{};
};

// 128 names of 20 characters, held as the file holds them (Windows-1252, blank padded).
class ToneTableNames {
public:
    ToneTableNames() { bytes_.fill(' '); }
    // UTF-8, trailing blanks removed.
    std::string name(int table) const;
    // Cut to 20 characters, padded with blanks.
    void setName(int table, std::string_view text);

    const uint8_t* data() const { return bytes_.data(); }
    uint8_t* data() { return bytes_.data(); }

private:
    std::array<uint8_t, kToneNamesBytes> bytes_{};
};

// The tuning of a patch: rows and names, as one .pbt file carries them.
struct ToneTables {
    ToneTable rows;
    ToneTableNames names;
};

// What LoadToneTables found.
enum class ToneLoad : uint8_t {
    Loaded,   // the whole file was read
    Short,    // fewer than 18944 bytes: what was there is read, the rest is left as it was
    Missing,  // no such file, or it won't open: nothing changes
};

// Reads a .pbt file straight into the tables: rows first, then names. A short file leaves
// everything after its last byte as it was; a missing one changes nothing. Bytes after
// the 18944th are not read.
// Only a regular file is read: a folder, a pipe or a device counts as missing.
ToneLoad LoadToneTables(const std::string& path, ToneTables& tables);
// The same from the bytes of a file (only the first 18944 count).
ToneLoad readToneTables(std::span<const uint8_t> bytes, ToneTables& tables);
// The 18944 bytes of a .pbt file.
std::vector<uint8_t> toneTableFileBytes(const ToneTables& tables);
// Writes a .pbt file; false when it can't be written.
bool SaveToneTables(const std::string& path, const ToneTables& tables);

// Pitch names by pitch class: "Cn", "C#", ... "Bn".
inline const std::array<std::string_view, 12>& NoteNameTable = PitchNames;
// How a value shows as a note: name of (value mod 12), " : ", value div 12, as "Cn : 0".
std::string NoteName(int value);

}  // namespace quillmer
