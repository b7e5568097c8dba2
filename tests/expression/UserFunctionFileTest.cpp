// User function files: reading, writing, refusing, compiling so that numbers keep meaning.

#include <filesystem>
#include <fstream>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionFile.h"

namespace quillmer {
namespace {

struct Scratch {
    Scratch() {
        std::random_device seed;
        path = std::filesystem::temp_directory_path() / ("quillmer-ufn-" + std::to_string(seed()));
        std::filesystem::create_directories(path);
    }
    ~Scratch() { std::filesystem::remove_all(path); }
    std::string file(const std::string& name) const { return (path / name).string(); }
    std::filesystem::path path;
};

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

UserFunctions sample() {
    UserFunctions u;
    u.variables = {"Root=60", "Name$=walk"};
    u.functions = {"Up(x) = x+1", "Twice(a,b=2) = a*b"};
    u.expressions[0] = "Sum = out(in1+in2)";
    u.expressions[5] = "Café walk = out(Up(Root))";
    u.expressions[127] = "out(127)";
    return u;
}

TEST(UserFunctionFile, WriteAndReadKeepEveryListAndNumber) {
    Scratch dir;
    const std::string path = dir.file("set.ufn");
    std::string error;
    ASSERT_TRUE(writeUserFunctionFile(path, sample(), error)) << error;
    const std::string text = readText(path);
    EXPECT_EQ(text.rfind("2\r\n2\r\n128\r\nRoot=60\r\n", 0), 0u) << text.substr(0, 40);
    EXPECT_NE(text.find("Caf\xE9 walk"), std::string::npos) << "Windows-1252 on disk";
    UserFunctions back;
    ASSERT_TRUE(readUserFunctionFile(path, back, error)) << error;
    EXPECT_EQ(back, sample());
}

TEST(UserFunctionFile, OnlyTheFormulasInUseAreWritten) {
    UserFunctions u;
    u.expressions[2] = "two = out(2)";
    const std::string text = formatUserFunctions(u);
    EXPECT_EQ(text, "0\r\n0\r\n3\r\n\r\n\r\ntwo = out(2)\r\n");
    UserFunctions back;
    std::string error;
    ASSERT_TRUE(parseUserFunctions(text, "t.ufn", back, error)) << error;
    EXPECT_EQ(back, u);
}

TEST(UserFunctionFile, AShortFileEndsTheReadAndLfLinesWork) {
    UserFunctions u;
    std::string error;
    ASSERT_TRUE(parseUserFunctions("1\n1\n4\nA1=3\nF(x)=x\nfirst = out(1)\n", "t.ufn", u, error)) << error;
    EXPECT_EQ(u.variables.size(), 1u);
    EXPECT_EQ(u.expressions[0], "first = out(1)");
    EXPECT_TRUE(u.expressions[1].empty());
    ASSERT_TRUE(parseUserFunctions("2\n", "t.ufn", u, error)) << "only a header line";
    EXPECT_TRUE(u.variables.empty());
}

TEST(UserFunctionFile, MalformedFilesAreRefusedNamingTheLineAndChangeNothing) {
    struct Case {
        const char* text;
        const char* says;
    };
    const Case cases[] = {
        {"", "line 0: the file is empty"},
        {"x\n0\n0\n", "line 1: the count of variables is not a number"},
        {"0\n-3\n0\n", "line 2: the count of user functions is not a number"},
        {"0\n0\n129\n", "line 3: more formulas than the 128"},
        {"0\n0\n5 5\n", "line 3:"},
        {"1\n0\n0\nnovalue\n", "line 4: a variable needs the form name=value"},
        {"0\n1\n0\nF = 3\n", "line 4: a user function needs the form"},
        {"0\n1\n0\nF(x) =\n", "line 4: a user function needs the form"},
        {"0\n0\n2\nout(1)\nout(\x01)\n", "line 5: the line holds characters"},
    };
    for (const Case& c : cases) {
        UserFunctions u = sample();
        std::string error;
        EXPECT_FALSE(parseUserFunctions(c.text, "bad.ufn", u, error)) << c.text;
        EXPECT_NE(error.find("bad.ufn"), std::string::npos) << error;
        EXPECT_NE(error.find(c.says), std::string::npos) << error;
        EXPECT_EQ(u, sample()) << "nothing changes";
    }
}

TEST(UserFunctionFile, FoldersMissingFilesAndHugeFilesAreRefusedByName) {
    Scratch dir;
    UserFunctions u;
    std::string error;
    EXPECT_FALSE(readUserFunctionFile(dir.path.string(), u, error));
    EXPECT_NE(error.find(dir.path.string()), std::string::npos);
    EXPECT_NE(error.find("folder"), std::string::npos) << error;
    EXPECT_FALSE(readUserFunctionFile(dir.file("none.ufn"), u, error));
    EXPECT_NE(error.find("none.ufn"), std::string::npos);
    {
        std::ofstream big(dir.file("big.ufn"), std::ios::binary);
        big << "0\n0\n1\n" << std::string(kMaxUserFunctionFileBytes, 'a');
    }
    EXPECT_FALSE(readUserFunctionFile(dir.file("big.ufn"), u, error));
    EXPECT_NE(error.find("too large"), std::string::npos) << error;
    EXPECT_FALSE(writeUserFunctionFile(dir.path.string(), sample(), error)) << "a folder is not replaced";
}

TEST(UserFunctionCompile, FunctionsCompileFirstErrorsStayPerLineAndNumbersKeepMeaning) {
    FormulaRuntime runtime;
    UserFunctions u;
    u.variables = {"Base=40", "bad name=1"};
    u.functions = {"Later(x) = x + Base"};
    u.expressions[3] = "uses a later function = Later(2)";
    u.expressions[4] = "broken = out((1)";
    u.expressions[6] = "Hits: one = Later(1)";
    const CompileReport report = compileUserFunctions(runtime, u);
    EXPECT_TRUE(report.functions[0].empty()) << report.functions[0];
    EXPECT_TRUE(report.expressions[3].empty()) << report.expressions[3];
    EXPECT_EQ(report.expressions[4], "Mismatched parenthesis");
    EXPECT_FALSE(report.variables[1].empty());
    EXPECT_EQ(report.errors, 2);
    EXPECT_EQ(runtime.evaluate(1, 3), 42);
    EXPECT_EQ(runtime.formula(3).doc, "uses a later function");
    EXPECT_EQ(runtime.formula(4).handle, runtime.defaultHandle()) << "a failed formula runs the default";
    EXPECT_EQ(runtime.formula(6).doc, "Hits: one");

    // Compiling again starts afresh: the old function is gone.
    UserFunctions v;
    v.expressions[3] = "Later(2)";
    const CompileReport again = compileUserFunctions(runtime, v);
    EXPECT_EQ(again.expressions[3], "Undefined function: Later");
    EXPECT_EQ(runtime.formula(3).handle, runtime.defaultHandle());
}

TEST(UserFunctionCompile, SeveralLinesBecomeOneSequence) {
    FormulaRuntime runtime;
    UserFunctions u;
    u.functions = {"Seq(x) = x+1\nx+2"};
    u.expressions[1] = "Seq(1)";
    EXPECT_EQ(compileUserFunctions(runtime, u).errors, 0);
    EXPECT_EQ(runtime.evaluate(1, 1), 3);
    EXPECT_NE(formatUserFunctions(u).find("Seq(x) = fnEval(x+1,x+2)\r\n"), std::string::npos);
}

TEST(UserFunctionCompile, ErrorPositionsPointAtTheFault) {
    EXPECT_EQ(errorPosition("out((1)", 2, ""), 3u);
    EXPECT_EQ(errorPosition("out(1))", 2, ""), 6u);
    EXPECT_EQ(errorPosition("out(in1 + Nope(2))", 11, "Nope"), 10u);
    EXPECT_EQ(errorPosition("nopex + nope", 3, "nope"), 8u) << "whole words only";
    EXPECT_EQ(errorPosition("TxtLabel('abc)", 8, ""), 9u);
    EXPECT_EQ(errorPosition("1/0", 14, ""), std::string_view::npos);
}

TEST(UserFunctionFile, TheShippedDefaultCompilesCleanAndItsFormulasPlay) {
    UserFunctions u;
    std::string error;
    ASSERT_TRUE(readUserFunctionFile(QUILLMER_SOURCE_DIR "/data/default.ufn", u, error)) << error;
    FormulaRuntime runtime;
    const CompileReport report = compileUserFunctions(runtime, u);
    for (int n = 0; n < kFormulaCount; ++n) EXPECT_TRUE(report.expressions[static_cast<size_t>(n)].empty()) << n;
    EXPECT_EQ(report.errors, 0);
    for (int n = 0; n <= 5; ++n) EXPECT_FALSE(runtime.formula(n).doc.empty()) << "formula " << n << " is documented";

    const auto run = [&](int formula, std::array<uint8_t, 4> ins) {
        for (size_t i = 0; i < 4; ++i) runtime.EvalIn[i + 1] = ins[i];
        const auto id = static_cast<uint16_t>(600 + formula);  // each formula a module of its own
        runtime.evaluate(id, formula);
        return static_cast<int>(runtime.mailbox(id).outValue);
    };
    // The walk stays in its bounds and moves by at most 2.
    int last = run(1, {40, 50, 0, 0});
    for (int i = 0; i < 300; ++i) {
        const int v = run(1, {40, 50, 0, 0});
        EXPECT_TRUE(v >= 40 && v <= 50) << v;
        EXPECT_LE(std::abs(v - last), 2);
        last = v;
    }
    // Euclid: 3 hits over 8 steps.
    std::string hits;
    for (int i = 0; i < 8; ++i) hits += run(2, {3, 8, 0, 0}) == 127 ? 'X' : '.';
    EXPECT_EQ(std::count(hits.begin(), hits.end(), 'X'), 3) << hits;
    // Quantiser: C major on root 0; F# goes down to F, E stays; minor on root 2.
    EXPECT_EQ(run(3, {66, 0, 0, 0}), 65);
    EXPECT_EQ(run(3, {64, 0, 0, 0}), 64);
    EXPECT_EQ(run(3, {66, 2, 1, 0}), 65) << "D minor has F";
    // Probability gate: 0 never opens, 127 always.
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(run(4, {0, 0, 0, 0}), 0);
        EXPECT_EQ(run(4, {127, 0, 0, 0}), 127);
    }
    // Call and response: 60 62 64 65, then answered a fifth up.
    std::vector<int> phrase;
    for (int note : {60, 62, 64, 65, 0, 0, 0, 0}) phrase.push_back(run(5, {static_cast<uint8_t>(note), 0, 0, 0}));
    EXPECT_EQ(phrase, (std::vector<int>{60, 62, 64, 65, 67, 69, 71, 72}));
}

}  // namespace
}  // namespace quillmer
