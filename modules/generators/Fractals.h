#pragma once
// Chaos, Fractal and Fractal's tap FracOut: numbers from a dynamical system, one step per
// rising clock edge, scaled on to the bus. Fractal also draws its orbit on a 128 x 128
// picture and publishes the last point as FractalX / FractalY. In Turbo it steps a burst of
// points on every update, whatever the clock does.

#include <array>
#include <cstdint>
#include <string_view>

#include "modules/generators/ChaosMaps.h"
#include "modules/generators/FractalMaps.h"
#include "modules/processors/ProcessorKit.h"

namespace quillmer {

// Settings per snapshot: byte 0 the map (0 Burt Shift, 1 Bifurcation, 2 Henon); bytes 1
// and 2 are kept as read.
class Chaos final : public SettingsModule<3> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock: 0 to NZ steps", sysbus::Off},
        {" Seed", "Seed 0-127", sysbus::Off},
        {" Reset", "NZ resets to seed and holds", sysbus::Off},
        {" Scale", "Scale 0-127", sysbus::Off},
        {" Offset", "Added to output", sysbus::Off},
    };
    static constexpr std::array<std::string_view, 3> kMapNames{"Burt Shift", "Bifurcation", "Henon"};
    static constexpr std::string_view kMapTip = "Select Algorithm";
    Chaos();
    int map() const { return byteAt(0) % 3; }
    void chooseMap(int map);
    void update(Engine& engine) override;

protected:
    void settingsChanged() override;

private:
    BurtShift burt_;
    Bifurcation bifurcation_;
    Henon henon_;
    bool armed_ = false;
    bool needReset_ = true;
    int seenMap_ = 0;
};

// Settings per snapshot: byte 0 the algorithm (0..13), byte 2 Turbo; bytes 1 and 3 are
// kept as read.
class Fractal final : public SettingsModule<4> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ calculates next fractal step", sysbus::Off},
        {" Seed", "Initialization seed 0-127", sysbus::Off},
        {" Reset", "NZ=Reset & initialize to seed", sysbus::Off},
        {" Scale", "Scale 0-127", sysbus::Off},
        {" Offset", "Offset added to result", sysbus::Off},
    };
    static constexpr std::string_view kAlgorithmTip = "Select Fractal Algorithm";
    static constexpr std::string_view kTurboTip = "Click in for Turbo Mode";
    static constexpr std::string_view kPictureTip = "Left-click to reset; right-click to clear";
    static constexpr int kTurboPoints = 100;  // steps per update in Turbo
    static constexpr int kSide = 128;
    enum Pen : uint8_t { Blank = 0, Plotted = 1, AfterClick = 2 };

    Fractal();
    FractalAlgorithm algorithm() const { return static_cast<FractalAlgorithm>(byteAt(0) % kFractalAlgorithms); }
    void chooseAlgorithm(int index);
    bool turbo() const { return flagAt(2); }
    void setTurbo(bool on) { setFlagAt(2, on); }
    // The picture: a left click starts the orbit over at the next update, a right click
    // clears what was drawn.
    void pictureClick(bool left);
    float fractalX() const { return fractalX_; }
    float fractalY() const { return fractalY_; }
    // The picture's pens by row (y) then column (x); the version counts every change.
    const std::array<uint8_t, kSide * kSide>& picture() const { return picture_; }
    uint32_t pictureVersion() const { return pictureVersion_; }
    const FractalOrbit& orbit() const { return orbit_; }
    void update(Engine& engine) override;
    // One step of the orbit, plotted and published (what a clock edge does).
    void stepOrbit(Engine& engine);

protected:
    void settingsChanged() override;

private:
    FractalOrbit orbit_;
    std::array<uint8_t, kSide * kSide> picture_{};
    uint32_t pictureVersion_ = 0;
    float fractalX_ = 0;
    float fractalY_ = 0;
    uint8_t pen_ = Plotted;
    bool armed_ = false;
    bool needReset_ = true;
    int seenAlgorithm_ = 0;  // a new module's algorithm
};

// X or Y of a chosen Fractal, scaled. Settings per snapshot: the Fractal's index + 1 as a
// word (0 none), then a byte: 0 for X, other for Y.
class FracOut final : public TapModule<3, 2> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Scale", "Scale result 0-127", sysbus::Off},
        {" Offset", "Offset added to result", sysbus::Off},
    };
    static constexpr std::string_view kListTip = "Fractal Module to get X,Y from";
    static constexpr std::string_view kXYTip = "Click in for X, out for Y";
    FracOut();
    bool readsX() const { return byteAt(2) == 0; }
    void setReadsX(bool x) { setByteAt(2, x ? 0 : 1); }
    void update(Engine& engine) override;
};

// (round(scale / 127 x v) + offset) AND 127: how Fractal and FracOut put a point on the bus.
int scaledPoint(int scale, double v, int offset);

}  // namespace quillmer
