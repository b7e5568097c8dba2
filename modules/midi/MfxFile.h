#pragma once
// The .mfx file: one message class of one MIDI track as a flat list of (time, value)
// pairs, times in steps of 1/24 quarter note. Little endian, in this order: EventTop (i32,
// the upper index, -1 for an empty list), FileBpm (i16), TrackInfo (64 bytes, kept as
// read), ListName (20 bytes, blank padded), the values (a byte each), the times (a 32-bit
// float each).

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quillmer {

struct MfxList {
    static constexpr size_t kNameBytes = 20;
    static constexpr size_t kHeaderBytes = 4 + 2 + 64 + kNameBytes;

    int16_t fileBpm = 120;
    std::array<uint8_t, 64> trackInfo{};
    std::string listName;  // UTF-8, at most 20 bytes once in Windows-1252
    std::vector<uint8_t> values;
    std::vector<float> times;

    int32_t eventTop() const { return static_cast<int32_t>(values.size()) - 1; }
    bool empty() const { return values.empty(); }
    float lastTime() const { return times.empty() ? 0.0f : times.back(); }
};

// The file's bytes.
std::vector<uint8_t> mfxBytes(const MfxList& list);
// A list from a file's bytes; false with `reason` when they aren't one. Values are cut to
// 0..127; a list of more events than the bytes hold, or a time that isn't a finite number,
// is refused.
bool parseMfx(const uint8_t* data, size_t size, MfxList& list, std::string& reason);

// Reads a file: false with `error` ("File not found: <path>" or "Can't load: <path>") and
// `reason`, what was wrong.
bool loadMfxFile(const std::string& path, MfxList& list, std::string& error, std::string& reason);
// Writes a file atomically: false with `error` ("Could not save: <path>") and `reason`.
bool saveMfxFile(const std::string& path, const MfxList& list, std::string& error, std::string& reason);

}  // namespace quillmer
