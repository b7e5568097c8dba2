// Cost of one Life generation on a 16x8 grid: the grid operation alone (plain, and with
// random values), and a Matrix16x8 whose Strobe is Turbo's "~ Turbo" signal, run by the
// tick, so that every tick that strobes runs a generation.

#include <benchmark/benchmark.h>

#include <vector>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "modules/sequencers/MatrixTypes.h"

using namespace quillmer;

namespace {

std::vector<uint8_t> seededGrid(GridSize size) {
    RandomSource random;
    std::vector<uint8_t> grid(static_cast<size_t>(size.cells()));
    for (uint8_t& v : grid) v = static_cast<uint8_t>(random.between(0, 127));
    return grid;
}

void lifeGenerations(benchmark::State& state, bool randomised) {
    const GridSize size{16, 8};
    std::vector<uint8_t> grid = seededGrid(size);
    AutomatonMemory memory;
    RandomSource random;
    LifeRules rules;
    rules.randomised = randomised;
    for (auto _ : state) {
        lifeGeneration(grid, size, memory, rules, random);
        // A dying grid is reseeded, as a kick would, outside the measured work mostly.
        if (memory.stable) kickGrid(grid, random);
        benchmark::DoNotOptimize(grid.data());
    }
}
void BM_Life16x8(benchmark::State& state) { lifeGenerations(state, false); }
void BM_Life16x8Randomised(benchmark::State& state) { lifeGenerations(state, true); }
BENCHMARK(BM_Life16x8);
BENCHMARK(BM_Life16x8Randomised);

void BM_CA16x8(benchmark::State& state) {
    const GridSize size{16, 8};
    std::vector<uint8_t> grid = seededGrid(size);
    AutomatonMemory memory;
    RandomSource random;
    for (auto _ : state) {
        caGeneration(grid, size, memory, 30, memory.stable, false, random);
        benchmark::DoNotOptimize(grid.data());
    }
}
BENCHMARK(BM_CA16x8);

// A whole tick with one Matrix16x8 strobed by alternating 0 and 127 on every tick (a
// generation every second tick), with the kick on so that it never settles.
void BM_Matrix16x8Tick(benchmark::State& state) {
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    auto& m = static_cast<MatrixSequencer&>(engine.New(*typeIdByName("Matrix16x8")));
    m.Kick = true;
    engine.connectInput(m, MatrixSequencer::kStrobe, static_cast<uint16_t>(engine.names.sortedPosition("~ 127")));
    engine.StartTimers();
    uint64_t generations = 0;
    for (auto _ : state) {
        m.StrobeArmed = true;  // every tick a rising edge
        engine.tick();
        ++generations;
    }
    state.counters["generations"] = static_cast<double>(generations);
}
BENCHMARK(BM_Matrix16x8Tick);

}  // namespace

BENCHMARK_MAIN();
