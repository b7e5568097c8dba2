#pragma once
// The engine's view of a MIDI device. platform/ implements it for RtMidi (ALSA, JACK),
// the built-in synth and the test capture device; the port layer of the engine only
// talks to these interfaces.

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace quillmer {

// Events raised by a device, delivered through its event handler. They may arrive on a
// device thread: the handler takes the engine lock itself.
struct MidiDeviceEvent {
    enum class Kind { Error, QueueEmpty, MessagePlayed };
    Kind kind = Kind::Error;
    int code = 0;      // error code, 0 when none
    std::string text;  // error text, naming the device
};

class MidiOutputDevice {
public:
    using EventHandler = std::function<void(const MidiDeviceEvent&)>;

    virtual ~MidiOutputDevice() = default;

    virtual const std::string& name() const = 0;
    // Opens the device. On failure returns false and raises an Error event.
    virtual bool open() = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    // Sends one message now: a channel or real-time message, or a whole SysEx.
    virtual void sendNow(std::span<const uint8_t> bytes) = 0;
    // Queues one message for delivery at stampMs on the device's time base.
    virtual void sendAt(std::span<const uint8_t> bytes, int32_t stampMs) = 0;
    // Throws away what is queued.
    virtual void flush() = 0;
    // Starts the time base at 0 / stops it (queued messages wait while stopped).
    virtual void startTimeBase() = 0;
    virtual void stopTimeBase() = 0;
    virtual void reset() = 0;

    void setEventHandler(EventHandler handler) { onEvent_ = std::move(handler); }

protected:
    void raise(const MidiDeviceEvent& event) const {
        if (onEvent_) onEvent_(event);
    }

private:
    EventHandler onEvent_;
};

struct MidiInputMessage {
    uint8_t status = 0;
    uint8_t data1 = 0;
    uint8_t data2 = 0;
    int64_t stampMicros = -1;  // when it came, on the device's clock; -1 when unknown
};

class MidiInputDevice {
public:
    // One call may carry many messages, oldest first.
    using DataHandler = std::function<void(const std::vector<MidiInputMessage>&)>;
    using EventHandler = std::function<void(const MidiDeviceEvent&)>;

    virtual ~MidiInputDevice() = default;

    virtual const std::string& name() const = 0;
    virtual bool open() = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual void flush() = 0;

    void setDataHandler(DataHandler handler) { onData_ = std::move(handler); }
    void setEventHandler(EventHandler handler) { onEvent_ = std::move(handler); }

protected:
    void deliver(const std::vector<MidiInputMessage>& messages) const {
        if (onData_) onData_(messages);
    }
    void raise(const MidiDeviceEvent& event) const {
        if (onEvent_) onEvent_(event);
    }

private:
    DataHandler onData_;
    EventHandler onEvent_;
};

// Lists and makes the devices a user can choose.
class MidiDeviceProvider {
public:
    virtual ~MidiDeviceProvider() = default;
    virtual std::vector<std::string> outputNames() = 0;
    virtual std::vector<std::string> inputNames() = 0;
    // nullptr when no device has that name. `port` 0..3 is the port it will serve (A..D),
    // for the name other programs see.
    virtual std::unique_ptr<MidiOutputDevice> makeOutput(const std::string& name, int port) = 0;
    virtual std::unique_ptr<MidiInputDevice> makeInput(const std::string& name, int port) = 0;
};

}  // namespace quillmer
