#pragma once
// The MIDI port layer: four output and four input ports (A..D), the one path by which all
// MIDI leaves the engine, the per-tick real-time bytes, panic, sync and remote modes, the
// input tables, and recording. Devices come from a MidiDeviceProvider; no device code here.
//
// Thread rule: everything needs the engine lock, except the device callbacks
// (onInputData, device events): they queue what they bring and never wait for the lock.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "engine/MidiDevice.h"
#include "engine/MidiInputTables.h"
#include "engine/MidiRecording.h"
#include "engine/TimerService.h"

namespace quillmer {

class Engine;

constexpr int kPortCount = 4;
constexpr std::string_view kNoDevice = "None Selected";

// Bits of PortOptions, per output port.
namespace portoption {
constexpr int32_t ActiveSensing = 1;
constexpr int32_t AllNotesOff = 4;
constexpr int32_t AllKeysOff = 8;
constexpr int32_t ResetControls = 16;
}  // namespace portoption

// Bits of MidiInTriggerMask: which input messages run the MIDI-input pass at once.
namespace trigger {
constexpr int NoteOn = 1;
constexpr int NoteOff = 2;
constexpr int PitchBend = 4;
constexpr int Control = 8;
constexpr int Poly = 16;
constexpr int NrpnLsb = 32;
constexpr int NrpnMsb = 64;
}  // namespace trigger

enum class RemoteMode : uint8_t { None = 0, Send = 1, Receive = 2 };

// A device error the user should see: a message box, or the options window at start-up.
struct PortError {
    bool input = false;
    int port = 0;
    std::string title;  // "MIDI Output Error" or "MIDI Input Error"
    std::string text;
    bool showOptions = false;
};

// "1 A" .. "16D": the selector caption of a ChannelSlot.
std::string channelSlotCaption(int slot);
// Bytes on the wire for a status byte: 1, 2 or 3.
int midiMessageLength(uint8_t status);
// Settings keys of the chosen devices: "<n>MidiOutPort", "<n>MidiInPort".
std::string outputPortKey(int port);
std::string inputPortKey(int port);

class MidiPorts {
public:
    explicit MidiPorts(Engine& engine);
    ~MidiPorts();
    MidiPorts(const MidiPorts&) = delete;
    MidiPorts& operator=(const MidiPorts&) = delete;

    // --- devices ---
    void setProvider(MidiDeviceProvider* provider) { provider_ = provider; }
    // Device names, "None Selected" last.
    std::vector<std::string> outputChoices() const;
    std::vector<std::string> inputChoices() const;
    // Choosing a device for a port; a device lives on one port only. False when it couldn't
    // be opened (the error is reported and the port falls to "None Selected").
    bool chooseOutput(int port, const std::string& name);
    bool chooseInput(int port, const std::string& name);
    // Puts a device on a port directly, opened (tests, offline rendering).
    void attachOutput(int port, std::unique_ptr<MidiOutputDevice> device);
    void attachInput(int port, std::unique_ptr<MidiInputDevice> device);
    const std::string& outputName(int port) const { return outputs_[static_cast<size_t>(port)].name; }
    const std::string& inputName(int port) const { return inputs_[static_cast<size_t>(port)].name; }
    MidiOutputDevice* outputDevice(int port) const { return outputs_[static_cast<size_t>(port)].device.get(); }
    bool outputOpen(int port) const;

    // --- options ---
    std::array<int32_t, kPortCount> PortOptions{};
    RemoteMode remoteMode = RemoteMode::None;
    int32_t Latency() const { return latency_; }
    // 0..1000 ms; the next send reopens the ports. Returns the value in force.
    int32_t setLatency(int32_t ms);
    // The latency box: text that isn't a number in range is ignored; returns the text to show.
    std::string setLatencyText(const std::string& text);
    int MidiInTriggerMask() const { return triggerMask_; }
    // A general controller trigger and the NRPN triggers exclude each other.
    void setTrigger(int bit, bool on);
    bool progChgToSnapshot = false;  // chkProgChg
    int progChgChannelSlot = 0;      // cbChan choice
    bool startingUp = false;         // device errors show the options window instead of a box
    std::function<void(const PortError&)> onError;

    // --- sending ---
    bool AllNotesOffActive = false;
    bool ReopenOutputs = false;
    std::array<bool, kPortCount> PendingOutput{};
    void SendMIDI(int port, uint8_t status, uint8_t data1, uint8_t data2, int track = 0);
    void SendRaw(int port, uint8_t status, uint8_t data1, uint8_t data2);
    void SendMIDISysEx(int port, std::span<const uint8_t> data);
    // Panic on every open port; with All Keys Off set, a paced sweep follows.
    void AllNotesOff();
    bool sweepRunning() const { return sweep_.running; }
    void StartMIDI();
    void StopMIDI();
    void StartAllMIDI();
    void StopAllMIDI();
    void SendMidiRemote(int code);
    // Tick step 7: clock and active sensing, or the latency filler 249.
    void sendPerTickBytes();
    void sendClockReset();

    // --- instruments ---
    // The bank last chosen on each ChanPort by a channel module.
    std::array<int16_t, kChannelSlots> currentBank{};
    // Voice and bank names for captions; empty when no name files are loaded.
    std::function<std::string(int bank, int program)> voiceName;
    std::function<std::string(int bank)> bankName;

    // --- input ---
    MidiInputTables in;
    std::array<bool, kPortCount> InputOpen{};
    // Device callback: queued, and handled at once when the engine is free, else as soon
    // as whoever holds the engine lets go of it.
    void onInputData(int port, const std::vector<MidiInputMessage>& messages);
    // The queued input, in the order it came (lock held).
    void handleQueuedInput();
    // The same with the lock already held.
    void handleInput(int port, const std::vector<MidiInputMessage>& messages);
    void openInputs();
    void closeInputs();

    // --- recording ---
    void setRecordSink(MidiFileSink* sink) { sink_ = sink; }
    bool recording() const { return recording_; }
    void setRecording(bool on) { recording_ = on; }
    // A recording track for a module's messages; track 0 is taken at start.
    int allocateRecordingTrack() {
        tracks_.emplace_back();
        return static_cast<int>(tracks_.size() - 1);
    }
    void InitializeMIDITracks();
    void advanceRecordingDeltas();
    void resetRecordingDeltas();
    // Stops recording and writes the file; false with `error` naming the file.
    bool SaveMidiFile(const std::string& path, std::string& error);

    // --- exit ---
    // Lets queued output drain: done after latency + 100 ms or when the queues run dry.
    void beginExitDrain();
    bool exitDrained() const { return drained_; }
    void stopSweep();

    // Device events queued from device threads, handled under the lock at the next tick,
    // and any input still queued.
    void handleDeviceEvents();

private:
    struct OutputPort {
        std::string name{kNoDevice};
        std::unique_ptr<MidiOutputDevice> device;
        bool open = false;
    };
    struct InputPort {
        std::string name{kNoDevice};
        std::unique_ptr<MidiInputDevice> device;
    };
    struct RecordingTrack {
        bool used = false;
        bool wroteThisTick = false;
        uint32_t delta = 0;
    };
    struct Sweep {
        bool running = false;
        int port = 0;
        int wait = 0;  // 0..31: the batch to send at the next firing
    };
    struct QueuedInput {
        int port;
        std::vector<MidiInputMessage> messages;
    };
    struct QueuedEvent {
        bool input;
        int port;
        MidiDeviceEvent event;
    };

    void send(int port, std::span<const uint8_t> bytes, bool immediate);
    void openOutput(int port);
    void closeOutput(int port);
    void reportError(bool input, int port, const std::string& text);
    void handleDeviceEvent(const QueuedEvent& queued);
    void wireOutputEvents(int port);
    void wireInput(int port);
    void openInput(int port);
    void closeInput(int port);
    void runPanic(int fromPort);
    void sweepBatch();
    void onSweepTimer();
    void onDrainTimer();
    void record(int track, uint8_t status, uint8_t data1, uint8_t data2);

    Engine& engine_;
    MidiDeviceProvider* provider_ = nullptr;
    MidiFileSink* sink_ = nullptr;
    std::array<OutputPort, kPortCount> outputs_;
    std::array<InputPort, kPortCount> inputs_;
    int32_t latency_ = 0;
    int triggerMask_ = 0;
    bool recording_ = false;
    std::vector<RecordingTrack> tracks_;
    Sweep sweep_;
    bool drained_ = false;
    TimerId sweepTimer_ = -1;
    TimerId drainTimer_ = -1;
    std::mutex eventsMutex_;
    std::vector<QueuedEvent> events_;
    std::vector<QueuedInput> input_;  // input not handled yet
};

}  // namespace quillmer
