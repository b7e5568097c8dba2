#pragma once
// Devices for port-layer tests: an output that keeps every message with how it was sent,
// and an input the test feeds by hand.

#include <string>
#include <vector>

#include "engine/MidiDevice.h"
#include "engine/TimerService.h"

namespace quillmer::testing {

struct SentMessage {
    std::vector<uint8_t> bytes;
    int64_t atMicros = 0;  // clock time of the call
    int32_t stampMs = -1;  // -1 when sent at once
};

class FakeOutput final : public MidiOutputDevice {
public:
    FakeOutput(std::string name, const TimerService& clock, std::vector<SentMessage>* log, bool failToOpen = false)
        : name_(std::move(name)), clock_(clock), log_(log), failToOpen_(failToOpen) {}

    const std::string& name() const override { return name_; }
    bool open() override {
        if (failToOpen_) {
            raise({MidiDeviceEvent::Kind::Error, 2, name_ + " refused to open"});
            return false;
        }
        open_ = true;
        ++opens;
        return true;
    }
    void close() override { open_ = false; }
    bool isOpen() const override { return open_; }
    void sendNow(std::span<const uint8_t> bytes) override { log_->push_back({{bytes.begin(), bytes.end()}, clock_.nowMicros(), -1}); }
    void sendAt(std::span<const uint8_t> bytes, int32_t stampMs) override {
        log_->push_back({{bytes.begin(), bytes.end()}, clock_.nowMicros(), stampMs});
    }
    void flush() override { ++flushes; }
    void startTimeBase() override {}
    void stopTimeBase() override {}
    void reset() override {}
    void raiseQueueEmpty() { raise({MidiDeviceEvent::Kind::QueueEmpty, 0, {}}); }

    int opens = 0;
    int flushes = 0;

private:
    std::string name_;
    const TimerService& clock_;
    std::vector<SentMessage>* log_;
    bool failToOpen_;
    bool open_ = false;
};

class FakeInput final : public MidiInputDevice {
public:
    explicit FakeInput(std::string name) : name_(std::move(name)) {}
    const std::string& name() const override { return name_; }
    bool open() override { return open_ = true; }
    void close() override { open_ = false; }
    bool isOpen() const override { return open_; }
    void start() override {}
    void stop() override {}
    void flush() override {}
    // Delivers as the device thread would (the port layer takes the engine lock).
    void feed(const std::vector<MidiInputMessage>& messages) { deliver(messages); }

private:
    std::string name_;
    bool open_ = false;
};

}  // namespace quillmer::testing
