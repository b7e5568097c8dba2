#pragma once
// Where recorded MIDI goes: a standard MIDI file of format 1, division 480. The engine
// keeps the tracks' delta counters; platform/ writes the file.

#include <cstdint>
#include <span>
#include <string>

namespace quillmer {

class MidiFileSink {
public:
    virtual ~MidiFileSink() = default;
    // A new file: the first track holds tempo (microseconds per quarter), 4/4 and key.
    virtual void begin(int tempo) = 0;
    // The same, with the quarter note as the tick really played it: the tempo the file
    // records. Sinks that keep no tempo track needn't override it.
    virtual void beginRecording(int tempo, uint32_t /*quarterMicros*/) { begin(tempo); }
    // One channel message on a track (1 is the first after the tempo track), after `delta`
    // ticks of the file's division.
    virtual void add(int track, uint32_t delta, std::span<const uint8_t> bytes) = 0;
    // Writes the file: the tempo track, then `tracks` in the order given, each holding what
    // was added to it; tracks not listed are left out. On failure `error` names the file and
    // nothing is left behind.
    virtual bool save(const std::string& path, std::span<const int> tracks, std::string& error) = 0;
};

}  // namespace quillmer
