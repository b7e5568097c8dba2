#pragma once
// The module harness with a formula runtime behind the engine, as a session has one.

#include <memory>
#include <string>

#include "ModuleHarness.h"
#include "engine/EngineSeams.h"
#include "expression/EngineFormulaStores.h"
#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionFile.h"
#include "modules/formulas/FormulaModules.h"
#include "modules/formulas/SliderBank.h"

namespace quillmer::testing {

struct FormulaSeams : EngineSeams {
    FormulaRuntime* runtime = nullptr;
    FormulaRuntime* formulaRuntime() override { return runtime; }
};

struct FormulaHarness : ModuleHarness {
    FormulaHarness() {
        engine = std::make_unique<Engine>(timers, registry, &seams);
        stores = std::make_unique<EngineFormulaStores>(*engine);
        runtime = std::make_unique<FormulaRuntime>(stores.get());
        stores->attach(*runtime);
        runtime->start();
        seams.runtime = runtime.get();
        engine->StartTimers();
        ticks(2);  // past the start's resync pulse
    }
    ~FormulaHarness() {
        stores.reset();
        engine.reset();
    }
    // Formula n becomes `text`; fails the test when it doesn't compile.
    void formula(int n, const std::string& text, const std::string& doc = {}) {
        ASSERT_EQ(runtime->setFormula(n, text, doc), 0) << text << ": " << runtime->calc().errorMessage();
    }
    FormulaModule& add(std::string_view type, int formulaNumber = 0) {
        auto& m = static_cast<FormulaModule&>(ModuleHarness::add(type));
        m.chooseFormula(formulaNumber);
        return m;
    }
    // A shared variable's value.
    double variable(const std::string& name) {
        return runtime->calc().variable(runtime->calc().variableHandle(name));
    }

    FormulaSeams seams;
    std::unique_ptr<EngineFormulaStores> stores;
    std::unique_ptr<FormulaRuntime> runtime;
};

}  // namespace quillmer::testing
