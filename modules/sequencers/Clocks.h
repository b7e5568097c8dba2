#pragma once
// Modules that make time: Clock, Free, Sync, Counter, Pulse, GHold and Tempox.
// A gate is a value, 0 off and anything else on; a strobe output is 127 for a short time,
// then 0; a rising edge is seen by a flag that is set while the input is 0.
// A panel's lamp is bright while lastOutput() is non-zero (Counter shows the number).
// Everything here needs the engine lock.

#include <array>
#include <cstdint>

#include "engine/Durations.h"
#include "engine/Module.h"

namespace quillmer {

// Ticks a gate stays high after the tick it rises on, for a duration and a percentage:
// 0 for 0 %, P * percent / 100 rounded and kept within 1..P-1, less one, for 1..99 %,
// P - 2 for 100 % and more (P the duration's period in ticks).
int GateTicks(int durationCode, int percent);
// ticks * percent / 100 to the nearest whole tick, ties to the even one.
int PercentOfTicks(int ticks, int percent);

// A gate on the shared duration counters: high from the tick its counter fires, for
// GateTicks + 1 ticks. No Turbo: 110..127 all run at code 6 with a yellow label.
class Clock final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"Dur", "Duration: 0=1/8th, 1=1/4th,2-96=ticks", sysbus::Off},
        {"% On", "Gate-On time", sysbus::Mid},
        {"Hold", "NZ causes Hold", sysbus::Off},
    };
    Clock();

    DurationLabel durLabel = DurationLabel::Dur;  // Dur or DurYellow
    void update(Engine& engine) override;

private:
    int cachedDur_ = -1;
    int cachedPercent_ = -1;
    int code_ = 0;
    int gateTicks_ = 0;
    int remaining_ = 0;
};

// A gate with a period of its own, Dur x Mult ticks, free of the shared counters.
class Free final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"Mult", "Duration multiplier", sysbus::Off},
        {"% On", "Gate-On time", sysbus::Off},
        {"Hold", "NZ causes Hold", sysbus::Off},
        {"Dur", "Duration in ticks", sysbus::Off},
    };
    Free();

    // One word per snapshot that the record carries; nothing here reads it, it is
    // written back as it was read.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    int phase_ = 0;
    std::array<int16_t, kSnapshotCount> storedWord_{};
};

// Holds gate A back until gate B: one pass of 127 when A has risen and B is on.
class Sync final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"A", "Gate to be synchronized", sysbus::Off},
        {"B", "Gate to be synchronized with", sysbus::Off},
    };
    Sync();
    void update(Engine& engine) override;

private:
    bool armed_ = false;
    bool aWasLow_ = false;
    bool notYetFired_ = false;
};

// Counts gate edges up or down, wrapping at an inclusive limit.
class Counter final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"Gate", "Gate edge steps output", sysbus::Off},
        {"Rev", "NZ causes decending count", sysbus::Off},
        {"Rset", "NZ sets to 0 and holds", sysbus::Off},
        {"Hold", "NZ holds without resetting count", sysbus::Off},
        {"Limit", "Limit of count", sysbus::On},
    };
    Counter();
    int count() const { return count_; }
    void update(Engine& engine) override;

private:
    int count_ = 0;
    bool latch_ = false;  // set by a counted edge and by reset: the gate must fall first
};

// One pass of 127 on a rising edge. An input already high at start gives nothing.
class Pulse final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"Strob", "NZ after 0 generates 1 cycle pulse", sysbus::Off},
    };
    Pulse();
    void update(Engine& engine) override;

private:
    bool armed_ = false;
};

// On a rising edge: 0 for Delay steps, then 127 for Hold steps. A step is one pass with
// Turbo in, otherwise one 32nd note (three ticks).
class GHold final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"Trig", "NZ initiates Delay/Hold cycle", sysbus::Off},
        {"Delay", "Time to hold before output goes to 127", sysbus::Off},
        {"Hold", "Time output is held to 127", sysbus::Off},
    };
    static constexpr std::string_view kTurboTip = "Click in for Turbo time steps, out for 32nd note";
    GHold();

    bool turbo = false;  // chkTurbo, per snapshot

    // Per snapshot: chkTurbo, one byte, non-zero for in.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    bool armed_ = false;
    int delay_ = 0;
    int hold_ = 0;
    std::array<uint8_t, kSnapshotCount> storedTurbo_{};
};

// Sets the tempo and resets the clocks on strobes. No output; runs after the passes.
// Its Enabled is the inverse of the panel's opEnable switch.
class Tempox final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {"Tempo", "New Tempo (input x 2) to be set on strobe, below", sysbus::Mid},
        {"Unused", "Not used", sysbus::Off},
        {"Set", "Strobe (0 to nz) to set new tempo", sysbus::Off},
        {"Reset", "Strobe (0 to nz) to reset all clocks &  modules", sysbus::Off},
    };
    static constexpr std::string_view kEnableTip = "Click in to disable, out to enable";
    Tempox();

    int shownTempo = 0;  // bxTempo: what the set strobe will set

    // One byte per snapshot that the record carries; nothing here reads it, it is written
    // back as it was read.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    int lastTempoInput_ = -1;
    bool setArmed_ = false;
    bool resetArmed_ = false;
    std::array<uint8_t, kSnapshotCount> storedByte_{};
};

}  // namespace quillmer
