#include "modules/sequencers/Steps.h"

#include <algorithm>
#include <cctype>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kStepperId = *typeIdByName("Stepper");
constexpr int kMaxValue = 127;
}  // namespace

int ParseBusValue(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    bool negative = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    // Whole part and an optional fraction; anything else makes the text not a number.
    long whole = 0;
    int digits = 0;
    size_t i = 0;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i, ++digits)
        whole = std::min(whole * 10 + (text[i] - '0'), 100000L);
    int firstFraction = -1;  // the first digit after the point decides the rounding
    bool fractionBeyondHalf = false;
    if (i < text.size() && text[i] == '.') {
        for (++i; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i, ++digits) {
            if (firstFraction < 0) firstFraction = text[i] - '0';
            else if (text[i] != '0') fractionBeyondHalf = true;
        }
    }
    if (digits == 0 || i != text.size()) return 0;
    if (firstFraction > 5 || (firstFraction == 5 && (fractionBeyondHalf || whole % 2 == 1))) ++whole;
    if (negative) return 0;
    return static_cast<int>(std::min<long>(whole, kMaxValue));
}

// --- Stepper ---

Stepper::Stepper() : Module(kStepperId, kInputs) {}

void Stepper::update(Engine& engine) {
    int d = in(kDuration);
    const DurationInput duration = readDuration(static_cast<uint8_t>(d));
    Turbo = duration.turbo();
    if (d != lastDuration_) {
        lastDuration_ = d;
        durLabel = duration.label;
        viewChanged = true;
    }
    if (duration.label == DurationLabel::DurYellow) d = kFallbackCode;

    if (in(kReset) != 0 || engine.ResyncPending) {
        if (Count == 0) return;
        Count = 0;
    } else {
        if (in(kHold) != 0) return;
        // 126 and 127 look up code 16 and 17 here; Turbo steps whatever they say.
        if (!engine.counters.atZero(d % kDurationCodeCount) && !Turbo) return;
        const int limit = in(kLimit);
        if (in(kReverse) != 0) {
            if (--Count < 0) Count = static_cast<int16_t>(limit);
        } else if (++Count > limit) {
            Count = 0;
        }
    }
    setOutput(Count);
}

// --- StepSequencer ---

StepSequencer::StepSequencer(ModuleTypeId type, int stages)
    : Module(type, kInputs),
      StageValues(static_cast<size_t>(stages), 0),
      storedRows_(static_cast<size_t>(stages) * kSnapshotCount, 0),
      powerOfTwo_((stages & (stages - 1)) == 0) {}

int StepSequencer::reduceStage(int value) const {
    return powerOfTwo_ ? value & (stageCount() - 1) : value % stageCount();
}

void StepSequencer::update(Engine&) {
    const int s = reduceStage(in(0));
    if (s == LastStageInput) return;  // a resting input leaves a clicked stage alone
    LastStageInput = s;
    if (s != CurrentStage) {
        CurrentStage = s;
        redrawLamps();
        SendOut();
    }
}

void StepSequencer::redrawLamps() {
    if (LitStage == CurrentStage) return;
    LitStage = CurrentStage;
    viewChanged = true;
}

void StepSequencer::SendOut() {
    const int value = StageValues[static_cast<size_t>(CurrentStage)];
    setOutput(value);
    if (value != ShownOutput) {
        ShownOutput = value;
        viewChanged = true;
    }
}

void StepSequencer::editStageText(int stage, std::string_view text) {
    StageValues.at(static_cast<size_t>(stage)) = static_cast<int16_t>(ParseBusValue(text));
    viewChanged = true;  // the box shows the parsed value
    if (stage == CurrentStage) SendOut();
}

void StepSequencer::clickStage(int stage) {
    if (stage < 0 || stage >= stageCount()) return;
    CurrentStage = stage;
    viewChanged = true;
    SendOut();
}

void StepSequencer::setUpDown(int value) {
    StageValues[static_cast<size_t>(CurrentStage)] = static_cast<int16_t>(std::clamp(value, 0, kMaxValue));
    viewChanged = true;
    SendOut();
}

void StepSequencer::UpdateSeq(std::span<const uint8_t> fillHold) {
    const size_t n = std::min(StageValues.size(), fillHold.size());
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(fillHold[i] & kMaxValue);
    viewChanged = true;
    SendOut();
}

void StepSequencer::copyToFill(std::span<uint8_t> hold) const {
    const size_t n = std::min(StageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) hold[i] = static_cast<uint8_t>(StageValues[i]);
}

void StepSequencer::recallSettings(int snapshot) {
    const size_t n = StageValues.size();
    const uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot) * n;
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(std::min<int>(row[i], kMaxValue));
    SendOut();
}

void StepSequencer::storeSettings(int snapshot) {
    const size_t n = StageValues.size();
    uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot) * n;
    for (size_t i = 0; i < n; ++i) row[i] = static_cast<uint8_t>(StageValues[i]);
}

void StepSequencer::writeFields(ByteWriter& out) const {
    for (uint8_t b : storedRows_) out.u8(b);
}

void StepSequencer::readFields(ByteReader& in) {
    for (uint8_t& b : storedRows_) b = in.u8();
    const size_t n = StageValues.size();
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(std::min<int>(storedRows_[i], kMaxValue));
}

}  // namespace quillmer
