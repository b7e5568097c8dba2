#include "modules/generators/ChaosMaps.h"

#include <cmath>

namespace quillmer {

namespace {
constexpr double kEscape = 3.4e30;

// Halves to even, as the register's division rounds.
int32_t roundHalfEven(double v) { return static_cast<int32_t>(std::nearbyint(v)); }
}  // namespace

double BurtShift::step(int seed, bool reset, const GeneratorTables& t) {
    seed &= 127;
    if (seed != seed_ || !started_) {
        for (size_t i = 0; i < 4; ++i)
            tapMask_[i] = int32_t{1} << static_cast<int>(t.row(seed, 2 + static_cast<int>(i)) * 15.0f);
    }
    if (reset || !started_) {
        bits_ = {0, -1, 0, -1};
        register_ = 0;
        refill_ = 0;
    }
    seed_ = seed;
    started_ = true;

    const double u = static_cast<double>(static_cast<float>(register_ & 65535)) / 65535.0;
    register_ = roundHalfEven(register_ / 2.0) | (bits_[3] & 32768);
    for (size_t i = 0; i < 4; ++i) bits_[i] = ((tapMask_[i] & register_) != 0 ? -1 : 0) ^ bits_[(i - 1) & 3];
    if (register_ == 0 || register_ == 65535) {
        register_ = static_cast<int32_t>(t.row(seed, refill_) * 65535.0f);
        refill_ = (refill_ + 1) & 127;
    }
    return u;
}

double Bifurcation::step(int seed, bool reset, const GeneratorTables& t) {
    seed &= 127;
    if (seed != seed_) {
        if (seed_ >= 0) remembered_[static_cast<size_t>(seed_)] = x_;
        x_ = remembered_[static_cast<size_t>(seed)];
        seed_ = seed;
    }
    if (reset || x_ == 0) x_ = t.row(seed, 5);
    const double r = t.row(seed, 4) + 3.0;
    x_ = r * x_ * (1.0 - x_);
    return x_;
}

Henon::Point Henon::start(int seed, const GeneratorTables& t) {
    if (seed == 0) return {0.6313545, 0.18940634, -1.4, 0.3, true};
    return {t.row(seed, 2), t.row(seed, 1), t.row(seed, 3) - 1.4, t.row(seed, 4), true};
}

double Henon::step(int seed, bool reset, const GeneratorTables& t) {
    seed &= 127;
    if (seed != seed_) {
        if (seed_ >= 0) remembered_[static_cast<size_t>(seed_)] = now_;
        now_ = remembered_[static_cast<size_t>(seed)];
        seed_ = seed;
    }
    if (reset || !now_.started) now_ = start(seed, t);
    if (!std::isfinite(now_.x) || !std::isfinite(now_.y)) {
        now_ = start(seed, t);
    } else if (now_.x > kEscape || now_.x < -kEscape) {
        const double f = t.at(k_);
        now_.x = f * now_.x * 0.5;
        now_.y = f * now_.y;
        k_ = (k_ + 1) & (kRanFunSize - 1);
    }
    const double x = now_.y * now_.b + now_.a * now_.x * now_.x + 1.0;
    now_.y = now_.x;
    now_.x = x;
    double whole = 0;
    return std::modf(std::fabs(x), &whole);
}

}  // namespace quillmer
