#include "engine/MidiPorts.h"

#include <charconv>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int32_t kMaxLatency = 1000;
constexpr int32_t kSweepWaitMs = 60;
constexpr int kSweepWaits = 32;     // 16 channels, twice: the middle keys, then the rest
constexpr int kDrainExtraMs = 100;  // at exit, on top of the latency
constexpr uint8_t kClock = 248;
constexpr uint8_t kActiveSensing = 254;
constexpr uint8_t kFiller = 249;     // keeps a time-stamped queue from running dry
constexpr uint8_t kClockReset = 244; // a master's private reset for a slave copy
}  // namespace

std::string channelSlotCaption(int slot) {
    const int channel = slot % 16 + 1;
    const char port = static_cast<char>('A' + (slot / 16) % kPortCount);
    return std::to_string(channel) + (channel < 10 ? " " : "") + port;
}

int midiMessageLength(uint8_t status) {
    if (status < 0xF0) return (status & 0xF0) == 0xC0 || (status & 0xF0) == 0xD0 ? 2 : 3;
    if (status == 0xF1 || status == 0xF3) return 2;
    if (status == 0xF2) return 3;
    return 1;
}

std::string outputPortKey(int port) { return std::to_string(port) + "MidiOutPort"; }
std::string inputPortKey(int port) { return std::to_string(port) + "MidiInPort"; }

MidiPorts::MidiPorts(Engine& engine) : engine_(engine) {
    sweepTimer_ = engine_.timers().addTimer("key-off sweep", [this] { onSweepTimer(); });
    drainTimer_ = engine_.timers().addTimer("exit drain", [this] { onDrainTimer(); });
    tracks_.resize(1);  // track 0 is taken at start
}

MidiPorts::~MidiPorts() {
    engine_.timers().setInterval(sweepTimer_, 0);
    engine_.timers().setInterval(drainTimer_, 0);
}

// --- devices ---

std::vector<std::string> MidiPorts::outputChoices() const {
    std::vector<std::string> names = provider_ ? provider_->outputNames() : std::vector<std::string>{};
    names.emplace_back(kNoDevice);
    return names;
}

std::vector<std::string> MidiPorts::inputChoices() const {
    std::vector<std::string> names = provider_ ? provider_->inputNames() : std::vector<std::string>{};
    names.emplace_back(kNoDevice);
    return names;
}

bool MidiPorts::outputOpen(int port) const {
    const OutputPort& p = outputs_[static_cast<size_t>(port)];
    return p.open && p.device && p.device->isOpen();
}

void MidiPorts::wireOutputEvents(int port) {
    outputs_[static_cast<size_t>(port)].device->setEventHandler([this, port](const MidiDeviceEvent& e) {
        std::lock_guard<std::mutex> held(eventsMutex_);
        events_.push_back({false, port, e});
    });
}

void MidiPorts::openOutput(int port) {
    OutputPort& p = outputs_[static_cast<size_t>(port)];
    if (!p.device || p.open) return;
    if (p.device->open()) {
        p.device->startTimeBase();
        p.open = true;
    }
}

void MidiPorts::closeOutput(int port) {
    OutputPort& p = outputs_[static_cast<size_t>(port)];
    if (!p.device || !p.open) return;
    p.device->reset();
    p.device->stopTimeBase();
    p.device->flush();
    p.device->close();
    p.open = false;
}

bool MidiPorts::chooseOutput(int port, const std::string& name) {
    OutputPort& p = outputs_[static_cast<size_t>(port)];
    closeOutput(port);
    p.device.reset();
    p.name = name;
    if (name == kNoDevice) return true;
    for (int other = 0; other < kPortCount; ++other) {
        if (other == port || outputs_[static_cast<size_t>(other)].name != name) continue;
        closeOutput(other);
        outputs_[static_cast<size_t>(other)].device.reset();
        outputs_[static_cast<size_t>(other)].name = std::string(kNoDevice);
    }
    p.device = provider_ ? provider_->makeOutput(name, port) : nullptr;
    if (!p.device) {
        p.name = std::string(kNoDevice);
        reportError(false, port, name + " is not available.");
        return false;
    }
    wireOutputEvents(port);
    openOutput(port);
    ReopenOutputs = true;
    if (engine_.options.resetModules) engine_.ResyncPending = true;
    handleDeviceEvents();
    return outputOpen(port);
}

void MidiPorts::attachOutput(int port, std::unique_ptr<MidiOutputDevice> device) {
    OutputPort& p = outputs_[static_cast<size_t>(port)];
    closeOutput(port);
    p.name = device->name();
    p.device = std::move(device);
    wireOutputEvents(port);
    openOutput(port);
}

void MidiPorts::wireInput(int port) {
    InputPort& p = inputs_[static_cast<size_t>(port)];
    p.device->setDataHandler([this, port](const std::vector<MidiInputMessage>& messages) { onInputData(port, messages); });
    p.device->setEventHandler([this, port](const MidiDeviceEvent& e) {
        std::lock_guard<std::mutex> held(eventsMutex_);
        events_.push_back({true, port, e});
    });
}

// A device's close may wait for its callback to return; the callback never waits for the
// engine lock, so this is safe with the lock held.
void MidiPorts::closeInput(int port) {
    InputPort& p = inputs_[static_cast<size_t>(port)];
    InputOpen[static_cast<size_t>(port)] = false;
    if (!p.device) return;
    p.device->stop();
    p.device->close();
    p.device.reset();
    std::lock_guard<std::mutex> held(eventsMutex_);
    std::erase_if(input_, [port](const QueuedInput& q) { return q.port == port; });  // what it sent last
}

void MidiPorts::openInput(int port) {
    InputPort& p = inputs_[static_cast<size_t>(port)];
    if (!p.device || InputOpen[static_cast<size_t>(port)]) return;
    wireInput(port);
    if (p.device->open()) {
        p.device->start();
        InputOpen[static_cast<size_t>(port)] = true;
    }
}

bool MidiPorts::chooseInput(int port, const std::string& name) {
    InputPort& p = inputs_[static_cast<size_t>(port)];
    closeInput(port);
    p.name = name;
    if (name == kNoDevice) return true;
    for (int other = 0; other < kPortCount; ++other) {
        if (other == port || inputs_[static_cast<size_t>(other)].name != name) continue;
        closeInput(other);
        inputs_[static_cast<size_t>(other)].name = std::string(kNoDevice);
    }
    p.device = provider_ ? provider_->makeInput(name, port) : nullptr;
    if (!p.device) {
        p.name = std::string(kNoDevice);
        reportError(true, port, name + " is not available.");
        return false;
    }
    openInput(port);
    handleDeviceEvents();
    return InputOpen[static_cast<size_t>(port)];
}

void MidiPorts::attachInput(int port, std::unique_ptr<MidiInputDevice> device) {
    closeInput(port);
    InputPort& p = inputs_[static_cast<size_t>(port)];
    p.name = device->name();
    p.device = std::move(device);
    openInput(port);
}

void MidiPorts::openInputs() {
    for (int port = 0; port < kPortCount; ++port) openInput(port);
}

void MidiPorts::closeInputs() {
    for (int port = 0; port < kPortCount; ++port) {
        InputPort& p = inputs_[static_cast<size_t>(port)];
        InputOpen[static_cast<size_t>(port)] = false;
        if (p.device && p.device->isOpen()) {
            p.device->stop();
            p.device->close();
        }
    }
}

// --- errors and device events ---

void MidiPorts::reportError(bool input, int port, const std::string& text) {
    if (!onError) return;
    PortError e;
    e.input = input;
    e.port = port;
    e.title = input ? "MIDI Input Error" : "MIDI Output Error";
    e.text = text;
    e.showOptions = startingUp;
    onError(e);
}

void MidiPorts::handleDeviceEvents() {
    std::vector<QueuedEvent> pending;
    {
        std::lock_guard<std::mutex> held(eventsMutex_);
        pending.swap(events_);
    }
    for (const QueuedEvent& e : pending) handleDeviceEvent(e);
    handleQueuedInput();
}

void MidiPorts::handleDeviceEvent(const QueuedEvent& queued) {
    const MidiDeviceEvent& e = queued.event;
    switch (e.kind) {
        case MidiDeviceEvent::Kind::MessagePlayed:
            engine_.lamps.midiOutFlag = true;
            break;
        case MidiDeviceEvent::Kind::QueueEmpty:
            if (queued.input) break;
            ReopenOutputs = true;  // the device's time base has to start over
            if (engine_.shutdown())
                drained_ = true;
            else if (!AllNotesOffActive)
                engine_.lamps.timingErrorFlag = true;
            break;
        case MidiDeviceEvent::Kind::Error:
            if (e.code == 0 || e.code == 8) break;
            if (queued.input) {
                closeInput(queued.port);
                inputs_[static_cast<size_t>(queued.port)].name = std::string(kNoDevice);
            } else {
                closeOutput(queued.port);
                outputs_[static_cast<size_t>(queued.port)].device.reset();
                outputs_[static_cast<size_t>(queued.port)].name = std::string(kNoDevice);
            }
            reportError(queued.input, queued.port, e.text);
            break;
    }
}

// --- options ---

int32_t MidiPorts::setLatency(int32_t ms) {
    if (ms < 0 || ms > kMaxLatency) return latency_;
    if (ms != latency_) ReopenOutputs = true;
    latency_ = ms;
    return latency_;
}

std::string MidiPorts::setLatencyText(const std::string& text) {
    int value = 0;
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, value);
    if (ec == std::errc() && ptr == end) setLatency(value);
    return std::to_string(latency_);
}

void MidiPorts::setTrigger(int bit, bool on) {
    if (on) {
        triggerMask_ |= bit;
        if (bit == trigger::Control) triggerMask_ &= ~(trigger::NrpnLsb | trigger::NrpnMsb);
        if (bit == trigger::NrpnLsb || bit == trigger::NrpnMsb) triggerMask_ &= ~trigger::Control;
    } else {
        triggerMask_ &= ~bit;
    }
}

// --- sending ---

void MidiPorts::send(int port, std::span<const uint8_t> bytes, bool immediate) {
    MidiOutputDevice& device = *outputs_[static_cast<size_t>(port)].device;
    if (immediate || latency_ == 0)
        device.sendNow(bytes);
    else
        device.sendAt(bytes, engine_.OutputStamp);
}

void MidiPorts::SendMIDI(int port, uint8_t status, uint8_t data1, uint8_t data2, int track) {
    if (AllNotesOffActive || engine_.shutdown()) return;
    if (ReopenOutputs) {
        StopMIDI();
        StartMIDI();
        ReopenOutputs = false;
        engine_.restartOutputStamp();
    }
    if (port < 0 || port >= kPortCount || !outputOpen(port)) return;
    const uint8_t message[3] = {status, data1, data2};
    const std::span<const uint8_t> bytes(message, static_cast<size_t>(midiMessageLength(status)));
    if (latency_ > 0) {
        send(port, bytes, false);
        PendingOutput[static_cast<size_t>(port)] = true;
    } else {
        send(port, bytes, true);
        if (data2 != 0) engine_.lamps.midiOutFlag = true;
    }
    if (status < 0xF0 && recording_) record(track, status, data1, data2);
}

void MidiPorts::SendRaw(int port, uint8_t status, uint8_t data1, uint8_t data2) {
    if (!outputOpen(port)) return;
    const uint8_t message[3] = {status, data1, data2};
    send(port, std::span<const uint8_t>(message, static_cast<size_t>(midiMessageLength(status))), true);
}

void MidiPorts::SendMIDISysEx(int port, std::span<const uint8_t> data) {
    if (!outputOpen(port)) return;
    send(port, data, true);  // always immediate, also under latency
}

void MidiPorts::StartMIDI() {
    for (int port = 0; port < kPortCount; ++port) openOutput(port);
    ReopenOutputs = true;
}

void MidiPorts::StopMIDI() {
    for (int port = 0; port < kPortCount; ++port) closeOutput(port);
}

void MidiPorts::StartAllMIDI() {
    StartMIDI();
    openInputs();
}

void MidiPorts::StopAllMIDI() {
    StopMIDI();
    closeInputs();
}

void MidiPorts::SendMidiRemote(int code) {
    if (remoteMode != RemoteMode::Send) return;
    if (code == sysbus::Begin) SendMIDI(0, 250, 0, 0);
    if (code == sysbus::Run) SendMIDI(0, 251, 0, 0);
    if (code == sysbus::Stop) SendMIDI(0, 252, 0, 0);
}

void MidiPorts::sendPerTickBytes() {
    for (int port = 0; port < kPortCount; ++port) {
        if (!outputOpen(port)) continue;
        const bool master = engine_.options.syncMode == SyncMode::Master && port == 0;
        const bool sensing = (PortOptions[static_cast<size_t>(port)] & portoption::ActiveSensing) != 0;
        if (master || sensing) {
            if (master) SendMIDI(port, kClock, 0, 0);
            if (sensing) SendMIDI(port, kActiveSensing, 0, 0);
        } else if (latency_ != 0 && !PendingOutput[static_cast<size_t>(port)]) {
            SendMIDI(port, kFiller, 0, 0);
        }
        PendingOutput[static_cast<size_t>(port)] = false;
    }
}

void MidiPorts::sendClockReset() {
    for (int port = 0; port < kPortCount; ++port) SendMIDI(port, kClockReset, 0, 0);
}

// --- panic ---

void MidiPorts::AllNotesOff() {
    stopSweep();
    runPanic(0);
}

// Flush and controllers for each open port from `fromPort` on; a port with All Keys Off
// starts its sweep, and the ports after it wait for the sweep to end.
void MidiPorts::runPanic(int fromPort) {
    for (int port = fromPort; port < kPortCount; ++port) {
        if (!outputOpen(port)) continue;
        const int32_t options = PortOptions[static_cast<size_t>(port)];
        outputs_[static_cast<size_t>(port)].device->flush();
        for (uint8_t ch = 0; ch < 16; ++ch) {
            if (options & portoption::AllNotesOff) SendRaw(port, static_cast<uint8_t>(0xB0 | ch), 123, 0);
            if (options & portoption::ResetControls) {
                SendRaw(port, static_cast<uint8_t>(0xB0 | ch), 121, 0);
                SendRaw(port, static_cast<uint8_t>(0xB0 | ch), 7, 112);
                SendRaw(port, static_cast<uint8_t>(0xB0 | ch), 64, 0);
                SendRaw(port, static_cast<uint8_t>(0xB0 | ch), 1, 0);
                SendRaw(port, static_cast<uint8_t>(0xE0 | ch), 0, 63);  // 63, as it always was
            }
        }
        if (options & portoption::AllKeysOff) {
            sweep_ = {true, port, 0};
            engine_.timers().setInterval(sweepTimer_, kSweepWaitMs);
            sweepBatch();
            return;
        }
    }
    stopSweep();
}

// One channel's note-offs: the middle keys 32..96 in the first 16 batches, the rest after.
void MidiPorts::sweepBatch() {
    const int port = sweep_.port;
    const auto status = static_cast<uint8_t>(0x80 | (sweep_.wait % 16));
    const bool middle = sweep_.wait < 16;
    for (int note = 0; note < 128; ++note) {
        const bool inMiddle = note >= 32 && note <= 96;
        if (inMiddle == middle) SendRaw(port, status, static_cast<uint8_t>(note), 0);
    }
}

void MidiPorts::onSweepTimer() {
    auto held = engine_.lock();
    if (!sweep_.running) return;
    if (++sweep_.wait < kSweepWaits) {
        sweepBatch();
        return;
    }
    runPanic(sweep_.port + 1);
}

void MidiPorts::stopSweep() {
    sweep_.running = false;
    engine_.timers().setInterval(sweepTimer_, 0);
}

// --- input ---

void MidiPorts::onInputData(int port, const std::vector<MidiInputMessage>& messages) {
    {
        std::lock_guard<std::mutex> held(eventsMutex_);
        input_.push_back({port, messages});
    }
    // Never wait for the engine here: whoever holds it may be closing this very device.
    // The input pass runs now if the engine is free, else as its holder lets go of it.
    engine_.inputArrived();
}

void MidiPorts::handleQueuedInput() {
    std::vector<QueuedInput> pending;
    {
        std::lock_guard<std::mutex> held(eventsMutex_);
        pending.swap(input_);
    }
    for (const QueuedInput& q : pending) handleInput(q.port, q.messages);
}

void MidiPorts::handleInput(int port, const std::vector<MidiInputMessage>& messages) {
    int triggers = 0;
    for (const MidiInputMessage& m : messages) {
        const uint8_t status = m.status;
        const auto d1 = static_cast<uint8_t>(m.data1 & 127);
        const auto d2 = static_cast<uint8_t>(m.data2 & 127);
        const int high = status & 0xF0;
        const auto slot = static_cast<size_t>((status & 15) + port * 16);
        engine_.lamps.midiInFlag = true;

        if (engine_.options.syncMode == SyncMode::Slave && (status == kClock || status == kClockReset)) {
            engine_.lamps.midiInFlag = false;
            if (port == 0) {
                if (status == kClock)
                    engine_.tick();
                else
                    engine_.ResetClocks();
            }
            continue;
        }
        if (remoteMode == RemoteMode::Receive && (status == 250 || status == 251 || status == 252)) {
            if (port == 0) engine_.seams().composerTransport(status == 250 ? sysbus::Begin : status == 251 ? sysbus::Run : sysbus::Stop);
            continue;
        }
        if (status >= 0xF0) continue;

        switch (high) {
            case 0xC0:
                in.InProgram[slot] = d1;
                if (progChgToSnapshot && static_cast<int>(slot) == progChgChannelSlot && d1 != engine_.CurrentSnapshot &&
                    d1 < engine_.SnapshotCount) {
                    engine_.CurrentSnapshot = d1;
                    engine_.seams().SetNewPatch();
                }
                break;
            case 0xB0: {
                in.InControl[d1][slot] = d2;
                triggers |= trigger::Control;
                if (d1 == 6) triggers |= trigger::NrpnMsb;
                if (d1 == 38) triggers |= trigger::NrpnLsb;
                std::vector<int16_t>& table = in.InRpnSelect[slot] != 0 ? in.InNrpnTable : in.InRpnTable;
                const size_t at = MidiInputTables::parameterIndex(in.InParamMsb[slot], in.InParamLsb[slot], static_cast<int>(slot));
                switch (d1) {
                    case 99: in.InRpnSelect[slot] = -1; in.InParamMsb[slot] = d2; break;
                    case 101: in.InRpnSelect[slot] = 0; in.InParamMsb[slot] = d2; break;
                    case 98:
                    case 100: in.InParamLsb[slot] = d2; break;
                    case 6:
                        in.InDataMsb[slot] = d2;
                        if (!table.empty()) table[at] = d2;
                        break;
                    case 38:
                        if (!table.empty()) table[at] = static_cast<int16_t>((in.InDataMsb[slot] - 64) * 128 + d2);
                        break;
                    default: break;
                }
                break;
            }
            case 0xA0:
                in.InPolyPressure[d1][slot] = d2;
                triggers |= trigger::Poly;
                break;
            case 0xE0:
                in.InPitchBend[slot] = d2;
                triggers |= trigger::PitchBend;
                break;
            case 0x90:
            case 0x80:
                if (high == 0x90 && d2 > 0) {
                    triggers |= trigger::NoteOn;
                    for (int voice = 0; voice < kVoicesPerSlot; ++voice) {
                        const auto bit = static_cast<uint8_t>(1 << voice);
                        if (in.InNoteActive[slot] & bit) continue;
                        in.InNoteActive[slot] |= bit;
                        in.InVoiceNote[static_cast<size_t>(voice)][slot] = d1;
                        in.InVoiceVelocity[static_cast<size_t>(voice)][slot] = d2;
                        in.InLastNote[slot] = d1;
                        in.InLastVelocity[slot] = d2;
                        in.InNoteFlag[slot] = -1;
                        break;
                    }
                } else {
                    triggers |= trigger::NoteOff;
                    for (int voice = 0; voice < kVoicesPerSlot; ++voice) {
                        const auto bit = static_cast<uint8_t>(1 << voice);
                        if ((in.InNoteActive[slot] & bit) && in.InVoiceNote[static_cast<size_t>(voice)][slot] == d1) {
                            in.InNoteActive[slot] = static_cast<uint8_t>(in.InNoteActive[slot] & ~bit);
                            break;
                        }
                    }
                }
                break;
            default: break;
        }
    }
    if ((triggers & triggerMask_) != 0) engine_.runMidiInputPass();
}

// --- recording ---

void MidiPorts::record(int track, uint8_t status, uint8_t data1, uint8_t data2) {
    if (track < 0) track = 0;
    if (static_cast<size_t>(track) >= tracks_.size()) tracks_.resize(static_cast<size_t>(track) + 1);
    RecordingTrack& t = tracks_[static_cast<size_t>(track)];
    t.used = true;
    // 480 file ticks a quarter over 24 ticks a quarter: 20 file ticks a tick.
    const uint32_t delta = t.wroteThisTick ? 0 : t.delta * 20;
    t.wroteThisTick = true;
    if (!sink_) return;
    const uint8_t message[3] = {status, data1, data2};
    sink_->add(track + 1, delta, std::span<const uint8_t>(message, static_cast<size_t>(midiMessageLength(status))));
}

void MidiPorts::InitializeMIDITracks() {
    if (sink_) sink_->beginRecording(engine_.Tempo(), engine_.quarterNoteMicros());
    for (RecordingTrack& t : tracks_) t = RecordingTrack{};
}

void MidiPorts::advanceRecordingDeltas() {
    for (RecordingTrack& t : tracks_) {
        if (t.wroteThisTick) {
            t.wroteThisTick = false;
            t.delta = 1;
        } else {
            ++t.delta;
        }
    }
}

void MidiPorts::resetRecordingDeltas() {
    for (RecordingTrack& t : tracks_) t.delta = 0;
}

// Only the tracks that were used go into the file, in the order of their numbers.
bool MidiPorts::SaveMidiFile(const std::string& path, std::string& error) {
    recording_ = false;
    if (!sink_) {
        error = "Unable to save " + path + ": no MIDI file writer.";
        return false;
    }
    std::vector<int> used;
    for (size_t t = 0; t < tracks_.size(); ++t)
        if (tracks_[t].used) used.push_back(static_cast<int>(t) + 1);
    return sink_->save(path, used, error);
}

// --- exit ---

void MidiPorts::beginExitDrain() {
    drained_ = false;
    engine_.timers().setInterval(drainTimer_, latency_ + kDrainExtraMs);
}

void MidiPorts::onDrainTimer() {
    auto held = engine_.lock();
    engine_.timers().setInterval(drainTimer_, 0);
    drained_ = true;
}

}  // namespace quillmer
