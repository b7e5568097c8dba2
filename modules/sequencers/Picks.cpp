#include "modules/sequencers/Picks.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxValue = 127;
const ModuleTypeId kRadioId = *typeIdByName("Radio");
}  // namespace

// --- PickSequencer ---

PickSequencer::PickSequencer(ModuleTypeId type, int count)
    : Module(type, {}),
      Values(static_cast<size_t>(count), 0),
      stored_(static_cast<size_t>((count + 1) * kSnapshotCount), 0),
      texts_(static_cast<size_t>(count + 1)) {}

void PickSequencer::SendOut() {
    setOutput(Values[static_cast<size_t>(Selected)]);
    viewChanged = true;
}

void PickSequencer::choose(int i) {
    if (i < 0 || i >= count()) return;
    Selected = i;
    SendOut();
}

void PickSequencer::setUpDown(int value) {
    Values[static_cast<size_t>(Selected)] = std::clamp(value, 0, kMaxValue);
    SendOut();
}

void PickSequencer::copyToFill(std::span<uint8_t> hold) const {
    for (size_t i = 0; i < Values.size() && i < hold.size(); ++i) hold[i] = static_cast<uint8_t>(Values[i]);
}

void PickSequencer::UpdateSeq(std::span<const uint8_t> hold, int) {
    for (size_t i = 0; i < Values.size() && i < hold.size(); ++i) Values[i] = hold[i] & kMaxValue;
    viewChanged = true;  // the captions; the output waits for a choice
}

void PickSequencer::loadSnapshot(int snapshot) {
    const size_t n = Values.size();
    const uint8_t* row = stored_.data() + static_cast<size_t>(snapshot) * (n + 1);
    for (size_t i = 0; i < n; ++i) Values[i] = row[i] & kMaxValue;
    Selected = row[n] < n ? row[n] : 0;
}

void PickSequencer::recallSettings(int snapshot) {
    loadSnapshot(snapshot);
    SendOut();
}

void PickSequencer::storeSettings(int snapshot) {
    const size_t n = Values.size();
    uint8_t* row = stored_.data() + static_cast<size_t>(snapshot) * (n + 1);
    for (size_t i = 0; i < n; ++i) row[i] = static_cast<uint8_t>(Values[i]);
    row[n] = static_cast<uint8_t>(Selected);
}

void PickSequencer::writeBody(ByteWriter& out, const OutputNames&) const {
    for (const std::string& t : texts_) out.str(t);
    out.raw(stored_);
}

void PickSequencer::readBody(ByteReader& in, OutputNames&) {
    for (std::string& t : texts_) t = in.str();
    for (uint8_t& b : stored_) b = in.u8();
    loadSnapshot(0);
}

// --- Radio ---

Radio::Radio() : Module(kRadioId, {}) {}

void Radio::select(int i) {
    if (i < 0 || i >= kKnobs) return;
    Selected = i;
    editKnob(i, Values[static_cast<size_t>(i)]);
}

void Radio::editKnob(int i, int value) {
    const auto at = static_cast<size_t>(i);
    if (editFlag_) {
        Values[at] = value & kMaxValue;
        editFlag_ = false;
    }
    setOutput(Values[at]);
    viewChanged = true;
}

void Radio::setUpDown(int value) {
    editFlag_ = true;
    editKnob(Selected, std::clamp(value, 0, kMaxValue));
}

void Radio::pressKnob(int x, int y, int button, int keys) {
    const int knob = y / kKnobTwips;
    if (y < 0 || knob >= kKnobs) return;
    knobEdit_.begin(*this, Selected);
    if (knob != Selected) select(knob);
    if (button == 0) return;
    knobEdit_.active = true;
    const int keyed = knobKeyValue(keys);
    if (button == 1 && !Lock && keyed >= 0) {
        editFlag_ = true;
        editKnob(knob, keyed);
    }
    (void)x;
}

void Radio::dragKnob(int x, int y, int button, int keys) {
    if (button != 1 || keys != 0 || !knobEdit_.active || Lock) return;
    editFlag_ = true;
    editKnob(Selected, knobValueInCell(x, y, 0, Selected));
}

void Radio::releaseKnob() {
    knobEdit_.end(*this);  // the choice stays: Radio has no input to go back to
    viewChanged = true;
}

void Radio::copyToFill(std::span<uint8_t> hold) const {
    for (size_t i = 0; i < Values.size() && i < hold.size(); ++i) hold[i] = static_cast<uint8_t>(Values[i]);
}

void Radio::UpdateSeq(std::span<const uint8_t> hold, int) {
    for (size_t i = 0; i < Values.size() && i < hold.size(); ++i) Values[i] = hold[i] & kMaxValue;
    editKnob(Selected, Values[static_cast<size_t>(Selected)]);
}

void Radio::loadSnapshot(int snapshot) {
    const uint8_t* row = stored_.data() + static_cast<size_t>(snapshot) * (kKnobs + 1);
    for (size_t i = 0; i < Values.size(); ++i) Values[i] = row[i] & kMaxValue;
    Selected = row[kKnobs] & 7;
    Lock = (row[kKnobs] & 0x80) == 0;
    editFlag_ = false;
}

void Radio::recallSettings(int snapshot) {
    loadSnapshot(snapshot);
    editKnob(Selected, Values[static_cast<size_t>(Selected)]);
}

void Radio::storeSettings(int snapshot) {
    uint8_t* row = stored_.data() + static_cast<size_t>(snapshot) * (kKnobs + 1);
    for (size_t i = 0; i < Values.size(); ++i) row[i] = static_cast<uint8_t>(Values[i]);
    row[kKnobs] = static_cast<uint8_t>((Selected & 7) | (Lock ? 0 : 0x80));
}

void Radio::writeBody(ByteWriter& out, const OutputNames&) const { out.raw(stored_); }

void Radio::readBody(ByteReader& in, OutputNames&) {
    for (uint8_t& b : stored_) b = in.u8();
    loadSnapshot(0);
}

}  // namespace quillmer
