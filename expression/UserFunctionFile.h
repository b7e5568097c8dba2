#pragma once
// User function files (.ufn): the user's variables, functions and the 128 shared formulas, as
// plain text, one entry a line. Three header lines give the counts of variables, functions
// and formulas; then the variable lines ("name=value"), the function lines
// ("name(args) = body") and the formula lines ("title = body") in number order. Text is
// Windows-1252 on disk and UTF-8 here.
//
// Compiling starts the runtime afresh and defines the lists into it, so that formula numbers
// keep their meaning for every module: an entry that fails leaves its formula at the default.

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "expression/FormulaRuntime.h"

namespace quillmer {

constexpr size_t kMaxUserFunctionFileBytes = 8u << 20;
constexpr size_t kMaxUserFunctionLine = 32768;

struct UserFunctions {
    std::vector<std::string> variables;
    std::vector<std::string> functions;
    // "title = body"; an empty line leaves the formula at the default.
    std::array<std::string, kFormulaCount> expressions;

    bool operator==(const UserFunctions&) const = default;
    // How many formula lines a file needs: up to the last one that isn't empty.
    int expressionCount() const;
};

// One formula line taken apart: the title (its documentation) and the body that runs.
struct FormulaLine {
    std::string title;
    std::string body;
};
FormulaLine splitFormulaLine(std::string_view line);
// "title = body", or the body alone for an empty title.
std::string joinFormulaLine(std::string_view title, std::string_view body);

// Reads the text of a file. False with `error` naming `source` and the line at fault; the
// lists are then left as they were. A file that ends before its counts do just ends there.
bool parseUserFunctions(std::string_view text, const std::string& source, UserFunctions& out, std::string& error);
std::string formatUserFunctions(const UserFunctions& lists);

// Only a regular file is read, at most kMaxUserFunctionFileBytes of it.
bool readUserFunctionFile(const std::string& path, UserFunctions& out, std::string& error);
// Atomic: the file that was there stays whole when anything fails.
bool writeUserFunctionFile(const std::string& path, const UserFunctions& lists, std::string& error);

// What compiling said about each entry: empty where it went well.
struct CompileReport {
    std::vector<std::string> variables;
    std::vector<std::string> functions;
    std::array<std::string, kFormulaCount> expressions;
    int errors = 0;
};
// Starts `runtime` afresh, then defines the variables, the functions and the formulas.
CompileReport compileUserFunctions(FormulaRuntime& runtime, const UserFunctions& lists);

// Where in `text` an error of `code` about `data` most likely lies (0-based), or npos.
size_t errorPosition(std::string_view text, int code, std::string_view data);

}  // namespace quillmer
