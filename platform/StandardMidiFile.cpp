#include "platform/StandardMidiFile.h"

// libsmf's header needs glib's declarations first.
#include <glib.h>
#include <smf.h>

#include <algorithm>
#include <climits>
#include <array>

#include "engine/AtomicFile.h"
#include "engine/RegularFile.h"
#include "platform/LibrarySetup.h"

namespace quillmer {
namespace {

// Bytes of one channel message by its status: program change and channel pressure have one
// data byte.
int channelMessageLength(uint8_t status) {
    const int high = status & 0xF0;
    return high == 0xC0 || high == 0xD0 ? 2 : 3;
}

bool addBytes(smf_track_t* track, const uint8_t* bytes, int length, uint32_t delta) {
    smf_event_t* event = smf_event_new_from_pointer(const_cast<uint8_t*>(bytes), length);
    if (!event) return false;
    smf_track_add_event_delta_pulses(track, event, static_cast<int>(delta));
    return true;
}

}  // namespace

void MidiFileWriter::begin(int tempo) {
    tempo_ = std::max(1, tempo);
    tracks_.assign(1, {});
}

void MidiFileWriter::add(int track, uint32_t delta, std::span<const uint8_t> bytes) {
    if (track < 1 || bytes.empty() || bytes[0] < 0x80 || bytes[0] >= 0xF0) return;
    const int length = channelMessageLength(bytes[0]);
    if (static_cast<int>(bytes.size()) < length) return;
    if (static_cast<size_t>(track) >= tracks_.size()) tracks_.resize(static_cast<size_t>(track) + 1);
    Event event;
    event.delta = delta;
    event.length = static_cast<uint8_t>(length);
    std::copy_n(bytes.begin(), length, event.bytes);
    tracks_[static_cast<size_t>(track)].push_back(event);
}

bool MidiFileWriter::writeTo(const std::string& file, std::span<const int> tracks) const {
    prepareLibraries();
    smf_t* smf = smf_new();
    if (!smf) return false;
    bool ok = smf_set_format(smf, 1) == 0 && smf_set_ppqn(smf, kMidiFileDivision) == 0;
    static const std::vector<Event> kNone;
    for (size_t n = 0; ok && n <= tracks.size(); ++n) {
        const int t = n == 0 ? 0 : tracks[n - 1];
        if (t < 0) continue;
        const std::vector<Event>& events = static_cast<size_t>(t) < tracks_.size() ? tracks_[static_cast<size_t>(t)] : kNone;
        smf_track_t* track = smf_track_new();
        if (!track) {
            ok = false;
            break;
        }
        smf_add_track(smf, track);
        if (t == 0) {
            const uint32_t micros = 60'000'000u / static_cast<uint32_t>(tempo_);
            const std::array<uint8_t, 6> tempo{0xFF, 0x51, 0x03, static_cast<uint8_t>(micros >> 16),
                                               static_cast<uint8_t>(micros >> 8), static_cast<uint8_t>(micros)};
            // 4/4: numerator 4, denominator 2 to the 2nd, 24 clocks a click, 8 32nds a quarter.
            const std::array<uint8_t, 7> meter{0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08};
            const std::array<uint8_t, 5> key{0xFF, 0x59, 0x02, 0x00, 0x00};
            ok = addBytes(track, tempo.data(), tempo.size(), 0) && addBytes(track, meter.data(), meter.size(), 0) &&
                 addBytes(track, key.data(), key.size(), 0);
        }
        for (const Event& e : events) ok = ok && addBytes(track, e.bytes, e.length, e.delta);
        ok = ok && smf_track_add_eot_delta_pulses(track, 0) == 0;
    }
    ok = ok && smf_save(smf, file.c_str()) == 0;
    smf_delete(smf);
    return ok;
}

bool MidiFileWriter::save(const std::string& path, std::span<const int> tracks, std::string& error) {
    AtomicFile file(path);
    if (!file.create(error)) return false;
    if (!writeTo(file.tempPath(), tracks)) {
        error = saveError(path, "the MIDI file could not be written");
        return false;
    }
    return file.commit(error);
}

std::optional<MidiFileContents> readMidiFile(const std::string& path) {
    prepareLibraries();
    // Only a regular file, and no more of it than the library can take in one buffer.
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, static_cast<size_t>(INT_MAX), bytes, reason) || bytes.empty()) return std::nullopt;
    smf_t* smf = smf_load_from_memory(bytes.data(), static_cast<int>(bytes.size()));
    if (!smf) return std::nullopt;
    MidiFileContents contents;
    contents.format = smf->format;
    contents.division = smf->ppqn;
    for (int t = 1; t <= smf->number_of_tracks; ++t) {
        smf_track_t* track = smf_get_track_by_number(smf, t);
        std::vector<MidiFileEvent>& events = contents.tracks.emplace_back();
        if (!track) continue;
        for (int n = 1; n <= track->number_of_events; ++n) {
            const smf_event_t* e = smf_track_get_event_by_number(track, n);
            if (!e) break;
            MidiFileEvent event;
            event.delta = static_cast<uint32_t>(e->delta_time_pulses);
            event.absolute = static_cast<uint32_t>(e->time_pulses);
            event.bytes.assign(e->midi_buffer, e->midi_buffer + e->midi_buffer_length);
            events.push_back(std::move(event));
        }
    }
    smf_delete(smf);
    return contents;
}

}  // namespace quillmer
