#include "platform/DesktopDevices.h"

#include <algorithm>
#include <atomic>

#include "platform/BuiltInSynthOutput.h"
#include "platform/JackMidiDevices.h"
#include "platform/RealTimeStampedOutput.h"

namespace quillmer {

namespace {
std::atomic<bool> ownJackClient{true};
}  // namespace

void setSampleAccurateJack(bool on) { ownJackClient = on; }

bool sampleAccurateJack() { return ownJackClient.load(); }

DesktopDeviceProvider::DesktopDeviceProvider(const TimerService& clock, std::vector<MidiPortApi> apis)
    : clock_(clock), ports_(apis), apis_(apis),
      jack_(std::make_shared<JackClientSource>(clock)) {}

// A JACK port that is there now, when our own client serves JACK.
bool DesktopDeviceProvider::jackPort(const std::string& name, bool output, std::string& peer) {
    MidiPortApi api{};
    if (!sampleAccurateJack() || !splitDeviceName(name, api, peer) || api != MidiPortApi::Jack) return false;
    if (std::find(apis_.begin(), apis_.end(), MidiPortApi::Jack) == apis_.end()) return false;
    const PortListing listing = listPorts(MidiPortApi::Jack, output);
    return std::find(listing.ports.begin(), listing.ports.end(), peer) != listing.ports.end();
}

std::vector<std::string> DesktopDeviceProvider::outputNames() {
    std::vector<std::string> names{kBuiltInSynthName};
    for (std::string& name : ports_.outputNames()) names.push_back(std::move(name));
    return names;
}

std::vector<std::string> DesktopDeviceProvider::inputNames() { return ports_.inputNames(); }

std::unique_ptr<MidiOutputDevice> DesktopDeviceProvider::makeOutput(const std::string& name, int port) {
    std::unique_ptr<MidiOutputDevice> device;
    std::string peer;
    if (jackPort(name, true, peer)) return std::make_unique<JackMidiOutput>(jack_, peer, name, port);
    if (name == kBuiltInSynthName)
        device = std::make_unique<BuiltInSynthOutput>();
    else
        device = ports_.makeOutput(name, port);
    if (!device) return nullptr;
    return std::make_unique<RealTimeStampedOutput>(std::move(device), clock_);
}

std::unique_ptr<MidiInputDevice> DesktopDeviceProvider::makeInput(const std::string& name, int port) {
    std::string peer;
    if (jackPort(name, false, peer)) return std::make_unique<JackMidiInput>(jack_, peer, name, port);
    return ports_.makeInput(name, port);
}

MidiDeviceReport reportMidiDevices() {
    MidiDeviceReport report;
    for (MidiPortApi api : {MidiPortApi::Alsa, MidiPortApi::Jack}) {
        MidiApiReport& r = report.apis.emplace_back();
        r.title = apiTitle(api);
        const PortListing outputs = listPorts(api, true);
        const PortListing inputs = listPorts(api, false);
        r.usable = outputs.usable && inputs.usable;
        r.problem = outputs.usable ? inputs.problem : outputs.problem;
        for (const std::string& port : outputs.ports) r.outputs.push_back(apiPrefix(api) + port);
        for (const std::string& port : inputs.ports) r.inputs.push_back(apiPrefix(api) + port);
    }
    report.synthSoundFont = findGeneralMidiSoundFont();
    report.synthAudioDriver = probeSynthAudioDriver();
    return report;
}

void writeMidiDeviceReport(const MidiDeviceReport& report, std::ostream& out) {
    out << "Outputs:\n  " << kBuiltInSynthName;
    if (report.synthSoundFont.empty())
        out << "  (not usable: no General MIDI SoundFont installed)\n";
    else if (report.synthAudioDriver.empty())
        out << "  (offline rendering only: no sound output works here)\n";
    else
        out << "  (sound through " << report.synthAudioDriver << ")\n";
    for (const MidiApiReport& api : report.apis)
        for (const std::string& name : api.outputs) out << "  " << name << '\n';

    out << "Inputs:\n";
    bool anyInput = false;
    for (const MidiApiReport& api : report.apis)
        for (const std::string& name : api.inputs) {
            out << "  " << name << '\n';
            anyInput = true;
        }
    if (!anyInput) out << "  (none)\n";

    out << "MIDI systems:\n";
    for (const MidiApiReport& api : report.apis) {
        out << "  " << api.title << ": ";
        if (api.usable)
            out << "usable\n";
        else
            out << "not usable (" << api.problem << ")\n";
    }
}

}  // namespace quillmer
