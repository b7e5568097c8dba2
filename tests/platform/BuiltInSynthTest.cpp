// The built-in synth rendered offline in virtual time: the same run gives the same bytes,
// notes sound from their own sample, non-channel bytes change nothing, and a file that
// can't be written is reported by name. Real-time sound: it opens or says why, by name.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "engine/VirtualTimerService.h"
#include "platform/BuiltInSynthOutput.h"
#include "platform/OfflineSynthOutput.h"
#include "platform/VirtualTimeStampedOutput.h"

using namespace quillmer;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;
constexpr size_t kWavHeader = 44;

struct Cue {
    int64_t atMs;
    Bytes bytes;
};

class OfflineSynth : public ::testing::Test {
protected:
    void SetUp() override {
        if (findGeneralMidiSoundFont().empty()) GTEST_SKIP() << "no General MIDI SoundFont installed";
        folder = fs::temp_directory_path() / ("quillmer-synth-" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    // Renders `cues` sent at once at their times, for `lengthMs`; returns the file's bytes.
    Bytes render(const std::string& file, const std::vector<Cue>& cues, int64_t lengthMs) {
        VirtualTimerService timers;
        OfflineSynthOutput synth(timers, (folder / file).string());
        EXPECT_TRUE(synth.open());
        for (const Cue& cue : cues) {
            timers.advanceTo(cue.atMs * 1000);
            synth.sendNow(cue.bytes);
        }
        timers.advanceTo(lengthMs * 1000);
        synth.close();
        EXPECT_TRUE(synth.saved());
        return readFile(folder / file);
    }

    static Bytes readFile(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), {});
    }
    static int16_t sampleAt(const Bytes& wav, size_t index) {
        const size_t at = kWavHeader + 2 * index;
        return static_cast<int16_t>(wav[at] | (wav[at + 1] << 8));
    }
    // Index of the first stereo frame with a non-zero sample, or -1.
    static int64_t firstSoundingFrame(const Bytes& wav) {
        for (size_t i = 0; kWavHeader + 2 * i + 1 < wav.size(); ++i)
            if (sampleAt(wav, i) != 0) return static_cast<int64_t>(i / 2);
        return -1;
    }
    static uint32_t le32(const Bytes& b, size_t at) {
        return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (static_cast<uint32_t>(b[at + 3]) << 24);
    }

    fs::path folder;
    const std::vector<Cue> phrase{{100, {0xC0, 0}},      {100, {0x90, 60, 100}}, {350, {0x90, 64, 90}},
                                  {600, {0x80, 60, 0}},  {700, {0xB0, 7, 80}},   {700, {0xE0, 0, 80}},
                                  {800, {0x99, 38, 120}}, {900, {0x80, 64, 0}}};
};

}  // namespace

TEST_F(OfflineSynth, TwoIdenticalRunsGiveByteIdenticalFiles) {
    const Bytes first = render("a.wav", phrase, 1500);
    const Bytes second = render("b.wav", phrase, 1500);
    ASSERT_GT(first.size(), kWavHeader);
    EXPECT_TRUE(first == second);
}

TEST_F(OfflineSynth, WritesSixteenBitStereoAtTheClocksLength) {
    const Bytes wav = render("header.wav", {}, 1000);
    ASSERT_EQ(wav.size(), kWavHeader + 44100 * 4);
    EXPECT_EQ(std::string(wav.begin(), wav.begin() + 4), "RIFF");
    EXPECT_EQ(le32(wav, 4), wav.size() - 8);
    EXPECT_EQ(std::string(wav.begin() + 8, wav.begin() + 16), "WAVEfmt ");
    EXPECT_EQ(wav[22], 2);                 // channels
    EXPECT_EQ(le32(wav, 24), 44100u);      // sample rate
    EXPECT_EQ(wav[34], 16);                // bits a sample
    EXPECT_EQ(le32(wav, 40), 44100u * 4);  // data bytes
}

TEST_F(OfflineSynth, SilentWithoutNotesAndSoundingFromTheNotesOwnSample) {
    EXPECT_EQ(firstSoundingFrame(render("silent.wav", {{50, {0xB0, 7, 100}}, {60, {0xC0, 10}}}, 500)), -1);

    // 250 ms is frame 11025: the same note sounds that much later than one played at 0, give
    // or take the synth's 64-frame block.
    const int64_t atZero = firstSoundingFrame(render("zero.wav", {{0, {0x90, 69, 110}}}, 600));
    const int64_t later = firstSoundingFrame(render("later.wav", {{250, {0x90, 69, 110}}}, 600));
    ASSERT_GE(atZero, 0);
    EXPECT_GE(later - atZero, 11025);
    EXPECT_LT(later - atZero, 11025 + 64);
}

TEST_F(OfflineSynth, FillerAndPrivateResetBytesChangeNothing) {
    std::vector<Cue> withFillers = phrase;
    for (int64_t ms = 0; ms < 1500; ms += 10) withFillers.push_back({ms, {249}});
    withFillers.push_back({400, {244}});
    withFillers.push_back({420, {248}});
    withFillers.push_back({430, {0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7}});
    std::stable_sort(withFillers.begin(), withFillers.end(),
                     [](const Cue& a, const Cue& b) { return a.atMs < b.atMs; });
    EXPECT_TRUE(render("plain.wav", phrase, 1500) == render("fillers.wav", withFillers, 1500));
}

TEST_F(OfflineSynth, BehindTheVirtualQueueAMessagePlaysAtItsStampNotWhenItWasSent) {
    VirtualTimerService timers;
    const fs::path path = folder / "stamped.wav";
    {
        VirtualTimeStampedOutput output(std::make_unique<OfflineSynthOutput>(timers, path.string()), timers);
        ASSERT_TRUE(output.open());
        output.startTimeBase();
        output.sendAt(Bytes{0x90, 69, 110}, 250);  // sent at 0, due at 250 ms
        timers.advanceTo(600'000);
        output.close();
    }
    const Bytes stamped = readFile(path);
    EXPECT_TRUE(stamped == render("direct.wav", {{250, {0x90, 69, 110}}}, 600));
}

TEST_F(OfflineSynth, AFileThatCannotBeMadeFailsTheOpenNamingIt) {
    VirtualTimerService timers;
    const std::string path = (folder / "no such folder" / "out.wav").string();
    OfflineSynthOutput synth(timers, path);
    std::vector<MidiDeviceEvent> events;
    synth.setEventHandler([&](const MidiDeviceEvent& e) { events.push_back(e); });
    EXPECT_FALSE(synth.open());
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, MidiDeviceEvent::Kind::Error);
    EXPECT_NE(events[0].text.find(path), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "no such folder"));
}

TEST(BuiltInSynth, OpensWithSoundOrSaysWhyNamingItself) {
    BuiltInSynthOutput synth;
    std::vector<MidiDeviceEvent> events;
    synth.setEventHandler([&](const MidiDeviceEvent& e) { events.push_back(e); });
    if (synth.open()) {
        EXPECT_FALSE(synth.audioDriver().empty());
        synth.sendNow(Bytes{0x90, 60, 1});
        synth.sendNow(Bytes{249});
        synth.close();
        EXPECT_TRUE(events.empty());
    } else {
        ASSERT_EQ(events.size(), 1u);
        EXPECT_EQ(events[0].kind, MidiDeviceEvent::Kind::Error);
        EXPECT_EQ(events[0].text.rfind("Built-in Synth: ", 0), 0u);
        EXPECT_FALSE(synth.isOpen());
        synth.sendNow(Bytes{0x90, 60, 1});  // a closed synth takes messages quietly
    }
}
