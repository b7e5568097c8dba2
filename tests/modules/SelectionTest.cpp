// Latest's order, Relay2's lamps, Selct's channels and its tap SelOut, Flip, and T127.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/processors/Selection.h"

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
    for (int step : {0, 64, 127}) {
        h.set(t, 0, step);
        h.ticks(1);
        EXPECT_EQ(h.out(t), 0) << "no table pages are loaded";
    }
}
