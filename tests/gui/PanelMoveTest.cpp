// Moving panels: drags write the module's place, the engine snaps it and flips pages at the
// edges, a disabled module still moves; and modules made by a right click on the workspace.

#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolButton>

#include "gui/StripBar.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

TEST(Moving, ADisabledModuleFreezesItsOutputButStillMovesAndSnaps) {
    GuiHarness h;
    h.placeModule("Div");
    connectThroughList(h, "1Div-", 0, "~ Turbo");
    connectThroughList(h, "1Div-", 1, "~   1");
    runTicks(h, 3);
    gui::PanelFrame& divide = panel(h, "1Div-");
    const QString running = shownText(divide, "bxOut1");
    runTicks(h);
    ASSERT_NE(shownText(divide, "bxOut1"), running) << "follows the turbo counter";

    openStatus(h, "1Div-").enableButton()->click();
    h.window().refresh();
    EXPECT_EQ(divide.statusIcon()->picture(), 9);
    const QString frozen = shownText(divide, "bxOut1");
    runTicks(h, 5);
    EXPECT_EQ(shownText(divide, "bxOut1"), frozen);

    {
        auto held = h.engine().lock();
        h.engine().options.autoAlign = true;
    }
    const Module& m = module(h, "1Div-");
    const int32_t top = m.Top, left = m.Left;
    drag(divide.nameLabel(), QPoint(37, 21));
    EXPECT_EQ(m.Left, left + 37 * 15) << "the drag writes the place as dropped";
    EXPECT_EQ(m.Top, top + 21 * 15);
    runTicks(h);
    EXPECT_EQ(m.Left, snapToGrid(left + 37 * 15)) << "the next update snaps it";
    EXPECT_EQ(m.Top, snapToGrid(top + 21 * 15));
    EXPECT_EQ(divide.pos(), QPoint(m.Left / 15, m.Top / 15)) << "and the panel follows";
    EXPECT_EQ(shownText(divide, "bxOut1"), frozen);
}

// The name row looks at an event's type before taking it as a mouse
// event (the sanitizer build reported every other event cast to one).
TEST(Moving, EventsOtherThanTheMouseOnTheNameRowMoveNothing) {
    GuiHarness h;
    h.placeModule("Div");
    gui::PanelFrame& divide = panel(h, "1Div-");
    const QPoint before = divide.pos();
    QEvent enter(QEvent::Enter);
    QEvent leave(QEvent::Leave);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    QHelpEvent tip(QEvent::ToolTip, QPoint(2, 2), divide.nameLabel()->mapToGlobal(QPoint(2, 2)));
    for (QEvent* event : std::initializer_list<QEvent*>{&enter, &key, &tip, &leave})
        QApplication::sendEvent(divide.nameLabel(), event);
    processEvents();
    EXPECT_EQ(divide.pos(), before);
    drag(divide.nameLabel(), QPoint(30, 0));
    EXPECT_EQ(divide.pos(), before + QPoint(30, 0)) << "a drag still moves it";
}

TEST(Moving, PastAnEdgeThePanelGoesToTheNeighbourPageLeftBeforeTop) {
    GuiHarness h;
    h.window().resize(1400, 900);  // a frame the new panels fit in, so that only the drags flip
    processEvents();
    gui::StripBar& strip = h.window().strip();
    strip.groupButton()->click();   // the second group: pages 4..7
    strip.pageButton(1)->click();   // East, page 5
    h.placeModule("Div");
    h.placeModule("Div");
    h.placeModule("Div");
    runTicks(h);  // the new panels' first places are seen before the flip is on
    strip.flipButton()->click();
    ASSERT_TRUE(strip.flipButton()->isChecked());

    const auto dragAndTick = [&](const char* name, QPoint by) {
        strip.pageButton(1)->click();
        h.window().refresh();
        gui::PanelFrame& frame = panel(h, name);
        drag(frame.nameLabel(), by);
        runTicks(h);
        processEvents();
        h.window().refresh();
        return &frame;
    };
    gui::PanelFrame* west = dragAndTick("1Div-", QPoint(-200, 0));
    EXPECT_EQ(module(h, "1Div-").Page, 7);
    EXPECT_EQ(west->parentWidget(), h.window().workspace().canvas(7));

    dragAndTick("2Div-", QPoint(-200, -200));
    EXPECT_EQ(module(h, "2Div-").Page, 7) << "out at the top-left corner: West, since Left is tested first";

    dragAndTick("3Div-", QPoint(0, -200));
    EXPECT_EQ(module(h, "3Div-").Page, 4);
    EXPECT_EQ(h.window().workspace().page(), 4);

    // With the flip off a panel can leave the frame and stay on its page.
    strip.flipButton()->click();
    strip.pageButton(1)->click();
    h.placeModule("Div");
    dragAndTick("4Div-", QPoint(-500, 0));
    EXPECT_EQ(module(h, "4Div-").Page, 5);
    EXPECT_LT(module(h, "4Div-").Left, 0);
}

TEST(Moving, ARightClickOnTheWorkspaceMakesTheLastTypeThereAVoiceAtFirst) {
    GuiHarness h;
    QWidget* canvas = h.window().workspace().canvas(0);
    click(canvas, QPoint(200, 100), Qt::RightButton);
    ASSERT_EQ(h.moduleCount(), 1u);
    const Module& voice = module(h, "1Voice-");
    EXPECT_EQ(voice.info().type, "MIDIVoice");
    EXPECT_EQ(voice.Top, 100 * 15);
    EXPECT_EQ(voice.Left, 200 * 15);
    EXPECT_NE(h.window().panels().frame(QStringLiteral("1Voice-")), nullptr);

    h.placeModule("Div");
    click(canvas, QPoint(600, 400), Qt::RightButton);
    const Module& divide = module(h, "2Div-");
    EXPECT_EQ(divide.Top, 400 * 15);
    EXPECT_EQ(divide.Left, 600 * 15);

    // A right click on a panel is the panel's, not the workspace's.
    click(&panel(h, "2Div-"), QPoint(10, 10), Qt::RightButton);
    EXPECT_EQ(h.moduleCount(), 3u);
}

}  // namespace
}  // namespace quillmer::testing
