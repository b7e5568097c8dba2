#pragma once
// What our RtMidi devices and lists share inside platform/: the RtMidi API of each of ours,
// and where a port is in an API's list now.

#include <RtMidi.h>

#include <string>

#include "platform/RtMidiDeviceProvider.h"

namespace quillmer {

inline RtMidi::Api rtMidiApi(MidiPortApi api) {
    return api == MidiPortApi::Alsa ? RtMidi::LINUX_ALSA : RtMidi::UNIX_JACK;
}

// Where `port` is in the list of `midi` (an RtMidiIn or RtMidiOut) now; -1 when it's gone.
template <class Midi>
int findRtMidiPort(Midi& midi, const std::string& port) {
    const unsigned count = midi.getPortCount();
    for (unsigned i = 0; i < count; ++i)
        if (midi.getPortName(i) == port) return static_cast<int>(i);
    return -1;
}

}  // namespace quillmer
