#pragma once
// Processors that scale, offset, bound and mix values: Scaler, Level, Octave, Bounds,
// Mixer, Unity. Rows of data and compute functions run by Pure (ProcessorKit.h).

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "modules/processors/ProcessorKit.h"

namespace quillmer {

// A x (B / 100) + C in floating point, to 0..127 and then to the nearest whole number.
struct ScalerOp {
    static constexpr std::string_view kType = "Scaler";
    static constexpr InputSpec kInputs[] = {
        {" Value", "Value to be scaled", sysbus::Off},
        {" Scale", "Scale: % of input to be sent to output", sysbus::Off},
        {" Offset", "Offset: amount to add  to adjusted input", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Scaler = Pure<ScalerOp>;

// truncate(A x level + 0.5) + offset, to 0..127. The two knobs are words per snapshot:
// the level in percent (0..200) and the offset (-127..127).
struct LevelOp {
    static constexpr std::string_view kType = "Level";
    static constexpr InputSpec kInputs[] = {
        {" Value", "Value to be adjusted", sysbus::Off},
    };
    static constexpr std::string_view kLevelTip = "% of input to be sent to output";
    static constexpr std::string_view kOffsetTip = "amount to add  to adjusted input";
    static constexpr size_t kSettingBytes = 4;
    static constexpr int kLevel = 0;   // word
    static constexpr int kOffset = 2;  // word
    static constexpr int kLevelMax = 200;
    static constexpr int kOffsetMax = 127;
    static constexpr std::array<uint8_t, 4> kInitial{100, 0, 0, 0};
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 4>& settings);
};
using Level = Pure<LevelOp>;

// With r = B + 1 (at most 10): the note of A within r octaves, plus C.
struct OctaveOp {
    static constexpr std::string_view kType = "Octave";
    static constexpr InputSpec kInputs[] = {
        {" Value", "Value to be scaled", sysbus::Off},
        {" Range", "Octave Range 0-9: 0 gives note range of 0-11, 1 gives 0-23, etc.", sysbus::Off},
        {" Offset", "Offset: amount to add  to adjusted input", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Octave = Pure<OctaveOp>;

// Lower first, then Upper: Upper wins when the two cross.
struct BoundsOp {
    static constexpr std::string_view kType = "Bounds";
    static constexpr InputSpec kInputs[] = {
        {" Value", "Value to be bounded", sysbus::Off},
        {" Lower", "Lower limit", sysbus::Off},
        {" Upper", "Upper limit", sysbus::On},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&);
};
using Bounds = Pure<BoundsOp>;

// (A s1 + B s2 + C s3 + D s4) x mix. The five sliders are bytes per snapshot, in percent
// (0..100): s1..s4, then mix.
struct MixerOp {
    static constexpr std::string_view kType = "Mixer";
    static constexpr InputSpec kInputs[] = {
        {" In 1", "Input to be mixed", sysbus::Off},
        {" In 2", "Input to be mixed", sysbus::Off},
        {" In 3", "Input to be mixed", sysbus::Off},
        {" In 4", "Input to be mixed", sysbus::Off},
    };
    static constexpr std::string_view kMixTip = "Percent of total mix to send to output";
    static constexpr size_t kSettingBytes = 5;
    static constexpr int kMix = 4;
    static constexpr int kSliderMax = 100;
    static constexpr std::array<uint8_t, 5> kInitial{100, 100, 100, 100, 100};
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 5>& settings);
};
using Mixer = Pure<MixerOp>;

struct UnityOp {
    static constexpr std::string_view kType = "Unity";
    static constexpr InputSpec kInputs[] = {
        {" In", "Value goes to output unchanged", sysbus::Off},
    };
    static constexpr size_t kSettingBytes = 0;
    static Computed compute(std::span<const int> in, const std::array<uint8_t, 0>&) { return Computed{in[0]}; }
};
using Unity = Pure<UnityOp>;

}  // namespace quillmer
