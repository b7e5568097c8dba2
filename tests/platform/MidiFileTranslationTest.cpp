// Translating MIDI files: files written with the MIDI file library, and files as other
// programs leave them (lying lengths, format 2, SMPTE time, running status, missing ends),
// checked event by event against their times at 24 steps per quarter.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/MidiFileTranslation.h"
#include "platform/StandardMidiFile.h"

using namespace quillmer;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;

MidiFileEvent ev(uint32_t delta, Bytes bytes) {
    MidiFileEvent e;
    e.delta = delta;
    e.bytes = std::move(bytes);
    return e;
}
Bytes tempo(uint32_t micros) {
    return {0xFF, 0x51, 0x03, static_cast<uint8_t>(micros >> 16), static_cast<uint8_t>(micros >> 8), static_cast<uint8_t>(micros)};
}
Bytes text(uint8_t type, const std::string& s) {
    Bytes b(s.size() + 3);
    b[0] = 0xFF;
    b[1] = type;
    b[2] = static_cast<uint8_t>(s.size());
    std::copy(s.begin(), s.end(), b.begin() + 3);
    return b;
}

class Translation : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("quillmer-translate-" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    std::string write(const std::string& name, int format, int division, std::vector<std::vector<MidiFileEvent>> tracks) {
        MidiFileContents c;
        c.format = format;
        c.division = division;
        c.tracks = std::move(tracks);
        const std::string path = (folder / name).string();
        std::string error;
        EXPECT_TRUE(writeMidiFile(path, c, error)) << error;
        return path;
    }
    Bytes bytesOf(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), {});
    }
    std::string put(const std::string& name, const Bytes& bytes) {
        const std::string path = (folder / name).string();
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    MidiFileTranslation open(const std::string& path) {
        MidiFileTranslation t;
        std::string error, reason;
        EXPECT_TRUE(t.open(path, error, reason)) << error << ": " << reason;
        return t;
    }
    static std::vector<std::pair<float, int>> pairs(const MfxList& list) {
        std::vector<std::pair<float, int>> out;
        for (size_t i = 0; i < list.values.size(); ++i) out.emplace_back(list.times[i], list.values[i]);
        return out;
    }

    fs::path folder;
};

// Several channels, overlapping notes, controllers, tempo changes in the middle of a bar.
std::vector<std::vector<MidiFileEvent>> song() {
    return {
        {ev(0, tempo(600000)), ev(0, {0xFF, 0x58, 0x04, 0x03, 0x02, 0x18, 0x08}), ev(150, tempo(428571)),
         ev(150, tempo(1000000))},
        {ev(0, text(0x03, "Lead")), ev(0, {0x90, 60, 100}), ev(48, {0x90, 64, 90}),  // overlapping
         ev(24, {0x80, 60, 64}), ev(0, {0xB0, 7, 100}), ev(30, {0x90, 64, 0}),    // note-on 0 ends 64
         ev(0, {0x91, 40, 70}), ev(48, {0xB1, 7, 50}), ev(12, {0x81, 40, 0}), ev(0, {0xC0, 5}),
         ev(100, {0xE0, 0, 96}), ev(1, {0xD0, 33}), ev(1, {0xA1, 40, 21})},
    };
}

}  // namespace

TEST_F(Translation, EventsComeAtTheirStepsWhateverTheTempoAndDivision) {
    for (int division : {96, 192, 480, 960}) {
        auto tracks = song();
        for (auto& track : tracks)
            for (MidiFileEvent& e : track) e.delta = e.delta * static_cast<uint32_t>(division) / 96;
        const MidiFileTranslation t = open(write("song" + std::to_string(division) + ".mid", 1, division, tracks));
        SCOPED_TRACE(division);
        ASSERT_EQ(t.trackCount(), 2);
        EXPECT_EQ(t.fileBpm(), 100);  // the first tempo, not the later ones
        EXPECT_EQ(t.trackCaption(0), "Track# 1 [0]");
        EXPECT_EQ(t.trackName(0), " (null)");
        EXPECT_EQ(t.trackCaption(1), "Lead [12]");
        EXPECT_EQ(t.channelCounts(1)[0], 8);
        EXPECT_EQ(t.channelCounts(1)[1], 4);

        // 96 ticks a quarter: a tick is a quarter step.
        using P = std::vector<std::pair<float, int>>;
        EXPECT_EQ(pairs(t.translate(1, 0, mclass::Key)), (P{{0, 60}, {12, 64}}));
        EXPECT_EQ(pairs(t.translate(1, 0, mclass::Velocity)), (P{{0, 100}, {12, 90}}));
        EXPECT_EQ(pairs(t.translate(1, 0, mclass::NoteOff)), (P{{18, 60}, {25.5f, 64}}));
        EXPECT_EQ(pairs(t.translate(1, 0, 7)), (P{{18, 100}}));
        EXPECT_EQ(pairs(t.translate(1, 1, 7)), (P{{37.5f, 50}}));
        EXPECT_EQ(pairs(t.translate(1, 0, mclass::Program)), (P{{40.5f, 5}}));
        EXPECT_EQ(pairs(t.translate(1, 0, mclass::PitchBend)), (P{{65.5f, 96}}));
        EXPECT_EQ(pairs(t.translate(1, 0, mclass::AfterTouch)), (P{{65.75f, 33}}));
        EXPECT_EQ(pairs(t.translate(1, 1, mclass::AfterTouch)), (P{{66.0f, 21}}));

        const auto counts = t.classCounts(1, 0);
        EXPECT_EQ(counts[mclass::Key], 2);
        EXPECT_EQ(counts[mclass::NoteOff], 2);
        EXPECT_EQ(counts[7], 1);
        EXPECT_EQ(counts[8], 0);
        EXPECT_EQ(t.firstChannelWith(1, 7), 0);
        EXPECT_EQ(t.firstChannelWith(1, mclass::Key), 0);
        EXPECT_EQ(t.firstChannelWith(0, 7), -1);

        const MfxList list = t.translate(1, 1, 7);
        EXPECT_EQ(list.fileBpm, 100);
        EXPECT_EQ(list.listName, "07H   7 Volume");
        EXPECT_EQ(list.trackInfo[0], 2);  // track 2 ...
        EXPECT_EQ(list.trackInfo[4], 2);  // ... channel 2
    }
}

TEST_F(Translation, AtTwentyFourTicksAQuarterATickIsAStep) {
    const MidiFileTranslation t =
        open(write("d24.mid", 1, 24, {{ev(0, {0xB0, 1, 1}), ev(1, {0xB0, 1, 2}), ev(6, {0xB0, 1, 3}), ev(17, {0xB0, 1, 4})}}));
    EXPECT_EQ(t.translate(0, 0, 1).times, (std::vector<float>{0, 1, 7, 24}));
}

TEST_F(Translation, AFormatZeroFileSplitsByChannel) {
    std::vector<MidiFileEvent> track{ev(0, text(0x03, "All")), ev(0, {0x90, 36, 100}), ev(0, {0x99, 42, 80}),
                                     ev(0, {0x92, 60, 70}), ev(120, {0x99, 42, 81}), ev(0, {0x80, 36, 0}),
                                     ev(120, {0x92, 62, 71}), ev(0, {0x99, 38, 82})};
    const MidiFileTranslation t = open(write("zero.mid", 0, 120, {track}));
    ASSERT_EQ(t.trackCount(), 1);
    EXPECT_EQ(t.format(), 0);
    const auto channels = t.channelCounts(0);
    EXPECT_EQ(channels[0], 2);
    EXPECT_EQ(channels[2], 2);
    EXPECT_EQ(channels[9], 3);
    using P = std::vector<std::pair<float, int>>;
    EXPECT_EQ(pairs(t.translate(0, 9, mclass::Key)), (P{{0, 42}, {24, 42}, {48, 38}}));
    EXPECT_EQ(pairs(t.translate(0, 2, mclass::Key)), (P{{0, 60}, {48, 62}}));
    EXPECT_EQ(pairs(t.translate(0, 0, mclass::Key)), (P{{0, 36}}));
    EXPECT_EQ(t.firstChannelWith(0, mclass::Key), 0);
    EXPECT_EQ(t.firstChannelWith(0, mclass::NoteOff), 0);
    EXPECT_TRUE(t.translate(0, 5, mclass::Key).empty());
}

TEST_F(Translation, WithoutATempoEventTheFileRunsAt120) {
    const MidiFileTranslation t = open(write("plain.mid", 1, 96, {{ev(0, {0x90, 1, 1})}}));
    EXPECT_EQ(t.fileBpm(), 120);
    EXPECT_EQ(t.translate(0, 0, mclass::Key).fileBpm, 120);
}

TEST_F(Translation, SmpteTimeRunsAtTheFilesTempo) {
    // 25 frames of 40 ticks: 1000 ticks a second; at 120 a minute a second is 48 steps.
    const std::string path = write("smpte.mid", 1, 96, {{ev(0, tempo(500000)), ev(1000, {0x90, 60, 1}), ev(500, {0x90, 61, 1})}});
    Bytes bytes = bytesOf(path);
    bytes[12] = static_cast<uint8_t>(-25);
    bytes[13] = 40;
    const MidiFileTranslation t = open(put("smpte2.mid", bytes));
    using P = std::vector<std::pair<float, int>>;
    EXPECT_EQ(pairs(t.translate(0, 0, mclass::Key)), (P{{48, 60}, {72, 61}}));

    bytes[12] = static_cast<uint8_t>(-26);  // no such frame rate
    MidiFileTranslation bad;
    std::string error, reason;
    EXPECT_FALSE(bad.open(put("smpte3.mid", bytes), error, reason));
    EXPECT_EQ(error, "Cound Not Open " + (folder / "smpte3.mid").string());
    EXPECT_NE(reason.find("SMPTE"), std::string::npos) << reason;
}

TEST_F(Translation, FilesOfOtherProgramsAreReadAsFarAsTheyCanBe) {
    // Format 2, meta events of every kind, karaoke text, SysEx, an empty track.
    std::vector<MidiFileEvent> a{ev(0, text(0x03, "Verse")), ev(0, text(0x01, "@KMIDI KARAOKE FILE")),
                                 ev(0, text(0x05, "Hel")), ev(0, text(0x06, "Mark")),
                                 ev(0, {0xFF, 0x54, 0x05, 0x60, 0, 0, 0, 0}), ev(0, {0xFF, 0x7F, 0x03, 0, 0, 0x41}),
                                 ev(0, {0xF0, 0x05, 0x7E, 0x7F, 0x09, 0x01, 0xF7}), ev(10, {0x90, 70, 60}),
                                 ev(0, {0xFF, 0x20, 0x01, 0x00})};
    std::vector<MidiFileEvent> b{ev(0, text(0x03, "noname")), ev(48, {0x95, 71, 61})};
    const std::string path = write("two.mid", 1, 48, {a, b, {}});
    Bytes bytes = bytesOf(path);
    bytes[9] = 2;  // format 2
    const MidiFileTranslation t = open(put("format2.mid", bytes));
    ASSERT_EQ(t.trackCount(), 3);
    EXPECT_EQ(t.format(), 2);
    EXPECT_EQ(t.trackCaption(0), "Verse [1]");
    EXPECT_EQ(t.trackCaption(1), "Track# 2 [1]");
    EXPECT_EQ(t.trackCaption(2), "Track# 3 [0]");
    EXPECT_EQ(t.translate(0, 0, mclass::Key).times, std::vector<float>{5});
    EXPECT_EQ(t.translate(1, 5, mclass::Key).times, std::vector<float>{24});
}

TEST_F(Translation, LyingLengthsMissingEndsAndRunningStatus) {
    // Hand-made: running status, a track without its end, a track whose length runs past
    // the end of the file, a header that counts five tracks.
    const Bytes bytes{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, 5, 0, 96,
                      // track 1: note-on, then two more by running status, then its end
                      'M', 'T', 'r', 'k', 0, 0, 0, 14, 0x00, 0x90, 60, 100, 0x60, 62, 100, 0x60, 64, 0, 0x00, 0xFF, 0x2F, 0x00,
                      // track 2: no end-of-track event
                      'M', 'T', 'r', 'k', 0, 0, 0, 4, 0x00, 0xC3, 0x09, 0x00,
                      // an unknown chunk is passed over
                      'X', 'Y', 'Z', 'W', 0, 0, 0, 2, 1, 2,
                      // a zero-length track
                      'M', 'T', 'r', 'k', 0, 0, 0, 0,
                      // track 4 says 1000 bytes
                      'M', 'T', 'r', 'k', 0, 0, 0x03, 0xE8, 0x00, 0xB2, 10, 20, 0x18, 0xB2, 10, 30};
    const MidiFileTranslation t = open(put("liar.mid", bytes));
    ASSERT_EQ(t.trackCount(), 4);
    using P = std::vector<std::pair<float, int>>;
    EXPECT_EQ(pairs(t.translate(0, 0, mclass::Key)), (P{{0, 60}, {24, 62}}));
    EXPECT_EQ(pairs(t.translate(0, 0, mclass::NoteOff)), (P{{48, 64}}));
    EXPECT_EQ(pairs(t.translate(1, 3, mclass::Program)), (P{{0, 9}}));
    EXPECT_EQ(t.channelMessages(2), 0);
    EXPECT_EQ(pairs(t.translate(3, 2, 10)), (P{{0, 20}, {6, 30}}));
    ASSERT_GE(t.notes().size(), 2u);
    const std::string all = t.notes()[0] + "|" + t.notes()[1];
    EXPECT_NE(all.find("track 4 says it is 1000 bytes long"), std::string::npos) << all;
    EXPECT_NE(all.find("counts 5 tracks"), std::string::npos) << all;

    // A data byte of 128 or more ends what can be read of its track.
    const Bytes wild{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0, 96, 'M', 'T', 'r', 'k', 0, 0, 0, 12,
                     0x00, 0x90, 60, 100, 0x10, 0xC3, 0x9B, 0x10, 0x90, 61, 100, 0x40};
    const MidiFileTranslation t3 = open(put("wild.mid", wild));
    EXPECT_EQ(pairs(t3.translate(0, 0, mclass::Key)), (P{{0, 60}}));

    // A track cut in the middle of an event: the others are still read.
    Bytes cut(bytes.begin(), bytes.end() - 1);
    const MidiFileTranslation t2 = open(put("cut.mid", cut));
    EXPECT_EQ(pairs(t2.translate(0, 0, mclass::Key)), (P{{0, 60}, {24, 62}}));
}

TEST_F(Translation, EscapedEventsArePassedOverAndTheTrackReadOn) {
    // F7 packets of 1, 3 and 130 bytes (a two-byte length) and a long text between notes;
    // an empty packet ends what can be read.
    Bytes track{0x00, 0x90, 60, 100, 0x00, 0xF7, 0x01, 0xF8, 0x18, 0xF7, 0x03, 0x90, 61, 100, 0x18, 0x90, 62, 100,
                0x00, 0xF7, 0x81, 0x02};
    track.insert(track.end(), 130, 0x11);
    track.insert(track.end(), {0x00, 0xFF, 0x01, 0x82, 0x00});
    track.insert(track.end(), 256, 'a');
    track.insert(track.end(), {0x18, 0x90, 63, 100, 0x00, 0xF7, 0x00, 0x18, 0x90, 64, 100, 0x00, 0xFF, 0x2F, 0x00});
    Bytes file{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0, 24, 'M', 'T', 'r', 'k', 0, 0,
               static_cast<uint8_t>(track.size() >> 8), static_cast<uint8_t>(track.size())};
    file.insert(file.end(), track.begin(), track.end());
    const MidiFileTranslation t = open(put("escapes.mid", file));
    using P = std::vector<std::pair<float, int>>;
    EXPECT_EQ(pairs(t.translate(0, 0, mclass::Key)), (P{{0, 60}, {48, 62}, {72, 63}}));
    ASSERT_FALSE(t.notes().empty());
    EXPECT_NE(t.notes().back().find("no proper end"), std::string::npos);
}

TEST_F(Translation, WhatCantBeReadIsNamedWithTheFile) {
    MidiFileTranslation t;
    std::string error, reason;
    const std::string missing = (folder / "missing.mid").string();
    EXPECT_FALSE(t.open(missing, error, reason));
    EXPECT_EQ(error, "File not found: " + missing);
    const std::string textFile = put("text.mid", {'h', 'e', 'l', 'l', 'o'});
    EXPECT_FALSE(t.open(textFile, error, reason));
    EXPECT_EQ(error, "Cound Not Open " + textFile);
    EXPECT_EQ(reason, "it is not a standard MIDI file");
    EXPECT_FALSE(t.open(folder.string(), error, reason));
    EXPECT_EQ(error, "Cound Not Open " + folder.string());
    const std::string zeroDivision = put("zero.mid", {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0, 0});
    EXPECT_FALSE(t.open(zeroDivision, error, reason));
    EXPECT_NE(reason.find("division"), std::string::npos);
    const std::string shortHeader = put("short.mid", {'M', 'T', 'h', 'd', 0, 0, 0, 60, 0, 0, 0, 1, 0, 96});
    EXPECT_FALSE(t.open(shortHeader, error, reason));
    // A header alone is a file of no tracks.
    EXPECT_TRUE(t.open(put("none.mid", {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, 0, 0, 96}), error, reason)) << reason;
    EXPECT_EQ(t.trackCount(), 0);
}

TEST(MessageClasses, NamesFollowTheControllerListAndTheCommandLineFindsThem) {
    EXPECT_EQ(messageClassName(0), "00H   0 Bank Select");
    EXPECT_EQ(messageClassName(32), "20H  32 Bank MSB");
    EXPECT_EQ(messageClassName(7), "07H   7 Volume");
    EXPECT_EQ(messageClassName(66), "42H  66 Sustenuto on/off");
    EXPECT_EQ(messageClassName(99), "63H  99 Non-Reg Parameter MSB");
    EXPECT_EQ(messageClassName(120), "78H 120 All Sound Off");
    EXPECT_EQ(messageClassName(127), "7FH 127 Poly mode on");
    EXPECT_EQ(messageClassName(33), "21H  33 Unused MSB");
    EXPECT_EQ(messageClassName(45), "2DH  45 Unused MSB");
    EXPECT_EQ(messageClassName(3), "03H   3 Undefined");
    EXPECT_EQ(messageClassName(mclass::Key), "MIDI Key");
    EXPECT_EQ(messageClassName(mclass::NoteOff), "Note Off");

    EXPECT_EQ(messageClassByName("midi key"), mclass::Key);
    EXPECT_EQ(messageClassByName("PITCHBEND"), mclass::PitchBend);
    EXPECT_EQ(messageClassByName("After Touch"), mclass::AfterTouch);
    EXPECT_EQ(messageClassByName("7"), 7);
    EXPECT_EQ(messageClassByName("127"), 127);
    EXPECT_EQ(messageClassByName("128"), std::nullopt);
    EXPECT_EQ(messageClassByName("-1"), std::nullopt);
    EXPECT_EQ(messageClassByName("Volume"), std::nullopt);
    EXPECT_EQ(messageClassByName(""), std::nullopt);
}
