#include "expression/EngineFormulaStores.h"

#include <string>

#include "engine/Durations.h"
#include "engine/OutputBus.h"
#include "expression/FormulaPanels.h"

namespace quillmer {

EngineFormulaStores::~EngineFormulaStores() {
    runtime_ = nullptr;
    for (TimerId t : aclockTimers_)
        if (t >= 0) engine_.timers().setInterval(t, 0);
    for (TimerId t : timerTimers_)
        if (t >= 0) engine_.timers().setInterval(t, 0);
}

void EngineFormulaStores::attach(FormulaRuntime& runtime) {
    runtime_ = &runtime;
    runtime.calc().setRandom([](void* user) { return static_cast<double>(static_cast<Engine*>(user)->random.next()); },
                             &engine_);
}

uint8_t EngineFormulaStores::busValue(int busId) {
    if (busId < 0 || busId >= static_cast<int>(kBusSize)) return 0;
    return engine_.bus[static_cast<BusId>(busId)];
}

void EngineFormulaStores::setAbsClock(int which, int ms) {
    (which == 0 ? engine_.options.absClockA : engine_.options.absClockB) = ms;
}

int EngineFormulaStores::durationCounter(int code) {
    if (code < 0 || code >= kDurationCodeCount) code = kFallbackCode;
    return engine_.counters.value(code);
}

void EngineFormulaStores::setFormulaTimer(int kind, int n, int ms) {
    TimerId* slot = nullptr;
    if (kind == 0 && n >= 0 && n < 10) slot = &aclockTimers_[static_cast<size_t>(n)];
    if (kind == 1 && n >= 0 && n < 20) slot = &timerTimers_[static_cast<size_t>(n)];
    if (slot == nullptr) return;
    if (*slot < 0) {
        if (ms <= 0) return;
        const std::string name = (kind == 0 ? "formula absolute clock " : "formula timer ") + std::to_string(n);
        *slot = engine_.timers().addTimer(name, [this, kind, n] {
            try {
                auto lock = engine_.lock();
                if (runtime_ != nullptr) runtime_->timerFired(kind, n);
            } catch (...) {
            }
        });
    }
    engine_.timers().setInterval(*slot, ms > 0 ? ms : 0);
}

void EngineFormulaStores::sendMidi(int port, uint8_t status, uint8_t data1, uint8_t data2) {
    if (port < 0 || port >= kPortCount) return;
    engine_.ports.SendMIDI(port, status, data1, data2);
}

namespace {
template <class Face>
Face* panelOf(Engine& engine, const char* type, int mid) {
    const auto id = typeIdByName(type);
    if (!id) return nullptr;
    Module* m = engine.typeSlot(*id).at(static_cast<int16_t>(mid));
    return m != nullptr && m->Active != 0 ? dynamic_cast<Face*>(m) : nullptr;
}
}  // namespace

int EngineFormulaStores::mouse(int mid, int reading) {
    const FormulaMousePad* pad = panelOf<FormulaMousePad>(engine_, "UCalc7", mid);
    return pad != nullptr ? pad->mouseReading(reading) : 0;
}

double EngineFormulaStores::slider(int mid, int num) {
    const FormulaSliderBank* bank = panelOf<FormulaSliderBank>(engine_, "UFSldr", mid);
    return bank != nullptr ? bank->sliderValue(num) : 0.0;
}

void EngineFormulaStores::putSlider(int mid, int num, double value) {
    if (FormulaSliderBank* bank = panelOf<FormulaSliderBank>(engine_, "UFSldr", mid)) bank->putSliderValue(num, value);
}

void EngineFormulaStores::sliderRange(int mid, int num, double range, double offset) {
    if (FormulaSliderBank* bank = panelOf<FormulaSliderBank>(engine_, "UFSldr", mid)) bank->setSliderRange(num, range, offset);
}

}  // namespace quillmer
