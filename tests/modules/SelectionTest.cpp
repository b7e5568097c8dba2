// Latest's order, Relay2's lamps, Selct's channels and its tap SelOut, Flip, and T127.

#include <gtest/gtest.h>

#include <span>
#include <utility>

#include "ModuleHarness.h"
#include "modules/processors/Selection.h"
#include "tables/GeneralTables.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(Latest, TheFirstChangedInputInPanelOrderWins) {
    ModuleHarness h;
    auto& latest = static_cast<Latest&>(h.add("Latest"));
    h.set(latest, 2, 30);
    h.ticks(1);
    EXPECT_EQ(h.out(latest), 30);
    EXPECT_EQ(latest.winner(), 2);
    h.set(latest, 1, 20);
    h.set(latest, 2, 31);
    h.ticks(1);
    EXPECT_EQ(h.out(latest), 20) << "B before C in one update";
    h.set(latest, 0, 10);
    h.set(latest, 1, 21);
    h.set(latest, 2, 32);
    h.ticks(1);
    EXPECT_EQ(h.out(latest), 10);
    h.set(latest, 2, 33);
    h.ticks(1);
    EXPECT_EQ(h.out(latest), 33) << "all three were remembered: only C changed now";
    h.ticks(3);
    EXPECT_EQ(h.out(latest), 33) << "held while nothing changes";
}

TEST(Relay2, SelectsAndSwapsItsLampsOnAChange) {
    ModuleHarness h;
    auto& relay = static_cast<Relay2&>(h.add("Relay2"));
    h.set(relay, 0, 11);
    h.set(relay, 1, 22);
    h.ticks(1);
    EXPECT_EQ(h.out(relay), 11);
    EXPECT_FALSE(relay.secondSelected());
    h.set(relay, 2, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(relay), 22);
    EXPECT_TRUE(relay.secondSelected());
    h.set(relay, 1, 23);
    h.ticks(1);
    EXPECT_EQ(h.out(relay), 23);
}

TEST(Selct, ChannelsMultiChannelsAndTheGate) {
    ModuleHarness h;
    auto& sel = static_cast<Selct&>(h.add("Selct"));
    h.set(sel, 0, 50);
    h.ticks(1);
    EXPECT_EQ(h.out(sel), 50) << "switch 0: own output";
    h.set(sel, 1, 5);  // bits 0 and 2
    h.set(sel, 0, 60);
    h.ticks(1);
    EXPECT_EQ(h.out(sel), 50) << "the own output holds";
    EXPECT_EQ(sel.channel(4), 60);
    EXPECT_EQ(sel.multi(0), 60);
    EXPECT_EQ(sel.multi(1), 0);
    EXPECT_EQ(sel.multi(2), 60);

    h.set(sel, 1, 100);  // above 16: channel 16; bits 2, 5, 6
    h.set(sel, 0, 70);
    h.ticks(1);
    EXPECT_EQ(sel.channel(15), 70);
    EXPECT_EQ(sel.channel(4), 60) << "without the gate the others keep their values";
    EXPECT_EQ(sel.multi(0), 60);
    EXPECT_EQ(sel.multi(2), 70);
    EXPECT_EQ(sel.multi(5), 70);
    EXPECT_EQ(sel.multi(6), 70);

    sel.setGate(true);
    h.ticks(1);
    EXPECT_EQ(sel.channel(4), 0) << "gated: unselected channels read 0";
    EXPECT_EQ(sel.multi(0), 0);
    EXPECT_EQ(sel.channel(15), 70);
    EXPECT_EQ(sel.multi(6), 70);
}

TEST(Selct, SelOutReadsTheChosenChannelOfTheChosenSelct) {
    ModuleHarness h;
    auto& sel = static_cast<Selct&>(h.add("Selct"));
    auto& out = static_cast<SelOut&>(h.add("SelOut"));
    h.set(sel, 0, 44);
    h.set(sel, 1, 3);
    h.ticks(2);
    EXPECT_EQ(h.out(out), 0) << "no master chosen";
    out.chooseMaster(sel.Index);
    out.chooseChannel(2);
    h.ticks(1);
    EXPECT_EQ(h.out(out), 44);
    out.chooseChannel(Selct::kChannels + 1);  // m1
    h.ticks(1);
    EXPECT_EQ(h.out(out), 44);
    out.chooseChannel(Selct::kChannels + 2);  // m2: bit 2 of 3 is clear
    h.ticks(1);
    EXPECT_EQ(h.out(out), 0);
    EXPECT_EQ(SelOut::channelName(0), "1");
    EXPECT_EQ(SelOut::channelName(15), "16");
    EXPECT_EQ(SelOut::channelName(22), "m6");
    out.chooseChannel(0);
    h.set(sel, 1, 1);
    h.ticks(2);
    EXPECT_EQ(h.out(out), 44);
    h.engine->Delete(sel);
    h.ticks(1);
    EXPECT_EQ(h.out(out), 0) << "a deleted master reads 0";
}

TEST(Flip, LatchesOnRisingEdgesAndTogglesWithFeedback) {
    ModuleHarness h;
    auto& flip = static_cast<Flip&>(h.add("Flip"));
    h.edge(flip, 0);
    EXPECT_EQ(h.out(flip), 127);
    h.ticks(3);
    EXPECT_EQ(h.out(flip), 127) << "a level held high is no new edge";
    h.edge(flip, 1);
    EXPECT_EQ(h.out(flip), 0);
    h.set(flip, 0, 0);
    h.set(flip, 1, 0);
    h.ticks(1);
    h.set(flip, 0, 9);
    h.set(flip, 1, 9);
    h.ticks(1);
    EXPECT_EQ(h.out(flip), 0) << "reset wins in the same update";

    flip.setFeedback(true);
    h.set(flip, 1, 0);
    std::vector<int> seen;
    for (int i = 0; i < 4; ++i) {
        h.edge(flip, 0);
        seen.push_back(h.out(flip));
    }
    EXPECT_EQ(seen, (std::vector<int>{127, 0, 127, 0}));
}

TEST(T127, ReadsPage127OfTheTableStore) {
    ModuleHarness h;
    Module& t = h.add("T127");
    h.set(t, 0, 64);
    h.ticks(1);
    EXPECT_EQ(h.out(t), 0) << "without a bank every step reads 0";

    GeneralTables tables;
    tables.bank.row(127)[0] = 5;
    tables.bank.row(127)[64] = 77;
    tables.bank.row(127)[127] = 127;
    tables.bank.row(126)[64] = 9;  // a neighbouring page must not leak in
    h.engine->setGeneralTables(tables.bank.data());
    for (auto [step, want] : {std::pair{0, 5}, {64, 77}, {127, 127}, {63, 0}}) {
        h.set(t, 0, step);
        h.ticks(1);
        EXPECT_EQ(h.out(t), want) << "step " << step;
    }
    // A formula or the editor writing the page is seen on the next tick.
    h.engine->writeGeneralTableStep(127, 63, 200);
    h.set(t, 0, 63);
    h.ticks(1);
    EXPECT_EQ(h.out(t), 127) << "writes are cut to 0..127";
    h.engine->setGeneralTables(nullptr);
}

TEST(GeneralTableStore, WritesCountChangesAndStayInside) {
    ModuleHarness h;
    GeneralTables tables;
    h.engine->setGeneralTables(tables.bank.data());
    const uint32_t before = h.engine->generalTablesVersion();
    h.engine->writeGeneralTableStep(3, 4, 50);
    EXPECT_EQ(tables.bank.row(3)[4], 50);
    EXPECT_EQ(h.engine->generalTablesVersion(), before + 1);
    h.engine->writeGeneralTableStep(3, 4, 50);
    EXPECT_EQ(h.engine->generalTablesVersion(), before + 1) << "an unchanged value is no change";
    h.engine->writeGeneralTableStep(3, 4, -7);
    EXPECT_EQ(tables.bank.row(3)[4], 0);
    for (auto [table, step] : {std::pair{-1, 0}, {128, 0}, {0, -1}, {0, 128}}) {
        h.engine->writeGeneralTableStep(table, step, 99);
        EXPECT_EQ(h.engine->generalTableStep(table, step), 0);
    }
    for (uint8_t b : std::span(tables.bank.data(), kGeneralTableBytes))
        if (b != 0) ADD_FAILURE() << "a write outside the bank landed inside it";
    h.engine->setGeneralTables(nullptr);
}
