#pragma once
// Processors that remember: Sample, Delay and its tap DLTap, Slew, Diff, Tally, HiLo and
// Accum. Their outputs depend on what came before, so they compute on every update.

#include <array>
#include <cstdint>
#include <string_view>

#include "modules/processors/ProcessorKit.h"

namespace quillmer {

// Takes A on each rising edge of the strobe and holds it.
class Sample final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to be sampled", sysbus::Off},
        {" Strobe", "Sample strobe: 0 to NZ transition causes new sample", sysbus::Off},
    };
    Sample();
    void update(Engine& engine) override;

private:
    RisingEdge strobe_;
};

// A ring of 128 values. The input is written at the ring's position, which steps back one
// place every 32nd note (every update with Turbo in); the output is the value B steps old,
// at (position + B) mod 128. The Turbo switch is a byte per snapshot.
class Delay final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to be delayed", sysbus::Off},
        {" Delay", "Delay time in 32nds or (turbo) ticks", sysbus::Off},
    };
    static constexpr std::string_view kTurboTip = "Click in for Turbo time steps, out for 32nd note";
    static constexpr int kRing = 128;
    Delay();
    bool turbo() const { return flagAt(0); }
    void setTurbo(bool on) { setFlagAt(0, on); }
    // The value `back` steps behind the current position.
    int tap(int back) const { return ring_[static_cast<size_t>((position_ + back) & (kRing - 1))]; }
    void update(Engine& engine) override;

private:
    std::array<uint8_t, kRing> ring_{};
    int position_ = 0;
    bool armed_ = true;  // the first pass of a 32nd-note tick only
};

// Reads a chosen Delay's ring A steps back; 0 while none is chosen or it is gone. The
// master is a byte per snapshot (see TapModule).
class DLTap final : public TapModule<1, 1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Delay", "Delay time in 32nds or ticks", sysbus::Off},
    };
    static constexpr std::string_view kListTip = "Delay Module to tap data from";
    DLTap();
    void update(Engine& engine) override;
};

// A follower that moves towards A by (255 - 2B) / 256 of the distance each update, never
// past it; B of 0 follows at once.
class Slew final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to be slewed over time", sysbus::Off},
        {" Slew", "Slew amount: smaller numbers faster, 0=no slew", sysbus::Off},
    };
    Slew();
    double follower() const { return follower_; }
    void update(Engine& engine) override;

private:
    double follower_ = 0;
};

// When A changes, the size of the change; holds otherwise.
class Diff final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Change in this input -> output", sysbus::Off},
    };
    Diff();
    void update(Engine& engine) override;

private:
    int previous_ = 0;
};

// Counts the different values B held at rising edges of the clock. A reset clears the
// marks and the count (once while it stays up, again after each clock edge); a reset and
// an edge in one update count the edge's value anew. The record's byte per snapshot is
// kept as read.
class Tally final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: each 0 to NZ transition counts input value toward tally", sysbus::Off},
        {" In", "Input to tally", sysbus::Off},
        {" Reset", "Reset counter and start new tally", sysbus::Off},
    };
    Tally();
    int count() const { return count_; }
    void update(Engine& engine) override;

private:
    RisingEdge clock_;
    std::array<uint8_t, 128> marks_{};
    int count_ = 0;
    bool cleared_ = false;
};

// The running highest (switch out) or lowest (switch in) value of A. A reset restarts it at
// 0 for highest or 127 for lowest; the first update takes A. The switch is a byte per
// snapshot.
class HiLo final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to test", sysbus::Off},
        {" Reset", "Reset", sysbus::Off},
    };
    static constexpr std::string_view kLowestTip = "Click in forLowest, out for Highest";
    HiLo();
    bool lowest() const { return flagAt(0); }
    void setLowest(bool on) { setFlagAt(0, on); }
    void update(Engine& engine) override;

private:
    int value_ = -1;  // none yet
};

// Adds (going up) or subtracts (going down) the value at each clock edge while Upper is
// above Lower, stopping at the limits; there the direction turns unless Auto is in.
// Reset holds it at Lower, going up. The Auto switch is a byte per snapshot.
class Accum final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition accumulates value to output", sysbus::Off},
        {" Value", "Value to accumulate", sysbus::Off},
        {" Rev", "Strobe (0->NZ) to reverse direction", sysbus::Off},
        {" Reset", "NZ=Reset output to Lower; direction to Up", sysbus::Off},
        {" Upper", "Upper limit", sysbus::On},
        {" Lower", "Lower limit", sysbus::Off},
    };
    static constexpr std::string_view kAutoTip = "Click in to remove auto up/down";
    Accum();
    bool noAutoTurn() const { return flagAt(0); }
    void setNoAutoTurn(bool on) { setFlagAt(0, on); }
    bool goingUp() const { return up_; }
    void update(Engine& engine) override;

private:
    RisingEdge clock_;
    RisingEdge reverse_;
    int value_ = 0;
    bool up_ = true;
};

}  // namespace quillmer
