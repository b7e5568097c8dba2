#pragma once
// Ball: a ball that flies and bounces in a box, one step a tick; its height (or its left to
// right place) is the output, so that its bounces play a melody. BallCtrl: sets a Ball's
// position, speed, gravity or walls from a bus value. Everything here needs the engine lock.

#include <algorithm>
#include <array>
#include <cstdint>

#include "engine/Module.h"
#include "modules/panels/PerSnapshot.h"

namespace quillmer {

// Positions are in 1/256 of a unit, speeds in 1/256 of a unit per tick.
class Ball final : public Module {
public:
    static constexpr int kUnit = 256;
    // Per snapshot, in this order: start x, start y, x speed, y speed (64 is still, each
    // step 1/16 of a unit a tick), gravity (1/256 of a unit a tick, each tick), the output
    // (0 the height y, 1 the place x).
    enum Setting : size_t { kStartX, kStartY, kSpeedX, kSpeedY, kGravity, kAxis, kSettingCount };
    enum Wall : int { Left, Right, Floor, Ceiling };

    Ball();

    int setting(Setting s) const { return settings_[s]; }
    // Sets one of this snapshot's settings; a start place or speed restarts the flight.
    void setSetting(Setting s, int value);
    // Back to the start place and speed.
    void restart();

    // The live ball, as BallCtrl sets it (values 0..127 as on the bus).
    void placeX(int v) { x_ = std::clamp(v, 0, 127) * kUnit; }
    void placeY(int v) { y_ = std::clamp(v, 0, 127) * kUnit; }
    void speedX(int v) { vx_ = speedOf(v); }
    void speedY(int v) { vy_ = speedOf(v); }
    void gravity(int v) { gravity_ = std::clamp(v, 0, 127); }
    void setWall(Wall w, int v);
    int wall(Wall w) const { return walls_[static_cast<size_t>(w)]; }

    double x() const { return static_cast<double>(x_) / kUnit; }
    double y() const { return static_cast<double>(y_) / kUnit; }
    int vx() const { return vx_; }
    int vy() const { return vy_; }
    // Bounces off each wall since the module was made.
    int hits(Wall w) const { return hits_[static_cast<size_t>(w)]; }

    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    static int speedOf(int v) { return (std::clamp(v, 0, 127) - 64) * kUnit / 16; }
    // Folds p back inside lo..hi, turning v at each wall it passes.
    void bounce(int32_t& p, int32_t& v, Wall low, Wall high);

    std::array<int, kSettingCount> settings_{64, 100, 69, 64, 0, 0};
    int32_t x_ = 0, y_ = 0, vx_ = 0, vy_ = 0;
    int gravity_ = 0;
    std::array<int, 4> walls_{0, 127, 0, 127};
    std::array<int, 4> hits_{};
    PerSnapshot<kSettingCount> stored_;
};

// Sends a bus value to one of a Ball's live settings whenever the value changes, or the
// Enable input rises, while Enable is on.
class BallCtrl final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Value", "Value for the Ball's chosen setting", sysbus::Off},
        {" Enable", "NZ: the value goes to the Ball on each change", sysbus::On},
    };
    enum Target : int { X, Y, SpeedX, SpeedY, Gravity, LeftWall, RightWall, Floor, Ceiling, Restart, kTargetCount };
    static constexpr const char* kTargetNames[kTargetCount] = {
        "X", "Y", "X speed", "Y speed", "Gravity", "Left wall", "Right wall", "Floor", "Ceiling", "Restart"};

    BallCtrl();

    int ball() const { return ball_; }          // the Ball's index (its number less 1)
    int target() const { return target_; }
    void setBall(int index);
    void setTarget(int target);

    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void apply(Ball& b, int v) const;

    int ball_ = 0;
    int target_ = 0;
    int lastValue_ = -1;
    bool wasEnabled_ = false;
    PerSnapshot<2> stored_;
};

}  // namespace quillmer
