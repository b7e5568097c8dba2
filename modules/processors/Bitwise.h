#pragma once
// Logic on the bits of values: Invert, Mask, Shift, Bits, the Logi types, and Test with
// its fifteen comparisons and the table TestMasks.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "modules/processors/ProcessorKit.h"

namespace quillmer {

// The four byte operations of Shift. A shift moves bits out of the byte and brings in
// zeros, so 8 places or more give 0; a rotate wraps bits round within the byte and turns
// by the count mod 8.
uint8_t shiftLeftByte(uint8_t v, int places);
uint8_t shiftRightByte(uint8_t v, int places);
uint8_t rotateLeftByte(uint8_t v, int places);
uint8_t rotateRightByte(uint8_t v, int places);

// Test's mask table: entry a holds bit (a mod 7), so test 10 asks whether the 7-bit
// pattern B has a step on at A.
extern const std::array<uint8_t, 128> TestMasks;

// A xor the 7 bit buttons (a byte per snapshot).
struct InvertOp {
    static constexpr std::string_view kType = "Invert";
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to be XORd with button bits", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 1;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 1>& settings) {
        return Computed{(in[0] ^ settings[0]) & 127};
    }
};
using Invert = Pure<InvertOp>;

// A and the 7 bit buttons (a byte per snapshot); a new Mask lets every bit pass.
struct MaskOp {
    static constexpr std::string_view kType = "Mask";
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to be ANDed with button bits", sysbus::Off},
    };
    static constexpr std::string_view kBitTip = "bits set allow input bits to pass (ANDed with input)";
    static constexpr size_t kSettingBytes = 1;
    static constexpr std::array<uint8_t, 1> kInitial{127};
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 1>& settings) {
        return Computed{in[0] & settings[0] & 127};
    }
};
using Mask = Pure<MaskOp>;

// A shifted or rotated within a byte by B places, then kept to 0..127. Per snapshot two
// bytes: the Left switch, then the Rotate switch.
struct ShiftOp {
    static constexpr std::string_view kType = "Shift";
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to be shifted", sysbus::Off},
        {" Places", "bits to shift (0-7)", sysbus::Off},
    };
    static constexpr std::string_view kLeftTip = "Check for left shift; clear for righ shift";
    static constexpr std::string_view kRotateTip = "Check to rotate (wrap around); clear to shift";
    static constexpr size_t kSettingBytes = 2;
    static constexpr int kLeft = 0;
    static constexpr int kRotate = 1;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 2>& settings);
};
using Shift = Pure<ShiftOp>;

struct LogiANDOp {
    static constexpr std::string_view kType = "LogiAND";
    static constexpr InputSpec kInputs[] = {
        {" And", "Value to be ANDed", sysbus::Off},
        {" And", "Value to be ANDed", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&) { return Computed{in[0] & in[1]}; }
};
using LogiAND = Pure<LogiANDOp>;

struct LogiOROp {
    static constexpr std::string_view kType = "LogiOR";
    static constexpr InputSpec kInputs[] = {
        {" Or", "Value to be ORd", sysbus::Off},
        {" Or", "Value to be ORd", sysbus::Off},
        {" Or", "Value to be ORd", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
        return Computed{in[0] | in[1] | in[2]};
    }
};
using LogiOR = Pure<LogiOROp>;

struct LogiXOROp {
    static constexpr std::string_view kType = "LogiXOR";
    static constexpr InputSpec kInputs[] = {
        {" Xor", "Value to be XORd", sysbus::Off},
        {" Xor", "Value to be XORd", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&) { return Computed{in[0] ^ in[1]}; }
};
using LogiXOR = Pure<LogiXOROp>;

// "NOT": 127 for 0, else 0; the light shows the output.
struct LogiEQ0Op {
    static constexpr std::string_view kType = "LogiEQ0";
    static constexpr InputSpec kInputs[] = {
        {" In", "NZ sends 0 to output; 0 sends 127 to output", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
        return in[0] == 0 ? Computed{kStrobe, true} : Computed{0, false};
    }
};
using LogiEQ0 = Pure<LogiEQ0Op>;

// "Num2G": 127 for not zero, else 0; the light shows the output.
struct LogiNE0Op {
    static constexpr std::string_view kType = "LogiNE0";
    static constexpr InputSpec kInputs[] = {
        {" In", "Nz sends 127 to output; 0 sends 0 to output", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
        return in[0] > 0 ? Computed{kStrobe, true} : Computed{0, false};
    }
};
using LogiNE0 = Pure<LogiNE0Op>;

// Shows its input's 8 bits; computes no output.
class Bits final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Value to show binary display", sysbus::Off},
    };
    Bits();
    int shown() const { return shown_; }
    bool bitLit(int b) const { return (shown_ >> b) & 1; }
    // lblBits: the bits, the highest first.
    std::string bitsText() const;
    void update(Engine& engine) override;

private:
    int shown_ = 0;
};

// One of fifteen tests of A against B or against A's previous value p. The chosen test is
// a byte per snapshot; p is A at the end of the last update.
class Test final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" A", "Value \"A\" to be tested", sysbus::Off},
        {" B", "Value \"B\" to be tested", sysbus::Off},
    };
    static constexpr std::string_view kListTip = "menu of available tests";
    static constexpr int kTestCount = 15;
    static const std::array<std::string_view, kTestCount> kTestNames;
    Test();
    int test() const { return byteAt(0); }
    void chooseTest(int index);
    // The result of test `index` (other indices give 0); r is the value 128 bus ids above A's.
    static int evaluate(int index, int a, int b, int p, int r);
    void update(Engine& engine) override;

private:
    int previous_ = 0;
};

}  // namespace quillmer
