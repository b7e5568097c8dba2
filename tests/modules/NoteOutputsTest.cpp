#include <gtest/gtest.h>

#include "../engine/FakeDevices.h"
#include "../engine/Harness.h"
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
