// `quillmer-cli run` on a patch with a broken .ufn beside it: the patch runs on the default
// formulas and stderr names the file and the line.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/cli/CliRunner.h"

namespace {

TEST(CliFormulaSideFile, ABrokenUfnIsToldWithItsLineAndThePatchStillRuns) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "quillmer-cli-ufn-test";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const std::filesystem::path patch = dir / "song.qmp";
    std::filesystem::copy_file(QUILLMER_SOURCE_DIR "/examples/demo.qmp", patch);
    {
        std::ofstream ufn(dir / "song.ufn", std::ios::binary);
        ufn << "2\n0\n0\nLow=1\nno equals sign\n";
    }
    const quillmer::testing::CliResult r = quillmer::testing::runCli("run '" + patch.string() + "' --ticks 2");
    EXPECT_EQ(r.status, 0) << r.out;
    EXPECT_NE(r.out.find((dir / "song.ufn").string() + ": line 5"), std::string::npos) << r.out;

    std::filesystem::remove(dir / "song.ufn");
    const quillmer::testing::CliResult clean = quillmer::testing::runCli("run '" + patch.string() + "' --ticks 2");
    EXPECT_EQ(clean.out.find(".ufn"), std::string::npos) << clean.out;
    std::filesystem::remove_all(dir);
}

}  // namespace
