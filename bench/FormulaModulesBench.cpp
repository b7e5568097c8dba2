// Cost of formula modules at the tick: 1,000 of them (100 of each shape,
// the clocked ones on Turbo) running the default formula out(in1+in2+in3+in4) with their
// inputs on changing values, and again with their inputs on constants (the formula is pure,
// so it is skipped while nothing changes); and 1,000 clockless UCalc4/UCalcXV running the shipped
// weighted random walk.

#include <benchmark/benchmark.h>

#include "engine/Engine.h"
#include "engine/EngineSeams.h"
#include "engine/VirtualTimerService.h"
#include "expression/EngineFormulaStores.h"
#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionFile.h"
#include "modules/BuiltTypes.h"
#include "modules/formulas/FormulaModules.h"

using namespace quillmer;

namespace {

struct Seams : EngineSeams {
    FormulaRuntime* runtime = nullptr;
    FormulaRuntime* formulaRuntime() override { return runtime; }
};

struct Patch {
    VirtualTimerService timers;
    Seams seams;
    Engine engine{timers, builtTypes(), &seams};
    EngineFormulaStores stores{engine};
    FormulaRuntime runtime{&stores};

    // `steady`: every input on a constant, as most inputs are between the notes of a patch.
    explicit Patch(const std::vector<const char*>& types, int perType, int formula, bool steady = false) {
        stores.attach(runtime);
        UserFunctions lists;
        std::string error;
        readUserFunctionFile(QUILLMER_SOURCE_DIR "/data/default.ufn", lists, error);
        compileUserFunctions(runtime, lists);
        seams.runtime = &runtime;
        std::vector<Module*> placed;
        for (const char* type : types)
            for (int i = 0; i < perType; ++i) placed.push_back(&engine.placeForBulk(*typeIdByName(type)));
        engine.endBulk();
        const auto position = [&](const std::string& name) { return static_cast<uint16_t>(engine.names.sortedPosition(name)); };
        for (Module* m : placed) {
            auto& f = static_cast<FormulaModule&>(*m);
            f.chooseFormula(formula);
            int k = 0;
            if (f.shape().clocked) engine.connectInput(f, k++, position("~ 126"));
            for (; k < f.inputCount(); ++k)
                engine.connectInput(f, k, position(steady ? "~ 126" : k % 2 == 0 ? "~ Turbo" : "~   3"));
        }
        engine.StartTimers();
        for (int i = 0; i < 4; ++i) engine.tick();
    }
};

void tickFormulaModules(benchmark::State& state, std::vector<const char*> types, int formula, bool steady = false) {
    Patch patch(types, 1000 / static_cast<int>(types.size()), formula, steady);
    for (auto _ : state) patch.engine.tick();
    state.counters["ns_per_module"] =
        benchmark::Counter(1000.0, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace

BENCHMARK_CAPTURE(tickFormulaModules, default_formula_all_shapes,
                  std::vector<const char*>{"UCalc0", "UCalc1", "UCalc2", "UCalc3", "UCalc4", "UCalc5", "UCalc7", "UCalcXC",
                                           "UCalcXV", "UCalc6"},
                  0)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tickFormulaModules, default_formula_all_shapes_steady_inputs,
                  std::vector<const char*>{"UCalc0", "UCalc1", "UCalc2", "UCalc3", "UCalc4", "UCalc5", "UCalc7", "UCalcXC",
                                           "UCalcXV", "UCalc6"},
                  0, true)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tickFormulaModules, default_formula_UCalc4, std::vector<const char*>{"UCalc4"}, 0)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(tickFormulaModules, random_walk, std::vector<const char*>{"UCalc4", "UCalcXV"}, 1)
    ->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
