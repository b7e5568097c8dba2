#pragma once
// Base of the devices that can only send at once (RtMidi ports, the built-in synth, the
// capture device): the libraries have no queue of their own. sendAt() sends at once too;
// wrap the device in a TimeStampedOutput to get a real time-stamped queue.

#include <string>

#include "engine/MidiDevice.h"

namespace quillmer {

class ImmediateMidiOutput : public MidiOutputDevice {
public:
    explicit ImmediateMidiOutput(std::string name) : name_(std::move(name)) {}

    const std::string& name() const override { return name_; }
    void sendAt(std::span<const uint8_t> bytes, int32_t /*stampMs*/) override { sendNow(bytes); }
    void flush() override {}
    void startTimeBase() override {}
    void stopTimeBase() override {}
    void reset() override {}

private:
    std::string name_;
};

}  // namespace quillmer
