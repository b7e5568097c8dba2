#pragma once
// Knob2..Knob24: a stage table on a row of knobs. The Stage input picks the knob sent out;
// the knobs are turned with the mouse as every knob of the program is. The values are per
// snapshot; the lock and the knob pictures belong to the module and live in the record's
// head word. Needs the engine lock.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"
#include "modules/sequencers/FillTarget.h"
#include "modules/sequencers/KnobEdit.h"

namespace quillmer {

class KnobSequencer : public Module, public FillTarget {
public:
    static constexpr InputSpec kInputs[] = {{" Stage", "Stage Select", sysbus::Off}};
    static constexpr std::string_view kKnobSetTip = "Knob Graphics";
    static constexpr std::string_view kFillCaption = " Fill ";

    KnobSequencer(ModuleTypeId type, int stages);
    int stageCount() const { return static_cast<int>(StageValues.size()); }
    int reduceStage(int value) const;
    int stageValue(int stage) const { return StageValues.at(static_cast<size_t>(stage)); }

    int CurrentStage = 0;
    bool Lock = false;
    int KnobSet = 0;

    // The row of knobs under the mouse: twips from its top left.
    void pressKnob(int x, int y, int button, int keys);
    void dragKnob(int x, int y, int button, int keys);
    void releaseKnob();
    // A value typed, wheeled or keyed onto knob `stage`: shown and, if current, sent.
    void setKnob(int stage, int value);
    void setLock(bool on) { Lock = on; viewChanged = true; }
    void stepKnobSet() {
        KnobSet = (KnobSet + 1) % kKnobSets;
        viewChanged = true;
    }

    int fillStages() const override { return stageCount(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

    // lock x 16 + KnobSet.
    std::optional<uint16_t> headWord() const override { return static_cast<uint16_t>((Lock ? 16 : 0) + KnobSet); }
    void setHeadWord(uint16_t word) override;
    // Per snapshot: the N values.
    void writeFields(ByteWriter& out) const override { out.raw(stored_); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void SendOut();
    std::vector<int> StageValues;
    std::vector<uint8_t> stored_;  // [snapshot][stage]
    KnobEdit knobEdit_;
    bool powerOfTwo_;
};

template <int N>
class Knob final : public KnobSequencer {
public:
    Knob() : KnobSequencer(typeId(), N) {}

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName("Knob" + std::to_string(N));
        return id;
    }
};

using Knob2 = Knob<2>;
using Knob4 = Knob<4>;
using Knob8 = Knob<8>;
using Knob12 = Knob<12>;
using Knob16 = Knob<16>;
using Knob24 = Knob<24>;

}  // namespace quillmer
