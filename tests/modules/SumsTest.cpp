// Sums, products, quotients and scaling: the edge cases of each row, the overflow light,
// and the change check in front of every computation.

#include <gtest/gtest.h>

#include <random>

#include "ModuleHarness.h"
#include "modules/processors/Scaling.h"
#include "modules/processors/Sums.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(Sums, AddLimitsAndKeepsTheLightUntilTheSumFallsBelow128) {
    ModuleHarness h;
    auto& add = static_cast<Add&>(h.add("Add"));
    EXPECT_EQ(run(h, add, {100, 100, 100}), 127);
    EXPECT_TRUE(add.over());
    EXPECT_EQ(run(h, add, {100, 28, 0}), 127) << "128 is still over";
    EXPECT_TRUE(add.over());
    EXPECT_EQ(run(h, add, {100, 27, 0}), 127) << "127 is exact";
    EXPECT_FALSE(add.over());
    EXPECT_EQ(run(h, add, {1, 2, 3}), 6);

    auto& add2 = static_cast<Add2&>(h.add("Add2"));
    EXPECT_EQ(run(h, add2, {127, 1}), 127);
    EXPECT_TRUE(add2.over());
    EXPECT_EQ(run(h, add2, {60, 67}), 127);
    EXPECT_FALSE(add2.over());
}

TEST(Sums, ProductsAndQuotients) {
    ModuleHarness h;
    auto& mult = static_cast<Mult&>(h.add("Mult"));
    EXPECT_EQ(run(h, mult, {11, 11}), 121);
    EXPECT_FALSE(mult.over());
    EXPECT_EQ(run(h, mult, {64, 2}), 127);
    EXPECT_TRUE(mult.over());

    auto& muladd = static_cast<MulAdd&>(h.add("MulAdd"));
    EXPECT_EQ(run(h, muladd, {10, 12, 7}), 127);
    EXPECT_FALSE(muladd.over());
    EXPECT_EQ(run(h, muladd, {10, 12, 8}), 127);
    EXPECT_TRUE(muladd.over());

    auto& muldiv = static_cast<MulDiv&>(h.add("MulDiv"));
    EXPECT_EQ(run(h, muldiv, {10, 10, 0}), 100) << "a divisor of 0 counts as 1";
    EXPECT_EQ(run(h, muldiv, {5, 5, 10}), 2) << "2.5 rounds to the even 2";
    EXPECT_EQ(run(h, muldiv, {7, 5, 10}), 4) << "3.5 rounds to the even 4";
    EXPECT_EQ(run(h, muldiv, {10, 10, 3}), 33);
    EXPECT_EQ(run(h, muldiv, {127, 127, 100}), 127);
    EXPECT_TRUE(muldiv.over());

    Module& percent = h.add("Percent");
    EXPECT_EQ(run(h, percent, {99, 50}), 49) << "truncated";
    EXPECT_EQ(run(h, percent, {127, 127}), 127) << "161 limited";
}

TEST(Sums, AddDivNegatesAndTruncates) {
    ModuleHarness h;
    auto& ad = static_cast<AddDiv&>(h.add("AddDiv"));
    EXPECT_EQ(run(h, ad, {10, 20, 30, 0}), 60) << "D of 0 counts as 1";
    EXPECT_EQ(run(h, ad, {10, 20, 30, 7}), 8);
    ad.setWordSetting(AddDivOp::kNegate, 1);
    EXPECT_EQ(run(h, ad, {10, 20, 30, 7}), 0) << "the switch is read at the next update, inputs unchanged";
    EXPECT_FALSE(ad.over());
    EXPECT_EQ(run(h, ad, {100, 20, 5, 7}), 16);
    EXPECT_EQ(run(h, ad, {0, 0, 100, 1}), 0) << "below 0 is 0";
    EXPECT_TRUE(ad.over());
    ad.setWordSetting(AddDivOp::kNegate, 0);
    EXPECT_EQ(run(h, ad, {127, 127, 127, 2}), 127);
    EXPECT_TRUE(ad.over());
}

TEST(Sums, ZeroDivisorHoldsTheLastValue) {
    ModuleHarness h;
    Module& modu = h.add("Modu");
    EXPECT_EQ(run(h, modu, {17, 5}), 2);
    EXPECT_EQ(run(h, modu, {99, 0}), 2) << "held";
    EXPECT_EQ(run(h, modu, {100, 0}), 2);
    EXPECT_EQ(run(h, modu, {100, 7}), 2);
    EXPECT_EQ(run(h, modu, {101, 7}), 3);
    Module& fresh = h.add("Modu");
    EXPECT_EQ(run(h, fresh, {50, 0}), 0) << "nothing computed yet";
}

TEST(Sums, MinusBorrowsAndCarryFollowsItsChosenMinus) {
    ModuleHarness h;
    auto& first = static_cast<Minus&>(h.add("Minus"));
    auto& second = static_cast<Minus&>(h.add("Minus"));
    auto& carry = static_cast<Carry&>(h.add("Carry"));
    EXPECT_EQ(carry.masterIndex(), -1);
    EXPECT_EQ(run(h, first, {10, 30}), 0);
    EXPECT_EQ(first.borrow(), 20);
    EXPECT_TRUE(first.over());
    EXPECT_EQ(h.out(carry), 0) << "no master chosen";

    const std::vector<MasterChoice> list = carry.masterChoices();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].name, first.Name);
    EXPECT_EQ(list[1].index, second.Index);
    carry.chooseMaster(first.Index);
    h.ticks(1);
    EXPECT_EQ(h.out(carry), 20);

    EXPECT_EQ(run(h, first, {30, 10}), 20);
    EXPECT_EQ(first.borrow(), 0) << "no borrow: the entry is 0";
    EXPECT_FALSE(first.over());
    h.ticks(1);
    EXPECT_EQ(h.out(carry), 0);
    EXPECT_EQ(run(h, first, {0, 127}), 0);
    h.ticks(1);
    EXPECT_EQ(h.out(carry), 127);

    carry.chooseMaster(second.Index);
    h.set(second, 0, 5);
    h.set(second, 1, 9);
    h.ticks(2);
    EXPECT_EQ(h.out(carry), 4);
    h.engine->Delete(second);
    h.ticks(1);
    EXPECT_EQ(h.out(carry), 0) << "a deleted master reads 0";
    EXPECT_EQ(carry.masterChoices().size(), 1u);
}

TEST(Scaling, BoundsLowerFirstThenUpperWins) {
    ModuleHarness h;
    Module& b = h.add("Bounds");
    EXPECT_EQ(run(h, b, {50, 10, 100}), 50);
    EXPECT_EQ(run(h, b, {5, 10, 100}), 10);
    EXPECT_EQ(run(h, b, {120, 10, 100}), 100);
    EXPECT_EQ(run(h, b, {50, 90, 20}), 20) << "crossed limits: Upper wins";
    EXPECT_EQ(run(h, b, {5, 90, 20}), 20);
}

TEST(Scaling, ScalerLevelOctaveAndMixerRounding) {
    ModuleHarness h;
    Module& scaler = h.add("Scaler");
    EXPECT_EQ(run(h, scaler, {100, 50, 3}), 53);
    EXPECT_EQ(run(h, scaler, {5, 50, 0}), 2) << "2.5 to the even 2";
    EXPECT_EQ(run(h, scaler, {127, 127, 127}), 127);

    auto& level = static_cast<Level&>(h.add("Level"));
    EXPECT_EQ(run(h, level, {77}), 77) << "a new Level passes its input";
    level.setWordSetting(LevelOp::kLevel, 50);
    EXPECT_EQ(run(h, level, {77}), 39) << "38.5 + 0.5 truncated";
    level.setWordSetting(LevelOp::kOffset, -50);
    EXPECT_EQ(run(h, level, {77}), 0) << "kept at 0";
    level.setWordSetting(LevelOp::kLevel, 200);
    level.setWordSetting(LevelOp::kOffset, 10);
    EXPECT_EQ(run(h, level, {77}), 127);

    Module& octave = h.add("Octave");
    EXPECT_EQ(run(h, octave, {61, 0, 0}), 1) << "one octave: the note alone";
    EXPECT_EQ(run(h, octave, {61, 1, 0}), 13) << "(5 mod 2) octaves";
    EXPECT_EQ(run(h, octave, {127, 40, 0}), 7) << "range kept to 10 octaves: (10 mod 10) octaves";
    EXPECT_EQ(run(h, octave, {127, 8, 0}), 19);
    EXPECT_EQ(run(h, octave, {127, 40, 121}), 127);

    auto& mixer = static_cast<Mixer&>(h.add("Mixer"));
    EXPECT_EQ(run(h, mixer, {10, 20, 30, 40}), 100);
    mixer.setByteSetting(0, 50);
    mixer.setByteSetting(MixerOp::kMix, 50);
    EXPECT_EQ(run(h, mixer, {10, 20, 30, 40}), 48) << "(5 + 20 + 30 + 40) / 2 = 47.5 to even";
    EXPECT_EQ(run(h, mixer, {127, 127, 127, 127}), 127);

    Module& unity = h.add("Unity");
    EXPECT_EQ(run(h, unity, {93}), 93);
}

// The change check must never show in the output: over many ticks of random inputs and
// setting changes, every pure type gives what its computation gives.
TEST(Sums, SkippedUpdatesNeverChangeTheResult) {
    ModuleHarness h;
    auto& add = static_cast<Add&>(h.add("Add"));
    auto& level = static_cast<Level&>(h.add("Level"));
    auto& mixer = static_cast<Mixer&>(h.add("Mixer"));
    auto& addDiv = static_cast<AddDiv&>(h.add("AddDiv"));
    std::mt19937 random(7);
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    std::array<int, 4> v{};
    for (int tick = 0; tick < 600; ++tick) {
        // Mostly steady inputs, so that most updates are skipped.
        if (pick(4) == 0) {
            v[static_cast<size_t>(pick(4))] = pick(3) == 0 ? pick(128) : pick(3);
            for (Module* m : std::initializer_list<Module*>{&add, &level, &mixer, &addDiv})
                for (int k = 0; k < m->inputCount(); ++k) h.set(*m, k, v[static_cast<size_t>(k)]);
        }
        if (pick(10) == 0) level.setWordSetting(LevelOp::kLevel, pick(201));
        if (pick(10) == 0) mixer.setByteSetting(pick(5), pick(101));
        if (pick(10) == 0) addDiv.setWordSetting(AddDivOp::kNegate, pick(2));
        h.ticks(1);
        const std::array<int, 3> three{v[0], v[1], v[2]};
        const std::array<int, 1> one{v[0]};
        ASSERT_EQ(h.out(add), AddOp::compute(three, {}).value) << tick;
        ASSERT_EQ(add.over(), AddOp::compute(three, {}).over) << tick;
        ASSERT_EQ(h.out(level), LevelOp::compute(one, level.settingBytes()).value) << tick;
        ASSERT_EQ(h.out(mixer), MixerOp::compute(v, mixer.settingBytes()).value) << tick;
        ASSERT_EQ(h.out(addDiv), AddDivOp::compute(v, addDiv.settingBytes()).value) << tick;
    }
}
