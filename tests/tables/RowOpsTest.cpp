#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "tables/RowOps.h"

using namespace quillmer;

namespace {

Row rowOf(std::initializer_list<int> first, int rest = 0) {
    Row row;
    row.fill(static_cast<uint8_t>(rest));
    size_t i = 0;
    for (int v : first) row[i++] = static_cast<uint8_t>(v);
    return row;
}

std::vector<int> slice(const Row& row, int first, int last) { return {row.begin() + first, row.begin() + last + 1}; }

FillKnobs knobs(int start, int end, int low = 0, int high = 127, int scale = 127) { return {start, end, low, high, scale}; }

using V = std::vector<int>;

}  // namespace

TEST(RowOps, RangesOutsideStartToEndAreNeverTouched) {
    // Every range operation on 2..4 of a row of 9s leaves 0..1 and 5.. alone, whatever it does.
    RandomSource random;
    const FillKnobs k = knobs(2, 4, 3, 20, 127);
    using Op = void (*)(Row&, const FillKnobs&, RandomSource&);
    const std::vector<Op> ops = {
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::subtractLow(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::addLow(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::erase(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource& g) { rowops::randomFill(r, f, g); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::count(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource& g) { rowops::randomWalk(r, f, g); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::invert(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource& g) { rowops::scatter(r, f, g); },
        [](Row& r, const FillKnobs& f, RandomSource& g) { rowops::quantize(r, f, ScaleChoice::Jitter, g); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::normalise(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::trim(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource&) { rowops::smooth(r, f); },
        [](Row& r, const FillKnobs& f, RandomSource& g) { rowops::makeScale(r, f, ScaleChoice::Major, g); },
    };
    for (size_t i = 0; i < ops.size(); ++i) {
        Row row = rowOf({9, 9, 5, 40, 90, 9, 9}, 9);
        ops[i](row, k, random);
        EXPECT_EQ(slice(row, 0, 1), (V{9, 9})) << "operation " << i;
        EXPECT_TRUE(std::all_of(row.begin() + 5, row.end(), [](uint8_t v) { return v == 9; })) << "operation " << i;
    }
}

TEST(RowOps, StartAfterEndAndOneStageRanges) {
    RandomSource random;
    const Row before = rowOf({10, 20, 30, 40, 50});
    for (const FillKnobs& k : {knobs(3, 1, 5, 9), knobs(200, 300, 5, 9)}) {
        Row row = before;
        rowops::erase(row, k);
        rowops::fillFromStart(row, k);
        rowops::randomFill(row, k, random);
        rowops::count(row, k);
        rowops::sortAscending(row, k);
        rowops::reverse(row, k);
        rowops::scatter(row, k, random);
        rowops::normalise(row, k);
        rowops::trim(row, k);
        rowops::harmonicSort(row, k, std::vector<uint8_t>{0, 7});
        rowops::makeScale(row, k, ScaleChoice::Major, random);
        EXPECT_EQ(row, before) << "start " << k.start << " end " << k.end;
    }
    // One stage: count stores the start value, a walk has nowhere to go, scatter is a no-op.
    Row row = before;
    rowops::count(row, knobs(2, 2, 5));
    rowops::randomWalk(row, knobs(2, 2, 5), random);
    rowops::scatter(row, knobs(2, 2), random);
    EXPECT_EQ(row, before);
    rowops::erase(row, knobs(2, 2));
    EXPECT_EQ(slice(row, 1, 3), (V{20, 0, 40}));
}

TEST(RowOps, SubtractAndAddStopAtTheFloorAndTheScale) {
    Row row = rowOf({0, 3, 127, 60});
    rowops::subtractLow(row, knobs(0, 3, 5));
    EXPECT_EQ(slice(row, 0, 3), (V{0, 0, 122, 55}));
    rowops::addLow(row, knobs(0, 3, 10, 127, 60));
    EXPECT_EQ(slice(row, 0, 3), (V{10, 10, 60, 60})) << "the ceiling is the caller's scale";
    row = rowOf({120, 127});
    rowops::addLow(row, knobs(0, 1, 127));
    EXPECT_EQ(slice(row, 0, 1), (V{127, 127}));
}

TEST(RowOps, CountBouncesBetweenZeroAndTheScale) {
    Row row = rowOf({4});
    rowops::count(row, knobs(0, 9, 3, 127, 10));
    EXPECT_EQ(slice(row, 0, 9), (V{4, 7, 10, 7, 4, 1, 4, 7, 10, 7}));
    row = rowOf({126});
    rowops::count(row, knobs(0, 3, 0));
    EXPECT_EQ(slice(row, 0, 3), (V{126, 127, 126, 125})) << "Low 0 counts by one and turns at 127";
}

TEST(RowOps, RandomFillStaysBetweenLowAndHighEvenReversed) {
    RandomSource random;
    for (const FillKnobs& k : {knobs(0, 127, 20, 30), knobs(0, 127, 30, 20)}) {
        Row row{};
        rowops::randomFill(row, k, random);
        const auto [lo, hi] = std::minmax_element(row.begin(), row.end());
        EXPECT_EQ(*lo, 20);
        EXPECT_EQ(*hi, 30);
    }
    Row row{};
    rowops::randomFill(row, knobs(0, 127, 127, 127), random);
    EXPECT_TRUE(std::all_of(row.begin(), row.end(), [](uint8_t v) { return v == 127; }));
}

TEST(RowOps, RandomWalkMovesAtMostAStepAndStaysUnderTheScale) {
    RandomSource random;
    Row row = rowOf({0});
    rowops::randomWalk(row, knobs(0, 127, 6, 127, 40), random);
    for (int i = 1; i < 128; ++i) {
        EXPECT_LE(std::abs(row[static_cast<size_t>(i)] - row[static_cast<size_t>(i - 1)]), 6) << i;
        EXPECT_LE(row[static_cast<size_t>(i)], 40) << i;
    }
    // From the ceiling a walk can only go down; from 0 only up.
    row = rowOf({40});
    rowops::randomWalk(row, knobs(0, 1, 6, 127, 40), random);
    EXPECT_LE(row[1], 40);
    EXPECT_GE(row[1], 34);
}

TEST(RowOps, DuplicatesAndZapCloseTheGapsOverTheWholeRow) {
    Row row = rowOf({5, 7, 5, 0, 7, 9}, 9);
    rowops::removeDuplicates(row);
    EXPECT_EQ(slice(row, 0, 5), (V{5, 7, 0, 9, 0, 0}));
    EXPECT_TRUE(std::all_of(row.begin() + 4, row.end(), [](uint8_t v) { return v == 0; }));

    row = rowOf({3, 8, 3, 3, 127, 3}, 3);
    rowops::zap(row, knobs(100, 0, 3));  // the range does not matter
    EXPECT_EQ(slice(row, 0, 3), (V{8, 127, 0, 0}));
    EXPECT_TRUE(std::all_of(row.begin() + 2, row.end(), [](uint8_t v) { return v == 0; }));
}

TEST(RowOps, InvertAgainstTheScaleClipsValuesAboveIt) {
    Row row = rowOf({0, 10, 36, 100});
    rowops::invert(row, knobs(0, 3, 0, 127, 36));
    EXPECT_EQ(slice(row, 0, 3), (V{36, 26, 0, 0}));
    row = rowOf({0, 127});
    rowops::invert(row, knobs(0, 1));
    EXPECT_EQ(slice(row, 0, 1), (V{127, 0}));
}

TEST(RowOps, SortReverseAndScatterKeepTheValues) {
    RandomSource random;
    Row row = rowOf({9, 50, 3, 3, 127, 0, 8});
    rowops::sortAscending(row, knobs(1, 5));
    EXPECT_EQ(slice(row, 0, 6), (V{9, 0, 3, 3, 50, 127, 8}));
    rowops::reverse(row, knobs(0, 6));
    EXPECT_EQ(slice(row, 0, 6), (V{8, 127, 50, 3, 3, 0, 9}));

    Row ramp;
    std::iota(ramp.begin(), ramp.end(), uint8_t{0});
    Row scattered = ramp;
    rowops::scatter(scattered, knobs(10, 100), random);
    EXPECT_NE(scattered, ramp);
    Row sorted = scattered;
    std::sort(sorted.begin() + 10, sorted.begin() + 101);
    EXPECT_EQ(sorted, ramp) << "a permutation of the range: nothing lost, nothing doubled";
}

TEST(RowOps, QuantizeFollowsEachScaleTableAndKeepsTheOctave) {
    RandomSource random;
    auto q = [&](int v, ScaleChoice c) { return rowops::quantizeValue(v, c, random); };
    EXPECT_EQ(q(61, ScaleChoice::Major), 60);
    EXPECT_EQ(q(63, ScaleChoice::Major), 64);
    EXPECT_EQ(q(68, ScaleChoice::Major), 67);
    EXPECT_EQ(q(68, ScaleChoice::WholeTone), 69) << "differs from Major at pitch class 8 only";
    EXPECT_EQ(q(64, ScaleChoice::Minor), 63);
    EXPECT_EQ(q(60, ScaleChoice::Pentatonic), 61) << "the black keys";
    EXPECT_EQ(q(71, ScaleChoice::Pentatonic), 70);
    EXPECT_EQ(q(65, ScaleChoice::OctaveFifths), 67);
    EXPECT_EQ(q(70, ScaleChoice::OctaveFifths), 60);
    EXPECT_EQ(q(65, ScaleChoice::MinorTriad), 63);
    EXPECT_EQ(q(65, ScaleChoice::MajorTriad), 64);
    EXPECT_EQ(q(127, ScaleChoice::Pentatonic), 128) << "past the top of the range";
    for (int i = 0; i < 200; ++i) {
        const int j = q(1, ScaleChoice::Jitter);
        EXPECT_TRUE(j >= 0 && j <= 3);
        const int top = q(127, ScaleChoice::Jitter);
        EXPECT_TRUE(top >= 125 && top <= 127);
    }
    Row row = rowOf({127, 0, 13});
    rowops::quantize(row, knobs(0, 2), ScaleChoice::Pentatonic, random);
    EXPECT_EQ(slice(row, 0, 2), (V{127, 1, 13}));
}

TEST(RowOps, NormaliseScalesToLowHighAndLeavesZerosOrAnEmptySpan) {
    Row row = rowOf({0, 25, 50});
    rowops::normalise(row, knobs(0, 2, 10, 110));
    EXPECT_EQ(slice(row, 0, 2), (V{10, 60, 110}));
    row = rowOf({0, 0, 0});
    rowops::normalise(row, knobs(0, 2, 10, 110));
    EXPECT_EQ(slice(row, 0, 2), (V{0, 0, 0}));
    row = rowOf({5, 7});
    rowops::normalise(row, knobs(0, 1, 40, 40));
    EXPECT_EQ(slice(row, 0, 1), (V{5, 7}));
    // The scaled value is clipped to the scale before Low is added: Low 100 + 127 stays 127.
    row = rowOf({1, 2});
    rowops::normalise(row, knobs(0, 1, 100, 127, 127));
    EXPECT_EQ(slice(row, 0, 1), (V{114, 127}));
    // Low above High: the span is negative and every value falls to Low.
    row = rowOf({10, 20});
    rowops::normalise(row, knobs(0, 1, 50, 20));
    EXPECT_EQ(slice(row, 0, 1), (V{50, 50}));
}

TEST(RowOps, ExchangeTrimPasteAndFill) {
    Row row = rowOf({4, 9, 4, 4});
    rowops::exchange(row, knobs(1, 2, 4, 100));
    EXPECT_EQ(slice(row, 0, 3), (V{4, 9, 100, 4}));

    row = rowOf({1, 50, 2, 80, 3, 99});
    rowops::trim(row, knobs(1, 4, 50));
    EXPECT_EQ(slice(row, 0, 5), (V{1, 2, 3, 0, 0, 99}));

    const Row clip = rowOf({70, 71, 72});
    row = rowOf({1, 2, 3, 4});
    rowops::paste(row, clip, knobs(1, 2));
    EXPECT_EQ(slice(row, 0, 3), (V{1, 70, 71, 4})) << "from clipboard 0, not clipboard Start";

    row = rowOf({1, 2, 3, 4});
    rowops::fillFromStart(row, knobs(1, 3));
    EXPECT_EQ(slice(row, 0, 3), (V{1, 2, 2, 2}));
}

TEST(RowOps, SmoothWrapsRoundTheRow) {
    Row row{};
    row[0] = 127;
    rowops::smooth(row, knobs(0, 127));
    EXPECT_EQ(row[0], 127 * 256 / 426);
    EXPECT_EQ(row[1], 127 * 64 / 426);
    EXPECT_EQ(row[127], 127 * 64 / 426) << "the filter reaches round the end";
    EXPECT_EQ(row[124], 127 * 1 / 426);
    EXPECT_EQ(row[64], 0);
    Row flat;
    flat.fill(90);
    rowops::smooth(flat, knobs(0, 127));
    EXPECT_EQ(flat[5], 90);
}

TEST(RowOps, PatternAddRepeatsTheFirstGroupWithARisingIncrement) {
    Row row = rowOf({1, 2, 3});
    rowops::patternAdd(row, knobs(0, 2, 10));
    EXPECT_EQ(slice(row, 0, 11), (V{1, 2, 3, 11, 12, 13, 21, 22, 23, 31, 32, 33}));
    EXPECT_EQ(row[127], 127) << "clipped, and it stops at the end of the row";
    // Low equal to the scale: the increment is the group length.
    row = rowOf({0, 1});
    rowops::patternAdd(row, knobs(0, 1, 127, 127, 127));
    EXPECT_EQ(slice(row, 0, 5), (V{0, 1, 2, 3, 4, 5}));
    row = rowOf({5, 6});
    rowops::patternAdd(row, knobs(0, 0, 10));
    EXPECT_EQ(slice(row, 0, 1), (V{5, 6})) << "End 0 does nothing";
}

TEST(RowOps, MakeRunsUpAndBackThroughTheScaleSkippingRepeats) {
    RandomSource random;
    Row row{};
    rowops::makeScale(row, knobs(0, 11, 60, 65), ScaleChoice::Major, random);
    // 60 61 62 63 64 65 64 63 ... quantised: 60 60 62 64 64 65 64 64 62 60 60 ...
    EXPECT_EQ(slice(row, 0, 11), (V{60, 62, 64, 65, 64, 62, 60, 62, 64, 65, 64, 62}));
    // A value that cannot change gives one result and stops.
    row = rowOf({}, 9);
    rowops::makeScale(row, knobs(0, 5, 61, 61), ScaleChoice::Major, random);
    EXPECT_EQ(slice(row, 0, 2), (V{60, 9, 9}));
    row = rowOf({}, 9);
    rowops::makeScale(row, knobs(0, 5, 0, 2), ScaleChoice::OctaveFifths, random);
    EXPECT_EQ(slice(row, 0, 1), (V{0, 9}));
    // A result past 127 stops the run.
    row = rowOf({}, 9);
    rowops::makeScale(row, knobs(0, 5, 125, 127), ScaleChoice::Pentatonic, random);
    EXPECT_EQ(slice(row, 0, 2), (V{126, 9, 9}));
}

TEST(RowOps, HarmonicSortTakesPitchClassesInKeyOrderThenTheRest) {
    const std::vector<uint8_t> key = {0, 7, 5, 4, 255, 3};
    Row row = rowOf({99, 62, 60, 67, 64, 72, 65, 63, 55, 99});
    rowops::harmonicSort(row, knobs(1, 8), key);
    // 0s: 60 72; 7s: 67 55; 5s: 65; 4s: 64; the key ends at 255; then 62 63 in old order.
    EXPECT_EQ(slice(row, 0, 9), (V{99, 60, 72, 67, 55, 65, 64, 62, 63, 99}));

    row = rowOf({7, 0});
    rowops::harmonicSort(row, knobs(0, 1), key);
    EXPECT_EQ(slice(row, 0, 1), (V{7, 0})) << "a range of two values is left alone";
    row = rowOf({7, 0, 5});
    rowops::harmonicSort(row, knobs(0, 2), key);
    EXPECT_EQ(slice(row, 0, 2), (V{0, 7, 5}));
    // A key that repeats a pitch class places each value once.
    row = rowOf({12, 0, 1});
    rowops::harmonicSort(row, knobs(0, 2), std::vector<uint8_t>{0, 0, 1});
    EXPECT_EQ(slice(row, 0, 2), (V{12, 0, 1}));
}

TEST(RowOps, RotateWrapsAndZerosTakeAnotherRow) {
    Row copy;
    std::iota(copy.begin(), copy.end(), uint8_t{0});
    Row row{};
    rowops::rotate(row, copy, 3);
    EXPECT_EQ(row[3], 0);
    EXPECT_EQ(row[0], 125);
    rowops::rotate(row, copy, 0);
    EXPECT_EQ(row, copy);

    row = rowOf({0, 5, 0});
    rowops::mergeZeros(row, rowOf({1, 2, 3}));
    EXPECT_EQ(slice(row, 0, 2), (V{1, 5, 3}));
    Row earlier = rowOf({0, 4, 0, 4});
    row = rowOf({7, 7, 7, 7});
    rowops::restoreZeros(row, earlier, knobs(1, 3));
    EXPECT_EQ(slice(row, 0, 3), (V{7, 7, 0, 7}));
}
