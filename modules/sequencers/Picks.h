#pragma once
// Manual selectors with no inputs: Pick04..Pick24, radio buttons whose captions are their
// values, and Radio, eight knobs of which the chosen one is the output. Values and the
// choice are per snapshot. Needs the engine lock.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"
#include "modules/sequencers/FillTarget.h"
#include "modules/sequencers/KnobEdit.h"

namespace quillmer {

class PickSequencer : public Module, public FillTarget {
public:
    static constexpr std::string_view kUpDownTip = "Inc/Dec selected button value";
    PickSequencer(ModuleTypeId type, int count);

    int count() const { return static_cast<int>(Values.size()); }
    int value(int i) const { return Values.at(static_cast<size_t>(i)); }
    int Selected = 0;

    // opValue(i): chosen (again), and its value sent.
    void choose(int i);
    // UpDown1: the chosen button's value.
    void setUpDown(int value);

    int fillStages() const override { return count(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

    // A text and one per button (kept as read), then per snapshot the values and the choice.
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine&) override {}

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void SendOut();
    void loadSnapshot(int snapshot);
    std::vector<int> Values;
    std::vector<uint8_t> stored_;  // [snapshot][values..., selected]
    std::vector<std::string> texts_;
};

template <int N>
class Pick final : public PickSequencer {
public:
    Pick() : PickSequencer(typeId(), N) {}

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName(N < 10 ? "Pick0" + std::to_string(N) : "Pick" + std::to_string(N));
        return id;
    }
};

using Pick04 = Pick<4>;
using Pick08 = Pick<8>;
using Pick16 = Pick<16>;
using Pick24 = Pick<24>;

// Eight knobs in a column; the chosen one is the output.
class Radio final : public Module, public FillTarget {
public:
    static constexpr int kKnobs = 8;
    static constexpr std::string_view kLockTip = "Lock Knobs";
    static constexpr std::string_view kKnobSetTip = "Knob Graphics";
    static constexpr std::string_view kFillTip = "Fill utility";
    Radio();

    int value(int i) const { return Values.at(static_cast<size_t>(i)); }
    int Selected = 0;
    bool Lock = true;
    int KnobSet = 0;

    // opButton(i), or a click on knob i.
    void select(int i);
    // UpDown1: the chosen knob's value.
    void setUpDown(int value);
    // The knob column under the mouse (twips from its top).
    void pressKnob(int x, int y, int button, int keys);
    void dragKnob(int x, int y, int button, int keys);
    void releaseKnob();
    void stepKnobSet() {
        KnobSet = (KnobSet + 1) % kKnobSets;
        viewChanged = true;
    }

    int fillStages() const override { return kKnobs; }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

    // Per snapshot the eight values and a byte of the choice (bits 0..2) and bit 7 set
    // while unlocked.
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine&) override {}

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void loadSnapshot(int snapshot);
    // The one editing routine: with the edit flag, the value is stored; then it is sent.
    void editKnob(int i, int value);
    std::array<int, kKnobs> Values{};
    std::array<uint8_t, (kKnobs + 1) * kSnapshotCount> stored_{};
    KnobEdit knobEdit_;
    bool editFlag_ = false;
};

}  // namespace quillmer
