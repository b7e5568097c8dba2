// The table modules: Qscale at the scale edges, Tablx, TFit and TWrite on one shared bank
// within a tick and over many, ToneTbl and TNames, the editor's strobe, and their records.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/processors/TableModules.h"
#include "tables/GeneralTables.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

// A harness whose engine reads a bank and tuning tables of the test's own.
struct TableHarness : ModuleHarness {
    TableHarness() {
        engine->setGeneralTables(tables.bank.data());
        engine->setToneTables(tones.rows.data());
        engine->toneTableName = [this](int t) { return tones.names.name(t); };
        engine->generalTableName = [this](int t) { return tables.names.name(t); };
    }
    ~TableHarness() {
        engine->setGeneralTables(nullptr);
        engine->setToneTables(nullptr);
    }
    GeneralTables tables;
    ToneTables tones;
};

}  // namespace

TEST(Qscale, SnapsAtTheScaleEdgesAndNeverLeavesTheBus) {
    ModuleHarness h;
    Module& q = h.add("Qscale");
    EXPECT_EQ(run(h, q, {61, 1}), 60);
    EXPECT_EQ(run(h, q, {71, 7}), 60);
    EXPECT_EQ(run(h, q, {66, 6}), 72);
    EXPECT_EQ(run(h, q, {11, 8}), 0) << "the triads send 10 and 11 down to their own root";
    EXPECT_EQ(run(h, q, {127, 3}), 127) << "pentatonic lifts 127 past the bus: cut";
    EXPECT_EQ(run(h, q, {126, 6}), 127) << "the octave above 126 is 132: cut";
    EXPECT_EQ(run(h, q, {61, 0}), 61);
    EXPECT_EQ(run(h, q, {61, 9}), 61);
    EXPECT_EQ(run(h, q, {61, 127}), 61);
}

TEST(Tablx, ReadsAnyStepOfAnyTableAndFollowsWritesAtTheNextTick) {
    TableHarness h;
    h.tables.bank.row(127)[127] = 99;
    h.tables.bank.row(126)[127] = 5;
    Module& t = h.add("Tabla");
    EXPECT_EQ(run(h, t, {127, 127}), 99) << "row and step 127 are both valid";
    h.engine->writeGeneralTableStep(127, 127, 42);
    h.ticks(1);
    EXPECT_EQ(h.out(t), 42);
    EXPECT_EQ(run(h, t, {126, 127}), 5);
}

TEST(TFit, FitsToTheNearestEntryLowerStepOnATieAndRefitsWhenTheBankChanges) {
    TableHarness h;
    auto row = h.tables.bank.row(3);
    std::fill(row.begin(), row.end(), uint8_t{100});
    row[10] = 40;
    row[20] = 50;
    row[30] = 60;
    row[40] = 44;  // the same distance from 47 as 50: step 20 wins, being lower
    auto& fit = static_cast<TFit&>(h.add("TFit"));
    EXPECT_EQ(run(h, fit, {3, 50}), 50) << "a value in the table comes out as it is";
    EXPECT_EQ(run(h, fit, {3, 47}), 50);
    EXPECT_EQ(run(h, fit, {3, 41}), 40);
    EXPECT_EQ(run(h, fit, {3, 127}), 100);
    // Another table, then the bank changing under the same value.
    EXPECT_EQ(run(h, fit, {4, 41}), 0);
    h.engine->writeGeneralTableStep(4, 127, 45);
    h.ticks(1);
    EXPECT_EQ(h.out(fit), 45) << "a write to the bank fits again";
    EXPECT_EQ(TFit::fit(h.tables.bank.row(5), 127), 0) << "an all-zero table: nothing is nearer than the bound";
}

TEST(TWrite, HeldClockWritesOnceTurboWritesEveryTick) {
    TableHarness h;
    auto& w = static_cast<TWrite&>(h.add("TWrite"));
    // Clock, step, table, value.
    EXPECT_EQ(run(h, w, {127, 127, 127, 30}), 0) << "a clock high from the start is no rising edge";
    EXPECT_EQ(run(h, w, {0, 127, 127, 30}), 0);
    EXPECT_EQ(run(h, w, {127, 127, 127, 30}), 30);
    EXPECT_EQ(run(h, w, {127, 127, 127, 31}), 30) << "held high: written once";
    EXPECT_EQ(h.tables.bank.row(127)[127], 30);
    std::vector<int> turbo;
    for (int v : {1, 2, 3}) turbo.push_back(run(h, w, {TWrite::kTurbo, 5, 0, v}));
    EXPECT_EQ(turbo, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(run(h, w, {0, 5, 0, 99}), 3);
    EXPECT_EQ(run(h, w, {1, 5, 0, 99}), 99);
    EXPECT_EQ(w.shownInput(), 99);
    EXPECT_EQ(w.shownStep(), 5);
}

TEST(TableModules, InstancesShareTheBankWithinOneTickInPassOrder) {
    TableHarness h;
    auto& w = h.add("TWrite");
    Module& early = h.add("Tabla");  // runs before TWrite in the same pass
    Module& late = h.add("Tabla");
    late.setPriority(priority::Late);
    auto& fit = h.add("TFit");
    fit.setPriority(priority::Late);
    for (Module* m : {&early, &late}) {
        h.set(*m, 0, 9);
        h.set(*m, 1, 64);
    }
    h.set(fit, 0, 9);
    h.set(fit, 1, 77);
    for (int k : {1, 2}) h.set(w, k, k == 1 ? 64 : 9);
    h.set(w, 3, 77);
    h.set(w, 0, 0);
    h.ticks(1);
    h.set(w, 0, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(late), 77) << "a later pass sees the write of the same tick";
    EXPECT_EQ(h.out(fit), 77);
    EXPECT_EQ(h.out(early), 0) << "an earlier module sees it at the next tick";
    h.ticks(1);
    EXPECT_EQ(h.out(early), 77);
    // Over many ticks a Turbo writer and a reader stay one tick apart, never further.
    h.set(w, 0, TWrite::kTurbo);
    for (int tick = 0; tick < 300; ++tick) {
        h.set(w, 3, tick % 128);
        h.ticks(1);
        ASSERT_EQ(h.out(late), tick % 128) << tick;
        if (tick > 0) {
            ASSERT_EQ(h.out(early), (tick - 1) % 128) << tick;
        }
    }
}

TEST(TableModules, NamesFollowTheTableAndTheEditorsStrobeOnlyForTheirTable) {
    TableHarness h;
    h.tables.names.setName(2, "Bass");
    h.tables.names.setName(3, "Lead");
    auto& a = static_cast<Tablx&>(h.add("Tabla"));
    auto& b = static_cast<Tablx&>(h.add("Tabla"));
    run(h, a, {2, 0});
    run(h, b, {3, 0});
    EXPECT_EQ(a.tableName(), "Bass");
    h.tables.names.setName(2, "Bass 2");
    h.tables.names.setName(3, "Lead 2");
    h.ticks(2);
    EXPECT_EQ(a.tableName(), "Bass") << "no strobe, no new name";
    h.engine->requestTableLoadStrobe(2);
    h.ticks(2);
    EXPECT_EQ(a.tableName(), "Bass 2");
    EXPECT_EQ(b.tableName(), "Lead") << "the strobe named another table";
    h.engine->requestTableLoadStrobe(128);
    h.ticks(2);
    EXPECT_EQ(b.tableName(), "Lead 2");
}

TEST(ToneTbl, CountsStepsAndShowsTheSwitchOnlyWithANewTable) {
    TableHarness h;
    h.tones.rows.row(1)[127] = 6;
    h.tones.rows.row(2)[127] = 11;
    h.tones.names.setName(1, "Major");
    auto& t = static_cast<ToneTbl&>(h.add("ToneTbl"));
    EXPECT_EQ(run(h, t, {1}), 6) << "out: the last step";
    EXPECT_EQ(t.caption(), "N-1");
    EXPECT_EQ(t.tableName(), "Major");
    t.setCountsSteps(true);
    h.ticks(1);
    EXPECT_EQ(h.out(t), 6) << "the switch shows at the next change of table";
    EXPECT_EQ(run(h, t, {2}), 12);
    EXPECT_EQ(t.caption(), "Num");
    h.tones.rows.row(2)[127] = 4;
    h.engine->requestTableLoadStrobe(128);
    h.ticks(2);
    EXPECT_EQ(h.out(t), 5) << "a loaded table shows at once";
}

TEST(TNames, ShowsTheSlotsNameTrimmedAndCutsTypedNames) {
    ModuleHarness h;
    auto& n = static_cast<TNames&>(h.add("TNames"));
    n.setName(4, "  Verse  ");
    n.setName(5, "A name longer than twenty characters");
    run(h, n, {4});
    EXPECT_EQ(n.shownName(), "Verse");
    EXPECT_EQ(n.name(5), "A name longer than t");
}

TEST(TableModules, RecordsComeBackByteForByteWithTheBytesTheyOnlyKeep) {
    ModuleHarness h;
    // TFit: two bytes before the inputs and a byte per snapshot after them, kept as read.
    std::vector<uint8_t> fit = body(h, h.add("TFit"));
    fit[0] = 7;
    fit[1] = 9;
    fit[fit.size() - 1] = 3;
    fit[fit.size() - 128] = 4;
    EXPECT_EQ(body(h, *readBack(h, "TFit", fit)), fit);
    // TNames: 128 names of 20 bytes before the inputs.
    auto& names = static_cast<TNames&>(h.add("TNames"));
    names.setName(0, "Intro");
    names.setName(127, "Coda");
    const std::vector<uint8_t> named = body(h, names);
    EXPECT_EQ(std::string(named.begin(), named.begin() + 20), "Intro               ");
    auto back = readBack(h, "TNames", named);
    EXPECT_EQ(static_cast<TNames&>(*back).name(127), "Coda");
    EXPECT_EQ(body(h, *back), named);
    // ToneTbl keeps its switch per snapshot.
    auto& tone = static_cast<ToneTbl&>(h.add("ToneTbl"));
    tone.setCountsSteps(true);
    h.engine->StoreAllPatches();
    auto toneBack = readBack(h, "ToneTbl", body(h, tone));
    EXPECT_TRUE(static_cast<ToneTbl&>(*toneBack).countsSteps());
    for (const char* type : {"Qscale", "Tabla", "TWrite"}) {
        const std::vector<uint8_t> bytes = body(h, h.add(type));
        EXPECT_EQ(body(h, *readBack(h, type, bytes)), bytes) << type;
    }
}
