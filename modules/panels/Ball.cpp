#include "modules/panels/Ball.h"

#include <algorithm>
#include <cmath>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kBallId = *typeIdByName("Ball");
}

// --- Ball ---

Ball::Ball() : Module(kBallId, {}) {
    for (size_t s = 0; s < kSettingCount; ++s) stored_.fill(s, settings_[s]);
    restart();
}

void Ball::restart() {
    placeX(settings_[kStartX]);
    placeY(settings_[kStartY]);
    speedX(settings_[kSpeedX]);
    speedY(settings_[kSpeedY]);
    gravity_ = settings_[kGravity];
    viewChanged = true;
}

void Ball::setSetting(Setting s, int value) {
    if (s >= kSettingCount) return;
    settings_[s] = s == kAxis ? (value != 0 ? 1 : 0) : std::clamp(value, 0, 127);
    if (s == kGravity) gravity_ = settings_[s];
    if (s <= kSpeedY) restart();
    viewChanged = true;
}

void Ball::setWall(Wall w, int v) { walls_[static_cast<size_t>(w)] = std::clamp(v, 0, 127); }

void Ball::bounce(int32_t& p, int32_t& v, Wall low, Wall high) {
    const int32_t lo = walls_[static_cast<size_t>(low)] * kUnit;
    const int32_t hi = walls_[static_cast<size_t>(high)] * kUnit;
    if (hi <= lo) {  // walls that meet or cross hold the ball on the low one
        p = lo;
        return;
    }
    // Each fold brings p nearer; a ball far outside (moved walls) is put on the wall.
    for (int fold = 0; fold < 4 && (p < lo || p > hi); ++fold) {
        if (p < lo) {
            p = 2 * lo - p;
            v = std::abs(v);
            ++hits_[static_cast<size_t>(low)];
        } else {
            p = 2 * hi - p;
            v = -std::abs(v);
            ++hits_[static_cast<size_t>(high)];
        }
    }
    p = std::clamp(p, lo, hi);
}

void Ball::update(Engine& engine) {
    if (engine.ResyncPending) restart();
    // Half the pull before the step and half after: between bounces the flight is the exact
    // parabola. A bounce keeps the ball's energy, so it climbs back to the height it fell from.
    const double g = gravity_;
    const double energy = 0.5 * static_cast<double>(vy_) * vy_ + g * y_;
    vy_ -= gravity_ / 2;
    x_ += vx_;
    y_ += vy_;
    vy_ -= gravity_ - gravity_ / 2;
    bounce(x_, vx_, Left, Right);
    const int vertical = hits_[Floor] + hits_[Ceiling];
    bounce(y_, vy_, Floor, Ceiling);
    if (gravity_ > 0 && hits_[Floor] + hits_[Ceiling] != vertical) {
        const double speed = std::sqrt(std::max(0.0, 2.0 * (energy - g * y_)));
        vy_ = static_cast<int32_t>(std::lround(vy_ < 0 ? -speed : speed));
    }
    viewChanged = true;
    const int32_t p = settings_[kAxis] != 0 ? x_ : y_;
    setOutput(std::clamp((p + kUnit / 2) / kUnit, 0, 127));
}

void Ball::recallSettings(int snapshot) {
    for (size_t s = 0; s < kSettingCount; ++s) settings_[s] = stored_.get(s, snapshot) & 127;
    settings_[kAxis] = settings_[kAxis] != 0 ? 1 : 0;
    restart();
}

void Ball::storeSettings(int snapshot) {
    for (size_t s = 0; s < kSettingCount; ++s) {
        const int was = s == kAxis ? (stored_.get(s, snapshot) != 0 ? 1 : 0) : stored_.get(s, snapshot) & 127;
        if (was != settings_[s]) stored_.put(s, snapshot, settings_[s]);
    }
}

void Ball::readFields(ByteReader& in) {
    stored_.read(in);
    for (size_t s = 0; s < kSettingCount; ++s) settings_[s] = stored_.get(s, 0) & 127;
    settings_[kAxis] = settings_[kAxis] != 0 ? 1 : 0;
    restart();
}

// --- BallCtrl ---

BallCtrl::BallCtrl() : Module(*typeIdByName("BallCtrl"), kInputs) {}

void BallCtrl::setBall(int index) {
    ball_ = std::clamp(index, 0, 127);
    lastValue_ = -1;
    viewChanged = true;
}

void BallCtrl::setTarget(int target) {
    target_ = std::clamp(target, 0, kTargetCount - 1);
    lastValue_ = -1;
    viewChanged = true;
}

void BallCtrl::apply(Ball& b, int v) const {
    switch (target_) {
        case X: b.placeX(v); break;
        case Y: b.placeY(v); break;
        case SpeedX: b.speedX(v); break;
        case SpeedY: b.speedY(v); break;
        case Gravity: b.gravity(v); break;
        case LeftWall: b.setWall(Ball::Left, v); break;
        case RightWall: b.setWall(Ball::Right, v); break;
        case Floor: b.setWall(Ball::Floor, v); break;
        case Ceiling: b.setWall(Ball::Ceiling, v); break;
        case Restart:
            if (v != 0) b.restart();
            break;
        default: break;
    }
}

void BallCtrl::update(Engine& engine) {
    const int v = in(0);
    const bool enabled = in(1) != 0;
    const bool rose = enabled && !wasEnabled_;
    wasEnabled_ = enabled;
    if (!enabled || (v == lastValue_ && !rose)) return;
    lastValue_ = v;
    Module* m = engine.typeSlot(kBallId).at(static_cast<int16_t>(ball_));
    if (m == nullptr || m->Active == 0 || m->isPlaceholder()) return;
    apply(static_cast<Ball&>(*m), v);
}

void BallCtrl::recallSettings(int snapshot) {
    ball_ = stored_.get(0, snapshot) & 127;
    target_ = std::min<int>(stored_.get(1, snapshot), kTargetCount - 1);
    lastValue_ = -1;
}

void BallCtrl::storeSettings(int snapshot) {
    if ((stored_.get(0, snapshot) & 127) != ball_) stored_.put(0, snapshot, ball_);
    if (std::min<int>(stored_.get(1, snapshot), kTargetCount - 1) != target_) stored_.put(1, snapshot, target_);
}

void BallCtrl::readFields(ByteReader& in) {
    stored_.read(in);
    ball_ = stored_.get(0, 0) & 127;
    target_ = std::min<int>(stored_.get(1, 0), kTargetCount - 1);
}

}  // namespace quillmer
