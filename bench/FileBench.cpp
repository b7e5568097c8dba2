// Load and save of a patch with 1,000 modules and all 128 snapshots in use, each snapshot
// wired differently, and of one with 10,000 modules and one snapshot.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>

#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

using namespace quillmer;

namespace {

// A file of its own for each size, made anew: saving over a longer file would keep its tail.
std::string patchPath(const benchmark::State& state) {
    return (std::filesystem::temp_directory_path() /
            ("quillmer-file-bench-" + std::to_string(state.range(0)) + "-" + std::to_string(state.range(1)) + ".qmp"))
        .string();
}

// Modules of the built types, each input connected to another module's output; every
// snapshot wired another way.
void buildBigPatch(Session& session, int modules, int snapshots) {
    Engine& e = session.engine;
    const char* kinds[] = {"Div", "Div", "Div", "MIDITone", "MIDIVoice", "MIDIChan", "Div", "MIDIPBend"};
    std::vector<Module*> placed;
    for (int i = 0; i < modules; ++i) placed.push_back(&e.placeForBulk(*typeIdByName(kinds[i % 8])));
    e.endBulk();
    std::vector<std::string> divNames;
    for (Module* m : placed)
        if (m->info().hasOutput()) divNames.push_back(m->Name);
    for (int s = 0; s < snapshots; ++s) {
        for (size_t i = 0; i < placed.size(); ++i) {
            Module& m = *placed[i];
            for (int k = 0; k < m.inputCount(); ++k) {
                const size_t other = (i + static_cast<size_t>(k) + static_cast<size_t>(s)) % divNames.size();
                e.connectInput(m, k, static_cast<uint16_t>(e.names.sortedPosition(divNames[other])));
            }
        }
        session.snapshots.StoreNewPatch();
    }
}

void savePatch(benchmark::State& state) {
    VirtualTimerService timers;
    Session session(timers, builtTypes());
    buildBigPatch(session, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    std::filesystem::remove(patchPath(state));
    std::string error;
    for (auto _ : state)
        if (!session.SaveModuleFile(patchPath(state), error)) state.SkipWithError(error.c_str());
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(patchPath(state)));
}

void loadPatch(benchmark::State& state) {
    VirtualTimerService timers;
    {
        Session session(timers, builtTypes());
        buildBigPatch(session, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
        std::filesystem::remove(patchPath(state));
        std::string error;
        session.SaveModuleFile(patchPath(state), error);
    }
    Session session(timers, builtTypes());
    std::string error;
    for (auto _ : state)
        if (!session.LoadModuleFile(patchPath(state), error)) state.SkipWithError(error.c_str());
}

}  // namespace

BENCHMARK(savePatch)->Args({1000, 128})->Args({10000, 1})->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(loadPatch)->Args({1000, 128})->Args({10000, 1})->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_MAIN();
