#include "modules/formulas/FormulaModules.h"

#include <algorithm>
#include <cstring>

#include "engine/Engine.h"
#include "expression/FormulaRuntime.h"

namespace quillmer {

namespace {

constexpr const char* kSwitchTip = "In 2: pressed=1";

#define INS(n) {" Input " #n, "In" #n, sysbus::Off}
#define CLOCK {" Clock", kClockTip, sysbus::Off}

}  // namespace

//                                    base clock ins sw  zeroC  fIn    matrix pad  lamps label tips lead snap
const FormulaShape UCalc0::kShape{100, false, 0, 0, false, false, false, false, 16, false, 5, 2, 2};
const FormulaShape UCalc1::kShape{200, true, 1, 3, false, false, false, false, 0, true, 5, 2, 2, true};
const FormulaShape UCalc2::kShape{300, false, 2, 2, true, false, false, false, 0, true, 5, 2, 2};
const FormulaShape UCalc3::kShape{500, true, 4, 0, false, false, false, false, 0, false, 5, 3, 2};
const FormulaShape UCalc4::kShape{400, false, 4, 0, true, false, false, false, 0, false, 5, 3, 2};
const FormulaShape UCalc5::kShape{600, true, 4, 0, false, true, false, false, 16, false, 5, 2, 1};
const FormulaShape UCalc6::kShape{0, false, 2, 0, false, false, true, false, 0, false, 5, 2, 3};
const FormulaShape UCalc7::kShape{700, false, 0, 1, true, false, false, true, 0, true, 5, 2, 2};
const FormulaShape UCalcXC::kShape{800, true, 16, 0, false, false, false, false, 0, true, 17, 3, 2};
const FormulaShape UCalcXV::kShape{900, false, 16, 0, true, false, false, false, 0, true, 17, 3, 2};

const InputSpec UCalc0::kInputs[1] = {};
const InputSpec UCalc1::kInputs[2] = {CLOCK, {" Input 1", "In1", sysbus::Off}};
const InputSpec UCalc2::kInputs[2] = {INS(1), INS(2)};
const InputSpec UCalc3::kInputs[5] = {CLOCK, INS(1), INS(2), INS(3), INS(4)};
const InputSpec UCalc4::kInputs[4] = {INS(1), INS(2), INS(3), INS(4)};
const InputSpec UCalc5::kInputs[6] = {CLOCK, INS(1), INS(2), INS(3), INS(4), {" Formula", "Formula number", sysbus::Off}};
const InputSpec UCalc6::kInputs[2] = {INS(1), INS(2)};
const InputSpec UCalc7::kInputs[1] = {};
const InputSpec UCalcXC::kInputs[17] = {CLOCK,   INS(1),  INS(2),  INS(3),  INS(4),  INS(5),  INS(6),  INS(7), INS(8),
                                        INS(9),  INS(10), INS(11), INS(12), INS(13), INS(14), INS(15), INS(16)};
const InputSpec UCalcXV::kInputs[16] = {INS(1),  INS(2),  INS(3),  INS(4),  INS(5),  INS(6),  INS(7),  INS(8),
                                        INS(9),  INS(10), INS(11), INS(12), INS(13), INS(14), INS(15), INS(16)};
#undef INS
#undef CLOCK

UCalc0::UCalc0() : FormulaModule(*typeIdByName("UCalc0"), {}, kShape) {}
UCalc1::UCalc1() : FormulaModule(*typeIdByName("UCalc1"), kInputs, kShape) {}
UCalc2::UCalc2() : FormulaModule(*typeIdByName("UCalc2"), kInputs, kShape) {}
UCalc3::UCalc3() : FormulaModule(*typeIdByName("UCalc3"), kInputs, kShape) {}
UCalc4::UCalc4() : FormulaModule(*typeIdByName("UCalc4"), kInputs, kShape) {}
UCalc5::UCalc5() : FormulaModule(*typeIdByName("UCalc5"), kInputs, kShape) {}
UCalc6::UCalc6() : FormulaModule(*typeIdByName("UCalc6"), kInputs, kShape) {}
UCalc7::UCalc7() : FormulaModule(*typeIdByName("UCalc7"), {}, kShape) {}
UCalcXC::UCalcXC() : FormulaModule(*typeIdByName("UCalcXC"), kInputs, kShape) {}
UCalcXV::UCalcXV() : FormulaModule(*typeIdByName("UCalcXV"), kInputs, kShape) {}

FormulaModule::FormulaModule(ModuleTypeId type, std::span<const InputSpec> inputs, const FormulaShape& shape)
    : Module(type, inputs), shape_(shape) {}

// --- controls ---

void FormulaModule::chooseFormula(int n) {
    formulaNumber_ = static_cast<uint8_t>(std::clamp(n, 0, 127));
    currentFormula_ = formulaNumber_;
    viewChanged = true;
}

void FormulaModule::setSwitch(int i, bool pressed) {
    if (i < 0 || i >= shape_.switches) return;
    const auto bit = static_cast<uint8_t>(1u << i);
    switches_ = static_cast<uint8_t>(pressed ? switches_ | bit : switches_ & ~bit);
    viewChanged = true;
}

std::string FormulaModule::inputTip(int k) const {
    if (tips_ != nullptr && k >= 0) {
        // Tips run clock, In1..In16; a clockless type's input 0 is In1.
        const int slot = shape_.clocked ? k : k + 1;
        if (slot < 17 && !(*tips_)[static_cast<size_t>(slot)].empty()) return (*tips_)[static_cast<size_t>(slot)];
    }
    if (k < 0 || k >= inputCount()) return {};
    return std::string(inputSpec(k).tip);
}

std::string FormulaModule::switchTip(int i) const {
    const int slot = shape_.busIns + 1 + i;
    if (tips_ != nullptr && slot < 17 && !(*tips_)[static_cast<size_t>(slot)].empty()) return (*tips_)[static_cast<size_t>(slot)];
    return "In " + std::to_string(slot) + ": pressed=1";
}

std::string FormulaModule::formulaDoc(const Engine& engine) const {
    FormulaRuntime* runtime = const_cast<Engine&>(engine).seams().formulaRuntime();
    return runtime != nullptr ? runtime->formula(currentFormula_).doc : std::string();
}

bool FormulaModule::cell(int col, int row) const {
    if (col < 0 || col >= kMatrixSize || row < 0 || row >= kMatrixSize) return false;
    return ((rows_[static_cast<size_t>(row)] >> col) & 1u) != 0;
}

void FormulaModule::setLocked(bool on) {
    lock_ = on;
    viewChanged = true;
}

bool FormulaModule::clickCell(Engine& engine, int col, int row) {
    if (!shape_.lampMatrix || col < 0 || col >= kMatrixSize || row < 0 || row >= kMatrixSize) return false;
    if (lock_) return true;
    uint32_t& word = rows_[static_cast<size_t>(row)];
    word ^= 1u << col;
    clickCol_ = static_cast<uint8_t>(col);
    clickRow_ = static_cast<uint8_t>(row);
    clickState_ = static_cast<uint8_t>((word >> col) & 1u);
    if (FormulaRuntime* runtime = engine.seams().formulaRuntime())
        runtime->setMatrixRow(runtime->uidOf(evalId()), row, word);
    viewChanged = true;
    return true;
}

MatrixPress FormulaModule::pressMatrix(Engine& engine, int x, int y, int button) {
    if (!shape_.lampMatrix || button != 1 || y < 0 || y >= kMatrixPixelHeight || x >= kMatrixPixelWidth) return MatrixPress::Ignored;
    if (x < kMatrixMargin) return x >= 0 ? MatrixPress::Menu : MatrixPress::Ignored;
    if (lock_) return MatrixPress::Locked;
    clickCell(engine, (x - kMatrixMargin) / kMatrixCellWidth, y / kMatrixCellHeight);
    return MatrixPress::Toggled;
}

void FormulaModule::padDown(int button, int shift, int x, int y) {
    pad_ = Pad{button, shift, x, y, 0, 0, 1};
}

void FormulaModule::padMove(int x, int y) {
    if (pad_.moving == 0) return;
    pad_.dx = (x - pad_.originX) / 15;
    pad_.dy = (y - pad_.originY) / 15;
}

int FormulaModule::padReading(int reading) const {
    switch (reading) {
        case 0: return pad_.button;
        case 1: return pad_.shift;
        case 2: return pad_.dx;
        case 3: return pad_.dy;
        case 4: return pad_.moving;
        default: return 0;
    }
}

// --- the update ---

bool FormulaModule::clockGate(const Engine& engine, const FormulaRuntime& runtime, int clock) {
    const bool start = runtime.autoStart && engine.ResyncPending;
    if (clock != 0 || start) return clock == 126 || clockArmed_ != 0 || start;
    clockArmed_ = -1;
    return false;
}

void FormulaModule::fillContext(FormulaRuntime& runtime, int clock) const {
    int k = shape_.clocked ? 1 : 0;
    int slot = 1;
    for (int i = 0; i < shape_.busIns; ++i) runtime.EvalIn[static_cast<size_t>(slot++)] = in(k++);
    for (int i = 0; i < shape_.switches; ++i) runtime.EvalIn[static_cast<size_t>(slot++)] = switchPressed(i) ? 1 : 0;
    if (shape_.lampMatrix) {
        runtime.EvalInC = clickState_;
        runtime.EvalIn[3] = clickCol_;
        runtime.EvalIn[4] = clickRow_;
    } else if (shape_.clocked) {
        runtime.EvalInC = static_cast<uint8_t>(clock);
    } else if (shape_.clockEntersAsZero) {
        runtime.EvalInC = 0;
    }
}

void FormulaModule::update(Engine& engine) {
    if (engine.ResyncPending && currentFormula_ != formulaNumber_) {
        currentFormula_ = formulaNumber_;
        viewChanged = true;
    }
    FormulaRuntime* runtime = engine.seams().formulaRuntime();
    if (runtime == nullptr) return;
    doc_ = &runtime->formula(currentFormula_).doc;
    if (shape_.formulaInput) {
        const int chosen = in(inputCount() - 1);
        if (chosen != lastFormulaInput_) {
            lastFormulaInput_ = static_cast<int16_t>(chosen);
            currentFormula_ = static_cast<uint8_t>(chosen);
            viewChanged = true;
        }
    }
    int clock = 0;
    if (shape_.clocked) {
        clock = in(0);
        if (!clockGate(engine, *runtime, clock)) return;
    }
    const int id = evalId();
    if (shape_.lampMatrix && rowsToRuntime_) {
        const int uid = runtime->uidOf(id);
        for (int r = 0; r < kMatrixSize; ++r) runtime->setMatrixRow(uid, r, rows_[static_cast<size_t>(r)]);
        rowsToRuntime_ = false;
    }
    fillContext(*runtime, clock);
    if (sameRunAsLast(*runtime)) {
        if (shape_.lampMatrix) followMatrix(*runtime, runtime->uidOf(id));
    } else {
        runtime->evaluate(static_cast<uint16_t>(id), currentFormula_);
        actOnMailbox(*runtime, id);
    }
    clockArmed_ = 0;
}

// The context is compared whole, In5.. of a four-input shape included: those hold what the
// module before left there, and a formula may read them.
bool FormulaModule::sameRunAsLast(FormulaRuntime& runtime) {
    uint64_t inputs[2];
    std::memcpy(inputs, runtime.EvalIn.data() + 1, sizeof inputs);
    const uint64_t generation = runtime.generation();
    if (lastRun_.generation == generation && lastRun_.inputsLow == inputs[0] && lastRun_.inputsHigh == inputs[1] &&
        lastRun_.clock == runtime.EvalInC && lastRun_.formula == currentFormula_ && runtime.isPure(currentFormula_))
        return true;
    lastRun_ = LastRun{generation, inputs[0], inputs[1], runtime.EvalInC, currentFormula_};
    return false;
}

void FormulaModule::actOnMailbox(FormulaRuntime& runtime, int id) {
    Mailbox& box = runtime.mailbox(id);
    const uint8_t flags = box.flags;
    if (flags != 0) {
        if ((flags & kFlagOut) != 0 && box.outValue != lastOut_) {
            lastOut_ = box.outValue;
            setOutput(lastOut_);
            viewChanged = true;
        }
        if ((flags & kFlagLedNumber) != 0) showLampNumber(box.ledNumber, box.ledNumberNegative);
        if ((flags & kFlagLed) != 0) showLampBits(box.ledBits);
        const bool full = !shape_.formulaInput;
        if (full && (flags & kFlagGoto) != 0 && box.gotoTarget != currentFormula_) {
            currentFormula_ = box.gotoTarget;
            viewChanged = true;
        }
        if ((flags & kFlagToolTip) != 0) {
            if (tips_ == nullptr) tips_ = std::make_unique<std::array<std::string, 17>>();
            for (size_t i = 0; i < shape_.toolTips && i < 17; ++i) {
                if ((*tips_)[i] == box.text->toolTips[i]) continue;
                (*tips_)[i] = box.text->toolTips[i];
                viewChanged = true;
            }
        }
        if (full && (flags & kFlagLabel) != 0 && box.text->label != label_) {
            label_ = box.text->label;
            viewChanged = true;
        }
        box.flags = 0;
    }
    if (shape_.lampMatrix) followMatrix(runtime, runtime.uidOf(id));
}

// nLED: on the switch row, n switches pressed from the left; on a lamp row, lamp n lit
// (counting from 1; a negative n counts from the right end; 0 darkens the row).
void FormulaModule::showLampNumber(int n, int negative) {
    if (shape_.lampsAreSwitches) {
        const int pressed = std::min(n, static_cast<int>(shape_.switches));
        const auto bits = static_cast<uint8_t>((1u << pressed) - 1u);
        if (bits != switches_) {
            switches_ = bits;
            viewChanged = true;
        }
        lastLedNumber_ = pressed;
        return;
    }
    const int lamps = shape_.rowLamps;
    if (lamps == 0) return;
    uint32_t bits = 0;
    if (negative > 0 && negative <= lamps) bits = 1u << (lamps - negative);
    else if (negative == 0 && n > 0 && n <= lamps) bits = 1u << (n - 1);
    lastLedNumber_ = negative > 0 ? -negative : n;
    showLampBits(bits);
}

// LED: bit i sets lamp (or switch) i; only the bits that changed are touched.
void FormulaModule::showLampBits(uint32_t bits) {
    if (shape_.lampsAreSwitches) {
        const auto mask = static_cast<uint8_t>((1u << shape_.switches) - 1u);
        const auto next = static_cast<uint8_t>(bits & mask);
        if (next != switches_) {
            switches_ = next;
            viewChanged = true;
        }
        return;
    }
    const int lamps = shape_.rowLamps;
    if (lamps == 0) return;
    const uint32_t mask = lamps >= 32 ? 0xFFFFFFFFu : (1u << lamps) - 1u;
    const uint32_t changed = (bits ^ lampBits_) & mask;
    if (changed == 0) return;
    lampBits_ ^= changed;
    viewChanged = true;
}

void FormulaModule::followMatrix(FormulaRuntime& runtime, int uid) {
    const uint32_t* shown = runtime.matrixRows(uid);
    if (shown == nullptr || std::equal(rows_.begin(), rows_.end(), shown)) return;
    std::copy(shown, shown + kMatrixSize, rows_.begin());
    viewChanged = true;
}

// --- snapshots and records ---

void FormulaModule::recallSettings(int snapshot) {
    lastRun_ = {};
    const auto& s = stored_[static_cast<size_t>(snapshot)];
    formulaNumber_ = static_cast<uint8_t>(s[0] & 127);
    currentFormula_ = formulaNumber_;
    if (shape_.lampMatrix) lock_ = s[1] != 0;
    else switches_ = static_cast<uint8_t>(s[1] & ((1u << shape_.switches) - 1u));
    viewChanged = true;
}

void FormulaModule::storeSettings(int snapshot) {
    auto& s = stored_[static_cast<size_t>(snapshot)];
    s[0] = formulaNumber_;
    if (shape_.snapshotBytes > 1) s[1] = shape_.lampMatrix ? uint8_t{lock_} : switches_;
}

void FormulaModule::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.u8(static_cast<uint8_t>(clockArmed_));
    out.u8(lastOut_);
    if (shape_.leadBytes > 2) out.u8(spareLead_);
    if (shape_.lampMatrix)
        for (uint32_t word : rows_) out.i32(static_cast<int32_t>(word));
    Module::writeBody(out, names);
}

void FormulaModule::readBody(ByteReader& in, OutputNames& names) {
    clockArmed_ = static_cast<int8_t>(in.u8() != 0 ? -1 : 0);
    lastOut_ = in.u8();
    if (shape_.leadBytes > 2) spareLead_ = in.u8();
    if (shape_.lampMatrix) {
        for (uint32_t& word : rows_) word = static_cast<uint32_t>(in.i32());
        rowsToRuntime_ = true;
    }
    Module::readBody(in, names);
}

void FormulaModule::writeFields(ByteWriter& out) const {
    for (const auto& s : stored_)
        for (size_t b = 0; b < shape_.snapshotBytes; ++b) out.u8(s[b]);
}

void FormulaModule::readFields(ByteReader& in) {
    for (auto& s : stored_)
        for (size_t b = 0; b < shape_.snapshotBytes; ++b) s[b] = in.u8();
    recallSettings(0);
}

}  // namespace quillmer
