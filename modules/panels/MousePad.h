#pragma once
// Mousexy: a pad on which the pointer's place is read as values, x left to right and y
// bottom to top, 0..127 each, with the buttons held and a count of clicks. It has no output:
// MouseOut puts one of a pad's readings out, and formulas read them by the pad's number.
// Everything here needs the engine lock.

#include <array>
#include <cstdint>

#include "engine/Module.h"
#include "modules/panels/PerSnapshot.h"

namespace quillmer {

enum class PadReading : int { X, Y, Buttons, Gate, Clicks, kCount };

class Mousexy final : public Module {
public:
    static constexpr size_t kKeptBytes = 3200;

    Mousexy();

    // A press, a drag and a release at (x, y) of a pad `size` pixels square, y down from the
    // top as a window gives it; buttons 1 left, 2 right, 4 middle.
    void press(int x, int y, int size, int buttons);
    void drag(int x, int y, int size);
    void release();
    // On release the point springs back to the middle (64, 64).
    bool springBack() const { return kept_[0] != 0; }
    void setSpringBack(bool on);

    int reading(PadReading r) const;
    int reading(int r) const { return r >= 0 && r < static_cast<int>(PadReading::kCount) ? reading(static_cast<PadReading>(r)) : 0; }

    // The record: the raw head words and size, then the pad's own bytes; no name.
    bool writesOwnHead() const override { return true; }
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine&) override {}

protected:
    void onAttach(Engine& engine) override;

private:
    static int axis(int pos, int size);
    int x_ = 64, y_ = 64, buttons_ = 0, clicks_ = 0;
    std::array<uint8_t, kKeptBytes> kept_{};
};

// Puts out one reading of one pad: per snapshot the pad (index) and the reading.
class MouseOut final : public Module {
public:
    static constexpr const char* kReadingNames[] = {"X", "Y", "Buttons", "Gate", "Clicks"};

    MouseOut();
    int pad() const { return pad_; }
    int readingChosen() const { return reading_; }
    void setPad(int index);
    void setReading(int reading);

    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    int pad_ = 0;
    int reading_ = 0;
    PerSnapshot<2> stored_;
};

// The pad with that index, or null.
const Mousexy* findPad(Engine& engine, int index);

}  // namespace quillmer
