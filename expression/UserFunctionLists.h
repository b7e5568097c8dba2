#pragma once
// The editing commands of the user function lists, without a window: what the editor's
// buttons do to the lists and what they say. A command that needs the user's word first
// returns the question; the caller asks it and then calls the command with `confirmed`.

#include <string>
#include <string_view>
#include <vector>

#include "expression/UserFunctionFile.h"

namespace quillmer {

struct ListOutcome {
    bool done = false;
    std::string question;  // ask this, then repeat with confirmed = true
    std::string message;   // a refusal, to show
};

// The formula list as shown: number, ". ", the line.
std::string shownFormula(int n, std::string_view line);

ListOutcome pasteFormula(UserFunctions& lists, int row, std::string_view title, std::string_view body, bool confirmed);
ListOutcome eraseFormula(UserFunctions& lists, int row, bool confirmed);
// Shifts rows row.. down by one; the last would be lost.
ListOutcome insertFormula(UserFunctions& lists, int row, bool confirmed);
// Rows after `row` move up; the last becomes empty.
ListOutcome deleteFormula(UserFunctions& lists, int row, bool confirmed);
ListOutcome addVariable(UserFunctions& lists, std::string_view name, std::string_view value);
ListOutcome addFunction(UserFunctions& lists, std::string_view prototype, std::string_view body);

// Appends the chosen variables and functions of `from`, and puts its chosen formulas at
// their own numbers. An entry whose name is already there replaces it.
void importEntries(UserFunctions& into, const UserFunctions& from, const std::vector<int>& variables,
                   const std::vector<int>& functions, const std::vector<int>& formulas);

// The rows of a list whose text holds `needle`, ignoring case.
std::vector<int> findRows(const std::vector<std::string>& rows, std::string_view needle);

// The editor's test: the text (several lines become one sequence) run as module 1027 with
// formula `row` and every input 0. The result's wording, or the error's.
struct TestOutcome {
    bool ok = false;
    std::string result;
    size_t errorAt = std::string::npos;  // in the tested text
};
TestOutcome testFormula(FormulaRuntime& runtime, std::string_view text, int row);

}  // namespace quillmer
