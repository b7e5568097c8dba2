// What the side modules cost a tick: links that are on and send a new value every tick
// (over UDP on the loopback interface, to a port nobody reads), and sequencer data files
// stepping through 16384 steps.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "modules/midi/Links.h"
#include "modules/sequencers/Sfile.h"
#include "platform/OscLinkTransport.h"

using namespace quillmer;

namespace {

template <class Setup>
void tickWith(benchmark::State& state, const char* type, Setup setup) {
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    const int count = static_cast<int>(state.range(0));
    std::vector<Module*> placed;
    for (int i = 0; i < count; ++i) placed.push_back(&engine.placeForBulk(*typeIdByName(type)));
    engine.endBulk();
    const auto turbo = static_cast<uint16_t>(engine.names.sortedPosition("~ Turbo"));
    for (Module* m : placed) {
        engine.connectInput(*m, 0, turbo);
        setup(*m);
    }
    engine.StartTimers();
    for (auto _ : state) timers.advanceByMs(engine.TickPeriod());
    state.SetItemsProcessed(state.iterations() * count);  // module updates a second
}

void LinksSendingEveryTick(benchmark::State& state) {
    installOscLinkTransport();
    tickWith(state, "IPLink", [](Module& m) {
        auto& link = static_cast<IPLink&>(m);
        LinkSettings s;
        s.listenPort = 0;
        s.sendPort = 9;  // discard
        std::string error;
        link.setSettings(s, error);
        link.turnOn(error);
    });
}
BENCHMARK(LinksSendingEveryTick)->Arg(1)->Arg(16)->Unit(benchmark::kMicrosecond);

void DataFilesSteppingEveryTick(benchmark::State& state) {
    tickWith(state, "Sfile", [](Module& m) {
        std::vector<uint8_t> steps(Sfile::kMaxSteps);
        for (size_t i = 0; i < steps.size(); ++i) steps[i] = static_cast<uint8_t>(i * 5);
        static_cast<Sfile&>(m).setData(std::move(steps));
    });
}
BENCHMARK(DataFilesSteppingEveryTick)->Arg(64)->Arg(512)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
