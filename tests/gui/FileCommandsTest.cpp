// The file commands of the main window: the save question, New, Open, Save As, drops,
// recent files and what a failed load leaves behind.

#include <QFile>
#include <gtest/gtest.h>

#include "gui/FileCommands.h"
#include "gui/Lamp.h"
#include "gui/PanelBoard.h"
#include "gui/RecentFiles.h"
#include "gui/StripBar.h"
#include "tests/gui/GuiHarness.h"

namespace quillmer::testing {
namespace {

uint64_t ticksAfter(GuiHarness& h, int ms) {
    uint64_t before = 0;
    {
        auto held = h.engine().lock();
        before = h.engine().ticksRun();
    }
    h.timers.advanceByMs(ms);
    auto held = h.engine().lock();
    return h.engine().ticksRun() - before;
}

TEST(SaveQuestion, NewWithChangesAndCancelKeepsThePatchRunning) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAnswers = {SaveAnswer::Cancel};
    h.window().files().fileNew();

    ASSERT_EQ(h.dialogs.saveQuestions.size(), 1u);
    EXPECT_EQ(h.dialogs.saveQuestions[0], QStringLiteral("Unnamed.qmp has been changed.  Save it now?"));
    EXPECT_TRUE(h.dialogs.cancelOffered[0]);
    EXPECT_EQ(h.moduleCount(), 1u);
    {
        auto held = h.engine().lock();
        EXPECT_TRUE(h.session().ModifiedMark);
        EXPECT_TRUE(h.engine().timersRunning());
    }
    EXPECT_GT(ticksAfter(h, 100), 0u);
}

TEST(SaveQuestion, NamesTheOpenFileAndNoGoesOn) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAsAnswers = {h.file("song.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    h.placeModule("Div");

    h.dialogs.saveAnswers = {SaveAnswer::No};
    h.window().files().fileNew();
    ASSERT_EQ(h.dialogs.saveQuestions.size(), 1u);
    EXPECT_EQ(h.dialogs.saveQuestions[0], QStringLiteral("song.qmp has been changed.  Save it now?"));
    EXPECT_EQ(h.moduleCount(), 0u);
    EXPECT_EQ(h.window().windowTitle(), QStringLiteral("Quillmer"));
    EXPECT_GT(ticksAfter(h, 100), 0u);
    // A clean patch asks nothing.
    h.window().files().fileNew();
    EXPECT_EQ(h.dialogs.saveQuestions.size(), 1u);
}

TEST(SaveQuestion, YesSavesFirstAndACancelledSaveStops) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAnswers = {SaveAnswer::Yes};
    h.dialogs.saveAsAnswers = {QString()};  // the user backs out of the file dialog
    h.window().files().fileNew();
    EXPECT_EQ(h.moduleCount(), 1u) << "a save that didn't happen must not lose the patch";

    h.dialogs.saveAnswers = {SaveAnswer::Yes};
    h.dialogs.saveAsAnswers = {h.file("kept.qmp")};
    h.window().files().fileNew();
    EXPECT_EQ(h.moduleCount(), 0u);
    EXPECT_TRUE(QFile::exists(h.file("kept.qmp")));
    ASSERT_EQ(h.dialogs.saveDialogs.size(), 2u);
    EXPECT_EQ(h.dialogs.saveDialogs[1].title, QStringLiteral("Save Module File"));
    EXPECT_EQ(h.dialogs.saveDialogs[1].text, QString::fromLatin1(gui::FileCommands::kSaveFilter));
}

TEST(SaveQuestion, TheSaveLightSwitchesTheQuestionOffAndOn) {
    GuiHarness h;
    gui::Lamp* light = h.window().strip().saveLight();
    EXPECT_EQ(light->color(), gui::saveLightColor(1));
    h.placeModule("Div");
    EXPECT_EQ(light->color(), gui::saveLightColor(2));

    emit light->clicked();
    EXPECT_NE(light->color(), gui::saveLightColor(2));
    h.placeModule("Div");
    EXPECT_NE(light->color(), gui::saveLightColor(2)) << "no yellow warning while disarmed";
    h.window().files().fileNew();
    EXPECT_TRUE(h.dialogs.saveQuestions.empty());
    EXPECT_EQ(h.moduleCount(), 0u);

    h.placeModule("Div");
    emit light->clicked();  // armed again: the change made meanwhile counts
    EXPECT_EQ(light->color(), gui::saveLightColor(2));
    h.dialogs.saveAnswers = {SaveAnswer::Cancel};
    h.window().files().fileNew();
    EXPECT_EQ(h.dialogs.saveQuestions.size(), 1u);
}

TEST(SaveQuestion, ClosingAtTheEndOfADesktopSessionOffersOnlyYesAndNo) {
    GuiHarness h;
    h.placeModule("Div");
    h.window().setSystemShutdown(true);
    h.dialogs.saveAnswers = {SaveAnswer::No};
    EXPECT_TRUE(h.exitProgram());
    ASSERT_EQ(h.dialogs.cancelOffered.size(), 1u);
    EXPECT_FALSE(h.dialogs.cancelOffered[0]);
}

TEST(SaveQuestion, CancelOnCloseKeepsTheProgramUp) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAnswers = {SaveAnswer::Cancel};
    EXPECT_FALSE(h.exitProgram(200));
    EXPECT_TRUE(h.window().isVisible());
    EXPECT_GT(ticksAfter(h, 100), 0u);
}

TEST(OpenAndLoad, AFailedLoadKeepsThePatchAndSaysWhy) {
    GuiHarness h;
    h.placeModule("Div");
    h.writeFile(QStringLiteral("broken.qmp"), "not a patch");
    h.dialogs.saveAnswers = {SaveAnswer::No};
    h.dialogs.openAnswers = {h.file("broken.qmp")};
    h.window().files().fileOpen();

    ASSERT_EQ(h.dialogs.openDialogs.size(), 1u);
    EXPECT_EQ(h.dialogs.openDialogs[0].title, QStringLiteral("Open Module File"));
    EXPECT_EQ(h.dialogs.openDialogs[0].text, QString::fromLatin1(gui::FileCommands::kOpenFilter));
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_EQ(h.dialogs.criticals[0].text, QStringLiteral("Unable to Load: ") + h.file("broken.qmp") +
                                               QStringLiteral("\n\nthe file is shorter than a module file's header"));
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_GT(ticksAfter(h, 100), 0u) << "the clock runs again after a failed load";
    auto held = h.engine().lock();
    EXPECT_TRUE(h.session().ModifiedMark) << "the patch is still the changed one";
    EXPECT_TRUE(h.session().CurrentFileName.empty());
}

TEST(OpenAndLoad, CancellingTheOpenDialogKeepsEverything) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAnswers = {SaveAnswer::No};
    h.dialogs.openAnswers = {QString()};
    h.window().files().fileOpen();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_GT(ticksAfter(h, 100), 0u);
}

TEST(OpenAndLoad, SavedPatchComesBackWithItsName) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    h.dialogs.saveAsAnswers = {h.file("two.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    EXPECT_EQ(h.window().windowTitle().endsWith(QStringLiteral("two.qmp  Quillmer")), true) << h.window().windowTitle().toStdString();
    h.window().files().fileNew();

    h.dialogs.openAnswers = {h.file("two.qmp")};
    h.window().files().fileOpen();
    EXPECT_EQ(h.moduleCount(), 2u);
    EXPECT_TRUE(h.dialogs.criticals.empty());
    EXPECT_EQ(h.window().panels().count(), 2);
}

TEST(Drops, AMissingOrForeignFileDoesNothing) {
    GuiHarness h;
    h.placeModule("Div");
    h.window().dropFiles({QUrl::fromLocalFile(h.file("gone.qmp"))});
    h.writeFile(QStringLiteral("notes.txt"), "hello");
    h.window().dropFiles({QUrl::fromLocalFile(h.file("notes.txt"))});
    EXPECT_TRUE(h.dialogs.saveQuestions.empty());
    EXPECT_TRUE(h.dialogs.criticals.empty());
    EXPECT_EQ(h.moduleCount(), 1u);
    auto held = h.engine().lock();
    EXPECT_TRUE(h.session().CurrentFileName.empty());
}

TEST(Drops, TheFirstDroppedPatchOpens) {
    GuiHarness h;
    h.placeModule("Div");
    h.dialogs.saveAsAnswers = {h.file("one.qmp")};
    ASSERT_TRUE(h.window().files().fileSaveAs());
    h.window().files().fileNew();
    h.window().dropFiles({QUrl::fromLocalFile(h.file("one.qmp")), QUrl::fromLocalFile(h.file("gone.qmp"))});
    EXPECT_EQ(h.moduleCount(), 1u);
    auto held = h.engine().lock();
    EXPECT_EQ(h.session().CurrentFileName, h.file("one.qmp").toStdString());
}

TEST(RecentFiles, FiveNewestFirstAndAMissingOneIsNotOpened) {
    gui::RecentFiles recent;
    for (int i = 1; i <= 7; ++i) recent.add(QStringLiteral("/p/%1.qmp").arg(i));
    recent.add(QStringLiteral("/p/5.qmp"));
    EXPECT_EQ(recent.paths(), QStringList({"/p/5.qmp", "/p/7.qmp", "/p/6.qmp", "/p/4.qmp", "/p/3.qmp"}));

    GuiHarness h;
    for (const char* name : {"a.qmp", "b.qmp"}) {
        h.placeModule("Div");
        h.dialogs.saveAsAnswers = {h.file(QLatin1String(name))};
        ASSERT_TRUE(h.window().files().fileSaveAs());
    }
    EXPECT_EQ(h.program->recentFiles().paths(), QStringList({h.file("b.qmp"), h.file("a.qmp")}));
    QAction* newest = h.window().action(QStringLiteral("mnuFileMRU0"));
    QAction* older = h.window().action(QStringLiteral("mnuFileMRU1"));
    EXPECT_TRUE(newest->isVisible());
    EXPECT_EQ(newest->text(), QStringLiteral("&1 b.qmp"));
    EXPECT_FALSE(h.window().action(QStringLiteral("mnuFileMRU2"))->isVisible());

    h.window().files().fileNew();
    older->trigger();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_EQ(h.program->recentFiles().paths().first(), h.file("a.qmp"));

    ASSERT_TRUE(QFile::remove(h.file("b.qmp")));
    h.window().action(QStringLiteral("mnuFileMRU1"))->trigger();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_TRUE(h.dialogs.criticals.empty());
    auto held = h.engine().lock();
    EXPECT_EQ(h.session().CurrentFileName, h.file("a.qmp").toStdString());
}

}  // namespace
}  // namespace quillmer::testing
