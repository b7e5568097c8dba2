// Cost of one tick in virtual time: an empty workspace, and chains of 100, 1,000 and
// 10,000 Div modules, each reading the one before it.

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

}  // namespace

BENCHMARK(tickChain)->Arg(0)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
