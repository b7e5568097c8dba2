#include "modules/sequencers/Knobs.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxValue = 127;
}

KnobSequencer::KnobSequencer(ModuleTypeId type, int stages)
    : Module(type, kInputs),
      StageValues(static_cast<size_t>(stages), 0),
      stored_(static_cast<size_t>(stages) * kSnapshotCount, 0),
      powerOfTwo_((stages & (stages - 1)) == 0) {}

int KnobSequencer::reduceStage(int value) const {
    return powerOfTwo_ ? value & (stageCount() - 1) : value % stageCount();
}

void KnobSequencer::update(Engine&) {
    const int s = reduceStage(in(0));
    if (s == CurrentStage) return;
    CurrentStage = s;
    SendOut();
}

void KnobSequencer::SendOut() {
    setOutput(StageValues[static_cast<size_t>(CurrentStage)]);
    viewChanged = true;
}

void KnobSequencer::pressKnob(int x, int y, int button, int keys) {
    const int stage = x / kKnobTwips;
    if (x < 0 || stage >= stageCount()) return;
    knobEdit_.begin(*this, CurrentStage);
    if (button != 0) {
        knobEdit_.active = true;
        CurrentStage = stage;
        const int keyed = knobKeyValue(keys);
        if (button == 1 && !Lock && keyed >= 0) StageValues[static_cast<size_t>(stage)] = keyed;
    }
    (void)y;
    SendOut();
}

void KnobSequencer::dragKnob(int x, int y, int button, int keys) {
    if (button != 1 || keys != 0 || !knobEdit_.active || Lock) return;
    StageValues[static_cast<size_t>(CurrentStage)] = knobValueInCell(x, y, CurrentStage);
    SendOut();
}

void KnobSequencer::releaseKnob() {
    if (knobEdit_.end(*this)) CurrentStage = knobEdit_.savedStage;
    SendOut();
}

void KnobSequencer::setKnob(int stage, int value) {
    if (stage < 0 || stage >= stageCount() || Lock) return;
    StageValues[static_cast<size_t>(stage)] = std::clamp(value, 0, kMaxValue);
    viewChanged = true;
    if (stage == CurrentStage) SendOut();
}

void KnobSequencer::copyToFill(std::span<uint8_t> hold) const {
    for (size_t i = 0; i < StageValues.size() && i < hold.size(); ++i) hold[i] = static_cast<uint8_t>(StageValues[i]);
}

void KnobSequencer::UpdateSeq(std::span<const uint8_t> hold, int) {
    for (size_t i = 0; i < StageValues.size() && i < hold.size(); ++i) StageValues[i] = hold[i] & kMaxValue;
    SendOut();
}

void KnobSequencer::setHeadWord(uint16_t word) {
    Lock = (word & 16) != 0;
    KnobSet = std::min(word & 15, kKnobSets - 1);
}

void KnobSequencer::recallSettings(int snapshot) {
    const size_t n = StageValues.size();
    const uint8_t* row = stored_.data() + static_cast<size_t>(snapshot) * n;
    for (size_t i = 0; i < n; ++i) StageValues[i] = row[i] & kMaxValue;
    SendOut();
}

void KnobSequencer::storeSettings(int snapshot) {
    const size_t n = StageValues.size();
    uint8_t* row = stored_.data() + static_cast<size_t>(snapshot) * n;
    for (size_t i = 0; i < n; ++i) row[i] = static_cast<uint8_t>(StageValues[i]);
}

void KnobSequencer::readFields(ByteReader& in) {
    for (uint8_t& b : stored_) b = in.u8();
    const size_t n = StageValues.size();
    for (size_t i = 0; i < n; ++i) StageValues[i] = stored_[i] & kMaxValue;
}

}  // namespace quillmer
