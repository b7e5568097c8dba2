// Delivery error of the time-stamped queue in real time: 10,000 messages stamped 50 ms
// ahead, two every millisecond as a busy tick would send them, delivered to the capture
// device. The error of each is its delivered time minus its stamp; the median, the 99th
// percentile and the worst are reported in microseconds.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/CaptureDevice.h"
#include "platform/RealTimeStampedOutput.h"
#include "platform/RealTimeTimerService.h"

using namespace quillmer;

namespace {

constexpr int kMessages = 10'000;
constexpr int kLatencyMs = 50;
constexpr int kPerMillisecond = 2;

void QueueDeliveryError(benchmark::State& state) {
    for (auto _ : state) {
        RealTimeTimerService clock;
        auto log = std::make_shared<CaptureLog>();
        log->reserve(kMessages);
        RealTimeStampedOutput output(std::make_unique<CaptureDevice>("capture", clock, log), clock);
        output.open();
        output.startTimeBase();
        const int64_t base = output.timeBaseStartMicros();

        std::vector<int32_t> stamps;
        stamps.reserve(kMessages);
        auto next = std::chrono::steady_clock::now();
        while (static_cast<int>(stamps.size()) < kMessages) {
            const auto nowMs = static_cast<int32_t>((clock.nowMicros() - base) / 1000);
            for (int i = 0; i < kPerMillisecond && static_cast<int>(stamps.size()) < kMessages; ++i) {
                const uint8_t note = static_cast<uint8_t>(stamps.size() % 128);
                const uint8_t message[3] = {0x90, note, 100};
                output.sendAt(message, nowMs + kLatencyMs);
                stamps.push_back(nowMs + kLatencyMs);
            }
            next += std::chrono::milliseconds(1);
            std::this_thread::sleep_until(next);
        }
        log->waitFor(kMessages, std::chrono::seconds(10));

        const auto kept = log->messages();
        std::vector<int64_t> errors;
        for (size_t i = 0; i < kept.size() && i < stamps.size(); ++i)
            errors.push_back(kept[i].atMicros - (base + int64_t{stamps[i]} * 1000));
        std::sort(errors.begin(), errors.end());
        const auto at = [&](double q) {
            return static_cast<double>(errors[static_cast<size_t>(q * static_cast<double>(errors.size() - 1))]);
        };
        state.counters["delivered"] = static_cast<double>(kept.size());
        state.counters["median_us"] = at(0.5);
        state.counters["p99_us"] = at(0.99);
        state.counters["worst_us"] = static_cast<double>(errors.back());
        state.counters["earliest_us"] = static_cast<double>(errors.front());
        state.counters["sched_fifo"] = output.realTimeScheduling() ? 1 : 0;
    }
}

}  // namespace

BENCHMARK(QueueDeliveryError)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
