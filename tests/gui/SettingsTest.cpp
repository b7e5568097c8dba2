// The program's settings over a restart, the options window's rules, device errors and the
// order of the exit.

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <gtest/gtest.h>

#include "gui/OptionsWindow.h"
#include "gui/PortsPanel.h"
#include "gui/ProgramPaths.h"
#include "gui/ProgramSettings.h"
#include "tests/engine/FakeDevices.h"
#include "tests/gui/GuiHarness.h"

namespace quillmer::testing {
namespace {

// One output device that refuses to open.
class BrokenDevices final : public MidiDeviceProvider {
public:
    explicit BrokenDevices(const TimerService& clock) : clock_(clock) {}
    std::vector<std::string> outputNames() override { return {"Broken Synth"}; }
    std::vector<std::string> inputNames() override { return {}; }
    std::unique_ptr<MidiOutputDevice> makeOutput(const std::string& name, int) override {
        return std::make_unique<FakeOutput>(name, clock_, &log_, true);
    }
    std::unique_ptr<MidiInputDevice> makeInput(const std::string&, int) override { return nullptr; }

private:
    const TimerService& clock_;
    std::vector<SentMessage> log_;
};

QString setting(QSettings& store, const QString& key) {
    store.sync();
    return store.value(QStringLiteral("Settings/") + key).toString();
}

TEST(Settings, OptionsSurviveARestart) {
    GuiHarness h;
    gui::OptionsWindow& ops = h.program->optionsWindow();
    ops.ports()->latencyBox()->setText(QStringLiteral("250"));
    emit ops.ports()->latencyBox()->editingFinished();
    ops.ports()->triggerBox(trigger::NoteOn)->setChecked(true);
    ops.ports()->triggerBox(trigger::NrpnLsb)->setChecked(true);
    ops.findChild<QCheckBox*>(QStringLiteral("chAllKeysOff2"))->setChecked(true);
    ops.findChild<QCheckBox*>(QStringLiteral("chkResetModules"))->setChecked(true);
    ops.findChild<QCheckBox*>(QStringLiteral("chkXpTempo"))->setChecked(true);
    ops.findChild<QSpinBox*>(QStringLiteral("bxWholeDelay"))->setValue(3);
    ops.findChild<QSpinBox*>(QStringLiteral("bxRanSeed"))->setValue(4242);
    ops.findChild<QCheckBox*>(QStringLiteral("chkProgChg"))->setChecked(true);
    ops.findChild<QComboBox*>(QStringLiteral("cbChan"))->setCurrentIndex(17);
    ASSERT_TRUE(h.exitProgram());

    EXPECT_EQ(setting(h.store, QStringLiteral("Latency")), QStringLiteral("250"));
    EXPECT_EQ(setting(h.store, QStringLiteral("WholeDelay")), QStringLiteral("3"));
    EXPECT_EQ(setting(h.store, QStringLiteral("RunPrgChgChan")), QStringLiteral("17"));
    EXPECT_EQ(setting(h.store, QStringLiteral("0MidiOutPort")), QStringLiteral("None Selected"));
    EXPECT_EQ(setting(h.store, QStringLiteral("3MidiInPort")), QStringLiteral("None Selected"));

    h.restart();
    Engine& e = h.engine();
    {
        auto held = e.lock();
        EXPECT_EQ(e.ports.Latency(), 250);
        EXPECT_EQ(e.ports.MidiInTriggerMask(), trigger::NoteOn | trigger::NrpnLsb);
        EXPECT_EQ(e.ports.PortOptions[2], portoption::AllKeysOff);
        EXPECT_TRUE(e.options.resetModules);
        EXPECT_TRUE(e.options.extendedTempo);
        EXPECT_EQ(e.options.wholeDelay, 3);
        EXPECT_EQ(e.options.randomSeed, 4242);
        EXPECT_TRUE(e.ports.progChgToSnapshot);
        EXPECT_EQ(e.ports.progChgChannelSlot, 17);
    }
    gui::OptionsWindow& again = h.program->optionsWindow();
    EXPECT_EQ(again.ports()->latencyBox()->text(), QStringLiteral("250"));
    EXPECT_TRUE(again.findChild<QCheckBox*>(QStringLiteral("chAllKeysOff2"))->isChecked());
    EXPECT_EQ(again.findChild<QComboBox*>(QStringLiteral("cbChan"))->currentText(), QStringLiteral("2 B"));
}

TEST(Settings, AFirstStartWritesItsSeedAndFolderAndUsesTheExamples) {
    GuiHarness h;
    h.store.sync();
    EXPECT_TRUE(h.store.contains(QStringLiteral("Settings/UFSeed")));
    EXPECT_EQ(setting(h.store, QStringLiteral("AppDir")), gui::programDir());
    EXPECT_EQ(h.program->settings().currentDir, gui::examplesDir());
    EXPECT_EQ(h.program->settings().mainState, gui::WindowState::Normal);
    EXPECT_EQ(h.program->settings().outputPorts[0], QStringLiteral("Built-in Synth")) << "heard at once";
    EXPECT_EQ(h.program->settings().outputPorts[1], QStringLiteral("None Selected"));
    const QString seed = setting(h.store, QStringLiteral("UFSeed"));
    ASSERT_TRUE(h.exitProgram());
    h.restart();
    EXPECT_EQ(setting(h.store, QStringLiteral("UFSeed")), seed) << "the seed is made once";
}

TEST(OptionsRules, InvalidLatencyShowsTheValueInForce) {
    GuiHarness h;
    QLineEdit* box = h.program->optionsWindow().ports()->latencyBox();
    for (const char* typed : {"120", "fast", "1001", "-5"}) {
        box->setText(QLatin1String(typed));
        emit box->editingFinished();
    }
    EXPECT_EQ(box->text(), QStringLiteral("120"));
    auto held = h.engine().lock();
    EXPECT_EQ(h.engine().ports.Latency(), 120);
}

TEST(OptionsRules, ControllerAndNrpnTriggersExcludeEachOther) {
    GuiHarness h;
    gui::PortsPanel& ports = *h.program->optionsWindow().ports();
    ports.triggerBox(trigger::NrpnLsb)->setChecked(true);
    ports.triggerBox(trigger::NrpnMsb)->setChecked(true);
    ports.triggerBox(trigger::Control)->setChecked(true);
    EXPECT_FALSE(ports.triggerBox(trigger::NrpnLsb)->isChecked());
    EXPECT_FALSE(ports.triggerBox(trigger::NrpnMsb)->isChecked());
    ports.triggerBox(trigger::NrpnMsb)->setChecked(true);
    EXPECT_FALSE(ports.triggerBox(trigger::Control)->isChecked());
    auto held = h.engine().lock();
    EXPECT_EQ(h.engine().ports.MidiInTriggerMask(), trigger::NrpnMsb);
}

TEST(DeviceErrors, AtStartTheOptionsWindowLaterAMessageBox) {
    GuiHarness h;  // writes a first set of settings
    h.store.setValue(QStringLiteral("Settings/0MidiOutPort"), QStringLiteral("Broken Synth"));
    h.program.reset();
    BrokenDevices devices(h.timers);
    h.start(gui::StartOptions{}, &devices);

    EXPECT_TRUE(h.program->optionsWindow().isVisible());
    EXPECT_TRUE(h.dialogs.criticals.empty());
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().ports.outputName(0), std::string(kNoDevice));
    }

    h.program->optionsWindow().hide();
    QComboBox* portB = h.program->optionsWindow().ports()->outputBox(1);
    ASSERT_EQ(portB->findText(QStringLiteral("Broken Synth")), 0);
    emit portB->textActivated(QStringLiteral("Broken Synth"));
    processEvents();
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_EQ(h.dialogs.criticals[0].title, QStringLiteral("MIDI Output Error"));
    EXPECT_FALSE(h.program->optionsWindow().isVisible());
    EXPECT_EQ(portB->currentText(), QStringLiteral("None Selected"));
    h.program.reset();  // before the devices go
}

TEST(Exit, NoMidiKeepsTheSavedDevicesUntilTheExit) {
    GuiHarness h;
    h.store.setValue(QStringLiteral("Settings/0MidiOutPort"), QStringLiteral("Broken Synth"));
    h.restart();  // -m
    EXPECT_EQ(setting(h.store, QStringLiteral("0MidiOutPort")), QStringLiteral("Broken Synth"));
    EXPECT_FALSE(h.program->optionsWindow().isVisible());
    ASSERT_TRUE(h.exitProgram());
    EXPECT_EQ(setting(h.store, QStringLiteral("0MidiOutPort")), QStringLiteral("None Selected"));
}

TEST(Exit, LastTickThenSettingsThenTheDrain) {
    GuiHarness h;
    {
        auto held = h.engine().lock();
        h.engine().ports.setLatency(400);
    }
    h.window().close();
    processEvents();
    {
        auto held = h.engine().lock();
        EXPECT_FALSE(h.engine().timersRunning()) << "the last tick has run";
    }
    EXPECT_EQ(setting(h.store, QStringLiteral("Latency")), QStringLiteral("400")) << "settings before the drain";
    h.timers.advanceByMs(450);
    letQtTimersRun();
    EXPECT_FALSE(h.program->exitDone()) << "queued MIDI may still be on its way";
    h.timers.advanceByMs(100);  // latency + 100 ms
    for (int i = 0; i < 50 && !h.program->exitDone(); ++i) letQtTimersRun(1);
    EXPECT_TRUE(h.program->exitDone());
}

}  // namespace
}  // namespace quillmer::testing
