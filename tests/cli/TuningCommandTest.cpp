// `quillmer-cli tuning import` and `export`: a Scala scale into a patch's own .pbt or a .pbt
// file, back out again, and the refusals that name the file or the step.

#include <gtest/gtest.h>

#include <filesystem>

#include "../shell/SessionHarness.h"
#include "tables/TableFiles.h"
#include "tests/cli/CliRunner.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

const std::string kSource = QUILLMER_SOURCE_DIR;

ToneTables tonesIn(const std::string& path) {
    ToneTables t;
    std::string error;
    EXPECT_TRUE(LoadToneFile(path, t, error)) << error;
    return t;
}

}  // namespace

TEST(TuningCommand, ImportsIntoAPatchsOwnTablesAndExportsTheSameScale) {
    ScratchDir dir;
    const std::string patch = dir.file("song.qmp");
    std::filesystem::copy_file(kSource + "/examples/demo.qmp", patch);
    const CliResult in = runCli("tuning import " + kSource + "/data/scales/equal-31.scl --into " + patch + " --table 5");
    ASSERT_EQ(in.status, 0) << in.out;
    EXPECT_NE(in.out.find("31 steps"), std::string::npos) << in.out;
    const ToneTables own = tonesIn(dir.file("song.pbt"));
    const ToneTables shipped = tonesIn(kSource + "/data/default.pbt");
    EXPECT_EQ(own.rows.row(5)[127], 30);
    EXPECT_EQ(own.names.name(5), "31 equal divisions o");
    for (int t : {0, 4, 6, 127}) {
        const auto a = own.rows.row(t), b = shipped.rows.row(t);
        EXPECT_TRUE(std::equal(a.begin(), a.end(), b.begin())) << "table " << t << " stays the shipped one";
    }

    const CliResult out = runCli("tuning export " + patch + " " + dir.file("back.scl") + " --table 5");
    ASSERT_EQ(out.status, 0) << out.out;
    const CliResult again = runCli("tuning import " + dir.file("back.scl") + " --into " + dir.file("copy.pbt") + " --table 9");
    ASSERT_EQ(again.status, 0) << again.out;
    const ToneTables copy = tonesIn(dir.file("copy.pbt"));
    const auto a = own.rows.row(5);
    const auto b = copy.rows.row(9);
    EXPECT_TRUE(std::equal(a.begin(), a.end(), b.begin())) << "export and import give the table back";
}

TEST(TuningCommand, AKeyboardMapAndTheRefusals) {
    ScratchDir dir;
    const std::string pbt = dir.file("t.pbt");
    const CliResult mapped = runCli("tuning import " + kSource + "/data/scales/just-major.scl --kbm " + kSource +
                                    "/data/scales/white-keys.kbm --into " + pbt + " --table 0 --name Just");
    ASSERT_EQ(mapped.status, 0) << mapped.out;
    EXPECT_NE(mapped.out.find("unmapped"), std::string::npos) << "the black keys are told";
    EXPECT_EQ(tonesIn(pbt).names.name(0), "Just");

    // 65 steps: refused naming the step; the file stays as it was.
    std::string many = "too many\n65\n";
    for (int i = 1; i < 65; ++i) many += std::to_string(1200.0 * i / 65) + "\n";
    many += "2/1\n";
    writeBytes(dir.file("many.scl"), std::vector<uint8_t>(many.begin(), many.end()));
    const auto before = readBytes(pbt);
    const CliResult tooMany = runCli("tuning import " + dir.file("many.scl") + " --into " + pbt + " --table 1");
    EXPECT_NE(tooMany.status, 0);
    EXPECT_NE(tooMany.out.find("Step 64"), std::string::npos) << tooMany.out;
    EXPECT_EQ(readBytes(pbt), before);

    writeBytes(dir.file("short.pbt"), std::vector<uint8_t>(10, 0));
    const CliResult shortFile = runCli("tuning import " + kSource + "/data/scales/equal-19.scl --into " + dir.file("short.pbt") + " --table 1");
    EXPECT_NE(shortFile.status, 0);
    EXPECT_NE(shortFile.out.find("Unable to Load: " + dir.file("short.pbt")), std::string::npos) << shortFile.out;
    EXPECT_EQ(readBytes(dir.file("short.pbt")).size(), 10u);

    const CliResult noPatch = runCli("tuning import " + kSource + "/data/scales/equal-19.scl --into " + dir.file("none.qmp") + " --table 1");
    EXPECT_NE(noPatch.status, 0);
    EXPECT_FALSE(std::filesystem::exists(dir.file("none.pbt")));
    EXPECT_NE(runCli("tuning import " + kSource + "/data/scales/equal-19.scl --into " + pbt + " --table 128").status, 0);
}
