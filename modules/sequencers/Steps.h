#pragma once
// The step family: Stepper, a counter on a duration, and the stage tables Step2..Step32,
// which have no clock of their own and look a stage value up by their Stage input. A
// running sequence is a Stepper (or any source of numbers) feeding a table's Stage.
// Everything here needs the engine lock, the panel's edits included.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Durations.h"
#include "engine/Module.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

// The number parser of value boxes: text that isn't a number gives 0; a number is rounded
// to a whole one (ties to even) and kept within 0..127.
int ParseBusValue(std::string_view text);

// Counts on a duration, up or down, wrapping at an inclusive limit. Reset beats Hold, Hold
// beats the clock, and only a due clock moves the count. Not part of a snapshot.
class Stepper final : public Module {
public:
    // In stored order (a snapshot keeps Duration, Reverse, Reset, Hold, Limit).
    static constexpr InputSpec kInputs[] = {
        {" Duration", "Duration: 0=1/8th, 1=1/4th, 2-96=ticks; 97-109=same as Note; 126/127=turbo", sysbus::Off},
        {" Reverse", "NZ causes decending count", sysbus::Off},
        {" Reset", "NZ sets to 0 and holds", sysbus::Off},
        {" Hold", "NZ holds without resetting count", sysbus::Off},
        {" Limit", "Limit of count", sysbus::On},
    };
    static constexpr int kDuration = 0;
    static constexpr int kReverse = 1;
    static constexpr int kReset = 2;
    static constexpr int kHold = 3;
    static constexpr int kLimit = 4;
    // The panel's buttons: Duration, Limit, Reverse, Reset, Hold, and the labels above them.
    static constexpr int kMenuOrder[] = {kDuration, kLimit, kReverse, kReset, kHold};
    static constexpr std::string_view kPanelLabels[] = {"Dur", "Limit", "Rev", "Rset", "Hold"};

    Stepper();
    int menuInput(int row) const override { return kMenuOrder[row]; }

    int16_t Count = 0;
    bool Turbo = false;
    // The duration lamp: "Dur" white, "Dur" yellow (110..125, run at code 6), "Turbo" yellow.
    DurationLabel durLabel = DurationLabel::Dur;
    void update(Engine& engine) override;

private:
    int lastDuration_ = -1;
};

// A stage table of N stages (2, 4, 8, 12, 16, 24 or 32). The Stage input picks the stage;
// a stage clicked on the panel stays until the input changes. Stage values are per
// snapshot: a recall brings another row and keeps the stage.
class StepSequencer : public Module, public FillTarget {
public:
    static constexpr InputSpec kInputs[] = {{" Stage", "Stage Select", sysbus::Off}};
    static constexpr std::string_view kStageTip = "Enter Stage Value 0-127";
    static constexpr std::string_view kUpDownTip = "Inc/dec current stage";
    static constexpr std::string_view kFillCaption = " Fill ";

    StepSequencer(ModuleTypeId type, int stages);

    int stageCount() const { return static_cast<int>(StageValues.size()); }
    // A bus value as a stage: AND (N-1) for a power of two, mod N otherwise.
    int reduceStage(int value) const;
    int stageValue(int stage) const { return StageValues.at(static_cast<size_t>(stage)); }
    std::string stageText(int stage) const { return std::to_string(stageValue(stage)); }

    // What the panel shows.
    int CurrentStage = 0;    // output and selected
    int LitStage = 0;        // drawn bright; follows CurrentStage at the next redraw
    int ShownOutput = 0;     // bxOut1
    int LastStageInput = -1; // the last reduced Stage input; -1 before the first pass
    bool lampBright(int stage) const { return stage == LitStage; }
    int upDownValue() const { return stageValue(CurrentStage); }

    // The panel's edits, as its gestures arrive.
    // Text typed into stage box i: parsed, stored, written back to the box.
    void editStageText(int stage, std::string_view text);
    // A click in stage box i selects it and sends it out; the lamp waits for the next redraw.
    void clickStage(int stage);
    // The up-down control: sets the current stage's value, kept within 0..127.
    void setUpDown(int value);
    void stepUpDown(int delta) { setUpDown(upDownValue() + delta); }
    // The Fill dialog's row: its first N values become the stages.
    void UpdateSeq(std::span<const uint8_t> fillHold);
    int fillStages() const override { return stageCount(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int) override { UpdateSeq(hold); }
    // The current stage's value to the output.
    void SendOut();

    // Per snapshot: N bytes of stage values.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void redrawLamps();
    std::vector<int16_t> StageValues;
    std::vector<uint8_t> storedRows_;  // [snapshot][stage]
    bool powerOfTwo_;
};

// One member of the family per stage count.
template <int N>
class Step final : public StepSequencer {
public:
    Step() : StepSequencer(typeId(), N) {}

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName("Step" + std::to_string(N));
        return id;
    }
};

using Step2 = Step<2>;
using Step4 = Step<4>;
using Step8 = Step<8>;
using Step12 = Step<12>;
using Step16 = Step<16>;
using Step24 = Step<24>;
using Step32 = Step<32>;

}  // namespace quillmer
