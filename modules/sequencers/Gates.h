#pragma once
// Gates packs seven gate inputs into one number on a clock edge; Gatex08/16/32 are banks
// of 128 on/off patterns read at a stage. Needs the engine lock.

#include <array>
#include <cstdint>
#include <string>

#include "engine/Catalogue.h"
#include "engine/Module.h"

namespace quillmer {

// The gate inputs of Gates sit after the Clock: gate i adds 2^i while non-zero.
class Gates final : public Module {
public:
    static constexpr int kGates = 7;
    static constexpr int kClock = 0;
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock: 0 to NZ converts gates to output value; set to 126 for Turbo", sysbus::Off},
        {" Gate 1", "Gate in = 1", sysbus::Off},
        {" Gate 2", "Gate in = 2", sysbus::Off},
        {" Gate 4", "Gate in = 4", sysbus::Off},
        {" Gate 8", "Gate in = 8", sysbus::Off},
        {" Gate 16", "Gate in = 16", sysbus::Off},
        {" Gate 32", "Gate in = 32", sysbus::Off},
        {" Gate 64", "Gate in = 64", sysbus::Off},
    };
    Gates();
    bool ClockArmed = false;
    int ShownValue = 0;
    bool lampOn(int gate) const { return (ShownValue >> gate) & 1; }
    void update(Engine& engine) override;
};

// 128 patterns of N stages (bit i = stage i on), module data; the Stage and Pattern inputs
// pick the gate, sent as 127 or 0.
class GatePatterns : public Module {
public:
    static constexpr int kPatterns = 128;
    static constexpr int kStage = 0;
    static constexpr int kPattern = 1;
    static constexpr InputSpec kInputs[] = {
        {" Stage", "Stage Select", sysbus::Off},
        {" Pattern", "Pattern Select", sysbus::Off},
    };
    static constexpr std::string_view kCopyTip =
        "Click=Copy all patternsy; Shift-Click=Paste patterns; Ctrl-Click=Fetch from previous pattern.";

    GatePatterns(ModuleTypeId type, int stages, uint32_t* clipboard);
    int stageCount() const { return stages_; }
    uint32_t pattern(int p) const { return Patterns[static_cast<size_t>(p & (kPatterns - 1))]; }
    bool stageOn(int p, int stage) const { return (pattern(p) >> stage) & 1; }

    int CurrentPattern = 0;
    int LastPattern = -1;
    int LastStage = -1;
    int LastGate = -1;

    // chkStage(i): sets or clears stage i of the current pattern.
    void setStage(int stage, bool on);
    // btnCopy with its keys (1 Ctrl, 2 Shift): copy the first N patterns to the clipboard
    // of the size, paste them back, or fetch the previous pattern (wrapping by N).
    void copyButton(int keys);

    // The patterns, then the inputs, then a spare byte per snapshot.
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override { out.raw(spare_); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    std::array<uint32_t, kPatterns> Patterns{};
    std::array<uint8_t, kSnapshotCount> spare_{};
    uint32_t* clipboard_;  // N patterns, shared by the modules of the size
    int stages_;
};

template <int N>
class Gatex final : public GatePatterns {
public:
    Gatex() : GatePatterns(typeId(), N, Clipboard.data()) {}
    static inline std::array<uint32_t, N> Clipboard{};

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName(N < 10 ? "Gatex0" + std::to_string(N) : "Gatex" + std::to_string(N));
        return id;
    }
};

using Gatex08 = Gatex<8>;
using Gatex16 = Gatex<16>;
using Gatex32 = Gatex<32>;

}  // namespace quillmer
