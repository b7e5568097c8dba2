#pragma once
// The modules on the tuning tables and the general table bank: ToneTbl (a tuning table's
// step count), TFit (a value fitted to a general table), TWrite (writes a step of one),
// Tablx (reads a step), TNames (a list of names of its own) and Qscale (a value snapped to
// one of nine fixed scales).

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "modules/processors/ProcessorKit.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

// Snaps input 1 to the scale chosen by input 2 (see tables/ScaleFit.h), cut to 0..127.
struct QscaleOp {
    static constexpr std::string_view kType = "Qscale";
    static constexpr InputSpec kInputs[] = {
        {" Input 1", "Value to be quantized to a scale", sysbus::Off},
        {" Input 2",
         "Quantize scale: 0=none, 1=Maj, 2=Min, 3=Pent, 4=Whole, 5=Fifths, 6=Ocatves, 7=Maj Triad, 8 = Min Triad, >8=none.",
         sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Qscale = Pure<QscaleOp>;

// A tuning table's step count, or its last step with the switch out. The result and the
// shown name follow only a change of the table number, so a change of the switch shows at
// the next change of table. The switch is a byte per snapshot.
class ToneTbl final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Input", "Select Tone Table 0-127", sysbus::Off},
    };
    static constexpr std::string_view kOffsetTip = "Click in for steps, out for max (steps-1)";
    ToneTbl();
    bool countsSteps() const { return flagAt(0); }
    void setCountsSteps(bool in) { setFlagAt(0, in); }
    // The caption of the switch as last shown: "Num" or "N-1".
    std::string_view caption() const { return shownSteps_ ? "Num" : "N-1"; }
    const std::string& tableName() const { return name_; }
    int shownTable() const { return table_ < 0 ? 0 : table_ & 127; }
    void update(Engine& engine) override;

private:
    int table_ = -1;
    bool shownSteps_ = false;
    std::string name_;
};

// What the modules on one general table share: the table the input chose, its name as shown,
// the Fill dialog on its 128 values, and a refresh of the name when the editor changed it.
class GeneralTableModule : public Module, public FillTarget {
public:
    int table() const { return table_; }
    const std::string& tableName() const { return name_; }

    int fillStages() const override { return kRowSteps; }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

protected:
    static constexpr int kRowSteps = 128;
    GeneralTableModule(ModuleTypeId type, std::span<const InputSpec> inputs) : Module(type, inputs) {}
    void onAttach(Engine& engine) override { engine_ = &engine; }
    // Takes the table number; the name follows a new number or the editor's strobe.
    void chooseTable(Engine& engine, int table);

private:
    Engine* engine_ = nullptr;
    int table_ = -1;
    std::string name_;
};

// The step of a table, sent when it changes.
class Tablx final : public GeneralTableModule {
public:
    static constexpr InputSpec kInputs[] = {
        {" Select Tabla Number", "Select table 0-127", sysbus::Off},
        {" Step Number", "Step of the table to send", sysbus::Off},
    };
    Tablx();
    void update(Engine& engine) override;
};

// The table's entry nearest to the value: a value that stands in the table comes out as it
// is; otherwise the nearest entry, the lower step on a tie. It fits again when the value,
// the table number or the bank changes. Its record keeps two bytes before the inputs and a
// byte per snapshot after them, as read.
class TFit final : public GeneralTableModule {
public:
    static constexpr InputSpec kInputs[] = {
        {" Select TFit Number", "Select table 0-127 to fit to", sysbus::Off},
        {" Step Number", "Value to be fitted to the table", sysbus::Off},
    };
    TFit();
    // The entry of `row` nearest to `value`, as above.
    static int fit(std::span<const uint8_t, kRowSteps> row, int value);
    void update(Engine& engine) override;
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

private:
    int value_ = -1;
    uint32_t version_ = 0;
    std::array<uint8_t, 2> lead_{};
    std::array<uint8_t, kSnapshotCount> spare_{};
};

// Writes the input to a step of a table on a rising clock, or on every tick with a clock of
// 126 (Turbo), then sends the step's entry when it changes.
class TWrite final : public GeneralTableModule {
public:
    static constexpr InputSpec kInputs[] = {
        {" Write Clock", "Write Clock: 0 to NZ transition or Turbo (126)  causes input to be written to table step",
         sysbus::Off},
        {" Step Number", "Step of the table to write", sysbus::Off},
        {" Select Table Number", "Select table 0-127 to write", sysbus::Off},
        {" Input", "Value to be written", sysbus::Off},
    };
    static constexpr int kTurbo = 126;
    TWrite();
    int shownInput() const { return input_; }
    int shownStep() const { return step_; }
    void update(Engine& engine) override;

private:
    bool armed_ = false;  // set while the clock is 0
    int input_ = 0;
    int step_ = 0;
};

// A list of 128 names of its own, one a slot; shows the one the input chooses. The names are
// stored in its record before the inputs, and a byte per snapshot after them, kept as read.
class TNames final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Input", "Table Name Slot #", sysbus::Off},
    };
    static constexpr int kSlots = 128;
    static constexpr size_t kNameLength = 20;
    TNames();
    int slot() const { return slot_ < 0 ? 0 : slot_; }
    const std::string& name(int slot) const { return names_[static_cast<size_t>(slot & 127)]; }
    const std::string& shownName() const { return name(slot()); }
    // Cut to 20 characters; trailing blanks go.
    void setName(int slot, std::string_view text);
    void update(Engine& engine) override;
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

private:
    int slot_ = -1;
    std::array<std::string, kSlots> names_;
    std::array<uint8_t, kSnapshotCount> spare_{};
};

}  // namespace quillmer
