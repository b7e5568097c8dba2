// The RtMidi side without a MIDI system to talk to: no ALSA sequencer on the machine, no
// JACK server running. Lists come back empty and opening fails with an Error event naming
// the device, never an exception. And the desktop lists: the built-in synth comes first.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "engine/VirtualTimerService.h"
#include "platform/DesktopDevices.h"
#include "platform/RtMidiDeviceProvider.h"
#include "platform/RtMidiInputDevice.h"
#include "platform/RtMidiOutputDevice.h"

using namespace quillmer;

namespace {

bool alsaSequencerPresent() { return ::access("/dev/snd/seq", F_OK) == 0; }

// Points JACK clients of this process at a server that doesn't exist, for one test.
class NoJackServer {
public:
    NoJackServer() {
        if (const char* old = std::getenv("JACK_DEFAULT_SERVER")) old_ = old;
        setenv("JACK_DEFAULT_SERVER", ("quillmer-nobody-" + std::to_string(::getpid())).c_str(), 1);
    }
    ~NoJackServer() {
        if (old_.empty())
            unsetenv("JACK_DEFAULT_SERVER");
        else
            setenv("JACK_DEFAULT_SERVER", old_.c_str(), 1);
    }

private:
    std::string old_;
};

template <class Device>
std::vector<MidiDeviceEvent> openAndCollect(Device& device) {
    std::vector<MidiDeviceEvent> events;
    device.setEventHandler([&](const MidiDeviceEvent& e) { events.push_back(e); });
    EXPECT_NO_THROW(EXPECT_FALSE(device.open()));
    EXPECT_FALSE(device.isOpen());
    return events;
}

void expectOneErrorNaming(const std::vector<MidiDeviceEvent>& events, const std::string& name) {
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, MidiDeviceEvent::Kind::Error);
    EXPECT_EQ(events[0].text.rfind(name + ": ", 0), 0u) << events[0].text;
}

}  // namespace

TEST(RtMidiWithoutSystems, AlsaListsNothingAndFailsToOpenWithAnErrorEvent) {
    if (alsaSequencerPresent()) GTEST_SKIP() << "this machine has an ALSA sequencer";
    RtMidiDeviceProvider provider({MidiPortApi::Alsa});
    EXPECT_NO_THROW(EXPECT_TRUE(provider.outputNames().empty()));
    EXPECT_NO_THROW(EXPECT_TRUE(provider.inputNames().empty()));
    EXPECT_EQ(provider.makeOutput("ALSA: Synth:Port 1 128:0", 0), nullptr);

    RtMidiOutputDevice out(MidiPortApi::Alsa, "Synth:Port 1 128:0", "ALSA: Synth:Port 1 128:0", "Out A");
    expectOneErrorNaming(openAndCollect(out), "ALSA: Synth:Port 1 128:0");
    EXPECT_NO_THROW(out.sendNow(std::vector<uint8_t>{0x90, 60, 100}));  // closed: dropped

    RtMidiInputDevice in(MidiPortApi::Alsa, "Keys:Port 1 20:0", "ALSA: Keys:Port 1 20:0", "In A");
    expectOneErrorNaming(openAndCollect(in), "ALSA: Keys:Port 1 20:0");
}

TEST(RtMidiWithoutSystems, JackWithoutAServerListsNothingAndSaysSo) {
    NoJackServer none;
    RtMidiDeviceProvider provider({MidiPortApi::Jack});
    EXPECT_TRUE(provider.outputNames().empty());
    EXPECT_TRUE(provider.inputNames().empty());
    EXPECT_NE(apiProblem(MidiPortApi::Jack), "");

    RtMidiOutputDevice out(MidiPortApi::Jack, "synth:midi_in", "JACK: synth:midi_in", "Out B");
    const auto events = openAndCollect(out);
    expectOneErrorNaming(events, "JACK: synth:midi_in");
    EXPECT_NE(events[0].text.find("JACK server"), std::string::npos);
}

TEST(RtMidiNames, ApiPrefixesAndOurPortLetters) {
    MidiPortApi api{};
    std::string port;
    ASSERT_TRUE(splitDeviceName("JACK: a:b: c", api, port));
    EXPECT_EQ(api, MidiPortApi::Jack);
    EXPECT_EQ(port, "a:b: c");
    EXPECT_FALSE(splitDeviceName("jack: a:b", api, port));
    EXPECT_FALSE(splitDeviceName("Built-in Synth", api, port));

    RtMidiDeviceProvider provider;
    EXPECT_EQ(provider.makeOutput("a:b", 0), nullptr);  // no API named
    EXPECT_EQ(ourPortName(true, 0), "Out A");
    EXPECT_EQ(ourPortName(false, 3), "In D");
}

TEST(DesktopDevices, TheBuiltInSynthComesFirstAndHasItsQueue) {
    NoJackServer none;
    VirtualTimerService clock;
    DesktopDeviceProvider provider(clock);
    const auto outputs = provider.outputNames();
    ASSERT_FALSE(outputs.empty());
    EXPECT_EQ(outputs.front(), "Built-in Synth");

    auto synth = provider.makeOutput("Built-in Synth", 2);
    ASSERT_NE(synth, nullptr);
    EXPECT_EQ(synth->name(), "Built-in Synth");
    EXPECT_EQ(provider.makeOutput("None Selected", 0), nullptr);
    EXPECT_EQ(provider.makeInput("Built-in Synth", 0), nullptr);  // it has no input
}

TEST(DesktopDevices, TheReportSaysWhichSystemsWorkAndWhy) {
    NoJackServer none;
    const MidiDeviceReport report = reportMidiDevices();
    ASSERT_EQ(report.apis.size(), 2u);
    EXPECT_FALSE(report.apis[1].usable);
    EXPECT_NE(report.apis[1].problem, "");
    if (!alsaSequencerPresent()) {
        EXPECT_FALSE(report.apis[0].usable);
    }

    std::ostringstream text;
    writeMidiDeviceReport(report, text);
    EXPECT_EQ(text.str().rfind("Outputs:\n  Built-in Synth", 0), 0u) << text.str();
    EXPECT_NE(text.str().find("JACK: not usable (no JACK server is running)"), std::string::npos) << text.str();
}
