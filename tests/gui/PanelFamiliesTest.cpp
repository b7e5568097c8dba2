// Every type has its panel, and the controls of the families reach their modules.

#include <QComboBox>

#include "modules/midi/NoteValues.h"
#include "modules/panels/Chain.h"
#include "modules/sequencers/Clocks.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

TEST(Families, EveryTypeGetsItsPanelSideBySide) {
    GuiHarness h;
    h.window().resize(1600, 1000);
    processEvents();
    const ModuleRegistry& registry = h.engine().registry();
    std::vector<std::string> names;
    for (const TypeInfo& info : allTypes()) {
        if (!registry.isBuilt(info.id)) continue;
        h.window().placeModule(info.id);
    }
    {
        auto held = h.engine().lock();
        h.engine().forEachModule([&](Module& m) { names.push_back(m.Name); });
    }
    h.window().refresh();
    ASSERT_EQ(h.window().panels().count(), static_cast<int>(names.size()));
    std::vector<QRect> placed;
    for (const std::string& name : names) {
        gui::PanelFrame& frame = panel(h, name.c_str());
        const Module& m = module(h, name.c_str());
        EXPECT_EQ(frame.inputRows(), m.inputCount()) << name;
        EXPECT_EQ(m.Width, frame.width() * 15) << name << " tells its module its size";
        EXPECT_EQ(m.Height, frame.height() * 15) << name;
        for (int row = 0; row < frame.inputRows(); ++row)
            EXPECT_EQ(frame.inputButton(row)->toolTip(), gui::text(m.inputSpec(m.menuInput(row)).tip)) << name;
        placed.push_back(frame.geometry());
    }
    for (size_t i = 0; i < placed.size(); ++i)
        for (size_t j = i + 1; j < placed.size(); ++j)
            EXPECT_FALSE(placed[i].intersects(placed[j])) << names[i] << " covers " << names[j];
    EXPECT_EQ(panel(h, "1Stepper-").inputButton(1)->toolTip(), QStringLiteral("Limit of count"))
        << "Stepper's buttons follow its menu order";
}

TEST(Families, EverySendingPanelHasItsEnableSwitchAndTheBankCaptionShowsTheBanksName) {
    GuiHarness h;
    const std::vector<std::string> senders{"MIDITone", "MIDIVoice", "MIDIKey", "MIDIChan", "MIDIPoly", "MIDIPBend"};
    for (const std::string& type : senders) h.placeModule(type.c_str());
    std::vector<std::string> names;
    {
        auto held = h.engine().lock();
        h.engine().forEachModule([&](Module& m) { names.push_back(m.Name); });
    }
    ASSERT_EQ(names.size(), senders.size());
    for (const std::string& name : names) {
        auto* enable = part<QPushButton>(panel(h, name.c_str()), "opEnable");
        ASSERT_NE(enable, nullptr) << name;
        EXPECT_FALSE(enable->isChecked()) << name;
        enable->click();
        EXPECT_EQ(module(h, name.c_str()).Enabled, 0) << name << ": in disables";
        enable->click();
        EXPECT_NE(module(h, name.c_str()).Enabled, 0) << name << ": out enables";
    }
    runTicks(h);
    auto* bank = part<QLabel>(panel(h, "1ChanOut-"), "lblBName");
    ASSERT_NE(bank, nullptr);
    EXPECT_EQ(bank->text(), QStringLiteral("0. General MIDI")) << "the shipped bank names are read at start";
}

TEST(Families, SwitchesMenusAndTheChainFileReachTheirModules) {
    GuiHarness h;
    h.placeModule("GHold");
    h.placeModule("Tempox");
    h.placeModule("Notes");
    h.placeModule("Chain");

    part<QPushButton>(panel(h, "1GHold-"), "chkTurbo")->click();
    EXPECT_TRUE(static_cast<const GHold&>(module(h, "1GHold-")).turbo);

    auto* enable = part<QPushButton>(panel(h, "1Tempo-"), "opEnable");
    enable->click();
    EXPECT_EQ(module(h, "1Tempo-").Enabled, 0) << "the switch is in while the module is disabled";
    h.window().refresh();
    EXPECT_EQ(panel(h, "1Tempo-").statusIcon()->picture(), 9);

    auto* durations = part<QComboBox>(panel(h, "1Note-"), "cbNotes");
    ASSERT_EQ(durations->count(), 31);
    durations->activated(5);
    const auto& notes = static_cast<const Notes&>(module(h, "1Note-"));
    EXPECT_EQ(notes.row(), 5);
    runTicks(h);
    EXPECT_EQ(shownText(panel(h, "1Note-"), "bxOut1"), QString::number(notes.lastOutput()));

    h.dialogs.openAnswers = {h.file(QStringLiteral("next.qmp"))};
    part<QPushButton>(panel(h, "1Chain-"), "cmdGet")->click();
    ASSERT_EQ(h.dialogs.openDialogs.size(), 1u);
    EXPECT_EQ(h.dialogs.openDialogs[0].title, QStringLiteral("Select Chain File"));
    EXPECT_EQ(h.dialogs.openDialogs[0].text, QStringLiteral("Quillmer Modules (*.qmp)"));
    EXPECT_EQ(static_cast<const Chain&>(module(h, "1Chain-")).fileName, h.file(QStringLiteral("next.qmp")).toStdString());
    h.dialogs.openAnswers = {QString()};
    part<QPushButton>(panel(h, "1Chain-"), "cmdGet")->click();
    EXPECT_EQ(static_cast<const Chain&>(module(h, "1Chain-")).fileName, "Exit Quillmer") << "Cancel means leave";
    h.window().refresh();
    EXPECT_EQ(shownText(panel(h, "1Chain-"), "lblFile"), QStringLiteral("Exit Quillmer"));
}

}  // namespace
}  // namespace quillmer::testing
