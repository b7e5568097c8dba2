// `quillmer-cli mfx`: a track and class of a MIDI file to a .mfx list, headless, with the
// dialog's defaults (the lowest channel of the class) and its failures.

#include <gtest/gtest.h>

#include "../shell/SessionHarness.h"
#include "tests/cli/CliRunner.h"
#include "modules/midi/MfxFile.h"
#include "modules/midi/MidiFilePlayers.h"
#include "platform/StandardMidiFile.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

CliResult mfx(const std::string& arguments) { return runCli("mfx " + arguments); }

MidiFileEvent ev(uint32_t delta, std::vector<uint8_t> bytes) {
    MidiFileEvent e;
    e.delta = delta;
    e.bytes = std::move(bytes);
    return e;
}

// Format 2 at 48 ticks a quarter: two independent tracks, the second on channels 4 and 9.
std::string song(const ScratchDir& dir) {
    MidiFileContents c;
    c.format = 1;
    c.division = 48;
    c.tracks = {{ev(0, {0xFF, 0x51, 0x03, 0x09, 0x27, 0xC0}), ev(0, {0x90, 60, 100}), ev(24, {0x80, 60, 0})},
                {ev(0, {0x98, 50, 80}), ev(12, {0x93, 40, 70}), ev(12, {0xB3, 74, 5}), ev(48, {0x93, 41, 71})}};
    const std::string path = dir.file("song.mid");
    std::string error;
    EXPECT_TRUE(writeMidiFile(path, c, error)) << error;
    std::vector<uint8_t> bytes = readBytes(path);
    bytes[9] = 2;
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
}

MfxList load(const std::string& path) {
    MfxList list;
    std::string error, reason;
    EXPECT_TRUE(loadMfxFile(path, list, error, reason)) << error << reason;
    return list;
}

}  // namespace

TEST(MfxCommand, TranslatesATrackAndClassOnTheLowestChannelOrTheOneAskedFor) {
    ScratchDir dir;
    const std::string mid = song(dir);
    const std::string out = dir.file("keys.mfx");

    CliResult r = mfx(mid + " --track 2 --class VELOCITY " + out);
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_NE(r.out.find("channel 4"), std::string::npos) << r.out;
    MfxList list = load(out);
    EXPECT_EQ(list.values, (std::vector<uint8_t>{70, 71}));
    EXPECT_EQ(list.times, (std::vector<float>{6, 36}));
    EXPECT_EQ(list.fileBpm, 100);  // the tempo is in the first track, and counts for the file
    EXPECT_EQ(list.listName, "Velocity");

    r = mfx(mid + " --track 2 --class \"midi key\" --channel 9 " + out);
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(load(out).values, (std::vector<uint8_t>{50}));

    r = mfx(mid + " --class 74 --track 2 " + out);
    ASSERT_EQ(r.status, 0) << r.out;
    list = load(out);
    EXPECT_EQ(list.values, (std::vector<uint8_t>{5}));
    EXPECT_EQ(list.times, (std::vector<float>{12}));

    r = mfx(mid + " --track 1 --class \"Note Off\" " + out);
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(load(out).times, (std::vector<float>{12}));
}

TEST(MfxCommand, NothingToTranslateOrNothingToReadIsAMessageAndStatusOne) {
    ScratchDir dir;
    const std::string mid = song(dir);
    const std::string out = dir.file("x.mfx");
    const auto fails = [&](const std::string& args, const std::string& text) {
        const CliResult r = mfx(args);
        EXPECT_EQ(r.status, 1) << args << "\n" << r.out;
        EXPECT_NE(r.out.find(text), std::string::npos) << args << "\n" << r.out;
    };
    fails(mid + " --track 2 --class 7 " + out, "has no 07H   7 Volume events");
    fails(mid + " --track 2 --class \"MIDI Key\" --channel 1 " + out, "on channel 1");
    fails(mid + " --track 3 --class 7 " + out, "has no track 3 (its tracks are 1 to 2)");
    fails(mid + " --track 0 --class 7 " + out, "has no track 0");
    fails(mid + " --track 1 --class Sustain " + out, "unknown message class");
    fails(dir.file("none.mid") + " --track 1 --class 7 " + out, "File not found: " + dir.file("none.mid"));
    fails(out + " --track 1 --class 7 " + dir.file("y.mfx"), "File not found: ");
    std::ofstream(dir.file("text.mid")) << "not a MIDI file";
    fails(dir.file("text.mid") + " --track 1 --class 7 " + out, "Cound Not Open " + dir.file("text.mid"));
    fails(mid + " --track 1 --class \"MIDI Key\" " + dir.file("no/where.mfx"), "Could not save: " + dir.file("no/where.mfx"));
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_NE(mfx(mid + " --track 1 --class 7 --channel 17 " + out).status, 0);
}

TEST(MfxCommand, AListTranslatedFromAFilePlaysInASavedPatchLockedToItsMaster) {
    ScratchDir dir;
    const std::string mid = song(dir);
    ASSERT_EQ(mfx(mid + " --track 2 --class \"MIDI Key\" --channel 4 " + dir.file("keys.mfx")).status, 0);
    ASSERT_EQ(mfx(mid + " --track 2 --class velocity " + dir.file("cc.mfx")).status, 0);

    {
        SessionHarness h;
        auto& file = static_cast<MIDIFile&>(h.add("MIDIFile"));
        auto& slave = static_cast<MIDIFileSlave&>(h.add("MIDIFileSlave"));
        std::string error, reason;
        ASSERT_TRUE(file.loadList(dir.file("keys.mfx"), error, reason)) << error;
        ASSERT_TRUE(slave.loadList(dir.file("cc.mfx"), error, reason)) << error;
        file.setLoop(true);
        slave.setMaster(file.Index);
        h.session.engine.StoreAllPatches();
        ASSERT_EQ(h.save(dir.file("play.qmp")), "");
    }
    // Keys 40 and 41 at steps 6 and 36, their velocities 70 and 71 in the slave. The run's
    // reset shows the first values; at the end the list loops back to step 6 at once.
    const auto [status, out] = runCli("run " + dir.file("play.qmp") + " --run --ticks 80 --trace 1MIDIFile-,1MIDISlave-");
    ASSERT_EQ(status, 0) << out;
    std::string expected = "tick,1MIDIFile-,1MIDISlave-\n";
    for (int t = 1; t <= 80; ++t) expected += std::to_string(t) + (t == 38 || t == 69 ? ",41,71\n" : ",40,70\n");
    EXPECT_EQ(out, expected);
}
