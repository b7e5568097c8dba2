// Which formulas are pure: the ones a module may skip while its context stays the same.

#include <gtest/gtest.h>

#include "expression/FormulaRuntime.h"

namespace quillmer {
namespace {

bool pure(FormulaRuntime& runtime, const char* text) {
    EXPECT_EQ(runtime.setFormula(5, text), 0) << text;
    return runtime.isPure(5);
}

TEST(FormulaPurity, ContextMathAndMailAreImpureOnesAreNamed) {
    FormulaRuntime runtime;
    runtime.start();
    EXPECT_TRUE(runtime.isPure(0)) << "the default formula";
    EXPECT_TRUE(pure(runtime, "out(LIM(in1*2) + min(in2, InC))")) << "a body function followed";
    EXPECT_TRUE(pure(runtime, "fnEval(ToolTip('a', 'b'), LED(in1), nLED(in2), GOTO(Me), out(mID))"));
    EXPECT_TRUE(pure(runtime, "out(in16 + 1 + RBIT(in1, 2))"));
    EXPECT_FALSE(pure(runtime, "out(RND()*127)"));
    EXPECT_FALSE(pure(runtime, "out(RAN*127)")) << "through an alias";
    EXPECT_FALSE(pure(runtime, "out(in1 + A)")) << "a shared variable";
    EXPECT_FALSE(pure(runtime, "out(in1 + Pi)")) << "any variable";
    EXPECT_FALSE(pure(runtime, "fnEval(V0.(V0+1), out(V0))"));
    EXPECT_FALSE(pure(runtime, "out(Prev + 1)")) << "reads its own last mail";
    EXPECT_FALSE(pure(runtime, "out(sin(in1))")) << "follows the angle mode";
    EXPECT_FALSE(pure(runtime, "out(Ex(3))")) << "runs another formula";
    EXPECT_FALSE(pure(runtime, "out(UFOMouse(0, 2))"));
}

TEST(FormulaPurity, RedefiningAFunctionIsSeenAndRecursionEnds) {
    FormulaRuntime runtime;
    runtime.start();
    ASSERT_TRUE(runtime.calc().defineFunction("Twice(x)=2*x"));
    EXPECT_TRUE(pure(runtime, "out(Twice(in1))"));
    ASSERT_TRUE(runtime.calc().defineFunction("Twice(x)=2*x*RND()"));
    EXPECT_FALSE(runtime.isPure(5)) << "the same formula, now calling a draw";
    ASSERT_TRUE(runtime.calc().defineFunction("Ping(x)=x"));
    ASSERT_TRUE(runtime.calc().defineFunction("Pong(x)=Ping(x)"));
    ASSERT_TRUE(runtime.calc().defineFunction("Ping(x)=Pong(x)"));
    EXPECT_FALSE(pure(runtime, "out(Ping(in1))")) << "a cycle of bodies";
    const uint64_t before = runtime.generation();
    ASSERT_EQ(runtime.setFormula(9, "out(1)"), 0);
    EXPECT_NE(runtime.generation(), before);
    FormulaRuntime other;
    other.start();
    EXPECT_NE(other.generation(), runtime.generation()) << "two runtimes never share a generation";
}

}  // namespace
}  // namespace quillmer
