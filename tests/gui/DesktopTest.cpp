// The desktop program as a user meets it: recent files, failed opens, fields being typed
// into, the changed mark and the title, the transport key, device problems, stage boxes,
// window size and colours, undo and redo from the Edit menu, and the module palette.

#include <QApplication>
#include <QCheckBox>
#include <QCompleter>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QScreen>
#include <QStyle>
#include <QSpinBox>
#include <QWheelEvent>

#include "engine/Placement.h"
#include "gui/ConnectionView.h"
#include "gui/FileCommands.h"
#include "gui/Lamp.h"
#include "gui/Look.h"
#include "gui/ModuleMap.h"
#include "gui/ModulePalette.h"
#include "gui/OptionsWindow.h"
#include "gui/ProgramSettings.h"
#include "gui/RecentFiles.h"
#include "gui/StripBar.h"
#include "modules/sequencers/Steps.h"
#include "platform/FluidSynthInstance.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

QString title(GuiHarness& h) {
    h.window().refresh();
    return h.window().windowTitle();
}

std::string currentFile(GuiHarness& h) {
    auto held = h.engine().lock();
    return h.session().CurrentFileName;
}

int tempo(GuiHarness& h) {
    auto held = h.engine().lock();
    return h.engine().Tempo();
}

// --- recent files ---

TEST(RecentList, AnEntryOpensItsOwnFileAndTheListStaysDistinct) {
    GuiHarness h;
    for (const char* name : {"c1.qmp", "c2.qmp", "c3.qmp"}) {
        h.placeModule("Div");
        h.dialogs.saveAsAnswers = {h.file(QLatin1String(name))};
        ASSERT_TRUE(h.window().files().fileSaveAs());
    }
    h.window().files().fileNew();
    QAction* first = h.window().action(QStringLiteral("mnuFileMRU0"));
    ASSERT_EQ(first->text(), QStringLiteral("&1 c3.qmp"));
    first->trigger();
    EXPECT_EQ(currentFile(h), h.file("c3.qmp").toStdString());
    EXPECT_EQ(h.moduleCount(), 3u);
    EXPECT_EQ(h.program->recentFiles().paths(), QStringList({h.file("c3.qmp"), h.file("c2.qmp"), h.file("c1.qmp")}));

    h.window().action(QStringLiteral("mnuFileMRU2"))->trigger();  // the oldest comes to the top
    EXPECT_EQ(currentFile(h), h.file("c1.qmp").toStdString());
    EXPECT_EQ(h.program->recentFiles().paths(), QStringList({h.file("c1.qmp"), h.file("c3.qmp"), h.file("c2.qmp")}));
    EXPECT_EQ(h.window().action(QStringLiteral("mnuFileMRU0"))->text(), QStringLiteral("&1 c1.qmp"));
}

TEST(RecentList, TheOnlyEntryOpensAgain) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAsAnswers = {h.file("only.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    for (int i = 0; i < 3; ++i) {
        h.window().action(QStringLiteral("mnuFileMRU0"))->trigger();
        EXPECT_EQ(currentFile(h), h.file("only.qmp").toStdString());
    }
    EXPECT_EQ(h.program->recentFiles().paths(), QStringList({h.file("only.qmp")}));
}

// --- a failed open ---

TEST(FailedOpen, KeepsThePatchTheNameAndTheLightAndSaysWhy) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    h.dialogs.saveAsAnswers = {h.file("mine.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    h.placeModule("Step8");  // not saved yet

    QFile::copy(h.file("mine.qmp"), h.file("cut.qmp"));
    QFile cut(h.file("cut.qmp"));
    ASSERT_TRUE(cut.resize(cut.size() - 25));
    h.dialogs.saveAnswers = {SaveAnswer::No};
    h.dialogs.openAnswers = {h.file("cut.qmp")};
    h.window().files().fileOpen();

    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    const QString message = h.dialogs.criticals[0].text;
    EXPECT_TRUE(message.startsWith(QStringLiteral("Unable to Load: ") + h.file("cut.qmp"))) << message.toStdString();
    EXPECT_TRUE(message.contains(QStringLiteral("truncated at byte %1").arg(cut.size()))) << message.toStdString();
    EXPECT_EQ(h.moduleCount(), 3u);
    EXPECT_EQ(currentFile(h), h.file("mine.qmp").toStdString());
    EXPECT_TRUE(title(h).startsWith(QStringLiteral("*mine.qmp"))) << title(h).toStdString();
    EXPECT_EQ(h.window().strip().saveLight()->color(), gui::saveLightColor(2));
    EXPECT_FALSE(h.program->recentFiles().paths().contains(h.file("cut.qmp")));

    // Saving now writes the patch that is open, into its own file.
    ASSERT_TRUE(h.window().files().fileSave());
    h.window().files().fileNew();
    h.dialogs.openAnswers = {h.file("mine.qmp")};
    h.window().files().fileOpen();
    EXPECT_EQ(h.moduleCount(), 3u);
    EXPECT_EQ(QFile(h.file("cut.qmp")).size(), cut.size()) << "the bad file is never written";
}

// --- fields being typed into ---

TEST(Typing, TheTempoBoxIsNotRewrittenWhileTyped) {
    GuiHarness h;
    h.window().activateWindow();
    QSpinBox* spin = h.window().strip().tempoSpin();
    spin->setFocus();
    ASSERT_TRUE(spin->hasFocus());
    spin->findChild<QLineEdit*>()->selectAll();
    type(spin, QStringLiteral("14"));
    for (int i = 0; i < 5; ++i) {
        h.timers.advanceByMs(20);
        h.window().refresh();
    }
    EXPECT_EQ(spin->text(), QStringLiteral("14"));
    type(spin, QStringLiteral("6"));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(spin, &enter);
    EXPECT_EQ(tempo(h), 146);

    // Once taken, the box follows the engine again, focused or not.
    {
        auto held = h.engine().lock();
        h.engine().SetNewTempo(99);
    }
    h.window().refresh();
    EXPECT_EQ(spin->value(), 99);
}

TEST(Typing, AStageBoxKeepsItsTextUntilTheTypingIsOver) {
    GuiHarness h;
    h.placeModule("Step4");
    gui::PanelFrame& steps = panel(h, "1Step04-");
    auto* box = static_cast<QLineEdit*>(steps.stageBox(0));
    h.window().activateWindow();
    box->setFocus();
    box->clear();
    type(box, QStringLiteral("300"));  // the module keeps 127
    runTicks(h, 4);
    EXPECT_EQ(box->text(), QStringLiteral("300"));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(box, &enter);
    h.window().refresh();
    EXPECT_EQ(box->text(), QStringLiteral("127"));
}

// --- the changed mark ---

TEST(ChangedMark, TempoAndMovesMarkThePatchAndTheTitleShowsIt) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAsAnswers = {h.file("t.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    EXPECT_FALSE(title(h).startsWith(QLatin1Char('*')));

    h.window().strip().tempoSlider()->setValue(150);
    EXPECT_TRUE(title(h).startsWith(QStringLiteral("*t.qmp"))) << title(h).toStdString();
    h.dialogs.saveAnswers = {SaveAnswer::Cancel};
    EXPECT_FALSE(h.exitProgram(200)) << "quitting asks first";
    EXPECT_EQ(h.dialogs.saveQuestions.size(), 1u);

    ASSERT_TRUE(h.window().files().fileSave());
    EXPECT_FALSE(title(h).startsWith(QLatin1Char('*')));
    drag(panel(h, "1Div-").nameLabel(), QPoint(40, 30));
    auto held = h.engine().lock();
    EXPECT_TRUE(h.session().ModifiedMark) << "a move is saved, so it marks the patch";
}

TEST(Title, FileNameThenAuthorThenTheProgram) {
    GuiHarness h;
    EXPECT_EQ(title(h), QStringLiteral("Quillmer"));
    h.placeModule("Div");
    EXPECT_EQ(title(h), QStringLiteral("*Quillmer"));
    {
        auto held = h.engine().lock();
        h.session().userName = "Quillmer";
    }
    h.dialogs.saveAsAnswers = {h.file("e.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    EXPECT_EQ(title(h), QStringLiteral("e.qmp (Auth: Quillmer)  Quillmer"));
}

// --- the transport key ---

TEST(Transport, F5RunsAndStopsAndNeverReachesThePatch) {
    GuiHarness h;
    QAction* run = h.window().action(QStringLiteral("Forward"));
    ASSERT_TRUE(run->shortcuts().contains(QKeySequence(Qt::Key_F5)));
    h.window().activateWindow();
    const auto press = [&](QWidget* to) {
        QKeyEvent down(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
        QApplication::sendEvent(to, &down);
        QKeyEvent up(QEvent::KeyRelease, Qt::Key_F5, Qt::NoModifier);
        QApplication::sendEvent(to, &up);
    };
    const auto bus = [&](BusId id) {
        auto held = h.engine().lock();
        return h.engine().bus[id];
    };
    press(&h.window());
    EXPECT_EQ(bus(sysbus::Run), 127);
    EXPECT_EQ(bus(sysbus::KeyDown), 0);
    EXPECT_EQ(bus(sysbus::KeyChar), 0) << "F5 is not the key '4' to the patch";
    press(&h.window());
    EXPECT_EQ(bus(sysbus::Run), 0);
    EXPECT_EQ(bus(sysbus::Stop), 127);
}

// --- a synth without sound output ---

class NoSoundOutput final : public MidiOutputDevice {
public:
    const std::string& name() const override { return name_; }
    bool open() override {
        raise({MidiDeviceEvent::Kind::Error, 2,
               name_ + ": no sound output could be opened (tried PipeWire, PulseAudio, JACK and ALSA)"});
        return false;
    }
    void close() override {}
    bool isOpen() const override { return false; }
    void sendNow(std::span<const uint8_t>) override {}
    void sendAt(std::span<const uint8_t>, int32_t) override {}
    void flush() override {}
    void startTimeBase() override {}
    void stopTimeBase() override {}
    void reset() override {}

private:
    std::string name_ = kBuiltInSynthName;
};

class SilentMachine final : public MidiDeviceProvider {
public:
    std::vector<std::string> outputNames() override { return {kBuiltInSynthName}; }
    std::vector<std::string> inputNames() override { return {}; }
    std::unique_ptr<MidiOutputDevice> makeOutput(const std::string&, int) override {
        return std::make_unique<NoSoundOutput>();
    }
    std::unique_ptr<MidiInputDevice> makeInput(const std::string&, int) override { return nullptr; }
};

TEST(FirstStart, WithoutSoundTheOptionsWindowSaysWhyAndWhatToDo) {
    SilentMachine machine;
    GuiHarness h(gui::StartOptions{}, &machine);  // a first start: port A is the built-in synth
    processEvents();
    gui::OptionsWindow& ops = h.program->optionsWindow();
    EXPECT_TRUE(ops.isVisible());
    const QString text = ops.portProblem()->text();
    EXPECT_TRUE(ops.portProblem()->isVisibleTo(&ops));
    EXPECT_TRUE(text.contains(QStringLiteral("no sound output could be opened"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("sound server"))) << text.toStdString();
    h.program.reset();
}

// --- stage boxes ---

TEST(StageBoxes, ThreeDigitsFitAndTheWheelAndADragChangeTheValueAsOneStep) {
    GuiHarness h;
    h.placeModule("Step8");
    gui::PanelFrame& steps = panel(h, "1Step08-");
    auto* box = static_cast<QLineEdit*>(steps.stageBox(2));
    box->setText(QStringLiteral("120"));
    EXPECT_LE(box->fontMetrics().horizontalAdvance(QStringLiteral("120")), box->contentsRect().width() - 2)
        << "box " << box->contentsRect().width() << " px";

    const auto stage = [&] {
        Module& m = module(h, "1Step08-");
        auto held = h.engine().lock();
        return static_cast<StepSequencer&>(m).stageValue(2);
    };
    box->setText(QStringLiteral("0"));
    QWheelEvent up(QPointF(5, 5), QPointF(box->mapToGlobal(QPoint(5, 5))), QPoint(), QPoint(0, 240), Qt::NoButton,
                   Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(box, &up);
    EXPECT_EQ(stage(), 2);
    QWheelEvent tens(QPointF(5, 5), QPointF(box->mapToGlobal(QPoint(5, 5))), QPoint(), QPoint(0, 120), Qt::NoButton,
                     Qt::ShiftModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(box, &tens);
    EXPECT_EQ(stage(), 12);

    size_t steps0 = 0;
    {
        auto held = h.engine().lock();
        h.session().history.seal();
        steps0 = h.session().history.size();
    }
    drag(box, QPoint(0, -30));  // up by ten steps of three pixels
    EXPECT_EQ(stage(), 22);
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.session().history.size(), steps0 + 1) << "a drag is one step";
    }
    h.window().undoEdit();
    EXPECT_EQ(stage(), 12);
}

// --- the window on the screen ---

TEST(Window, TheFirstWindowFitsTheScreenAndTheMapTakesTheLooksColours) {
    const QPalette plainPalette = QApplication::palette();
    const QString plainStyle = QApplication::style()->name();
    gui::applyDarkStyle(*qApp);
    GuiHarness h;
    h.program->settings().mainSize = QSize(9000, 7000);
    h.program->settings().mainPos = QPoint(-400, 5000);
    h.window().restoreGeometryFromSettings();
    const QRect room = h.window().screen()->availableGeometry();
    EXPECT_TRUE(room.contains(h.window().frameGeometry())) << "window " << h.window().frameGeometry().width() << "x"
                                                           << h.window().frameGeometry().height() << " min "
                                                           << h.window().minimumSizeHint().width() << "x"
                                                           << h.window().minimumSizeHint().height() << " central "
                                                           << h.window().centralWidget()->minimumSizeHint().width() << "x"
                                                           << h.window().centralWidget()->minimumSizeHint().height()
                                                           << " strip " << h.window().strip().minimumSizeHint().width()
                                                           << " room " << room.width() << "x" << room.height();

    h.window().openModuleMap();
    auto* list = h.window().moduleMap().findChild<QListWidget*>(QStringLiteral("liMap3"));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->palette().color(QPalette::Base), QApplication::palette().color(QPalette::Base));
    EXPECT_LT(list->palette().color(QPalette::Base).lightness(), 100) << "no white boxes in the dark look";
    h.window().moduleMap().hide();
    QApplication::setStyle(plainStyle);
    QApplication::setPalette(plainPalette);
}

// --- undo and redo from the Edit menu ---

TEST(EditMenu, UndoAndRedoOfPlacingConnectingAndSnapshots) {
    GuiHarness h;
    QAction* undo = h.window().action(QStringLiteral("mnuEditUndo"));
    QAction* redo = h.window().action(QStringLiteral("mnuEditRedo"));
    ASSERT_NE(undo, nullptr);
    EXPECT_EQ(undo->shortcut(), QKeySequence(QKeySequence::Undo));
    EXPECT_TRUE(redo->shortcuts().contains(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)));
    h.window().refresh();
    EXPECT_FALSE(undo->isEnabled());

    h.placeModule("Div");
    h.placeModule("Div");
    connectThroughList(h, "1Div-", 0, "2Div-");
    h.window().refresh();
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_TRUE(undo->text().contains(QStringLiteral("Connect"))) << undo->text().toStdString();
    h.window().action(QStringLiteral("Camera"))->trigger();

    undo->trigger();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().SnapshotCount, 0);
    }
    undo->trigger();
    EXPECT_EQ(panel(h, "1Div-").inputButton(0)->text(), QStringLiteral(" Off (0)"));
    undo->trigger();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_EQ(h.window().panels().count(), 1);
    redo->trigger();
    redo->trigger();
    EXPECT_EQ(h.window().panels().count(), 2);
    EXPECT_EQ(panel(h, "1Div-").inputButton(0)->text(), QStringLiteral("2Div-"));
    EXPECT_TRUE(title(h).startsWith(QLatin1Char('*')));

    // A new patch has nothing to undo.
    h.dialogs.saveAnswers = {SaveAnswer::No};
    h.window().files().fileNew();
    h.window().refresh();
    EXPECT_FALSE(undo->isEnabled());
    EXPECT_FALSE(redo->isEnabled());
}

// --- the module palette ---

TEST(Palette, FindsByNameCaptionOrGroupAndEnterPlacesTheModule) {
    GuiHarness h;
    gui::ModulePalette& palette = h.window().palette();
    EXPECT_EQ(h.window().menuBar()->cornerWidget(Qt::TopRightCorner), &palette);
    const auto first = [&](const char* typed) {
        const std::vector<ModuleTypeId> found = palette.matches(QLatin1String(typed));
        return found.empty() ? std::string() : std::string(typeInfo(found.front()).type);
    };
    EXPECT_EQ(first("div"), "Div");
    EXPECT_EQ(first("Divide"), "Div");
    EXPECT_EQ(first("step8"), "Step8");
    EXPECT_EQ(first("zzz"), "");
    const std::vector<ModuleTypeId> steps = palette.matches(QStringLiteral("Steps"));
    EXPECT_GE(steps.size(), 7u) << "a group's caption finds its types";
    for (ModuleTypeId t : palette.matches(QStringLiteral("e")))
        EXPECT_TRUE(h.engine().registry().isBuilt(t)) << "only types that run";

    palette.setFocus();
    palette.setText(QString());
    type(&palette, QStringLiteral("Step1"));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(&palette, &enter);
    processEvents();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_TRUE(palette.text().isEmpty());
    auto held = h.engine().lock();
    EXPECT_NE(h.engine().findModule("1Step12-"), nullptr);
}


// --- the connection view ---

TEST(Connections, LinesRunFromSourcesToInputsAndToThePageEdgeFromOtherPages) {
    GuiHarness h;
    h.placeModule("Div");    // 1Div-
    h.placeModule("Div");    // 2Div-
    h.placeModule("Add");    // 1Add-
    {
        auto held = h.engine().lock();
        h.engine().MapCommand("2Div-", 0, 3);  // a source on another page
    }
    connectThroughList(h, "1Add-", 0, "1Div-");
    connectThroughList(h, "1Add-", 1, "2Div-");
    connectThroughList(h, "1Div-", 0, "~  12");  // a constant: no line

    QAction* toggle = h.window().action(QStringLiteral("mnuViewLinks"));
    ASSERT_NE(toggle, nullptr);
    toggle->setChecked(true);
    h.window().refresh();
    gui::ConnectionView& view = h.window().connections();
    EXPECT_TRUE(view.isVisible());
    EXPECT_EQ(view.parentWidget(), h.window().workspace().canvas(0));
    ASSERT_EQ(view.segments().size(), 2u);

    gui::PanelFrame& add = panel(h, "1Add-");
    gui::PanelFrame& div = panel(h, "1Div-");
    QWidget* canvas = h.window().workspace().canvas(0);
    for (const gui::ConnectionView::Segment& s : view.segments()) {
        const int row = s.link.row;
        const QPoint input = add.inputButton(row)->mapTo(canvas, QPoint(0, add.inputButton(row)->height() / 2));
        EXPECT_EQ(s.line.p2(), input) << "row " << row;
        if (row == 0) {
            EXPECT_FALSE(s.offPage);
            EXPECT_EQ(s.link.source, QStringLiteral("1Div-"));
            EXPECT_EQ(s.line.p1().x(), div.geometry().right());
        } else {
            EXPECT_TRUE(s.offPage);
            EXPECT_EQ(s.link.source, QStringLiteral("2Div-"));
            EXPECT_EQ(s.link.sourcePage, 3);
            EXPECT_EQ(s.line.p1(), QPoint(0, input.y()));
        }
    }

    // Hovering a panel brings out its sources and listeners; an input button only its source.
    view.setHovered(QStringLiteral("1Add-"));
    EXPECT_EQ(view.highlighted(), QStringList({"1Div-", "2Div-"}));
    view.setHovered(QStringLiteral("1Add-"), 1);
    EXPECT_EQ(view.highlighted(), QStringList({"2Div-"}));
    view.setHovered(QStringLiteral("1Div-"));
    EXPECT_EQ(view.highlighted(), QStringList({"1Add-"}));

    // The lines follow a move and go with a deleted source.
    drag(div.nameLabel(), QPoint(0, 60));
    h.window().refresh();
    EXPECT_EQ(view.segments()[0].line.p1().y(), panel(h, "1Div-").geometry().top() + 10);
    {
        auto held = h.engine().lock();
        h.engine().MapCommand("1Div-", 1, 0);
    }
    h.window().refresh();
    EXPECT_EQ(view.segments().size(), 1u);

    toggle->setChecked(false);
    EXPECT_FALSE(view.isVisible());
}


// --- snapshot edits ---

TEST(SnapshotEdits, TheBoxMarksChangedSettingsAndSaveOffersToStoreThem) {
    GuiHarness h;
    h.placeModule("Step4");
    gui::PanelFrame& steps = panel(h, "1Step04-");
    QLabel* mark = h.window().strip().snapshotEditedMark();
    h.window().action(QStringLiteral("Camera"))->trigger();  // slot 0
    h.window().action(QStringLiteral("Camera"))->trigger();  // slot 1, in use
    h.window().refresh();
    EXPECT_FALSE(mark->isEnabled());

    auto* box = static_cast<QLineEdit*>(steps.stageBox(1));
    box->setFocus();
    box->clear();
    type(box, QStringLiteral("77"));
    box->clearFocus();
    h.window().refresh();
    EXPECT_TRUE(mark->isEnabled());
    EXPECT_FALSE(mark->text().isEmpty());

    // Undo takes the mark back with the edit.
    h.window().undoEdit();
    EXPECT_FALSE(mark->isEnabled());
    h.window().redoEdit();
    EXPECT_TRUE(mark->isEnabled());

    h.dialogs.saveAsAnswers = {h.file("snap.qmp")};
    h.dialogs.saveAnswers = {SaveAnswer::Yes};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    ASSERT_EQ(h.dialogs.saveQuestions.size(), 1u);
    EXPECT_TRUE(h.dialogs.saveQuestions[0].contains(QStringLiteral("001"))) << h.dialogs.saveQuestions[0].toStdString();
    h.window().refresh();
    EXPECT_FALSE(mark->isEnabled());
    {
        auto held = h.engine().lock();
        h.session().snapshots.select(0);
        h.session().snapshots.select(1);
    }
    h.window().refresh();
    EXPECT_EQ(box->text(), QStringLiteral("77")) << "the snapshot in use kept the edit";

    // Recalling another snapshot clears the mark; a save then asks nothing.
    type(box, QString());
    {
        auto held = h.engine().lock();
        h.session().snapshots.select(0);
    }
    h.window().refresh();
    EXPECT_FALSE(mark->isEnabled());
    ASSERT_TRUE(h.window().files().fileSave());
    EXPECT_EQ(h.dialogs.saveQuestions.size(), 1u);
}

TEST(FirstStart, ALargeFontDisplayGetsTheMessageUntilTheOptionTurnsItOff) {
    GuiHarness h;
    EXPECT_TRUE(h.dialogs.informations.empty()) << "96 dots per inch is the standard size";

    h.dpi = 120;
    h.restart();
    ASSERT_EQ(h.dialogs.informations.size(), 1u);
    const QStringList lines = h.dialogs.informations[0].text.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], QStringLiteral("Your display is set to a large or nonstandard font size."));
    EXPECT_EQ(lines[3], QStringLiteral("[To disable this message, check Options/Warning Off.]"));

    auto* warningOff = h.program->optionsWindow().findChild<QCheckBox*>(QStringLiteral("chkNoFontMsg"));
    ASSERT_NE(warningOff, nullptr);
    EXPECT_EQ(warningOff->text(), QStringLiteral("Warning Off"));
    warningOff->click();
    ASSERT_TRUE(h.exitProgram()) << "the option is kept in the settings at exit";
    h.dialogs.informations.clear();
    h.restart();
    EXPECT_TRUE(h.dialogs.informations.empty());
}

}  // namespace
}  // namespace quillmer::testing
