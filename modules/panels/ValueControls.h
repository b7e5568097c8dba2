#pragma once
// The controls of the Values menu that hold a value and put it out: Value, Number, Bar and
// VBar (one value per snapshot, set by hand), Button (momentary or latching) and Strobe
// (a one-tick pulse on a click). Everything here needs the engine lock.

#include <cstdint>

#include "engine/Module.h"
#include "modules/panels/PerSnapshot.h"

namespace quillmer {

// One value 0..127 per snapshot, put out every tick; the panels differ only in the gesture
// that sets it.
class HeldValue : public Module {
public:
    explicit HeldValue(ModuleTypeId type) : Module(type, {}) {}

    int value() const { return value_; }
    // Cut to 0..127; goes out at once.
    void set(int value);
    void step(int delta) { set(value_ + delta); }
    // The value of a point at `pos` along a control `length` long, 0 at pos 0.
    static int valueAt(int pos, int length);

    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override { set(stored_.get(0, snapshot) & 127); }
    void storeSettings(int snapshot) override;

private:
    int value_ = 0;
    PerSnapshot<1> stored_;
};

// A number stepped up and down or typed.
class Value final : public HeldValue {
public:
    Value();
};

// A large number dragged up and down with the mouse.
class Number final : public HeldValue {
public:
    Number();
    // A vertical drag of `pixels` from where the press found `start` (up is more): two
    // pixels a step.
    void drag(int start, int pixels) { set(start - pixels / 2); }
    void press(int y) {
        pressY_ = y;
        pressValue_ = value();
    }
    void dragTo(int y) { drag(pressValue_, y - pressY_); }

private:
    int pressY_ = 0;
    int pressValue_ = 0;
};

// A horizontal bar: the point clicked or dragged to is the value.
class Bar final : public HeldValue {
public:
    Bar();
    void point(int x, int width) { set(valueAt(x, width)); }
};

// A vertical bar: the bottom is 0.
class VBar final : public HeldValue {
public:
    VBar();
    void point(int y, int height) { set(valueAt(height - 1 - y, height)); }
};

// Puts out its on-value while held (momentary) or from one click to the next (latching).
class Button final : public Module {
public:
    Button();

    bool latching = false;
    // 1..127; a stored 0 reads as 127.
    int onValue() const { return onValue_; }
    void setOnValue(int v);
    bool lit() const { return latching ? latched_ : held_; }

    void press();
    void release();

    // Per snapshot: mode, on-value, latched state.
    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    int onValue_ = 127;
    bool held_ = false;
    bool latched_ = false;
    PerSnapshot<3> stored_;
};

// A click gives one tick of 127. Clicks between two ticks make one pulse; a click during
// the pulse makes another after a tick of 0, so every pulse is a rising edge.
class Strobe final : public Module {
public:
    Strobe();
    void click() { pending_ = true; }
    int pulses() const { return pulses_; }
    void update(Engine& engine) override;

private:
    bool pending_ = false;
    int pulses_ = 0;
};

}  // namespace quillmer
