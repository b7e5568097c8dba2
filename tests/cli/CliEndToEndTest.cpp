// quillmer-cli driven as a user would: the shipped demo played offline and recorded, the
// notes read back from the MIDI file; info, convert and failures.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>

#include "../shell/SessionHarness.h"
#include "tests/cli/CliRunner.h"
#include "examples/DemoPatch.h"
#include "modules/processors/Memory.h"
#include "modules/processors/Sums.h"
#include "platform/StandardMidiFile.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

const std::string kDemo = std::string(QUILLMER_SOURCE_DIR) + "/examples/demo.qmp";

}  // namespace

TEST(Cli, TheDemoPlaysAndItsRecordedNotesReadBack) {
    ScratchDir dir;
    const std::string mid = dir.file("demo.mid");
    const CliResult r = runCli("run " + kDemo + " --bars 4 --record " + mid);
    ASSERT_EQ(r.status, 0) << r.out;
    const auto file = readMidiFile(mid);
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->format, 1);
    EXPECT_EQ(file->division, 480);
    ASSERT_GE(file->tracks.size(), 2u);
    // The tempo track: 60000000 / 112 microseconds a quarter, 4/4, C major.
    const auto& meta = file->tracks[0];
    ASSERT_GE(meta.size(), 3u);
    EXPECT_EQ(meta[0].bytes, (std::vector<uint8_t>{0xFF, 0x51, 0x03, 0x08, 0x2C, 0xA2}));
    EXPECT_EQ(meta[1].bytes, (std::vector<uint8_t>{0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08}));

    // Notes by channel, with their times in file ticks (480 a quarter).
    std::map<int, std::vector<std::pair<int, uint32_t>>> noteOns;
    for (const auto& track : file->tracks)
        for (const MidiFileEvent& e : track)
            if (e.bytes.size() == 3 && (e.bytes[0] & 0xF0) == 0x90 && e.bytes[2] > 0)
                noteOns[e.bytes[0] & 15].emplace_back(e.bytes[1], e.absolute);
    // Kicks on the first and third beat, snares on the second and fourth, on channel 10.
    std::vector<uint32_t> kicks, snares;
    for (const auto& [note, at] : noteOns[9]) {
        if (note == 36) kicks.push_back(at);
        if (note == 38) snares.push_back(at);
    }
    ASSERT_GE(kicks.size(), 6u);
    for (size_t i = 1; i < kicks.size(); ++i) EXPECT_EQ(kicks[i] - kicks[i - 1], 960u);
    ASSERT_GE(snares.size(), 6u);
    EXPECT_EQ(snares[0] - kicks[0], 480u);
    // The bass walks A, A, E, E, F, F, D, E in quarters, two octaves up.
    ASSERT_GE(noteOns[1].size(), 8u);
    std::vector<int> bass;
    for (size_t i = 0; i < 8; ++i) bass.push_back(noteOns[1][i].first);
    EXPECT_EQ(bass, (std::vector<int>{45, 45, 52, 52, 53, 53, 50, 52}));
    // The verse's melody, eighths in A minor pentatonic.
    ASSERT_GE(noteOns[0].size(), 16u);
    EXPECT_EQ(noteOns[0][0].first, 57);
    EXPECT_EQ(noteOns[0][1].second - noteOns[0][0].second, 240u);
}

TEST(Cli, TraceInfoAndConvert) {
    ScratchDir dir;
    CliResult r = runCli("run " + kDemo + " --ticks 3 --trace \"~ Turbo,1Stepper-\"");
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(r.out, "tick,~ Turbo,1Stepper-\n1,1,0\n2,2,0\n3,3,0\n");

    r = runCli("info " + kDemo + " --json");
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_NE(r.out.find("\"tempo\": 112"), std::string::npos);
    EXPECT_NE(r.out.find("\"003 Chorus\""), std::string::npos);
    EXPECT_NE(r.out.find("\"name\": \"1Step16-\""), std::string::npos);

    // Saved by the same user, as the demo was: only the modifier's name could differ.
    ::setenv("USER", "Quillmer", 1);
    r = runCli("convert " + kDemo + " " + dir.file("again.qmp"));
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(readBytes(dir.file("again.qmp")), readBytes(kDemo)) << "nothing changes on the way through";
}

TEST(Cli, FailuresAreOneLineAndANonZeroStatus) {
    ScratchDir dir;
    CliResult r = runCli("info " + dir.file("missing.qmp"));
    EXPECT_NE(r.status, 0);
    EXPECT_EQ(r.out, "quillmer-cli: Unable to Load: " + dir.file("missing.qmp") + " (No such file or directory)\n");
    r = runCli("run " + kDemo + " --ticks 2 --trace nothing-");
    EXPECT_NE(r.status, 0);
    EXPECT_EQ(r.out, "quillmer-cli: no output is named \"nothing-\"\n");
    r = runCli("run " + kDemo);
    EXPECT_NE(r.status, 0);
    EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 1);
}

// The tempo range in force: 1..254, or 1..1000 with --extended-tempo; what is played is
// the tempo asked for, as the recorded tempo track shows.
TEST(Cli, TempoIsCheckedAgainstTheRangeInForce) {
    ScratchDir dir;
    CliResult r = runCli("run " + kDemo + " --ticks 2 --tempo 300");
    EXPECT_NE(r.status, 0);
    EXPECT_EQ(r.out, "quillmer-cli: --tempo 300 is outside 1..254; --extended-tempo allows up to 1000\n");
    r = runCli("run " + kDemo + " --ticks 2 --tempo 0 --extended-tempo");
    EXPECT_NE(r.status, 0);
    EXPECT_EQ(r.out, "quillmer-cli: --tempo 0 is outside 1..1000\n");
    r = runCli("run " + kDemo + " --ticks 2 --tempo 1001 --extended-tempo");
    EXPECT_NE(r.status, 0);

    const auto tempoOf = [&](const std::string& options) -> std::vector<uint8_t> {
        const std::string mid = dir.file("t.mid");
        const CliResult played = runCli("run " + kDemo + " --ticks 2 --run --seed 7 --record " + mid + " " + options);
        EXPECT_EQ(played.status, 0) << played.out;
        const auto file = readMidiFile(mid);
        if (!file || file->tracks.empty() || file->tracks[0].empty()) return {};
        return file->tracks[0][0].bytes;
    };
    EXPECT_EQ(tempoOf("--tempo 300 --extended-tempo"), (std::vector<uint8_t>{0xFF, 0x51, 0x03, 0x03, 0x0D, 0x40}));
    EXPECT_EQ(tempoOf("--tempo 254"), (std::vector<uint8_t>{0xFF, 0x51, 0x03, 0x03, 0x9A, 0xBC})) << "236220 us";
}

TEST(DemoPatch, TheShippedFileIsWhatItsGeneratorMakes) {
    ScratchDir dir;
    SessionHarness h;
    std::string error;
    {
        auto held = h.session.engine.lock();
        ASSERT_TRUE(writeDemoPatch(h.session, dir.file("demo.qmp"), error)) << error;
    }
    EXPECT_EQ(readBytes(dir.file("demo.qmp")), readBytes(kDemo))
        << "run `cmake --build build --target demo_patch` after changing the demo or the format";
}

TEST(Cli, TypesListsTheWholeCatalogueAndWhatRuns) {
    const CliResult json = runCli("types --json");
    ASSERT_EQ(json.status, 0) << json.out;
    EXPECT_EQ(static_cast<size_t>(std::count(json.out.begin(), json.out.end(), '{')), allTypes().size());
    EXPECT_NE(json.out.find(R"({"type": "Div", "id": )"), std::string::npos);
    EXPECT_NE(json.out.find(R"("group": "Math", "caption": "Divide", "built": true, "inputs": ["Numerator", "Divisor"]})"),
              std::string::npos)
        << json.out.substr(0, 400);
    const CliResult text = runCli("types");
    ASSERT_EQ(text.status, 0);
    size_t built = 0;
    for (const TypeInfo& info : allTypes()) built += builtTypes().isBuilt(info.id) ? 1 : 0;
    EXPECT_NE(text.out.find(std::to_string(built) + " of " + std::to_string(allTypes().size()) + " types run."),
              std::string::npos);
}

TEST(Cli, ProcessorsRunFromAFile) {
    ScratchDir dir;
    {
        SessionHarness h;
        auto& delay = static_cast<Delay&>(h.add("Delay"));
        Module& add = h.add("Add2");
        auto& minus = static_cast<Minus&>(h.add("Minus"));
        auto& carry = static_cast<Carry&>(h.add("Carry"));
        h.connect(delay, 0, "~ Turbo");
        h.connect(delay, 1, "~   2");
        delay.setTurbo(true);
        h.connect(add, 0, "~ Turbo");
        h.connect(add, 1, "~ 124");
        h.connect(minus, 0, "~ Turbo");
        h.connect(minus, 1, "~   3");
        carry.chooseMaster(minus.Index);
        ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    }
    const CliResult r = runCli("run " + dir.file("p.qmp") + " --ticks 5 --trace \"~ Turbo,1Delay-,1Add2-,1Minus-,1Carry-\"");
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(r.out,
              "tick,~ Turbo,1Delay-,1Add2-,1Minus-,1Carry-\n"
              "1,1,0,124,0,3\n"  // modules read the Turbo count of the tick before
              "2,2,0,125,0,2\n"
              "3,3,0,126,0,1\n"
              "4,4,1,127,0,0\n"
              "5,5,2,127,1,0\n");
}

// A folder named as a patch or as the WAV file, a WAV file that can't be written whole,
// counts out of range.
TEST(Cli, AFolderIsNeitherReadAsAPatchNorWrittenAsAWavFile) {
    ScratchDir dir;
    std::filesystem::create_directory(dir.path / "folder");
    CliResult r = runCli("info " + dir.file("folder"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: Unable to Load: " + dir.file("folder") + " (it is a folder, not a file)\n");
    r = runCli("run " + kDemo + " --ticks 2 --wav " + dir.file("folder"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: Unable to save " + dir.file("folder") + ": it is a folder, not a file\n");
    EXPECT_TRUE(std::filesystem::is_directory(dir.path / "folder"));
}

TEST(Cli, AWavFileThatCannotBeWrittenWholeFailsAndTheEarlierFileStays) {
    ScratchDir dir;
    const std::string wav = dir.file("out.wav");
    writeBytes(wav, {'e', 'a', 'r', 'l', 'i', 'e', 'r'});
    // Files of this process may grow to 64 blocks: the render can't, as on a full disk.
    const std::string limited = "sh -c \"trap '' XFSZ; ulimit -f 64; exec " + std::string(QUILLMER_CLI) + " run " + kDemo +
                                " --bars 2 --wav " + wav + "\" 2>&1";
    FILE* pipe = ::popen(limited.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string out;
    std::array<char, 4096> buffer{};
    while (size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe)) out.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    ASSERT_TRUE(WIFEXITED(status)) << out;
    EXPECT_EQ(WEXITSTATUS(status), 1) << out;
    EXPECT_EQ(out, "quillmer-cli: Unable to save " + wav + ": File too large\n");
    EXPECT_EQ(readBytes(wav), (std::vector<uint8_t>{'e', 'a', 'r', 'l', 'i', 'e', 'r'})) << "the earlier file stays";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), {}), 1) << "no temporary left behind";

    const CliResult r = runCli("run " + kDemo + " --bars 1 --wav " + wav);
    ASSERT_EQ(r.status, 0) << r.out;
    const auto rendered = readBytes(wav);
    ASSERT_GT(rendered.size(), 44u);
    EXPECT_EQ(std::string(rendered.begin(), rendered.begin() + 4), "RIFF");
    // One bar at the demo's tempo and the synth's release tail, from the first tick on.
    const double seconds = static_cast<double>(rendered.size() - 44) / (44100.0 * 4);
    EXPECT_NEAR(seconds, 4 * 60.0 / 112 + 1.5, 0.1);
}

TEST(Cli, CountsOutOfRangeAreRefusedPlainly) {
    CliResult r = runCli("run " + kDemo + " --bars 192153584101141163");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: --bars takes a whole number from 1 to 10416666, not \"192153584101141163\"\n");
    r = runCli("run " + kDemo + " --ticks 0");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: --ticks takes a whole number from 1 to 1000000000, not \"0\"\n");
    r = runCli("run " + kDemo + " --ticks 12x");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: --ticks takes a whole number from 1 to 1000000000, not \"12x\"\n");
    r = runCli("run " + kDemo + " --bars 10416667");
    EXPECT_EQ(r.status, 1);
    r = runCli("run " + kDemo + " --ticks 3");
    EXPECT_EQ(r.status, 0) << r.out;
}
