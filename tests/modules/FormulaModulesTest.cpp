// The formula modules over ticks: clock gating, context, mailbox, GOTO, lamps, records.

#include <gtest/gtest.h>

#include "FormulaHarness.h"
#include "engine/FileLayout.h"

namespace quillmer::testing {
namespace {

constexpr const char* kCounter = "fnEval(V0.(V0+1), out(V0))";

TEST(FormulaClock, HeldHighRunsOnceAtTheRiseAndTurboRunsEveryTick) {
    FormulaHarness h;
    h.formula(1, kCounter);
    FormulaModule& m = h.add("UCalc3", 1);
    h.set(m, 0, 127);
    h.ticks(3);
    EXPECT_EQ(h.out(m), 0) << "a clock high from the start waits for it to go low";
    h.set(m, 0, 0);
    h.ticks(2);
    h.set(m, 0, 127);
    h.ticks(5);
    EXPECT_EQ(h.out(m), 1) << "one evaluation per rise";
    h.set(m, 0, 126);
    h.ticks(4);
    EXPECT_EQ(h.out(m), 5) << "Turbo runs on every tick";
    h.set(m, 0, 0);
    h.ticks(1);
    h.set(m, 0, 64);
    h.ticks(2);
    EXPECT_EQ(h.out(m), 6);
}

TEST(FormulaClock, AutoStartRunsClockedModulesOnceOnAResyncWithClockZero) {
    FormulaHarness h;
    h.formula(1, "fnEval(V0.(V0+1), out(V0*10+InC))");
    FormulaModule& clocked = h.add("UCalcXC", 1);
    h.ticks(3);
    EXPECT_EQ(h.out(clocked), 0);
    h.engine->ResyncPending = true;
    h.ticks(3);
    EXPECT_EQ(h.out(clocked), 10) << "one run, clock value 0";
    h.runtime->autoStart = false;
    h.engine->ResyncPending = true;
    h.ticks(3);
    EXPECT_EQ(h.out(clocked), 10) << "without AutoStart a resync runs nothing";
}

TEST(FormulaContext, EachShapeFillsItsInputsSwitchesAndClock) {
    FormulaHarness h;
    h.formula(2, "out(In1 + 2*In2 + 4*In3 + 8*In4)");
    FormulaModule& one = h.add("UCalc1", 2);
    h.set(one, 0, 126);
    h.set(one, 1, 1);
    one.setSwitch(0, true);
    one.setSwitch(2, true);
    FormulaModule& two = h.add("UCalc2", 2);
    h.set(two, 0, 1);
    h.set(two, 1, 2);
    two.setSwitch(1, true);
    FormulaModule& four = h.add("UCalc4", 2);
    for (int k = 0; k < 4; ++k) h.set(four, k, 1);
    FormulaModule& pad = h.add("UCalc7", 2);
    pad.setSwitch(0, true);
    h.ticks(1);
    EXPECT_EQ(h.out(one), 1 + 2 + 8) << "In1 from the bus, In2..In4 the switches";
    EXPECT_EQ(h.out(two), 1 + 4 + 8) << "In1, In2 from the bus, In3, In4 the switches";
    EXPECT_EQ(h.out(four), 15);
    EXPECT_EQ(h.out(pad), 15) << "In1 the switch; In2..In4 as UCalc4, updated before it, left them";

    h.formula(3, "out(In16 + InC)");
    FormulaModule& xv = h.add("UCalcXV", 3);
    h.set(xv, 15, 33);
    FormulaModule& xc = h.add("UCalcXC", 3);
    h.set(xc, 0, 126);
    h.set(xc, 16, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(xv), 33) << "EvalInC is 0 on a clockless type";
    EXPECT_EQ(h.out(xc), 127) << "EvalInC is the clock value";
}

TEST(FormulaContext, ModuleIdentitiesFollowTypeBaseAndIndex) {
    FormulaHarness h;
    h.formula(4, "out(mID)");
    FormulaModule& a = h.add("UCalc4", 4);
    FormulaModule& b = h.add("UCalcXV", 4);
    FormulaModule& c = h.add("UCalc6", 4);
    h.ticks(1);
    EXPECT_EQ(h.out(a), 4);
    EXPECT_EQ(h.out(b), 9);
    EXPECT_EQ(h.out(c), 0);
}

TEST(FormulaMailbox, OutIsCutAndRepeatedValuesDontMarkTheView) {
    FormulaHarness h;
    h.formula(1, "out(300)");
    FormulaModule& m = h.add("UCalc4", 1);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 127);
    EXPECT_EQ(m.lastOut(), 127);
    m.viewChanged = false;
    h.ticks(3);
    EXPECT_FALSE(m.viewChanged) << "the same value again leaves the caption alone";
}

TEST(FormulaMailbox, AnErrorHalfWayKeepsTheLastOutput) {
    FormulaHarness h;
    h.formula(1, "fnEval(out(In1), 1/In2, out(99))");
    FormulaModule& m = h.add("UCalc4", 1);
    h.set(m, 0, 20);
    h.set(m, 1, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 99);
    h.set(m, 1, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 20) << "acted on as far as it got";
}

TEST(FormulaGoto, ChainsMoveOnePerEvaluationAndAResyncReturnsToTheStoredFormula) {
    FormulaHarness h;
    h.formula(0, "fnEval(out(10), GOTO(5))");
    h.formula(5, "fnEval(out(50), GOTO(6))");
    h.formula(6, "fnEval(out(60), GOTO(0))");
    FormulaModule& m = h.add("UCalc4", 0);
    EXPECT_EQ(h.values(m, 4), (std::vector<int>{10, 50, 60, 10}));
    EXPECT_EQ(m.currentFormula(), 5);
    EXPECT_EQ(m.formulaNumber(), 0);
    h.formula(0, "fnEval(out(11), GOTO(5))");
    h.ticks(1);  // runs 5, goes to 6
    ASSERT_EQ(m.currentFormula(), 6);
    h.engine->ResyncPending = true;
    h.ticks(1);
    EXPECT_EQ(h.out(m), 11) << "a run starts from the stored formula";
}

TEST(FormulaGoto, TheFormulaInputChoosesAndGotoAndLabelsAreIgnored) {
    FormulaHarness h;
    h.formula(9, "fnEval(out(90), GOTO(3), TxtLabel('x'))", "nine");
    h.formula(3, "out(30)");
    FormulaModule& m = h.add("UCalc5", 0);
    h.set(m, 0, 126);
    h.set(m, 5, 9);
    h.ticks(3);
    EXPECT_EQ(h.out(m), 90);
    EXPECT_EQ(m.currentFormula(), 9);
    EXPECT_EQ(m.formulaDoc(*h.engine), "nine");
    EXPECT_EQ(m.label(), "");
    h.set(m, 5, 3);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 30);
}

TEST(FormulaLamps, NumberOfLampsPressesSwitchesOnTheClockedOneInput) {
    FormulaHarness h;
    h.formula(1, "nLED(In1)");
    FormulaModule& m = h.add("UCalc1", 1);
    h.set(m, 0, 126);
    h.set(m, 1, 5);
    h.ticks(1);
    EXPECT_TRUE(m.switchPressed(0) && m.switchPressed(1) && m.switchPressed(2)) << "5 is cut to 3";
    h.set(m, 1, 1);
    h.ticks(1);
    EXPECT_TRUE(m.switchPressed(0));
    EXPECT_FALSE(m.switchPressed(1) || m.switchPressed(2));
    h.formula(2, "LED(6)");
    m.chooseFormula(2);
    h.ticks(1);
    EXPECT_FALSE(m.switchPressed(0));
    EXPECT_TRUE(m.switchPressed(1) && m.switchPressed(2));
}

TEST(FormulaLamps, RowLampsFollowPatternsAndNumbers) {
    FormulaHarness h;
    h.formula(1, "LED(In1)");
    h.formula(2, "nLED(3)");
    h.formula(3, "nLED(-1)");
    FormulaModule& row = h.add("UCalc0", 1);
    h.runtime->EvalIn[1] = 0b1010;  // UCalc0 reads the context as the last module left it
    h.ticks(1);
    EXPECT_EQ(row.lamp(1), kLampOn);
    EXPECT_EQ(row.lamp(3), kLampOn);
    EXPECT_EQ(row.lamp(0), kLampOff);
    row.chooseFormula(2);
    h.ticks(1);
    EXPECT_EQ(row.lampBits(), 0b100u);
    row.chooseFormula(3);
    h.ticks(1);
    EXPECT_EQ(row.lampBits(), 1u << 15) << "a negative number counts from the right";
}

TEST(FormulaMailbox, ToolTipsAndLabelsReachThePanel) {
    FormulaHarness h;
    h.formula(1, "fnEval(ToolTip('go', 'pitch'), TxtLabel('hello'))");
    FormulaModule& m = h.add("UCalc1", 1);
    EXPECT_EQ(m.inputTip(0), kClockTip);
    h.set(m, 0, 126);
    h.ticks(1);
    EXPECT_EQ(m.inputTip(0), "go");
    EXPECT_EQ(m.inputTip(1), "pitch");
    EXPECT_EQ(m.label(), "hello");
}

TEST(FormulaMatrix, ClicksToggleCellsEnterTheContextAndLockRefuses) {
    FormulaHarness h;
    h.formula(1, "out(InC*100 + In3 + In4*0)");
    FormulaModule& m = h.add("UCalc6", 1);
    EXPECT_TRUE(m.clickCell(*h.engine, 5, 2));
    h.ticks(1);
    EXPECT_TRUE(m.cell(5, 2));
    EXPECT_EQ(h.out(m), 105);
    EXPECT_FALSE(m.clickCell(*h.engine, 32, 0)) << "outside the grid";
    m.setLocked(true);
    EXPECT_TRUE(m.clickCell(*h.engine, 5, 2));
    h.ticks(1);
    EXPECT_TRUE(m.cell(5, 2)) << "locked";
    h.formula(2, "LM.(7, 3)");
    m.chooseFormula(2);
    h.ticks(1);
    EXPECT_TRUE(m.cell(0, 7) && m.cell(1, 7)) << "the formula's matrix shows";
}

TEST(FormulaMousePad, UFOMouseReadsThePadInStepsOf15) {
    FormulaHarness h;
    h.formula(1, "out(UFOMouse(0, 2) + 10*UFOMouse(0, 4))");
    FormulaModule& m = h.add("UCalc7", 1);
    m.padDown(1, 0, 100, 100);
    m.padMove(160, 40);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 4 + 10);
    m.padUp();
    h.ticks(1);
    EXPECT_EQ(h.out(m), 4);
}

TEST(FormulaRecords, EveryShapeKeepsFormulaSwitchesAndMatrixThroughItsRecord) {
    FormulaHarness h;
    for (const char* type : {"UCalc0", "UCalc1", "UCalc2", "UCalc3", "UCalc4", "UCalc5", "UCalc6", "UCalc7", "UCalcXC",
                             "UCalcXV"}) {
        FormulaModule& m = h.add(type, 17);
        m.setSwitch(0, true);
        m.clickCell(*h.engine, 3, 4);
        m.PatchStore(*h.engine);
        const std::vector<uint8_t> bytes = body(h, m);
        const FileSlot& slot = fileSlotOf(Harness::id(type));
        ByteWriter head;
        head.i16(-1);
        for (int i = 0; i < 4; ++i) head.i16(0);
        head.i32(0);
        head.i32(0);
        head.str("x");
        std::vector<uint8_t> record = head.bytes();
        record.insert(record.end(), bytes.begin(), bytes.end());
        ByteReader in(record);
        EXPECT_NO_THROW(skipRecord(in, parseLayout(slot.layout))) << type;
        EXPECT_EQ(in.remaining(), 0u) << type << " writes its layout's size";
        auto back = readBack(h, type, bytes);
        auto& f = static_cast<FormulaModule&>(*back);
        EXPECT_EQ(f.formulaNumber(), 17) << type;
        EXPECT_EQ(f.switchPressed(0), f.shape().switches > 0) << type;
        EXPECT_EQ(f.cell(3, 4), f.shape().lampMatrix) << type;
    }
}

TEST(FormulaReload, NewFormulasRunFromTheNextTickWhileThePatchRuns) {
    FormulaHarness h;
    UserFunctions first;
    first.expressions[7] = "seven = out(7)";
    compileUserFunctions(*h.runtime, first);
    FormulaModule& m = h.add("UCalc4", 7);
    h.ticks(2);
    ASSERT_EQ(h.out(m), 7);
    UserFunctions second;
    second.functions.push_back("Twice(x) = 2*x");
    second.expressions[7] = "seventy = out(Twice(35))";
    compileUserFunctions(*h.runtime, second);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 70);
    EXPECT_EQ(m.formulaDoc(*h.engine), "seventy");
}

}  // namespace
}  // namespace quillmer::testing

namespace quillmer::testing {
namespace {

TEST(SliderBank, FormulasReadWriteAndRangeSlidersByModuleNumber) {
    FormulaHarness h;
    auto& bank0 = static_cast<UFSldr&>(h.ModuleHarness::add("UFSldr"));
    auto& bank1 = static_cast<UFSldr&>(h.ModuleHarness::add("UFSldr"));
    bank1.setPosition(3, 0.5);
    h.formula(1, "out(GetSlider(1, 3))");
    FormulaModule& reader = h.add("UCalc4", 1);
    h.ticks(1);
    EXPECT_EQ(h.out(reader), 63) << "0.5 x 127, cut to a whole number";
    h.formula(2, "fnEval(SliderRange(0, 2, -10, 5), PutSlider(0, 2, 10), out(GetSlider(0, 2)))");
    reader.chooseFormula(2);
    h.ticks(1);
    EXPECT_DOUBLE_EQ(bank0.setup(2).range, 10) << "a range is kept by its size";
    EXPECT_DOUBLE_EQ(bank0.position(2), 0.5);
    EXPECT_EQ(h.out(reader), 10);
    h.formula(3, "fnEval(PutSlider(0, 64, 1), PutSlider(5, 0, 1), SliderRange(0, 1, 0), out(GetSlider(0, 1)*10))");
    reader.chooseFormula(3);
    h.ticks(1);
    EXPECT_DOUBLE_EQ(bank0.setup(1).range, 0.1) << "at least 0.1";
    EXPECT_EQ(h.out(reader), 0) << "past 63 and absent banks change nothing";
}

TEST(SliderBank, RecordKeepsSetupsCaptionsTextAndPositionsPerSnapshot) {
    FormulaHarness h;
    auto& bank = static_cast<UFSldr&>(h.ModuleHarness::add("UFSldr"));
    bank.setSliderCount(20);
    std::vector<SliderSetup> setups(kBankSliders);
    setups[7] = SliderSetup{12.5, -3, 2.0f};
    bank.applySetup(setups, "pitch bank");
    bank.setCaption(7, "Tilt");
    bank.setPosition(7, 1.0);
    bank.PatchStore(*h.engine);
    bank.setPosition(7, 0.0);

    const std::vector<uint8_t> bytes = body(h, bank);  // the head words are the type's own
    ByteReader in(bytes);
    skipRecord(in, parseLayout(fileSlotOf(Harness::id("UFSldr")).layout));
    EXPECT_EQ(in.remaining(), 0u) << "the layout's size";

    auto back = readBack(h, "UFSldr", bytes);
    auto& b = static_cast<UFSldr&>(*back);
    EXPECT_EQ(b.sliderCount(), 20);
    EXPECT_EQ(b.doc(), "pitch bank");
    EXPECT_EQ(b.caption(7), "Tilt");
    EXPECT_DOUBLE_EQ(b.setup(7).range, 12.5);
    EXPECT_DOUBLE_EQ(b.setup(7).offset, -3);
    EXPECT_FLOAT_EQ(b.setup(7).sens, 2.0f);
    EXPECT_DOUBLE_EQ(b.sliderValue(7), 9.5) << "snapshot 0 as stored: full position";
    EXPECT_EQ(UFSldr::formatValue(9.5), "9.5");
    EXPECT_EQ(UFSldr::formatValue(1.0 / 3), "0.333");
    EXPECT_EQ(UFSldr::formatValue(-0.0001), "0");
}

TEST(SliderBank, TouchesAndFillMoveSlidersWithinTheCount) {
    FormulaHarness h;
    auto& bank = static_cast<UFSldr&>(h.ModuleHarness::add("UFSldr"));
    bank.setSliderCount(4);
    bank.touch(UFSldr::kBarsLeft + UFSldr::kBarWidth * 2, UFSldr::kBarsTop);
    EXPECT_DOUBLE_EQ(bank.position(2), 1.0);
    EXPECT_EQ(bank.stage(), 2);
    bank.touch(UFSldr::kBarsLeft + UFSldr::kBarWidth * 5, UFSldr::kBarsTop);
    EXPECT_DOUBLE_EQ(bank.position(5), 0.0) << "past the count";
    const uint8_t fill[] = {127, 0, 127, 0, 127, 127};
    bank.UpdateSeq(fill, 0);
    EXPECT_DOUBLE_EQ(bank.position(0), 1.0);
    EXPECT_DOUBLE_EQ(bank.position(4), 0.0) << "only the sliders in use";
}

}  // namespace
}  // namespace quillmer::testing
