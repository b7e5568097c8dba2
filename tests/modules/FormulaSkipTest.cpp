// A module skips a pure formula while its context stays, and runs everything else each time:
// what it outputs over many ticks must be what running every time gives.

#include <gtest/gtest.h>

#include "FormulaHarness.h"

namespace quillmer::testing {
namespace {

int calls = 0;
double counted(const expr::Args& a) {
    ++calls;
    return a[1];
}

TEST(FormulaSkip, APureFormulaRunsOnlyWhenItsContextChanges) {
    FormulaHarness h;
    ASSERT_TRUE(h.runtime->calc().defineFunction("Seen(1)", counted));
    h.runtime->calc().markPure("Seen");
    h.formula(1, "out(Seen(in1 + in2))");
    FormulaModule& m = h.add("UCalc4", 1);
    h.set(m, 0, 10);
    calls = 0;
    h.ticks(10);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(h.out(m), 10);
    h.set(m, 1, 5);
    h.ticks(10);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(h.out(m), 15);
    h.formula(1, "out(Seen(in1 - in2))");
    h.ticks(1);
    EXPECT_EQ(h.out(m), 5) << "a replaced formula runs at the next tick";
    m.chooseFormula(2);
    h.formula(2, "out(Seen(in1) + 1)");
    h.ticks(1);
    EXPECT_EQ(h.out(m), 11) << "another formula runs";
}

TEST(FormulaSkip, ImpureFormulasRunEveryTickOnTheSameInputs) {
    FormulaHarness h;
    h.formula(1, "fnEval(V0.(V0+1), out(V0))");
    h.formula(2, "out(in1 + A)");
    FormulaModule& counter = h.add("UCalc4", 1);
    FormulaModule& shared = h.add("UCalc4", 2);
    h.set(shared, 0, 3);
    h.ticks(5);
    EXPECT_EQ(h.out(counter), 5);
    EXPECT_EQ(h.out(shared), 3);
    h.runtime->calc().setVariable(h.runtime->letterHandle('A'), 4);
    h.ticks(1);
    EXPECT_EQ(h.out(shared), 7) << "a shared variable changed under the same inputs";
}

TEST(FormulaSkip, InputsAShapeDoesntFillStillCount) {
    // A four-input shape leaves In5.. as the module before it left them.
    FormulaHarness h;
    h.formula(1, "out(In5)");
    FormulaModule& m = h.add("UCalc4", 1);
    h.runtime->EvalIn[5] = 40;
    h.ticks(1);
    EXPECT_EQ(h.out(m), 40);
    h.runtime->EvalIn[5] = 41;
    h.ticks(1);
    EXPECT_EQ(h.out(m), 41);
}

TEST(FormulaSkip, GotoChainsAndSnapshotsStillMoveWithConstantInputs) {
    FormulaHarness h;
    h.formula(1, "fnEval(out(1), GOTO(2))");
    h.formula(2, "fnEval(out(2), GOTO(1))");
    FormulaModule& m = h.add("UCalc4", 1);
    std::string seen;
    for (int i = 0; i < 6; ++i) {
        h.ticks(1);
        seen += std::to_string(h.out(m));
    }
    EXPECT_EQ(seen, "121212") << "each formula of the chain runs in turn";
}

}  // namespace
}  // namespace quillmer::testing
