#include "platform/JackMidiClient.h"

#include <jack/jack.h>
#include <jack/midiport.h>
#include <jack/ringbuffer.h>

#include <algorithm>
#include <cmath>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>

#include "platform/LibrarySetup.h"

namespace quillmer {
namespace {

constexpr size_t kOutputRingBytes = 256 * 1024;
constexpr size_t kInputRingBytes = 64 * 1024;
constexpr size_t kPendingCapacity = 16384;   // timed messages waiting in the process thread
constexpr size_t kLongestMessage = 16 * 1024;  // a SysEx longer than this is refused
constexpr uint8_t kSysExStart = 0xF0;
constexpr uint8_t kActiveSensing = 0xFE;

struct RingHeader {
    int32_t stampMs = 0;
    uint32_t generation = 0;
    uint16_t length = 0;
    uint8_t immediate = 0;
    uint8_t unused = 0;
};

struct InputEntry {
    int64_t stampMicros = 0;
    uint8_t length = 0;
    uint8_t bytes[3] = {};
};

struct Pending {
    int32_t stampMs = 0;
    uint64_t order = 0;
    uint8_t length = 0;
    uint8_t bytes[3] = {};
};

// A min-heap on (stamp, arrival).
bool later(const Pending& a, const Pending& b) {
    return a.stampMs != b.stampMs ? a.stampMs > b.stampMs : a.order > b.order;
}

bool newerGeneration(uint32_t a, uint32_t b) { return static_cast<int32_t>(a - b) > 0; }

}  // namespace

struct JackMidiClient::Output {
    std::atomic<jack_port_t*> port{nullptr};
    jack_ringbuffer_t* ring = jack_ringbuffer_create(kOutputRingBytes);
    std::atomic<uint32_t> generation{0};
    std::atomic<bool> running{false};
    std::atomic<int64_t> baseMicros{0};
    std::atomic<uint64_t> dropped{0};
    std::atomic<bool> played{false};
    std::atomic<bool> ranDry{false};
    OutputEvents events;                  // under notifyMutex_
    std::vector<uint8_t> writeScratch;    // the sending thread's
    // The process thread's own.
    uint32_t seenGeneration = 0;
    uint64_t arrivals = 0;
    std::vector<Pending> pending;
    std::vector<uint8_t> readScratch;

    Output() {
        pending.reserve(kPendingCapacity);
        readScratch.resize(kLongestMessage);
        writeScratch.reserve(sizeof(RingHeader) + kLongestMessage);
    }
    ~Output() { jack_ringbuffer_free(ring); }
};

struct JackMidiClient::Input {
    std::atomic<jack_port_t*> port{nullptr};
    jack_ringbuffer_t* ring = jack_ringbuffer_create(kInputRingBytes);
    std::atomic<bool> started{false};
    InputData data;       // under notifyMutex_
    OutputEvents events;  // under notifyMutex_

    ~Input() { jack_ringbuffer_free(ring); }
};

std::shared_ptr<JackMidiClient> JackMidiClient::open(const std::string& clientName, const TimerService& clock,
                                                     std::string& problem) {
    prepareLibraries();
    jack_status_t status{};
    jack_client_t* client = jack_client_open(clientName.c_str(), JackNoStartServer, &status);
    if (!client) {
        problem = "no JACK server is running";
        return nullptr;
    }
    std::shared_ptr<JackMidiClient> made(new JackMidiClient(client, clock));
    jack_set_process_callback(client, &JackMidiClient::onProcess, made.get());
    jack_on_info_shutdown(
        client, [](jack_status_t, const char*, void* self) { static_cast<JackMidiClient*>(self)->serverGone(); },
        made.get());
    if (jack_activate(client) != 0) {
        problem = "the JACK client " + clientName + " could not be activated";
        return nullptr;  // the destructor closes the client
    }
    return made;
}

JackMidiClient::JackMidiClient(jack_client_t* client, const TimerService& clock) : client_(client), clock_(clock) {
    for (int i = 0; i < kJackPortSlots; ++i) {
        outputs_.push_back(std::make_unique<Output>());
        inputs_.push_back(std::make_unique<Input>());
    }
    inputBatch_.reserve(1);
    sem_init(&wake_, 0, 0);
    notifier_ = std::thread([this] { notifierLoop(); });
}

JackMidiClient::~JackMidiClient() {
    stopping_ = true;
    sem_post(&wake_);
    notifier_.join();
    if (alive_) jack_deactivate(client_);
    jack_client_close(client_);
    sem_destroy(&wake_);
}

uint32_t JackMidiClient::sampleRate() const { return jack_get_sample_rate(client_); }

uint32_t JackMidiClient::periodFrames() const { return jack_get_buffer_size(client_); }

// --- ports ---

bool JackMidiClient::openOutput(int slot, const std::string& portName, const std::string& peer, OutputEvents events,
                                std::string& problem) {
    Output& out = *outputs_.at(static_cast<size_t>(slot));
    if (!alive_) {
        problem = "the JACK server has stopped";
        return false;
    }
    if (out.port.load()) closeOutput(slot);
    jack_port_t* port = jack_port_register(client_, portName.c_str(), JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    if (!port) {
        problem = "JACK refused the port " + portName;
        return false;
    }
    const int connected = jack_connect(client_, jack_port_name(port), peer.c_str());
    if (connected != 0 && connected != EEXIST) {
        jack_port_unregister(client_, port);
        problem = "the port " + peer + " is not there any more";
        return false;
    }
    {
        std::lock_guard<std::mutex> held(notifyMutex_);
        out.events = std::move(events);
    }
    jack_ringbuffer_reset(out.ring);  // no reader while the slot is free
    out.running = false;
    out.dropped = 0;
    out.generation.fetch_add(1);
    out.port.store(port);
    return true;
}

bool JackMidiClient::openInput(int slot, const std::string& portName, const std::string& peer, InputData data,
                               OutputEvents events, std::string& problem) {
    Input& in = *inputs_.at(static_cast<size_t>(slot));
    if (!alive_) {
        problem = "the JACK server has stopped";
        return false;
    }
    if (in.port.load()) closeInput(slot);
    jack_port_t* port = jack_port_register(client_, portName.c_str(), JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    if (!port) {
        problem = "JACK refused the port " + portName;
        return false;
    }
    const int connected = jack_connect(client_, peer.c_str(), jack_port_name(port));
    if (connected != 0 && connected != EEXIST) {
        jack_port_unregister(client_, port);
        problem = "the port " + peer + " is not there any more";
        return false;
    }
    {
        std::lock_guard<std::mutex> held(notifyMutex_);
        in.data = std::move(data);
        in.events = std::move(events);
    }
    in.started = false;
    in.port.store(port);
    return true;
}

void JackMidiClient::closeOutput(int slot) {
    Output& out = *outputs_.at(static_cast<size_t>(slot));
    out.running = false;
    jack_port_t* port = out.port.exchange(nullptr);
    {
        std::lock_guard<std::mutex> held(notifyMutex_);
        out.events = nullptr;
    }
    if (!port) return;
    waitForCycles();
    if (alive_) jack_port_unregister(client_, port);
}

void JackMidiClient::closeInput(int slot) {
    Input& in = *inputs_.at(static_cast<size_t>(slot));
    in.started = false;
    jack_port_t* port = in.port.exchange(nullptr);
    {
        std::lock_guard<std::mutex> held(notifyMutex_);
        in.data = nullptr;
        in.events = nullptr;
    }
    if (!port) return;
    waitForCycles();
    if (alive_) jack_port_unregister(client_, port);
}

// Two cycles make sure a process callback that saw the port has finished with it.
void JackMidiClient::waitForCycles() {
    const uint64_t from = cycles_.load();
    const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (alive_ && cycles_.load() < from + 2 && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::microseconds(500));
}

// --- sending, on the engine's thread ---

namespace {
bool pushMessage(jack_ringbuffer_t* ring, std::vector<uint8_t>& scratch, std::span<const uint8_t> bytes,
                 int32_t stampMs, uint32_t generation, bool immediate) {
    if (bytes.empty() || bytes.size() > kLongestMessage) return false;
    RingHeader header;
    header.stampMs = stampMs;
    header.generation = generation;
    header.length = static_cast<uint16_t>(bytes.size());
    header.immediate = immediate ? 1 : 0;
    const size_t total = sizeof header + bytes.size();
    if (jack_ringbuffer_write_space(ring) < total) return false;
    // One write: the reader sees the whole message or none of it.
    scratch.resize(total);
    std::memcpy(scratch.data(), &header, sizeof header);
    std::memcpy(scratch.data() + sizeof header, bytes.data(), bytes.size());
    jack_ringbuffer_write(ring, reinterpret_cast<const char*>(scratch.data()), total);
    return true;
}
}  // namespace

bool JackMidiClient::sendNow(int slot, std::span<const uint8_t> bytes) {
    Output& out = *outputs_.at(static_cast<size_t>(slot));
    if (!out.port.load()) return false;
    if (pushMessage(out.ring, out.writeScratch, bytes, 0, out.generation.load(), true)) return true;
    ++out.dropped;
    return false;
}

bool JackMidiClient::sendAt(int slot, std::span<const uint8_t> bytes, int32_t stampMs) {
    Output& out = *outputs_.at(static_cast<size_t>(slot));
    if (!out.port.load()) return false;
    if (pushMessage(out.ring, out.writeScratch, bytes, stampMs, out.generation.load(), bytes.size() > 3)) return true;
    ++out.dropped;
    return false;
}

void JackMidiClient::flush(int slot) { outputs_.at(static_cast<size_t>(slot))->generation.fetch_add(1); }

void JackMidiClient::startTimeBase(int slot) {
    Output& out = *outputs_.at(static_cast<size_t>(slot));
    out.baseMicros = clock_.nowMicros();
    out.running = true;
}

void JackMidiClient::stopTimeBase(int slot) { outputs_.at(static_cast<size_t>(slot))->running = false; }

int64_t JackMidiClient::timeBaseStartMicros(int slot) const {
    return outputs_.at(static_cast<size_t>(slot))->baseMicros.load();
}

uint64_t JackMidiClient::droppedCount(int slot) const { return outputs_.at(static_cast<size_t>(slot))->dropped.load(); }

void JackMidiClient::startInput(int slot, bool on) { inputs_.at(static_cast<size_t>(slot))->started = on; }

// --- the process thread ---

int JackMidiClient::onProcess(uint32_t frames, void* self) {
    static_cast<JackMidiClient*>(self)->process(frames);
    return 0;
}

void JackMidiClient::serverGone() {
    alive_ = false;
    sem_post(&wake_);
}

// Frames are what JACK counts without gaps; its own frame times can jump about when the
// driver wakes irregularly. So we lay frames on our clock ourselves: a line at the nominal
// rate through the most punctual recent wake-up. A wake-up is never early, so the line only
// moves later slowly (for a sound card whose clock runs slow against ours), and jumps to a
// wake-up that proves it too late. Late wake-ups on a busy machine don't move it.
void JackMidiClient::followFrames(uint32_t frames) {
    constexpr double kSlowCardAllowance = 20e-6;  // the line may move later by 20 ppm
    constexpr double kRecentMicros = 2e6;         // a while
    constexpr double kLostMicros = 2000;          // how late every wake-up of a while must be
    const double wake = static_cast<double>(clock_.nowMicros());
    const uint32_t frame32 = jack_last_frame_time(client_);
    FrameLine& l = line_;
    if (!l.anchored) {
        const uint32_t rate = std::max<uint32_t>(1, jack_get_sample_rate(client_));
        l.frameMicros = 1e6 / rate;
        l.frame = frame32;
    } else {
        l.frame += static_cast<uint32_t>(frame32 - l.lastFrame32);
    }
    l.lastFrame32 = frame32;
    const double origin = wake - static_cast<double>(l.frame) * l.frameMicros;
    if (!l.anchored) {
        l.originMicros = origin;
        l.recentLowest = origin;
        l.anchored = true;
    } else {
        l.originMicros = std::min(origin, l.originMicros + frames * l.frameMicros * kSlowCardAllowance);
        l.recentLowest = l.recentCount == 0 ? origin : std::min(l.recentLowest, origin);
        if (++l.recentCount * frames * l.frameMicros >= kRecentMicros) {
            // Every wake-up of a while came late: the card's clock has left ours.
            if (l.recentLowest - l.originMicros > kLostMicros) l.originMicros = l.recentLowest;
            l.recentCount = 0;
        }
    }
    periodMicros_ = static_cast<int64_t>(frames * l.frameMicros);
}

void JackMidiClient::process(uint32_t frames) {
    followFrames(frames);
    for (auto& out : outputs_) processOutput(*out, frames);
    for (auto& in : inputs_) processInput(*in, frames);
    cycles_.fetch_add(1);
}

void JackMidiClient::processOutput(Output& out, uint32_t frames) {
    jack_port_t* port = out.port.load();
    if (!port) return;
    void* buffer = jack_port_get_buffer(port, frames);
    jack_midi_clear_buffer(buffer);

    const uint32_t generation = out.generation.load();
    if (generation != out.seenGeneration) {  // flushed
        out.pending.clear();
        out.seenGeneration = generation;
    }
    // What the engine sent since the last cycle: immediate messages go out now, at the
    // start of the period; timed ones join the queue.
    uint32_t lastFrame = 0;
    while (jack_ringbuffer_read_space(out.ring) >= sizeof(RingHeader)) {
        RingHeader header;
        jack_ringbuffer_read(out.ring, reinterpret_cast<char*>(&header), sizeof header);
        jack_ringbuffer_read(out.ring, reinterpret_cast<char*>(out.readScratch.data()), header.length);
        if (header.generation != out.seenGeneration) {
            if (!newerGeneration(header.generation, out.seenGeneration)) continue;  // from before a flush
            out.pending.clear();
            out.seenGeneration = header.generation;
        }
        if (header.immediate) {
            if (jack_midi_event_write(buffer, 0, out.readScratch.data(), header.length) != 0) ++out.dropped;
            continue;
        }
        if (out.pending.size() == out.pending.capacity()) {
            ++out.dropped;
            continue;
        }
        Pending p;
        p.stampMs = header.stampMs;
        p.order = out.arrivals++;
        p.length = static_cast<uint8_t>(header.length);
        std::memcpy(p.bytes, out.readScratch.data(), header.length);
        out.pending.push_back(p);
        std::push_heap(out.pending.begin(), out.pending.end(), later);
    }

    bool audible = false;
    bool wroteTimed = false;
    if (out.running.load()) {
        const int64_t base = out.baseMicros.load();
        const FrameLine& l = line_;
        while (!out.pending.empty()) {
            const Pending& next = out.pending.front();
            const double due = static_cast<double>(base + int64_t{next.stampMs} * 1000);
            const auto dueFrame = static_cast<int64_t>(std::llround((due - l.originMicros) / l.frameMicros));
            int64_t frame = dueFrame - static_cast<int64_t>(l.frame);
            if (frame >= frames) break;
            frame = std::clamp<int64_t>(frame, lastFrame, frames - 1);  // late ones go at once
            if (jack_midi_event_write(buffer, static_cast<jack_nframes_t>(frame), next.bytes, next.length) != 0)
                break;  // the period's buffer is full: the rest go next period
            lastFrame = static_cast<uint32_t>(frame);
            audible = audible || (next.length == 3 && next.bytes[2] != 0);
            wroteTimed = true;
            std::pop_heap(out.pending.begin(), out.pending.end(), later);
            out.pending.pop_back();
        }
    }
    bool signal = false;
    if (audible) signal = !out.played.exchange(true);
    if (wroteTimed && out.pending.empty() && jack_ringbuffer_read_space(out.ring) == 0)
        signal = !out.ranDry.exchange(true) || signal;
    if (signal) sem_post(&wake_);
}

void JackMidiClient::processInput(Input& in, uint32_t frames) {
    jack_port_t* port = in.port.load();
    if (!port) return;
    void* buffer = jack_port_get_buffer(port, frames);
    if (!in.started.load()) return;
    const uint32_t count = jack_midi_get_event_count(buffer);
    bool any = false;
    for (uint32_t i = 0; i < count; ++i) {
        jack_midi_event_t event;
        if (jack_midi_event_get(&event, buffer, i) != 0) continue;
        // Channel messages and the one-byte real-time and common ones; SysEx and active
        // sensing stay out.
        if (event.size == 0 || event.size > 3 || event.buffer[0] < 0x80) continue;
        if (event.buffer[0] == kSysExStart || event.buffer[0] == kActiveSensing) continue;
        InputEntry entry;
        entry.stampMicros = std::llround(line_.originMicros + static_cast<double>(line_.frame + event.time) * line_.frameMicros);
        entry.length = static_cast<uint8_t>(event.size);
        std::memcpy(entry.bytes, event.buffer, event.size);
        if (jack_ringbuffer_write_space(in.ring) < sizeof entry) break;
        jack_ringbuffer_write(in.ring, reinterpret_cast<const char*>(&entry), sizeof entry);
        any = true;
    }
    if (any) sem_post(&wake_);
}

// --- the notifier thread ---

void JackMidiClient::notifierLoop() {
    while (!stopping_) {
        timespec until{};
        clock_gettime(CLOCK_REALTIME, &until);
        until.tv_nsec += 50'000'000;
        if (until.tv_nsec >= 1'000'000'000) {
            until.tv_nsec -= 1'000'000'000;
            ++until.tv_sec;
        }
        sem_timedwait(&wake_, &until);
        if (stopping_) return;
        notifyOutputs();
        deliverInput();
    }
}

void JackMidiClient::notifyOutputs() {
    std::lock_guard<std::mutex> held(notifyMutex_);
    if (!alive_ && !shutdownReported_) {
        shutdownReported_ = true;
        const MidiDeviceEvent gone{MidiDeviceEvent::Kind::Error, 1, "the JACK server has stopped"};
        for (auto& out : outputs_)
            if (out->events) out->events(gone);
        for (auto& in : inputs_)
            if (in->events) in->events(gone);
        return;
    }
    for (auto& out : outputs_) {
        if (!out->events) continue;
        if (out->played.exchange(false)) out->events({MidiDeviceEvent::Kind::MessagePlayed, 0, {}});
        if (out->ranDry.exchange(false)) out->events({MidiDeviceEvent::Kind::QueueEmpty, 0, {}});
    }
}

// Each message is handed on one period after its frame, so messages keep their spacing
// instead of arriving in a bunch at the end of the period.
void JackMidiClient::deliverInput() {
    for (auto& inPtr : inputs_) {
        Input& in = *inPtr;
        while (jack_ringbuffer_read_space(in.ring) >= sizeof(InputEntry)) {
            InputEntry entry;
            jack_ringbuffer_read(in.ring, reinterpret_cast<char*>(&entry), sizeof entry);
            const int64_t wait = entry.stampMicros + periodMicros_.load() - clock_.nowMicros();
            if (wait > 0) std::this_thread::sleep_for(std::chrono::microseconds(wait));
            MidiInputMessage message;
            message.status = entry.bytes[0];
            message.data1 = entry.length > 1 ? entry.bytes[1] : 0;
            message.data2 = entry.length > 2 ? entry.bytes[2] : 0;
            message.stampMicros = entry.stampMicros;
            std::lock_guard<std::mutex> held(notifyMutex_);
            if (!in.data || !in.started) continue;
            inputBatch_.assign(1, message);
            in.data(inputBatch_);
        }
    }
}

}  // namespace quillmer
