#include "expression/UserFunctionLists.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace quillmer {

namespace {

std::string_view trim(std::string_view s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
    return s;
}

bool validRow(int row) { return row >= 0 && row < kFormulaCount; }
std::string& at(UserFunctions& lists, int row) { return lists.expressions[static_cast<size_t>(row)]; }

ListOutcome ask(std::string question) { return {false, std::move(question), {}}; }
ListOutcome refuse(std::string message) { return {false, {}, std::move(message)}; }
ListOutcome done() { return {true, {}, {}}; }

// The name an entry defines: the text before '(' or '=', lower case.
std::string definedName(std::string_view entry) {
    const size_t end = entry.find_first_of("(=");
    std::string name(trim(entry.substr(0, end)));
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name;
}

void addOrReplace(std::vector<std::string>& list, const std::string& entry) {
    const std::string name = definedName(entry);
    for (std::string& e : list)
        if (definedName(e) == name) {
            e = entry;
            return;
        }
    list.push_back(entry);
}

std::string binary(int64_t v) {
    if (v == 0) return "0";
    std::string s;
    auto u = static_cast<uint64_t>(v);
    while (u != 0) {
        s.insert(s.begin(), static_cast<char>('0' + (u & 1)));
        u >>= 1;
    }
    return s;
}

}  // namespace

std::string shownFormula(int n, std::string_view line) { return std::to_string(n) + ". " + std::string(line); }

ListOutcome pasteFormula(UserFunctions& lists, int row, std::string_view title, std::string_view body, bool confirmed) {
    if (!validRow(row)) return refuse("Nothing to copy.");
    if (trim(title).empty()) return refuse("Missing Formula name.");
    if (trim(body).empty()) return refuse("Missing Formula body.");
    if (!at(lists, row).empty() && !confirmed) return ask("This will Replace current Expression.  Continue?");
    at(lists, row) = joinFormulaLine(title, body);
    return done();
}

ListOutcome eraseFormula(UserFunctions& lists, int row, bool confirmed) {
    if (!validRow(row)) return refuse("Nothing to copy.");
    if (!confirmed) return ask("This will Erase current Expression.  Continue?");
    at(lists, row).clear();
    return done();
}

ListOutcome insertFormula(UserFunctions& lists, int row, bool confirmed) {
    if (!validRow(row)) return refuse("Nothing to copy.");
    const int last = kFormulaCount - 1;
    if (row == last) return refuse("Use ERASE to remove this last (" + std::to_string(last) + ") Expression");
    if (!at(lists, last).empty() && !confirmed)
        return ask("This will Delete Last (" + std::to_string(last) + ") Expression.  Continue?");
    for (int r = last; r > row; --r) at(lists, r) = std::move(at(lists, r - 1));
    at(lists, row).clear();
    return done();
}

ListOutcome deleteFormula(UserFunctions& lists, int row, bool confirmed) {
    if (!validRow(row)) return refuse("Nothing to copy.");
    if (!confirmed) return ask("This will Delete current Expression.  Continue?");
    for (int r = row; r < kFormulaCount - 1; ++r) at(lists, r) = std::move(at(lists, r + 1));
    at(lists, kFormulaCount - 1).clear();
    return done();
}

ListOutcome addVariable(UserFunctions& lists, std::string_view name, std::string_view value) {
    if (trim(name).empty()) return refuse("No var name given.");
    if (trim(value).empty()) return refuse("No var value given.");
    addOrReplace(lists.variables, std::string(trim(name)) + "=" + std::string(trim(value)));
    return done();
}

ListOutcome addFunction(UserFunctions& lists, std::string_view prototype, std::string_view body) {
    if (trim(prototype).empty()) return refuse("No fn name given.");
    if (trim(body).empty()) return refuse("No fn body given.");
    std::string proto(trim(prototype));
    if (proto.find('(') == std::string::npos) proto += "()";
    addOrReplace(lists.functions, proto + " = " + std::string(trim(body)));
    return done();
}

void importEntries(UserFunctions& into, const UserFunctions& from, const std::vector<int>& variables,
                   const std::vector<int>& functions, const std::vector<int>& formulas) {
    for (int i : variables)
        if (i >= 0 && static_cast<size_t>(i) < from.variables.size()) addOrReplace(into.variables, from.variables[static_cast<size_t>(i)]);
    for (int i : functions)
        if (i >= 0 && static_cast<size_t>(i) < from.functions.size()) addOrReplace(into.functions, from.functions[static_cast<size_t>(i)]);
    for (int n : formulas)
        if (validRow(n)) at(into, n) = from.expressions[static_cast<size_t>(n)];
}

std::vector<int> findRows(const std::vector<std::string>& rows, std::string_view needle) {
    std::vector<int> found;
    const auto lower = [](unsigned char c) { return static_cast<char>(std::tolower(c)); };
    std::string n(trim(needle));
    std::transform(n.begin(), n.end(), n.begin(), lower);
    for (size_t i = 0; i < rows.size(); ++i) {
        std::string r = rows[i];
        std::transform(r.begin(), r.end(), r.begin(), lower);
        if (n.empty() || r.find(n) != std::string::npos) found.push_back(static_cast<int>(i));
    }
    return found;
}

namespace {

const char* textResultLabel(expr::Calc::TextKind kind) {
    switch (kind) {
        case expr::Calc::TextKind::Literal: return "Quoted String: ";
        case expr::Calc::TextKind::Variable: return "String Variable: ";
        case expr::Calc::TextKind::Join: return "String Token: ";
        default: return "Numeric: ";
    }
}

// The text variable a line like "LETStr(S$, ...)" names and fills, or empty.
std::string textVariableFilled(const expr::Calc& calc, std::string_view line) {
    const size_t open = line.find('(');
    if (open == std::string_view::npos || line.back() != ')') return {};
    const std::string_view name = trim(line.substr(0, open));
    if (name.empty() || !calc.namesVariable(name)) return {};
    const size_t end = line.find_first_of(",)", open + 1);
    std::string variable(trim(line.substr(open + 1, end - open - 1)));
    if (!variable.empty() && variable.back() == '$') variable.pop_back();
    const int handle = calc.variableHandle(variable);
    return handle >= 0 && calc.variableIsText(handle) ? variable : std::string();
}

}  // namespace

TestOutcome testFormula(FormulaRuntime& runtime, std::string_view text, int row) {
    TestOutcome out;
    const std::string line = joinFormulaLine({}, text);
    runtime.EvalFormula = static_cast<uint8_t>(std::clamp(row, 0, kFormulaCount - 1));
    runtime.EvalModuleId = kEditorModuleId;
    runtime.EvalInC = 0;
    runtime.EvalIn = {};
    expr::Calc& calc = runtime.calc();
    const expr::Calc::Result r = calc.eval(line);
    runtime.clearFlags(kEditorModuleId);
    if (r.error != expr::kOk) {
        out.result = "Error in Highlighted Expression: " + r.message;
        // Only a single line maps back onto the text as typed.
        if (text.find('\n') == std::string_view::npos) {
            const size_t first = text.find_first_not_of(" \t");
            const size_t lead = first == std::string_view::npos ? 0 : first;
            const size_t at = errorPosition(line, r.error, calc.errorData());
            out.errorAt = at == std::string::npos ? at : at + lead;
        }
        calc.clearError();
        return out;
    }
    out.ok = true;
    if (r.isText) {
        out.result = textResultLabel(r.kind) + r.text;
        return out;
    }
    // A function that fills a text variable shows what the variable holds now.
    if (const std::string filled = textVariableFilled(calc, line); !filled.empty()) {
        out.result = "String Function: " + std::string(calc.variableText(calc.variableHandle(filled)));
        return out;
    }
    const double whole = std::trunc(r.value);
    const auto n = std::fabs(whole) < 9.0e18 ? static_cast<int64_t>(whole) : int64_t{0};
    char hex[32];
    std::snprintf(hex, sizeof hex, "%llX", static_cast<unsigned long long>(n));
    out.result = std::string("Hex: ") + hex + "   Bin: " + binary(n) + "  Decimal: " + expr::formatNumber(r.value);
    return out;
}

}  // namespace quillmer
