#include "modules/sequencers/Runs.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxValue = 127;
}

RunSequencer::RunSequencer(ModuleTypeId type, int stages)
    : Module(type, kInputs),
      StageValues(static_cast<size_t>(stages), 0),
      storedRows_(static_cast<size_t>(stages) * kSnapshotCount, 0),
      powerOfTwo_((stages & (stages - 1)) == 0) {}

int RunSequencer::reduceStage(int value) const {
    return powerOfTwo_ ? value & (stageCount() - 1) : value % stageCount();
}

void RunSequencer::update(Engine&) {
    const int s = reduceStage(in(0));
    if (s == CurrentStage) return;
    CurrentStage = s;
    viewChanged = true;
    SendOut();
}

void RunSequencer::SendOut() {
    const int value = StageValues[static_cast<size_t>(CurrentStage)];
    setOutput(value);
    if (value != ShownOutput) {
        ShownOutput = value;
        viewChanged = true;
    }
}

void RunSequencer::copyToFill(std::span<uint8_t> hold) const {
    const size_t n = std::min(StageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) hold[i] = static_cast<uint8_t>(StageValues[i]);
}

void RunSequencer::UpdateSeq(std::span<const uint8_t> hold, int) {
    const size_t n = std::min(StageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(hold[i] & kMaxValue);
    viewChanged = true;
    SendOut();
}

void RunSequencer::recallSettings(int snapshot) {
    const size_t n = StageValues.size();
    const uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot) * n;
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(std::min<int>(row[i], kMaxValue));
    SendOut();
}

void RunSequencer::storeSettings(int snapshot) {
    const size_t n = StageValues.size();
    uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot) * n;
    for (size_t i = 0; i < n; ++i) row[i] = static_cast<uint8_t>(StageValues[i]);
}

void RunSequencer::readFields(ByteReader& in) {
    for (uint8_t& b : storedRows_) b = in.u8();
    const size_t n = StageValues.size();
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(std::min<int>(storedRows_[i], kMaxValue));
}

}  // namespace quillmer
