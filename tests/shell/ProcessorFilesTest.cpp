// Processors through the module file: a tap's master survives save and load while bus ids
// move, settings of several snapshots come back, and a second save gives the same bytes.

#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "modules/processors/Memory.h"
#include "modules/processors/Selection.h"
#include "modules/processors/Sums.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(ProcessorFiles, TapsKeepTheirMastersAndSnapshotsTheirSettings) {
    ScratchDir dir;
    SessionHarness h;
    Engine& e = h.session.engine;
    Module& spare = h.add("Minus");
    auto& minus = static_cast<Minus&>(h.add("Minus"));
    auto& carry = static_cast<Carry&>(h.add("Carry"));
    auto& delay = static_cast<Delay&>(h.add("Delay"));
    auto& tap = static_cast<DLTap&>(h.add("DLTap"));
    auto& selct = static_cast<Selct&>(h.add("Selct"));
    auto& selOut = static_cast<SelOut&>(h.add("SelOut"));
    h.connect(minus, 0, "~  10");
    h.connect(minus, 1, "~  50");
    carry.chooseMaster(minus.Index);
    tap.chooseMaster(delay.Index);
    selOut.chooseMaster(selct.Index);
    h.session.snapshots.StoreNewPatch();  // slot 0, which a save fills with the live state
    selOut.chooseChannel(3);
    h.session.snapshots.StoreNewPatch();
    delay.setTurbo(true);
    selOut.chooseChannel(Selct::kChannels + 6);
    h.connect(selct, 0, "~  77");
    h.connect(selct, 1, "~  64");  // bit 6: m6
    h.session.snapshots.StoreNewPatch();
    e.Delete(spare);  // a free slot before the master: instance numbers must hold
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");

    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("p.qmp")), "");
    Engine& le = loaded.session.engine;
    auto* c = static_cast<Carry*>(le.findModule("1Carry-"));
    auto* t = static_cast<DLTap*>(le.findModule("1DLTap-"));
    auto* so = static_cast<SelOut*>(le.findModule("1SctOut-"));
    ASSERT_NE(c, nullptr);
    ASSERT_NE(t, nullptr);
    ASSERT_NE(so, nullptr);
    EXPECT_EQ(c->masterIndex(), minus.Index);
    EXPECT_EQ(c->masterChoices().size(), 1u);
    EXPECT_EQ(c->masterChoices()[0].name, "2Minus-");
    EXPECT_EQ(t->masterIndex(), delay.Index);
    EXPECT_EQ(so->channelRow(), Selct::kChannels + 6) << "the current snapshot's channel";
    le.StartTimers();
    loaded.timers.advanceByMs(static_cast<int64_t>(le.TickPeriod()) * 3);
    EXPECT_EQ(le.bus[c->OutBus], 40) << "the borrow of the loaded Minus";
    EXPECT_EQ(le.bus[so->OutBus], 77);
    loaded.session.snapshots.select(1);
    EXPECT_EQ(so->channelRow(), 3);
    EXPECT_FALSE(static_cast<Delay*>(le.findModule("1Delay-"))->turbo());
    loaded.session.snapshots.select(2);
    EXPECT_TRUE(static_cast<Delay*>(le.findModule("1Delay-"))->turbo());

    // Loaded and saved twice: the same bytes (name slots differ from a session's own).
    SessionHarness once;
    ASSERT_EQ(once.load(dir.file("p.qmp")), "");
    ASSERT_EQ(once.save(dir.file("again.qmp")), "");
    SessionHarness twice;
    ASSERT_EQ(twice.load(dir.file("again.qmp")), "");
    ASSERT_EQ(twice.save(dir.file("third.qmp")), "");
    EXPECT_EQ(readBytes(dir.file("again.qmp")), readBytes(dir.file("third.qmp")));
}

TEST(ProcessorFiles, ThePinnedPatchOfEveryTypeComesBackByteForByte) {
    ScratchDir dir;
    SessionHarness once;
    ASSERT_EQ(once.load(std::string(QUILLMER_SOURCE_DIR) + "/tests/data/every-type.qmp"), "");
    size_t placed = 0;
    once.session.engine.forEachModule([&](Module& m) {
        EXPECT_FALSE(m.isPlaceholder()) << m.Name;
        ++placed;
    });
    EXPECT_GT(placed, 130u);
    ASSERT_EQ(once.save(dir.file("a.qmp")), "");
    SessionHarness twice;
    ASSERT_EQ(twice.load(dir.file("a.qmp")), "");
    ASSERT_EQ(twice.save(dir.file("b.qmp")), "");
    EXPECT_EQ(readBytes(dir.file("a.qmp")), readBytes(dir.file("b.qmp")));
}
