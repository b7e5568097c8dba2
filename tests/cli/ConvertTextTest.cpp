// `quillmer-cli convert` to and from the text form: the shipped patches survive the round
// trip byte for byte, a hand edit plays, and a broken text is refused with its place.

#include <gtest/gtest.h>

#include "../shell/SessionHarness.h"
#include "tests/cli/CliRunner.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

std::string demo() { return std::string(QUILLMER_SOURCE_DIR) + "/examples/demo.qmp"; }

std::string quoted(const std::string& path) { return "'" + path + "'"; }

TEST(ConvertText, TheDemoGoesToTextAndBackByteForByte) {
    ScratchDir dir;
    const CliResult toText = runCli("convert " + quoted(demo()) + " " + quoted(dir.file("demo.qmj")));
    ASSERT_EQ(toText.status, 0) << toText.out;
    const std::vector<uint8_t> text = readBytes(dir.file("demo.qmj"));
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.front(), '{');
    const CliResult back = runCli("convert " + quoted(dir.file("demo.qmj")) + " " + quoted(dir.file("back.qmp")));
    ASSERT_EQ(back.status, 0) << back.out;
    EXPECT_EQ(readBytes(dir.file("back.qmp")), readBytes(demo()));
    // The text form reads like the patch: `info` shows the same on both, but for the name.
    const auto afterName = [](const std::string& out) { return out.substr(out.find('\n')); };
    EXPECT_EQ(afterName(runCli("info " + quoted(dir.file("demo.qmj"))).out), afterName(runCli("info " + quoted(demo())).out));
}

TEST(ConvertText, AHandEditedTempoRunsAsEdited) {
    ScratchDir dir;
    ASSERT_EQ(runCli("convert " + quoted(demo()) + " " + quoted(dir.file("demo.qmj"))).status, 0);
    const std::vector<uint8_t> raw = readBytes(dir.file("demo.qmj"));
    std::string text(raw.begin(), raw.end());
    const size_t at = text.find("\"tempo\": ");
    ASSERT_NE(at, std::string::npos);
    const size_t end = text.find(',', at);
    text.replace(at, end - at, "\"tempo\": 77");
    writeBytes(dir.file("edited.qmj"), {text.begin(), text.end()});
    const CliResult info = runCli("info " + quoted(dir.file("edited.qmj")) + " --json");
    ASSERT_EQ(info.status, 0) << info.out;
    EXPECT_NE(info.out.find("\"tempo\": 77"), std::string::npos) << info.out.substr(0, 400);
}

TEST(ConvertText, ABrokenTextIsRefusedWithItsLineAndColumnAndNothingIsWritten) {
    ScratchDir dir;
    const std::string broken = "{\n  \"format\": \"Quillmer patch\",\n  \"header\": {\"tempo\": }\n}\n";
    writeBytes(dir.file("broken.qmj"), {broken.begin(), broken.end()});
    const CliResult r = runCli("convert " + quoted(dir.file("broken.qmj")) + " " + quoted(dir.file("out.qmp")));
    EXPECT_NE(r.status, 0);
    EXPECT_NE(r.out.find("Unable to Load: " + dir.file("broken.qmj")), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("line 3, column 23"), std::string::npos) << r.out;
    EXPECT_FALSE(std::filesystem::exists(dir.file("out.qmp")));
    // A folder named like a patch text is refused naming it.
    std::filesystem::create_directory(dir.file("folder.qmj"));
    const CliResult folder = runCli("convert " + quoted(dir.file("folder.qmj")) + " " + quoted(dir.file("out.qmp")));
    EXPECT_NE(folder.status, 0);
    EXPECT_NE(folder.out.find(dir.file("folder.qmj")), std::string::npos) << folder.out;
}

}  // namespace
