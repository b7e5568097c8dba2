// The formula panels: clicks on the lamp matrix and drags on the mouse pad reach the module,
// the tool tips a formula sets show on the inputs, switches and name, and a broken .ufn
// beside an opened patch is told with its file and line.

#include <QFile>

#include "gui/FileCommands.h"
#include "modules/formulas/FormulaModules.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

void setFormula(GuiHarness& h, int n, const char* text, const char* doc = "") {
    auto held = h.engine().lock();
    ASSERT_EQ(h.session().formulas.setFormula(n, text, doc), 0) << text;
}

// The centre of a matrix cell in the widget's own pixels, whatever its drawn size.
QPoint cellCentre(QWidget* view, int col, int row) {
    const double sx = static_cast<double>(view->width()) / kMatrixPixelWidth;
    const double sy = static_cast<double>(view->height()) / kMatrixPixelHeight;
    return {static_cast<int>((kMatrixMargin + col * kMatrixCellWidth + kMatrixCellWidth / 2) * sx),
            static_cast<int>((row * kMatrixCellHeight + kMatrixCellHeight / 2) * sy)};
}

void mouse(QWidget* w, QEvent::Type type, QPoint at, Qt::MouseButtons held) {
    const QPointF global(w->mapToGlobal(at));
    QMouseEvent e(type, QPointF(at), global, type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, Qt::NoModifier);
    QApplication::sendEvent(w, &e);
}

TEST(FormulaPanels, TheLampMatrixTogglesCellsUnderTheMouseUnlessLocked) {
    GuiHarness h;
    h.placeModule("UCalc6");
    QWidget* view = part<QWidget>(panel(h, "1ULM-"), "picMatrix");
    ASSERT_NE(view, nullptr);
    ASSERT_GT(view->width(), 0);
    click(view, cellCentre(view, 4, 1));
    const auto& m = static_cast<const FormulaModule&>(module(h, "1ULM-"));
    EXPECT_TRUE(m.cell(4, 1));
    EXPECT_FALSE(m.cell(5, 1));
    click(view, cellCentre(view, 31, 31));
    EXPECT_TRUE(m.cell(31, 31)) << "the far corner";
    click(view, cellCentre(view, 4, 1), Qt::RightButton);
    EXPECT_TRUE(m.cell(4, 1)) << "the right button leaves it";
    part<QPushButton>(panel(h, "1ULM-"), "chkLock")->click();
    click(view, cellCentre(view, 4, 1));
    EXPECT_TRUE(m.cell(4, 1)) << "locked";
    part<QPushButton>(panel(h, "1ULM-"), "chkLock")->click();
    click(view, cellCentre(view, 4, 1));
    EXPECT_FALSE(m.cell(4, 1));
}

TEST(FormulaPanels, TheMousePadGivesButtonAndOffsetsWhileDragged) {
    GuiHarness h;
    h.placeModule("UCalc7");
    QWidget* pad = part<QWidget>(panel(h, "1UFO-"), "Label1");
    ASSERT_NE(pad, nullptr);
    const auto& m = static_cast<const FormulaModule&>(module(h, "1UFO-"));
    mouse(pad, QEvent::MouseButtonPress, QPoint(20, 10), Qt::LeftButton);
    mouse(pad, QEvent::MouseMove, QPoint(20 + 40, 10 + 20), Qt::LeftButton);
    const double designX = 2700.0 / kPadUnitsPerPixel / pad->width();
    const double designY = 1500.0 / kPadUnitsPerPixel / pad->height();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(m.padReading(0), 1) << "the left button";
        EXPECT_EQ(m.padReading(4), 1) << "moving";
        EXPECT_NEAR(m.padReading(2), 40 * designX, 1.0);
        EXPECT_NEAR(m.padReading(3), 20 * designY, 1.0);
    }
    mouse(pad, QEvent::MouseButtonRelease, QPoint(60, 30), Qt::NoButton);
    auto held = h.engine().lock();
    EXPECT_EQ(m.padReading(4), 0) << "released";
}

TEST(FormulaPanels, ToolTipsFromTheFormulaShowOnInputsSwitchesAndName) {
    GuiHarness h;
    setFormula(h, 0, "ToolTip('unused', 'low', 'high', 'shift')", "Spread: two inputs and a switch");
    h.placeModule("UCalc2");
    gui::PanelFrame& frame = panel(h, "1UF2-");
    EXPECT_EQ(part<QPushButton>(frame, "chkA0")->toolTip(), QStringLiteral("In 3: pressed=1"));
    runTicks(h, 2);
    EXPECT_EQ(frame.inputButton(0)->toolTip(), QStringLiteral("low"));
    EXPECT_EQ(frame.inputButton(1)->toolTip(), QStringLiteral("high"));
    EXPECT_EQ(part<QPushButton>(frame, "chkA0")->toolTip(), QStringLiteral("shift"));
    EXPECT_EQ(frame.nameLabel()->toolTip(), QStringLiteral("Spread: two inputs and a switch"));
}

TEST(FormulaPanels, ABrokenUfnBesideAnOpenedPatchIsToldWithItsLine) {
    GuiHarness h;
    const QString patch = h.file(QStringLiteral("song.qmp"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUILLMER_SOURCE_DIR "/examples/demo.qmp"), patch));
    h.writeFile(QStringLiteral("song.ufn"), "0\n0\n2\nfirst = out(1)\nsecond = out(\x01)\n");
    h.dialogs.criticals.clear();
    h.window().files().openFile(patch);
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_TRUE(h.dialogs.criticals[0].text.contains(h.file(QStringLiteral("song.ufn")) + QStringLiteral(": line 5")))
        << h.dialogs.criticals[0].text.toStdString();
    EXPECT_EQ(h.session().CurrentFileName, patch.toStdString()) << "the patch itself opened";
}

}  // namespace
}  // namespace quillmer::testing
