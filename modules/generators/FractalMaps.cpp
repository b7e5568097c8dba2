#include "modules/generators/FractalMaps.h"

#include <cmath>
#include <numbers>

namespace quillmer {

namespace {
constexpr double kHopalongLimit = 6.4;

double sign(double v) { return v > 0 ? 1.0 : v < 0 ? -1.0 : 0.0; }

// Bits 0, 2, .. 12 (even = true) or 1, 3, .. 13 of i, packed.
int interleaved(int i, bool even) {
    int v = 0;
    for (int b = 0; b < 7; ++b) v |= ((i >> (2 * b + (even ? 0 : 1))) & 1) << b;
    return v;
}
}  // namespace

int wrapPlot(double v) {
    if (!std::isfinite(v) || std::fabs(v) > 9.0e15) return 0;
    return static_cast<int>(static_cast<int64_t>(std::floor(v)) & 127);
}

double chebychev(int order, double v, double e) {
    if (order >= 11) return (e + e) * v - v;
    double previous = 1.0, current = v;  // T0, T1
    for (int n = 1; n < order; ++n) {
        const double next = 2.0 * v * current - previous;
        previous = current;
        current = next;
    }
    return current;
}

void FractalOrbit::reset(FractalAlgorithm algorithm, int seed, const GeneratorTables& t) {
    algorithm_ = algorithm;
    started_ = true;
    seed &= 127;
    auto T = [&](int k) { return static_cast<double>(t.row(seed, k)); };
    x_ = y_ = z_ = w_ = 0;
    n_ = 0;
    px_ = py_ = 0;
    switch (algorithm) {
        case FractalAlgorithm::Mira:
            a_ = 0.6 * T(0) + 0.2;
            b_ = 0.002 * T(1) + 0.998;
            y_ = 10 * T(2) + 10;
            c_ = 2 - 2 * a_;
            w_ = c_ * x_ * x_ / (x_ * x_ + 1) + a_ * x_;
            break;
        case FractalAlgorithm::Martin:
            a_ = 100 * T(1);
            b_ = 100 * T(20);
            c_ = 100 * T(30);
            d_ = 0.15 * T(4) + 0.35;
            break;
        case FractalAlgorithm::Pickover:
            a_ = 2 * T(0) + 2.2;
            b_ = 5 * T(1);
            c_ = 2 * T(2) - 1;
            d_ = -2.01 - T(3);
            e_ = 1;
            break;
        case FractalAlgorithm::Hopalong:
            a_ = 6 * T(0) - 3;
            sin_ = std::sin(a_);
            cos_ = std::cos(a_);
            break;
        case FractalAlgorithm::Ikeda:
            a_ = T(0) / 10 + 0.9;
            b_ = 28 * T(1);
            c_ = T(2);  // p
            d_ = 1;     // q
            x_ = y_ = 0.1;
            break;
        case FractalAlgorithm::Ivanov: {
            x_ = 8 * T(0) + 4;
            y_ = 4 * T(1) + 2;
            const double n = 9 * T(2) + 4.5;
            e_ = 2 * T(3);  // g
            sin_ = std::sin(2 * std::numbers::pi / n);
            cos_ = std::cos(2 * std::numbers::pi / n);
            break;
        }
        case FractalAlgorithm::Julia:
            a_ = 2 * T(0) - 1;
            b_ = 2 * T(1) - 1;
            x_ = y_ = 0.25;
            break;
        case FractalAlgorithm::Chebychev:
            orderX_ = 1 + static_cast<int>(T(0) * 11) % 11;
            orderY_ = 1 + static_cast<int>(T(1) * 11) % 11;
            x_ = 2 * T(2) - 1;
            y_ = 2 * T(3) - 1;
            n_ = seed * 128 + 4;
            break;
        case FractalAlgorithm::Lorenz:
            fx_ = fy_ = fz_ = 0.1f;
            plane_ = seed % 3;
            break;
        default: break;
    }
}

PlotPoint FractalOrbit::step(int seed, const GeneratorTables& t, RandomSource& random) {
    seed &= 127;
    switch (algorithm_) {
        case FractalAlgorithm::Mira: {
            if (x_ >= 63) x_ = 0.123;
            if (y_ >= 63) y_ = 0.123;
            const double old = x_;
            x_ = b_ * y_ + w_;
            w_ = c_ * x_ * x_ / (x_ * x_ + 1) + a_ * x_;
            y_ = w_ - old;
            return {wrapPlot(3.8 * x_ + 58), wrapPlot(4.3 * y_ + 62)};
        }
        case FractalAlgorithm::Martin: {
            const double x = y_ - sign(x_) * std::pow(std::fabs(b_ * x_ - c_), d_);
            y_ = a_ - x_;
            x_ = x;
            return {wrapPlot(0.33 * x_ + 48), wrapPlot(0.33 * y_ + 48)};
        }
        case FractalAlgorithm::Pickover: {
            const double x = std::sin(a_ * y_) - z_ * std::cos(b_ * x_);
            const double y = z_ * std::sin(c_ * x_) - std::cos(d_ * y_);
            x_ = x;
            y_ = y;
            z_ = e_ * std::sin(x_);
            return {wrapPlot(32 * x_ + 64), wrapPlot(32 * y_ + 64)};
        }
        case FractalAlgorithm::Hopalong: {
            double nx = y_ - sign(x_) * std::sqrt(std::fabs(x_ * sin_ - cos_));
            double ny = a_ - x_;
            if (std::fabs(std::trunc(nx)) >= kHopalongLimit) nx = kHopalongLimit;
            if (std::fabs(std::trunc(ny)) >= kHopalongLimit) ny = kHopalongLimit;
            x_ = nx;
            y_ = ny;
            return {wrapPlot(12 * x_ + 60), wrapPlot(12 * y_ + 60)};
        }
        case FractalAlgorithm::Ikeda: {
            const double tt = c_ - b_ / (1 + x_ * x_ + y_ * y_);
            const double nx = a_ * (x_ * std::cos(tt) - y_ * std::sin(tt)) + d_;
            const double ny = a_ * (y_ * std::cos(tt) + x_ * std::sin(tt));
            x_ = nx;
            y_ = ny;
            return {wrapPlot(33.3 * x_ + 44), wrapPlot(33.3 * y_ + 54)};
        }
        case FractalAlgorithm::Ivanov: {
            const double u = std::fabs(std::sin(y_)) * e_ + x_;
            const double nx = u * cos_ + y_ * sin_;
            const double ny = -u * sin_ + y_ * cos_;
            x_ = nx;
            y_ = ny;
            return {wrapPlot(6.1 * x_ + 62), wrapPlot(6.1 * y_ + 62)};
        }
        case FractalAlgorithm::Julia: {
            const double wx = x_ - a_, wy = y_ - b_;
            const double r = std::sqrt(wx * wx + wy * wy);
            if (wx > 0) {
                x_ = std::sqrt((r + wx) / 2);
                y_ = wy / (2 * x_);
            } else if (wx < 0) {
                y_ = std::sqrt((r - wx) / 2);
                if (wy < 0) y_ = -y_;
                x_ = wy / (2 * y_);
            } else {
                x_ = std::sqrt(std::fabs(wy) / 2);
                y_ = x_ > 0 ? wy / (2 * x_) : 0.0;
            }
            if (random.next() < 0.5f) {
                x_ = -x_;
                y_ = -y_;
            }
            return {wrapPlot(64 * x_ + 60), wrapPlot(64 * y_ + 60)};
        }
        case FractalAlgorithm::Chebychev: {
            const double ex = t.at(n_), ey = t.at(n_ + 1);
            n_ = (n_ + 2) & (kRanFunSize - 1);
            const double nx = chebychev(orderX_, y_, ex);
            const double ny = chebychev(orderY_, x_, ey);
            x_ = nx;
            y_ = ny;
            return {wrapPlot(63 * x_ + 64), wrapPlot(64 * y_ + 64)};
        }
        case FractalAlgorithm::Lorenz: {
            constexpr float a = 10.0f, b = 8.0f / 3.0f, r = 28.0f, dt = 0.003f;
            const float nx = fx_ + dt * a * (fy_ - fx_);
            const float ny = fy_ + dt * ((r - fz_) * fx_ - fy_);
            const float nz = fz_ + dt * (fx_ * fy_ - b * fz_);
            fx_ = nx;
            fy_ = ny;
            fz_ = nz;
            x_ = fx_;
            y_ = fy_;
            z_ = fz_;
            if (plane_ == 0) return {wrapPlot(2.3f * fx_ + 60), wrapPlot(2.5f * fz_)};
            if (plane_ == 1) return {wrapPlot(2.3f * fx_ + 60), wrapPlot(2.7f * fz_ - 6)};
            return {wrapPlot(3.1f * fy_ + 60), wrapPlot(2.5f * fz_)};
        }
        case FractalAlgorithm::Recursive: {
            const int i = seed == 127 ? (16383 - n_) & 16383 : (n_ + seed * 128) & 16383;
            n_ = (n_ + 1) & 16383;
            return {interleaved(i, true), interleaved(i, false)};
        }
        case FractalAlgorithm::Raster:
        case FractalAlgorithm::HRaster:
        case FractalAlgorithm::VRaster: {
            const PlotPoint p = algorithm_ == FractalAlgorithm::VRaster ? PlotPoint{py_, px_} : PlotPoint{px_, py_};
            if (++px_ >= 128) {
                px_ = 0;
                py_ = (py_ + 1) & 127;
            }
            return p;
        }
        case FractalAlgorithm::Dither: {
            const PlotPoint p{px_, py_};
            n_ = (n_ + 1) & 16383;
            px_ += static_cast<int>((seed + 1) * static_cast<double>(t.at(n_))) + 1;
            if (px_ > 127) {
                px_ &= 127;
                py_ = (py_ + 1) & 127;
            }
            return p;
        }
    }
    return {};
}

}  // namespace quillmer
