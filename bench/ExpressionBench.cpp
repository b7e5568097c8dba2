// The formula evaluator on the tick's own work: a formula run from its handle, and a Loop
// over 16 Store calls; and, when muparser is there, the same arithmetic and stores in it.
//
//   build/bench/expression_bench --benchmark_min_time=0.5

#include <benchmark/benchmark.h>

#include <string>

#include "expression/FormulaRuntime.h"

#ifdef QUILLMER_HAVE_MUPARSER
#include <muParser.h>
#endif

using namespace quillmer;

namespace {

struct Started {
    Started() {
        runtime.start();
        runtime.EvalIn = {0, 5, 7, 0, 0};
    }
    FormulaRuntime runtime;
};

void Ours_OutFromHandle(benchmark::State& state) {
    Started s;
    s.runtime.setFormula(0, "out(in1+in2*3)");
    for (auto _ : state) benchmark::DoNotOptimize(s.runtime.evaluate(100, 0));
    if (s.runtime.mailbox(100).outValue != 26) state.SkipWithError("wrong value");
}
BENCHMARK(Ours_OutFromHandle);

void Ours_CalcOnlyFromHandle(benchmark::State& state) {
    Started s;
    const expr::Handle h = s.runtime.calc().parse("out(in1+in2*3)");
    for (auto _ : state) benchmark::DoNotOptimize(s.runtime.calc().evaluate(h));
}
BENCHMARK(Ours_CalcOnlyFromHandle);

void Ours_LoopOver16Stores(benchmark::State& state) {
    Started s;
    s.runtime.setFormula(1, "Store(Jx, 3, Jx * 2)");
    s.runtime.setFormula(0, "Loop(15, 1)");
    for (auto _ : state) benchmark::DoNotOptimize(s.runtime.evaluate(100, 0));
    if (s.runtime.calc().eval("Fetch(15, 3)").value != 30) state.SkipWithError("wrong value");
}
BENCHMARK(Ours_LoopOver16Stores);

std::string sixteenStores(const char* form) {
    std::string text;
    for (int j = 0; j < 16; ++j) {
        if (j) text += "+";
        char term[64];
        std::snprintf(term, sizeof term, form, j, j * 2);
        text += term;
    }
    return text;
}

void Ours_SixteenStoresInOneLine(benchmark::State& state) {
    Started s;
    s.runtime.setFormula(0, sixteenStores("Store(%d, 3, %d)"));
    for (auto _ : state) benchmark::DoNotOptimize(s.runtime.evaluate(100, 0));
}
BENCHMARK(Ours_SixteenStoresInOneLine);

void Ours_ParseOnce(benchmark::State& state) {
    Started s;
    for (auto _ : state) {
        const expr::Handle h = s.runtime.calc().parse("out(in1+in2*3)");
        s.runtime.calc().release(h);
    }
}
BENCHMARK(Ours_ParseOnce);

void Ours_StartUp(benchmark::State& state) {
    for (auto _ : state) {
        FormulaRuntime r;
        r.start();
        benchmark::DoNotOptimize(r.defaultHandle());
    }
}
BENCHMARK(Ours_StartUp)->Unit(benchmark::kMillisecond);

#ifdef QUILLMER_HAVE_MUPARSER

double gOut = 0;
float gStore[1024 * 32];

mu::value_type muOut(mu::value_type v) {
    gOut = v < 0 ? 0 : v > 127 ? 127 : static_cast<int>(v);
    return gOut;
}
mu::value_type muStore(mu::value_type p, mu::value_type i, mu::value_type v) {
    if (p < 0 || p > 1023 || i < 0 || i > 31) return 0;
    gStore[static_cast<int>(p) * 32 + static_cast<int>(i)] = static_cast<float>(v);
    return v;
}

void Muparser_OutFromExpression(benchmark::State& state) {
    mu::Parser p;
    double in1 = 5;
    double in2 = 7;
    p.DefineVar("in1", &in1);
    p.DefineVar("in2", &in2);
    p.DefineFun("out", muOut, false);  // not constant: called on every evaluation
    p.SetExpr("out(in1+in2*3)");
    for (auto _ : state) benchmark::DoNotOptimize(p.Eval());
    if (gOut != 26) state.SkipWithError("wrong value");
}
BENCHMARK(Muparser_OutFromExpression);

void Muparser_SixteenStoresInOneLine(benchmark::State& state) {
    mu::Parser p;
    p.DefineFun("store", muStore, false);
    p.SetExpr(sixteenStores("store(%d, 3, %d)"));
    for (auto _ : state) benchmark::DoNotOptimize(p.Eval());
    if (gStore[15 * 32 + 3] != 30) state.SkipWithError("wrong value");
}
BENCHMARK(Muparser_SixteenStoresInOneLine);

#endif

}  // namespace

BENCHMARK_MAIN();
