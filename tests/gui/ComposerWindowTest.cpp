// The Play List Composer window against the session's Composer it drives.

#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QUrl>
#include <gtest/gtest.h>

#include "gui/ComposerWindow.h"
#include "gui/FileCommands.h"
#include "gui/Lamp.h"
#include "gui/ProgramSettings.h"
#include "tests/gui/GuiHarness.h"

namespace quillmer::testing {
namespace {

// A patch with the snapshots AutoSave, Intro and Verse, and the Composer window open.
struct ComposerHarness : GuiHarness {
    ComposerHarness() {
        {
            auto held = engine().lock();
            for (const char* name : {"AutoSave", "Intro", "Verse"}) {
                session().snapshots.comboText = name;
                session().snapshots.StoreNewPatch();
            }
        }
        window().action(QStringLiteral("MISC31"))->trigger();
        processEvents();
    }
    gui::ComposerWindow& w() { return *window().composerWindow(); }
    void click(const char* name) {
        w().button(name)->click();
        processEvents();
    }
    void addLine(int snapshot, const char* measures) {
        w().snapshotList()->setCurrentRow(snapshot);
        click("cmdAdd");
        w().measuresBox()->setText(QLatin1String(measures));
        click("btnUpdateMeasures");
    }
    QStringList lines() {
        QStringList texts;
        for (int i = 0; i < w().playList()->count(); ++i) texts << w().playList()->item(i)->text();
        return texts;
    }
    void play(int64_t ms) {
        timers.advanceByMs(ms);
        w().refresh();
        processEvents();
    }
};

TEST(ComposerWindow, TheToolbarButtonOpensItAndTakesTheRunButtonAway) {
    ComposerHarness h;
    ASSERT_NE(h.window().composerWindow(), nullptr);
    EXPECT_TRUE(h.w().isVisible());
    EXPECT_EQ(h.w().windowTitle(), QStringLiteral("Play List Composer"));
    EXPECT_FALSE(h.window().action(QStringLiteral("Forward"))->isEnabled());
    {
        auto held = h.engine().lock();
        EXPECT_TRUE(h.session().composer.active());
    }
    h.click("cmdExit");
    EXPECT_FALSE(h.w().isVisible());
    EXPECT_FALSE(h.window().action(QStringLiteral("MISC31"))->isChecked());
    EXPECT_TRUE(h.window().action(QStringLiteral("Forward"))->isEnabled());
    auto held = h.engine().lock();
    EXPECT_FALSE(h.session().composer.active());
}

TEST(ComposerWindow, EveryControlWithItsCaption) {
    ComposerHarness h;
    const std::vector<std::pair<const char*, const char*>> captions = {
        {"btnPlay", "Play"}, {"btnPause", "Pause"}, {"btnStop", "Stop/Reset"}, {"btnRecord", "Record"},
        {"btnSave", "Save MIDI File"}, {"btnShowLists", "Close/Open Play List"}, {"cmdAdd", "Add new snap"},
        {"cmdInsert", "Insert snap at highlight bar"}, {"cmdDelete", "Delete highlighted step"},
        {"cmdUp", "Move step up"}, {"cmdDown", "Move step down"}, {"cmdBegin", "Mark Begin of Play"},
        {"cmdEnd", "Mark End of Play"}, {"btnUpdateMeasures", "Update Measures to Run/Record"}, {"cmdExit", "Exit"}};
    for (const auto& [name, caption] : captions) {
        QPushButton* b = h.w().button(name);
        ASSERT_NE(b, nullptr) << name;
        EXPECT_EQ(b->text(), QLatin1String(caption)) << name;
    }
    EXPECT_EQ(h.w().player(0)->toolTip(), QStringLiteral("Run Default MIDI Player"));
    EXPECT_EQ(h.w().player(1)->toolTip(), QStringLiteral("Run Custom MIDI Player; Right click to change."));
    EXPECT_EQ(h.w().stepBox()->toolTip(), QStringLiteral("Total Measures : Current Measure"));
    EXPECT_EQ(h.w().recordingLamp()->toolTip(), QStringLiteral("Recording"));
    EXPECT_EQ(h.w().shortNames()->text(), QStringLiteral("Check for Win 3.1 filename compatibility."));
    EXPECT_EQ(h.w().snapshotList()->count(), 3);
    EXPECT_EQ(h.w().snapshotList()->item(1)->text(), QStringLiteral("001 Intro"));
}

TEST(ComposerWindow, TheCommandsEditThePlayList) {
    ComposerHarness h;
    h.click("cmdAdd");
    EXPECT_EQ(h.lines(), QStringList()) << "no snapshot chosen, nothing added";
    h.addLine(1, "4");
    h.addLine(2, "8");
    h.addLine(2, "2");
    EXPECT_EQ(h.lines(), QStringList({"000 B 001 Intro  004", "001 - 002 Verse  008", "002 E 002 Verse  002"}));
    h.w().playList()->setCurrentRow(0);
    EXPECT_EQ(h.w().measuresBox()->text(), QStringLiteral("4")) << "the box shows the highlighted line";
    h.click("cmdDown");
    EXPECT_EQ(h.w().playList()->currentRow(), 1);
    EXPECT_EQ(h.lines()[1], QStringLiteral("001 - 001 Intro  004"));
    h.click("cmdEnd");
    EXPECT_EQ(h.lines()[1], QStringLiteral("001 E 001 Intro  004"));
    h.w().snapshotList()->setCurrentRow(1);
    h.w().playList()->setCurrentRow(0);
    h.click("cmdInsert");
    EXPECT_EQ(h.lines()[0], QStringLiteral("000 - 001 Intro  008")) << "Begin stays on its line";
    h.click("cmdBegin");
    EXPECT_EQ(h.lines()[0], QStringLiteral("000 B 001 Intro  008"));
    h.w().playList()->setCurrentRow(3);
    h.click("cmdDelete");
    EXPECT_EQ(h.lines().size(), 3);
    h.w().measuresBox()->setText(QStringLiteral("many"));
    h.click("btnUpdateMeasures");
    EXPECT_EQ(h.lines()[2], QStringLiteral("002 E 001 Intro  004")) << "not a number: nothing changes";
    h.click("btnShowLists");
    EXPECT_FALSE(h.w().playList()->isVisible());
    h.click("btnShowLists");
    EXPECT_TRUE(h.w().playList()->isVisible());
}

TEST(ComposerWindow, PlayShowsWhereTheSongIsAndRecordingSavesAndPlays) {
    ComposerHarness h;
    h.addLine(1, "1");
    h.addLine(2, "2");
    h.click("btnRecord");
    EXPECT_TRUE(h.w().button("btnRecord")->isChecked());
    EXPECT_TRUE(h.w().recordingLamp()->isOn());
    h.click("btnPlay");
    EXPECT_TRUE(h.w().button("btnPlay")->isChecked());
    EXPECT_FALSE(h.w().button("btnStop")->isChecked());
    int32_t tick = 0;
    {
        auto held = h.engine().lock();
        tick = h.engine().TickPeriod();
    }
    h.play(tick * (96 + 10));
    EXPECT_EQ(h.w().stepBox()->text(), QStringLiteral("3 : 1"));
    EXPECT_EQ(h.w().measuresLabel()->text(), QStringLiteral("2"));
    EXPECT_TRUE(h.w().playList()->item(1)->font().bold()) << "the line in play";
    EXPECT_FALSE(h.w().playList()->item(0)->font().bold());
    h.play(tick * 96 * 2);
    EXPECT_TRUE(h.w().button("btnStop")->isChecked()) << "the song has ended";
    EXPECT_FALSE(h.w().button("btnRecord")->isChecked());
    processEvents();
    ASSERT_FALSE(h.w().playFile().isEmpty());
    EXPECT_TRUE(QFile::exists(h.w().playFile()));

    QUrl opened;
    h.w().openWithDesktop = [&](const QUrl& url) {
        opened = url;
        return true;
    };
    h.w().player(0)->click();
    EXPECT_EQ(opened, QUrl::fromLocalFile(h.w().playFile()));

    QString program;
    QStringList arguments;
    h.w().startProgram = [&](const QString& p, const QStringList& a) {
        program = p;
        arguments = a;
        return true;
    };
    h.dialogs.openAnswers.push_back(QStringLiteral("/usr/bin/true"));
    emit h.w().player(1)->customContextMenuRequested({});
    ASSERT_EQ(h.dialogs.openDialogs.size(), 1u);
    EXPECT_EQ(h.dialogs.openDialogs[0].title, QStringLiteral("Select MIDI Player/Sequencer"));
    EXPECT_EQ(h.program->settings().filePlayer, QStringLiteral("/usr/bin/true"));
    h.w().player(1)->click();
    EXPECT_EQ(program, QStringLiteral("/usr/bin/true"));
    EXPECT_EQ(arguments, QStringList({h.w().playFile()}));

    h.dialogs.saveAsAnswers.push_back(h.file(QStringLiteral("My Song Final.mid")));
    h.click("btnSave");
    ASSERT_EQ(h.dialogs.saveDialogs.size(), 1u);
    EXPECT_EQ(h.dialogs.saveDialogs[0].title, QStringLiteral("Save MIDI File"));
    EXPECT_EQ(h.dialogs.saveDialogs[0].text, QStringLiteral("MIDI File (*.mid)"));
    EXPECT_TRUE(QFile::exists(h.file(QStringLiteral("My Song Final.mid"))));
    EXPECT_EQ(h.w().playFile(), h.file(QStringLiteral("My Song Final.mid"))) << "the players open the saved file";
    h.w().shortNames()->setChecked(true);
    h.dialogs.saveAsAnswers.push_back(h.file(QStringLiteral("My Song Final.mid")));
    h.click("btnSave");
    EXPECT_TRUE(QFile::exists(h.file(QStringLiteral("MYSONGFI.MID"))));
    h.dialogs.saveAsAnswers.push_back(h.file(QStringLiteral("no such folder/take.mid")));
    h.click("btnSave");
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_TRUE(h.dialogs.criticals[0].text.startsWith(QStringLiteral("File Save Error: "))) << h.dialogs.criticals[0].text.toStdString();
}

TEST(ComposerWindow, NothingRecordedYetIsSaid) {
    ComposerHarness h;
    h.click("btnSave");
    h.w().player(0)->click();
    EXPECT_EQ(h.dialogs.informations.size(), 2u);
    EXPECT_TRUE(h.dialogs.saveDialogs.empty());
}

TEST(ComposerWindow, StoringASnapshotPausesTheSongAndANewPatchTurnsItOff) {
    ComposerHarness h;
    h.addLine(1, "4");
    h.click("btnPlay");
    h.window().action(QStringLiteral("Camera"))->trigger();
    h.w().refresh();
    EXPECT_TRUE(h.w().button("btnPause")->isChecked());
    EXPECT_TRUE(h.window().action(QStringLiteral("MISC31"))->isChecked()) << "on again after the store";
    EXPECT_EQ(h.w().snapshotList()->count(), 4) << "the new snapshot is listed";
    h.dialogs.saveAnswers.push_back(SaveAnswer::No);
    h.window().files().fileNew();
    processEvents();
    h.window().refresh();
    EXPECT_FALSE(h.window().action(QStringLiteral("MISC31"))->isChecked());
    EXPECT_FALSE(h.w().isVisible());
    EXPECT_TRUE(h.window().action(QStringLiteral("Forward"))->isEnabled());
}

// quillmer --song FILE: the patch opens with its Composer on, the window shown and the song
// playing from Begin; the first measure recalls the first line's snapshot.
TEST(ComposerWindow, StartingWithSongPlaysTheListOfThePatch) {
    gui::StartOptions options = GuiHarness::noMidi();
    options.file = QStringLiteral(QUILLMER_SOURCE_DIR "/examples/demo.qmp");
    options.playSong = true;
    GuiHarness h(options);
    ASSERT_NE(h.window().composerWindow(), nullptr);
    EXPECT_TRUE(h.window().composerWindow()->isVisible());
    EXPECT_TRUE(h.window().action(QStringLiteral("MISC31"))->isChecked());
    auto held = h.engine().lock();
    EXPECT_EQ(h.session().composer.transport(), Transport::Playing);
    EXPECT_EQ(h.session().composer.position(), 0);
}

}  // namespace
}  // namespace quillmer::testing
