// The language on its own: operators, names, user functions, handles, errors and budgets.

#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <string>
#include <vector>

#include "expression/Calc.h"

using namespace quillmer::expr;

namespace {

double value(Calc& c, const std::string& text) {
    const Calc::Result r = c.eval(text);
    EXPECT_EQ(r.error, kOk) << text << ": " << r.message;
    return r.value;
}

int errorOf(Calc& c, const std::string& text) { return c.eval(text).error; }

std::vector<double> calls;
double record(const Args& a) {
    calls.push_back(a[1]);
    return a[1];
}

}  // namespace

TEST(CalcOperators, PrecedenceAndAssociativity) {
    Calc c;
    EXPECT_EQ(value(c, "1+2*3"), 7);
    EXPECT_EQ(value(c, "(1+2)*3"), 9);
    EXPECT_EQ(value(c, "10-4-3"), 3);        // left to right
    EXPECT_EQ(value(c, "64/4/2"), 8);
    EXPECT_EQ(value(c, "2^3^2"), 512);       // right to left
    EXPECT_EQ(value(c, "-2^2"), -4);         // the power binds tighter than the sign
    EXPECT_EQ(value(c, "2^-1"), 0.5);
    EXPECT_EQ(value(c, "7 Mod 4 * 2"), 7);   // Mod is looser than *
    EXPECT_EQ(value(c, "7 mod 4 + 1"), 4);   // and tighter than +
    EXPECT_EQ(value(c, "17 \\ 5 * 2"), 1);   // \ is looser than *: 17 \ 10
    EXPECT_EQ(value(c, "-7 \\ 2"), -3);      // whole division truncates
    EXPECT_EQ(value(c, "-7 Mod 3"), -1);     // the sign of the dividend
    EXPECT_EQ(value(c, "1+2=3"), 1);
    EXPECT_EQ(value(c, "1 < 2 And 3 > 4"), 0);
    EXPECT_EQ(value(c, "1 < 2 Or 3 > 4"), 1);
    EXPECT_EQ(value(c, "Not 1 = 2"), 1);     // Not is looser than a comparison
    EXPECT_EQ(value(c, "1 Xor 1"), 0);
    EXPECT_EQ(value(c, "2 <> 3"), 1);
    EXPECT_EQ(value(c, "3 != 3"), 0);
    EXPECT_EQ(value(c, "2 >= 2 && 1 <= 0 || 5"), 1);
    EXPECT_EQ(value(c, "5!"), 120);
    EXPECT_EQ(value(c, "&HFF + &O17 + &B101"), 255 + 15 + 5);
    EXPECT_EQ(value(c, ".5e1"), 5);
    EXPECT_EQ(value(c, "  ( ( 4 ) )  "), 4);
}

TEST(CalcOperators, OperandsRunLeftToRight) {
    Calc c;
    ASSERT_TRUE(c.defineFunction("rec(1)", record));
    calls.clear();
    value(c, "rec(1) - rec(2) * rec(3) ^ rec(4)");
    EXPECT_EQ(calls, (std::vector<double>{1, 2, 3, 4}));
    calls.clear();
    value(c, "max(rec(5), rec(6), rec(7)) And rec(0)");  // no short cut: both sides run
    EXPECT_EQ(calls, (std::vector<double>{5, 6, 7, 0}));
}

TEST(CalcOperators, ArithmeticErrorsHaveTheirCodesAndStopTheRun) {
    Calc c;
    ASSERT_TRUE(c.defineFunction("rec(1)", record));
    EXPECT_EQ(errorOf(c, "1/0"), kDivisionByZero);
    EXPECT_EQ(errorOf(c, "1\\0.5"), kIntegerDivisionByZero);
    EXPECT_EQ(errorOf(c, "1 mod 0"), kIntegerDivisionByZero);
    EXPECT_EQ(errorOf(c, "0^-1"), kExponent);
    EXPECT_EQ(errorOf(c, "(-8)^0.5"), kExponent);
    EXPECT_EQ(errorOf(c, "171!"), kFactorialOverflow);
    EXPECT_EQ(errorOf(c, "&H1G"), kBadHex);
    EXPECT_EQ(errorOf(c, "&O8"), kBadOctal);
    EXPECT_EQ(errorOf(c, "&B102"), kBadBinary);
    EXPECT_EQ(errorOf(c, "(1+2"), kParenthesis);
    EXPECT_EQ(errorOf(c, "1+2)"), kParenthesis);
    EXPECT_EQ(errorOf(c, "max('a)"), kQuotes);
    EXPECT_EQ(errorOf(c, "1+*2"), kInvalid);
    EXPECT_EQ(errorOf(c, ""), kInvalid);
    calls.clear();
    EXPECT_EQ(errorOf(c, "rec(1) + 1/0 + rec(2)"), kDivisionByZero);
    EXPECT_EQ(calls, (std::vector<double>{1}));  // nothing is called after the error
    const Calc::Result r = c.eval("nosuch + 1");
    EXPECT_EQ(r.error, kUndefinedVariable);
    EXPECT_EQ(r.message, "Undefined variable: nosuch");
    EXPECT_EQ(c.eval("nosuch(1)").message, "Undefined function: nosuch");
    EXPECT_EQ(c.eval("abs(1,2)").message, "Invalid number args for abs");
    EXPECT_EQ(c.eval("abs('x')").error, kArgType);
}

TEST(CalcBuiltIns, TrigonometryFollowsTheAngleModeAndReportsDomainErrors) {
    Calc c;
    c.defineVariable("Pi=3.14159265358979");
    EXPECT_NEAR(value(c, "sin(Pi/2)"), 1, 1e-12);
    c.setTrigMode(TrigMode::Degree);
    EXPECT_NEAR(value(c, "sin(90)"), 1, 1e-12);
    EXPECT_NEAR(value(c, "asin(1)"), 90, 1e-9);
    EXPECT_EQ(errorOf(c, "sec(90)"), kSec);
    c.setTrigMode(TrigMode::Grad);
    EXPECT_NEAR(value(c, "cos(200)"), -1, 1e-12);
    c.setTrigMode(TrigMode::Radian);
    const std::pair<const char*, int> domain[] = {
        {"sqr(-1)", kSqr},     {"log2(0)", kLog2},    {"log10(-1)", kLog10}, {"ln(0)", kLog},
        {"log(-2)", kLog},     {"asin(1.5)", kAsin},  {"acos(-2)", kAcos},   {"csc(0)", kCsc},
        {"cot(0)", kCot},      {"coth(0)", kCoth},    {"csch(0)", kCsch},    {"acosh(0.5)", kAcosh},
        {"atanh(1)", kAtanh},  {"acoth(0.5)", kAcoth}, {"asech(0)", kAsech}, {"acsch(0)", kAcsch},
    };
    for (const auto& [text, code] : domain) {
        const Calc::Result r = c.eval(text);
        EXPECT_EQ(r.error, code) << text;
        EXPECT_EQ(r.message, errorText(code, {})) << text;
        EXPECT_FALSE(r.message.empty());
    }
    EXPECT_NEAR(value(c, "acoth(2) + asech(0.5) + acsch(1)"),
                0.5 * std::log(3.0) + std::log(2 + std::sqrt(3.0)) + std::asinh(1.0), 1e-12);
    EXPECT_EQ(value(c, "min(3,1,2) + max(3,1,2) + int(-1.5) + abs(-2) + mod(7,3)"), 1 + 3 - 2 + 2 + 1);
}

TEST(CalcFunctions, BodiesCallBodiesAndRedefinitionKeepsHandles) {
    Calc c;
    ASSERT_TRUE(c.defineFunction("sq(x)=x*x"));
    ASSERT_TRUE(c.defineFunction("hyp(a,b)=sqr(sq(a)+sq(b))"));
    ASSERT_TRUE(c.defineFunction("Scaled(x, k=10)=x*k"));
    EXPECT_EQ(value(c, "hyp(3,4)"), 5);
    EXPECT_EQ(value(c, "SCALED(2) + scaled(2, 3)"), 26);  // names ignore case; defaults fill in
    const Handle h = c.parse("hyp(6,8) + sq(2)");
    ASSERT_NE(h, 0);
    EXPECT_EQ(c.evaluate(h), 14);
    ASSERT_TRUE(c.defineFunction("sq(x)=x*x*x"));  // the handle runs the new body
    EXPECT_EQ(c.evaluate(h), std::sqrt(216.0 + 512.0) + 8);
    ASSERT_TRUE(c.defineFunction("sq(x)=x", record));  // a body still wins over nothing
    ASSERT_TRUE(c.defineFunction("sq(1)", record));     // now native
    calls.clear();
    EXPECT_EQ(c.evaluate(h), std::sqrt(14.0) + 2);
    EXPECT_EQ(calls.size(), 3u);
    ASSERT_TRUE(c.defineFunction("sq(a,b)=a*b"));  // the arity changed under the handle
    EXPECT_EQ(c.evaluate(h), 0);
    EXPECT_EQ(c.error(), kArgCount);
    EXPECT_FALSE(c.defineFunction("bad(x)=x+"));
    EXPECT_EQ(c.error(), kInvalid);
    EXPECT_FALSE(c.isFunction("bad"));
}

TEST(CalcFunctions, TextParametersDefaultsAndJoins) {
    Calc c;
    static std::string seen;
    ASSERT_TRUE(c.defineFunction("say(n, t$='none', u$=\"x\")", [](const Args& a) {
        seen = std::string(a.text(2)) + "|" + std::string(a.text(3));
        return a[1];
    }));
    ASSERT_GE(c.defineVariable("Tab$=\t"), 0);
    EXPECT_EQ(value(c, "say(1)"), 1);
    EXPECT_EQ(seen, "none|x");
    value(c, "say(2, 'it''s', \"a\" & Tab$ & 3*2)");
    EXPECT_EQ(seen, "it's|a\t6");
    EXPECT_EQ(c.eval("say('a')").error, kArgType);
    EXPECT_EQ(c.eval("1 + Tab").error, kArgType);
    const Calc::Result t = c.eval("'ab' & Tab$ & 1.5");
    EXPECT_TRUE(t.isText);
    EXPECT_EQ(t.text, "ab\t1.5");
    ASSERT_TRUE(c.defineFunction("twice(s$)=say(1, s & s)"));
    value(c, "twice('ho')");
    EXPECT_EQ(seen, "hoho|x");
}

TEST(CalcFunctions, LenientBodiesCloseTheirParentheses) {
    Calc c;
    ASSERT_TRUE(c.defineFunction("Frac(x)=abs(abs(x)-int(abs(x))"));
    EXPECT_EQ(value(c, "Frac(-2.25)"), 0.25);
    EXPECT_EQ(value(c, "Frac(3)"), 0);
    EXPECT_EQ(errorOf(c, "abs(abs(-1)"), kParenthesis);  // a formula must balance
}

TEST(CalcNames, VariablesAliasesAndPreParse) {
    Calc c;
    const int a = c.defineVariable("A=2*3");
    ASSERT_GE(a, 0);
    EXPECT_EQ(value(c, "a + A"), 12);
    c.setVariable(a, 1.5);
    EXPECT_EQ(value(c, "a"), 1.5);
    EXPECT_EQ(c.defineVariable("a=7"), a);  // the same name keeps its handle
    ASSERT_TRUE(c.defineFunction("three()", [](const Args&) { return 3.0; }));
    ASSERT_TRUE(c.alias("Tri", "three()"));
    EXPECT_EQ(value(c, "tri * 2"), 6);
    ASSERT_TRUE(c.alias("Loop1", "Loop2"));
    ASSERT_TRUE(c.alias("Loop2", "Loop1"));
    EXPECT_EQ(c.eval("Loop1").error, kLibrary);  // aliases that name each other end
    // The pre-parse hook sees the first argument as text and gives what to parse.
    ASSERT_TRUE(c.defineFunction("handleOf(2)", [](const Args& p) { return p[1] * 1000 + p[2]; }));
    ASSERT_TRUE(c.preParse("handleOf", [](Calc& calc, void*, std::string_view arg) {
        const int h = calc.variableHandle(arg);
        return std::to_string(h < 0 ? 999 : h);
    }, nullptr));
    EXPECT_EQ(value(c, "HandleOf( A , 4)"), a * 1000 + 4);
    EXPECT_EQ(value(c, "handleOf(unknown(1,(2)), 4)"), 999004);
    // Handles of released variables are handed out again, last released first.
    const int x = c.defineVariable("x=1");
    const int y = c.defineVariable("y=1");
    c.releaseVariable(x);
    c.releaseVariable(y);
    EXPECT_EQ(c.defineVariable("z=1"), y);
    EXPECT_EQ(c.defineVariable("w=1"), x);
    EXPECT_EQ(c.eval("x").error, kUndefinedVariable);
}

TEST(CalcBudget, RunawayFormulasStopWithAnError) {
    Calc c;
    // A function that calls itself through a redefinition never ends on its own.
    ASSERT_TRUE(c.defineFunction("f(x)=x"));
    ASSERT_TRUE(c.defineFunction("g(x)=f(x+1)"));
    ASSERT_TRUE(c.defineFunction("f(x)=g(x)"));
    const Calc::Result deep = c.eval("f(1)");
    EXPECT_EQ(deep.error, kLibrary);
    EXPECT_NE(deep.message.find("nested too deeply"), std::string::npos);
    // A callback that loops spends the step budget.
    ASSERT_TRUE(c.defineFunction("spin(1)", [](const Args& a) {
        double n = 0;
        while (n < a[1] && a.calc.spend(1)) ++n;
        return n;
    }));
    c.setStepBudget(1000);
    const Calc::Result spin = c.eval("spin(1e12)");
    EXPECT_EQ(spin.error, kLibrary);
    EXPECT_NE(spin.message.find("1000 steps"), std::string::npos);
    EXPECT_EQ(value(c, "spin(10)"), 10);  // each evaluation has its own budget
    // Text that doubles on each call runs into the text limit long before memory does.
    ASSERT_TRUE(c.defineFunction("grow(n, t$)=n"));
    ASSERT_TRUE(c.defineFunction("grow(n, t$)=grow(n + 1, t & t)"));
    const Calc::Result grown = c.eval("grow(1, 'ab')");
    EXPECT_EQ(grown.error, kLibrary);
    EXPECT_NE(grown.message.find("Text longer than"), std::string::npos);
    // Deep nesting in one text is refused when parsed, not run.
    EXPECT_EQ(c.eval(std::string(5000, '(') + "1" + std::string(5000, ')')).error, kLibrary);
    std::string sum = "1";
    for (int i = 0; i < 1500; ++i) sum += "+1";
    EXPECT_EQ(value(c, sum), 1501);
}

TEST(CalcHandles, ReleasedHandlesAreReusedAndInvalidOnesAreHarmless) {
    Calc c;
    const Handle h1 = c.parse("1+1");
    const Handle h2 = c.parse("2+2");
    EXPECT_EQ(c.evaluate(h2), 4);
    c.release(h1);
    EXPECT_FALSE(c.valid(h1));
    EXPECT_EQ(c.evaluate(h1), 0);
    EXPECT_EQ(c.error(), kInvalid);
    EXPECT_EQ(c.parse("3+3"), h1);
    EXPECT_EQ(c.evaluate(h1), 6);
    EXPECT_EQ(c.evaluate(h2), 4);
    c.release(9999);
    EXPECT_EQ(c.evaluate(-1), 0);
    // Capacities: "formulas,functions,variables,aliases,texts"
    c.reset("3,802,2,1200,1");
    EXPECT_NE(c.parse("1"), 0);
    EXPECT_NE(c.parse("2"), 0);
    EXPECT_NE(c.parse("3"), 0);
    EXPECT_EQ(c.parse("4"), 0);
    EXPECT_EQ(c.error(), kSpaceFull);
    EXPECT_GE(c.defineVariable("p=1"), 0);
    EXPECT_GE(c.defineVariable("q=1"), 0);
    EXPECT_EQ(c.defineVariable("r=1"), -1);
    EXPECT_EQ(c.error(), kSpaceFull);
}

TEST(CalcBudget, AnExceptionInACallbackBecomesAnError) {
    Calc c;
    ASSERT_TRUE(c.defineFunction("boom(1)", [](const Args& a) -> double {
        if (a[1] > 0) throw std::bad_alloc();
        return 1;
    }));
    ASSERT_TRUE(c.defineFunction("rec(1)", record));
    calls.clear();
    const Calc::Result r = c.eval("rec(1) + boom(1) + rec(2)");
    EXPECT_EQ(r.error, kLibrary);
    EXPECT_EQ(r.message, "Out of memory in boom");
    EXPECT_EQ(calls, (std::vector<double>{1}));
    EXPECT_EQ(value(c, "boom(0)"), 1);
}
