#pragma once
// "Built-in Synth" in real time: FluidSynth with the General MIDI SoundFont, playing through
// the first sound system that works, tried in this order: PipeWire, PulseAudio, JACK (a
// running server owns the sound card), ALSA. Where none works, open() fails with an Error
// event that names the device and says so.
//
// Thread rule: calls from one thread at a time; the sound system renders on its own thread.

#include <memory>

#include "platform/FluidSynthInstance.h"
#include "platform/ImmediateMidiOutput.h"

struct _fluid_audio_driver_t;

namespace quillmer {

class BuiltInSynthOutput final : public ImmediateMidiOutput {
public:
    explicit BuiltInSynthOutput(std::string soundFont = {});
    ~BuiltInSynthOutput() override;

    bool open() override;
    void close() override;
    bool isOpen() const override { return driver_ != nullptr; }
    void sendNow(std::span<const uint8_t> bytes) override;
    // Silences every channel and returns controllers and programs to their defaults.
    void reset() override;

    // The sound system in use ("pulseaudio"...), empty while closed.
    const std::string& audioDriver() const { return driverName_; }

private:
    std::string soundFont_;
    std::unique_ptr<FluidSynthInstance> synth_;
    _fluid_audio_driver_t* driver_ = nullptr;
    std::string driverName_;
};

// The sound system the built-in synth would play through now, or empty when none works.
// Opens and closes it once to find out.
std::string probeSynthAudioDriver();

}  // namespace quillmer
