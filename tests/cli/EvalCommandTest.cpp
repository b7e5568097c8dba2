// `quillmer-cli eval`: the value and the mailbox on stdout, an error as one line and status 1.

#include <gtest/gtest.h>

#include <string>

#include "tests/cli/CliRunner.h"

using quillmer::testing::CliResult;
using quillmer::testing::runCli;

namespace {

CliResult eval(const std::string& arguments) { return runCli("eval " + arguments); }

}  // namespace

TEST(CliEval, ValuesMailboxAndErrors) {
    CliResult r = eval("'out(in1+in2*3)' --in 1,2");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "7\nOUT 7\n");
    r = eval("'Frac(-2.25) + LIM(300) + GOTO(9)'");
    EXPECT_EQ(r.out, "136.25\nGOTO 9\n");
    r = eval("\"'a' & 1.5\"");
    EXPECT_EQ(r.out, "a1.5\n");
    r = eval("'1/0'");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: eval: error 14: Division by 0\n");
    r = eval("'Ex(0) + (1'");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "quillmer-cli: eval: error 2: Mismatched parenthesis\n");
    r = eval("'Loop(1e12, 3)'");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.out.find("Evaluation stopped"), std::string::npos);
    EXPECT_NE(eval("'1' --in 200").status, 0);
}
