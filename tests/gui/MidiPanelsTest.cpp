// The MIDI input and MIDI file panels forward their gestures: the keyboard plays under the
// mouse, the input channel comes from the channel dialog, a list is loaded from a file or
// refused with its message; and the translation dialog from file to saved list.

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSlider>
#include <QSpinBox>
#include <filesystem>

#include "gui/ChannelDialog.h"
#include "gui/MidiFileReadDialog.h"
#include "gui/panels/midi/KeyboardPicture.h"
#include "modules/midi/MidiFilePlayers.h"
#include "modules/midi/MidiInputs.h"
#include "platform/StandardMidiFile.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

MidiFileEvent ev(uint32_t delta, std::vector<uint8_t> bytes) {
    MidiFileEvent e;
    e.delta = delta;
    e.bytes = std::move(bytes);
    return e;
}

TEST(MidiPanels, TheKeyboardPlaysUnderTheMouseAndTheGateSwitchDropsItOnRelease) {
    GuiHarness h;
    h.placeModule("Keybd");
    gui::PanelFrame& frame = panel(h, "1Keybd-");
    auto* keys = part<gui::KeyboardPicture>(frame, "Picture1");
    ASSERT_NE(keys, nullptr);
    part<QSpinBox>(frame, "UpDown1")->setValue(5);
    const int white = keys->width() / Keybd::kWhiteKeys;
    const QPoint lowC(white / 2, keys->height() - 4);
    const QPointF global(keys->mapToGlobal(lowC));
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(lowC), global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(keys, &press);
    runTicks(h);
    EXPECT_EQ(h.engine().bus[module(h, "1Keybd-").OutBus], 60);
    EXPECT_EQ(keys->held(), 0);
    EXPECT_TRUE(shownText(frame, "bxOut2").startsWith(QStringLiteral("Cn : 5")));
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(lowC), global, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(keys, &release);
    runTicks(h);
    EXPECT_EQ(h.engine().bus[module(h, "1Keybd-").OutBus], 60);  // chkGate out: it stays
    EXPECT_EQ(keys->held(), -1);

    part<QPushButton>(frame, "chkGate")->click();
    click(keys, QPoint(white * 2 + white / 2, keys->height() - 4));  // E, pressed and released
    runTicks(h);
    EXPECT_EQ(h.engine().bus[module(h, "1Keybd-").OutBus], 0);
    EXPECT_EQ(static_cast<const Keybd&>(module(h, "1Keybd-")).note, 64);
}

TEST(MidiPanels, InputModulesTakeTheirChannelFromTheDialogAndTheirNumberFromTheBox) {
    GuiHarness h;
    h.placeModule("MIDICCIn");
    gui::PanelFrame& frame = panel(h, "1CCIn-");
    part<QPushButton>(frame, "bChan")->click();
    gui::ChannelDialog& dialog = h.window().panels().channelDialog();
    EXPECT_TRUE(dialog.isVisible());
    emit dialog.chosen(16 + 4);
    h.window().refresh();
    EXPECT_EQ(part<QPushButton>(frame, "bChan")->text(), QStringLiteral("5 B"));
    auto* box = part<QLineEdit>(frame, "bxV1");
    box->setText(QStringLiteral("300"));
    box->setModified(true);
    emit box->editingFinished();
    const auto& cc = static_cast<const MIDICCIn&>(module(h, "1CCIn-"));
    EXPECT_EQ(cc.number, 127);
    EXPECT_EQ(cc.ChanPort, 20);
    {
        auto held = h.engine().lock();
        h.engine().ports.handleInput(1, {{0xB4, 127, 77}});
    }
    runTicks(h);
    EXPECT_EQ(shownText(frame, "bxOut1"), QStringLiteral("77"));
}

TEST(MidiPanels, APlayerLoadsAListOrSaysWhyNot) {
    GuiHarness h;
    QTemporaryDir dir;
    MfxList list;
    list.listName = "Volume";
    list.values = {10, 20};
    list.times = {0, 1};
    const QString good = dir.filePath(QStringLiteral("good.mfx"));
    std::string error, reason;
    ASSERT_TRUE(saveMfxFile(good.toStdString(), list, error, reason));
    h.placeModule("MIDIFile");
    h.placeModule("MIDIFileSlave");
    gui::PanelFrame& frame = panel(h, "1MIDIFile-");

    h.dialogs.openAnswers.push_back(dir.filePath(QStringLiteral("missing.mfx")));
    part<QPushButton>(frame, "btnGet")->click();
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_TRUE(h.dialogs.criticals[0].text.startsWith(QStringLiteral("File not found: ") + dir.filePath(QStringLiteral("missing.mfx"))));
    EXPECT_EQ(h.dialogs.openDialogs.back().title, QStringLiteral("Select File to Load into Set buffer"));

    h.dialogs.openAnswers.push_back(good);
    part<QPushButton>(frame, "btnGet")->click();
    EXPECT_EQ(h.dialogs.criticals.size(), 1u);
    runTicks(h, 3);
    EXPECT_EQ(shownText(frame, "lblFile"), QStringLiteral("Volume [2]"));
    EXPECT_EQ(static_cast<const MIDIFile&>(module(h, "1MIDIFile-")).list.values, list.values);
    EXPECT_NE(part<QSlider>(frame, "slCurrent"), nullptr);

    auto* masters = part<QComboBox>(panel(h, "1MIDISlave-"), "cbXmID");
    ASSERT_EQ(masters->count(), 2);
    EXPECT_EQ(masters->itemText(1), QStringLiteral("1MIDIFile-"));
    masters->activated(1);
    EXPECT_EQ(static_cast<const MIDIFileSlave&>(module(h, "1MIDISlave-")).master, module(h, "1MIDIFile-").Index);
}

TEST(MidiFileReadDialog, FromFileToSavedListAndItsMessages) {
    GuiHarness h;
    QTemporaryDir dir;
    MidiFileContents c;
    c.format = 1;
    c.division = 96;
    c.tracks = {{ev(0, {0xFF, 0x51, 0x03, 0x0B, 0x71, 0xB0})},
                {ev(0, {0xFF, 0x03, 0x04, 'B', 'a', 's', 's'}), ev(0, {0x92, 40, 90}), ev(96, {0x82, 40, 0}),
                 ev(0, {0xB2, 7, 99}), ev(48, {0x95, 41, 91})}};
    const QString mid = dir.filePath(QStringLiteral("bass.mid"));
    std::string error;
    ASSERT_TRUE(writeMidiFile(mid.toStdString(), c, error)) << error;

    QAction* entry = h.window().findChild<QAction*>(QStringLiteral("mnuFileImportMidi"));
    ASSERT_NE(entry, nullptr);
    EXPECT_TRUE(entry->isEnabled());

    gui::MidiFileReadDialog dialog(h.dialogs, &h.window());
    h.dialogs.openAnswers.push_back(dir.filePath(QStringLiteral("absent.mid")));
    dialog.getName();
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_TRUE(h.dialogs.criticals[0].text.startsWith(QStringLiteral("File not found: ")));
    EXPECT_EQ(h.dialogs.openDialogs.back().title, QStringLiteral("Select MIDI File to Translate"));

    h.dialogs.openAnswers.push_back(mid);
    dialog.getName();
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("lblBPM"))->text(), QStringLiteral("BPM: 80"));
    auto* tracks = dialog.findChild<QListWidget*>(QStringLiteral("lstTracks"));
    ASSERT_EQ(tracks->count(), 2);
    EXPECT_EQ(tracks->item(0)->text(), QStringLiteral("Track# 1 [0]"));
    EXPECT_EQ(tracks->item(1)->text(), QStringLiteral("Bass [4]"));
    tracks->setCurrentRow(1);
    EXPECT_FALSE(dialog.findChild<QPushButton*>(QStringLiteral("opChan0"))->isEnabled());
    EXPECT_TRUE(dialog.findChild<QPushButton*>(QStringLiteral("opChan2"))->isChecked());  // the first with messages
    EXPECT_TRUE(dialog.findChild<QPushButton*>(QStringLiteral("opChan5"))->isEnabled());
    auto* classes = dialog.findChild<QListWidget*>(QStringLiteral("lstMMsgs"));
    QStringList lines;
    for (int i = 0; i < classes->count(); ++i) lines << classes->item(i)->text();
    EXPECT_EQ(lines, (QStringList{QStringLiteral("07H   7 Volume [1]"), QStringLiteral("MIDI Key [1]"), QStringLiteral("Velocity [1]"),
                                  QStringLiteral("Note Off [1]")}));
    classes->setCurrentRow(3);
    EXPECT_EQ(dialog.list().times, std::vector<float>{24});

    const QString out = dir.filePath(QStringLiteral("off.mfx"));
    h.dialogs.saveAsAnswers.push_back(out);
    dialog.findChild<QPushButton*>(QStringLiteral("btnSave"))->click();
    MfxList saved;
    std::string reason;
    ASSERT_TRUE(loadMfxFile(out.toStdString(), saved, error, reason)) << error << reason;
    EXPECT_EQ(saved.values, std::vector<uint8_t>{40});
    EXPECT_EQ(saved.fileBpm, 80);

    h.dialogs.saveAsAnswers.push_back(dir.filePath(QStringLiteral("no/such/dir.mfx")));
    dialog.save();
    ASSERT_EQ(h.dialogs.criticals.size(), 2u);
    EXPECT_TRUE(h.dialogs.criticals[1].text.startsWith(QStringLiteral("Could not save: ")));

    // Another file starts afresh.
    const QString text = dir.filePath(QStringLiteral("text.mid"));
    std::ofstream(text.toStdString()) << "hello";
    EXPECT_FALSE(dialog.openFile(text));
    EXPECT_TRUE(h.dialogs.criticals[2].text.startsWith(QStringLiteral("Cound Not Open ") + text));
    EXPECT_EQ(tracks->count(), 2);  // the file before stays
}

}  // namespace
}  // namespace quillmer::testing
