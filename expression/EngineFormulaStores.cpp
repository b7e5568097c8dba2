#include "expression/EngineFormulaStores.h"

#include <optional>
#include <string>

#include "engine/Durations.h"
#include "engine/OutputBus.h"
#include "expression/FormulaPanels.h"

namespace quillmer {

namespace {
// The module of a type with the number `mid` in its name, when it shows that face.
template <class Face>
Face* numbered(Engine& engine, std::string_view type, int mid) {
    if (mid < 1) return nullptr;
    Module* m = engine.typeSlot(*typeIdByName(type)).at(static_cast<int16_t>(mid - 1));
    return m != nullptr && m->Active != 0 ? dynamic_cast<Face*>(m) : nullptr;
}
}  // namespace

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

bool EngineFormulaStores::readPixel(int mid, int x, int y, uint32_t& colour) {
    const FormulaPicture* picture = numbered<FormulaPicture>(engine_, "Image", mid);
    if (picture) colour = picture->colourAt(x, y);
    return picture != nullptr;
}

bool EngineFormulaStores::writePixel(int mid, int x, int y, uint32_t colour) {
    FormulaPicture* picture = numbered<FormulaPicture>(engine_, "Image", mid);
    if (picture) picture->paint(x, y, colour);
    return picture != nullptr;
}

bool EngineFormulaStores::fillPicture(int mid, uint32_t colour) {
    FormulaPicture* picture = numbered<FormulaPicture>(engine_, "Image", mid);
    if (picture) picture->paintAll(colour);
    return picture != nullptr;
}

StepData* EngineFormulaStores::fileData(int mid) { return numbered<StepData>(engine_, "Sfile", mid + 1); }

int EngineFormulaStores::fileStep(int mid, int step) {
    StepData* data = fileData(mid);
    return data != nullptr ? data->dataStep(step) : 0;
}

void EngineFormulaStores::writeFileStep(int mid, int step, int value) {
    if (StepData* data = fileData(mid)) data->writeDataStep(step, value);
}

int EngineFormulaStores::fileChanged(int mid) {
    StepData* data = fileData(mid);
    return data != nullptr ? data->takeDataChanged() : 0;
}

GridCells* EngineFormulaStores::grid(GridShape shape, int mid, int row, int col, int& at) {
    const int rows = gridRows(shape);
    if (row < 0 || row >= rows || col < 0 || col >= gridColumns(shape)) return nullptr;
    at = col * rows + row;
    return engine_.gridCells.find(GridCellStore::sizeIndex(gridColumns(shape), rows), mid);
}

int EngineFormulaStores::gridCell(GridShape shape, int mid, int row, int col) {
    int at = 0;
    const GridCells* cells = grid(shape, mid, row, col, at);
    return cells ? cells->cells[static_cast<size_t>(at)] : 0;
}

bool EngineFormulaStores::writeGridCell(GridShape shape, int mid, int row, int col, int value) {
    int at = 0;
    GridCells* cells = grid(shape, mid, row, col, at);
    if (!cells || !cells->writeFromOutside(at, value)) return false;
    // The matrix's panel redraws even while the matrix itself is off.
    const std::string type = "Matrix" + std::to_string(gridColumns(shape)) + "x" + std::to_string(gridRows(shape));
    if (const auto id = typeIdByName(type); id && mid >= 0 && mid <= INT16_MAX)
        if (Module* m = engine_.typeSlot(*id).at(static_cast<int16_t>(mid))) m->viewChanged = true;
    return true;
}

int EngineFormulaStores::gridChanged(GridShape shape, int mid) {
    const GridCells* cells = engine_.gridCells.find(GridCellStore::sizeIndex(gridColumns(shape), gridRows(shape)), mid);
    return cells && cells->outsideWrite ? 1 : 0;
}


int EngineFormulaStores::mouse(int mid, int reading) {
    const FormulaMousePad* pad = numbered<FormulaMousePad>(engine_, "UCalc7", mid + 1);
    return pad != nullptr ? pad->mouseReading(reading) : 0;
}

double EngineFormulaStores::slider(int mid, int num) {
    const FormulaSliderBank* bank = numbered<FormulaSliderBank>(engine_, "UFSldr", mid + 1);
    return bank != nullptr ? bank->sliderValue(num) : 0.0;
}

void EngineFormulaStores::putSlider(int mid, int num, double value) {
    if (FormulaSliderBank* bank = numbered<FormulaSliderBank>(engine_, "UFSldr", mid + 1)) bank->putSliderValue(num, value);
}

void EngineFormulaStores::sliderRange(int mid, int num, double range, double offset) {
    if (FormulaSliderBank* bank = numbered<FormulaSliderBank>(engine_, "UFSldr", mid + 1)) bank->setSliderRange(num, range, offset);
}

}  // namespace quillmer
