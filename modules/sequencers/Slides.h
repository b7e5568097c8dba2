#pragma once
// The slide tables Slide4..Slide128: stages drawn as bars and painted with the mouse, read
// out by the Stage input and capped by a scale limit that changes only the output, never
// the stored bars. Mouse gestures arrive here in panel pixels; the panel only draws.
// Needs the engine lock.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

// The value a knob shows for a pointer at (x, y) twips inside its cell, 345 twips square:
// the angle round the centre, 0 meeting 127 at the bottom.
int knobValueAt(double x, double y);

class SlideSequencer : public Module, public FillTarget {
public:
    static constexpr InputSpec kInputs[] = {{" Stage", "Stage Select", sysbus::Off}};
    static constexpr std::string_view kKnobTip = "Scale Limit";
    static constexpr std::string_view kStageTip = "Current stage";
    static constexpr std::string_view kUpDownTip = "Adjust value of current stage";
    static constexpr std::string_view kScaleTip = "Normalize to Range";
    static constexpr std::string_view kUndoTip = "Undo Last Scale";
    // The drawing area in panel pixels.
    static constexpr int kFloor = 77;
    static constexpr int kBarRoom = 64;
    static constexpr int kAreaTop = 12;
    static constexpr int kAreaBottom = 78;
    static constexpr int kAreaLeft = 86;
    static constexpr int kDefaultLimit = 36;

    enum class Button { None, Left, Other };
    enum class KnobKey { Plain, CtrlHeld, ShiftHeld, AltHeld };

    SlideSequencer(ModuleTypeId type, int stages, int barWidth, int rightEdge);

    int stageCount() const { return static_cast<int>(StageValues.size()); }
    int reduceStage(int value) const;
    int stageValue(int stage) const { return StageValues.at(static_cast<size_t>(stage)); }
    int barWidth() const { return barWidth_; }
    int rightEdge() const { return rightEdge_; }

    int ScaleLimit = kDefaultLimit;  // 1..127
    int CurrentStage = 0;
    bool UndoEnabled = false;        // cmdUndo
    int ShownOutput = 0;             // bxOut1 when not hovering
    int HoverStage = -1;             // the bar under a pointer with no button down

    // Pixels of the bars: height of a bar, the area test, the stage and value at a point.
    float scale() const { return static_cast<float>(kBarRoom) / static_cast<float>(ScaleLimit); }
    int barHeight(int stage) const;
    bool inArea(int x, int y) const;
    int stageAtX(int x) const;  // not clipped
    int valueAtY(int y) const;  // not clipped

    // What bxStage and bxOut1 show: the hovered bar, or the current stage and output.
    int shownStage() const { return HoverStage >= 0 ? HoverStage : CurrentStage; }
    int shownValue() const { return HoverStage >= 0 ? stageValue(HoverStage) : ShownOutput; }

    // The mouse over the bars. mouseDown returns false outside the area (a panel drag).
    bool mouseDown(int x, int y, Button button);
    void mouseMove(int x, int y, Button held);
    void mouseUp();
    void mouseLeave() { setHover(-1); }
    bool painting() const { return editButton_ != Button::None; }

    // The knob: a value from its angle, or a modifier's fixed value; kept within 1..127.
    void knob(int value, KnobKey key = KnobKey::Plain);
    void setScaleLimit(int value);
    // cmdScale and cmdUndo.
    void normalize();
    void undoNormalize();
    // UpDown1: the current stage's value.
    void setUpDown(int value);
    void SendOut();

    int fillStages() const override { return stageCount(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    int fillScale() const override { return ScaleLimit; }
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

    // Per snapshot: N stage bytes, then the scale limit.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void setHover(int stage);
    void setStage(int stage, int value);
    void takeRow(int snapshot, int zeroLimitReadsAs);
    std::vector<int16_t> StageValues;
    std::vector<int16_t> UndoValues;
    std::vector<uint8_t> storedRows_;  // [snapshot][stage..., limit]
    int barWidth_;
    int rightEdge_;
    bool powerOfTwo_;
    // Mouse edit state.
    int hitStage_ = 0;
    int returnStage_ = 0;
    int16_t savedEnabled_ = 0;
    Button editButton_ = Button::None;
};

template <int N, int BarWidth, int RightEdge>
class Slide final : public SlideSequencer {
public:
    Slide() : SlideSequencer(typeId(), N, BarWidth, RightEdge) {}

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName("Slide" + std::to_string(N));
        return id;
    }
};

using Slide4 = Slide<4, 10, 124>;
using Slide8 = Slide<8, 10, 164>;
using Slide12 = Slide<12, 10, 204>;
using Slide16 = Slide<16, 10, 244>;
using Slide24 = Slide<24, 10, 324>;
using Slide32 = Slide<32, 10, 404>;
using Slide48 = Slide<48, 8, 468>;
using Slide64 = Slide<64, 7, 532>;
using Slide128 = Slide<128, 5, 724>;

}  // namespace quillmer
