#pragma once
// The fourteen orbits of Fractal: each algorithm starts from its seed row of RanFunTable
// and gives one point of the 128 x 128 square per step. Kept apart from the module so that
// an orbit can be run and checked without an engine. Julia flips a coin on each step and
// takes it from the generator it is given.

#include <array>
#include <cstdint>
#include <string_view>

#include "engine/RandomSource.h"
#include "modules/generators/GeneratorTables.h"

namespace quillmer {

enum class FractalAlgorithm : uint8_t {
    Mira, Martin, Pickover, Hopalong, Ikeda, Ivanov, Julia, Chebychev, Lorenz, Recursive, Raster, HRaster, VRaster, Dither
};
constexpr int kFractalAlgorithms = 14;
constexpr std::array<std::string_view, kFractalAlgorithms> kFractalNames{
    "Mira", "Martin", "Pickover", "Hopalong", "Ikeda", "Ivanov", "Julia",
    "Chebychev", "Lorenz", "Recursive", "Raster", "H.Raster", "V.Raster", "Dither"};

// A plotted coordinate: the integer part (floor) AND 127; 0 for a value that is no number.
int wrapPlot(double v);

// One of the Chebychev polynomials T1..T10 at x; order 11 takes (e + e) x v - v.
double chebychev(int order, double v, double e);

struct PlotPoint {
    int x = 0;
    int y = 0;
};

class FractalOrbit {
public:
    // Back to the algorithm's start for `seed`.
    void reset(FractalAlgorithm algorithm, int seed, const GeneratorTables& t);
    // The next point. The seed is read again by the walks (Recursive, Dither).
    PlotPoint step(int seed, const GeneratorTables& t, RandomSource& random);
    FractalAlgorithm algorithm() const { return algorithm_; }
    bool started() const { return started_; }
    double x() const { return x_; }
    double y() const { return y_; }
    double z() const { return z_; }

private:
    FractalAlgorithm algorithm_ = FractalAlgorithm::Mira;
    bool started_ = false;
    double x_ = 0, y_ = 0, z_ = 0, w_ = 0;
    double a_ = 0, b_ = 0, c_ = 0, d_ = 0, e_ = 0;
    double sin_ = 0, cos_ = 0;
    float fx_ = 0, fy_ = 0, fz_ = 0;  // Lorenz runs in single precision
    int orderX_ = 1, orderY_ = 1;
    int plane_ = 0;
    int n_ = 0;   // walk counter, running table index
    int px_ = 0, py_ = 0;  // the walks' current point
};

}  // namespace quillmer
