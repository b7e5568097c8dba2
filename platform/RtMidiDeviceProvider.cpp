#include "platform/RtMidiDeviceProvider.h"

#include <RtMidi.h>
#include <alsa/asoundlib.h>
#include <jack/jack.h>

#include <algorithm>
#include <cctype>

#include "platform/LibrarySetup.h"
#include "platform/RtMidiInputDevice.h"
#include "platform/RtMidiOutputDevice.h"
#include "platform/RtMidiSupport.h"

namespace quillmer {

void setMidiClientName(const std::string& name) {
    static std::string kept;
    kept = name.empty() ? std::string("Quillmer") : name;
    kMidiClientName = kept.c_str();
}

namespace {

// Our own ports aren't offered back to us: "Quillmer:Out A", and under JACK, where every
// RtMidi port is a client of its own, "Quillmer-01:In B" and so on.
bool isOurPort(const std::string& name) {
    const std::string client = kMidiClientName;
    if (name.rfind(client, 0) != 0) return false;
    size_t at = client.size();
    if (at < name.size() && name[at] == '-') {
        ++at;
        while (at < name.size() && std::isdigit(static_cast<unsigned char>(name[at]))) ++at;
    }
    return at < name.size() && name[at] == ':';
}

template <class Port>
void collectPorts(Port& midi, PortListing& listing) {
    const unsigned count = midi.getPortCount();
    for (unsigned i = 0; i < count; ++i) {
        std::string name = midi.getPortName(i);
        if (!name.empty() && !isOurPort(name)) listing.ports.push_back(std::move(name));
    }
}

}  // namespace

std::string ourPortName(bool output, int port) {
    return std::string(output ? "Out " : "In ") + static_cast<char>('A' + port);
}

std::string apiPrefix(MidiPortApi api) { return api == MidiPortApi::Alsa ? "ALSA: " : "JACK: "; }

std::string apiTitle(MidiPortApi api) { return api == MidiPortApi::Alsa ? "ALSA sequencer" : "JACK"; }

bool splitDeviceName(const std::string& deviceName, MidiPortApi& api, std::string& portName) {
    for (MidiPortApi candidate : {MidiPortApi::Alsa, MidiPortApi::Jack}) {
        const std::string prefix = apiPrefix(candidate);
        if (deviceName.rfind(prefix, 0) == 0) {
            api = candidate;
            portName = deviceName.substr(prefix.size());
            return true;
        }
    }
    return false;
}

std::string apiProblem(MidiPortApi api) {
    prepareLibraries();
    if (api == MidiPortApi::Alsa) {
        snd_seq_t* seq = nullptr;
        const int result = snd_seq_open(&seq, "default", SND_SEQ_OPEN_DUPLEX, 0);
        if (result < 0) return std::string("the ALSA sequencer could not be opened: ") + snd_strerror(result);
        snd_seq_close(seq);
        return {};
    }
    jack_status_t status{};
    jack_client_t* client = jack_client_open(kMidiClientName, JackNoStartServer, &status);
    if (!client) return "no JACK server is running";
    jack_client_close(client);
    return {};
}

PortListing listPorts(MidiPortApi api, bool outputs) {
    prepareLibraries();
    PortListing listing;
    listing.problem = apiProblem(api);
    if (!listing.problem.empty()) return listing;
    try {
        if (outputs) {
            RtMidiOut midi(rtMidiApi(api), kMidiClientName);
            collectPorts(midi, listing);
        } else {
            RtMidiIn midi(rtMidiApi(api), kMidiClientName);
            collectPorts(midi, listing);
        }
        listing.usable = true;
    } catch (const RtMidiError& error) {
        listing.problem = error.getMessage();
    }
    return listing;
}

RtMidiDeviceProvider::RtMidiDeviceProvider(std::vector<MidiPortApi> apis) : apis_(std::move(apis)) {}

std::vector<std::string> RtMidiDeviceProvider::names(bool outputs) {
    std::vector<std::string> all;
    for (MidiPortApi api : apis_) {
        const PortListing listing = listPorts(api, outputs);
        for (const std::string& port : listing.ports) all.push_back(apiPrefix(api) + port);
    }
    return all;
}

std::vector<std::string> RtMidiDeviceProvider::outputNames() { return names(true); }

std::vector<std::string> RtMidiDeviceProvider::inputNames() { return names(false); }

bool RtMidiDeviceProvider::offered(const std::string& name, bool outputs, MidiPortApi& api, std::string& portName) {
    if (!splitDeviceName(name, api, portName)) return false;
    if (std::find(apis_.begin(), apis_.end(), api) == apis_.end()) return false;
    const PortListing listing = listPorts(api, outputs);
    return std::find(listing.ports.begin(), listing.ports.end(), portName) != listing.ports.end();
}

std::unique_ptr<MidiOutputDevice> RtMidiDeviceProvider::makeOutput(const std::string& name, int port) {
    MidiPortApi api{};
    std::string portName;
    if (!offered(name, true, api, portName)) return nullptr;
    return std::make_unique<RtMidiOutputDevice>(api, portName, name, ourPortName(true, port));
}

std::unique_ptr<MidiInputDevice> RtMidiDeviceProvider::makeInput(const std::string& name, int port) {
    MidiPortApi api{};
    std::string portName;
    if (!offered(name, false, api, portName)) return nullptr;
    return std::make_unique<RtMidiInputDevice>(api, portName, name, ourPortName(false, port));
}

}  // namespace quillmer
