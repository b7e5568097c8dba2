// quillmer-cli on the generators: `bio import` on real GenBank records and on broken input,
// and a seeded run of random modules that repeats exactly, trace and MIDI file alike.

#include <gtest/gtest.h>

#include "../shell/SessionHarness.h"
#include "modules/generators/Fractals.h"
#include "modules/midi/NoteOutputs.h"
#include "shell/BioFile.h"
#include "tests/cli/CliRunner.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
const std::string kRecords = std::string(QUILLMER_SOURCE_DIR) + "/tests/data/bio/globin-fau.gb";
const std::string kDefaultSources = std::string(QUILLMER_SOURCE_DIR) + "/data/bio/default-sources.gb";
const std::string kDefaultSet = std::string(QUILLMER_SOURCE_DIR) + "/data/default.bst";

// A clock driving Rand, Chaos and a Julia Fractal (whose orbit flips coins), Rand playing
// a MIDITone. Returns the names to trace.
std::string writeRandomPatch(const std::string& path) {
    SessionHarness h;
    auto held = h.session.engine.lock();
    Module& clock = h.add("Clock");
    h.connect(clock, 0, "~  12");
    h.connect(clock, 1, "~  70");
    Module& rand = h.add("Rand");
    h.connect(rand, 0, clock.Name);
    h.connect(rand, 1, "~  40");
    h.connect(rand, 2, "~  90");
    Module& urand = h.add("URand");
    h.connect(urand, 0, clock.Name);
    h.connect(urand, 1, "~  12");
    auto& fractal = h.add("Fractal");
    static_cast<Fractal&>(fractal).chooseAlgorithm(6);
    h.connect(fractal, 0, clock.Name);
    h.connect(fractal, 3, "~ 127");
    auto& tone = static_cast<MIDITone&>(h.add("MIDITone"));
    tone.setChanPort(h.session.engine, 0);
    h.connect(tone, 0, clock.Name);
    h.connect(tone, 1, rand.Name);
    EXPECT_EQ(h.save(path), "");
    return rand.Name + "," + urand.Name + "," + fractal.Name;
}
}  // namespace

TEST(CliBio, ImportsGenBankRecordsIntoABstFile) {
    ScratchDir dir;
    const std::string out = dir.file("genes.bst");
    const CliResult r = runCli("bio import " + kRecords + " " + out);
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_NE(r.out.find("X65923 fau\t134 codons"), std::string::npos) << r.out;
    BioSet set;
    std::string error;
    ASSERT_TRUE(readBioFile(out, set, error)) << error;
    EXPECT_EQ(set.sequences[1].name, "X65923 fau");
}

TEST(CliBio, BrokenInputNamesTheRecordAndLineAndWritesNothing) {
    ScratchDir dir;
    const std::string in = dir.file("broken.gb");
    {
        std::ofstream f(in);
        f << "LOCUS       BROKEN 6 bp\nFEATURES             Location/Qualifiers\n     CDS             join(1..\nORIGIN\n        1 atggcc\n//\n";
    }
    const std::string out = dir.file("out.bst");
    CliResult r = runCli("bio import " + in + " " + out);
    EXPECT_NE(r.status, 0);
    EXPECT_NE(r.out.find("record BROKEN (line 1), line 3"), std::string::npos) << r.out;
    EXPECT_FALSE(std::filesystem::exists(out));
    r = runCli("bio import " + kRecords + " " + dir.file("out.txt"));
    EXPECT_NE(r.status, 0);
    EXPECT_NE(r.out.find("must be a .bst file"), std::string::npos) << r.out;
    r = runCli("bio import " + dir.path.string() + " " + out);
    EXPECT_NE(r.status, 0);
    EXPECT_NE(r.out.find(dir.path.string()), std::string::npos) << r.out;
}

TEST(CliBio, TheShippedDefaultSetIsWhatTheImporterMakesOfItsSources) {
    ScratchDir dir;
    const std::string out = dir.file("default.bst");
    const CliResult r = runCli("bio import " + kDefaultSources + " " + out);
    ASSERT_EQ(r.status, 0) << r.out;
    EXPECT_EQ(readBytes(out), readBytes(kDefaultSet));
}

TEST(CliSeed, ASeededRunRepeatsItsTraceAndItsMidiFile) {
    ScratchDir dir;
    const std::string patch = dir.file("random.qmp");
    const std::string names = writeRandomPatch(patch);
    auto run = [&](int seed, const std::string& mid) {
        const CliResult r = runCli("run " + patch + " --run --ticks 600 --seed " + std::to_string(seed) + " --trace " + names +
                                   " --record " + mid);
        EXPECT_EQ(r.status, 0) << r.out;
        return r.out;
    };
    const std::string a = run(31, dir.file("a.mid"));
    const std::string b = run(31, dir.file("b.mid"));
    const std::string c = run(32, dir.file("c.mid"));
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    EXPECT_GT(a.size(), 600u * 6);
    const auto midA = readBytes(dir.file("a.mid"));
    EXPECT_GT(midA.size(), 100u);
    EXPECT_EQ(midA, readBytes(dir.file("b.mid")));
    EXPECT_NE(midA, readBytes(dir.file("c.mid")));
}
