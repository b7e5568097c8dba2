#pragma once
// Translating a standard MIDI file into .mfx lists: one message class of one channel of
// one track becomes (time, value) pairs at 24 steps per quarter note. The translation
// dialog and `quillmer-cli mfx` both work through this. No Qt.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "modules/midi/MfxFile.h"

namespace quillmer {

// 128 controller classes by number, then these six.
namespace mclass {
constexpr int Key = 128;
constexpr int Velocity = 129;
constexpr int Program = 130;
constexpr int PitchBend = 131;
constexpr int AfterTouch = 132;
constexpr int NoteOff = 133;
}  // namespace mclass
constexpr int kMessageClasses = 134;
constexpr int kStepsPerQuarter = 24;

// "07H   7 Volume" for a controller, "MIDI Key" .. "Note Off" for the others.
std::string messageClassName(int cls);
// A class from a command line: one of the six names (any case) or a controller number.
std::optional<int> messageClassByName(std::string_view text);

class MidiFileTranslation {
public:
    // Reads the file. False with `error` ("File not found: <path>" or "Cound Not Open
    // <path>") and what was wrong in `reason`.
    bool open(const std::string& path, std::string& error, std::string& reason);
    // The same from the bytes of a file (`path` only names it in messages).
    bool openBytes(const std::vector<uint8_t>& bytes, const std::string& path, std::string& error, std::string& reason);

    int fileBpm() const { return fileBpm_; }  // from the first tempo event, 120 without one
    int format() const { return format_; }
    int trackCount() const { return static_cast<int>(tracks_.size()); }
    // What was mended or left out while reading, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

    // Tracks count from 0 here; the dialog and the command line number them from 1.
    // The track's name, " (null)" without one.
    std::string trackName(int track) const;
    // The track list's line: the name, or "Track# n" without one, and " [events]".
    std::string trackCaption(int track) const;
    int channelMessages(int track) const;
    // Channel messages of the track by channel (0..15).
    std::array<int, 16> channelCounts(int track) const;
    // Messages of each class on a channel of the track.
    std::array<int, kMessageClasses> classCounts(int track, int channel) const;
    // The lowest channel with messages of the class, or -1.
    int firstChannelWith(int track, int cls) const;
    // The list of one class on one channel of a track, named by the class.
    MfxList translate(int track, int channel, int cls) const;

private:
    struct Event {
        uint64_t tick;  // file ticks from the start
        uint8_t status, data1, data2;
    };
    struct Track {
        std::string name;
        bool named = false;
        std::vector<Event> events;  // channel messages only
    };
    // The classes a message belongs to (at most two: a key and its velocity) and their values.
    static int classesOf(const Event& e, std::array<std::pair<int, uint8_t>, 2>& out);

    int fileBpm_ = 120;
    int format_ = 0;
    int division_ = 0;
    double stepsPerTick_ = 1;
    std::vector<Track> tracks_;
    std::vector<std::string> notes_;
};

}  // namespace quillmer
