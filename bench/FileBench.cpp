// Load and save of a patch with 1,000 modules and all 128 snapshots in use.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>

#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

using namespace quillmer;

namespace {

std::string patchPath() { return (std::filesystem::temp_directory_path() / "quillmer-file-bench.qmp").string(); }

// 1,000 modules of the built types, connected in a chain, 128 snapshots.
void buildBigPatch(Session& session) {
    Engine& e = session.engine;
    const char* kinds[] = {"Div", "Div", "Div", "MIDITone", "MIDIVoice", "MIDIChan", "Div", "MIDIPBend"};
    std::vector<Module*> placed;
    for (int i = 0; i < 1000; ++i) placed.push_back(&e.placeForBulk(*typeIdByName(kinds[i % 8])));
    e.endBulk();
    std::vector<std::string> divNames;
    for (Module* m : placed)
        if (m->info().hasOutput()) divNames.push_back(m->Name);
    for (size_t i = 0; i < placed.size(); ++i) {
        Module& m = *placed[i];
        for (int k = 0; k < m.inputCount(); ++k)
            e.connectInput(m, k, static_cast<uint16_t>(e.names.sortedPosition(divNames[(i + static_cast<size_t>(k)) % divNames.size()])));
    }
    for (int s = 0; s < 128; ++s) session.snapshots.StoreNewPatch();
}

void savePatch(benchmark::State& state) {
    VirtualTimerService timers;
    Session session(timers, builtTypes());
    buildBigPatch(session);
    std::string error;
    for (auto _ : state)
        if (!session.SaveModuleFile(patchPath(), error)) state.SkipWithError(error.c_str());
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(patchPath()));
}

void loadPatch(benchmark::State& state) {
    VirtualTimerService timers;
    {
        Session session(timers, builtTypes());
        buildBigPatch(session);
        std::string error;
        session.SaveModuleFile(patchPath(), error);
    }
    Session session(timers, builtTypes());
    std::string error;
    for (auto _ : state)
        if (!session.LoadModuleFile(patchPath(), error)) state.SkipWithError(error.c_str());
}

}  // namespace

BENCHMARK(savePatch)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(loadPatch)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_MAIN();
