// The random and probability modules: ranges and caps, edges fired once, runs that repeat
// from a seed, Prob's weights over many draws (a fixed seed, so the counts can't flake),
// the digit-sum walk, FunGen's table ends and Corupt's chance at 0 and 100.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "ModuleHarness.h"
#include "modules/generators/Randoms.h"
#include "tables/GeneralTables.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
std::vector<int> draws(ModuleHarness& h, Module& m, int n) {
    std::vector<int> out;
    for (int i = 0; i < n; ++i) {
        h.edge(m, 0);
        out.push_back(h.out(m));
    }
    return out;
}
}  // namespace

TEST(Rand, SwappedBoundsDrawFromBothEndsAndASeedRepeatsTheRun) {
    ModuleHarness h;
    Module& rand = h.add("Rand");
    h.set(rand, 1, 10);
    h.set(rand, 2, 3);
    h.engine->seedRandom(77);
    const std::vector<int> first = draws(h, rand, 400);
    EXPECT_EQ(*std::min_element(first.begin(), first.end()), 3);
    EXPECT_EQ(*std::max_element(first.begin(), first.end()), 10);
    h.engine->seedRandom(77);
    EXPECT_EQ(draws(h, rand, 400), first);
    h.engine->seedRandom(78);
    EXPECT_NE(draws(h, rand, 400), first);
}

TEST(Rand, FiresOncePerRisingEdgeAndIsRaisedDuringAResync) {
    ModuleHarness h;
    Module& rand = h.add("Rand");
    h.set(rand, 1, 0);
    h.set(rand, 2, 127);
    h.edge(rand, 0);
    const int v = h.out(rand);
    h.ticks(20);
    EXPECT_EQ(h.out(rand), v) << "a held clock draws nothing more";
    h.set(rand, 0, 0);
    h.set(rand, 1, 120);
    h.set(rand, 2, 125);
    h.ticks(1);
    if (v < 120) {
        h.engine->ResyncPending = true;
        h.engine->TickModules();
        h.engine->ResyncPending = false;
        EXPECT_EQ(h.out(rand), 120) << "raised to the lower bound";
    }
}

TEST(Rand3, StaysWithinScaleAndCapsTheOffset) {
    ModuleHarness h;
    auto& r3 = static_cast<Rand3&>(h.add("Rand3"));
    h.set(r3, 1, 20);
    h.set(r3, 2, 110);
    for (bool whole : {false, true}) {
        r3.setWhole(whole);
        const std::vector<int> v = draws(h, r3, 300);
        EXPECT_EQ(*std::min_element(v.begin(), v.end()), 110);
        EXPECT_EQ(*std::max_element(v.begin(), v.end()), 127) << "110 + 20 is capped";
    }
}

TEST(RanPat, PatternsRepeatClipAndRunBackwardPastTheStart) {
    ModuleHarness h;
    auto& pat = static_cast<RanPat&>(h.add("RanPat"));
    h.set(pat, 1, 5);
    h.set(pat, 4, 127);
    h.set(pat, 3, 1);
    h.ticks(2);
    EXPECT_EQ(pat.position(), 5 * 128 + 1) << "reset holds at the start and fires every tick";
    h.set(pat, 3, 0);
    h.ticks(1);
    const std::vector<int> a = draws(h, pat, 20);
    const GeneratorTables& t = generatorTables();
    for (int i = 0; i < 20; ++i) EXPECT_EQ(a[static_cast<size_t>(i)], static_cast<int>(std::nearbyint(127.0 * t.ranFun[static_cast<size_t>(5 * 128 + 1 + i)])));
    h.set(pat, 5, 100);
    for (int v : draws(h, pat, 200)) ASSERT_LE(v, 127);
    EXPECT_TRUE(std::ranges::count(draws(h, pat, 200), 127) > 0) << "Offset 100 clips at 127";

    h.set(pat, 1, 0);
    h.set(pat, 2, 1);
    h.set(pat, 3, 1);
    h.ticks(1);
    EXPECT_EQ(pat.position(), 16383) << "reverse from 0 wraps to the last entry";
}

TEST(URand, DealsPermutationsAndTheCappedTopRepeats) {
    ModuleHarness h;
    auto& ur = static_cast<URand&>(h.add("URand"));
    auto& tap = static_cast<URanOut&>(h.add("URanOut"));
    tap.chooseMaster(ur.Index);
    tap.chooseChannel(4);
    h.set(ur, 1, 127);
    h.set(ur, 2, 1);
    h.edge(ur, 0);
    std::map<int, int> counts;
    for (int r = 0; r < 128; ++r) ++counts[ur.row(r)];
    EXPECT_EQ(counts.size(), 127u);
    EXPECT_EQ(counts[127], 2) << "126 + 1 and 127 + 1 both give 127";
    EXPECT_EQ(counts.count(0), 0u);
    EXPECT_EQ(h.out(ur), ur.row(0));
    h.ticks(1);
    EXPECT_EQ(h.out(tap), ur.row(5)) << "channel 0 is the second row";

    h.set(ur, 1, 7);
    h.set(ur, 2, 0);
    for (int i = 0; i < 20; ++i) {
        h.edge(ur, 0);
        std::set<int> deal;
        for (int r = 0; r < 8; ++r) deal.insert(ur.row(r));
        ASSERT_EQ(deal, (std::set<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    }
    h.set(ur, 1, 0);
    h.set(ur, 2, 9);
    for (int v : draws(h, ur, 40)) ASSERT_TRUE(v == 0 || v == 9);
}

TEST(Prob, DrawsFollowTheTableWeights) {
    ModuleHarness h;
    TableBank bank;
    h.engine->setGeneralTables(bank.data());
    Module& prob = h.add("Prob");
    h.set(prob, 1, 3);
    for (int v : draws(h, prob, 30)) ASSERT_EQ(v, 0) << "an all-zero row gives 0";

    bank.row(3)[77] = 5;
    for (int v : draws(h, prob, 30)) ASSERT_EQ(v, 77) << "a single weight always wins";

    bank.row(3)[77] = 0;
    bank.row(3)[10] = 1;
    bank.row(3)[20] = 3;
    bank.row(3)[127] = 4;
    h.engine->seedRandom(5);
    std::map<int, int> counts;
    for (int v : draws(h, prob, 4000)) ++counts[v];
    EXPECT_EQ(counts.size(), 3u);
    EXPECT_NEAR(counts[10], 500, 80);
    EXPECT_NEAR(counts[20], 1500, 120);
    EXPECT_NEAR(counts[127], 2000, 120);

    std::array<int, 128> w{};
    w[2] = 2;
    w[5] = 1;
    EXPECT_EQ(Prob::pick(w, 0), 2);
    EXPECT_EQ(Prob::pick(w, 1), 2);
    EXPECT_EQ(Prob::pick(w, 2), 5);
    EXPECT_EQ(Prob::pick(w, 3), 0) << "past the total: 0";
}

TEST(NumGen, DigitSumsInABaseWalkForwardAndBack) {
    ModuleHarness h;
    auto& gen = static_cast<NumGen&>(h.add("NumGen"));
    EXPECT_EQ(draws(h, gen, 8), (std::vector<int>{0, 1, 1, 2, 1, 2, 2, 3})) << "base 2, step 1: bit counts";
    h.set(gen, 1, 8);  // base 10
    h.set(gen, 4, 99);
    h.set(gen, 5, 1);
    h.set(gen, 0, 127);
    h.ticks(2);
    EXPECT_EQ(gen.position(), 100) << "reset while clocked reloads the seed and fires";
    h.set(gen, 5, 0);
    h.set(gen, 3, 1);
    h.set(gen, 2, 1);  // step 2
    EXPECT_EQ(draws(h, gen, 3), (std::vector<int>{1, 17, 15})) << "100, 98, 96 in base 10";
    gen.setLarge(true);
    h.set(gen, 4, 127);
    h.set(gen, 5, 1);
    h.ticks(1);
    EXPECT_EQ(gen.position(), 127 * 8192 - 2) << "the seed times 8192, then one step down";
    h.set(gen, 4, 0);
    h.ticks(1);
    EXPECT_EQ(gen.position(), NumGen::kMask - 1) << "reverse past 0 wraps to the top";
    EXPECT_EQ(NumGen::digitSum(0, 2), 0);
    EXPECT_EQ(NumGen::digitSum(1048575, 2), 20);
    EXPECT_EQ(NumGen::digitSum(255, 16), 30);
}

TEST(FunGen, LfoShapesReadTheirTablesToTheEnd) {
    ModuleHarness h;
    auto& fun = static_cast<FunGen&>(h.add("FunGen"));
    h.set(fun, 2, 127);
    h.set(fun, 1, 32);
    h.set(fun, 0, 32);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), 3) << "Sine at Step = Length reads the last entry";
    h.set(fun, 0, 16);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), 127) << "halfway is the top of the half wave";
    fun.chooseFunction(1);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), generatorTables().triangle[64]);
    fun.chooseFunction(3);
    h.set(fun, 0, 8);
    h.set(fun, 2, 64);
    h.set(fun, 3, 100);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), 127) << "RampDn 95 scaled to 48, plus 100, capped";
    h.set(fun, 3, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), 48);
    h.set(fun, 1, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), 0) << "Length 0 gives no cycle";
    fun.chooseFunction(4);
    h.set(fun, 1, 2);
    h.set(fun, 0, 5);
    h.set(fun, 2, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(fun), static_cast<int>(std::nearbyint(127.0 * generatorTables().ranFun[2 * 128 + 5])));
}

TEST(Corupt, ChanceZeroNeverHundredAlwaysAndAHeldClockHolds) {
    ModuleHarness h;
    auto& c = static_cast<Corupt&>(h.add("Corupt"));
    h.set(c, 1, 60);
    h.set(c, 3, 5);
    for (int v : draws(h, c, 50)) ASSERT_EQ(v, 60);
    h.set(c, 2, 100);
    for (int v : draws(h, c, 50)) ASSERT_EQ(v, 65);
    c.setSubstitute(true);
    for (int v : draws(h, c, 50)) ASSERT_EQ(v, 5);
    h.set(c, 2, 50);
    c.setSubstitute(false);
    h.set(c, 3, 100);
    std::map<int, int> counts;
    for (int v : draws(h, c, 1000)) ++counts[v];
    EXPECT_NEAR(counts[127], 500, 80) << "half capped at 127";
    const int held = h.out(c);
    h.set(c, 1, 3);
    h.ticks(10);
    EXPECT_EQ(h.out(c), held) << "between clocks the output doesn't follow Value";
}
