// Cost of one tick per module for chains of the arithmetic and logic processors: each
// module reads the output of the one placed before it on its first input, constants on
// the others, and the taps follow the nearest master placed before them. A chain of only
// the pure types (those that skip an update whose inputs did not change) is timed too.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "modules/processors/Memory.h"
#include "modules/processors/Selection.h"
#include "modules/processors/Sums.h"

using namespace quillmer;

namespace {

const std::vector<std::string> kEveryType{
    "Add",    "Add2",    "AddDiv", "Minus",   "Carry",   "Mult",    "MulAdd", "MulDiv", "Modu",  "Percent",
    "Scaler", "Level",   "Octave", "Bounds",  "Mixer",   "Unity",   "Invert", "Mask",   "Shift", "Bits",
    "Diff",   "LogiAND", "LogiOR", "LogiXOR", "LogiEQ0", "LogiNE0", "Test",   "Latest", "Tally", "HiLo",
    "Accum",  "Relay2",  "Selct",  "SelOut",  "Flip",    "Sample",  "Delay",  "DLTap",  "Slew",  "T127"};

const std::vector<std::string> kPureTypes{"Add",    "Add2",   "Mult",   "MulAdd", "MulDiv",  "Modu",   "Percent",
                                          "Scaler", "Level",  "Octave", "Bounds", "Unity",   "Invert", "Mask",
                                          "Shift",  "LogiAND", "LogiOR", "LogiXOR", "LogiEQ0", "LogiNE0", "Minus"};

void tickChainOf(benchmark::State& state, const std::vector<std::string>& types) {
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    const int count = static_cast<int>(state.range(0));
    std::vector<Module*> chain;
    for (int i = 0; i < count; ++i)
        chain.push_back(&engine.placeForBulk(*typeIdByName(types[static_cast<size_t>(i) % types.size()])));
    engine.endBulk();
    const auto position = [&](const std::string& name) {
        return static_cast<uint16_t>(engine.names.sortedPosition(name));
    };
    Module* lastMinus = nullptr;
    Module* lastSelct = nullptr;
    Module* lastDelay = nullptr;
    for (int i = 0; i < count; ++i) {
        Module& m = *chain[static_cast<size_t>(i)];
        for (int k = 0; k < m.inputCount(); ++k) {
            const std::string source = k > 0 ? "~   3" : i == 0 ? "~ Turbo" : chain[static_cast<size_t>(i - 1)]->Name;
            engine.connectInput(m, k, position(source));
        }
        const std::string_view type = m.info().type;
        if (type == "Minus") lastMinus = &m;
        if (type == "Selct") lastSelct = &m;
        if (type == "Delay") lastDelay = &m;
        if (type == "Carry" && lastMinus) static_cast<Carry&>(m).chooseMaster(lastMinus->Index);
        if (type == "SelOut" && lastSelct) static_cast<SelOut&>(m).chooseMaster(lastSelct->Index);
        if (type == "DLTap" && lastDelay) static_cast<DLTap&>(m).chooseMaster(lastDelay->Index);
    }
    engine.StartTimers();
    for (auto _ : state) engine.tick();
    state.counters["ns_per_module"] = benchmark::Counter(
        count > 0 ? static_cast<double>(count) : 1.0,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void tickEveryProcessorChain(benchmark::State& state) { tickChainOf(state, kEveryType); }
void tickPureProcessorChain(benchmark::State& state) { tickChainOf(state, kPureTypes); }

}  // namespace

BENCHMARK(tickEveryProcessorChain)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(tickPureProcessorChain)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
