#pragma once
// Output and input ports of our own JACK client (platform/JackMidiClient): "Out A".."Out D"
// and "In A".."In D" of client "Quillmer", connected to another program's port. Outputs
// have a time base and queue of their own and deliver each message at its frame; they need
// no TimeStampedOutput in front. Failures become Error events naming the device.
//
// Thread rule: one thread at a time (the engine's, under its lock).

#include <memory>
#include <mutex>

#include "engine/MidiDevice.h"
#include "engine/TimerService.h"

namespace quillmer {

class JackMidiClient;

// Hands out the one live client of this program, opening a new one after the server
// restarted. Shared by the provider and its devices.
class JackClientSource {
public:
    // The client takes the program's client name as it stands when the first port opens,
    // which a session manager may have set after the devices were made.
    explicit JackClientSource(const TimerService& clock);
    // nullptr with `problem` set when no JACK server runs.
    std::shared_ptr<JackMidiClient> client(std::string& problem);

private:
    std::mutex mutex_;
    const TimerService& clock_;
    std::shared_ptr<JackMidiClient> client_;
};

class JackMidiOutput final : public MidiOutputDevice {
public:
    // `peer` is the other program's port as JACK names it; `displayName` the name in our
    // lists; `port` 0..3 the port it serves.
    JackMidiOutput(std::shared_ptr<JackClientSource> source, std::string peer, std::string displayName, int port);
    ~JackMidiOutput() override;

    const std::string& name() const override { return name_; }
    bool open() override;
    void close() override;
    bool isOpen() const override;
    void sendNow(std::span<const uint8_t> bytes) override;
    void sendAt(std::span<const uint8_t> bytes, int32_t stampMs) override;
    void flush() override;
    void startTimeBase() override;
    void stopTimeBase() override;
    void reset() override { flush(); }

    // The client while open, for tests and measurements.
    JackMidiClient* client() const { return client_.get(); }
    int slot() const { return port_; }

private:
    std::shared_ptr<JackClientSource> source_;
    std::string peer_;
    std::string name_;
    int port_;
    std::shared_ptr<JackMidiClient> client_;
};

class JackMidiInput final : public MidiInputDevice {
public:
    JackMidiInput(std::shared_ptr<JackClientSource> source, std::string peer, std::string displayName, int port);
    ~JackMidiInput() override;

    const std::string& name() const override { return name_; }
    bool open() override;
    void close() override;
    bool isOpen() const override;
    void start() override;
    void stop() override;
    // Messages are handed on within a period: nothing of ours waits long enough to flush.
    void flush() override {}

private:
    std::shared_ptr<JackClientSource> source_;
    std::string peer_;
    std::string name_;
    int port_;
    std::shared_ptr<JackMidiClient> client_;
};

}  // namespace quillmer
