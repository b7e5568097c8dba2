#include "platform/MidiFileTranslation.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "engine/Cp1252.h"
#include "engine/RegularFile.h"
#include "platform/StandardMidiFile.h"

namespace quillmer {

namespace {

// The MIDI 1.0 controller list as the class menu shows it.
std::string_view controllerTitle(int n) {
    static const std::array<std::string_view, 128> titles = [] {
        std::array<std::string_view, 128> t{};
        t.fill("Undefined");
        const std::pair<int, std::string_view> named[] = {
            {0, "Bank Select"}, {1, "Modulation"}, {2, "Breath Control"}, {4, "Foot Control"},
            {5, "Portamento Time"}, {6, "Data Entry MSB"}, {7, "Volume"}, {8, "Balance"}, {10, "Pan"},
            {11, "Expression"}, {12, "Effect Control 1"}, {13, "Effect Control 2"},
            {16, "General Purpose 1"}, {17, "General Purpose 2"}, {18, "General Purpose 3"},
            {19, "General Purpose 4"}, {32, "Bank MSB"}, {64, "Sustain on/off"}, {65, "Portamento on/off"},
            {66, "Sustenuto on/off"}, {67, "Soft Pedal on/off"}, {68, "Legato on/off"}, {69, "Hold 2 on/off"},
            {70, "Sound Variation"}, {71, "Timbre/Harmonic"}, {72, "Release Time"}, {73, "Attack Time"},
            {74, "Brightness"}, {75, "Sound Control 6"}, {76, "Sound Control 7"}, {77, "Sound Control 8"},
            {78, "Sound Control 9"}, {79, "Sound Control 10"}, {80, "General Purpose 5"},
            {81, "General Purpose 6"}, {82, "General Purpose 7"}, {83, "General Purpose 8"},
            {84, "Portamento Control"}, {91, "Reverb Depth"}, {92, "Tremolo Depth"}, {93, "Chorus Depth"},
            {94, "Celeste Depth"}, {95, "Phaser Depth"}, {96, "Data Increment"}, {97, "Data Decrement"},
            {98, "Non-Reg Parameter LSB"}, {99, "Non-Reg Parameter MSB"}, {100, "Reg Parameter LSB"},
            {101, "Reg Parameter MSB"}, {120, "All Sound Off"}, {121, "Reset All Controllers"},
            {122, "Local Control on/off"}, {123, "All Notes Off"}, {124, "Omni Mode off"},
            {125, "Omni Mode on"}, {126, "Mono Mode on"}, {127, "Poly mode on"}};
        for (int u = 33; u <= 45; ++u) t[static_cast<size_t>(u)] = "Unused MSB";
        for (const auto& [n2, name] : named) t[static_cast<size_t>(n2)] = name;
        return t;
    }();
    return titles[static_cast<size_t>(n & 127)];
}

constexpr std::array<std::string_view, 6> kOtherClasses{"MIDI Key", "Velocity", "Program Change", "PitchBend",
                                                        "After Touch", "Note Off"};

bool sameText(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

// A meta event's type and data: FF, type, a variable-length count, the data.
bool metaData(std::span<const uint8_t> bytes, uint8_t& type, std::string_view& data) {
    if (bytes.size() < 3 || bytes[0] != 0xFF) return false;
    type = bytes[1];
    size_t at = 2;
    uint64_t length = 0;
    for (int i = 0; i < 4 && at < bytes.size(); ++i) {
        const uint8_t b = bytes[at++];
        length = length << 7 | (b & 0x7F);
        if (!(b & 0x80)) break;
    }
    const size_t n = static_cast<size_t>(std::min<uint64_t>(length, bytes.size() - at));
    data = std::string_view(reinterpret_cast<const char*>(bytes.data() + at), n);
    return true;
}

}  // namespace

std::string messageClassName(int cls) {
    if (cls >= 128 && cls < kMessageClasses) return std::string(kOtherClasses[static_cast<size_t>(cls - 128)]);
    const int n = std::clamp(cls, 0, 127);
    char head[16];
    std::snprintf(head, sizeof head, "%02XH %3d ", n, n);
    return head + std::string(controllerTitle(n));
}

std::optional<int> messageClassByName(std::string_view text) {
    for (size_t i = 0; i < kOtherClasses.size(); ++i)
        if (sameText(text, kOtherClasses[i])) return 128 + static_cast<int>(i);
    if (text.empty() || text.size() > 3 || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    const int n = std::stoi(std::string(text));
    if (n > 127) return std::nullopt;
    return n;
}

bool MidiFileTranslation::open(const std::string& path, std::string& error, std::string& reason) {
    struct stat st{};
    if (::stat(path.c_str(), &st) != 0 && (errno == ENOENT || errno == ENOTDIR)) {
        error = "File not found: " + path;
        reason = std::strerror(errno);
        return false;
    }
    std::vector<uint8_t> bytes;
    if (!readRegularFile(path, static_cast<size_t>(INT32_MAX), bytes, reason)) {
        error = "Cound Not Open " + path;
        return false;
    }
    return openBytes(bytes, path, error, reason);
}

bool MidiFileTranslation::openBytes(const std::vector<uint8_t>& bytes, const std::string& path, std::string& error,
                                    std::string& reason) {
    std::vector<Track> tracks;
    int bpm = 120;
    uint64_t tempoAt = UINT64_MAX;  // the earliest tempo event of the file counts
    MidiFileContents header;
    const auto visit = [&](size_t t, uint32_t, uint64_t at, std::span<const uint8_t> bytesOfEvent) {
        if (bytesOfEvent.empty()) return;
        if (t >= tracks.size()) tracks.resize(t + 1);
        Track& track = tracks[t];
        const uint8_t status = bytesOfEvent[0];
        if (status >= 0x80 && status < 0xF0) {
            track.events.push_back({at, status, static_cast<uint8_t>(bytesOfEvent.size() > 1 ? bytesOfEvent[1] & 127 : 0),
                                    static_cast<uint8_t>(bytesOfEvent.size() > 2 ? bytesOfEvent[2] & 127 : 0)});
            return;
        }
        uint8_t type = 0;
        std::string_view data;
        if (!metaData(bytesOfEvent, type, data)) return;
        if (type == 0x03 && !track.named) {
            track.name = cp1252ToUtf8(std::string(data));
            track.named = true;
        } else if (type == 0x51 && data.size() >= 3 && at < tempoAt) {
            const auto* d = reinterpret_cast<const uint8_t*>(data.data());
            const uint32_t micros = static_cast<uint32_t>(d[0]) << 16 | static_cast<uint32_t>(d[1]) << 8 | d[2];
            if (micros == 0) return;
            bpm = static_cast<int>(std::clamp(std::lround(60'000'000.0 / micros), 1L, 32767L));
            tempoAt = at;
        }
    };
    if (!readMidiEvents(bytes, header, reason, visit)) {
        error = "Cound Not Open " + path;
        return false;
    }
    tracks.resize(header.tracks.size());
    tracks_ = std::move(tracks);
    notes_ = std::move(header.notes);
    format_ = header.format;
    division_ = header.division;
    fileBpm_ = bpm;
    // Steps per file tick: a quarter is `division` ticks; SMPTE time runs at the file's tempo.
    if (header.division > 0) {
        stepsPerTick_ = kStepsPerQuarter / static_cast<double>(header.division);
    } else {
        const double fps = header.framesPerSecond == 29 ? 29.97 : header.framesPerSecond;
        stepsPerTick_ = fileBpm_ / 60.0 * kStepsPerQuarter / (fps * header.ticksPerFrame);
    }
    error.clear();
    reason.clear();
    return true;
}

std::string MidiFileTranslation::trackName(int track) const {
    const Track& t = tracks_.at(static_cast<size_t>(track));
    return t.named ? t.name : " (null)";
}

std::string MidiFileTranslation::trackCaption(int track) const {
    const Track& t = tracks_.at(static_cast<size_t>(track));
    const std::string name = !t.named || t.name.empty() || t.name == "noname" ? "Track# " + std::to_string(track + 1) : t.name;
    return name + " [" + std::to_string(t.events.size()) + "]";
}

int MidiFileTranslation::channelMessages(int track) const {
    return static_cast<int>(tracks_.at(static_cast<size_t>(track)).events.size());
}

std::array<int, 16> MidiFileTranslation::channelCounts(int track) const {
    std::array<int, 16> counts{};
    for (const Event& e : tracks_.at(static_cast<size_t>(track)).events) ++counts[e.status & 15];
    return counts;
}

int MidiFileTranslation::classesOf(const Event& e, std::array<std::pair<int, uint8_t>, 2>& out) {
    switch (e.status & 0xF0) {
        case 0x90:
            if (e.data2 != 0) {
                out[0] = {mclass::Key, e.data1};
                out[1] = {mclass::Velocity, e.data2};
                return 2;
            }
            [[fallthrough]];
        case 0x80: out[0] = {mclass::NoteOff, e.data1}; return 1;
        case 0xB0: out[0] = {e.data1, e.data2}; return 1;
        case 0xC0: out[0] = {mclass::Program, e.data1}; return 1;
        case 0xE0: out[0] = {mclass::PitchBend, e.data2}; return 1;
        case 0xD0: out[0] = {mclass::AfterTouch, e.data1}; return 1;
        case 0xA0: out[0] = {mclass::AfterTouch, e.data2}; return 1;
        default: return 0;
    }
}

std::array<int, kMessageClasses> MidiFileTranslation::classCounts(int track, int channel) const {
    std::array<int, kMessageClasses> counts{};
    std::array<std::pair<int, uint8_t>, 2> classes;
    for (const Event& e : tracks_.at(static_cast<size_t>(track)).events) {
        if ((e.status & 15) != channel) continue;
        const int n = classesOf(e, classes);
        for (int i = 0; i < n; ++i) ++counts[static_cast<size_t>(classes[static_cast<size_t>(i)].first)];
    }
    return counts;
}

int MidiFileTranslation::firstChannelWith(int track, int cls) const {
    int best = 16;
    std::array<std::pair<int, uint8_t>, 2> classes;
    for (const Event& e : tracks_.at(static_cast<size_t>(track)).events) {
        if ((e.status & 15) >= best) continue;
        const int n = classesOf(e, classes);
        for (int i = 0; i < n; ++i)
            if (classes[static_cast<size_t>(i)].first == cls) best = e.status & 15;
    }
    return best < 16 ? best : -1;
}

MfxList MidiFileTranslation::translate(int track, int channel, int cls) const {
    MfxList list;
    list.fileBpm = static_cast<int16_t>(fileBpm_);
    list.listName = messageClassName(cls).substr(0, MfxList::kNameBytes);
    // TrackInfo: track (from 1), channel (from 1), class, file format, division, as i32.
    const int32_t info[] = {track + 1, channel + 1, cls, format_, division_};
    for (size_t i = 0; i < std::size(info); ++i)
        for (size_t b = 0; b < 4; ++b) list.trackInfo[i * 4 + b] = static_cast<uint8_t>(static_cast<uint32_t>(info[i]) >> (8 * b));
    std::array<std::pair<int, uint8_t>, 2> classes;
    for (const Event& e : tracks_.at(static_cast<size_t>(track)).events) {
        if ((e.status & 15) != channel) continue;
        const int n = classesOf(e, classes);
        for (int i = 0; i < n; ++i) {
            if (classes[static_cast<size_t>(i)].first != cls) continue;
            list.values.push_back(classes[static_cast<size_t>(i)].second);
            list.times.push_back(static_cast<float>(static_cast<double>(e.tick) * stepsPerTick_));
        }
    }
    return list;
}

}  // namespace quillmer
