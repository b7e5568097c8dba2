// Chaos maps and fractal orbits against steps worked out here from the seed rows: first
// steps, limits, wraps, the same orbit again after a reset, seeds that remember where they
// were, Turbo's burst, FracOut's tap and the picture's clicks.

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "ModuleHarness.h"
#include "modules/generators/Fractals.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
const GeneratorTables& T() { return generatorTables(); }

int chaosOut(double u, int scale, int offset) { return std::min(static_cast<int>(std::nearbyint(scale * u)) + offset, 127); }

// Clock edges on a Chaos (or Fractal) with the given seed: the output after each.
std::vector<int> clocked(ModuleHarness& h, Module& m, int edges) {
    std::vector<int> outs;
    for (int i = 0; i < edges; ++i) {
        h.edge(m, 0);
        outs.push_back(h.out(m));
    }
    return outs;
}
}  // namespace

TEST(GeneratorTables, NeighboursJumpAndTheOneOverFRowWanders) {
    const GeneratorTables& t = T();
    for (size_t k = 1; k < t.ranFun.size(); ++k) {
        ASSERT_GE(std::fabs(t.ranFun[k] - t.ranFun[k - 1]), 0.02f) << k;
        ASSERT_GE(t.ranFun[k], 0.0f);
        ASSERT_LT(t.ranFun[k], 1.0f);
    }
    for (size_t k = 4; k < t.oneOverF.size(); ++k) {
        const float mean = (t.oneOverF[k - 1] + t.oneOverF[k - 2] + t.oneOverF[k - 3] + t.oneOverF[k - 4]) / 4;
        const float d = std::fabs(t.oneOverF[k] - mean);
        ASSERT_GE(d, 0.02f) << k;
        ASSERT_LT(d, 0.2f) << k;
    }
    EXPECT_EQ(t.sine[0], 0);
    EXPECT_EQ(t.sine[64], 127);
    EXPECT_EQ(t.sine[127], 3);
    EXPECT_EQ(t.triangle[63], 126);
    EXPECT_EQ(t.triangle[64], 127);
    EXPECT_EQ(t.triangle[65], 125);
    EXPECT_EQ(t.triangle[127], 1);
    // The same stored seed gives the same table; another seed another one.
    const GeneratorTables again = buildGeneratorTables(t.seed);
    EXPECT_EQ(again.ranFun, t.ranFun);
    EXPECT_EQ(again.oneOverF, t.oneOverF);
    EXPECT_NE(buildGeneratorTables(t.seed + 1).ranFun, t.ranFun);
}

TEST(Chaos, BifurcationFollowsTheLogisticMapAndEachSeedRemembersItsPlace) {
    ModuleHarness h;
    auto& chaos = static_cast<Chaos&>(h.add("Chaos"));
    chaos.chooseMap(1);
    h.set(chaos, 3, 127);
    h.set(chaos, 1, 5);
    const double r = T().row(5, 4) + 3.0;
    double x = T().row(5, 5);
    std::vector<int> expected;
    for (int i = 0; i < 6; ++i) {
        x = r * x * (1 - x);
        expected.push_back(chaosOut(x, 127, 0));
    }
    EXPECT_EQ(clocked(h, chaos, 4), std::vector<int>(expected.begin(), expected.begin() + 4));
    h.set(chaos, 1, 9);
    const double r9 = T().row(9, 4) + 3.0;
    const double x9 = r9 * T().row(9, 5) * (1 - T().row(9, 5));
    EXPECT_EQ(clocked(h, chaos, 1), std::vector<int>{chaosOut(x9, 127, 0)}) << "a new seed starts from its row";
    h.set(chaos, 1, 5);
    EXPECT_EQ(clocked(h, chaos, 2), std::vector<int>(expected.begin() + 4, expected.end())) << "seed 5 goes on where it was";
}

TEST(Chaos, HenonSeedZeroStartsFromTheClassicPointAndResetHolds) {
    ModuleHarness h;
    auto& chaos = static_cast<Chaos&>(h.add("Chaos"));
    chaos.chooseMap(2);
    h.set(chaos, 3, 100);
    h.set(chaos, 4, 10);
    double x = 0.6313545, y = 0.18940634;
    std::vector<int> expected;
    for (int i = 0; i < 5; ++i) {
        const double nx = y * 0.3 - 1.4 * x * x + 1;
        y = x;
        x = nx;
        double whole = 0;
        expected.push_back(chaosOut(std::modf(std::fabs(x), &whole), 100, 10));
    }
    EXPECT_EQ(clocked(h, chaos, 5), expected);
    // Reset held with the clock high: the first step again on every tick.
    h.set(chaos, 2, 1);
    h.ticks(3);
    EXPECT_EQ(h.out(chaos), expected[0]);
    h.set(chaos, 2, 0);
    h.set(chaos, 0, 0);
    h.ticks(1);
    EXPECT_EQ(clocked(h, chaos, 2), std::vector<int>(expected.begin() + 1, expected.begin() + 3));
}

TEST(Chaos, BurtShiftMatchesTheRegisterWorkedOutHereAndNeverSticks) {
    ModuleHarness h;
    auto& chaos = static_cast<Chaos&>(h.add("Chaos"));
    chaos.chooseMap(0);
    h.set(chaos, 3, 127);
    h.set(chaos, 1, 17);
    // The register worked out independently.
    int masks[4];
    for (int i = 0; i < 4; ++i) masks[i] = 1 << static_cast<int>(T().row(17, 2 + i) * 15.0f);
    int bits[4] = {0, -1, 0, -1};
    int reg = 0, refill = 0;
    std::vector<int> expected;
    std::set<int> seen;
    for (int i = 0; i < 300; ++i) {
        expected.push_back(chaosOut((reg & 65535) / 65535.0, 127, 0));
        reg = static_cast<int>(std::nearbyint(reg / 2.0)) | (bits[3] & 32768);
        for (int k = 0; k < 4; ++k) bits[k] = ((masks[k] & reg) ? -1 : 0) ^ bits[(k + 3) & 3];
        if (reg == 0 || reg == 65535) {
            reg = static_cast<int>(T().row(17, refill) * 65535.0f);
            refill = (refill + 1) & 127;
        }
    }
    const std::vector<int> got = clocked(h, chaos, 300);
    EXPECT_EQ(got, expected);
    for (size_t i = 200; i < got.size(); ++i) seen.insert(got[i]);
    EXPECT_GT(seen.size(), 4u) << "the register keeps moving";
}

TEST(Chaos, ChangingTheMapStartsItOver) {
    ModuleHarness h;
    auto& chaos = static_cast<Chaos&>(h.add("Chaos"));
    chaos.chooseMap(1);
    h.set(chaos, 3, 127);
    const std::vector<int> first = clocked(h, chaos, 3);
    chaos.chooseMap(2);
    clocked(h, chaos, 2);
    chaos.chooseMap(1);
    EXPECT_EQ(clocked(h, chaos, 3), first);
}

TEST(FractalOrbit, WalksSweepTheSquareInTheirOrders) {
    RandomSource random;
    FractalOrbit o;
    o.reset(FractalAlgorithm::Raster, 0, T());
    PlotPoint p{};
    for (int i = 0; i < 129; ++i) p = o.step(0, T(), random);
    EXPECT_EQ(p.x, 0);
    EXPECT_EQ(p.y, 1) << "the 129th point starts the second row";
    o.reset(FractalAlgorithm::VRaster, 0, T());
    o.step(0, T(), random);
    p = o.step(0, T(), random);
    EXPECT_EQ(p.x, 0);
    EXPECT_EQ(p.y, 1);
    // Morton order: bits 0, 2, 4.. give X, bits 1, 3, 5.. give Y.
    o.reset(FractalAlgorithm::Recursive, 0, T());
    const PlotPoint morton[] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {2, 0}, {3, 0}, {2, 1}, {3, 1}, {0, 2}};
    for (const PlotPoint& want : morton) {
        p = o.step(0, T(), random);
        EXPECT_EQ(p.x, want.x);
        EXPECT_EQ(p.y, want.y);
    }
    o.reset(FractalAlgorithm::Recursive, 127, T());
    p = o.step(127, T(), random);
    EXPECT_EQ(p.x, 127);
    EXPECT_EQ(p.y, 127) << "seed 127 walks backward from the far corner";
    o.reset(FractalAlgorithm::Recursive, 1, T());
    p = o.step(1, T(), random);
    EXPECT_EQ(p.x, 0);
    EXPECT_EQ(p.y, 8) << "seed 1 starts at i = 128";
}

TEST(FractalOrbit, DitherStepsByTheTableAndWrapsIntoTheNextRow) {
    RandomSource random;
    FractalOrbit o;
    const int seed = 40;
    o.reset(FractalAlgorithm::Dither, seed, T());
    int x = 0, y = 0, k = 0;
    for (int i = 0; i < 500; ++i) {
        const PlotPoint p = o.step(seed, T(), random);
        ASSERT_EQ(p.x, x) << i;
        ASSERT_EQ(p.y, y) << i;
        k = (k + 1) & 16383;
        x += static_cast<int>((seed + 1) * T().at(k)) + 1;
        if (x > 127) {
            x &= 127;
            y = (y + 1) & 127;
        }
    }
}

TEST(FractalOrbit, MapsTakeTheirFirstStepsFromTheSeedRow) {
    RandomSource random;
    FractalOrbit o;
    const int s = 12;
    auto row = [&](int k) { return static_cast<double>(T().row(s, k)); };

    o.reset(FractalAlgorithm::Mira, s, T());
    {
        const double a = 0.6 * row(0) + 0.2, b = 0.002 * row(1) + 0.998, c = 2 - 2 * a;
        double x = 0, y = 10 * row(2) + 10, w = 0;
        for (int i = 0; i < 20; ++i) {
            if (x >= 63) x = 0.123;
            if (y >= 63) y = 0.123;
            const double old = x;
            x = b * y + w;
            w = c * x * x / (x * x + 1) + a * x;
            y = w - old;
            const PlotPoint p = o.step(s, T(), random);
            ASSERT_EQ(p.x, wrapPlot(3.8 * x + 58)) << i;
            ASSERT_EQ(p.y, wrapPlot(4.3 * y + 62)) << i;
        }
    }
    o.reset(FractalAlgorithm::Ikeda, s, T());
    {
        const double a = row(0) / 10 + 0.9, b = 28 * row(1), pp = row(2);
        double x = 0.1, y = 0.1;
        for (int i = 0; i < 20; ++i) {
            const double t = pp - b / (1 + x * x + y * y);
            const double nx = a * (x * std::cos(t) - y * std::sin(t)) + 1;
            y = a * (y * std::cos(t) + x * std::sin(t));
            x = nx;
            const PlotPoint p = o.step(s, T(), random);
            ASSERT_EQ(p.x, wrapPlot(33.3 * x + 44)) << i;
            ASSERT_EQ(p.y, wrapPlot(33.3 * y + 54)) << i;
        }
    }
    o.reset(FractalAlgorithm::Lorenz, 3, T());  // plane 0
    {
        const PlotPoint p = o.step(3, T(), random);
        EXPECT_FLOAT_EQ(static_cast<float>(o.x()), 0.1f);
        EXPECT_NEAR(o.y(), 0.1 + 0.003 * ((28 - 0.1) * 0.1 - 0.1), 1e-6);
        EXPECT_NEAR(o.z(), 0.1 + 0.003 * (0.01 - 8.0 / 3.0 * 0.1), 1e-6);
        EXPECT_EQ(p.x, 60);
        EXPECT_EQ(p.y, 0);
    }
    // Hopalong's guard: no coordinate's whole part passes the limit.
    o.reset(FractalAlgorithm::Hopalong, s, T());
    for (int i = 0; i < 2000; ++i) {
        o.step(s, T(), random);
        ASSERT_LT(std::fabs(std::trunc(o.x())), 7.0);
        ASSERT_LT(std::fabs(std::trunc(o.y())), 7.0);
    }
}

TEST(FractalOrbit, WrapsAndPolynomialsAtTheirEdges) {
    EXPECT_EQ(wrapPlot(-0.5), 127);
    EXPECT_EQ(wrapPlot(128.2), 0);
    EXPECT_EQ(wrapPlot(255.9), 127);
    EXPECT_EQ(wrapPlot(std::nan("")), 0);
    EXPECT_EQ(wrapPlot(1e300), 0);
    EXPECT_DOUBLE_EQ(chebychev(3, 0.5, 0), -1.0);
    EXPECT_NEAR(chebychev(10, std::cos(0.3), 0), std::cos(3.0), 1e-12);
    EXPECT_DOUBLE_EQ(chebychev(11, 0.5, 0.25), -0.25);
    // Every algorithm stays in the square for every tenth seed over many steps.
    RandomSource random;
    for (int a = 0; a < kFractalAlgorithms; ++a)
        for (int s = 0; s < 128; s += 10) {
            FractalOrbit o;
            o.reset(static_cast<FractalAlgorithm>(a), s, T());
            for (int i = 0; i < 3000; ++i) {
                const PlotPoint p = o.step(s, T(), random);
                ASSERT_TRUE(p.x >= 0 && p.x < 128 && p.y >= 0 && p.y < 128) << kFractalNames[static_cast<size_t>(a)] << " " << s;
            }
        }
}

TEST(Fractal, ClockEdgesStepTurboBurstsAndResetRepeatsTheOrbit) {
    ModuleHarness h;
    auto& fractal = static_cast<Fractal&>(h.add("Fractal"));
    fractal.chooseAlgorithm(static_cast<int>(FractalAlgorithm::Mira));
    h.set(fractal, 1, 12);
    h.set(fractal, 3, 127);
    h.ticks(1);  // the pending start plots the first point

    RandomSource unused;
    FractalOrbit o;
    o.reset(FractalAlgorithm::Mira, 12, T());
    std::vector<int> expected;
    for (int i = 0; i < 200; ++i) expected.push_back(o.step(12, T(), unused).x);
    std::vector<int> got{static_cast<int>(fractal.fractalX())};
    for (int i = 0; i < 5; ++i) {
        h.edge(fractal, 0);
        got.push_back(h.out(fractal));
    }
    EXPECT_EQ(got, std::vector<int>(expected.begin(), expected.begin() + 6));
    h.set(fractal, 0, 127);
    h.ticks(3);
    EXPECT_EQ(h.out(fractal), expected[5]) << "a held clock steps once";

    h.set(fractal, 2, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(fractal), 0);
    h.set(fractal, 2, 0);
    h.set(fractal, 0, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(fractal), expected[0]) << "after a reset the orbit starts again";

    fractal.setTurbo(true);
    h.ticks(1);
    EXPECT_EQ(h.out(fractal), expected[Fractal::kTurboPoints]) << "Turbo goes on with a burst; it doesn't start over";
}

TEST(Fractal, PictureClicksAndFracOutTapsScaledCoordinates) {
    ModuleHarness h;
    auto& fractal = static_cast<Fractal&>(h.add("Fractal"));
    fractal.chooseAlgorithm(static_cast<int>(FractalAlgorithm::Raster));
    auto& tap = static_cast<FracOut&>(h.add("FracOut"));
    tap.chooseMaster(fractal.Index);
    h.set(tap, 0, 127);
    h.set(tap, 1, 0);
    h.set(fractal, 3, 127);
    h.ticks(1);
    for (int i = 0; i < 130; ++i) h.edge(fractal, 0);
    EXPECT_EQ(fractal.fractalX(), 2.0f);
    EXPECT_EQ(fractal.fractalY(), 1.0f);
    h.ticks(1);
    EXPECT_EQ(h.out(tap), 2);
    tap.setReadsX(false);
    h.set(tap, 1, 126);
    h.ticks(1);
    EXPECT_EQ(h.out(tap), 127);
    h.set(tap, 1, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(tap), 0) << "scaled and offset values wrap";
    h.set(tap, 0, 64);
    h.set(tap, 1, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(tap), 1) << "round(64 / 127 x 1) = 1";

    int lit = 0;
    for (uint8_t px : fractal.picture()) lit += px != 0;
    EXPECT_EQ(lit, 131);
    fractal.pictureClick(false);
    lit = 0;
    for (uint8_t px : fractal.picture()) lit += px != 0;
    EXPECT_EQ(lit, 0) << "a right click clears";
    fractal.pictureClick(true);
    h.ticks(1);
    EXPECT_EQ(fractal.fractalX(), 0.0f) << "a left click restarts the orbit at the next update";
    EXPECT_EQ(fractal.picture()[0], Fractal::AfterClick);

    h.engine->Delete(fractal);
    h.ticks(1);
    EXPECT_EQ(h.out(tap), 0) << "a deleted master reads 0";
}

TEST(Fractal, SettingsSurviveTheRecord) {
    ModuleHarness h;
    auto& fractal = static_cast<Fractal&>(h.add("Fractal"));
    fractal.chooseAlgorithm(13);
    fractal.setTurbo(true);
    fractal.PatchStore(*h.engine);
    auto back = readBack(h, "Fractal", body(h, fractal));
    const auto& f = static_cast<const Fractal&>(*back);
    EXPECT_EQ(f.algorithm(), FractalAlgorithm::Dither);
    EXPECT_TRUE(f.turbo());
}
