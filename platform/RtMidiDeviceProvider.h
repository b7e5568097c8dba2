#pragma once
// The other programs' MIDI ports, through RtMidi, on the APIs we ask for explicitly (the
// ALSA sequencer and JACK), each named with its API in front: "ALSA: Synth:Port 1 128:0",
// "JACK: synth:midi_in". Our own client is "Quillmer", our ports "Out A".."Out D" and
// "In A".."In D". Every RtMidi failure is caught here and becomes text: an API that can't
// be used simply lists nothing.

#include <string>
#include <vector>

#include "engine/MidiDevice.h"

namespace quillmer {

enum class MidiPortApi { Alsa, Jack };

// The client name other programs see, and our ports' names: "Out A".."Out D", "In A".."In D".
// "Quillmer", or the name a session manager gives (setMidiClientName, before any port opens).
inline const char* kMidiClientName = "Quillmer";
void setMidiClientName(const std::string& name);
std::string ourPortName(bool output, int port);

// "ALSA: " or "JACK: ", put before the other programs' port names in our device lists.
std::string apiPrefix(MidiPortApi api);
// "ALSA sequencer", "JACK".
std::string apiTitle(MidiPortApi api);
// Splits "JACK: synth:midi_in" into the API and the port name; false without a known prefix.
bool splitDeviceName(const std::string& deviceName, MidiPortApi& api, std::string& portName);

struct PortListing {
    bool usable = false;
    std::string problem;             // why not, when not usable
    std::vector<std::string> ports;  // as the API names them, our own ports left out
};

// The other programs' ports we can send to (`outputs`) or receive from. Never throws.
PortListing listPorts(MidiPortApi api, bool outputs);

// Why the API can't be used now (no ALSA sequencer, no JACK server), or empty when it can.
// Asked before RtMidi is, which would otherwise say so on stderr. Never starts a JACK server.
std::string apiProblem(MidiPortApi api);

// Outputs send at once: a DesktopDeviceProvider puts the time-stamped queue in front of them.
// Thread rule: one thread at a time.
class RtMidiDeviceProvider final : public MidiDeviceProvider {
public:
    explicit RtMidiDeviceProvider(std::vector<MidiPortApi> apis = {MidiPortApi::Alsa, MidiPortApi::Jack});

    std::vector<std::string> outputNames() override;
    std::vector<std::string> inputNames() override;
    // The device opens our port "Out A".."Out D" (port 0..3) connected to the named port.
    std::unique_ptr<MidiOutputDevice> makeOutput(const std::string& name, int port) override;
    std::unique_ptr<MidiInputDevice> makeInput(const std::string& name, int port) override;

private:
    std::vector<std::string> names(bool outputs);
    bool offered(const std::string& name, bool outputs, MidiPortApi& api, std::string& portName);

    std::vector<MidiPortApi> apis_;
};

}  // namespace quillmer
