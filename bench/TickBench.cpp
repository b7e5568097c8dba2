// Cost of one tick in virtual time: an empty workspace, chains of 100 to 20,000 Div
// modules, each reading the one before it, and 1,000 and 10,000 modules of the clock,
// step, note and Div types wired as a musician would. Also the cost of placing 10,000.

#include <benchmark/benchmark.h>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"

using namespace quillmer;

namespace {

void tickChain(benchmark::State& state) {
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    const auto div = *typeIdByName("Div");
    const int count = static_cast<int>(state.range(0));
    std::vector<Module*> chain;
    for (int i = 0; i < count; ++i) chain.push_back(&engine.placeForBulk(div));
    engine.endBulk();
    const auto position = [&](const std::string& name) {
        return static_cast<uint16_t>(engine.names.sortedPosition(name));
    };
    for (int i = 0; i < count; ++i) {
        engine.connectInput(*chain[static_cast<size_t>(i)], 0,
                            position(i == 0 ? "~ Turbo" : chain[static_cast<size_t>(i - 1)]->Name));
        engine.connectInput(*chain[static_cast<size_t>(i)], 1, position("~   1"));
    }
    engine.StartTimers();
    for (auto _ : state) engine.tick();
    state.counters["ns_per_module"] = benchmark::Counter(
        count > 0 ? static_cast<double>(count) : 1.0,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Modules of the clock, step and note types, in groups of ten wired as a musician would:
// clocks drive steppers, steppers pick stages, stages play notes.
void tickMusicalPatch(benchmark::State& state) {
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    const auto position = [&](const std::string& name) {
        return static_cast<uint16_t>(engine.names.sortedPosition(name));
    };
    const char* group[] = {"Clock", "Stepper", "Step8", "MIDIKey", "Counter", "Pulse", "Free", "Step16", "MIDITone", "Div"};
    const int count = static_cast<int>(state.range(0));
    std::vector<Module*> placed;
    for (int i = 0; i < count; ++i) placed.push_back(&engine.placeForBulk(*typeIdByName(group[i % 10])));
    engine.endBulk();
    for (size_t g = 0; g + 10 <= placed.size(); g += 10) {
        Module** m = &placed[g];
        const std::string dur = g % 20 == 0 ? "~  12" : "~   6";
        engine.connectInput(*m[0], 0, position(dur));
        engine.connectInput(*m[1], 0, position(dur));
        engine.connectInput(*m[2], 0, position(m[1]->Name));
        engine.connectInput(*m[3], 0, position(m[0]->Name));
        engine.connectInput(*m[3], 1, position(m[2]->Name));
        engine.connectInput(*m[4], 0, position(m[0]->Name));
        engine.connectInput(*m[5], 0, position(m[0]->Name));
        engine.connectInput(*m[6], 3, position("~  24"));
        engine.connectInput(*m[7], 0, position(m[4]->Name));
        engine.connectInput(*m[8], 0, position(m[6]->Name));
        engine.connectInput(*m[8], 1, position(m[7]->Name));
        engine.connectInput(*m[9], 0, position(m[7]->Name));
        engine.connectInput(*m[9], 1, position("~   3"));
    }
    engine.setRun(true);
    engine.StartTimers();
    for (auto _ : state) engine.tick();
    state.counters["ns_per_module"] = benchmark::Counter(
        static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Placing modules at once (as a load does) and one by one (as the menu does).
void placeModules(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const bool oneByOne = state.range(1) != 0;
    const char* kinds[] = {"Div", "Clock", "Step8", "MIDIKey", "Counter"};
    for (auto _ : state) {
        VirtualTimerService timers;
        Engine engine(timers, builtTypes());
        for (int i = 0; i < count; ++i) {
            const ModuleTypeId type = *typeIdByName(kinds[i % 5]);
            if (oneByOne)
                engine.New(type);
            else
                engine.placeForBulk(type);
        }
        engine.endBulk();
        benchmark::DoNotOptimize(engine.names.sortedCount());
    }
}

}  // namespace

BENCHMARK(tickMusicalPatch)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(tickChain)->Arg(0)->Arg(100)->Arg(1000)->Arg(10000)->Arg(20000)->Unit(benchmark::kMicrosecond);
BENCHMARK(placeModules)->Args({10000, 0})->Args({10000, 1})->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_MAIN();
