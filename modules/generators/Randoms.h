#pragma once
// The random and probability modules. Each fires once per rising clock edge (an arm flag
// set while the clock reads 0) and draws from the engine's one generator, so that a seeded
// run repeats exactly; RanPat and FunGen read the fixed tables instead, so that the same
// pattern number gives the same melody in every run.

#include <array>
#include <cstdint>
#include <string_view>

#include "modules/generators/GeneratorTables.h"
#include "modules/processors/ProcessorKit.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

// value + offset, capped at 127 (no lower limit is needed: both are bytes).
inline int addCapped(int value, int offset) { return std::min(value + offset, 127); }

// The arm flag all of them keep: set while the clock reads 0, cleared on firing.
class ArmFlag {
public:
    void arm() { armed_ = true; }
    // True once after each arm.
    bool fire() {
        const bool was = armed_;
        armed_ = false;
        return was;
    }
    bool armed() const { return armed_; }

private:
    bool armed_ = false;
};

// A whole number from lower to upper (either order) on each clock edge.
class Rand final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition gives a new number", sysbus::Off},
        {" Lower", "Lower limit", sysbus::Off},
        {" Upper", "Upper limit", sysbus::On},
    };
    Rand();
    void update(Engine& engine) override;

private:
    ArmFlag arm_;
};

// rounded(r x Scale) + Offset, or with the switch in a whole-number draw 0..Scale. The
// switch is byte 0 of a word per snapshot.
class Rand3 final : public SettingsModule<2> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition gives a new number", sysbus::Off},
        {" Scale", "Scale: maximum value that may be returned", sysbus::On},
        {" Offset", "Added to output", sysbus::Off},
    };
    static constexpr std::string_view kWholeTip = "Click in for non repeating random";
    Rand3();
    bool whole() const { return flagAt(0); }
    void setWhole(bool on) { setFlagAt(0, on); }
    void update(Engine& engine) override;

private:
    ArmFlag arm_;
};

// Walks RanFunTable (or OneOverFTable with the switch in, a byte per snapshot) from the
// start of a pattern; past a pattern's end it goes on into the next.
class RanPat final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition steps the pattern", sysbus::Off},
        {" Pattern", "Select fixed random pattern number 0-127", sysbus::Off},
        {" Reverse", "NZ=Reverse pattern", sysbus::Off},
        {" Reset", "NZ=Reset to pattern start and hold", sysbus::Off},
        {" Scale", "Scale: maximum value that may be returned", sysbus::On},
        {" Offset", "Added to output", sysbus::Off},
    };
    static constexpr std::string_view kWanderTip = "Click in for 1/f; out for random";
    RanPat();
    bool wander() const { return flagAt(0); }
    void setWander(bool on) { setFlagAt(0, on); }
    int position() const { return pos_; }
    void update(Engine& engine) override;

private:
    ArmFlag arm_;
    int pos_ = 0;
};

// The Multi Rand: each clock deals a new permutation of 0..Range (plus Offset, capped)
// into its rows; the output is row 0, URanOut taps the others.
class URand final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition deals new numbers", sysbus::Off},
        {" Range", "Numbers 0 to Range, none repeated", sysbus::Off},
        {" Offset", "Added to output", sysbus::Off},
    };
    static constexpr int kRows = 128;
    URand();
    int row(int r) const { return rows_[static_cast<size_t>(r & (kRows - 1))]; }
    void update(Engine& engine) override;

private:
    ArmFlag arm_;
    std::array<uint8_t, kRows> rows_{};
};

// Row channel + 1 of a chosen URand. Settings per snapshot: master index + 1, channel.
class URanOut final : public TapModule<2, 1> {
public:
    static constexpr std::string_view kListTip = "Multi Rand Module to get data from";
    static constexpr std::string_view kChannelTip = "Multi Rand Channel to monitor";
    static constexpr int kChannels = 127;
    URanOut();
    int channel() const { return byteAt(1) % kChannels; }
    void chooseChannel(int c) { setByteAt(1, std::clamp(c, 0, kChannels - 1)); }
    void update(Engine& engine) override;
};

// A weighted draw: the general table row at the Table input is a histogram of the 128
// output values. The Fill dialog edits that row.
class Prob final : public SettingsModule<0>, public FillTarget {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition draws a value", sysbus::Off},
        {" Probability Table", "General table 0-127 whose steps weigh each output value", sysbus::Off},
    };
    Prob();
    int table() const { return table_; }
    void update(Engine& engine) override;
    // The value a draw d (0 .. total-1) selects in a row of weights.
    static int pick(const std::array<int, 128>& weights, int64_t d);

    int fillStages() const override { return 128; }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

protected:
    void onAttach(Engine& engine) override { engine_ = &engine; }

private:
    ArmFlag arm_;
    int table_ = 0;
    Engine* engine_ = nullptr;
};

// The digit sum of a running number in a base: a self-similar sequence. The switch (a
// word per snapshot) starts from Seed x 8192.
class NumGen final : public SettingsModule<2> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition steps", sysbus::Off},
        {" Base", "Number base 2-127 (0 or 1 same as 2)", sysbus::Off},
        {" Step", "Step size -1 (0=1, 1=2, etc.)", sysbus::Off},
        {" Reverse", "NZ=Reverse pattern", sysbus::Off},
        {" Seed", "Starting point 0-127 ( X 8192 if button pressed)", sysbus::Off},
        {" Reset", "NZ to reset to start and hold", sysbus::Off},
        {" Offset", "Added to output", sysbus::Off},
    };
    static constexpr std::string_view kLargeTip = "Click in to multiply start by 8192";
    static constexpr int kMask = 1048575;
    NumGen();
    bool large() const { return flagAt(0); }
    void setLarge(bool on) { setFlagAt(0, on); }
    int position() const { return pos_; }
    static int digitSum(int value, int base);
    void update(Engine& engine) override;

private:
    ArmFlag arm_;
    int pos_ = 0;
};

// An LFO or a table read, computed at every update from its inputs; no clock. The
// function is a byte per snapshot.
class FunGen final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Step", "Cycle step", sysbus::Off},
        {" Length", "LFO: Cycle length; Rand: Seed", sysbus::Off},
        {" Scale", "Output scale 0-127", sysbus::On},
        {" Offset", "Added to output", sysbus::Off},
    };
    static constexpr std::array<std::string_view, 6> kFunctionNames{"Sine", "Triangle", "RampUp", "RampDn", "Random", "1/f Ran"};
    FunGen();
    int function() const { return byteAt(0) % 6; }
    void chooseFunction(int f) { setByteAt(0, std::clamp(f, 0, 5)); }
    void update(Engine& engine) override;

private:
    int length_ = -1;
    int scale_ = -1;
    double cycleFactor_ = 0;
    double scaleFactor_ = 0;
};

// Passes Value on each clock edge, corrupted with a chance of Probability in 100: Offset
// added, or with the switch in (a word per snapshot) put in its place.
class Corupt final : public SettingsModule<2> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition passes the value", sysbus::Off},
        {" Value", "Value to pass", sysbus::Off},
        {" Probability", "Probability (0 - 100) that input will be corrupted", sysbus::Off},
        {" Offset", "Added to or substituted for the value", sysbus::Off},
    };
    static constexpr std::string_view kSubstituteTip = "Click in to substitute Offset, out to add";
    Corupt();
    bool substitute() const { return flagAt(0); }
    void setSubstitute(bool on) { setFlagAt(0, on); }
    void update(Engine& engine) override;

private:
    ArmFlag arm_;
};

}  // namespace quillmer
