#include "modules/sequencers/Slides.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxValue = 127;
constexpr double kKnobCentre = 172.5;
}  // namespace

int knobValueAt(double x, double y) {
    const double dx = x - kKnobCentre;
    double dy = y - kKnobCentre;
    if (dy == 0) dy = 1e-9;
    const double sx = dx > 0 ? 1 : dx < 0 ? -1 : 0;
    const double sy = dy > 0 ? 1 : -1;
    const double angle = (sx * std::atan(std::abs(dx) / std::abs(dy)) - std::numbers::pi / 2) * sy;
    const auto t = static_cast<int>(std::lround((std::numbers::pi - angle) * 20.212677));
    return (t + 160) & kMaxValue;
}

SlideSequencer::SlideSequencer(ModuleTypeId type, int stages, int barWidth, int rightEdge)
    : Module(type, kInputs),
      StageValues(static_cast<size_t>(stages), 0),
      UndoValues(static_cast<size_t>(stages), 0),
      storedRows_(static_cast<size_t>(stages + 1) * kSnapshotCount, 0),
      barWidth_(barWidth),
      rightEdge_(rightEdge),
      powerOfTwo_((stages & (stages - 1)) == 0) {
    // A new module starts at the default limit in every snapshot.
    for (int s = 0; s < kSnapshotCount; ++s) storedRows_[static_cast<size_t>(s * (stages + 1) + stages)] = kDefaultLimit;
}

int SlideSequencer::reduceStage(int value) const {
    return powerOfTwo_ ? value & (stageCount() - 1) : value % stageCount();
}

void SlideSequencer::update(Engine&) {
    const int s = reduceStage(in(0));
    if (s == CurrentStage) return;
    CurrentStage = s;
    viewChanged = true;
    SendOut();
}

void SlideSequencer::SendOut() {
    const int value = std::min<int>(StageValues[static_cast<size_t>(CurrentStage)], ScaleLimit);
    setOutput(value);
    if (value != ShownOutput) {
        ShownOutput = value;
        viewChanged = true;
    }
}

int SlideSequencer::barHeight(int stage) const {
    const auto h = static_cast<int>(std::lround(static_cast<float>(stageValue(stage)) * scale()));
    return std::min(h, kBarRoom);
}

bool SlideSequencer::inArea(int x, int y) const {
    return y >= kAreaTop && y <= kAreaBottom && x >= kAreaLeft && x <= rightEdge_;
}

int SlideSequencer::stageAtX(int x) const { return (x - (kAreaLeft - 1)) / barWidth_; }

int SlideSequencer::valueAtY(int y) const {
    return static_cast<int>(static_cast<float>(kAreaBottom - y) / scale());
}

void SlideSequencer::setStage(int stage, int value) {
    StageValues.at(static_cast<size_t>(stage)) = static_cast<int16_t>(std::clamp(value, 0, kMaxValue));
    UndoEnabled = false;
    viewChanged = true;
}

void SlideSequencer::setHover(int stage) {
    if (stage == HoverStage) return;
    HoverStage = stage;
    viewChanged = true;
}

bool SlideSequencer::mouseDown(int x, int y, Button button) {
    if (!inArea(x, y) || button == Button::None) return false;
    hitStage_ = std::clamp(stageAtX(x), 0, stageCount() - 1);
    savedEnabled_ = Enabled;
    Enabled = 0;  // the Stage input keeps off while the user paints
    editButton_ = button;
    setHover(-1);
    setStage(hitStage_, valueAtY(y));
    returnStage_ = CurrentStage;
    CurrentStage = hitStage_;
    SendOut();
    return true;
}

void SlideSequencer::mouseMove(int x, int y, Button held) {
    if (editButton_ == Button::None || held == Button::None) {
        setHover(inArea(x, y) ? std::clamp(stageAtX(x), 0, stageCount() - 1) : -1);
        return;
    }
    const int value = std::clamp(valueAtY(y), 0, ScaleLimit);
    if (editButton_ != Button::Left) {
        // Painting: the stage follows the pointer across the bars.
        hitStage_ = std::clamp(stageAtX(x), 0, stageCount() - 1);
        CurrentStage = hitStage_;
    }
    setStage(hitStage_, value);
    SendOut();
}

void SlideSequencer::mouseUp() {
    editButton_ = Button::None;
    if (savedEnabled_ == 0) return;  // a module disabled before the click stays on the painted stage
    Enabled = savedEnabled_;
    savedEnabled_ = 0;
    CurrentStage = returnStage_;
    viewChanged = true;
    SendOut();
}

void SlideSequencer::knob(int value, KnobKey key) {
    switch (key) {
        case KnobKey::CtrlHeld: value = 0; break;
        case KnobKey::ShiftHeld: value = kMaxValue; break;
        case KnobKey::AltHeld: value = 64; break;
        case KnobKey::Plain: break;
    }
    setScaleLimit(value);
}

void SlideSequencer::setScaleLimit(int value) {
    ScaleLimit = std::clamp(value, 1, kMaxValue);
    viewChanged = true;
    SendOut();
}

void SlideSequencer::normalize() {
    UndoValues = StageValues;
    const int m = *std::max_element(StageValues.begin(), StageValues.end());
    if (m == 0) return;
    const float factor = static_cast<float>(ScaleLimit) / static_cast<float>(m);
    for (int16_t& v : StageValues)
        v = static_cast<int16_t>(std::min<long>(std::lround(static_cast<float>(v) * factor), kMaxValue));
    UndoEnabled = true;
    viewChanged = true;
    SendOut();
}

void SlideSequencer::undoNormalize() {
    if (!UndoEnabled) return;
    StageValues = UndoValues;
    UndoEnabled = false;
    viewChanged = true;
    SendOut();
}

void SlideSequencer::setUpDown(int value) {
    setStage(CurrentStage, std::clamp(value, 0, ScaleLimit));
    SendOut();
}

void SlideSequencer::copyToFill(std::span<uint8_t> hold) const {
    const size_t n = std::min(StageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) hold[i] = static_cast<uint8_t>(StageValues[i]);
}

void SlideSequencer::UpdateSeq(std::span<const uint8_t> hold, int fillScale) {
    ScaleLimit = std::clamp(fillScale, 1, kMaxValue);
    const size_t n = std::min(StageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(hold[i] & kMaxValue);
    UndoEnabled = false;
    viewChanged = true;
    SendOut();
}

void SlideSequencer::takeRow(int snapshot, int zeroLimitReadsAs) {
    const size_t n = StageValues.size();
    const uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot) * (n + 1);
    for (size_t i = 0; i < n; ++i) StageValues[i] = static_cast<int16_t>(std::min<int>(row[i], kMaxValue));
    ScaleLimit = row[n] == 0 ? zeroLimitReadsAs : std::min<int>(row[n], kMaxValue);
    UndoEnabled = false;
    viewChanged = true;
}

// A stored limit of 0 is 1 on a snapshot recall but the default on loading: two readings
// of one byte, kept as they are.
void SlideSequencer::recallSettings(int snapshot) {
    takeRow(snapshot, 1);
    SendOut();
}

void SlideSequencer::storeSettings(int snapshot) {
    const size_t n = StageValues.size();
    uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot) * (n + 1);
    for (size_t i = 0; i < n; ++i) row[i] = static_cast<uint8_t>(StageValues[i]);
    row[n] = static_cast<uint8_t>(ScaleLimit);
}

void SlideSequencer::writeFields(ByteWriter& out) const { out.raw(storedRows_); }

void SlideSequencer::readFields(ByteReader& in) {
    for (uint8_t& b : storedRows_) b = in.u8();
    takeRow(0, kDefaultLimit);
}

}  // namespace quillmer
