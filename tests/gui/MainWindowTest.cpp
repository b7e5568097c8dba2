// The main window's menus, toolbar and strip against the engine they drive.

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QComboBox>
#include <QLabel>
#include <QMenuBar>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <gtest/gtest.h>

#include "gui/CpuMeter.h"
#include "gui/ModulesMenu.h"
#include "gui/panels/PanelFrame.h"
#include "gui/OptionsWindow.h"
#include "gui/ProgramOptionsPanel.h"
#include "gui/StripBar.h"
#include "gui/Workspace.h"
#include "tests/gui/GuiHarness.h"

namespace quillmer::testing {
namespace {

QStringList captions(const QList<QAction*>& actions) {
    QStringList texts;
    for (QAction* a : actions) texts << (a->isSeparator() ? QStringLiteral("-") : a->text());
    return texts;
}

TEST(Menus, TopLevelAndFileEntriesInOrder) {
    GuiHarness h;
    EXPECT_EQ(captions(h.window().menuBar()->actions()),
              QStringList({"&File", "&Edit", "&View", "&Modules", "&Options", "&UF-Prog", "M&ap", "&Help"}));
    QMenu* file = h.window().menuBar()->actions()[0]->menu();
    QStringList entries = captions(file->actions());
    entries = entries.mid(0, 11);  // the recent files follow, hidden while there are none
    EXPECT_EQ(entries, QStringList({"&New", "&Open...", "&Save", "Save &As...", "-", "Import &MIDI File...",
                                    "&Bio Sequence...", "&Tuning Table...", "-", "E&xit", "-"}));
    QMenu* help = h.window().menuBar()->actions()[7]->menu();
    EXPECT_EQ(captions(help->actions()),
              QStringList({"&Quillmer Help...", "&Visit Web Site...", "&About Quillmer..."}));
}

TEST(Menus, ModulesHasEveryGroupAndDisablesUnbuiltTypes) {
    GuiHarness h;
    gui::ModulesMenu& modules = h.window().modulesMenu();
    const ModuleRegistry& registry = h.engine().registry();

    // 21 groups: twenty on the menu, "Pickers" at the end of "Values".
    QStringList topGroups;
    for (QAction* a : modules.actions()) topGroups << a->text();
    ASSERT_EQ(topGroups.size(), 20);
    EXPECT_EQ(topGroups.first(), QStringLiteral("Values"));
    EXPECT_EQ(topGroups.last(), QStringLiteral("MIDI"));
    EXPECT_EQ(modules.groupMenu(MenuGroup::Pickers)->parent(), modules.groupMenu(MenuGroup::Values));
    EXPECT_EQ(captions(modules.groupMenu(MenuGroup::Pickers)->actions()),
              QStringList({"Pick04", "Pick08", "Pick16", "Pick24"}));

    int seen = 0;
    for (const MenuGroupInfo& group : menuGroups()) {
        ASSERT_NE(modules.groupMenu(group.group), nullptr) << group.caption;
        ++seen;
    }
    int entries = 0;
    for (QAction* entry : modules.findChildren<QAction*>()) {
        if (entry->data().isValid()) {
            ++entries;
            const auto id = static_cast<ModuleTypeId>(entry->data().toInt());
            EXPECT_EQ(entry->isEnabled(), registry.isBuilt(id)) << typeInfo(id).type;
            if (!registry.isBuilt(id)) {
                EXPECT_EQ(entry->toolTip(), QString::fromLatin1(gui::ModulesMenu::kNotYet));
            }
        }
    }
    // Each group lists its own entries in catalogue order (separators and sub-menus aside).
    QStringList values;
    for (QAction* a : modules.groupMenu(MenuGroup::Values)->actions())
        if (a->data().isValid()) values << a->text();
    EXPECT_EQ(values.first(), QStringLiteral("Button"));
    EXPECT_EQ(values.last(), QStringLiteral("Table #127"));
    EXPECT_EQ(values.size(), 12);
    EXPECT_EQ(seen, kMenuGroupCount);
    EXPECT_EQ(entries, kTypeCount);

    // The MIDI outputs and inputs are split by a separator; the matrix outputs have their own menu.
    EXPECT_TRUE(captions(modules.groupMenu(MenuGroup::MIDI)->actions()).contains(QStringLiteral("-")));
    const QStringList matrix = captions(modules.groupMenu(MenuGroup::Matrix)->actions());
    EXPECT_EQ(matrix.last(), QStringLiteral("M.Out"));
}

TEST(Menus, AModuleLandsOnTheCurrentPageAndMarksThePatch) {
    GuiHarness h;
    h.window().strip().groupButton()->click();  // page 4
    h.window().strip().pageButton(2)->click();  // page 6, South of the second group
    auto* divide = h.window().modulesMenu().findChild<QAction*>(QStringLiteral("mnuToolsDiv"));
    ASSERT_NE(divide, nullptr);
    ASSERT_TRUE(divide->isEnabled());
    divide->trigger();
    divide->trigger();
    processEvents();
    {
        auto held = h.engine().lock();
        std::vector<int> pages;
        h.engine().forEachModule([&](Module& m) { pages.push_back(m.Page); });
        EXPECT_EQ(pages, std::vector<int>({6, 6}));
        EXPECT_TRUE(h.session().ModifiedMark);
    }
    const QList<gui::PanelFrame*> panels = h.window().workspace().canvas(6)->findChildren<gui::PanelFrame*>();
    ASSERT_EQ(panels.size(), 2);
    EXPECT_FALSE(panels[0]->geometry().intersects(panels[1]->geometry())) << "a new panel doesn't cover another";
    EXPECT_EQ(h.window().workspace().page(), 6);
}

TEST(Pages, TheGroupButtonFourTimesComesBackToTheFirstGroup) {
    GuiHarness h;
    gui::StripBar& strip = h.window().strip();
    strip.pageButton(1)->click();  // East
    std::vector<int> pages;
    for (int i = 0; i < 4; ++i) {
        strip.groupButton()->click();
        auto held = h.engine().lock();
        pages.push_back(h.engine().CurrentPage());
    }
    EXPECT_EQ(pages, std::vector<int>({5, 9, 13, 1}));
    EXPECT_EQ(strip.groupButton()->text(), QStringLiteral("1"));
    EXPECT_TRUE(strip.pageButton(1)->isChecked());
    EXPECT_EQ(h.window().workspace().page(), 1);
    auto held = h.engine().lock();
    EXPECT_EQ(h.engine().bus[sysbus::Page], 1);
}

TEST(Pages, APageChosenByTheEngineMovesTheButtons) {
    GuiHarness h;
    {
        auto held = h.engine().lock();
        h.engine().showPage(11);  // West of the third group
    }
    processEvents();
    EXPECT_TRUE(h.window().strip().pageButton(3)->isChecked());
    EXPECT_EQ(h.window().strip().groupButton()->text(), QStringLiteral("3"));
    EXPECT_EQ(h.window().workspace().page(), 11);
}

TEST(Tempo, TheControlsAndTheEngineAgree) {
    GuiHarness h;
    gui::StripBar& strip = h.window().strip();
    const auto tempo = [&] {
        auto held = h.engine().lock();
        return h.engine().Tempo();
    };

    strip.tempoSpin()->setValue(200);
    EXPECT_EQ(tempo(), 200);
    EXPECT_EQ(strip.tempoSlider()->value(), 200);

    strip.tempoSlider()->setValue(90);
    EXPECT_EQ(tempo(), 90);
    EXPECT_EQ(strip.tempoSpin()->value(), 90);

    {
        auto held = h.engine().lock();
        h.engine().SetNewTempo(777);  // above the plain range: clamped
    }
    processEvents();
    EXPECT_EQ(tempo(), 254);
    EXPECT_EQ(strip.tempoSpin()->value(), 254);
    EXPECT_EQ(strip.tempoSlider()->value(), 254);

    QCheckBox* extended = h.program->optionsWindow().program()->extendedTempoBox();
    extended->setChecked(true);
    processEvents();
    EXPECT_EQ(strip.tempoSlider()->maximum(), 1000);
    strip.tempoSpin()->setValue(600);
    EXPECT_EQ(tempo(), 600);
    extended->setChecked(false);  // back to the plain range: the tempo comes down with it
    processEvents();
    EXPECT_EQ(tempo(), 254);
    EXPECT_EQ(strip.tempoSpin()->value(), 254);
    EXPECT_EQ(strip.tempoSlider()->maximum(), 254);
}

TEST(Toolbar, RunStopAndTheMidiMute) {
    GuiHarness h;
    QAction* run = h.window().action(QStringLiteral("Forward"));
    run->trigger();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().bus[sysbus::Run], 127);
        EXPECT_EQ(h.engine().bus[sysbus::Stop], 0);
    }
    run->trigger();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().bus[sysbus::Run], 0);
        EXPECT_EQ(h.engine().bus[sysbus::Stop], 127);
        h.engine().setRun(true);  // a load can start the run: the button follows
    }
    processEvents();
    h.window().refresh();
    EXPECT_TRUE(run->isChecked());

    QAction* mute = h.window().action(QStringLiteral("MISC06"));
    mute->trigger();
    {
        auto held = h.engine().lock();
        EXPECT_TRUE(h.engine().ports.AllNotesOffActive);
    }
    mute->trigger();
    auto held = h.engine().lock();
    EXPECT_FALSE(h.engine().ports.AllNotesOffActive);
    EXPECT_TRUE(h.engine().timersRunning());
    EXPECT_TRUE(h.window().action(QStringLiteral("MISC31"))->isEnabled());
}

TEST(Snapshots, StoreButtonsNameAndCountSnapshots) {
    GuiHarness h;
    gui::StripBar& strip = h.window().strip();
    EXPECT_EQ(strip.snapshotBox()->currentText(), QStringLiteral("AutoSave"));
    h.placeModule("Div");
    h.window().action(QStringLiteral("Camera"))->trigger();
    strip.snapshotBox()->setEditText(QStringLiteral("Verse"));
    emit strip.snapshotBox()->lineEdit()->textEdited(QStringLiteral("Verse"));
    h.window().action(QStringLiteral("Camera"))->trigger();
    EXPECT_EQ(strip.snapshotBox()->count(), 2);
    EXPECT_EQ(strip.snapshotBox()->itemText(0), QStringLiteral("000 Unnamed"));
    EXPECT_EQ(strip.snapshotBox()->itemText(1), QStringLiteral("001 Verse"));
    EXPECT_EQ(strip.snapshotSpin()->maximum(), 1);
    EXPECT_EQ(strip.snapshotSpin()->value(), 1);

    strip.snapshotSpin()->setValue(0);
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().CurrentSnapshot, 0);
    }
    h.window().action(QStringLiteral("FRONT"))->trigger();  // stored again under its own name
    EXPECT_EQ(strip.snapshotBox()->count(), 2);
}

TEST(Snapshots, ClearingAsksFirst) {
    GuiHarness h;
    h.placeModule("Div");
    h.window().action(QStringLiteral("Camera"))->trigger();
    QPushButton* clear = h.program->optionsWindow().program()->clearSnapshotsButton();

    h.dialogs.confirmAnswers = {false};
    clear->click();
    ASSERT_EQ(h.dialogs.confirms.size(), 1u);
    EXPECT_EQ(h.dialogs.confirms[0].text, QStringLiteral("Erase all Snapshots - This cannot be undone - Are you sure?"));
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().SnapshotCount, 1);
    }
    h.dialogs.confirmAnswers = {true};
    clear->click();
    processEvents();
    h.window().refresh();
    EXPECT_EQ(h.window().strip().snapshotBox()->count(), 0);
    EXPECT_EQ(h.window().strip().snapshotBox()->currentText(), QStringLiteral("AutoSave"));
    auto held = h.engine().lock();
    EXPECT_EQ(h.engine().SnapshotCount, 0);
    EXPECT_TRUE(h.session().ModifiedMark);
}

TEST(CpuMeter, ReadsTheProcessTimesPastAnOddCommandName) {
    // utime 1200 and stime 34 follow the state and eleven other fields; the name may hold
    // blanks and brackets of its own.
    const QByteArray line = "4711 (my (odd) prog) S 1 4711 4711 0 -1 4194560 900 0 0 0 1200 34 0 0 20 0 3 0";
    EXPECT_EQ(gui::cpuTicksFromStat(line), std::optional<uint64_t>(1234));
    EXPECT_EQ(gui::cpuTicksFromStat("4711 (cut short) S 1 2"), std::nullopt);
    EXPECT_EQ(gui::cpuTicksFromStat("no brackets at all"), std::nullopt);
    EXPECT_TRUE(gui::processCpuTicks().has_value());
}

}  // namespace
TEST(Keys, KeysPressedInTheWindowReachTheKeyOutputsOnce) {
    GuiHarness h;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Q, Qt::ShiftModifier);
    QApplication::sendEvent(&h.window(), &press);
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().bus[sysbus::KeyChar], 'Q');
        EXPECT_EQ(h.engine().bus[sysbus::KeyCtrl], 1);
        EXPECT_EQ(h.engine().bus[sysbus::KeyDown], 1) << "counted once, however far the event went";
    }
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Q, Qt::NoModifier);
    QApplication::sendEvent(&h.window(), &release);
    auto held = h.engine().lock();
    EXPECT_EQ(h.engine().bus[sysbus::KeyDown], 0);
}

}  // namespace quillmer::testing
