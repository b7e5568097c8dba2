#pragma once
// The one place where the desktop program gets its MIDI devices.

#include <memory>

#include "engine/MidiDevice.h"
#include "engine/TimerService.h"

namespace quillmer {

// The devices a user can choose here: the built-in synth and the ALSA and JACK ports of
// other programs. `clock` is the real-time timer service and outlives the provider.
std::unique_ptr<MidiDeviceProvider> makeMidiDeviceProvider(const TimerService& clock);

}  // namespace quillmer
