#include "platform/StandardMidiFile.h"

// libsmf's header needs glib's declarations first.
#include <glib.h>
#include <smf.h>

#include <algorithm>
#include <climits>
#include <array>
#include <cstring>

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

void MidiFileWriter::begin(int tempo) { beginRecording(tempo, 60'000'000u / static_cast<uint32_t>(std::max(1, tempo))); }

void MidiFileWriter::beginRecording(int /*tempo*/, uint32_t quarterMicros) {
    quarterMicros_ = std::clamp(quarterMicros, 1u, 0xFFFFFFu);
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
            const uint32_t micros = quarterMicros_;
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

namespace {

uint32_t be32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 | static_cast<uint32_t>(p[2]) << 8 | p[3];
}
uint16_t be16(const uint8_t* p) { return static_cast<uint16_t>(p[0] << 8 | p[1]); }
void putBe32(std::vector<uint8_t>& out, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(v >> shift));
}
void putTag(std::vector<uint8_t>& out, const char (&tag)[5]) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(tag[i]));
}
void putBe16(std::vector<uint8_t>& out, uint16_t v) {
    out.push_back(static_cast<uint8_t>(v >> 8));
    out.push_back(static_cast<uint8_t>(v));
}

constexpr int kStandInDivision = 480;  // for a division the library refuses
constexpr std::array<uint8_t, 3> kEndOfTrack{0xFF, 0x2F, 0x00};  // after a delta of 0

struct Container {
    int format = 0;
    int division = 0;
    int framesPerSecond = 0;
    int ticksPerFrame = 0;
    std::vector<std::span<const uint8_t>> tracks;
    std::vector<bool> ended;  // the track's last event is its end-of-track event
    std::vector<std::vector<uint8_t>> mended;  // tracks whose bytes had to change
};

// The chunks of the file, without reading any event: the header's fields and each
// track's bytes, cut to what the file holds.
bool readContainer(std::span<const uint8_t> bytes, Container& c, std::vector<std::string>& notes, std::string& problem) {
    if (bytes.size() < 14 || std::memcmp(bytes.data(), "MThd", 4) != 0) {
        problem = "it is not a standard MIDI file";
        return false;
    }
    const uint32_t headerLength = be32(bytes.data() + 4);
    if (headerLength < 6 || headerLength > bytes.size() - 8) {
        problem = "its header says it is " + std::to_string(headerLength) + " bytes long";
        return false;
    }
    c.format = be16(bytes.data() + 8);
    const int declared = be16(bytes.data() + 10);
    const uint16_t division = be16(bytes.data() + 12);
    if (division & 0x8000) {
        c.framesPerSecond = -static_cast<int8_t>(division >> 8);
        c.ticksPerFrame = division & 0xFF;
        if ((c.framesPerSecond != 24 && c.framesPerSecond != 25 && c.framesPerSecond != 29 && c.framesPerSecond != 30) ||
            c.ticksPerFrame == 0) {
            problem = "its time division (" + std::to_string(c.framesPerSecond) + " frames a second, " +
                      std::to_string(c.ticksPerFrame) + " ticks a frame) isn't one of SMPTE's";
            return false;
        }
    } else if (division == 0) {
        problem = "its time division is 0 ticks a quarter note";
        return false;
    } else {
        c.division = division;
    }
    if (c.format > 2) notes.push_back("format " + std::to_string(c.format) + " is unknown; read as format 1");

    size_t at = 8 + headerLength;
    while (bytes.size() - at >= 8 && c.tracks.size() < 65535) {
        const uint8_t* chunk = bytes.data() + at;
        const uint64_t length = be32(chunk + 4);
        const size_t available = bytes.size() - at - 8;
        const bool track = std::memcmp(chunk, "MTrk", 4) == 0;
        if (length > available) {
            if (!track) break;
            notes.push_back("track " + std::to_string(c.tracks.size() + 1) + " says it is " + std::to_string(length) +
                            " bytes long, but the file holds " + std::to_string(available));
        }
        const size_t taken = static_cast<size_t>(std::min<uint64_t>(length, available));
        if (track) c.tracks.push_back(bytes.subspan(at + 8, taken));
        at += 8 + taken;
    }
    if (static_cast<int>(c.tracks.size()) != declared)
        notes.push_back("the header counts " + std::to_string(declared) + " tracks, the file holds " +
                        std::to_string(c.tracks.size()));
    return true;
}

// How much of a track the library can be given. The library asserts (and so ends the
// program) on a track that runs out without its end-of-track event, or whose times pass
// the range of an int, so the track's framing is checked first: each event's delta, status
// and length, up to the end-of-track event or the last whole event before something that
// doesn't frame. What the events mean is left to the library.
struct TrackExtent {
    size_t length = 0;  // bytes of whole events
    bool ended = false;  // the last of them is the end-of-track event
    // Events the library can't take: escaped events (F7; it asserts on every one) and meta
    // events with a length of more than one byte (it miscounts them and loses its place).
    // Where each starts and its size: they are filled in with short meta events that
    // nothing reads.
    std::vector<std::pair<size_t, size_t>> fillers;
};

TrackExtent trackExtent(std::span<const uint8_t> t) {
    constexpr uint64_t kLongestTime = INT_MAX / 2;
    TrackExtent extent;
    size_t at = 0;
    uint64_t time = 0;
    uint8_t running = 0;
    const auto quantity = [&](uint64_t& value) {
        value = 0;
        for (int i = 0; i < 4 && at < t.size(); ++i) {
            const uint8_t b = t[at++];
            value = value << 7 | (b & 0x7F);
            if (!(b & 0x80)) return true;
        }
        return false;
    };
    const auto dataBytes = [](uint8_t status) { return (status & 0xF0) == 0xC0 || (status & 0xF0) == 0xD0 ? size_t{1} : size_t{2}; };
    while (at < t.size()) {
        uint64_t delta = 0;
        if (!quantity(delta) || (time += delta) > kLongestTime || at >= t.size()) break;
        const uint8_t status = t[at];
        size_t end = 0;
        bool endOfTrack = false;
        if (status < 0x80) {
            if (running == 0) break;  // data with no channel message before it to run on from
            end = at + dataBytes(running);
        } else if (status < 0xF0) {
            running = status;
            end = at + 1 + dataBytes(status);
        } else if (status == 0xFF || status == 0xF0 || status == 0xF7) {
            running = 0;  // meta and SysEx end running status
            const bool meta = status == 0xFF;
            if (meta && at + 1 >= t.size()) break;
            endOfTrack = meta && t[at + 1] == 0x2F;
            const size_t start = at;
            at += meta ? 2 : 1;
            const size_t lengthAt = at;
            uint64_t length = 0;
            if (!quantity(length) || length > t.size() - at) break;
            end = at + static_cast<size_t>(length);
            if (status == 0xF7 || (meta && at - lengthAt > 1)) {
                if (end - start < 3) break;  // too short to stand in for
                extent.fillers.emplace_back(start, end - start);
            }
        } else {
            break;  // system messages have no place in a file
        }
        if (end > t.size()) break;
        // A channel message's data bytes are below 128; the library would take one that
        // isn't for a status and lose its place.
        if (status < 0xF0 && std::any_of(t.begin() + static_cast<std::ptrdiff_t>(status < 0x80 ? at : at + 1),
                                         t.begin() + static_cast<std::ptrdiff_t>(end), [](uint8_t b) { return b >= 0x80; }))
            break;
        at = end;
        extent.length = at;
        if (endOfTrack) {
            extent.ended = true;
            break;
        }
    }
    return extent;
}

// Fills an event's bytes (from its status to its end, 3 or more) with sequencer-specific
// meta events of at most 127 data bytes: FF 7F n data, then 00 FF 7F n data for each more.
void fillWithMeta(std::span<uint8_t> bytes) {
    size_t at = 0;
    size_t head = 3;  // the first piece keeps the event's own delta
    while (at < bytes.size()) {
        const size_t left = bytes.size() - at;
        size_t n = std::min<size_t>(127, left - head);
        const size_t after = left - head - n;
        if (after > 0 && after < 4) n -= 4 - after;  // the last piece needs room for its head
        if (head == 4) bytes[at++] = 0x00;
        bytes[at++] = 0xFF;
        bytes[at++] = 0x7F;
        bytes[at++] = static_cast<uint8_t>(n);
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), n, uint8_t{0});
        at += n;
        head = 4;
    }
}

// A file the library takes: format 0 or 1, a division in pulses, every track ending in
// its end-of-track event.
std::vector<uint8_t> cleanFile(const Container& c, size_t first, size_t count) {
    const std::span<const std::span<const uint8_t>> tracks = std::span(c.tracks).subspan(first, count);
    std::vector<uint8_t> out;
    putTag(out, "MThd");
    putBe32(out, 6);
    putBe16(out, tracks.size() > 1 ? 1 : 0);
    putBe16(out, static_cast<uint16_t>(tracks.size()));
    putBe16(out, static_cast<uint16_t>(c.division > 0 ? c.division : kStandInDivision));
    for (size_t n = 0; n < tracks.size(); ++n) {
        const std::span<const uint8_t> t = tracks[n];
        const bool ended = c.ended[first + n];
        putTag(out, "MTrk");
        putBe32(out, static_cast<uint32_t>(t.size() + (ended ? 0 : 4)));
        out.insert(out.end(), t.begin(), t.end());
        if (!ended) {
            out.push_back(0);
            for (uint8_t b : kEndOfTrack) out.push_back(b);
        }
    }
    return out;
}

// Hands each event of a track to `visit`, with its delta and its time from the start.
void visitTrack(smf_track_t* track, size_t number, const MidiEventVisitor& visit) {
    uint64_t absolute = 0;
    for (int n = 1; track && n <= track->number_of_events; ++n) {
        const smf_event_t* e = smf_track_get_event_by_number(track, n);
        if (!e) break;
        const auto delta = static_cast<uint32_t>(std::max(0, e->delta_time_pulses));
        absolute += delta;
        visit(number, delta, absolute, std::span<const uint8_t>(e->midi_buffer, static_cast<size_t>(std::max(0, e->midi_buffer_length))));
    }
}

// smf_delete takes each event out of its track's array one by one, which costs a search
// of the array per event: the events are freed here first, all at once.
void deleteLoaded(smf_t* smf) {
    for (int t = 1; t <= smf->number_of_tracks; ++t) {
        smf_track_t* track = smf_get_track_by_number(smf, t);
        if (!track || !track->events_array) continue;
        for (guint i = 0; i < track->events_array->len; ++i) {
            auto* e = static_cast<smf_event_t*>(g_ptr_array_index(track->events_array, i));
            free(e->midi_buffer);
            free(e);
        }
        g_ptr_array_set_size(track->events_array, 0);
        track->number_of_events = 0;
    }
    smf_delete(smf);
}

}  // namespace

bool readMidiEvents(std::span<const uint8_t> bytes, MidiFileContents& header, std::string& problem,
                    const MidiEventVisitor& visit) {
    prepareLibraries();
    Container c;
    header = MidiFileContents{};
    if (bytes.size() > static_cast<size_t>(INT_MAX)) {
        problem = "it is too large";
        return false;
    }
    if (!readContainer(bytes, c, header.notes, problem)) return false;
    header.format = c.format;
    header.division = c.division;
    header.framesPerSecond = c.framesPerSecond;
    header.ticksPerFrame = c.ticksPerFrame;
    header.tracks.resize(c.tracks.size());
    c.mended.reserve(c.tracks.size());  // the spans below point into these
    for (size_t t = 0; t < c.tracks.size(); ++t) {
        const TrackExtent extent = trackExtent(c.tracks[t]);
        if (!extent.ended)
            header.notes.push_back("track " + std::to_string(t + 1) + " is read up to byte " + std::to_string(extent.length) +
                                   " of " + std::to_string(c.tracks[t].size()) + ", where it has no proper end");
        c.tracks[t] = c.tracks[t].first(extent.length);
        c.ended.push_back(extent.ended);
        if (!extent.fillers.empty()) {
            std::vector<uint8_t>& copy = c.mended.emplace_back(c.tracks[t].begin(), c.tracks[t].end());
            for (const auto& [start, size] : extent.fillers) fillWithMeta(std::span<uint8_t>(copy).subspan(start, size));
            c.tracks[t] = std::span<const uint8_t>(copy);
        }
    }

    // The library refuses a file of no tracks (and keeps a little memory when it does).
    if (c.tracks.empty()) return true;
    // The whole file at once. The library drops a track it can't read, and the tracks after
    // it move up: then each track is read on its own.
    std::vector<uint8_t> clean = cleanFile(c, 0, c.tracks.size());
    if (smf_t* smf = smf_load_from_memory(clean.data(), static_cast<int>(clean.size()))) {
        if (static_cast<size_t>(smf->number_of_tracks) == c.tracks.size()) {
            for (size_t t = 0; t < c.tracks.size(); ++t) visitTrack(smf_get_track_by_number(smf, static_cast<int>(t + 1)), t, visit);
            deleteLoaded(smf);
            return true;
        }
        deleteLoaded(smf);
    }
    size_t read = 0;
    for (size_t t = 0; t < c.tracks.size(); ++t) {
        clean = cleanFile(c, t, 1);
        smf_t* smf = smf_load_from_memory(clean.data(), static_cast<int>(clean.size()));
        if (!smf || smf->number_of_tracks != 1) {
            if (smf) deleteLoaded(smf);
            header.notes.push_back("track " + std::to_string(t + 1) + " could not be read");
            continue;
        }
        visitTrack(smf_get_track_by_number(smf, 1), t, visit);
        deleteLoaded(smf);
        ++read;
    }
    if (read == 0) {
        problem = "none of its tracks could be read";
        return false;
    }
    return true;
}

std::optional<MidiFileContents> readMidiBytes(std::span<const uint8_t> bytes, std::string& problem) {
    MidiFileContents contents;
    const bool ok = readMidiEvents(bytes, contents, problem,
                                   [&contents](size_t track, uint32_t delta, uint64_t absolute, std::span<const uint8_t> event) {
                                       MidiFileEvent e;
                                       e.delta = delta;
                                       e.absolute = static_cast<uint32_t>(std::min<uint64_t>(absolute, UINT32_MAX));
                                       e.bytes.assign(event.begin(), event.end());
                                       contents.tracks[track].push_back(std::move(e));
                                   });
    if (!ok) return std::nullopt;
    return contents;
}

std::optional<MidiFileContents> readMidiFile(const std::string& path, std::string& problem) {
    // Only a regular file, and no more of it than the library can take in one buffer.
    std::vector<uint8_t> bytes;
    if (!readRegularFile(path, static_cast<size_t>(INT_MAX), bytes, problem)) return std::nullopt;
    return readMidiBytes(bytes, problem);
}

bool writeMidiFile(const std::string& path, const MidiFileContents& contents, std::string& error) {
    prepareLibraries();
    AtomicFile file(path);
    if (!file.create(error)) return false;
    smf_t* smf = smf_new();
    bool ok = smf && smf_set_format(smf, contents.format) == 0 && smf_set_ppqn(smf, contents.division) == 0;
    for (size_t t = 0; ok && t < contents.tracks.size(); ++t) {
        smf_track_t* track = smf_track_new();
        if (!track) {
            ok = false;
            break;
        }
        smf_add_track(smf, track);
        uint32_t pending = 0;  // the delta of an end-of-track event left out
        for (const MidiFileEvent& e : contents.tracks[t]) {
            if (e.bytes.size() >= 2 && e.bytes[0] == 0xFF && e.bytes[1] == 0x2F) {
                pending += e.delta;
                continue;
            }
            ok = ok && !e.bytes.empty() && addBytes(track, e.bytes.data(), static_cast<int>(e.bytes.size()), e.delta + pending);
            pending = 0;
        }
        ok = ok && smf_track_add_eot_delta_pulses(track, static_cast<int>(pending)) == 0;
    }
    ok = ok && smf_save(smf, file.tempPath().c_str()) == 0;
    if (smf) smf_delete(smf);
    if (!ok) {
        error = saveError(path, "the MIDI file could not be written");
        return false;
    }
    return file.commit(error);
}

std::optional<MidiFileContents> readMidiFile(const std::string& path) {
    std::string problem;
    return readMidiFile(path, problem);
}

}  // namespace quillmer
