// The zoom of the workspace: panels drawn larger or smaller, places and sizes kept in twips
// whatever the zoom, drags counted at the zoom, the zoom kept over a restart, and the wheel.

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

#include "gui/ConnectionView.h"
#include "gui/FileCommands.h"
#include "gui/ModuleMap.h"
#include "gui/Workspace.h"
#include "gui/Zoom.h"
#include "gui/panels/panels/DrawnView.h"
#include "gui/panels/sequencers/TableViews.h"
#include "modules/sequencers/Slides.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

void trigger(GuiHarness& h, const char* key) {
    h.window().action(QLatin1String(key))->trigger();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    processEvents();
}

QString zoomShown(GuiHarness& h) { return h.window().action(QStringLiteral("mnuViewZoomShown"))->text(); }

void wheel(QWidget* w, QPoint at, int delta, Qt::KeyboardModifiers keys) {
    QWheelEvent e(QPointF(at), QPointF(w->mapToGlobal(at)), QPoint(), QPoint(0, delta), Qt::NoButton, keys,
                  Qt::NoScrollPhase, false);
    QApplication::sendEvent(w, &e);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    processEvents();
}

QScrollArea& shownScroll(GuiHarness& h) { return *static_cast<QScrollArea*>(h.window().workspace().currentWidget()); }

void moveTo(GuiHarness& h, const char* name, int top, int left) {
    Module& m = module(h, name);
    {
        auto held = h.engine().lock();
        m.Top = top;
        m.Left = left;
    }
    h.window().refresh();
}

void mouse(QWidget* w, QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons held) {
    QMouseEvent e(type, at, w->mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(w, &e);
}

}  // namespace

TEST(ZoomSteps, SnapStepAndConvertWithinTheirBounds) {
    EXPECT_EQ(gui::nearestZoomStep(0), 50);
    EXPECT_EQ(gui::nearestZoomStep(-400), 50);
    EXPECT_EQ(gui::nearestZoomStep(100000), 200);
    EXPECT_EQ(gui::nearestZoomStep(130), 125);
    EXPECT_EQ(gui::zoomStep(100, 1), 110);
    EXPECT_EQ(gui::zoomStep(100, -2), 75);
    EXPECT_EQ(gui::zoomStep(200, 3), 200);
    EXPECT_EQ(gui::zoomStep(50, -1), 50);
    EXPECT_EQ(gui::zoomStep(133, 1), 150) << "from the nearest step";
    for (int percent : gui::kZoomSteps) {
        EXPECT_EQ(gui::zoomedPixels(1500, percent), percent) << percent;
        EXPECT_EQ(gui::pixelsToTwips(percent, percent), 1500) << percent;
        EXPECT_EQ(gui::pixelsToTwips(-percent, percent), -1500) << "drags to the left and up" << percent;
    }
    EXPECT_EQ(gui::zoomedPixels(1010, 100), 67) << "cut as the 100 % layout always was";
    EXPECT_EQ(gui::zoomedFontPixels(11, 50), 6);
    EXPECT_EQ(gui::zoomedFontPixels(1, 50), 1) << "never below a pixel";
}

TEST(Zoom, PanelsScaleByTheFactorAndKeepTheirTwips) {
    GuiHarness h;
    h.placeModule("Step8");
    const QSize normal = panel(h, "1Step08-").size();
    const QSize normalTwips = panel(h, "1Step08-").sizeTwips();
    const int normalFont = panel(h, "1Step08-").nameLabel()->font().pixelSize();
    const QSize normalBox = panel(h, "1Step08-").stageBox(0)->size();
    const Module& m = module(h, "1Step08-");
    const int width = m.Width, height = m.Height;
    EXPECT_EQ(zoomShown(h), QStringLiteral("Zoom: 100 %"));
    EXPECT_FALSE(h.window().action(QStringLiteral("mnuViewZoomReset"))->isEnabled());

    for (int i = 0; i < 3; ++i) trigger(h, "mnuViewZoomIn");
    EXPECT_EQ(h.window().workspace().zoom(), 150);
    EXPECT_EQ(zoomShown(h), QStringLiteral("Zoom: 150 %"));
    gui::PanelFrame& large = panel(h, "1Step08-");
    EXPECT_NEAR(large.width(), normal.width() * 1.5, 2);
    EXPECT_NEAR(large.height(), normal.height() * 1.5, 2);
    EXPECT_NEAR(large.stageBox(0)->width(), normalBox.width() * 1.5, 2);
    EXPECT_EQ(large.nameLabel()->font().pixelSize(), gui::zoomedFontPixels(normalFont, 150));
    EXPECT_EQ(large.sizeTwips(), normalTwips);
    EXPECT_EQ(m.Width, width) << "what the module keeps does not follow the zoom";
    EXPECT_EQ(m.Height, height);
    EXPECT_EQ(large.pos(), QPoint(m.Left / 10, m.Top / 10)) << "15 twips to a pixel, times 1.5";
    EXPECT_EQ(h.window().workspace().frameTwips().width(), h.window().workspace().toTwips(shownScroll(h).viewport()->width()));

    for (int i = 0; i < 20; ++i) trigger(h, "mnuViewZoomOut");
    EXPECT_EQ(h.window().workspace().zoom(), 50) << "held at the smallest step";
    EXPECT_FALSE(h.window().action(QStringLiteral("mnuViewZoomOut"))->isEnabled());
    EXPECT_NEAR(panel(h, "1Step08-").width(), normal.width() * 0.5, 2);

    trigger(h, "mnuViewZoomReset");
    EXPECT_EQ(panel(h, "1Step08-").size(), normal) << "back at 100 % to the pixel";
    EXPECT_EQ(panel(h, "1Step08-").stageBox(0)->size(), normalBox);
    EXPECT_EQ(h.window().panels().count(), 1);
    EXPECT_EQ(h.window().workspace().canvas(0)->findChildren<gui::PanelFrame*>().size(), 1) << "the old frames went";
}

TEST(Zoom, APanelShowsItsValuesAgainAndEditsStillReachTheModule) {
    GuiHarness h;
    h.placeModule("Step8");
    auto* box = static_cast<QLineEdit*>(panel(h, "1Step08-").stageBox(2));
    box->setText(QStringLiteral("99"));
    emit box->textEdited(box->text());
    trigger(h, "mnuViewZoomIn");
    box = static_cast<QLineEdit*>(panel(h, "1Step08-").stageBox(2));
    EXPECT_EQ(box->text(), QStringLiteral("99")) << "the new frame shows what the old one did";
    // A wheel notch on the stage box still edits at the zoom.
    wheel(box, QPoint(3, 3), 120, Qt::NoModifier);
    h.window().refresh();
    EXPECT_EQ(static_cast<QLineEdit*>(panel(h, "1Step08-").stageBox(2))->text(), QStringLiteral("100"));
}

TEST(Zoom, DragsCountTwipsAtTheZoomAndALetGoInPlaceMovesNothing) {
    GuiHarness h;
    h.placeModule("Div");
    moveTo(h, "1Div-", 1200, 1500);
    const Module& m = module(h, "1Div-");

    h.window().workspace().setZoom(200);
    processEvents();
    drag(panel(h, "1Div-").nameLabel(), QPoint(40, 20));
    EXPECT_EQ(m.Left, 1500 + 40 * 15 / 2) << "40 pixels at 200 % are 20 at 100 %";
    EXPECT_EQ(m.Top, 1200 + 20 * 15 / 2);
    drag(panel(h, "1Div-").nameLabel(), QPoint(-30, -10));
    EXPECT_EQ(m.Left, 1800 - 225);
    EXPECT_EQ(m.Top, 1350 - 75);

    // Places that are no whole number of pixels at the zoom stay as they are.
    moveTo(h, "1Div-", 1217, 1009);
    for (int percent : {67, 75, 110, 175}) {
        h.window().workspace().setZoom(percent);
        processEvents();
        drag(panel(h, "1Div-").nameLabel(), QPoint(0, 0));
        EXPECT_EQ(m.Left, 1009) << percent;
        EXPECT_EQ(m.Top, 1217) << percent;
    }
    h.window().workspace().setZoom(100);
}

TEST(Zoom, APatchMovedAt150PercentIsSavedAsOneMovedAt100) {
    QByteArray saved[2];
    const int zooms[2] = {100, 150};
    for (int run = 0; run < 2; ++run) {
        GuiHarness h;
        h.window().workspace().setZoom(zooms[run]);
        h.placeModule("Div");
        h.placeModule("Step8");
        moveTo(h, "1Div-", 600, 900);
        moveTo(h, "1Step08-", 3000, 240);
        // 30 and 15 pixels at 100 % are 45 and 22.5 at 150 %: the same 450 and 225 twips.
        drag(panel(h, "1Div-").nameLabel(), run == 0 ? QPoint(30, 16) : QPoint(45, 24));
        const Module& m = module(h, "1Div-");
        EXPECT_EQ(m.Left, 900 + 450);
        EXPECT_EQ(m.Top, 600 + 240);
        h.dialogs.saveAsAnswers = {h.file("moved.qmp")};
        ASSERT_TRUE(h.window().files().fileSaveAs());
        QFile file(h.file("moved.qmp"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        saved[run] = file.readAll();
    }
    ASSERT_FALSE(saved[0].isEmpty());
    EXPECT_EQ(saved[0], saved[1]) << "the zoom leaves nothing in the file";

    // Opened at 100 %, the panel lies where its twips say.
    GuiHarness h;
    h.writeFile(QStringLiteral("moved.qmp"), saved[1].toStdString());
    h.window().files().openFile(h.file("moved.qmp"));
    processEvents();
    EXPECT_EQ(panel(h, "1Div-").pos(), QPoint(1350 / 15, 840 / 15));
}

TEST(Zoom, SurvivesARestartThroughTheSettings) {
    GuiHarness h;
    h.window().workspace().setZoom(175);
    ASSERT_TRUE(h.exitProgram());
    h.store.sync();
    EXPECT_EQ(h.store.value(QStringLiteral("Settings/Zoom")).toString(), QStringLiteral("175"));
    h.restart();
    EXPECT_EQ(h.window().workspace().zoom(), 175);
    EXPECT_EQ(zoomShown(h), QStringLiteral("Zoom: 175 %"));
    h.placeModule("Div");
    EXPECT_EQ(panel(h, "1Div-").nameLabel()->font().pixelSize(), gui::zoomedFontPixels(11, 175));

    // A value no step has comes back as the nearest; one that is no number as 100 %.
    h.dialogs.saveAnswers = {SaveAnswer::No};
    ASSERT_TRUE(h.exitProgram());
    h.store.setValue(QStringLiteral("Settings/Zoom"), QStringLiteral("640"));
    h.restart();
    EXPECT_EQ(h.window().workspace().zoom(), 200);
    ASSERT_TRUE(h.exitProgram());
    h.store.setValue(QStringLiteral("Settings/Zoom"), QStringLiteral("big"));
    h.restart();
    EXPECT_EQ(h.window().workspace().zoom(), 100);
}

TEST(Zoom, CtrlWheelZoomsAboutThePointerAndPlainWheelScrolls) {
    GuiHarness h;
    h.window().resize(900, 600);
    processEvents();
    h.placeModule("Step8");
    gui::Workspace& workspace = h.window().workspace();
    QWidget* canvas = workspace.canvas(0);
    QScrollBar* down = shownScroll(h).verticalScrollBar();

    // A wheel event made here goes to its receiver alone: the page's scrolling view.
    wheel(shownScroll(h).viewport(), QPoint(300, 200), -120, Qt::NoModifier);
    EXPECT_EQ(workspace.zoom(), 100);
    EXPECT_GT(down->value(), 0) << "a plain wheel scrolls the page";
    down->setValue(0);

    // Over a stage box Ctrl and the wheel zoom and leave the value alone.
    auto* box = static_cast<QLineEdit*>(panel(h, "1Step08-").stageBox(0));
    const QString value = box->text();
    wheel(box, QPoint(3, 3), 120, Qt::ControlModifier);
    EXPECT_EQ(workspace.zoom(), 110);
    EXPECT_EQ(static_cast<QLineEdit*>(panel(h, "1Step08-").stageBox(0))->text(), value);

    // Half notches add up; the twip under the pointer stays under it.
    const QPoint pointer(400, 300);
    const QPoint viewportPoint = canvas->mapTo(shownScroll(h).viewport(), pointer);
    const int twipsX = workspace.toTwips(pointer.x());
    wheel(canvas, pointer, 60, Qt::ControlModifier);
    EXPECT_EQ(workspace.zoom(), 110);
    wheel(canvas, pointer, 60, Qt::ControlModifier);
    EXPECT_EQ(workspace.zoom(), 125);
    const QPoint under = canvas->mapFrom(shownScroll(h).viewport(), viewportPoint);
    EXPECT_NEAR(workspace.toTwips(under.x()), twipsX, 15);
    wheel(canvas, pointer, -240, Qt::ControlModifier);
    EXPECT_EQ(workspace.zoom(), 100);
}

TEST(Zoom, ConnectionLinesFollowThePanels) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    connectThroughList(h, "2Div-", 0, "1Div-");
    h.window().action(QStringLiteral("mnuViewLinks"))->setChecked(true);
    trigger(h, "mnuViewZoomIn");
    trigger(h, "mnuViewZoomIn");
    h.window().refreshConnections();
    const auto& segments = h.window().connections().segments();
    ASSERT_EQ(segments.size(), 1u);
    QPushButton* input = panel(h, "2Div-").inputButton(0);
    EXPECT_EQ(segments[0].line.p2(), input->mapTo(h.window().workspace().canvas(0), QPoint(0, input->height() / 2)));
    EXPECT_EQ(segments[0].line.p1().x(), panel(h, "1Div-").geometry().right());
}

TEST(Zoom, AClickInTheModuleMapBringsThePanelIntoViewAtTheZoom) {
    GuiHarness h;
    h.window().resize(900, 600);
    h.placeModule("Div");
    moveTo(h, "1Div-", 15000, 27000);  // 1800 by 1000 pixels at 100 %, 3600 by 2000 at 200 %
    h.window().workspace().setZoom(200);
    processEvents();
    h.window().openModuleMap();
    gui::ModuleMap& map = h.window().moduleMap();
    QListWidget* list = map.pageList(0);
    const QList<QListWidgetItem*> found = list->findItems(QStringLiteral("1Div-"), Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1);
    click(list->viewport(), list->visualItemRect(found[0]).center());
    processEvents();
    gui::PanelFrame& divide = panel(h, "1Div-");
    EXPECT_EQ(divide.pos(), QPoint(3600, 2000));
    const QRect seen(QPoint(shownScroll(h).horizontalScrollBar()->value(), shownScroll(h).verticalScrollBar()->value()),
                     shownScroll(h).viewport()->size());
    EXPECT_TRUE(seen.contains(divide.geometry())) << "the panel is in view";
}

// The drawn views report gestures in the units they had at 100 %, so the modules' hit tests
// are the same at every zoom.
TEST(Zoom, DrawnViewsReportGesturesInUnzoomedUnits) {
    QWidget canvas;
    gui::setZoomOf(&canvas, 200);
    QWidget frame(&canvas);

    gui::BarsView bars(8, 10, 300, &frame);
    bars.resize(400, 200);
    std::vector<gui::Gesture> got;
    QObject::connect(&bars, &gui::BarsView::gesture, [&](const gui::Gesture& g) { got.push_back(g); });
    const QPoint inBars = gui::BarsView::local(SlideSequencer::kAreaLeft + 12, SlideSequencer::kAreaBottom - 20);
    mouse(&bars, QEvent::MouseButtonPress, QPointF(inBars * 2), Qt::LeftButton, Qt::LeftButton);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].x, SlideSequencer::kAreaLeft + 12);
    EXPECT_EQ(got[0].y, SlideSequencer::kAreaBottom - 20);

    gui::KnobView knob(&frame);
    knob.resize(46, 46);
    got.clear();
    QObject::connect(&knob, &gui::KnobView::gesture, [&](const gui::Gesture& g) { got.push_back(g); });
    mouse(&knob, QEvent::MouseButtonPress, QPointF(20, 10), Qt::LeftButton, Qt::LeftButton);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].x, 150) << "10 pixels at 100 %";
    EXPECT_EQ(got[0].y, 75);

    QRect painted;
    const gui::Painter paint = [&painted](QPainter&, const QRect& area, const gui::Shown&) { painted = area; };
    gui::DrawnView drawn(paint, &frame);
    drawn.resize(120, 80);
    got.clear();
    QObject::connect(&drawn, &gui::DrawnView::gesture, [&](const gui::Gesture& g) { got.push_back(g); });
    mouse(&drawn, QEvent::MouseButtonPress, QPointF(50, 30), Qt::LeftButton, Qt::LeftButton);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(QPoint(got[0].x, got[0].y), QPoint(25, 15));
    EXPECT_EQ(QSize(got[0].number, got[0].item), QSize(60, 40));
    (void)drawn.grab();
    EXPECT_EQ(painted, QRect(0, 0, 60, 40));
}

}  // namespace quillmer::testing
