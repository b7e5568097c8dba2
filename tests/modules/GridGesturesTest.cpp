// What the grid panels' gestures do to the modules: knob drags, the wheel and a row fill on
// a matrix, lamp presses on a Rhythm, and the parent list of a satellite.

#include <algorithm>

#include "ModuleHarness.h"
#include "expression/EngineFormulaStores.h"
#include "modules/sequencers/MatrixTypes.h"
#include "modules/sequencers/Rhythm.h"

namespace quillmer::testing {
namespace {

constexpr int kCentre = kKnobTwips / 2;

struct GridRig : ModuleHarness {
    MatrixSequencer& matrix(std::string_view type) { return static_cast<MatrixSequencer&>(add(type)); }
    static int at(const MatrixSequencer& m, int c, int r, int page) {
        return m.page(page)[static_cast<size_t>(m.size().at(c, r))];
    }
};

TEST(MatrixGestures, DragTurnsThePressedCellOnlyAndReleaseGivesTheInputsBack) {
    GridRig h;
    auto& m = h.matrix("Matrix8x4");
    h.set(m, MatrixSequencer::kColumn, 5);
    h.set(m, MatrixSequencer::kRow, 3);
    h.ticks(1);
    const int x = 2 * kKnobTwips + kCentre;
    const int y = 1 * kKnobTwips + kCentre;

    m.pressCell(x, y + 40, 1, 0);
    EXPECT_EQ(m.cell(2, 1), 0) << "a plain press changes nothing";
    EXPECT_EQ(m.Enabled, 0) << "the inputs are off while the mouse is down";
    EXPECT_EQ(m.Column, 2);
    EXPECT_EQ(m.Row, 1);

    m.dragCell(x, y - 100, 1);  // straight up: the top of the knob
    EXPECT_EQ(m.cell(2, 1), 64);
    m.dragCell(x - 100, y + 100, 1);  // down to the left, towards the seam
    const int lowLeft = m.cell(2, 1);
    EXPECT_LT(lowLeft, 32);
    // A drag far outside the cell still turns the pressed one, by its own centre.
    m.dragCell(x + 3 * kKnobTwips, y, 1);
    EXPECT_GT(m.cell(2, 1), 64);
    EXPECT_LT(m.cell(2, 1), 100);
    for (int c = 0; c < 8; ++c)
        for (int r = 0; r < 4; ++r)
            if (c != 2 || r != 1) {
                EXPECT_EQ(m.cell(c, r), 0) << c << "," << r;
            }
    EXPECT_EQ(GridRig::at(m, 2, 1, 0), m.cell(2, 1)) << "the edit lands in the page in force";

    m.releaseCell();
    EXPECT_NE(m.Enabled, 0);
    EXPECT_EQ(m.Column, 5);
    EXPECT_EQ(m.Row, 3);
    EXPECT_FALSE(m.editing());
    m.dragCell(x, y - 100, 1);
    EXPECT_NE(m.cell(2, 1), 64) << "no drag after the release";
}

TEST(MatrixGestures, ASecondButtonDuringADragDoesNotLeaveTheMatrixOff) {
    GridRig h;
    auto& m = h.matrix("Matrix4x4");
    h.set(m, MatrixSequencer::kColumn, 3);
    h.ticks(1);
    m.pressCell(kCentre, kCentre, 1, 0);
    m.pressCell(kKnobTwips + kCentre, kCentre, 2, 0);  // the right button joins in
    m.releaseCell();
    EXPECT_NE(m.Enabled, 0);
    EXPECT_EQ(m.Column, 3) << "the column from before the first press";
    h.set(m, MatrixSequencer::kColumn, 1);
    h.ticks(1);
    EXPECT_EQ(m.Column, 1) << "the input reads again";
}

TEST(MatrixGestures, KeyedPressesAndTheLockFollowTheKnobRules) {
    GridRig h;
    auto& m = h.matrix("Matrix16x8");
    m.pressCell(15 * kKnobTwips + 5, 7 * kKnobTwips + 5, 1, 2);  // Shift
    m.releaseCell();
    EXPECT_EQ(m.cell(15, 7), 127);
    m.pressCell(15 * kKnobTwips + 5, 7 * kKnobTwips + 5, 2, 1);  // Ctrl with the right button
    m.releaseCell();
    EXPECT_EQ(m.cell(15, 7), 127) << "only the left button sets by keys";
    m.Lock = true;
    m.pressCell(15 * kKnobTwips + 5, 7 * kKnobTwips + 5, 1, 4);
    m.dragCell(15 * kKnobTwips + kCentre, 7 * kKnobTwips, 1);
    m.wheelCell(15, 7, -5, 0);
    m.releaseCell();
    EXPECT_EQ(m.cell(15, 7), 127) << "the lock holds press, drag and wheel";
    m.pressCell(16 * kKnobTwips + 5, 5, 1, 1);
    EXPECT_NE(m.Enabled, 0) << "a press beside the grid is no press";
}

TEST(MatrixGestures, WheelStepsByOneOrTenAndStopsAtTheEnds) {
    GridRig h;
    auto& m = h.matrix("Matrix12x8");
    h.set(m, MatrixSequencer::kColumn, 11);
    h.set(m, MatrixSequencer::kRow, 7);
    h.set(m, MatrixSequencer::kPage, 6);
    h.ticks(1);
    m.wheelCell(11, 7, 3, 0);
    EXPECT_EQ(m.cell(11, 7), 3);
    m.wheelCell(11, 7, 2, 2);
    EXPECT_EQ(m.cell(11, 7), 23);
    EXPECT_EQ(h.out(m), 23) << "the cell in force goes out at once";
    EXPECT_EQ(GridRig::at(m, 11, 7, 6), 23) << "into page 6, the page in force";
    EXPECT_EQ(GridRig::at(m, 11, 7, 0), 0);
    m.wheelCell(11, 7, -5, 2);
    EXPECT_EQ(m.cell(11, 7), 0);
    for (int i = 0; i < 20; ++i) m.wheelCell(11, 7, 1, 2);
    EXPECT_EQ(m.cell(11, 7), 127);
    m.wheelCell(12, 7, 1, 0);
    m.wheelCell(-1, 0, 1, 0);
    EXPECT_EQ(m.cell(0, 0), 0) << "beside the grid nothing moves";
}

TEST(MatrixGestures, RowFillChangesTheCurrentRowOnlyAndAWholeFillAfterItAll) {
    GridRig h;
    auto& m = h.matrix("Matrix8x8");
    for (int c = 0; c < 8; ++c)
        for (int r = 0; r < 8; ++r) m.writeFromOutside(c, r, 10 * r + c);
    h.set(m, MatrixSequencer::kRow, 2);
    h.ticks(1);

    m.chooseFill(true);
    EXPECT_EQ(m.fillStages(), 8);
    EXPECT_EQ(m.fillTitleTail(), " Row: 2");
    std::vector<uint8_t> hold(128, 0);
    m.copyToFill(hold);
    EXPECT_EQ(hold[0], 20);
    EXPECT_EQ(hold[7], 27);
    for (uint8_t& v : hold) v = 99;
    m.UpdateSeq(hold, 0);
    for (int c = 0; c < 8; ++c)
        for (int r = 0; r < 8; ++r) EXPECT_EQ(m.cell(c, r), r == 2 ? 99 : 10 * r + c) << c << "," << r;
    EXPECT_EQ(GridRig::at(m, 4, 2, 0), 99);
    EXPECT_EQ(GridRig::at(m, 4, 3, 0), 34) << "the page copy of the untouched rows is the outside write's";
    m.fillOpened(false);

    m.chooseFill(false);
    EXPECT_EQ(m.fillStages(), 64);
    EXPECT_EQ(m.fillTitleTail(), "");
    m.copyToFill(hold);
    EXPECT_EQ(hold[2 * 8 + 5], 99) << "a whole fill holds row x C + column";
    EXPECT_EQ(hold[3 * 8 + 5], 35);
    hold[7 * 8 + 7] = 1;
    m.UpdateSeq(hold, 0);
    EXPECT_EQ(m.cell(7, 7), 1);
}

TEST(MatrixGestures, AFormulaWriteIsShownWhileTheMatrixIsOff) {
    GridRig h;
    auto& m = h.matrix("Matrix8x4");
    h.ticks(1);
    m.Enabled = 0;
    m.viewChanged = false;
    EngineFormulaStores doors(*h.engine);
    EXPECT_TRUE(doors.writeGridCell(GridShape::G8x4, 0, 3, 7, 50));
    EXPECT_TRUE(m.viewChanged) << "the panel must read the new cell";
    m.viewChanged = false;
    EXPECT_FALSE(doors.writeGridCell(GridShape::G8x4, 0, 3, 7, 50));
    EXPECT_FALSE(m.viewChanged) << "no change, nothing to draw";
}

TEST(RhythmGestures, LampPressesToggleGatesSetLengthsAndEnableRows) {
    ModuleHarness h;
    auto& r = static_cast<Rhythm&>(h.add("Rhythm"));
    r.pressLamp(3, 5, 1, 0);
    EXPECT_TRUE(r.gateAt(3, 5));
    r.pressLamp(3, 5, 1, 0);
    EXPECT_FALSE(r.gateAt(3, 5));
    r.pressLamp(3, 11, 2, 0);
    EXPECT_EQ(r.rowLength(3), 12);
    r.pressLamp(3, 3, 1, 2);  // Shift with the left button
    EXPECT_EQ(r.rowLength(3), 4);
    EXPECT_FALSE(r.gateAt(3, 3)) << "setting a length leaves the gate alone";
    r.pressLamp(3, 0, 2, 0);
    EXPECT_EQ(r.rowLength(3), 32) << "a length of one is no length";
    r.pressLamp(3, 2, 0, 0);
    EXPECT_FALSE(r.gateAt(3, 2)) << "no button, no change";

    // Enable row 4 from its lamp, give it gates at 0 and 2 of a length of 3, and run.
    h.ticks(1);  // the Gates input's first reading sets the mask
    const int before = r.GateMask;
    r.pressLamp(4, -1, 1, 0);
    EXPECT_EQ(r.GateMask, before ^ 16);
    r.pressLamp(4, 0, 1, 0);
    r.pressLamp(4, 2, 1, 0);
    r.pressLamp(4, 2, 2, 0);
    h.set(r, Rhythm::kNote, 126);
    std::string trace;
    for (int i = 0; i < 9; ++i) {
        h.ticks(1);
        trace += (h.out(r) & 16) ? 'X' : '.';
    }
    // A loop of three with two gates, whatever step it starts on.
    EXPECT_EQ(std::count(trace.begin(), trace.end(), 'X'), 6) << trace;
    EXPECT_EQ(trace.substr(0, 3), trace.substr(3, 3)) << trace;
    EXPECT_EQ(trace.substr(0, 3), trace.substr(6, 3)) << trace;
}

TEST(RhythmGestures, ANewRhythmPlaysItsFirstRowUntilTheGatesInputChanges) {
    ModuleHarness h;
    auto& r = static_cast<Rhythm&>(h.add("Rhythm"));
    h.set(r, Rhythm::kNote, 126);
    std::string trace;
    for (int i = 0; i < 16; ++i) {
        h.ticks(1);
        trace += h.out(r) & 1 ? 'X' : '.';
    }
    EXPECT_EQ(r.GateMask, 1);
    EXPECT_EQ(std::count(trace.begin(), trace.end(), 'X'), 2) << "one gate in a loop of eight: " << trace;
    h.set(r, Rhythm::kGates, 0);
    h.ticks(1);
    EXPECT_EQ(r.GateMask, 1) << "a connection to zero is no change from an input left off";
    h.set(r, Rhythm::kGates, 6);
    h.ticks(1);
    EXPECT_EQ(r.GateMask, 6);
}

TEST(SatelliteParent, TheListFollowsTheMatricesAndARowChoosesByNumber) {
    ModuleHarness h;
    auto& out = static_cast<MatrixOutput&>(h.add("MOut4x4"));
    EXPECT_EQ(out.parentChoices(), (std::vector<int>{1})) << "no parent: the single entry 1";
    EXPECT_EQ(out.parentRow(), 0);
    auto& first = h.add("Matrix4x4");
    h.add("Matrix4x4");
    auto& third = h.add("Matrix4x4");
    h.add("Matrix8x4");  // another size is no parent
    out.viewChanged = false;
    h.ticks(1);
    EXPECT_EQ(out.parentChoices(), (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(out.viewChanged) << "the menu shows the new list";
    out.chooseParentRow(2);
    EXPECT_EQ(out.Parent, third.Index);
    h.engine->Delete(first);
    h.ticks(1);
    EXPECT_EQ(out.parentChoices(), (std::vector<int>{2, 3}));
    EXPECT_EQ(out.parentRow(), 1);
    out.chooseParentRow(0);
    EXPECT_EQ(out.Parent, 1);
    out.chooseParentRow(5);
    EXPECT_EQ(out.Parent, 1) << "a row past the list is ignored";
    h.engine->Delete(third);
    h.ticks(1);
    out.viewChanged = false;
    h.ticks(3);
    EXPECT_FALSE(out.viewChanged) << "an unchanged list draws nothing";
}

}  // namespace
}  // namespace quillmer::testing
