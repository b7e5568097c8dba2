// The table panels and their dialogs: bars painted by the mouse, the scale knob, the Fill
// dialog sending every change to its table live, and the page table editor.

#include <QCheckBox>
#include <QDial>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QSpinBox>
#include <QFileInfo>
#include <QTemporaryDir>

#include "gui/FillDialog.h"
#include "gui/PageTableEditor.h"
#include "gui/panels/sequencers/TableViews.h"
#include "modules/sequencers/Pages.h"
#include "modules/sequencers/Slides.h"
#include "modules/sequencers/Steps.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

uint8_t busOf(GuiHarness& h, const char* name) {
    Module& m = module(h, name);
    auto held = h.engine().lock();
    return h.engine().bus[m.OutBus];
}

void mouse(QWidget* w, QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
           Qt::KeyboardModifiers keys = Qt::NoModifier) {
    QMouseEvent e(type, QPointF(at), QPointF(w->mapToGlobal(at)), button, held, keys);
    QApplication::sendEvent(w, &e);
}

// A point of a slide's bar area, in the view's pixels: stage `stage`, `up` pixels over the floor.
QPoint barPoint(int stage, int up, int barWidth = 10) {
    return gui::BarsView::local(SlideSequencer::kAreaLeft + stage * barWidth + 2, SlideSequencer::kAreaBottom - up);
}

gui::FillDialog& openFill(GuiHarness& h, const char* name) {
    part<QPushButton>(panel(h, name), "btnFill")->click();
    processEvents();
    gui::FillDialog* dialog = h.window().panels().fillDialog();
    if (!dialog) throw std::runtime_error("no Fill dialog");
    return *dialog;
}

}  // namespace

TEST(SlidePanels, BarsArePaintedByTheMouseAndTheStageComesBack) {
    GuiHarness h;
    h.placeModule("Slide8");
    gui::PanelFrame& frame = panel(h, "1Slide8-");
    auto* bars = part<gui::BarsView>(frame, "iBars");
    ASSERT_NE(bars, nullptr);

    // Left: the bar first hit follows the pointer's height wherever it goes.
    mouse(bars, QEvent::MouseButtonPress, barPoint(2, 16), Qt::LeftButton, Qt::LeftButton);
    mouse(bars, QEvent::MouseMove, barPoint(5, 32), Qt::NoButton, Qt::LeftButton);
    EXPECT_EQ(busOf(h, "1Slide8-"), 18) << "32 pixels at 64 for 36";
    mouse(bars, QEvent::MouseButtonRelease, barPoint(5, 32), Qt::LeftButton, Qt::NoButton);
    auto& slide = static_cast<SlideSequencer&>(module(h, "1Slide8-"));
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.stageValue(2), 18);
        EXPECT_EQ(slide.stageValue(5), 0);
        EXPECT_EQ(slide.CurrentStage, 0) << "back on the stage the input gave";
        EXPECT_NE(slide.Enabled, 0);
    }

    // Right: a curve across the bars, past both ends.
    mouse(bars, QEvent::MouseButtonPress, barPoint(3, 10), Qt::RightButton, Qt::RightButton);
    for (int stage = 3; stage >= -2; --stage)
        mouse(bars, QEvent::MouseMove, barPoint(stage, 10 + 4 * (3 - stage)), Qt::NoButton, Qt::RightButton);
    mouse(bars, QEvent::MouseMove, barPoint(12, 64), Qt::NoButton, Qt::RightButton);
    mouse(bars, QEvent::MouseButtonRelease, barPoint(12, 64), Qt::RightButton, Qt::NoButton);
    h.window().refresh();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.stageValue(3), 5);
        EXPECT_EQ(slide.stageValue(1), 10);
        EXPECT_EQ(slide.stageValue(0), 16) << "left of the first bar paints the first";
        EXPECT_EQ(slide.stageValue(7), 36) << "past the last, at the top: the limit";
    }
    EXPECT_EQ(bars->shown().row.at(7), 36) << "the view shows what the module holds";

    // A press beside the bars is a panel drag, not an edit.
    mouse(bars, QEvent::MouseButtonPress, gui::BarsView::local(200, 40), Qt::LeftButton, Qt::LeftButton);
    mouse(bars, QEvent::MouseButtonRelease, gui::BarsView::local(200, 40), Qt::LeftButton, Qt::NoButton);
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.CurrentStage, 0);
    }
}

TEST(SlidePanels, TheKnobSetsTheLimitAndTheUndoFollowsNormalize) {
    GuiHarness h;
    h.placeModule("Slide4");
    gui::PanelFrame& frame = panel(h, "1Slide4-");
    auto* knob = part<gui::KnobView>(frame, "iKnob");
    mouse(knob, QEvent::MouseButtonPress, QPoint(11, 11), Qt::LeftButton, Qt::LeftButton, Qt::AltModifier);
    mouse(knob, QEvent::MouseButtonRelease, QPoint(11, 11), Qt::LeftButton, Qt::NoButton);
    h.window().refresh();
    auto& slide = static_cast<SlideSequencer&>(module(h, "1Slide4-"));
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.ScaleLimit, 64);
    }
    EXPECT_EQ(knob->value(), 64);
    // Straight up is the middle of the dial, also without a key.
    mouse(knob, QEvent::MouseButtonPress, QPoint(11, 0), Qt::LeftButton, Qt::LeftButton);
    mouse(knob, QEvent::MouseMove, QPoint(22, 11), Qt::NoButton, Qt::LeftButton);
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.ScaleLimit, 95);
    }

    auto* undo = part<QPushButton>(frame, "cmdUndo");
    EXPECT_FALSE(undo->isEnabled());
    part<QSpinBox>(frame, "UpDown1")->setValue(40);
    part<QPushButton>(frame, "cmdScale")->click();
    h.window().refresh();
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_EQ(busOf(h, "1Slide4-"), 95);
    undo->click();
    h.window().refresh();
    EXPECT_FALSE(undo->isEnabled());
    EXPECT_EQ(busOf(h, "1Slide4-"), 40);
}

TEST(FillDialogs, EveryChangeReachesTheTableLiveAndCancelTakesItBack) {
    GuiHarness h;
    h.placeModule("Step8");
    {
        auto& step = static_cast<StepSequencer&>(module(h, "1Step08-"));
        auto held = h.engine().lock();
        step.UpdateSeq(std::array<uint8_t, 8>{1, 2, 3, 4, 5, 6, 7, 8});
    }
    gui::FillDialog& dialog = openFill(h, "1Step08-");
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Fill: 1Step08-"));
    EXPECT_TRUE(dialog.isModal());
    EXPECT_EQ(dialog.knob(1)->value(), 7) << "End is the caller's last stage";
    EXPECT_EQ(dialog.command(16)->toolTip(), QStringLiteral("Undo the Undos"));
    EXPECT_FALSE(dialog.command(12)->isEnabled());

    dialog.command(15)->click();  // Revrs
    EXPECT_EQ(busOf(h, "1Step08-"), 8) << "sent at once";
    dialog.knob(2)->setValue(100);
    dialog.command(3)->click();   // Add 100
    EXPECT_EQ(busOf(h, "1Step08-"), 108);
    EXPECT_TRUE(dialog.command(12)->isEnabled());
    dialog.command(12)->click();  // Undo
    EXPECT_EQ(busOf(h, "1Step08-"), 8);
    EXPECT_TRUE(dialog.command(16)->isEnabled());

    // Drawing on the bars: a press on the first bar at half height.
    gui::FillBars* bars = dialog.bars();
    mouse(bars, QEvent::MouseButtonPress, QPoint(2, bars->height() / 2), Qt::LeftButton, Qt::LeftButton);
    mouse(bars, QEvent::MouseButtonRelease, QPoint(2, bars->height() / 2), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(busOf(h, "1Step08-"), 63);

    dialog.command(13)->click();  // Cancel: "Exit without changes"
    processEvents();
    EXPECT_EQ(h.window().panels().fillDialog(), nullptr);
    EXPECT_EQ(busOf(h, "1Step08-"), 1);

    // OK keeps the changes.
    gui::FillDialog& again = openFill(h, "1Step08-");
    again.command(19)->click();  // Erase
    again.command(0)->click();
    processEvents();
    runTicks(h);
    EXPECT_EQ(shownText(panel(h, "1Step08-"), "bxOut1"), QStringLiteral("0"));
}

TEST(FillDialogs, ASlideLendsItsLimitAndTakesItBack) {
    GuiHarness h;
    h.placeModule("Slide16");
    gui::FillDialog& dialog = openFill(h, "1Slide16-");
    EXPECT_EQ(dialog.knob(4)->value(), 36) << "the scale is the slide's limit";
    EXPECT_EQ(dialog.knob(3)->value(), 36) << "High starts at the scale";
    dialog.command(9)->click();  // Invert against 36
    EXPECT_EQ(busOf(h, "1Slide16-"), 36);
    dialog.knob(4)->setValue(20);
    dialog.command(9)->click();
    auto& slide = static_cast<SlideSequencer&>(module(h, "1Slide16-"));
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.ScaleLimit, 20);
        EXPECT_EQ(slide.stageValue(0), 0);
    }
    dialog.reject();  // the title bar's close
    processEvents();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(slide.ScaleLimit, 20) << "the restore keeps the scale the dialog had";
        EXPECT_EQ(slide.stageValue(0), 0);
        EXPECT_EQ(slide.stageValue(15), 0);
    }
}

TEST(FillDialogs, FilesLoadIntoHoldOrSayTheyCannot) {
    GuiHarness h;
    h.placeModule("Run16");
    h.writeFile(QStringLiteral("row.seq"), std::string("\x05\x06\x87", 3));
    gui::FillDialog& dialog = openFill(h, "1Run16-");
    h.dialogs.openAnswers.push_back(h.file(QStringLiteral("row.seq")));
    click(dialog.part("bLoad"), QPoint(3, 3));
    EXPECT_EQ(dialog.bytesRead()->text(), QStringLiteral("3"));
    EXPECT_EQ(busOf(h, "1Run16-"), 5);
    EXPECT_EQ(h.dialogs.openDialogs.back().title, QStringLiteral("Select File to Load into Hold"));

    h.dialogs.openAnswers.push_back(h.file(QStringLiteral("missing.seq")));
    click(dialog.part("bLoad"), QPoint(3, 3));
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_EQ(h.dialogs.criticals[0].text, QStringLiteral("Unable to Load: ") + h.file(QStringLiteral("missing.seq")));
    EXPECT_EQ(busOf(h, "1Run16-"), 5);

    h.dialogs.saveAsAnswers.push_back(h.file(QStringLiteral("out.seq")));
    click(dialog.part("bSave"), QPoint(3, 3));
    EXPECT_EQ(QFileInfo(h.file(QStringLiteral("out.seq"))).size(), 128);
    dialog.command(0)->click();
}

TEST(FillDialogs, PagesKeepTheirPageWhileTheDialogIsOpen) {
    GuiHarness h;
    h.placeModule("Page08");
    h.placeModule("Page08");
    Module& first = module(h, "1Page08-");
    Module& second = module(h, "2Page08-");
    {
        auto held = h.engine().lock();
        for (auto* m : {&first, &second})
            for (int page = 0; page < 128; ++page)
                static_cast<PageSequencer*>(m)->setPageRow(page, std::array<uint8_t, 8>{static_cast<uint8_t>(page)});
    }
    connectThroughList(h, "1Page08-", 1, "~   3");
    connectThroughList(h, "2Page08-", 1, "~   3");
    runTicks(h);
    gui::FillDialog& dialog = openFill(h, "1Page08-");
    connectThroughList(h, "2Page08-", 1, "~   9");
    runTicks(h);
    EXPECT_EQ(busOf(h, "2Page08-"), 3) << "a Page of the same size stays on its page";
    dialog.knob(2)->setValue(50);
    dialog.command(3)->click();  // Add 50 to page 3 of the first
    EXPECT_EQ(busOf(h, "1Page08-"), 53);
    dialog.command(0)->click();
    processEvents();
    runTicks(h);
    EXPECT_EQ(busOf(h, "2Page08-"), 9);
    auto held = h.engine().lock();
    EXPECT_EQ(static_cast<PageSequencer&>(first).value(3, 0), 53);
    EXPECT_EQ(static_cast<PageSequencer&>(first).value(4, 0), 4);
}

TEST(FillDialogs, ClosingAfterItsPageWentFreesTheOthersOfTheType) {
    GuiHarness h;
    h.placeModule("Page08");
    h.placeModule("Page08");
    Module& first = module(h, "1Page08-");
    Module& second = module(h, "2Page08-");
    gui::FillDialog& dialog = openFill(h, "1Page08-");
    {
        auto held = h.engine().lock();
        h.engine().Delete(first);
    }
    h.window().refresh();
    dialog.command(0)->click();  // OK: nothing to send to
    processEvents();
    connectThroughList(h, "2Page08-", 1, "~   9");
    runTicks(h);
    auto held = h.engine().lock();
    EXPECT_EQ(static_cast<PageSequencer&>(second).CurrentPage, 9);
}

TEST(PageTables, TheEditorReturnsRowsAndNames) {
    GuiHarness h;
    h.placeModule("Page12");
    gui::PanelFrame& frame = panel(h, "1Page12-");
    connectThroughList(h, "1Page12-", 1, "~   2");
    runTicks(h);
    part<QPushButton>(frame, "btnTable")->click();
    processEvents();
    gui::PageTableEditor* editor = h.window().panels().pageTable();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->currentRow(), 2) << "opens on the page in force";
    type(editor->nameEdit(), QStringLiteral("Chorus with a long name"));
    EXPECT_EQ(editor->list()->item(2)->text(), QStringLiteral("002  Chorus with a long n"));

    // Fill the page through the editor, then copy it to page 5.
    editor->button("btnFill")->click();
    processEvents();
    gui::FillDialog* fill = editor->fillDialog();
    ASSERT_NE(fill, nullptr);
    EXPECT_EQ(fill->windowTitle(), QStringLiteral("Table Page 2"));
    fill->knob(2)->setValue(7);
    fill->command(3)->click();  // Add 7
    fill->command(0)->click();
    processEvents();
    editor->button("btnCopy")->click();
    editor->selectRow(5);
    editor->button("btnPaste")->click();
    editor->button("btnOK")->click();
    processEvents();
    runTicks(h);
    EXPECT_EQ(busOf(h, "1Page12-"), 7) << "the page in force is loaded again";
    auto& pages = static_cast<PageSequencer&>(module(h, "1Page12-"));
    auto held = h.engine().lock();
    EXPECT_EQ(pages.pageName(2), "Chorus with a long n");
    EXPECT_EQ(pages.value(5, 11), 7);
    EXPECT_EQ(pages.value(6, 11), 0);
}

TEST(HarmonicKeysDialogs, TypedKeysAreFilteredAndSaved) {
    QTemporaryDir data;
    const QByteArray was = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", data.path().toUtf8());
    HarmonicKeys keys;
    RandomSource random;
    gui::HarmonicKeysDialog dialog(keys, random, nullptr);
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Harmonic Sort Keys"));
    EXPECT_EQ(dialog.keyText(1)->text(), QStringLiteral("0 7 5 4 3 9 8 2 10 11 1 6"));
    dialog.keyText(4)->setFocus();
    type(dialog.keyText(4), QStringLiteral("4,x7"));
    EXPECT_EQ(dialog.keyText(4)->text(), QStringLiteral("4  7"));
    dialog.choice(4)->setChecked(true);
    // A double click on a row of the user's makes a random key.
    mouse(dialog.keyText(6), QEvent::MouseButtonDblClick, QPoint(3, 3), Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(dialog.docText(6)->text(), QStringLiteral("Random"));
    mouse(dialog.keyText(1), QEvent::MouseButtonDblClick, QPoint(3, 3), Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(dialog.keyText(1)->text(), QStringLiteral("0 7 5 4 3 9 8 2 10 11 1 6")) << "built-in rows stay";
    dialog.saveAndExit();
    EXPECT_EQ(keys.current, 4);
    EXPECT_EQ(keys.keyText(4), "4 7");
    HarmonicKeys back;
    std::string reason;
    EXPECT_TRUE(back.load(data.filePath(QStringLiteral("quillmer/hsort.bin")).toStdString(), reason)) << reason;
    EXPECT_EQ(back.keyText(6), keys.keyText(6));
    EXPECT_EQ(back.current, 4);
    if (was.isEmpty())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", was);
}

}  // namespace quillmer::testing
