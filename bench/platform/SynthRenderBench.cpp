// Offline render speed of the built-in synth: a busy minute of eight voices, one on each of
// eight channels with its own program, a new note every eighth at tempo 120 with a controller
// change now and then, rendered in virtual time into a WAV file. Reported as how many times
// faster than real time.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "engine/VirtualTimerService.h"
#include "platform/OfflineSynthOutput.h"

using namespace quillmer;

namespace {

constexpr int kVoices = 8;
constexpr int64_t kMinuteMs = 60'000;
constexpr int64_t kEighthMs = 250;

void SynthOfflineMinute(benchmark::State& state) {
    if (findGeneralMidiSoundFont().empty()) {
        state.SkipWithError("no General MIDI SoundFont installed");
        return;
    }
    const auto path =
        std::filesystem::temp_directory_path() / ("quillmer-bench-" + std::to_string(::getpid()) + ".wav");
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        VirtualTimerService timers;
        OfflineSynthOutput synth(timers, path.string());
        synth.open();
        for (int v = 0; v < kVoices; ++v) {
            const uint8_t program[2] = {static_cast<uint8_t>(0xC0 | v), static_cast<uint8_t>(v * 8)};
            synth.sendNow(program);
        }
        uint8_t held[kVoices] = {};
        for (int64_t ms = 0, step = 0; ms < kMinuteMs; ms += kEighthMs, ++step) {
            timers.advanceTo(ms * 1000);
            for (int v = 0; v < kVoices; ++v) {
                const auto channel = static_cast<uint8_t>(v);
                if (held[v]) {
                    const uint8_t off[3] = {static_cast<uint8_t>(0x80 | channel), held[v], 0};
                    synth.sendNow(off);
                }
                held[v] = static_cast<uint8_t>(36 + (step * 7 + v * 5) % 48);
                const uint8_t on[3] = {static_cast<uint8_t>(0x90 | channel), held[v], static_cast<uint8_t>(70 + v * 5)};
                synth.sendNow(on);
                if (step % 8 == 0) {
                    const auto pan = static_cast<uint8_t>((step + v * 16) % 128);
                    const uint8_t cc[3] = {static_cast<uint8_t>(0xB0 | channel), 10, pan};
                    synth.sendNow(cc);
                }
            }
        }
        timers.advanceTo(kMinuteMs * 1000);
        synth.close();
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        state.counters["speed_x_realtime"] = static_cast<double>(kMinuteMs) / 1000.0 / seconds;
    }
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

}  // namespace

BENCHMARK(SynthOfflineMinute)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
