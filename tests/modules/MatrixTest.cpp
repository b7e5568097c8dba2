// The matrices: Life and the one-dimensional automaton against generations worked by hand,
// the kick, pages, outside writes, satellites and records of every size.

#include <algorithm>
#include <set>
#include <utility>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "expression/EngineFormulaStores.h"
#include "modules/sequencers/MatrixTypes.h"

namespace quillmer::testing {
namespace {

using Cell = std::pair<int, int>;  // column, row

std::vector<uint8_t> gridWith(GridSize size, const std::set<Cell>& cells, uint8_t value) {
    std::vector<uint8_t> grid(static_cast<size_t>(size.cells()), 0);
    for (auto [c, r] : cells) grid[static_cast<size_t>(size.at(c, r))] = value;
    return grid;
}

std::set<Cell> living(GridSize size, const std::vector<uint8_t>& grid) {
    std::set<Cell> alive;
    for (int c = 0; c < size.columns; ++c)
        for (int r = 0; r < size.rows; ++r)
            if (grid[static_cast<size_t>(size.at(c, r))] >= 75) alive.insert({c, r});
    return alive;
}

struct LifeRun {
    GridSize size;
    std::vector<uint8_t> grid;
    AutomatonMemory memory;
    RandomSource random;
    LifeRules rules;
    void generations(int n) {
        for (int i = 0; i < n; ++i) lifeGeneration(grid, size, memory, rules, random);
    }
    int at(int c, int r) const { return grid[static_cast<size_t>(size.at(c, r))]; }
};

TEST(MatrixLife, BlinkerPassesThroughTheFiveLevels) {
    LifeRun run{{8, 8}, gridWith({8, 8}, {{2, 3}, {3, 3}, {4, 3}}, 96), {}, {}, {}};
    run.generations(1);
    // The ends die alone, the middle lives on, the cells above and below are born.
    EXPECT_EQ(run.at(2, 3), 32);
    EXPECT_EQ(run.at(4, 3), 32);
    EXPECT_EQ(run.at(3, 3), 96);
    EXPECT_EQ(run.at(3, 2), 127);
    EXPECT_EQ(run.at(3, 4), 127);
    EXPECT_EQ(run.at(0, 0), 0);
    EXPECT_FALSE(run.memory.stable);
    run.generations(1);
    EXPECT_EQ(run.at(2, 3), 127);  // a cell that died alone is born again
    EXPECT_EQ(run.at(3, 2), 32);
    EXPECT_EQ(run.at(3, 3), 96);
    run.generations(1);
    EXPECT_FALSE(run.memory.stable) << "three generations fill only three signatures";
    run.generations(1);
    EXPECT_TRUE(run.memory.stable) << "a two-step oscillator";
}

TEST(MatrixLife, FourRowSizesTakeTheShortStabilityTest) {
    LifeRun run{{8, 4}, gridWith({8, 4}, {{2, 1}, {3, 1}, {4, 1}}, 96), {}, {}, {}};
    run.rules.shortStability = true;
    run.generations(2);
    EXPECT_FALSE(run.memory.stable);
    run.generations(1);
    EXPECT_TRUE(run.memory.stable);
}

TEST(MatrixLife, GliderCrossesTheEdgesAndComesBackWhole) {
    const GridSize size{16, 8};
    // A glider heading right and down, placed across the bottom right corner.
    const std::set<Cell> glider = {{1, 0}, {2, 1}, {0, 2}, {1, 2}, {2, 2}};
    auto shifted = [&](int by) {
        std::set<Cell> cells;
        for (auto [c, r] : glider) cells.insert({(c + 14 + by) % 16, (r + 6 + by) % 8});
        return cells;
    };
    LifeRun run{size, gridWith(size, shifted(0), 96), {}, {}, {}};
    for (int k = 1; k <= 8; ++k) {
        run.generations(4);
        EXPECT_EQ(living(size, run.grid), shifted(k)) << "after " << 4 * k << " generations";
    }
}

TEST(MatrixLife, SixNeighboursGiveBirthOnlyInHiMode) {
    const GridSize size{4, 4};
    // (1,1) is dead with six living neighbours around it.
    const std::set<Cell> ring = {{0, 0}, {1, 0}, {2, 0}, {0, 2}, {1, 2}, {2, 2}};
    LifeRun plain{size, gridWith(size, ring, 96), {}, {}, {}};
    plain.generations(1);
    EXPECT_EQ(plain.at(1, 1), 0);
    LifeRun hi{size, gridWith(size, ring, 96), {}, {}, {}};
    hi.rules.hi = true;
    hi.generations(1);
    EXPECT_EQ(hi.at(1, 1), 127);
}

TEST(MatrixLife, RandomisedValuesStayWithinTheirStateAndHoldWhileTheStateHolds) {
    LifeRun run{{8, 8}, gridWith({8, 8}, {{1, 1}, {2, 1}, {1, 2}, {2, 2}}, 96), {}, {}, {}};
    run.rules.randomised = true;
    run.generations(1);
    const auto first = run.grid;
    for (int v : first) EXPECT_EQ(lifeStateOf(v), v >= 75 ? Alive : Dead) << v;
    run.generations(1);
    EXPECT_EQ(run.grid, first) << "a still life keeps its drawn values";
}

TEST(MatrixLife, MutationNeedsHiRandomAndKickTogether) {
    auto livingStates = [](const LifeRules& rules) {
        LifeRun run{{16, 4}, std::vector<uint8_t>(64, 0), {}, {}, rules};
        run.generations(1);
        int n = 0;
        for (int i = 0; i < 64; ++i) n += run.memory.cellStates[static_cast<size_t>(i)] != Dead;
        return n;
    };
    EXPECT_EQ(livingStates({true, true, false, true}), 0) << "a dead grid stays dead";
    // One cell in five mutates, and four of five states are not dead: about ten of 64.
    const int n = livingStates({true, true, true, true});
    EXPECT_GE(n, 3);
    EXPECT_LE(n, 24);
}

// --- the one-dimensional automaton ---

struct CaRun {
    GridSize size;
    std::vector<uint8_t> grid;
    AutomatonMemory memory;
    RandomSource random;
    void generation(uint8_t rule) { caGeneration(grid, size, memory, rule, false, false, random); }
    int at(int c, int r) const { return grid[static_cast<size_t>(size.at(c, r))]; }
};

TEST(MatrixAutomaton, Rule90WrapsOnSixteenColumnsButNotOnEight) {
    CaRun wide{{16, 8}, gridWith({16, 8}, {{0, 0}}, 127), {}, {}};
    wide.generation(90);
    std::vector<int> top;
    for (int c = 0; c < 16; ++c) top.push_back(wide.at(c, 0));
    std::vector<int> expected(16, 0);
    expected[1] = 96;   // born: bright
    expected[15] = 96;  // across the seam
    EXPECT_EQ(top, expected);
    EXPECT_EQ(wide.at(0, 1), 127) << "the old top row scrolls down";

    CaRun narrow{{8, 8}, gridWith({8, 8}, {{0, 0}}, 127), {}, {}};
    narrow.generation(90);
    std::vector<int> top8;
    for (int c = 0; c < 8; ++c) top8.push_back(narrow.at(c, 0));
    EXPECT_EQ(top8, (std::vector<int>{0, 96, 0, 0, 0, 0, 0, 0}));
}

TEST(MatrixAutomaton, LevelsTellBirthSurvivalAndDeath) {
    CaRun run{{8, 8}, gridWith({8, 8}, {{3, 0}}, 127), {}, {}};
    run.generation(0b11111110);  // alive with any live neighbourhood
    EXPECT_EQ(run.at(2, 0), 96);
    EXPECT_EQ(run.at(3, 0), 96);
    EXPECT_EQ(run.at(4, 0), 96);
    run.generation(0);  // everything dies
    EXPECT_EQ(run.at(3, 0), 32);
    EXPECT_TRUE(run.memory.stable) << "an empty row";
    run.generation(0b11111110);
    EXPECT_EQ(run.at(3, 0), 0) << "the seed is the dim row: nothing at 64 or more";
}

TEST(MatrixAutomaton, ARepeatingRowIsStable) {
    CaRun run{{16, 8}, gridWith({16, 8}, {{4, 0}}, 127), {}, {}};
    run.generation(0b00000100);  // a lone cell stays itself
    EXPECT_FALSE(run.memory.stable);
    run.generation(0b00000100);
    EXPECT_EQ(run.at(4, 0), 64) << "survived";
    EXPECT_TRUE(run.memory.stable);
}

// --- the module ---

struct MatrixRig : ModuleHarness {
    MatrixSequencer& add(std::string_view type) { return static_cast<MatrixSequencer&>(ModuleHarness::add(type)); }
    // One rising edge of the Strobe input with this value.
    void strobe(MatrixSequencer& m, int value = 127) {
        set(m, MatrixSequencer::kStrobe, 0);
        ticks(1);
        set(m, MatrixSequencer::kStrobe, value);
        ticks(1);
    }
    static void paint(MatrixSequencer& m, int column, int row, int keys) {
        m.pressCell(column * kKnobTwips + 10, row * kKnobTwips + 10, 1, keys);
        m.releaseCell();
    }
};

TEST(MatrixModule, DeadGridKicksOnlyWithKickOrStrobe126) {
    MatrixRig h;
    auto& quiet = h.add("Matrix8x8");
    auto& kicked = h.add("Matrix8x8");
    auto& by126 = h.add("Matrix8x8");
    kicked.Kick = true;
    auto anyCell = [](const MatrixSequencer& m) {
        for (uint8_t v : m.cells())
            if (v != 0) return true;
        return false;
    };
    for (auto* m : {&quiet, &kicked, &by126}) h.strobe(*m);
    EXPECT_TRUE(quiet.stable());
    EXPECT_FALSE(anyCell(kicked)) << "the first generation only finds the grid stable";
    h.strobe(quiet);
    h.strobe(kicked);
    h.strobe(by126, 126);
    EXPECT_FALSE(anyCell(quiet));
    EXPECT_TRUE(anyCell(kicked));
    EXPECT_TRUE(anyCell(by126));
}

TEST(MatrixModule, HiLifeOnEightRowsRunsTheSameGenerationsAsLife) {
    MatrixRig h;
    auto& life = h.add("Matrix8x8");
    auto& hiLife = h.add("Matrix8x8");
    hiLife.stepMode();
    ASSERT_EQ(hiLife.Mode, MatrixSequencer::HiLifeMode);
    const std::set<Cell> ring = {{0, 0}, {1, 0}, {2, 0}, {0, 2}, {1, 2}, {2, 2}, {5, 5}, {5, 6}, {6, 5}};
    for (auto* m : {&life, &hiLife})
        for (auto [c, r] : ring) MatrixRig::paint(*m, c, r, 2);
    for (int g = 0; g < 6; ++g) {
        h.strobe(life);
        h.strobe(hiLife);
        EXPECT_TRUE(std::ranges::equal(life.cells(), hiLife.cells())) << "generation " << g;
    }
}

TEST(MatrixModule, LockStopsTheAutomatonAndTheMouse) {
    MatrixRig h;
    auto& m = h.add("Matrix4x4");
    MatrixRig::paint(m, 1, 1, 2);
    m.Lock = true;
    MatrixRig::paint(m, 2, 2, 2);
    EXPECT_EQ(m.cell(2, 2), 0);
    h.strobe(m);
    EXPECT_EQ(m.cell(1, 1), 127) << "a lone cell would die";
}

TEST(MatrixModule, PagesStoreAndRecallAndPageZeroLoadsNothing) {
    MatrixRig h;
    auto& m = h.add("Matrix4x4");
    h.set(m, MatrixSequencer::kPage, 5);
    h.ticks(1);
    MatrixRig::paint(m, 1, 2, 2);  // Shift: 127, into page 5
    h.set(m, MatrixSequencer::kPage, 3);
    h.ticks(1);
    EXPECT_EQ(m.cell(1, 2), 0) << "page 3 is empty";
    MatrixRig::paint(m, 3, 3, 4);  // Alt: 64, into page 3
    h.set(m, MatrixSequencer::kPage, 5);
    h.ticks(1);
    EXPECT_EQ(m.cell(1, 2), 127);
    EXPECT_EQ(m.cell(3, 3), 0);
    h.set(m, MatrixSequencer::kPage, 0);
    h.ticks(1);
    EXPECT_EQ(m.cell(1, 2), 127) << "page 0 leaves the grid as it is";
    MatrixRig::paint(m, 0, 0, 4);
    EXPECT_EQ(m.page(0)[static_cast<size_t>(m.size().at(0, 0))], 64) << "edits go to slot 0";
    EXPECT_EQ(m.page(5)[static_cast<size_t>(m.size().at(0, 0))], 0);
}

TEST(MatrixModule, PlainClickChangesNothingAndReleaseGivesTheInputBack) {
    MatrixRig h;
    auto& m = h.add("Matrix8x4");
    h.set(m, MatrixSequencer::kColumn, 6);
    h.ticks(1);
    m.pressCell(2 * kKnobTwips + 5, 5, 1, 0);
    EXPECT_EQ(m.Enabled, 0);
    EXPECT_EQ(m.Column, 2);
    EXPECT_EQ(m.cell(2, 0), 0);
    m.dragCell(2 * kKnobTwips + 172, 340, 1);  // straight below the centre: the seam
    EXPECT_EQ(m.cell(2, 0), knobValueInCell(2 * kKnobTwips + 172, 340, 2, 0));
    m.releaseCell();
    EXPECT_NE(m.Enabled, 0);
    EXPECT_EQ(m.Column, 6);
}

TEST(MatrixModule, FillPerRowTouchesOnlyThatRow) {
    MatrixRig h;
    auto& m = h.add("Matrix8x4");
    h.set(m, MatrixSequencer::kRow, 2);
    h.ticks(1);
    m.RowFill = true;
    ASSERT_EQ(m.fillStages(), 8);
    std::vector<uint8_t> hold(128, 0);
    for (int i = 0; i < 8; ++i) hold[static_cast<size_t>(i)] = static_cast<uint8_t>(10 + i);
    m.UpdateSeq(hold, 127);
    for (int c = 0; c < 8; ++c) {
        EXPECT_EQ(m.cell(c, 2), 10 + c);
        EXPECT_EQ(m.cell(c, 1), 0);
    }
    m.fillOpened(false);
    EXPECT_EQ(m.fillStages(), 32);
    m.copyToFill(hold);
    EXPECT_EQ(hold[2 * 8 + 3], 13) << "the whole grid is row x C + column";
}

TEST(MatrixModule, OutsideWritesLandInThePageInForce) {
    MatrixRig h;
    auto& m = h.add("Matrix16x8");
    h.add("Matrix16x8");
    EngineFormulaStores doors(*h.engine);
    h.set(m, MatrixSequencer::kPage, 9);
    h.ticks(1);
    EXPECT_TRUE(doors.writeGridCell(GridShape::G16x8, 0, 7, 15, 99));
    EXPECT_FALSE(doors.writeGridCell(GridShape::G16x8, 0, 7, 15, 99)) << "no change";
    EXPECT_FALSE(doors.writeGridCell(GridShape::G16x8, 0, 8, 0, 1)) << "outside the grid";
    EXPECT_EQ(doors.gridCell(GridShape::G16x8, 0, 7, 15), 99);
    EXPECT_EQ(doors.gridCell(GridShape::G16x8, 1, 7, 15), 0);
    EXPECT_EQ(doors.gridChanged(GridShape::G16x8, 0), 1);
    EXPECT_EQ(m.cell(15, 7), 99);
    h.ticks(1);
    EXPECT_EQ(doors.gridChanged(GridShape::G16x8, 0), 0) << "the matrix took it";
    EXPECT_EQ(m.page(9)[static_cast<size_t>(m.size().at(15, 7))], 99);
    EXPECT_EQ(doors.gridCell(GridShape::G8x8, 0, 0, 0), 0) << "no such matrix";
}

TEST(MatrixModule, CaModePageNameIsARule) {
    MatrixRig h;
    auto& m = h.add("Matrix8x8");
    m.stepMode();
    m.stepMode();
    ASSERT_EQ(m.Mode, MatrixSequencer::CAMode);
    m.setPageName(4, "30");
    MatrixRig::paint(m, 0, 3, 2);
    h.set(m, MatrixSequencer::kPage, 4);
    h.ticks(1);
    EXPECT_EQ(m.Rule, 30);
    EXPECT_EQ(m.cell(0, 3), 127) << "in CA mode a page leaves the grid alone";
}

TEST(MatrixSatellite, ReadsItsParentAfterOthersGoAndAcrossARecord) {
    MatrixRig h;
    auto& first = h.add("Matrix8x8");
    h.add("Matrix8x8");
    auto& third = h.add("Matrix8x8");
    auto& out = static_cast<MatrixOutput&>(h.ModuleHarness::add("MOut8x8"));
    MatrixRig::paint(third, 5, 6, 4);
    out.setParent(third.Index);
    h.set(out, 0, 5);
    h.set(out, 1, 6 + 8);  // reduced AND 7
    h.ticks(1);
    EXPECT_EQ(h.out(out), 64);
    h.engine->Delete(first);
    h.ticks(1);
    EXPECT_EQ(out.parentChoices(*h.engine), (std::vector<int>{2, 3}));
    EXPECT_EQ(h.out(out), 64);

    out.PatchStore(*h.engine);
    auto back = readBack(h, "MOut8x8", body(h, out));
    EXPECT_EQ(static_cast<MatrixOutput&>(*back).Parent, third.Index);
}

TEST(MatrixSatellite, TwelveColumnSatelliteReducesByAndEleven) {
    MatrixRig h;
    auto& m = h.add("Matrix12x8");
    auto& out = static_cast<MatrixOutput&>(h.ModuleHarness::add("MOut12x8"));
    MatrixRig::paint(m, 1, 0, 2);
    h.set(out, 0, 5);
    h.ticks(1);
    EXPECT_EQ(h.out(out), 127) << "5 AND 11 is column 1";
    h.set(m, MatrixSequencer::kColumn, 13);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 127) << "the matrix itself reduces mod 12";
}

TEST(MatrixRecord, EverySizeRoundTripsPagesNamesGridAndFlags) {
    for (std::string_view type : {"Matrix4x4", "Matrix8x4", "Matrix8x8", "Matrix12x8", "Matrix16x4", "Matrix16x8"}) {
        MatrixRig h;
        auto& m = h.add(type);
        MatrixRig::paint(m, 1, 1, 2);
        m.Kick = m.automata() != MatrixAutomata::None;
        m.Lock = true;
        m.stepKnobSet();
        m.stepMode();
        m.setRuleBit(0, true);
        m.setPageName(7, "Seven");
        m.PatchStore(*h.engine);
        const auto bytes = body(h, m);
        const auto layout = parseLayout(fileSlotOf(m.type()).layout);
        ByteWriter head;
        head.raw(std::vector<uint8_t>(20, 0));
        head.raw(bytes);
        ByteReader check(head.bytes());
        EXPECT_NO_THROW(skipRecord(check, layout)) << type;
        EXPECT_EQ(check.remaining(), 0u) << type;

        auto back = readBack(h, type, bytes);
        auto& copy = static_cast<MatrixSequencer&>(*back);
        EXPECT_TRUE(std::ranges::equal(copy.cells(), m.cells())) << type;
        EXPECT_EQ(copy.page(0)[static_cast<size_t>(m.size().at(1, 1))], 127) << type;
        EXPECT_EQ(copy.pageName(7), "Seven") << type;
        EXPECT_EQ(copy.Lock, true) << type;
        EXPECT_EQ(copy.Kick, m.Kick) << type;
        EXPECT_EQ(copy.KnobSet, 1) << type;
        EXPECT_EQ(copy.Mode, m.Mode) << type;
        if (m.automata() == MatrixAutomata::EightRowModes) {
            EXPECT_EQ(copy.Rule, 91) << type;
        }
        EXPECT_EQ(body(h, copy), bytes) << type;
    }
}

}  // namespace
}  // namespace quillmer::testing
