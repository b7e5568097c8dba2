// The drawn grids of the matrices and of Rhythm, worked with the mouse as a musician would:
// every size builds its whole grid, a click lands on the cell under it, drags and the wheel
// turn knobs, the rule lamps follow the mode, and a satellite picks its parent from a menu.

#include <QComboBox>
#include <QDial>
#include <QWheelEvent>
#include <algorithm>
#include <initializer_list>
#include <utility>

#include "gui/FillDialog.h"
#include "gui/panels/panels/DrawnView.h"
#include "gui/panels/sequencers/MatrixGridView.h"
#include "modules/sequencers/MatrixTypes.h"
#include "modules/sequencers/Rhythm.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

using gui::GridPicture;

void mouse(QWidget* w, QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
           Qt::KeyboardModifiers keys = Qt::NoModifier) {
    QMouseEvent e(type, QPointF(at), QPointF(w->mapToGlobal(at)), button, held, keys);
    QApplication::sendEvent(w, &e);
}

void keyedClick(QWidget* w, QPoint at, Qt::KeyboardModifiers keys) {
    mouse(w, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, keys);
    mouse(w, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton, keys);
}

void wheel(QWidget* w, QPoint at, int notches) {
    QWheelEvent e(QPointF(at), QPointF(w->mapToGlobal(at)), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                  Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(w, &e);
}

MatrixSequencer& matrix(GuiHarness& h, const char* name) { return static_cast<MatrixSequencer&>(module(h, name)); }

std::vector<int> cellsOf(GuiHarness& h, const char* name) {
    auto& m = matrix(h, name);
    auto held = h.engine().lock();
    return {m.cells().begin(), m.cells().end()};
}

TEST(MatrixGridPanel, EverySizeBuildsItsGridAndAClickLandsOnTheCellUnderIt) {
    for (auto [c, r] : std::initializer_list<std::pair<int, int>>{{4, 4}, {8, 4}, {8, 8}, {12, 8}, {16, 4}, {16, 8}}) {
        SCOPED_TRACE(std::to_string(c) + "x" + std::to_string(r));
        GuiHarness h;
        const std::string size = std::to_string(c) + "x" + std::to_string(r);
        h.placeModule("Matrix" + size);
        const std::string name = "1Mat" + size + "-";
        gui::PanelFrame& frame = panel(h, name.c_str());
        auto* grid = part<gui::DrawnView>(frame, "iKnobs");
        ASSERT_NE(grid, nullptr);
        const GridPicture picture{c, r};
        EXPECT_EQ(grid->size(), QSize(picture.width(), picture.height()));
        EXPECT_LE(grid->geometry().right(), frame.width());
        EXPECT_NE(part<QPushButton>(frame, "cmdFillRow"), nullptr);
        EXPECT_EQ(part<gui::DrawnView>(frame, "LEDSelect") != nullptr, r == 8 && c != 12);

        // Shift on the last cell, near its corner; Alt on one in the middle.
        keyedClick(grid, picture.cellRect(c - 1, r - 1).bottomRight() - QPoint(1, 1), Qt::ShiftModifier);
        keyedClick(grid, picture.cellRect(c / 2, 1).topLeft() + QPoint(1, 1), Qt::AltModifier);
        keyedClick(grid, QPoint(2, 2), Qt::ShiftModifier);  // on the lamps: nothing
        const std::vector<int> cells = cellsOf(h, name.c_str());
        for (int col = 0; col < c; ++col) {
            for (int row = 0; row < r; ++row) {
                const int expected = col == c - 1 && row == r - 1 ? 127 : col == c / 2 && row == 1 ? 64 : 0;
                EXPECT_EQ(cells[static_cast<size_t>(col * r + row)], expected) << col << "," << row;
            }
        }
        auto& m = matrix(h, name.c_str());
        auto held = h.engine().lock();
        EXPECT_NE(m.Enabled, 0) << "each release gives the inputs back";
    }
}

TEST(MatrixGridPanel, DragAndWheelTurnTheKnobUnderThePointer) {
    GuiHarness h;
    h.placeModule("Matrix16x8");
    gui::PanelFrame& frame = panel(h, "1Mat16x8-");
    auto* grid = part<gui::DrawnView>(frame, "iKnobs");
    const GridPicture picture{16, 8};
    const QRect cell = picture.cellRect(9, 5);
    mouse(grid, QEvent::MouseButtonPress, cell.center(), Qt::LeftButton, Qt::LeftButton);
    mouse(grid, QEvent::MouseMove, cell.center() - QPoint(0, 100), Qt::NoButton, Qt::LeftButton);
    {
        auto& m = matrix(h, "1Mat16x8-");
        auto held = h.engine().lock();
        EXPECT_TRUE(m.editing());
        EXPECT_EQ(m.cell(9, 5), 64) << "straight up is the middle of the range";
    }
    mouse(grid, QEvent::MouseButtonRelease, cell.center(), Qt::LeftButton, Qt::NoButton);
    wheel(grid, picture.cellRect(2, 7).center(), 3);
    wheel(grid, cell.center(), -4);
    runTicks(h, 1);
    auto& m = matrix(h, "1Mat16x8-");
    auto held = h.engine().lock();
    EXPECT_FALSE(m.editing());
    EXPECT_EQ(m.cell(9, 5), 60);
    EXPECT_EQ(m.cell(2, 7), 3);
    EXPECT_EQ(m.cell(2, 6), 0);
}

TEST(MatrixGridPanel, FillRowOpensOnTheRowInForceAndLeavesTheOthers) {
    GuiHarness h;
    h.placeModule("Matrix8x4");
    gui::PanelFrame& frame = panel(h, "1Mat8x4-");
    {
        auto& m = matrix(h, "1Mat8x4-");
        auto held = h.engine().lock();
        for (int c = 0; c < 8; ++c)
            for (int r = 0; r < 4; ++r) m.writeFromOutside(c, r, 50);
        m.Row = 2;
        m.viewChanged = true;
    }
    h.window().refresh();
    part<QPushButton>(frame, "cmdFillRow")->click();
    processEvents();
    gui::FillDialog* dialog = h.window().panels().fillDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Fill: 1Mat8x4- Row: 2"));
    EXPECT_EQ(dialog->knob(1)->value(), 7) << "a row of eight";
    dialog->command(19)->click();  // Erase
    dialog->command(0)->click();   // OK
    processEvents();
    std::vector<int> cells = cellsOf(h, "1Mat8x4-");
    for (int c = 0; c < 8; ++c)
        for (int r = 0; r < 4; ++r) EXPECT_EQ(cells[static_cast<size_t>(c * 4 + r)], r == 2 ? 0 : 50) << c << "," << r;

    // The whole-grid Fill after it works on every cell again.
    part<QPushButton>(frame, "btnFill")->click();
    processEvents();
    dialog = h.window().panels().fillDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Fill: 1Mat8x4-"));
    EXPECT_EQ(dialog->knob(1)->value(), 31);
    dialog->command(19)->click();
    dialog->command(0)->click();
    processEvents();
    cells = cellsOf(h, "1Mat8x4-");
    EXPECT_EQ(std::count(cells.begin(), cells.end(), 0), 32);
}

TEST(MatrixGridPanel, RuleLampsToggleBitsOnlyInTheAutomatonMode) {
    GuiHarness h;
    h.placeModule("Matrix8x8");
    gui::PanelFrame& frame = panel(h, "1Mat8x8-");
    auto* lamps = part<gui::DrawnView>(frame, "LEDSelect");
    ASSERT_NE(lamps, nullptr);
    const int lampWidth = lamps->width() / 8;
    const QPoint first(lampWidth / 2, 5);  // "111": bit 7
    click(lamps, first);
    {
        auto& m = matrix(h, "1Mat8x8-");
        auto held = h.engine().lock();
        EXPECT_EQ(m.Rule, MatrixSequencer::kDefaultRule) << "hidden in Life mode";
    }
    auto* type = part<QPushButton>(frame, "cmdType");
    type->click();
    type->click();
    h.window().refresh();
    EXPECT_EQ(type->text(), "CA/1D");
    click(lamps, first);
    click(lamps, QPoint(7 * lampWidth + lampWidth / 2, 5));  // "000": bit 0
    auto& m = matrix(h, "1Mat8x8-");
    auto held = h.engine().lock();
    EXPECT_EQ(m.Rule, MatrixSequencer::kDefaultRule ^ 0x80 ^ 0x01);
}

TEST(RhythmPanel, ClicksToggleGatesRightClicksSetLengthsAndTheLampEnablesARow) {
    GuiHarness h;
    h.placeModule("Rhythm");
    gui::PanelFrame& frame = panel(h, "1Rhythm-");
    auto* lamps = part<gui::DrawnView>(frame, "LED1");
    ASSERT_NE(lamps, nullptr);
    EXPECT_EQ(lamps->size(), QSize(gui::RhythmPicture::width(), gui::RhythmPicture::height()));
    click(lamps, gui::RhythmPicture::gateRect(5, 20).center());
    click(lamps, gui::RhythmPicture::gateRect(5, 9).center(), Qt::RightButton);
    click(lamps, gui::RhythmPicture::gateRect(6, 31).center());
    auto& r = static_cast<Rhythm&>(module(h, "1Rhythm-"));
    int mask = 0;
    {
        auto held = h.engine().lock();
        EXPECT_TRUE(r.gateAt(5, 20));
        EXPECT_FALSE(r.gateAt(5, 9));
        EXPECT_EQ(r.rowLength(5), 10);
        EXPECT_TRUE(r.gateAt(6, 31));
        EXPECT_FALSE(r.gateAt(6, 30));
        mask = r.GateMask;
    }
    click(lamps, gui::RhythmPicture::enableRect(3).center());
    auto held = h.engine().lock();
    EXPECT_EQ(r.GateMask, mask ^ 8);
}

TEST(SatellitePanel, TheParentMenuListsTheMatricesOfItsSize) {
    GuiHarness h;
    h.placeModule("MOut8x4");
    gui::PanelFrame& frame = panel(h, "1MOut8x4-");
    auto* menu = part<QComboBox>(frame, "cbXmID");
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->count(), 1);
    EXPECT_EQ(menu->itemText(0), "1");
    h.placeModule("Matrix8x4");
    h.placeModule("Matrix8x4");
    runTicks(h, 1);
    ASSERT_EQ(menu->count(), 2);
    EXPECT_EQ(menu->itemText(1), "2");
    menu->setCurrentIndex(1);
    emit menu->activated(1);
    auto& out = static_cast<MatrixOutput&>(module(h, "1MOut8x4-"));
    auto held = h.engine().lock();
    EXPECT_EQ(out.Parent, 1);
}

}  // namespace
}  // namespace quillmer::testing
