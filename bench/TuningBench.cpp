// What a tuning lookup costs per note: a tick of 1,000 note modules that each play a note on
// one tick and release it on the next, as MIDIKey (no tuning), as MIDITone on the engine's
// built-in chromatic row, and as MIDITone through the shipped tables' 19-step scale. Also
// the table modules' tick: Tablx, TFit, TWrite and Qscale chains reading one bank.

#include <benchmark/benchmark.h>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "tables/DefaultTables.h"
#include "tables/DefaultTones.h"

using namespace quillmer;

namespace {

// A gate that turns on and off every tick: step "~ Turbo" of a table of 0, 127, 0, 127...
struct Bench {
    Bench() : engine(timers, builtTypes()) {
        for (int s = 0; s < 128; ++s) tables.bank.row(0)[static_cast<size_t>(s)] = s % 2 ? 127 : 0;
        engine.setGeneralTables(tables.bank.data());
    }
    uint16_t position(const std::string& name) { return static_cast<uint16_t>(engine.names.sortedPosition(name)); }
    VirtualTimerService timers;
    Engine engine;
    GeneralTables tables;
    ToneTables tones = DefaultToneTables();
};

enum NoteKind { kKey, kToneChromatic, kToneTable };

void tickNotes(benchmark::State& state) {
    Bench b;
    const auto kind = static_cast<NoteKind>(state.range(0));
    const int count = static_cast<int>(state.range(1));
    if (kind == kToneTable) b.engine.setToneTables(b.tones.rows.data());
    Module& gate = b.engine.placeForBulk(*typeIdByName("Tabla"));
    std::vector<Module*> notes;
    for (int i = 0; i < count; ++i) notes.push_back(&b.engine.placeForBulk(*typeIdByName(kind == kKey ? "MIDIKey" : "MIDITone")));
    b.engine.endBulk();
    b.engine.connectInput(gate, 1, b.position("~ Turbo"));
    for (Module* m : notes) {
        b.engine.connectInput(*m, 0, b.position(gate.Name));
        b.engine.connectInput(*m, 1, b.position("~ Turbo"));
        if (kind != kKey) b.engine.connectInput(*m, 7, b.position("~  23"));  // 19 equal in the shipped tables
    }
    b.engine.setRun(true);
    b.engine.StartTimers();
    for (auto _ : state) b.engine.tick();
    state.counters["ns_per_module"] = benchmark::Counter(
        static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Groups of four: a Tablx on a moving step, a TFit of its value to a scale table, a TWrite
// on Turbo into a table of its own, and a Qscale of the fit.
void tickTableModules(benchmark::State& state) {
    Bench b;
    b.tables = DefaultGeneralTables();
    const int groups = static_cast<int>(state.range(0)) / 4;
    std::vector<Module*> placed;
    for (int g = 0; g < groups; ++g)
        for (const char* type : {"Tabla", "TFit", "TWrite", "Qscale"}) placed.push_back(&b.engine.placeForBulk(*typeIdByName(type)));
    b.engine.endBulk();
    for (size_t g = 0; g + 4 <= placed.size(); g += 4) {
        Module** m = &placed[g];
        b.engine.connectInput(*m[0], 0, b.position("~   3"));
        b.engine.connectInput(*m[0], 1, b.position("~ Turbo"));
        b.engine.connectInput(*m[1], 0, b.position("~  11"));
        b.engine.connectInput(*m[1], 1, b.position(m[0]->Name));
        b.engine.connectInput(*m[2], 0, b.position("~ 126"));
        b.engine.connectInput(*m[2], 1, b.position("~ Turbo"));
        b.engine.connectInput(*m[2], 2, b.position("~ 100"));
        b.engine.connectInput(*m[2], 3, b.position(m[1]->Name));
        b.engine.connectInput(*m[3], 0, b.position(m[1]->Name));
        b.engine.connectInput(*m[3], 1, b.position("~   2"));
    }
    b.engine.setRun(true);
    b.engine.StartTimers();
    for (auto _ : state) b.engine.tick();
    state.counters["ns_per_module"] = benchmark::Counter(
        static_cast<double>(groups * 4), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace

BENCHMARK(tickNotes)
    ->ArgNames({"kind", "n"})
    ->Args({kKey, 1000})
    ->Args({kToneChromatic, 1000})
    ->Args({kToneTable, 1000})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(tickTableModules)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
