#pragma once
// Sums, differences, products and quotients of bus values. Each type is a row of data and
// a compute function run by Pure (ProcessorKit.h); results are kept to 0..127, and the
// types with the overflow light light it when the exact result left that range.
// Minus and its tap Carry keep state and are classes of their own.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "modules/processors/ProcessorKit.h"

namespace quillmer {

struct AddOp {
    static constexpr std::string_view kType = "Add";
    static constexpr InputSpec kInputs[] = {
        {" Add", "Value to be added", sysbus::Off},
        {" Add", "Value to be added", sysbus::Off},
        {" Add", "Value to be added", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Add = Pure<AddOp>;

struct Add2Op {
    static constexpr std::string_view kType = "Add2";
    static constexpr InputSpec kInputs[] = {
        {" Add", "Value to be added", sysbus::Off},
        {" Add", "Value to be added", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Add2 = Pure<Add2Op>;

// (A + B +/- C) / D; the record keeps the Negate switch as a word per snapshot.
struct AddDivOp {
    static constexpr std::string_view kType = "AddDiv";
    static constexpr InputSpec kInputs[] = {
        {" Add", "Value to Add", sysbus::Off},
        {" Add", "Value to Add", sysbus::Off},
        {" +/-", "Value to Add (or Subtract)", sysbus::Off},
        {" Divide", "Value to divide sum by", sysbus::Off},
    };
    static constexpr std::string_view kNegateTip = "Check to subtract; uncheck to add";
    static constexpr size_t kSettingBytes = 2;
    static constexpr int kNegate = 0;  // word
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 2>& settings);
};
using AddDiv = Pure<AddDivOp>;

struct MultOp {
    static constexpr std::string_view kType = "Mult";
    static constexpr InputSpec kInputs[] = {
        {" Mult", "Value to be multiplied", sysbus::Off},
        {" Mult", "Value to be multiplied", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Mult = Pure<MultOp>;

struct MulAddOp {
    static constexpr std::string_view kType = "MulAdd";
    static constexpr InputSpec kInputs[] = {
        {" Mult", "Value to be multiplied", sysbus::Off},
        {" Mult", "Value to be multiplied", sysbus::Off},
        {" Add", "Value to add to product", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using MulAdd = Pure<MulAddOp>;

struct MulDivOp {
    static constexpr std::string_view kType = "MulDiv";
    static constexpr InputSpec kInputs[] = {
        {" Mult", "Value to be multiplied", sysbus::Off},
        {" Mult", "Value to be multiplied", sysbus::Off},
        {" Divide", "Value to divide product by", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using MulDiv = Pure<MulDivOp>;

// A mod B; a divisor of 0 holds the last output.
struct ModuOp {
    static constexpr std::string_view kType = "Modu";
    static constexpr InputSpec kInputs[] = {
        {" Numerator", "Numerator", sysbus::Off},
        {" Divisor", "divisor: output is remainder, range of 0 to 1 less than this value", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Modu = Pure<ModuOp>;

struct PercentOp {
    static constexpr std::string_view kType = "Percent";
    static constexpr InputSpec kInputs[] = {
        {" Value", "Value to be modified", sysbus::Off},
        {" Percent", "Percent of input to go to output", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Percent = Pure<PercentOp>;

// A - B, 0 and the light below 0. The borrow (B - A, else 0) is what a Carry reads.
class Minus final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" From", "Value to be subtracted from", sysbus::Off},
        {" Minus", "value to subtract from top input", sysbus::Off},
    };
    Minus();
    int borrow() const { return borrow_; }
    bool over() const { return borrow_ != 0; }
    void update(Engine& engine) override;

private:
    int borrow_ = 0;
};

// The borrow of a chosen Minus, masked to 0..127; 0 while none is chosen or it is gone.
// The record keeps the choice as a word per snapshot.
class Carry final : public TapModule<2, 2> {
public:
    static constexpr std::string_view kListTip = "Minus  Module to test for carry";
    Carry();
    void update(Engine& engine) override;
};

}  // namespace quillmer
