// quillmer-cli run --song: the demo's Composer list played offline from Begin to End,
// recorded and rendered in one command.

#include <gtest/gtest.h>

#include <filesystem>

#include "../shell/SessionHarness.h"
#include "tests/cli/CliRunner.h"
#include "app/cli/Progress.h"
#include "platform/StandardMidiFile.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

const std::string kDemoSong = std::string(QUILLMER_SOURCE_DIR) + "/examples/demo.qmp";
constexpr uint32_t kMeasure = 4 * 480;  // file ticks

}  // namespace

TEST(CliSong, TheDemoSongPlaysEveryLineAndStopsAfterTheLast) {
    ScratchDir dir;
    const std::string mid = dir.file("song.mid");
    const std::string wav = dir.file("song.wav");
    const CliResult r = runCli("run " + kDemoSong + " --song --record " + mid + " --wav " + wav);
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(r.out, "") << "no progress bar when stderr is no terminal";
    EXPECT_GT(std::filesystem::file_size(wav), 44u);
    const auto file = readMidiFile(mid);
    ASSERT_TRUE(file.has_value());
    // Intro 4, Verse 8, Chorus 8, Verse 8, Chorus 8 measures.
    constexpr uint32_t verse = 4 * kMeasure, chorus = 12 * kMeasure, verse2 = 20 * kMeasure, chorus2 = 28 * kMeasure,
                       end = 36 * kMeasure;
    std::vector<std::pair<uint32_t, int>> melody;  // channel 1: the vibraphone
    uint32_t lastKick = 0;
    for (const auto& track : file->tracks)
        for (const MidiFileEvent& e : track) {
            if (e.bytes.size() != 3 || (e.bytes[0] & 0xF0) != 0x90 || e.bytes[2] == 0) continue;
            if ((e.bytes[0] & 15) == 0) melody.emplace_back(e.absolute, e.bytes[1]);
            if ((e.bytes[0] & 15) == 9 && e.bytes[1] == 36) lastKick = std::max(lastKick, e.absolute);
        }
    std::sort(melody.begin(), melody.end());
    ASSERT_FALSE(melody.empty());
    EXPECT_GT(melody.front().first, verse) << "the melody rests through the intro";
    EXPECT_LT(lastKick, end) << "nothing after the last measure";
    EXPECT_GE(lastKick, end - kMeasure) << "the drums play to the end";
    // The chorus plays its own, higher melody; the second verse is the first again.
    const auto highest = [&](uint32_t from, uint32_t to) {
        int top = 0;
        for (const auto& [at, note] : melody)
            if (at > from && at < to) top = std::max(top, note);
        return top;
    };
    const auto notesIn = [&](uint32_t from, uint32_t to) {
        std::vector<int> notes;
        for (const auto& [at, note] : melody)
            if (at > from && at < to) notes.push_back(note);
        return notes;
    };
    EXPECT_GT(highest(chorus, verse2), highest(verse, chorus));
    EXPECT_EQ(notesIn(verse, chorus), notesIn(verse2, chorus2));
    EXPECT_EQ(notesIn(chorus, verse2), notesIn(chorus2, end));
}

TEST(CliSong, RefusedWithoutAListAndBesideACount) {
    ScratchDir dir;
    SessionHarness empty;
    ASSERT_EQ(empty.save(dir.file("empty.qmp")), "");
    CliResult r = runCli("run " + dir.file("empty.qmp") + " --song");
    EXPECT_NE(r.status, 0);
    EXPECT_NE(r.out.find("has no Composer list to play"), std::string::npos) << r.out;
    r = runCli("run " + kDemoSong + " --song --bars 4");
    EXPECT_NE(r.status, 0);
    r = runCli("run " + kDemoSong);
    EXPECT_NE(r.out.find("--song"), std::string::npos) << r.out;
}

TEST(CliSong, ProgressLine) {
    EXPECT_EQ(progressLine(9, 20), "[#############.................]  45%  measure 9 of 20");
    EXPECT_EQ(progressLine(0, 36, 4), "[....]   0%  measure 0 of 36");
    EXPECT_EQ(progressLine(50, 36, 4), "[####] 100%  measure 36 of 36") << "never past the end";
    EXPECT_EQ(progressLine(0, 0, 4), "[....]   0%  measure 0 of 1");
}
