// A short tour of the engine: a few modules placed in code, connected, and ticked in
// virtual time at tempo 120, with their outputs printed tick by tick.

#include <cstdio>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"

using namespace quillmer;

int main() {
    VirtualTimerService timers;
    Engine engine(timers, builtTypes());
    const ModuleTypeId div = *typeIdByName("Div");

    auto held = engine.lock();
    // 1Div- halves the tick counter "~ Turbo"; 2Div- divides that by "~   3".
    Module& half = engine.New(div);
    Module& third = engine.New(div);
    auto position = [&](std::string_view name) {
        return static_cast<uint16_t>(engine.names.sortedPosition(name));
    };
    engine.connectInput(half, 0, position("~ Turbo"));
    engine.connectInput(half, 1, position("~   2"));
    engine.connectInput(third, 0, position("1Div-"));
    engine.connectInput(third, 1, position("~   3"));
    engine.setRun(true);
    engine.StartTimers();
    held.unlock();

    std::printf("Quillmer engine tour: tempo %d, one tick every %d ms\n", engine.Tempo(), engine.TickPeriod());
    std::printf("%6s %8s %8s %8s %8s\n", "ms", "~ Turbo", "1Div-", "2Div-", "~ Whole");
    for (int tick = 1; tick <= 24; ++tick) {
        timers.advanceByMs(engine.TickPeriod());
        held.lock();
        std::printf("%6lld %8d %8d %8d %8d\n", static_cast<long long>(timers.nowMicros() / 1000),
                    engine.bus[sysbus::Turbo], engine.bus[half.OutBus], engine.bus[third.OutBus],
                    engine.bus[sysbus::Whole]);
        held.unlock();
    }
    return 0;
}
