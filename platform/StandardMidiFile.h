#pragma once
// Standard MIDI files through libsmf: writing a recording, and reading a file back event by
// event (a recording to check, or a file to translate).
//
// The writer makes format 1, division 480. Track 0 holds the tempo (microseconds per
// quarter = 60000000 / tempo), time signature 4/4 and key C major; channel messages go on
// the tracks after it, numbered by the caller, each after its delta in file ticks. save()
// writes the tracks the caller lists, one after the other, so a recording holds no empty
// track for a number nobody used. Events are kept in memory until save(), which writes to a temporary
// file beside the target and renames it over the target: a failed save leaves the old file
// as it was and no part-written file behind. Thread rule: one thread.

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/MidiRecording.h"

namespace quillmer {

constexpr int kMidiFileDivision = 480;

class MidiFileWriter final : public MidiFileSink {
public:
    // A new file; what was added before is dropped. `tempo` in beats a minute, 1 or more.
    void begin(int tempo) override;
    // The tempo track says `quarterMicros` a quarter (at most what 24 bits hold).
    void beginRecording(int tempo, uint32_t quarterMicros) override;
    // `track` 1 or more; `bytes` a channel message of 2 or 3 bytes (others are ignored).
    void add(int track, uint32_t delta, std::span<const uint8_t> bytes) override;
    // False with `error` naming the file.
    bool save(const std::string& path, std::span<const int> tracks, std::string& error) override;

    // Tracks including the tempo track.
    int trackCount() const { return static_cast<int>(tracks_.size()); }

private:
    struct Event {
        uint32_t delta = 0;
        uint8_t length = 0;
        uint8_t bytes[3] = {};
    };
    bool writeTo(const std::string& file, std::span<const int> tracks) const;

    uint32_t quarterMicros_ = 500'000;
    std::vector<std::vector<Event>> tracks_{1};  // [0] is the tempo track
};

struct MidiFileEvent {
    uint32_t delta = 0;     // ticks since the previous event of its track
    uint32_t absolute = 0;  // ticks since the start
    std::vector<uint8_t> bytes;  // the message; meta events start with 0xFF
};

struct MidiFileContents {
    int format = 0;
    int division = 0;         // pulses a quarter; 0 for a file timed in SMPTE frames
    int framesPerSecond = 0;  // SMPTE: 24, 25, 29 (29.97) or 30
    int ticksPerFrame = 0;
    std::vector<std::vector<MidiFileEvent>> tracks;  // end-of-track events included
    // What was wrong with the file and mended or left out, one line each.
    std::vector<std::string> notes;
};

// Nothing when the file can't be read or isn't a MIDI file.
std::optional<MidiFileContents> readMidiFile(const std::string& path);
// The same with what was wrong in `problem`. Files as other programs write them are taken
// as far as they can be read: track lengths that run past the end are cut to it, a track
// without its end gets one, format 2 files are read track by track, a track the library
// can't read is left empty (each told in `notes`).
std::optional<MidiFileContents> readMidiFile(const std::string& path, std::string& problem);
std::optional<MidiFileContents> readMidiBytes(std::span<const uint8_t> bytes, std::string& problem);
// The same without keeping the events: `header` gets the file's fields, its notes and an
// empty list per track; each event goes to `visit` (track from 0, delta, ticks from the
// start, the message as the library gives it), track after track.
using MidiEventVisitor = std::function<void(size_t track, uint32_t delta, uint64_t ticks, std::span<const uint8_t> event)>;
bool readMidiEvents(std::span<const uint8_t> bytes, MidiFileContents& header, std::string& problem, const MidiEventVisitor& visit);

// Writes a whole file as given: format, division (pulses a quarter) and every track's
// events by delta, meta events and SysEx included; each track gets its end-of-track event.
// False with `error` naming the file.
bool writeMidiFile(const std::string& path, const MidiFileContents& contents, std::string& error);

}  // namespace quillmer
