#pragma once
// The MIDI devices of this desktop. The provider offers "Built-in Synth" first in every
// output list (it is always there, so it keeps its place), then the other programs' ports on
// the ALSA sequencer and on JACK; every output comes with its own time-stamped queue,
// delivered in real time. The report says what every API offers and whether it can be used
// now: what `quillmer-cli ports` prints.

#include <memory>
#include <ostream>

#include "engine/TimerService.h"
#include "platform/RtMidiDeviceProvider.h"

namespace quillmer {

class JackClientSource;

// Which way JACK ports go: through our own client, which delivers every message at the
// frame of its time stamp (on by default), or through RtMidi, which delivers at period
// boundaries. Read when a device is made: choose the ports again to apply a change.
void setSampleAccurateJack(bool on);
bool sampleAccurateJack();

// Thread rule: one thread at a time.
class DesktopDeviceProvider final : public MidiDeviceProvider {
public:
    // `clock` runs in real time (the real-time timer service) and outlives the devices.
    explicit DesktopDeviceProvider(const TimerService& clock,
                                   std::vector<MidiPortApi> apis = {MidiPortApi::Alsa, MidiPortApi::Jack});

    std::vector<std::string> outputNames() override;
    std::vector<std::string> inputNames() override;
    std::unique_ptr<MidiOutputDevice> makeOutput(const std::string& name, int port) override;
    std::unique_ptr<MidiInputDevice> makeInput(const std::string& name, int port) override;

private:
    bool jackPort(const std::string& name, bool output, std::string& peer);

    const TimerService& clock_;
    RtMidiDeviceProvider ports_;
    std::vector<MidiPortApi> apis_;
    std::shared_ptr<JackClientSource> jack_;
};

struct MidiApiReport {
    std::string title;               // "ALSA sequencer", "JACK"
    bool usable = false;
    std::string problem;             // why not, when not usable
    std::vector<std::string> outputs;  // device names as the lists show them
    std::vector<std::string> inputs;
};

struct MidiDeviceReport {
    std::vector<MidiApiReport> apis;
    // The built-in synth: its SoundFont (empty when none) and its sound system now (empty
    // when none works; it still renders offline).
    std::string synthSoundFont;
    std::string synthAudioDriver;
};

// Looks at every API now. Never throws; takes a moment (each API is opened once).
MidiDeviceReport reportMidiDevices();

// The report as text: outputs, inputs, then each API's state.
void writeMidiDeviceReport(const MidiDeviceReport& report, std::ostream& out);

}  // namespace quillmer
