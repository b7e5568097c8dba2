#include "modules/sequencers/Gates.h"

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kGatesId = *typeIdByName("Gates");
}

Gates::Gates() : Module(kGatesId, kInputs) {}

void Gates::update(Engine&) {
    const int clock = in(kClock);
    if (clock == 0) {
        ClockArmed = true;
        return;
    }
    if (!ClockArmed && clock != kTurboCode) return;
    ClockArmed = false;
    int v = 0;
    for (int i = 0; i < kGates; ++i)
        if (in(kClock + 1 + i) != 0) v |= 1 << i;
    if (v == ShownValue) return;
    ShownValue = v;
    setOutput(v);
    viewChanged = true;
}

// --- GatePatterns ---

GatePatterns::GatePatterns(ModuleTypeId type, int stages, uint32_t* clipboard)
    : Module(type, kInputs), clipboard_(clipboard), stages_(stages) {}

void GatePatterns::update(Engine&) {
    const int p = in(kPattern) & (kPatterns - 1);
    if (p != LastPattern) {
        LastPattern = p;
        CurrentPattern = p;
        LastGate = -1;  // a new pattern sends its gate again
        viewChanged = true;
    }
    const int s = in(kStage) & (stages_ - 1);
    if (s != LastStage) {
        LastStage = s;
        viewChanged = true;
    }
    const int gate = stageOn(p, s) ? 127 : 0;
    if (gate == LastGate) return;
    LastGate = gate;
    setOutput(gate);
    viewChanged = true;
}

void GatePatterns::setStage(int stage, bool on) {
    if (stage < 0 || stage >= stages_) return;
    uint32_t& bits = Patterns[static_cast<size_t>(CurrentPattern & (kPatterns - 1))];
    bits = on ? bits | (1u << stage) : bits & ~(1u << stage);
    viewChanged = true;
}

void GatePatterns::copyButton(int keys) {
    const auto n = static_cast<size_t>(stages_);
    if (keys & 1) {
        const auto from = static_cast<size_t>((CurrentPattern - 1) & (stages_ - 1));
        Patterns[static_cast<size_t>(CurrentPattern & (kPatterns - 1))] = Patterns[from];
    } else if (keys & 2) {
        for (size_t i = 0; i < n; ++i) Patterns[i] = clipboard_[i];
    } else {
        for (size_t i = 0; i < n; ++i) clipboard_[i] = Patterns[i];
        return;
    }
    viewChanged = true;
}

void GatePatterns::writeBody(ByteWriter& out, const OutputNames& names) const {
    for (uint32_t bits : Patterns) out.i32(static_cast<int32_t>(bits));
    Module::writeBody(out, names);
}

void GatePatterns::readBody(ByteReader& in, OutputNames& names) {
    for (uint32_t& bits : Patterns) bits = static_cast<uint32_t>(in.i32());
    Module::readBody(in, names);
}

void GatePatterns::readFields(ByteReader& in) {
    for (uint8_t& b : spare_) b = in.u8();
}

}  // namespace quillmer
