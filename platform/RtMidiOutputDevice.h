#pragma once
// An output port of ours ("Out A".."Out D" of client "Quillmer") connected to another
// program's port through RtMidi, on the ALSA sequencer or JACK. Sends at once; RtMidi
// failures become Error events naming the device, never exceptions.
//
// Thread rule: one thread at a time (a TimeStampedOutput in front serialises its calls).

#include <memory>

#include "platform/ImmediateMidiOutput.h"
#include "platform/RtMidiDeviceProvider.h"

class RtMidiOut;

namespace quillmer {

class RtMidiOutputDevice final : public ImmediateMidiOutput {
public:
    // `target` is the other program's port as the API lists it; `displayName` is the name
    // in our lists; `ourPort` is "Out A".."Out D".
    RtMidiOutputDevice(MidiPortApi api, std::string target, std::string displayName, std::string ourPort);
    ~RtMidiOutputDevice() override;

    bool open() override;
    void close() override;
    bool isOpen() const override { return out_ != nullptr; }
    void sendNow(std::span<const uint8_t> bytes) override;

    const std::string& ourPort() const { return ourPort_; }

private:
    // Raises an Error event "<device>: <why>".
    void fail(const std::string& why);
    static void onLateError(int type, const std::string& text, void* device);

    MidiPortApi api_;
    std::string target_;
    std::string ourPort_;
    std::unique_ptr<RtMidiOut> out_;
};

}  // namespace quillmer
