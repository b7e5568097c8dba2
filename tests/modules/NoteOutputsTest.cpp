#include <gtest/gtest.h>

#include "../engine/FakeDevices.h"
#include "../engine/Harness.h"
#include "ModuleHarness.h"
#include "modules/midi/ChannelOutputs.h"
#include "modules/midi/NoteOutputs.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

struct NoteHarness : Harness {
    NoteHarness() : Harness(std::vector<std::string>{}) {
        auto device = std::make_unique<FakeOutput>("Synth", timers, &sent);
        engine->ports.attachOutput(0, std::move(device));
        engine->StartTimers();
    }
    std::vector<std::vector<uint8_t>> take() {
        std::vector<std::vector<uint8_t>> all;
        for (const SentMessage& m : sent) all.push_back(m.bytes);
        sent.clear();
        return all;
    }
    std::vector<std::vector<uint8_t>> notes() {
        std::vector<std::vector<uint8_t>> all;
        for (auto& m : take())
            if ((m[0] & 0xE0) == 0x80) all.push_back(m);
        return all;
    }
    std::vector<SentMessage> sent;
};

using Bytes = std::vector<uint8_t>;

// One note: the gate low for a tick, then high for a tick.
void strike(NoteHarness& h, Module& m) {
    h.connect(m, 0, " Off (0)");
    h.ticks(1);
    h.connect(m, 0, " On (127)");
    h.ticks(1);
}

}  // namespace

TEST(MIDITone, SetUpFirstThenBendBeforeEachNote) {
    NoteHarness h;
    auto& tone = static_cast<MIDITone&>(h.add("MIDITone"));
    ASSERT_EQ(tone.ChanPort, 0);
    h.connect(tone, 1, "~  60");
    h.ticks(1);
    const std::vector<Bytes> setup{{0xB0, 7, 112}, {0xB0, 101, 0}, {0xB0, 100, 0}, {0xB0, 6, 1},
                                   {0xB0, 38, 0},  {0xC0, 0},      {0xB0, 10, 64}, {0xB0, 1, 0}};
    EXPECT_EQ(h.take(), setup);
    EXPECT_EQ(tone.programCaption, "0. ");
    h.connect(tone, 0, " On (127)");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xE0, 0, 64}, {0x90, 60, 127}}));
    h.ticks(3);
    EXPECT_TRUE(h.take().empty()) << "the gate stays high: nothing more";
    h.connect(tone, 0, " Off (0)");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0x80, 60, 0}}));
}

TEST(MIDITone, ScaleArithmeticWithTheRootCountedTwice) {
    NoteHarness h;
    auto& tone = static_cast<MIDITone&>(h.add("MIDITone"));
    h.connect(tone, 1, "~  60");
    strike(h, tone);
    EXPECT_EQ(tone.SentNote, 60);
    EXPECT_EQ(tone.shownStep, 0);
    EXPECT_EQ(tone.shownOctave, 5);
    tone.stripOctaves = true;
    strike(h, tone);
    EXPECT_EQ(tone.SentNote, 0) << "only the table's step is left";
    tone.stripOctaves = false;
    h.connect(tone, 1, "~   0");
    h.connect(tone, 2, "~  14");
    strike(h, tone);
    EXPECT_EQ(tone.SentNote, 26) << "a root of 14 adds 14 and one octave more";
    EXPECT_EQ(tone.shownStep, 2);
    h.connect(tone, 1, "~ 127");
    h.connect(tone, 8, "~   9");
    strike(h, tone);
    EXPECT_EQ(tone.SentNote, 127) << "clamped, not dropped";
    EXPECT_EQ(tone.shownOctave, 10 + 1 + 9 + (7 + 2) / 12);
}

// Real tables, not the chromatic fallback: 128 rows, followed by the block that stands behind
// the last row in memory (the names of a .pbt file, here all 't').
struct TestTables {
    std::vector<uint8_t> bytes = std::vector<uint8_t>(129 * 128, 0);
    uint8_t* row(int t) { return bytes.data() + t * 128; }
    TestTables() {
        std::fill(bytes.begin() + 128 * 128, bytes.end(), uint8_t{'t'});
        // Table 3: seven steps of a major scale, each with its own bend.
        const uint8_t major[] = {0, 2, 4, 5, 7, 9, 11};
        for (int i = 0; i < 7; ++i) {
            row(3)[i] = major[i];
            row(3)[64 + i] = static_cast<uint8_t>(1 + 4 * i);
        }
        row(3)[127] = 6;
        // Table 19: nineteen equal steps an octave; the rest of each step is its bend.
        for (int i = 0; i < 19; ++i) {
            row(19)[i] = static_cast<uint8_t>(i * 12 / 19);
            row(19)[64 + i] = static_cast<uint8_t>(1 + (i * 12 * 64 / 19) % 64);
        }
        row(19)[127] = 18;
        // Table 64: sixty-four steps, the largest table whose steps all have a bend byte but the last.
        for (int i = 0; i < 64; ++i) row(64)[i] = static_cast<uint8_t>(i * 12 / 64);
        for (int i = 0; i < 63; ++i) row(64)[64 + i] = static_cast<uint8_t>(1 + (i * 12) % 64);
        row(64)[127] = 63;
        // Tables 0 and 127: 128 steps. Row 1 holds bytes that a read past row 0 would take.
        for (int i = 0; i < 127; ++i) row(0)[i] = row(127)[i] = static_cast<uint8_t>(i % 12);
        row(0)[127] = row(127)[127] = 127;
        std::fill(row(1), row(1) + 128, uint8_t{40});
    }
};

// Note and bend MSB of the note a MIDITone plays from table `t` for note `a` and root `r`.
std::pair<int, int> playThrough(NoteHarness& h, MIDITone& tone, int t, int a, int r) {
    h.connect(tone, 7, ModuleHarness::constant(t));
    h.connect(tone, 1, ModuleHarness::constant(a));
    h.connect(tone, 2, ModuleHarness::constant(r));
    h.take();
    strike(h, tone);
    int note = -1, bend = -1;
    for (const Bytes& m : h.take()) {
        if (m[0] == 0xE0) bend = m[2];
        if (m[0] == 0x90) note = m[1];
    }
    return {note, bend};
}

TEST(MIDITone, PlaysThroughRealTablesAndNeverReadsOutsideTheTablesRow) {
    NoteHarness h;
    TestTables tables;
    h.engine->setToneTables(tables.bytes.data());
    auto& tone = static_cast<MIDITone&>(h.add("MIDITone"));

    // Seven steps: note 17 is step 3 in the third octave of the scale.
    EXPECT_EQ(playThrough(h, tone, 3, 17, 0), std::make_pair(29, 76));
    EXPECT_EQ(tone.shownStep, 3);
    EXPECT_EQ(tone.shownOctave, 2);
    EXPECT_EQ(tone.shownBend, 13) << "shown raw, without the 63";
    // A root of 9 is step 2 and one octave of the scale, and enters whole as well.
    EXPECT_EQ(playThrough(h, tone, 3, 17, 9), std::make_pair(36 + 9 + 5, 76));
    EXPECT_EQ(tone.shownStep, 5);
    EXPECT_EQ(tone.shownOctave, 3);

    // Nineteen steps: note 43 is step 5 of the third octave, 3 semitones and a bend of 10.
    EXPECT_EQ(playThrough(h, tone, 19, 43, 0), std::make_pair(27, 11 + 63));
    EXPECT_EQ(playThrough(h, tone, 19, 18, 0), std::make_pair(11, 24 + 63));

    // Sixty-four steps: step 62 has the last bend byte; step 63 reads the step count.
    EXPECT_EQ(playThrough(h, tone, 64, 62, 0), std::make_pair(11, 41 + 63));
    EXPECT_EQ(playThrough(h, tone, 64, 126, 0), std::make_pair(12 + 11, 41 + 63));
    EXPECT_EQ(playThrough(h, tone, 64, 63, 0), std::make_pair(11, 63 + 63));

    // 128 steps: steps from 64 on have no bend byte in the row and play unbent.
    EXPECT_EQ(playThrough(h, tone, 0, 5, 0), std::make_pair(5, 69 % 12 + 63)) << "byte 69 bends step 5";
    EXPECT_EQ(playThrough(h, tone, 0, 70, 0), std::make_pair(70 % 12, 64)) << "not row 1's byte 6";
    EXPECT_EQ(playThrough(h, tone, 127, 70, 0), std::make_pair(70 % 12, 64)) << "not the block behind the rows";
    EXPECT_EQ(playThrough(h, tone, 127, 127, 0), std::make_pair(127, 64));
    EXPECT_EQ(tone.shownBend, 1);
}

TEST(MIDITone, ZeroVelocitySendsNeitherNoteOnNorTheNoteOffAfterIt) {
    NoteHarness h;
    Module& tone = h.add("MIDITone");
    strike(h, tone);
    h.take();
    h.connect(tone, 3, " Off (0)");
    h.connect(tone, 0, " Off (0)");
    h.ticks(1);
    EXPECT_EQ(h.notes().size(), 1u) << "the sounding note ends";
    h.connect(tone, 0, " On (127)");
    h.ticks(1);
    h.connect(tone, 0, " Off (0)");
    h.ticks(1);
    EXPECT_TRUE(h.notes().empty());
}

TEST(NoteModules, LegatoSendsNothingWhileTheNoteStaysAndLeavesAGapOnAChange) {
    NoteHarness h;
    auto& key = static_cast<MIDIKey&>(h.add("MIDIKey"));
    key.legato = true;
    h.connect(key, 1, "~  60");
    h.ticks(2);
    // The first tick releases the (never sounded) default note, the next one plays.
    EXPECT_EQ(h.notes(), (std::vector<Bytes>{{0x80, 64, 0}, {0x90, 60, 127}}));
    h.ticks(5);
    EXPECT_TRUE(h.notes().empty());
    h.connect(key, 1, "~  62");
    h.ticks(1);
    EXPECT_EQ(h.notes(), (std::vector<Bytes>{{0x80, 60, 0}}));
    h.ticks(1);
    EXPECT_EQ(h.notes(), (std::vector<Bytes>{{0x90, 62, 127}}));
}

TEST(MIDIVoice, TransposeOf127PlaysTheNoteAsItIsWithoutNoteOff) {
    NoteHarness h;
    auto& voice = static_cast<MIDIVoice&>(h.add("MIDIVoice"));
    h.connect(voice, 1, "~  64");
    h.connect(voice, 2, "~ 127");
    for (int i = 0; i < 3; ++i) strike(h, voice);
    h.connect(voice, 0, " Off (0)");
    h.ticks(1);
    const auto notes = h.notes();
    ASSERT_EQ(notes.size(), 3u);
    for (const Bytes& n : notes) EXPECT_EQ(n, (Bytes{0x90, 64, 127}));
    EXPECT_EQ(voice.noteCaption, "En : 5");
    h.connect(voice, 2, "~  70");
    strike(h, voice);
    EXPECT_EQ(h.notes().back(), (Bytes{0x90, 127, 127})) << "64 + 70 is cut down to 127";
}

TEST(NoteModules, StopSendsTheNoteOffOnTheLastTickAndARunStartSoundsAtOnce) {
    NoteHarness h;
    Module& key = h.add("MIDIKey");
    strike(h, key);
    h.take();
    h.engine->StopTimers();
    EXPECT_EQ(h.notes(), (std::vector<Bytes>{{0x80, 64, 0}}));

    h.engine->StartTimers();
    h.ticks(1);
    h.connect(key, 0, " Off (0)");
    h.ticks(1);
    h.take();
    h.connect(key, 0, " On (127)");
    h.engine->setRun(true);
    h.ticks(1);
    EXPECT_EQ(h.notes().size(), 1u) << "the run's first tick sounds with the gate high";
}

TEST(NoteModules, TheFirstTickOfARunWithTheGateLowOnlyArms) {
    NoteHarness h;
    Module& key = h.add("MIDIKey");
    h.engine->setRun(true);
    h.ticks(1);
    EXPECT_TRUE(h.notes().empty());
    h.connect(key, 0, " On (127)");
    h.ticks(1);
    EXPECT_EQ(h.notes().size(), 1u);
}

TEST(NoteModules, NewModulesSpreadOverChannelsAndAChannelChangeMovesTheNoteOff) {
    NoteHarness h;
    h.add("MIDIKey");
    auto& second = static_cast<MIDIKey&>(h.add("MIDIKey"));
    EXPECT_EQ(second.ChanPort, 1);
    EXPECT_EQ(second.channelCaption(), "2 A");
    strike(h, second);
    h.take();
    second.setChanPort(*h.engine, 5);
    h.connect(second, 0, " Off (0)");
    h.ticks(1);
    EXPECT_EQ(h.notes(), (std::vector<Bytes>{{0x85, 64, 0}}));
}

TEST(NoteModules, DisabledModulesSendNothingAndLeaveTheirNoteSounding) {
    NoteHarness h;
    Module& key = h.add("MIDIKey");
    strike(h, key);
    h.take();
    key.Enabled = 0;
    h.connect(key, 0, " Off (0)");
    h.ticks(3);
    EXPECT_TRUE(h.take().empty());
}

TEST(MIDIChan, BankIsTwoControllersUnlessMsbOnlyAndPortamentoSwitches) {
    NoteHarness h;
    Module& chan = h.add("MIDIChan");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 0, 0}, {0xB0, 32, 0}, {0xD0, 0}, {0xB0, 7, 127}, {0xB0, 2, 0},
                                            {0xB0, 4, 0}, {0xB0, 11, 127}, {0xB0, 5, 0}}));
    h.connect(chan, 0, "~   3");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 0, 0}, {0xB0, 32, 3}}));
    EXPECT_EQ(h.engine->ports.currentBank[0], 3);
    h.engine->options.bankMsb = true;
    h.connect(chan, 0, "~   4");
    h.connect(chan, 6, "~  20");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 0, 4}, {0xB0, 65, 127}, {0xB0, 5, 20}}));
    h.connect(chan, 6, " Off (0)");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 5, 0}, {0xB0, 65, 0}}));
}

TEST(PitchBendAndPoly, SendOnChangeAndAgainOnResync) {
    NoteHarness h;
    Module& bend = h.add("MIDIPBend");
    auto& poly = static_cast<MIDIPoly&>(h.add("MIDIPoly"));
    EXPECT_EQ(poly.setKeyText("300"), "127");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xE0, 0, 64}, {0xA0, 127, 0}}));
    h.ticks(1);
    EXPECT_TRUE(h.take().empty());
    h.connect(bend, 0, "~  70");
    h.engine->ResyncPending = true;
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xE0, 0, 70}, {0xA0, 127, 0}}));
}

TEST(NoteModules, ChannelAndSwitchesRoundTripThroughTheRecordBytes) {
    NoteHarness h;
    auto& tone = static_cast<MIDITone&>(h.add("MIDITone"));
    tone.setChanPort(*h.engine, 37);
    tone.legato = true;
    tone.stripOctaves = true;
    h.engine->CurrentSnapshot = 4;
    tone.PatchStore(*h.engine);
    ByteWriter fields;
    tone.writeFields(fields);
    EXPECT_EQ(fields.size(), 512u) << "the bytes after the input names and positions";
    ByteWriter out;
    tone.writeBody(out, h.engine->names);

    MIDITone copy;
    ByteReader in(out.bytes());
    copy.readBody(in, h.engine->names);
    EXPECT_EQ(in.remaining(), 0u);
    h.engine->CurrentSnapshot = 4;
    copy.PatchChange(*h.engine);
    EXPECT_EQ(copy.ChanPort, 37);
    EXPECT_EQ(copy.channelCaption(), "6 C");
    EXPECT_TRUE(copy.legato);
    EXPECT_TRUE(copy.stripOctaves);
}

namespace {
class TrackSink final : public MidiFileSink {
public:
    void begin(int) override { events.clear(); }
    void add(int track, uint32_t, std::span<const uint8_t> bytes) override { events.emplace_back(track, Bytes(bytes.begin(), bytes.end())); }
    bool save(const std::string&, std::span<const int> tracks, std::string&) override {
        saved.assign(tracks.begin(), tracks.end());
        return true;
    }
    std::vector<std::pair<int, Bytes>> events;
    std::vector<int> saved;
};
}  // namespace

TEST(Recording, EachSenderHasItsTracksAndOnlyUsedTracksAreSaved) {
    NoteHarness h;
    TrackSink sink;
    h.engine->ports.setRecordSink(&sink);
    auto& tone = static_cast<MIDITone&>(h.add("MIDITone"));
    auto& key = static_cast<MIDIKey&>(h.add("MIDIKey"));
    auto& silent = static_cast<MIDIVoice&>(h.add("MIDIVoice"));
    silent.Enabled = 0;
    auto& bend = static_cast<ChannelModule&>(h.add("MIDIPBend"));
    EXPECT_NE(tone.NoteTrack, tone.ControlTrack) << "MIDITone records notes and controllers apart";
    EXPECT_NE(silent.NoteTrack, silent.ControlTrack);
    EXPECT_EQ(key.NoteTrack, key.ControlTrack) << "MIDIKey has one track";
    key.setChanPort(*h.engine, 1);

    h.engine->ports.setRecording(true);
    h.engine->setRun(true);
    h.ticks(1);
    strike(h, tone);
    strike(h, key);
    std::string error;
    ASSERT_TRUE(h.engine->ports.SaveMidiFile("take.mid", error));
    EXPECT_EQ(sink.saved, (std::vector<int>{tone.ControlTrack + 1, tone.NoteTrack + 1, key.ControlTrack + 1, bend.ControlTrack + 1}));
    int keyNotes = 0;
    for (const auto& [track, bytes] : sink.events) {
        if (track == key.ControlTrack + 1 && (bytes[0] & 0xF0) == 0x90) ++keyNotes;
        if ((bytes[0] & 0xF0) == 0x90 && (bytes[0] & 15) == tone.ChanPort) {
            EXPECT_EQ(track, tone.NoteTrack + 1);
        }
    }
    EXPECT_EQ(keyNotes, 1);
}
