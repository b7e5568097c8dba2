// The editor's list commands, imports and test line, without a window.

#include <gtest/gtest.h>

#include <vector>

#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionLists.h"

namespace quillmer {
namespace {

double testNumber(FormulaRuntime& runtime, const char* text) {
    const expr::Calc::Result r = runtime.calc().eval(text);
    return r.value;
}

UserFunctions rows(std::initializer_list<std::pair<int, const char*>> entries) {
    UserFunctions u;
    for (const auto& [n, line] : entries) u.expressions[static_cast<size_t>(n)] = line;
    return u;
}

TEST(FormulaListCommands, PasteNeedsNameAndBodyAndAsksBeforeReplacing) {
    UserFunctions u = rows({{3, "old = out(1)"}});
    EXPECT_EQ(pasteFormula(u, 2, "", "out(2)", false).message, "Missing Formula name.");
    EXPECT_EQ(pasteFormula(u, 2, "two", " ", false).message, "Missing Formula body.");
    EXPECT_TRUE(pasteFormula(u, 2, "two", "out(2)", false).done) << "an empty row needs no question";
    EXPECT_EQ(u.expressions[2], "two = out(2)");
    const ListOutcome asked = pasteFormula(u, 3, "new", "out(3)", false);
    EXPECT_EQ(asked.question, "This will Replace current Expression.  Continue?");
    EXPECT_EQ(u.expressions[3], "old = out(1)") << "nothing before the answer";
    EXPECT_TRUE(pasteFormula(u, 3, "new", "out(3)", true).done);
    EXPECT_EQ(u.expressions[3], "new = out(3)");
}

TEST(FormulaListCommands, InsertAndDeleteShiftTheRowsAndGuardTheLast) {
    UserFunctions u = rows({{0, "a"}, {1, "b"}, {2, "c"}});
    EXPECT_TRUE(insertFormula(u, 1, false).done);
    EXPECT_EQ(u.expressions[1], "");
    EXPECT_EQ(u.expressions[2], "b");
    EXPECT_EQ(u.expressions[3], "c");
    EXPECT_EQ(insertFormula(u, 127, false).message, "Use ERASE to remove this last (127) Expression");
    u.expressions[127] = "last";
    EXPECT_EQ(insertFormula(u, 0, false).question, "This will Delete Last (127) Expression.  Continue?");
    EXPECT_EQ(u.expressions[127], "last");

    EXPECT_EQ(deleteFormula(u, 2, false).question, "This will Delete current Expression.  Continue?");
    EXPECT_TRUE(deleteFormula(u, 2, true).done);
    EXPECT_EQ(u.expressions[2], "c");
    EXPECT_EQ(u.expressions[126], "last");
    EXPECT_EQ(u.expressions[127], "");
    EXPECT_EQ(eraseFormula(u, 0, false).question, "This will Erase current Expression.  Continue?");
    EXPECT_TRUE(eraseFormula(u, 0, true).done);
    EXPECT_EQ(u.expressions[0], "");
}

TEST(FormulaListCommands, VariablesAndFunctionsNeedBothPartsAndReplaceByName) {
    UserFunctions u;
    EXPECT_EQ(addVariable(u, "", "1").message, "No var name given.");
    EXPECT_EQ(addVariable(u, "Root", "").message, "No var value given.");
    EXPECT_EQ(addFunction(u, "", "x").message, "No fn name given.");
    EXPECT_EQ(addFunction(u, "F(x)", "").message, "No fn body given.");
    EXPECT_TRUE(addVariable(u, "Root", "60").done);
    EXPECT_TRUE(addVariable(u, "root", "62").done);
    EXPECT_EQ(u.variables, (std::vector<std::string>{"root=62"}));
    EXPECT_TRUE(addFunction(u, "F(x)", "x+1").done);
    EXPECT_TRUE(addFunction(u, "F(x, y)", "x+y").done);
    EXPECT_EQ(u.functions, (std::vector<std::string>{"F(x, y) = x+y"}));
}

TEST(FormulaImport, ChosenEntriesAppendAndFormulasKeepTheirNumbers) {
    UserFunctions into = rows({{0, "mine = out(0)"}, {9, "keep = out(9)"}});
    into.variables = {"A1=1"};
    UserFunctions from = rows({{0, "theirs = out(1)"}, {40, "forty = out(40)"}, {9, "not chosen"}});
    from.variables = {"B1=2", "A1=5"};
    from.functions = {"G(x) = x", "H(x) = 2*x"};
    importEntries(into, from, {0, 1}, {1}, {40, 0, 300});
    EXPECT_EQ(into.variables, (std::vector<std::string>{"A1=5", "B1=2"}));
    EXPECT_EQ(into.functions, (std::vector<std::string>{"H(x) = 2*x"}));
    EXPECT_EQ(into.expressions[40], "forty = out(40)");
    EXPECT_EQ(into.expressions[0], "theirs = out(1)");
    EXPECT_EQ(into.expressions[9], "keep = out(9)");
}

TEST(FormulaSearch, MatchesIgnoreCaseAndAnEmptyNeedleShowsAll) {
    const std::vector<std::string> list = {"0. Walk = out(1)", "1. EUCLID", "2. scale"};
    EXPECT_EQ(findRows(list, "euclid"), (std::vector<int>{1}));
    EXPECT_EQ(findRows(list, "  "), (std::vector<int>{0, 1, 2}));
    EXPECT_TRUE(findRows(list, "nothing").empty());
}

TEST(FormulaTestLine, ResultsInThreeBasesErrorsWithTheirPlaceAndSeveralLines) {
    FormulaRuntime runtime;
    runtime.start();
    TestOutcome ok = testFormula(runtime, "5+5", 0);
    EXPECT_TRUE(ok.ok);
    EXPECT_EQ(ok.result, "Hex: A   Bin: 1010  Decimal: 10");
    TestOutcome bad = testFormula(runtime, "  1 + Nope(2)", 0);
    EXPECT_FALSE(bad.ok);
    EXPECT_EQ(bad.result, "Error in Highlighted Expression: Undefined function: Nope");
    EXPECT_EQ(bad.errorAt, 6u);
    TestOutcome lines = testFormula(runtime, "A.(3)\nA*2", 0);
    EXPECT_EQ(lines.result, "Hex: 6   Bin: 110  Decimal: 6");
    TestOutcome me = testFormula(runtime, "out(Me + InC)", 12);
    EXPECT_EQ(me.result, "Hex: C   Bin: 1100  Decimal: 12") << "the list row is the formula number";
    EXPECT_EQ(runtime.mailbox(kEditorModuleId).flags, 0) << "the test leaves no mail behind";
}

TEST(FormulaTestLine, TextResultsNameTheirKind) {
    FormulaRuntime runtime;
    runtime.start();
    runtime.calc().defineVariable("Greeting$=hello");
    EXPECT_EQ(testFormula(runtime, "'abc'", 0).result, "Quoted String: abc");
    EXPECT_EQ(testFormula(runtime, "Greeting$", 0).result, "String Variable: hello");
    EXPECT_EQ(testFormula(runtime, "Greeting$ & ' ' & 'you'", 0).result, "String Token: hello you");
    const TestOutcome filled = testFormula(runtime, "LETStr(Greeting$, 'good', 'bye')", 0);
    EXPECT_TRUE(filled.ok);
    EXPECT_EQ(filled.result, "String Function: goodbye") << "a function that fills a text variable shows it";
    EXPECT_EQ(testFormula(runtime, "min(3, 4)", 0).result, "Hex: 3   Bin: 11  Decimal: 3")
        << "a number function stays a number";
    const TestOutcome selection = testFormula(runtime, "'a' & 'b'", 0);
    EXPECT_EQ(selection.result, "String Token: ab");
}

TEST(FormulaRandomTables, TheSeedChoosesTheTablesAtTheNextStart) {
    const auto draws = [](uint32_t seed, bool seedAfterStart = false) {
        FormulaRuntime runtime;
        if (!seedAfterStart) runtime.setSeed(seed);
        runtime.start();
        if (seedAfterStart) runtime.setSeed(seed);
        std::vector<double> values;
        for (int i = 0; i < 8; ++i) values.push_back(testNumber(runtime, "RRAN"));
        for (int i = 0; i < 8; ++i) values.push_back(testNumber(runtime, "RW"));
        return values;
    };
    EXPECT_EQ(draws(0), draws(0));
    EXPECT_EQ(draws(1234), draws(1234)) << "the same seed, the same tables";
    EXPECT_NE(draws(1234), draws(1235));
    EXPECT_NE(draws(1234), draws(0));
    EXPECT_EQ(draws(1234, true), draws(0)) << "a seed waits for the next start";
    for (double v : draws(77)) {
        EXPECT_GE(v, 0.0);
        EXPECT_LT(v, 1.0);
    }
}

}  // namespace
}  // namespace quillmer
