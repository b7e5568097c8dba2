#pragma once
// An input port of ours ("In A".."In D" of client "Quillmer") connected from another
// program's port through RtMidi. Channel messages and the one-byte real-time and common
// messages (clock, start, stop, continue, 244) arrive through the data handler, on RtMidi's
// thread, while started. SysEx and active sensing are left out. RtMidi failures become
// Error events naming the device.

#include <atomic>
#include <memory>
#include <vector>

#include "engine/MidiDevice.h"
#include "platform/RtMidiDeviceProvider.h"

class RtMidiIn;

namespace quillmer {

class RtMidiInputDevice final : public MidiInputDevice {
public:
    // `source` is the other program's port as the API lists it; `ourPort` is "In A".."In D".
    RtMidiInputDevice(MidiPortApi api, std::string source, std::string displayName, std::string ourPort);
    ~RtMidiInputDevice() override;

    const std::string& name() const override { return name_; }
    bool open() override;
    void close() override;
    bool isOpen() const override { return in_ != nullptr; }
    // Data is handed on only between start() and stop(). Safe from any thread.
    void start() override { started_ = true; }
    void stop() override { started_ = false; }
    // RtMidi hands messages over as they come: nothing of ours waits to be thrown away.
    void flush() override {}

private:
    void fail(const std::string& why);
    // On RtMidi's thread.
    void received(const std::vector<unsigned char>& message);
    static void onMessage(double, std::vector<unsigned char>* message, void* device);
    static void onLateError(int type, const std::string& text, void* device);

    MidiPortApi api_;
    std::string source_;
    std::string name_;
    std::string ourPort_;
    std::unique_ptr<RtMidiIn> in_;
    std::atomic<bool> started_{false};
    std::vector<MidiInputMessage> batch_;  // RtMidi's thread only
};

}  // namespace quillmer
