#pragma once
// Our own JACK client for MIDI: one client with up to four output and four input ports.
// Outputs keep their time-stamped queue in the process callback and write every message at
// the frame of its due time (real-time bytes too); inputs are stamped from their frame and
// handed on one period later, so their spacing survives. Nothing on the process thread
// locks or allocates: the engine's messages come through lock-free ring buffers, and events
// for the engine (errors, queue empty, message played, input) go out through a thread of
// the client's own.
//
// Times: a stamp is ms after the port's time-base start on `clock` (a real-time clock).

#include <atomic>
#include <semaphore.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "engine/MidiDevice.h"
#include "engine/TimerService.h"

typedef struct _jack_client jack_client_t;
typedef struct _jack_port jack_port_t;

namespace quillmer {

constexpr int kJackPortSlots = 4;

class JackMidiClient {
public:
    using OutputEvents = std::function<void(const MidiDeviceEvent&)>;  // errors reach inputs too
    using InputData = std::function<void(const std::vector<MidiInputMessage>&)>;

    // Opens the client on the running server (never starts one); nullptr with `problem` set
    // when that can't be done. `clock` must outlive the client.
    static std::shared_ptr<JackMidiClient> open(const std::string& clientName, const TimerService& clock,
                                                std::string& problem);
    ~JackMidiClient();
    JackMidiClient(const JackMidiClient&) = delete;
    JackMidiClient& operator=(const JackMidiClient&) = delete;

    // False once the server has gone away: open a new client then.
    bool alive() const { return alive_.load(); }
    jack_client_t* handle() const { return client_; }

    // Registers our port `portName` in slot 0..3 and connects it to `peer` (another program's
    // port as JACK names it). False with `problem` set when either fails; the slot stays free.
    bool openOutput(int slot, const std::string& portName, const std::string& peer, OutputEvents events,
                    std::string& problem);
    bool openInput(int slot, const std::string& portName, const std::string& peer, InputData data,
                   OutputEvents events, std::string& problem);
    // Takes the port away; waits for the process callback to let go of it first.
    void closeOutput(int slot);
    void closeInput(int slot);

    // --- an open output slot; from one thread at a time ---
    // Immediate messages go out at the start of the next period, before anything timed.
    // False when the queue is full and the message was dropped.
    bool sendNow(int slot, std::span<const uint8_t> bytes);
    // Longer than 3 bytes goes out at once.
    bool sendAt(int slot, std::span<const uint8_t> bytes, int32_t stampMs);
    void flush(int slot);
    void startTimeBase(int slot);
    void stopTimeBase(int slot);
    // Clock time of stamp 0.
    int64_t timeBaseStartMicros(int slot) const;
    // Messages dropped because a queue was full, since the slot opened.
    uint64_t droppedCount(int slot) const;

    // --- an open input slot ---
    void startInput(int slot, bool on);

    // The server's sample rate and period, for reports and tests.
    uint32_t sampleRate() const;
    uint32_t periodFrames() const;

private:
    struct Output;
    struct Input;

    JackMidiClient(jack_client_t* client, const TimerService& clock);
    static int onProcess(uint32_t frames, void* self);
    void serverGone();
    void process(uint32_t frames);
    // Where frames fall on our clock: see process().
    struct FrameLine {
        double frameMicros = 0;     // one frame at the nominal rate
        double originMicros = 0;    // clock time of frame 0
        bool anchored = false;
        uint32_t lastFrame32 = 0;   // JACK's frame counter wraps; ours doesn't
        uint64_t frame = 0;         // the period's first frame
        double recentLowest = 0;    // the punctual end of recent wake-ups
        int recentCount = 0;
    };
    void followFrames(uint32_t frames);
    void processOutput(Output& out, uint32_t frames);
    void processInput(Input& in, uint32_t frames);
    void waitForCycles();
    void notifierLoop();
    void notifyOutputs();
    void deliverInput();

    jack_client_t* client_;
    const TimerService& clock_;
    std::vector<std::unique_ptr<Output>> outputs_;
    std::vector<std::unique_ptr<Input>> inputs_;
    std::atomic<bool> alive_{true};
    std::atomic<uint64_t> cycles_{0};
    std::atomic<int64_t> periodMicros_{0};
    FrameLine line_;  // the process thread's

    sem_t wake_;              // posted by the process thread: something for the notifier
    std::mutex notifyMutex_;  // guards the handlers; never taken on the process thread
    std::atomic<bool> stopping_{false};
    bool shutdownReported_ = false;  // notifier thread only
    std::vector<MidiInputMessage> inputBatch_;  // notifier thread only
    std::thread notifier_;
};

}  // namespace quillmer
