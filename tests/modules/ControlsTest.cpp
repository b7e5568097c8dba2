// The controls and displays of the Values and Display menus over ticks: held values, buttons,
// strobes, meters with peak hold, the bank of 32 control sliders and the mouse pad.

#include <gtest/gtest.h>

#include "../engine/FakeDevices.h"
#include "ModuleHarness.h"
#include "modules/panels/CtrlOut32.h"
#include "modules/panels/Meter.h"
#include "modules/panels/MousePad.h"
#include "modules/panels/ValueControls.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(HeldValues, SetByHandCutToRangeAndKeptPerSnapshot) {
    ModuleHarness h;
    auto& value = static_cast<Value&>(h.add("Value"));
    auto& bar = static_cast<Bar&>(h.add("Bar"));
    auto& vbar = static_cast<VBar&>(h.add("VBar"));
    auto& number = static_cast<Number&>(h.add("Number"));

    value.set(200);
    h.ticks(1);
    EXPECT_EQ(h.out(value), 127);
    value.step(-130);
    EXPECT_EQ(h.out(value), 0);  // out at once, not only on the next tick

    // The ends of a bar are 0 and 127 whatever its length; a vertical bar's bottom is 0.
    bar.point(0, 100);
    EXPECT_EQ(bar.value(), 0);
    bar.point(99, 100);
    EXPECT_EQ(bar.value(), 127);
    bar.point(500, 100);
    EXPECT_EQ(bar.value(), 127);
    bar.point(-5, 100);
    EXPECT_EQ(bar.value(), 0);
    vbar.point(99, 100);
    EXPECT_EQ(vbar.value(), 0);
    vbar.point(0, 100);
    EXPECT_EQ(vbar.value(), 127);
    bar.point(3, 1);  // a bar of one pixel has no range
    EXPECT_EQ(bar.value(), 0);

    number.set(60);
    number.drag(60, -20);  // twenty pixels up
    EXPECT_EQ(number.value(), 70);

    // Two snapshots hold two values; recall puts each out.
    value.set(10);
    h.engine->CurrentSnapshot = 0;
    value.PatchStore(*h.engine);
    value.set(90);
    h.engine->CurrentSnapshot = 1;
    value.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 0;
    value.PatchChange(*h.engine);
    EXPECT_EQ(h.out(value), 10);
    h.engine->CurrentSnapshot = 1;
    value.PatchChange(*h.engine);
    h.ticks(1);
    EXPECT_EQ(h.out(value), 90);
}

TEST(Buttons, MomentaryFollowsTheHandLatchingTogglesAndOnValueZeroMeans127) {
    ModuleHarness h;
    auto& b = static_cast<Button&>(h.add("Button"));
    EXPECT_EQ(b.onValue(), 127);
    b.press();
    EXPECT_EQ(h.values(b, 2), (std::vector<int>{127, 127}));
    b.release();
    EXPECT_EQ(h.values(b, 1), (std::vector<int>{0}));

    b.latching = true;
    b.setOnValue(64);
    b.press();
    b.release();
    EXPECT_EQ(h.values(b, 3), (std::vector<int>{64, 64, 64}));
    b.press();
    EXPECT_EQ(h.values(b, 1), (std::vector<int>{0}));

    // A latched button stored in snapshot 2 is latched again on recall; held ones never are.
    b.press();
    h.engine->CurrentSnapshot = 2;
    b.PatchStore(*h.engine);
    b.press();
    h.ticks(1);
    EXPECT_EQ(h.out(b), 0);
    b.PatchChange(*h.engine);
    h.ticks(1);
    EXPECT_EQ(h.out(b), 64);

    // A record's on-value of 0 reads as 127.
    ByteWriter zeros;
    for (int i = 0; i < 384; ++i) zeros.u8(0);
    const auto copy = readBack(h, "Button", zeros.bytes());
    EXPECT_EQ(static_cast<Button&>(*copy).onValue(), 127);
}

TEST(Strobes, EachClickGivesOneRisingEdgeOfOneTick) {
    ModuleHarness h;
    auto& s = static_cast<Strobe&>(h.add("Strobe"));
    EXPECT_EQ(h.gates(s, 3), "...");
    s.click();
    EXPECT_EQ(h.gates(s, 4), "X...");
    // Two clicks between ticks make one pulse.
    s.click();
    s.click();
    EXPECT_EQ(h.gates(s, 3), "X..");
    // A click while the pulse is high waits for a tick of 0: two edges, not one long pulse.
    s.click();
    h.ticks(1);
    s.click();
    EXPECT_EQ(h.gates(s, 3), ".X.");
    EXPECT_EQ(s.pulses(), 4);
}

TEST(Meters, PeakHoldsForAWholeNoteThenFallsToTheLevel) {
    ModuleHarness h;
    auto& m = static_cast<Meter&>(h.add("Meter"));
    h.set(m, 0, 100);
    h.set(m, 3, 5);
    h.ticks(1);
    EXPECT_EQ(m.level(0), 100);
    EXPECT_EQ(m.peak(0), 100);
    EXPECT_EQ(m.peak(3), 5);
    h.set(m, 0, 40);
    h.ticks(Meter::kHoldTicks);
    EXPECT_EQ(m.level(0), 40);
    EXPECT_EQ(m.peak(0), 100);  // still held
    h.ticks(1);
    EXPECT_EQ(m.peak(0), 100 - Meter::kFallPerTick);
    h.ticks(100);
    EXPECT_EQ(m.peak(0), 40);  // never below the level
    // A higher level lifts the peak at once and starts a new hold.
    h.set(m, 0, 120);
    h.ticks(1);
    h.set(m, 0, 0);
    h.ticks(50);
    EXPECT_EQ(m.peak(0), 120);
    m.clearPeaks();
    EXPECT_EQ(m.peak(0), 0);
    EXPECT_EQ(m.peak(3), 5);
}

namespace {

struct SliderHarness : ModuleHarness {
    SliderHarness() {
        engine->ports.attachOutput(1, std::make_unique<FakeOutput>("Synth", timers, &sent));
        engine->ports.attachOutput(0, std::make_unique<FakeOutput>("Other", timers, &sentA));
    }
    std::vector<std::vector<uint8_t>> take() {
        std::vector<std::vector<uint8_t>> all;
        for (const SentMessage& m : sent) all.push_back(m.bytes);
        sent.clear();
        return all;
    }
    std::vector<SentMessage> sent, sentA;
};

}  // namespace

TEST(ControlSliders, SendOnceAtStartThenOnlyChangesAndAllAgainOnResync) {
    SliderHarness h;
    auto& bank = static_cast<CtrlOut32&>(h.add("CtrlOut32"));
    bank.setChanPort(16 + 2);  // channel 3 on port B
    EXPECT_EQ(bank.channelCaption(), "3 B");
    h.ticks(1);
    std::vector<std::vector<uint8_t>> sent = h.take();
    ASSERT_EQ(sent.size(), 32u);
    EXPECT_EQ(sent.front(), (std::vector<uint8_t>{0xB2, 16, 0}));
    EXPECT_EQ(sent.back(), (std::vector<uint8_t>{0xB2, 117, 0}));
    EXPECT_TRUE(h.sentA.empty());

    h.ticks(5);
    EXPECT_TRUE(h.take().empty());
    bank.setValue(4, 90);
    bank.setValue(4, 91);  // only the value that stands at the tick goes
    bank.setValue(40, 1);  // no such slider
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<std::vector<uint8_t>>{{0xB2, 20, 91}}));
    bank.setController(4, 7);
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<std::vector<uint8_t>>{{0xB2, 7, 91}}));

    // A recall sends the sliders whose values differ.
    h.engine->CurrentSnapshot = 0;
    bank.PatchStore(*h.engine);
    bank.setValue(0, 127);
    bank.setValue(31, 127);
    h.engine->CurrentSnapshot = 1;
    bank.PatchStore(*h.engine);
    h.ticks(1);
    h.take();
    h.engine->CurrentSnapshot = 0;
    bank.PatchChange(*h.engine);
    h.ticks(1);
    EXPECT_EQ(h.take().size(), 2u);

    h.engine->ResyncPending = true;
    h.engine->TickModules();
    h.engine->ResyncPending = false;
    EXPECT_EQ(h.take().size(), 32u);
}

TEST(MousePads, PointerPlaceButtonsAndClicksReachMouseOut) {
    ModuleHarness h;
    auto& pad = static_cast<Mousexy&>(h.add("Mousexy"));
    EXPECT_EQ(pad.Name, "1MousePad-");
    auto& x = static_cast<MouseOut&>(h.add("MouseOut"));
    auto& gate = static_cast<MouseOut&>(h.add("MouseOut"));
    gate.setReading(static_cast<int>(PadReading::Gate));
    // Top left of a 100-pixel pad is x 0, y 127: y counts up from the bottom.
    pad.press(0, 0, 100, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(x), 0);
    EXPECT_EQ(pad.reading(PadReading::Y), 127);
    EXPECT_EQ(h.out(gate), 127);
    pad.drag(99, 99, 100);
    h.ticks(1);
    EXPECT_EQ(h.out(x), 127);
    EXPECT_EQ(pad.reading(PadReading::Y), 0);
    pad.drag(-40, 400, 100);  // dragged outside: held at the edges
    EXPECT_EQ(pad.reading(PadReading::X), 0);
    EXPECT_EQ(pad.reading(PadReading::Y), 0);
    pad.release();
    h.ticks(1);
    EXPECT_EQ(h.out(gate), 0);
    EXPECT_EQ(h.out(x), 0);  // stays where it was let go
    pad.setSpringBack(true);
    pad.press(10, 10, 100, 2);
    pad.release();
    h.ticks(1);
    EXPECT_EQ(h.out(x), 64);
    EXPECT_EQ(pad.reading(PadReading::Clicks), 2);
    EXPECT_EQ(pad.reading(99), 0);

    // A MouseOut on a pad that isn't there, or was deleted, gives 0.
    x.setPad(5);
    h.ticks(1);
    EXPECT_EQ(h.out(x), 0);
    x.setPad(0);
    h.engine->Delete(pad);
    h.ticks(1);
    EXPECT_EQ(h.out(gate), 0);
}
