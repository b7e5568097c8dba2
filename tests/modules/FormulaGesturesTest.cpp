// What the formula panels' gestures do to their modules: presses on the lamp matrix by
// pixel, the mouse pad, and the tool tips a formula gives the inputs and switches.

#include <gtest/gtest.h>

#include "FormulaHarness.h"

namespace quillmer::testing {
namespace {

TEST(FormulaMatrixPress, PixelsMapToCellsTheMarginAsksForTheMenuAndOthersAreIgnored) {
    FormulaHarness h;
    h.formula(1, "out(InC*100 + In3 + In4*0)");
    FormulaModule& m = h.add("UCalc6", 1);
    // Column 3 spans pixels 42..51 after the margin; row 2 spans 24..35.
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin + 3 * kMatrixCellWidth + 9, 2 * kMatrixCellHeight, 1), MatrixPress::Toggled);
    EXPECT_TRUE(m.cell(3, 2));
    EXPECT_FALSE(m.cell(4, 2));
    h.ticks(1);
    EXPECT_EQ(h.out(m), 103) << "the click enters as InC and In3";
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin - 1, 5, 1), MatrixPress::Menu);
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin + 3 * kMatrixCellWidth, 2 * kMatrixCellHeight, 2), MatrixPress::Ignored)
        << "only the left button toggles";
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixPixelWidth, 0, 1), MatrixPress::Ignored) << "right of the grid";
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin, kMatrixPixelHeight, 1), MatrixPress::Ignored) << "below the grid";
    EXPECT_EQ(m.pressMatrix(*h.engine, -1, 0, 1), MatrixPress::Ignored);
    EXPECT_TRUE(m.cell(3, 2)) << "none of those touched a cell";
    // The last cell of the grid.
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixPixelWidth - 1, kMatrixPixelHeight - 1, 1), MatrixPress::Toggled);
    EXPECT_TRUE(m.cell(31, 31));
    m.setLocked(true);
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin, 0, 1), MatrixPress::Locked);
    h.ticks(1);
    EXPECT_FALSE(m.cell(0, 0)) << "Lock keeps the lamps as they are";
    m.setLocked(false);
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin + 3 * kMatrixCellWidth, 2 * kMatrixCellHeight, 1), MatrixPress::Toggled);
    h.ticks(1);
    EXPECT_FALSE(m.cell(3, 2));
    EXPECT_EQ(h.out(m), 3) << "a cell turned off enters as InC 0";
}

TEST(FormulaMatrixPress, OnlyTheMatrixShapeTakesPresses) {
    FormulaHarness h;
    FormulaModule& m = h.add("UCalc4");
    EXPECT_EQ(m.pressMatrix(*h.engine, kMatrixMargin + 5, 5, 1), MatrixPress::Ignored);
    EXPECT_FALSE(m.cell(0, 0));
}

TEST(FormulaToolTips, InputsAndSwitchesShowWhatTheFormulaSetAndOnlyChangesRepaint) {
    FormulaHarness h;
    h.formula(1, "fnEval(ToolTip('go', 'pitch', 'shift'), out(1))");
    FormulaModule& m = h.add("UCalc1", 1);
    EXPECT_EQ(m.switchTip(0), "In 2: pressed=1");
    EXPECT_EQ(m.switchTip(2), "In 4: pressed=1");
    h.set(m, 0, 126);
    h.ticks(1);
    EXPECT_EQ(m.inputTip(0), "go");
    EXPECT_EQ(m.inputTip(1), "pitch");
    EXPECT_EQ(m.switchTip(0), "shift") << "the first switch enters as In2";
    EXPECT_EQ(m.switchTip(1), "In3") << "the prototype's default";
    m.viewChanged = false;
    h.ticks(3);
    EXPECT_FALSE(m.viewChanged) << "the same tips again touch nothing";
}

TEST(FormulaToolTips, ClocklessShapesStartTheirInputsAtIn1) {
    FormulaHarness h;
    h.formula(1, "ToolTip('unused', 'low', 'high')");
    FormulaModule& m = h.add("UCalc2", 1);
    h.ticks(1);
    EXPECT_EQ(m.inputTip(0), "low");
    EXPECT_EQ(m.inputTip(1), "high");
    EXPECT_EQ(m.switchTip(0), "In3") << "the switches follow the two bus inputs";
}

}  // namespace
}  // namespace quillmer::testing
