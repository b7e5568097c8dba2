// Gestures on panels that reach the modules: stage boxes, the status dialog, the channel
// dialog and the delete question of the note modules.

#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>

#include "gui/ChannelDialog.h"
#include "modules/midi/NoteOutputs.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

QLineEdit* stageBox(gui::PanelFrame& frame, int stage) { return static_cast<QLineEdit*>(frame.stageBox(stage)); }

uint8_t busOf(GuiHarness& h, const char* name) {
    Module& m = module(h, name);
    auto held = h.engine().lock();
    return h.engine().bus[m.OutBus];
}

void retype(QLineEdit* box, const QString& keys) {
    box->setFocus();
    box->clear();
    type(box, keys);
}

TEST(StageEdits, TypedValuesReachTheBusAndTheSnapshot) {
    GuiHarness h;
    h.placeModule("Step8");
    runTicks(h);  // the Stage input has been read once: a click's stage stays until it changes
    gui::PanelFrame& steps = panel(h, "1Step08-");
    retype(stageBox(steps, 0), QStringLiteral("100"));
    EXPECT_EQ(busOf(h, "1Step08-"), 100) << "the current stage goes out as it is typed";
    h.window().refresh();
    EXPECT_EQ(shownText(steps, "bxOut1"), QStringLiteral("100"));

    h.window().action(QStringLiteral("Camera"))->trigger();
    int stored = 0;
    {
        auto held = h.engine().lock();
        stored = h.engine().CurrentSnapshot;
    }
    retype(stageBox(steps, 0), QStringLiteral("5"));
    EXPECT_EQ(busOf(h, "1Step08-"), 5);
    stageBox(steps, 0)->clearFocus();  // the typing is over
    {
        auto held = h.engine().lock();
        h.session().snapshots.select(stored);
    }
    h.window().refresh();
    EXPECT_EQ(stageBox(steps, 0)->text(), QStringLiteral("100")) << "the snapshot kept the typed row";
    EXPECT_EQ(busOf(h, "1Step08-"), 100);

    // Text that isn't a number is 0, shown once the typing is over.
    retype(stageBox(steps, 1), QStringLiteral("abc"));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(stageBox(steps, 1), &enter);
    h.window().refresh();
    EXPECT_EQ(stageBox(steps, 1)->text(), QStringLiteral("0"));

    // A click selects a stage; the up-down sets the selected stage's value.
    click(stageBox(steps, 3), QPoint(3, 3));
    EXPECT_EQ(busOf(h, "1Step08-"), 0);
    part<QSpinBox>(steps, "UpDown1")->setValue(42);
    EXPECT_EQ(busOf(h, "1Step08-"), 42);
    runTicks(h);
    EXPECT_EQ(stageBox(steps, 3)->text(), QStringLiteral("42"));
    EXPECT_EQ(shownText(steps, "bxOut1"), QStringLiteral("42"));
    EXPECT_TRUE(part<QPushButton>(steps, "btnFill")->isEnabled());
}

TEST(StatusDialog, ThePriorityReachesTheModuleAndDisablingGreysTheOptions) {
    GuiHarness h;
    h.placeModule("Div");
    gui::ModuleStatusDialog& dialog = openStatus(h, "1Div-");
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Set: 1Div-"));
    EXPECT_TRUE(dialog.option(1)->isChecked()) << "a new module runs in \"2 = Default\"";
    EXPECT_EQ(dialog.option(2)->text(), QStringLiteral("3 = Late"));
    EXPECT_EQ(dialog.enableButton()->text(), QStringLiteral("Disable"));
    dialog.option(2)->click();
    EXPECT_FALSE(dialog.isVisible()) << "an option closes the dialog at once";
    EXPECT_EQ(module(h, "1Div-").priority(), priority::Late);
    h.window().refresh();
    EXPECT_EQ(panel(h, "1Div-").statusIcon()->picture(), 3);

    openStatus(h, "1Div-").option(0)->click();
    EXPECT_EQ(module(h, "1Div-").priority(), priority::First) << "index 0 stores 1";

    openStatus(h, "1Div-").enableButton()->click();
    EXPECT_EQ(module(h, "1Div-").Enabled, 0);
    gui::ModuleStatusDialog& again = openStatus(h, "1Div-");
    EXPECT_EQ(again.enableButton()->text(), QStringLiteral("Enable"));
    EXPECT_FALSE(again.option(3)->isEnabled());
    again.cancelButton()->click();
    EXPECT_EQ(module(h, "1Div-").Enabled, 0) << "Cancel changes nothing";
    EXPECT_EQ(module(h, "1Div-").priority(), priority::First);
    h.window().refresh();
    EXPECT_EQ(panel(h, "1Div-").statusIcon()->picture(), 9);
}

TEST(StatusDialog, ANoteModuleAsksBeforeItIsDeleted) {
    GuiHarness h;
    h.placeModule("MIDIVoice");
    h.dialogs.confirmAnswers = {false};
    openStatus(h, "1Voice-").deleteButton()->click();
    ASSERT_EQ(h.dialogs.confirms.size(), 1u);
    EXPECT_EQ(h.dialogs.confirms[0].text, QStringLiteral("Delete 1Voice-?"));
    EXPECT_EQ(h.moduleCount(), 1u);
    h.dialogs.confirmAnswers = {true};
    openStatus(h, "1Voice-").deleteButton()->click();
    EXPECT_EQ(h.moduleCount(), 0u);
    h.window().refresh();
    EXPECT_EQ(h.window().panels().count(), 0);
}

TEST(ChannelDialog, TheChosenSlotBecomesTheChanPort) {
    GuiHarness h;
    h.placeModule("MIDIVoice");
    h.placeModule("MIDIVoice");
    gui::PanelFrame& voice = panel(h, "2Voice-");
    auto* button = part<QPushButton>(voice, "bChan");
    EXPECT_EQ(button->text(), QStringLiteral("2 A")) << "a new module takes its index as channel";
    button->click();
    gui::ChannelDialog& dialog = h.window().panels().channelDialog();
    ASSERT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.slotButton(1)->isChecked());
    dialog.slotButton(16 * 3 + 15)->click();
    EXPECT_EQ(static_cast<const ChannelModule&>(module(h, "2Voice-")).ChanPort, 63);
    EXPECT_EQ(button->text(), QStringLiteral("16D"));
}

}  // namespace
}  // namespace quillmer::testing
