// Cost of a Fractal step in Turbo, where every update steps a burst of points: each
// algorithm's orbit alone (per point) and a Fractal module in Turbo on every tick (per
// point of its burst, plotting and publishing included). Also a Chaos map per clock.

#include <benchmark/benchmark.h>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "modules/generators/Fractals.h"

using namespace quillmer;

namespace {

void orbitStep(benchmark::State& state) {
    const auto algorithm = static_cast<FractalAlgorithm>(state.range(0));
    state.SetLabel(std::string(kFractalNames[static_cast<size_t>(state.range(0))]));
    const GeneratorTables& t = generatorTables();
    RandomSource random;
    FractalOrbit orbit;
    orbit.reset(algorithm, 37, t);
    int sum = 0;
    for (auto _ : state) {
        const PlotPoint p = orbit.step(37, t, random);
        sum += p.x + p.y;
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(orbitStep)->DenseRange(0, kFractalAlgorithms - 1);

// A Fractal in Turbo updated as the tick does: kTurboPoints points a call.
void turboModule(benchmark::State& state) {
    const int algorithm = static_cast<int>(state.range(0));
    state.SetLabel(std::string(kFractalNames[static_cast<size_t>(algorithm)]));
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    auto lock = engine.lock();
    auto& fractal = static_cast<Fractal&>(engine.New(*typeIdByName("Fractal")));
    fractal.chooseAlgorithm(algorithm);
    fractal.setTurbo(true);
    for (auto _ : state) fractal.update(engine);
    state.SetItemsProcessed(state.iterations() * Fractal::kTurboPoints);
}
BENCHMARK(turboModule)->DenseRange(0, kFractalAlgorithms - 1);

void chaosStep(benchmark::State& state) {
    const GeneratorTables& t = generatorTables();
    BurtShift burt;
    Bifurcation bif;
    Henon henon;
    double sum = 0;
    int seed = 0;
    for (auto _ : state) {
        sum += state.range(0) == 0 ? burt.step(seed, false, t) : state.range(0) == 1 ? bif.step(seed, false, t) : henon.step(seed, false, t);
        seed = (seed + 1) & 7;
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(chaosStep)->DenseRange(0, 2);

}  // namespace

BENCHMARK_MAIN();
