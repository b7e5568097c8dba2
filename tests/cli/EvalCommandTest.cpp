// `quillmer-cli eval`: the value and the mailbox on stdout, an error as one line and status 1.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace {

struct Outcome {
    int status = -1;
    std::string out;
};

Outcome eval(const std::string& arguments) {
    Outcome r;
    FILE* pipe = ::popen((std::string(QUILLMER_CLI) + " eval " + arguments + " 2>&1").c_str(), "r");
    if (!pipe) return r;
    std::array<char, 4096> buffer{};
    while (size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe)) r.out.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}

}  // namespace

TEST(CliEval, ValuesMailboxAndErrors) {
    Outcome r = eval("'out(in1+in2*3)' --in 1,2");
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
