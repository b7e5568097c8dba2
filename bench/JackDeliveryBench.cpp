// How exactly time-stamped MIDI reaches another JACK program: 10,000 messages at latency
// 50 ms through our own JACK client, then through RtMidi behind our time-stamped queue (the
// other way), on a private dummy server at 48 kHz, 256 frames. A plain libjack client
// receives them and notes the frame of each. Messages the server drops when it falls behind
// (a busy machine, a dummy driver without real-time scheduling) are counted, not measured.
//
// Printed per path, in ms: the spread of delivery about the latency of its neighbourhood
// (median, 99th percentile, worst of |error - median error of the 50 around it|), and the
// run's constant latency as the receiver lays frames on the clock. Usage: jack_delivery_bench [messages] [period]

#include <jack/jack.h>
#include <jack/midiport.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/DesktopDevices.h"
#include "platform/RealTimeTimerService.h"
#include "tests/platform/PrivateJackServer.h"

using namespace quillmer;
using namespace std::chrono_literals;

namespace {

constexpr double kRate = 48000;
constexpr double kFrameMicros = 1e6 / kRate;
constexpr int32_t kLatencyMs = 50;

// The receiving program: every event's absolute frame, and where frames fall on our clock
// by the most punctual period start.
class Receiver {
public:
    explicit Receiver(const TimerService& clock) : clock_(clock) {
        client_ = jack_client_open("QuillmerBench", JackNoStartServer, nullptr);
        if (!client_) return;
        port_ = jack_port_register(client_, "in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
        jack_set_process_callback(client_, &Receiver::onProcess, this);
        jack_activate(client_);
    }
    ~Receiver() {
        if (client_) jack_client_close(client_);
    }
    bool ok() const { return client_ && port_; }
    // Each arrival: the message's number (its two data bytes) and its frame.
    std::vector<std::pair<int, uint64_t>> take() {
        std::lock_guard<std::mutex> held(mutex_);
        std::vector<std::pair<int, uint64_t>> frames;
        frames.swap(frames_);
        return frames;
    }
    size_t count() {
        std::lock_guard<std::mutex> held(mutex_);
        return frames_.size();
    }
    double origin() {
        std::lock_guard<std::mutex> held(mutex_);
        return origin_;
    }

private:
    static int onProcess(jack_nframes_t frames, void* self) {
        static_cast<Receiver*>(self)->process(frames);
        return 0;
    }
    void process(jack_nframes_t frames) {
        const auto wake = static_cast<double>(clock_.nowMicros());
        const jack_nframes_t first = jack_last_frame_time(client_);
        void* buffer = jack_port_get_buffer(port_, frames);
        std::lock_guard<std::mutex> held(mutex_);
        origin_ = std::min(origin_, wake - first * kFrameMicros);
        for (uint32_t i = 0, n = jack_midi_get_event_count(buffer); i < n; ++i) {
            jack_midi_event_t e;
            if (jack_midi_event_get(&e, buffer, i) == 0 && e.size == 3)
                frames_.push_back({e.buffer[1] | e.buffer[2] << 7, uint64_t{first} + e.time});
        }
    }

    const TimerService& clock_;
    jack_client_t* client_ = nullptr;
    jack_port_t* port_ = nullptr;
    std::mutex mutex_;
    std::vector<std::pair<int, uint64_t>> frames_;
    double origin_ = 1e300;
};

double percentile(std::vector<double> v, double p) {
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, static_cast<size_t>(p * static_cast<double>(v.size())))];
}

// Sends `count` note-ons 0.5..3.5 ms apart, each 50 ms ahead of its time as the engine does
// under latency, and prints how they landed.
void measure(const char* title, bool ownClient, int count, const TimerService& clock, Receiver& receiver) {
    setSampleAccurateJack(ownClient);
    DesktopDeviceProvider provider(clock, {MidiPortApi::Jack});
    auto out = provider.makeOutput("JACK: QuillmerBench:in", 0);
    if (!out || !out->open()) {
        std::printf("%s: could not open the port\n", title);
        return;
    }
    const std::vector<uint8_t> probe{0xB0, 127, 127};  // number 16383: not measured
    for (int tries = 0; tries < 500 && receiver.count() == 0; ++tries) {
        out->sendNow(probe);
        std::this_thread::sleep_for(10ms);
    }
    std::this_thread::sleep_for(100ms);
    receiver.take();

    std::mt19937 random(7);
    std::uniform_int_distribution<int> gap(1, 7);  // half milliseconds
    std::vector<int32_t> stamps;
    int32_t stampHalves = 2 * kLatencyMs + 20;
    for (int i = 0; i < count; ++i) {
        stampHalves += gap(random);
        stamps.push_back(stampHalves);
    }
    out->startTimeBase();
    const int64_t base = clock.nowMicros();
    // Whole-ms stamps: half-ms steps alternate between two messages on one stamp and the next.
    for (int i = 0; i < count; ++i) {
        const int32_t stampMs = stamps[static_cast<size_t>(i)] / 2;
        const int64_t sendAt = base + int64_t{stampMs - kLatencyMs} * 1000;
        if (const int64_t wait = sendAt - clock.nowMicros(); wait > 0) std::this_thread::sleep_for(std::chrono::microseconds(wait));
        const uint8_t bytes[3] = {0xB0, static_cast<uint8_t>(i & 127), static_cast<uint8_t>(i >> 7 & 127)};
        out->sendAt(bytes, stampMs);
    }
    for (int waited = 0; waited < 300 && receiver.count() < static_cast<size_t>(count); ++waited) std::this_thread::sleep_for(10ms);
    const auto arrivals = receiver.take();
    out->close();
    std::vector<double> errors;
    for (const auto& [number, frame] : arrivals) {
        if (number >= count) continue;
        const double due = static_cast<double>(base + int64_t{stamps[static_cast<size_t>(number)] / 2} * 1000);
        errors.push_back(static_cast<double>(frame) * kFrameMicros - due);
    }
    if (errors.empty()) {
        std::printf("%s: nothing arrived\n", title);
        return;
    }
    // A dummy server's frames drift against the clock when it falls behind, so each error is
    // taken against the latency of its neighbourhood: the median of the 50 messages around it.
    const double constant = percentile(errors, 0.5);
    std::vector<double> spread;
    constexpr size_t kAround = 25;
    for (size_t i = 0; i < errors.size(); ++i) {
        const size_t from = i < kAround ? 0 : i - kAround;
        const size_t to = std::min(errors.size(), i + kAround + 1);
        const double local = percentile(std::vector<double>(errors.begin() + static_cast<long>(from), errors.begin() + static_cast<long>(to)), 0.5);
        spread.push_back(std::abs(errors[i] - local));
    }
    std::printf("%-24s median %6.3f ms  p99 %6.3f ms  worst %6.3f ms  (constant %.3f ms; %zu arrivals of %d sent; "
                "a server that falls behind drops some and repeats some)\n",
                title, percentile(spread, 0.5) / 1000, percentile(spread, 0.99) / 1000,
                *std::max_element(spread.begin(), spread.end()) / 1000, (constant + receiver.origin()) / 1000,
                errors.size(), count);
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::max(10, std::atoi(argv[1])) : 10000;
    const std::string period = argc > 2 ? argv[2] : "256";
    const PrivateJackServer server("bench", std::max(16, std::atoi(period.c_str())));
    if (!server.started()) {
        std::fprintf(stderr, "jack_delivery_bench: jackd could not be started (Debian package jackd2)\n");
        return 1;
    }

    int status = 0;
    {
        RealTimeTimerService clock;
        Receiver receiver(clock);
        if (!receiver.ok()) {
            std::fprintf(stderr, "jack_delivery_bench: the JACK server did not come up\n");
            status = 1;
        } else {
            std::printf("%d messages, latency %d ms, 48 kHz, %s frames a period\n", count, kLatencyMs, period.c_str());
            measure("own JACK client", true, count, clock, receiver);
            measure("RtMidi behind our queue", false, count, clock, receiver);
        }
    }
    return status;
}
