// Translating a MIDI file of about 1 MB: 16 tracks of notes, controllers and pitch bend on
// several channels, dozens of tempo changes, SysEx and text. Opening reads and sorts the
// whole file; a translation then takes one class of one channel of one track to a .mfx file.

#include <benchmark/benchmark.h>

#include <filesystem>

#include "platform/MidiFileTranslation.h"
#include "platform/StandardMidiFile.h"

using namespace quillmer;

namespace {

MidiFileEvent ev(uint32_t delta, std::vector<uint8_t> bytes) {
    MidiFileEvent e;
    e.delta = delta;
    e.bytes = std::move(bytes);
    return e;
}

const std::string& bigFile() {
    static const std::string path = [] {
        MidiFileContents c;
        c.format = 1;
        c.division = 480;
        std::vector<MidiFileEvent> conductor;
        for (uint32_t i = 0; i < 60; ++i) {
            const uint32_t micros = 400000 + i * 3000;
            conductor.push_back(ev(i == 0 ? 0 : 1900, {0xFF, 0x51, 0x03, static_cast<uint8_t>(micros >> 16),
                                                      static_cast<uint8_t>(micros >> 8), static_cast<uint8_t>(micros)}));
        }
        c.tracks.push_back(conductor);
        uint32_t seed = 12345;
        const auto next = [&seed] {
            seed = seed * 1103515245u + 12345u;
            return (seed >> 16) & 0x7FFF;
        };
        for (int t = 0; t < 15; ++t) {
            std::vector<MidiFileEvent> track{ev(0, {0xFF, 0x03, 0x05, 'T', 'r', 'a', 'c', 'k'}),
                                             ev(0, {0xF0, 0x05, 0x7E, 0x7F, 0x09, 0x01, 0xF7})};
            for (int i = 0; i < 4400; ++i) {
                const auto channel = static_cast<uint8_t>((t + i % 3) & 15);
                const auto note = static_cast<uint8_t>(36 + next() % 60);
                track.push_back(ev(next() % 60, {static_cast<uint8_t>(0x90 | channel), note, static_cast<uint8_t>(1 + next() % 126)}));
                track.push_back(ev(next() % 30, {static_cast<uint8_t>(0xB0 | channel), 7, static_cast<uint8_t>(next() % 128)}));
                track.push_back(ev(next() % 30, {static_cast<uint8_t>(0xE0 | channel), 0, static_cast<uint8_t>(next() % 128)}));
                track.push_back(ev(next() % 60, {static_cast<uint8_t>(0x80 | channel), note, 0}));
                if (i % 500 == 0) track.push_back(ev(0, {0xFF, 0x05, 0x03, 'l', 'a', '-'}));
            }
            c.tracks.push_back(std::move(track));
        }
        const std::string file = (std::filesystem::temp_directory_path() / "quillmer-translation-bench.mid").string();
        std::string error;
        if (!writeMidiFile(file, c, error)) throw std::runtime_error(error);
        return file;
    }();
    return path;
}

void BM_OpenBigFile(benchmark::State& state) {
    const std::string& path = bigFile();
    for (auto _ : state) {
        MidiFileTranslation t;
        std::string error, reason;
        if (!t.open(path, error, reason)) state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(t.trackCount());
    }
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(path));
}
BENCHMARK(BM_OpenBigFile)->Unit(benchmark::kMillisecond);

// What the dialog does from choosing the file to saving the list.
void BM_TranslateBigFileToMfx(benchmark::State& state) {
    const std::string& path = bigFile();
    const std::string out = (std::filesystem::temp_directory_path() / "quillmer-translation-bench.mfx").string();
    size_t events = 0;
    for (auto _ : state) {
        MidiFileTranslation t;
        std::string error, reason;
        if (!t.open(path, error, reason)) state.SkipWithError(error.c_str());
        const auto counts = t.classCounts(3, 3);
        const MfxList list = t.translate(3, 3, mclass::Key);
        events = list.values.size();
        if (!saveMfxFile(out, list, error, reason)) state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(counts);
    }
    state.counters["events"] = static_cast<double>(events);
}
BENCHMARK(BM_TranslateBigFileToMfx)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
