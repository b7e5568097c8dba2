// The start-up, the mailbox, flow and timing families, module identities.

#include <gtest/gtest.h>

#include <chrono>

#include "expression/FormulaRuntime.h"
#include "tests/expression/RuntimeHarness.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(RuntimeStartUp, VariablesConstantsAndInlineFormulas) {
    RuntimeHarness h;
    expr::Calc& c = h.runtime.calc();
    // The warmed table: the last released handle is handed out first.
    EXPECT_EQ(h.runtime.letterHandle('A'), 599);
    EXPECT_EQ(h.runtime.letterHandle('B'), 598);
    EXPECT_EQ(c.variableHandle("z"), 574);
    EXPECT_EQ(c.variableHandle("xigx600"), 600);
    EXPECT_EQ(c.variableHandle("xigx5"), -1);
    EXPECT_EQ(h.runtime.runHandle(), c.variableHandle("Run"));
    h.runtime.setRunVariables(true, true);
    EXPECT_EQ(h.value("Run + Start*2"), 3);
    EXPECT_NEAR(h.value("Pi + _e + Phi"), 3.14159265358979 + 2.718281828459 + 1.61803398875, 1e-12);
    EXPECT_EQ(h.text("CRLF$ & Tab"), "\r\n\t");
    EXPECT_EQ(h.value("LIM(200) + LIM(-3) + LIM(64.5)"), 127 + 0 + 64.5);
    EXPECT_EQ(h.value("Wrap(130.7) + Wrap(-1)"), 2 + -1);  // int then Mod keeps the sign
    EXPECT_EQ(h.value("Frac(-2.25)"), 0.25);               // the body stored one ")" short
    EXPECT_EQ(h.value("pRed(RGB(1,2,3))*10000 + pGreen(RGB(1,2,3))*100 + pBlue(RGB(1,2,3))"), 10203);
    EXPECT_GE(h.value("RAN"), 0);
    EXPECT_LT(h.value("RAN"), 1);
    EXPECT_TRUE(h.runtime.autoStart);
}

TEST(RuntimeStartUp, EveryEntryHoldsTheDefaultFormulaAndEveryFunctionExists) {
    RuntimeHarness h;
    for (int n = 0; n < kFormulaCount; ++n) {
        EXPECT_EQ(h.runtime.formula(n).handle, h.runtime.defaultHandle());
        EXPECT_TRUE(h.runtime.formula(n).doc.empty());
    }
    h.runtime.EvalIn = {0, 1, 2, 3, 4};
    EXPECT_EQ(h.runtime.evaluate(300, 77), 10);
    EXPECT_EQ(h.runtime.mailbox(300).outValue, 10);
    EXPECT_EQ(h.runtime.mailbox(300).flags, kFlagOut);
    const char* const names[] = {
        "OUT", "Prev", "LED", "nLED", "ClkLED", "GOTO", "ToolTip", "TxtLabel", "NumLabel", "Me", "UID", "mID", "InC",
        "In1", "In16", "Ex", "Switch", "Case", "List", "Loop", "Ix", "Jx", "fnEval", "Edge", "TSet", "Clk", "Tick",
        "AutoStart", "MIDITick", "AClock", "SetAClock", "Timer", "SetTimer", "Rising", "Falling", "SetAbsClkA",
        "SetAbsClkB", "RunStop", "CPS", "Store", "Fetch", "MakeXTable", "StoreX", "FetchX", "Get", "Put", "Ins",
        "V0", "V9", "V0.", "V9.", "A.", "Z.", "LM", "LM.", "LMI", "LMCRC", "LMClr", "LMRan", "LRan", "LMBit",
        "LMRow", "LMWrite", "LMCopy", "Life", "CA", "FitScale", "MIDIMsg", "MIDICtrl", "MIDIPoly", "MIDICtrlIn",
        "MIDIPolyIn", "MIDIKeysOff", "NRPNOut", "NRPNIn", "R16x8", "W16x8", "F16x8", "R16x4", "W16x4", "F16x4",
        "R12x8", "W12x8", "R8x8", "W8x8", "F8x8", "R8x4", "W8x4", "F8x4", "R4x4", "W4x4", "F4x4", "RTbl", "WTbl",
        "RFile", "WFile", "FFile", "UFOMouse", "GetSlider", "PutSlider", "SliderRange", "SHRM", "RLXM", "SHLB",
        "RCRW", "RCLL", "RRXL", "RBIT", "WBIT", "TBIT", "LETStr", "LETCHR", "LETNUM", "LETJUSTIFY", "LET", "SubStr",
        "TxtNum", "ChrNum", "TX0.", "TX9.", "TX0", "TX9", "TxtOpen", "LetTxtLine", "TxtLines", "TxtWordList",
        "TxtDelEmpty", "TxtHash", "TxtGetHash", "TxtHashFileSeq", "TxtHashTable", "TxtInfoBox", "InfoBox",
        "GetInfoBox", "TxtStoreX", "TxtFetchX", "SetFileNameList", "GetFileName", "FileExists", "OpenFile",
        "ReadFromFile", "WriteToFile", "OpenCOM", "SendCOM", "CloseCOM", "GetCOM", "RRSeed", "RWSeed", "RRAN", "RW",
        "TrigMode", "Radian", "Degree", "Grad", "PEN", "ClsPix", "RPix", "WPix", "RGB", "InfoPix"};
    for (const char* name : names) EXPECT_TRUE(h.runtime.calc().isFunction(name)) << name;
    EXPECT_FALSE(h.runtime.calc().isFunction("F12x8"));
}

TEST(RuntimeMailbox, ValuesAreCutAndFlagged) {
    RuntimeHarness h;
    const Mailbox& m = h.runtime.mailbox(200);
    h.run("OUT(300)", 200);
    EXPECT_EQ(m.outValue, 127);
    h.run("OUT(-4) + Prev", 200);
    EXPECT_EQ(m.outValue, 0);
    h.run("LED(2147483648)", 200);
    EXPECT_EQ(m.ledBits, 0x80000000u);
    h.run("LED(2147483647)", 200);
    EXPECT_EQ(m.ledBits, 0x7FFFFFFFu);
    h.run("LED(4294967295)", 200);
    EXPECT_EQ(m.ledBits, 0xFFFFFFFFu);
    h.run("ClkLED(1, 3)", 200);
    EXPECT_EQ(m.ledBits, 65539u);
    h.run("ClkLED(0, 3)", 200);
    EXPECT_EQ(m.ledBits, 3u);
    h.run("nLED(-5) + nLED(40)", 200);
    EXPECT_EQ(m.ledNumberNegative, 5);
    EXPECT_EQ(m.ledNumber, 32);
    h.run("GOTO(200)", 200);
    EXPECT_EQ(m.gotoTarget, 127);
    h.run("ToolTip('Go', 'Pitch')", 200);
    EXPECT_EQ(m.text->toolTips[0], "Go");
    EXPECT_EQ(m.text->toolTips[1], "Pitch");
    EXPECT_EQ(m.text->toolTips[2], "In2");
    EXPECT_EQ(m.text->toolTips[16], "In16");
    h.run("NumLabel(2.5)", 200);
    EXPECT_EQ(m.text->label, "2.5");
    h.run("TxtLabel('Hi' & 3)", 200);
    EXPECT_EQ(m.text->label, "Hi3");
    EXPECT_EQ(m.flags, kFlagOut | kFlagGoto | kFlagLed | kFlagLedNumber | kFlagToolTip | kFlagLabel);
    h.runtime.clearFlags(200);
    EXPECT_EQ(m.flags, 0);
    EXPECT_EQ(h.runtime.mailbox(201).flags, 0);  // only the running module's box
    h.runtime.EvalInC = 9;
    h.runtime.EvalIn[16] = 7;
    EXPECT_EQ(h.run("InC * 100 + In16 + mID * 1000", 712), 9 * 100 + 7 + 7000);
    EXPECT_EQ(h.runtime.evaluate(712, 0), 7907);
    EXPECT_EQ(h.run("Me", 100), 0);
}

TEST(RuntimeMailbox, AFailedFormulaLeavesWhatItReached) {
    RuntimeHarness h;
    h.run("OUT(5) + 1/0 + GOTO(3)", 300);
    EXPECT_EQ(h.runtime.calc().error(), expr::kDivisionByZero);
    EXPECT_EQ(h.runtime.mailbox(300).flags, kFlagOut);
    EXPECT_EQ(h.runtime.mailbox(300).outValue, 5);
}

TEST(RuntimeFlow, SwitchCaseListAndLoopRunTheRightFormulas) {
    RuntimeHarness h;
    // Formula 5 counts its runs in V0 of the module; 7 writes each pass's indexes.
    h.formula(5, "V0.(V0 + 1)");
    h.formula(7, "Store(Jx, Ix, Me)");
    h.formula(8, "Store(Jx, Ix + 10, Me)");
    auto runs = [&h] { return h.value("V0"); };
    h.runtime.EvalModuleId = 100;
    h.run("Switch(1, 0)");
    h.run("Switch(0, 5)");
    EXPECT_EQ(runs(), 0);
    h.run("Switch(1, 5) + Switch(0, 0, 5)");
    EXPECT_EQ(runs(), 2);
    h.run("Case(1, 5)");
    EXPECT_EQ(runs(), 2);
    h.run("Case(2, 5)");
    EXPECT_EQ(runs(), 3);
    h.run("Case(3, 5)");  // past the last argument
    EXPECT_EQ(runs(), 3);
    h.run("Loop(0, 5)");
    EXPECT_EQ(runs(), 4);
    h.run("Loop(-1, 5)");
    EXPECT_EQ(runs(), 4);
    h.run("List(5, 5, 5)");
    EXPECT_EQ(runs(), 7);
    h.run("Loop(2, 7, 8)");
    for (int j = 0; j <= 2; ++j) {
        EXPECT_EQ(h.value("Fetch(" + std::to_string(j) + ", 0)"), 7);
        EXPECT_EQ(h.value("Fetch(" + std::to_string(j) + ", 11)"), 8);
    }
    EXPECT_EQ(h.value("Fetch(3, 0)"), 0);
    EXPECT_EQ(h.run("fnEval(1, 2, 3)"), 3);
    EXPECT_EQ(h.run("Ix + Jx"), 0);  // outside any loop
}

TEST(RuntimeFlow, NestedFlowRestoresTheFormulaNumber) {
    RuntimeHarness h;
    h.formula(10, "Ex(11) * 1000 + Me");
    h.formula(11, "List(12) + Me");
    h.formula(12, "Put(0, Me)");
    h.formula(13, "Loop(1, 14) + Me");
    h.formula(14, "Put(1, Get(1) + Me)");
    EXPECT_EQ(h.runtime.evaluate(100, 10), 11 * 1000 + 10);
    EXPECT_EQ(h.runtime.EvalFormula, 10);
    EXPECT_EQ(h.value("Get(0)"), 12);
    EXPECT_EQ(h.runtime.evaluate(100, 13), 13);
    EXPECT_EQ(h.value("Get(1)"), 28);
    EXPECT_EQ(h.run("Ex(200)"), 0);  // cut to 127, which holds the default; the inputs are 0
}

TEST(RuntimeFlow, RunawayFormulasStopQuicklyWithAnError) {
    RuntimeHarness h;
    h.formula(20, "Ex(20)");
    h.formula(21, "Loop(1e12, 22)");
    h.formula(22, "Store(1, 1, Jx)");
    h.formula(23, "Loop(1e12)");
    const auto start = std::chrono::steady_clock::now();
    h.runtime.evaluate(100, 20);
    EXPECT_EQ(h.runtime.calc().error(), expr::kLibrary);
    EXPECT_NE(h.runtime.calc().errorMessage().find("nested too deeply"), std::string::npos);
    h.runtime.evaluate(100, 21);
    EXPECT_NE(h.runtime.calc().errorMessage().find("steps"), std::string::npos);
    EXPECT_GT(h.value("Fetch(1, 1)"), 1000);
    h.runtime.evaluate(100, 23);
    EXPECT_NE(h.runtime.calc().errorMessage().find("steps"), std::string::npos);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    // The runtime is usable afterwards and the loop stacks are clean.
    EXPECT_EQ(h.run("Loop(2, 5) + Ix + Jx"), 0);
    EXPECT_EQ(h.runtime.calc().error(), expr::kOk);
}

TEST(RuntimeFlow, EdgeTestsEachSide) {
    RuntimeHarness h;
    EXPECT_EQ(h.value("Edge(10, 10, 5, 5, 100, 100)"), 0);
    EXPECT_EQ(h.value("Edge(-1, 10, 5, 5, 100, 100)"), 2);
    EXPECT_EQ(h.value("Edge(96, 10, 5, 5, 100, 100)"), 1);
    EXPECT_EQ(h.value("Edge(10, 4, 5, 5, 100, 100, 0, 5)"), 8);
    EXPECT_EQ(h.value("Edge(10, 96, 5, 5, 100, 100)"), 4);
    EXPECT_EQ(h.value("Edge(-1, -1, 200, 200, 100, 100)"), 15);
    EXPECT_EQ(h.value("Edge(95, 95, 5, 5, 100, 100)"), 0);  // touching the limit is inside
}

TEST(RuntimeIdentity, UidsRunOutAtOneHundredTwentyEight) {
    RuntimeHarness h;
    for (int m = 0; m < 127; ++m) EXPECT_EQ(h.runtime.uidOf(100 + m), m + 1);
    EXPECT_TRUE(h.stores.messages.empty());
    EXPECT_EQ(h.runtime.uidOf(100), 1);  // kept
    EXPECT_EQ(h.runtime.uidOf(400), 127);
    ASSERT_EQ(h.stores.messages.size(), 1u);
    EXPECT_EQ(h.stores.messages[0], kUidExhausted);
    EXPECT_EQ(h.runtime.uidOf(400), 127);
    EXPECT_EQ(h.stores.messages.size(), 1u);
    // Modules 100+126 and 400 now share slot 127's registers.
    h.run("V3.(42)", 226);
    EXPECT_EQ(h.run("V3", 400), 42);
    EXPECT_EQ(h.run("V3", 100), 0);
    EXPECT_EQ(h.run("UID", 226), 127);
}

TEST(RuntimeTiming, TickRunsTheBeatAndTailFormulasOncePerPeriod) {
    RuntimeHarness h;
    h.formula(30, "Put(2, Get(2) + 1)");   // beats
    h.formula(31, "Put(3, Get(3) + 1)");   // tails
    h.run("TSet(0, 50)");                  // an eighth: 12 ticks, the last 6 off
    std::string clk;
    std::string gate;
    for (int t = 0; t < 48; ++t) {
        h.stores.counters[0] = t % 12 == 0 ? 0 : 12 - t % 12;  // 0, 11, 10, ... 1
        h.runtime.setFormula(0, "Tick(30, 31)");
        gate += h.runtime.evaluate(100, 0) == 127 ? '#' : '.';
        h.runtime.setFormula(0, "Clk");
        clk += h.runtime.evaluate(100, 0) == 1 ? '#' : '.';
    }
    EXPECT_EQ(h.run("Get(2)*100 + Get(3)"), 4 * 100 + 4);
    EXPECT_EQ(clk.substr(0, 12), "######......");
    EXPECT_EQ(gate.substr(0, 24), "######......######......");
    EXPECT_EQ(clk, clk.substr(0, 12) + clk.substr(0, 12) + clk.substr(0, 12) + clk.substr(0, 12));
}

TEST(RuntimeTiming, EdgesClocksAndTransport) {
    RuntimeHarness h;
    std::string rising;
    std::string falling;
    for (const int x : {0, 5, 6, 0, -1, 3, 0}) {
        rising += h.value("Rising(" + std::to_string(x) + ", 4)") == 1 ? 'R' : '.';
        falling += h.value("Falling(" + std::to_string(x) + ", 4)") == 1 ? 'F' : '.';
    }
    EXPECT_EQ(rising, ".R...R.");
    EXPECT_EQ(falling, "...F..F");
    EXPECT_EQ(h.value("Rising(1, 128) + Falling(0, -1)"), 0);
    EXPECT_EQ(h.value("Rising(1, 5)"), 1);  // each slot has its own flag
    EXPECT_EQ(h.value("AClock(3) + Timer(19)"), 0);
    h.runtime.timerFired(0, 3);
    h.runtime.timerFired(1, 19);
    EXPECT_EQ(h.value("AClock(3) + Timer(19)"), 2);
    h.value("SetAClock(3, 0)");
    EXPECT_EQ(h.value("AClock(3) + AClock(10) + Timer(20)"), 0);
    h.value("RunStop(5)");
    EXPECT_TRUE(h.stores.run);
    h.stores.bus[143 + 15] = 99;
    EXPECT_EQ(h.value("CPS(40)"), 99);
    h.value("AutoStart(0)");
    EXPECT_FALSE(h.runtime.autoStart);
}

TEST(RuntimeFormulas, AFailedCompileKeepsTheEntryAndReplacedHandlesAreFreed) {
    RuntimeHarness h;
    h.formula(3, "OUT(3)");
    const expr::Handle three = h.runtime.formula(3).handle;
    EXPECT_EQ(h.runtime.setFormula(3, "OUT(3", "doc"), expr::kParenthesis);
    EXPECT_EQ(h.runtime.formula(3).handle, three);
    EXPECT_EQ(h.runtime.setFormula(3, "OUT(4)", "Four"), expr::kOk);
    EXPECT_EQ(h.runtime.formula(3).doc, "Four");
    EXPECT_FALSE(h.runtime.calc().valid(three));  // the old compiled form is gone
    EXPECT_EQ(h.runtime.evaluate(100, 3), 4);
    // Replacing an entry that shares the default formula leaves the others running it.
    EXPECT_EQ(h.runtime.setFormula(4, "OUT(5)"), expr::kOk);
    EXPECT_TRUE(h.runtime.calc().valid(h.runtime.defaultHandle()));
    EXPECT_EQ(h.runtime.formula(5).handle, h.runtime.defaultHandle());
    // A function redefined after the formulas were compiled changes what they run.
    ASSERT_TRUE(h.runtime.calc().defineFunction("Twice(x)=x*2"));
    h.formula(6, "OUT(Twice(In1))");
    h.runtime.EvalIn[1] = 20;
    EXPECT_EQ(h.runtime.evaluate(100, 6), 40);
    ASSERT_TRUE(h.runtime.calc().defineFunction("Twice(x)=x*3"));
    EXPECT_EQ(h.runtime.evaluate(100, 6), 60);
    EXPECT_EQ(h.runtime.mailbox(100).outValue, 60);
}
