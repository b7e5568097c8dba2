#pragma once
// The three maps of Chaos, each a small state machine over the seed rows of RanFunTable:
// a 16-bit shift register with four feedback taps, the logistic map and the Henon map.
// The last two remember where each seed's orbit was, so that going back to a seed goes on
// from there. step() gives u in 0..1.

#include <array>
#include <cstdint>

#include "modules/generators/GeneratorTables.h"

namespace quillmer {

class BurtShift {
public:
    double step(int seed, bool reset, const GeneratorTables& t);
    int32_t registerValue() const { return register_; }

private:
    std::array<int32_t, 4> tapMask_{};
    std::array<int32_t, 4> bits_{};
    int32_t register_ = 0;
    int refill_ = 0;
    int seed_ = -1;
    bool started_ = false;
};

class Bifurcation {
public:
    double step(int seed, bool reset, const GeneratorTables& t);

private:
    std::array<double, 128> remembered_{};
    double x_ = 0;
    int seed_ = -1;
};

class Henon {
public:
    double step(int seed, bool reset, const GeneratorTables& t);
    double x() const { return now_.x; }
    double y() const { return now_.y; }

private:
    struct Point {
        double x = 0, y = 0, a = 0, b = 0;
        bool started = false;
    };
    static Point start(int seed, const GeneratorTables& t);
    std::array<Point, 128> remembered_{};
    Point now_;
    int seed_ = -1;
    int k_ = 0;
};

}  // namespace quillmer
