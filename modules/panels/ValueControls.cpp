#include "modules/panels/ValueControls.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
enum ButtonSetting : size_t { kMode, kOnValue, kLatched };
int onValueOf(int stored) { return (stored & 127) == 0 ? 127 : stored & 127; }
}  // namespace

// --- HeldValue ---

void HeldValue::set(int value) {
    const int v = std::clamp(value, 0, 127);
    if (v != value_) viewChanged = true;
    value_ = v;
    setOutput(v);
}

int HeldValue::valueAt(int pos, int length) {
    if (length <= 1) return 0;
    return std::clamp((pos * 127 + (length - 1) / 2) / (length - 1), 0, 127);
}

void HeldValue::readFields(ByteReader& in) {
    stored_.read(in);
    value_ = stored_.get(0, 0) & 127;
}

// A byte with its top bit set is kept as read while its value doesn't change.
void HeldValue::storeSettings(int snapshot) {
    if ((stored_.get(0, snapshot) & 127) != value_) stored_.put(0, snapshot, value_);
}

void HeldValue::update(Engine&) { setOutput(value_); }

Value::Value() : HeldValue(*typeIdByName("Value")) {}
Number::Number() : HeldValue(*typeIdByName("Number")) {}
Bar::Bar() : HeldValue(*typeIdByName("Bar")) {}
VBar::VBar() : HeldValue(*typeIdByName("VBar")) {}

// --- Button ---

Button::Button() : Module(*typeIdByName("Button"), {}) {}

void Button::setOnValue(int v) {
    onValue_ = std::clamp(v, 1, 127);
    viewChanged = true;
}

void Button::press() {
    if (latching)
        latched_ = !latched_;
    else
        held_ = true;
    viewChanged = true;
}

void Button::release() {
    held_ = false;
    viewChanged = true;
}

void Button::update(Engine&) { setOutput(lit() ? onValue_ : 0); }

void Button::recallSettings(int snapshot) {
    latching = stored_.get(kMode, snapshot) != 0;
    onValue_ = onValueOf(stored_.get(kOnValue, snapshot));
    latched_ = stored_.get(kLatched, snapshot) != 0;
    held_ = false;
}

void Button::storeSettings(int snapshot) {
    // A mode byte other than 0 and 1 is kept as read while the mode doesn't change.
    if ((stored_.get(kMode, snapshot) != 0) != latching) stored_.put(kMode, snapshot, latching ? 1 : 0);
    if (onValueOf(stored_.get(kOnValue, snapshot)) != onValue_) stored_.put(kOnValue, snapshot, onValue_);
    if ((stored_.get(kLatched, snapshot) != 0) != latched_) stored_.put(kLatched, snapshot, latched_ ? 1 : 0);
}

void Button::readFields(ByteReader& in) {
    stored_.read(in);
    latching = stored_.get(kMode, 0) != 0;
    onValue_ = onValueOf(stored_.get(kOnValue, 0));
    latched_ = stored_.get(kLatched, 0) != 0;
}

// --- Strobe ---

Strobe::Strobe() : Module(*typeIdByName("Strobe"), {}) {}

void Strobe::update(Engine&) {
    if (pending_ && lastOutput() == 0) {
        pending_ = false;
        ++pulses_;
        setOutput(127);
    } else {
        setOutput(0);
    }
}

}  // namespace quillmer
