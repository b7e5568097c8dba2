#pragma once
// An engine in virtual time with the built types, plus a probe type for order tests.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"

namespace quillmer::testing {

// Stands in for a type in tests: copies input 0 to its output plus one, and logs its runs.
class Probe final : public Module {
public:
    static constexpr InputSpec kInputs[] = {{" In", "Input", sysbus::Off}};
    Probe(ModuleTypeId type, std::vector<std::string>* log) : Module(type, kInputs), log_(log) {}
    bool sawStopping = false;

protected:
    void update(Engine& engine) override {
        if (log_) log_->push_back(Name);
        if (engine.stopping()) sawStopping = true;
        setOutput((in(0) + 1) & 127);
    }

private:
    std::vector<std::string>* log_;
};

struct Harness {
    // Probe types: these catalogue types are made as probes.
    explicit Harness(std::vector<std::string> probeTypes = {"Unity", "Clock", "Tempox", "MIDIKey"}) {
        registerBuiltTypes(registry);
        for (const std::string& name : probeTypes) {
            const ModuleTypeId id = *typeIdByName(name);
            registry.replace(name, [this, id] { return std::make_unique<Probe>(id, &log); });
        }
        engine = std::make_unique<Engine>(timers, registry);
    }

    static ModuleTypeId id(std::string_view type) { return *typeIdByName(type); }
    Module& add(std::string_view type) { return engine->New(id(type)); }
    uint16_t position(std::string_view name) const {
        const int p = engine->names.sortedPosition(name);
        return p < 0 ? uint16_t{0} : static_cast<uint16_t>(p);
    }
    void connect(Module& m, int k, std::string_view outputName) { engine->connectInput(m, k, position(outputName)); }
    uint8_t out(const Module& m) const { return engine->bus[m.OutBus]; }
    // Ticks by the tick timer, as many as asked.
    void ticks(int n) {
        for (int i = 0; i < n; ++i) timers.advanceByMs(engine->TickPeriod());
    }

    VirtualTimerService timers;
    ModuleRegistry registry;
    std::vector<std::string> log;
    std::unique_ptr<Engine> engine;
};

}  // namespace quillmer::testing
