// Every knob's wheel, keys and typed entry, and the panels of the matrices, knob rows,
// pickers and switches working the modules they show.

#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QWheelEvent>

#include "gui/panels/sequencers/TableViews.h"
#include "modules/sequencers/Knobs.h"
#include "modules/sequencers/Picks.h"
#include "modules/sequencers/Slides.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

void wheel(QWidget* w, int notches, Qt::KeyboardModifiers keys = Qt::NoModifier) {
    QWheelEvent e(QPointF(5, 5), QPointF(w->mapToGlobal(QPoint(5, 5))), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                  keys, Qt::NoScrollPhase, false);
    QApplication::sendEvent(w, &e);
}

void key(QWidget* w, int code) {
    QKeyEvent e(QEvent::KeyPress, code, Qt::NoModifier);
    QApplication::sendEvent(w, &e);
}

int scaleLimit(GuiHarness& h, const char* name) {
    auto& slide = static_cast<SlideSequencer&>(module(h, name));
    auto held = h.engine().lock();
    return slide.ScaleLimit;
}

TEST(EveryKnob, WheelKeysAndTypedEntryTurnIt) {
    GuiHarness h;
    h.placeModule("Slide4");
    gui::PanelFrame& frame = panel(h, "1Slide4-");
    auto* knob = part<gui::KnobView>(frame, "iKnob");
    h.window().refresh();
    const int start = scaleLimit(h, "1Slide4-");
    wheel(knob, 2);
    EXPECT_EQ(scaleLimit(h, "1Slide4-"), start + 2);
    wheel(knob, -1, Qt::ShiftModifier);
    EXPECT_EQ(scaleLimit(h, "1Slide4-"), start - 8);
    key(knob, Qt::Key_End);
    EXPECT_EQ(scaleLimit(h, "1Slide4-"), 127);
    key(knob, Qt::Key_PageDown);
    key(knob, Qt::Key_Down);
    EXPECT_EQ(scaleLimit(h, "1Slide4-"), 116);

    QMouseEvent twice(QEvent::MouseButtonDblClick, QPointF(11, 11), QPointF(knob->mapToGlobal(QPoint(11, 11))),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(knob, &twice);
    auto* entry = knob->findChild<QLineEdit*>("knobEntry");
    ASSERT_NE(entry, nullptr);
    entry->setText("40");
    key(entry, Qt::Key_Return);
    EXPECT_EQ(scaleLimit(h, "1Slide4-"), 40);
}

TEST(GridPanels, KnobRowsAndPickersTakeTypedValues) {
    GuiHarness h;
    h.placeModule("Knob4");
    h.placeModule("Pick04");
    h.window().refresh();
    type(part<QLineEdit>(panel(h, "1Knob04-"), "bxV1_0"), "70");
    type(part<QLineEdit>(panel(h, "1Pick04-"), "bxV1_2"), "33");
    runTicks(h, 1);
    auto& knob = static_cast<KnobSequencer&>(module(h, "1Knob04-"));
    auto& pick = static_cast<PickSequencer&>(module(h, "1Pick04-"));
    auto held = h.engine().lock();
    EXPECT_EQ(knob.stageValue(0), 70);
    EXPECT_EQ(h.engine().bus[knob.OutBus], 70);
    EXPECT_EQ(pick.Selected, 2);
    EXPECT_EQ(h.engine().bus[pick.OutBus], 33);
}

}  // namespace
}  // namespace quillmer::testing
