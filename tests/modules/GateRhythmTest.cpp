// Gates, the pattern banks, Rhythm, the switches and the manual selectors and knob rows,
// over many ticks, across snapshots and through their records.

#include <numeric>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/sequencers/Gates.h"
#include "modules/sequencers/Knobs.h"
#include "modules/sequencers/Picks.h"
#include "modules/sequencers/Rhythm.h"
#include "modules/sequencers/Switches.h"

namespace quillmer::testing {
namespace {

template <class T>
T& place(ModuleHarness& h, std::string_view type) {
    return static_cast<T&>(h.add(type));
}

// The body with an empty head in front parses as the type's layout, to its last byte.
void expectLayout(const ModuleHarness& h, const Module& m) {
    ByteWriter record;
    record.raw(std::vector<uint8_t>(20, 0));
    record.raw(body(h, m));
    ByteReader in(record.bytes());
    EXPECT_NO_THROW(skipRecord(in, parseLayout(fileSlotOf(m.type()).layout))) << m.info().type;
    EXPECT_EQ(in.remaining(), 0u) << m.info().type;
}

TEST(GatesModule, ClockAt126TracksAndOtherValuesSampleOnARisingEdge) {
    ModuleHarness h;
    auto& g = place<Gates>(h, "Gates");
    h.set(g, 1, 1);
    h.set(g, 3, 5);
    h.set(g, 0, 64);
    h.ticks(1);
    EXPECT_EQ(h.out(g), 0) << "no edge yet: the clock never was 0";
    h.set(g, 0, 0);
    h.ticks(1);
    h.set(g, 0, 64);
    h.ticks(1);
    EXPECT_EQ(h.out(g), 1 + 4);
    h.set(g, 7, 1);
    h.ticks(2);
    EXPECT_EQ(h.out(g), 5) << "the clock rests: no new sample";
    h.set(g, 0, 126);
    h.ticks(1);
    EXPECT_EQ(h.out(g), 5 + 64) << "126 reads on every pass";
    h.set(g, 1, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(g), 4 + 64);
    expectLayout(h, g);
}

TEST(GatexModule, PatternsStagesAndTheCopyButton) {
    ModuleHarness h;
    auto& p = place<GatePatterns>(h, "Gatex08");
    h.set(p, GatePatterns::kPattern, 3);
    h.ticks(1);
    p.setStage(2, true);
    h.set(p, GatePatterns::kStage, 2 + 8);  // AND 7
    EXPECT_EQ(h.values(p, 1), std::vector<int>{127});
    h.set(p, GatePatterns::kPattern, 20);
    EXPECT_EQ(h.values(p, 1), std::vector<int>{0});
    p.copyButton(1);  // Ctrl: fetches (20 - 1) AND 7 = 3, not 19
    EXPECT_EQ(h.values(p, 1), std::vector<int>{127});
    EXPECT_EQ(p.pattern(20), p.pattern(3));

    p.copyButton(0);
    auto& other = place<GatePatterns>(h, "Gatex08");
    other.copyButton(2);  // Shift: paste the first eight patterns
    EXPECT_EQ(other.pattern(3), p.pattern(3));
    EXPECT_EQ(other.pattern(20), 0u) << "only the first N patterns travel";

    auto back = readBack(h, "Gatex08", body(h, p));
    EXPECT_EQ(static_cast<GatePatterns&>(*back).pattern(20), p.pattern(20));
    expectLayout(h, p);
}

TEST(RhythmModule, LoopsOfDifferentLengthsLineUpAfterTheirLeastCommonMultiple) {
    ModuleHarness h;
    auto& r = place<Rhythm>(h, "Rhythm");
    // Rows of 3, 4 and 5 steps, each with a gate on its first step only.
    const int lengths[] = {3, 4, 5};
    for (int row = 0; row < 3; ++row) {
        r.setLength(row, lengths[row] - 1);
        if (row != 0) r.toggleGate(row, 0);
    }
    h.set(r, Rhythm::kNote, kTurboCode);
    h.set(r, Rhythm::kGates, 7);
    h.ticks(5);  // past the start's resync
    const std::vector<int> trace = h.values(r, 2 * 60);
    std::vector<int> starts;
    for (size_t t = 0; t < trace.size(); ++t)
        if (trace[t] == 7) starts.push_back(static_cast<int>(r.counter()) - static_cast<int>(trace.size() - 1 - t));
    ASSERT_EQ(starts.size(), 2u);
    EXPECT_EQ(starts[1] - starts[0], std::lcm(std::lcm(3, 4), 5));
    EXPECT_EQ(starts[0] % 60, 0);
}

TEST(RhythmModule, HoldStopsAndRestartsAndResyncHoldsAtZero) {
    ModuleHarness h;
    auto& r = place<Rhythm>(h, "Rhythm");
    h.set(r, Rhythm::kNote, kTurboCode);
    h.ticks(5);
    EXPECT_EQ(r.state, Rhythm::State::Turbo);
    for (int hold : {127, 110, 125}) {
        h.set(r, Rhythm::kNote, hold);
        h.ticks(2);
        EXPECT_EQ(r.state, Rhythm::State::Hold) << hold;
        EXPECT_EQ(h.out(r), 0) << hold;
        EXPECT_EQ(r.counter(), 0) << hold;
    }
    h.set(r, Rhythm::kNote, kTurboCode);
    h.ticks(1);
    EXPECT_EQ(r.counter(), 1) << "starts again from 0";
    h.engine->ResyncPending = true;
    h.engine->TickModules();
    EXPECT_EQ(r.counter(), 0);
    EXPECT_EQ(h.out(r), 0);
}

TEST(RhythmModule, StoredLengthOfOneRunsAsThirtyTwoAndRowsRoundTrip) {
    ModuleHarness h;
    auto& r = place<Rhythm>(h, "Rhythm");
    r.toggleGate(6, 31);
    r.setLength(6, 0);  // a length of 1 is no length
    EXPECT_EQ(r.rowLength(6), 32);
    r.PatchStore(*h.engine);
    auto bytes = body(h, r);
    expectLayout(h, r);
    // The lengths of snapshot 0 follow the seven gate words, after the inputs' 512 bytes.
    const size_t lengths = bytes.size() - 128 * 37 + 7 * 4;
    ASSERT_EQ(bytes[lengths], 8);
    bytes[lengths] = 1;
    auto back = readBack(h, "Rhythm", bytes);
    auto& copy = static_cast<Rhythm&>(*back);
    EXPECT_EQ(copy.rowLength(0), 32);
    EXPECT_TRUE(copy.gateAt(6, 31));
    EXPECT_EQ(copy.GateMask, 1);
}

TEST(RhythmModule, PasteKeepsAnUndoThatSwapsBack) {
    ModuleHarness h;
    auto& a = place<Rhythm>(h, "Rhythm");
    auto& b = place<Rhythm>(h, "Rhythm");
    a.toggleGate(2, 5);
    a.copyRows();
    const RhythmRows before = b.rows();
    b.pasteRows();
    EXPECT_EQ(b.rows(), a.rows());
    b.undoRows();
    EXPECT_EQ(b.rows(), before);
    b.undoRows();
    EXPECT_EQ(b.rows(), a.rows()) << "a second undo redoes";
    EXPECT_EQ(Rhythm::stepAtY(0, 320), 0);
    EXPECT_EQ(Rhythm::stepAtY(320, 320), 31);
    EXPECT_EQ(Rhythm::stepAtY(165, 320), 16);
}

TEST(SwitchModule, RoutesLiveAndReducesTheSelection) {
    ModuleHarness h;
    auto& s = place<SwitchRouter>(h, "Switch16");
    for (int i = 0; i < 16; ++i) h.set(s, 1 + i, 100 + i);
    h.set(s, 0, 127);  // 127 AND 15
    h.ticks(1);
    EXPECT_EQ(h.out(s), 115);
    h.set(s, 16, 3);
    h.ticks(1);
    EXPECT_EQ(h.out(s), 3) << "a router, not a sampler";
    auto& two = place<SwitchRouter>(h, "Switch2");
    h.set(two, 2, 9);
    h.set(two, 0, 5);
    h.ticks(1);
    EXPECT_EQ(h.out(two), 9);
    expectLayout(h, s);
    expectLayout(h, two);
}

TEST(PickModule, ChoicesAndValuesFollowSnapshots) {
    ModuleHarness h;
    auto& p = place<PickSequencer>(h, "Pick08");
    p.choose(3);
    p.setUpDown(77);
    EXPECT_EQ(h.out(p), 77);
    p.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 1;
    p.choose(5);
    p.setUpDown(11);
    p.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 0;
    p.PatchChange(*h.engine);
    EXPECT_EQ(p.Selected, 3);
    EXPECT_EQ(h.out(p), 77);
    h.engine->CurrentSnapshot = 1;
    p.PatchChange(*h.engine);
    EXPECT_EQ(h.out(p), 11);
    auto back = readBack(h, "Pick08", body(h, p));
    EXPECT_EQ(static_cast<PickSequencer&>(*back).value(3), 77);
    expectLayout(h, p);
}

TEST(RadioModule, RecallSendsTheStoredKnobAndAClickOnlySelects) {
    ModuleHarness h;
    auto& r = place<Radio>(h, "Radio");
    EXPECT_TRUE(r.Lock) << "an empty record is locked";
    r.Lock = false;
    r.pressKnob(100, 2 * kKnobTwips + 20, 1, 2);  // Shift on knob 2
    r.releaseKnob();
    r.pressKnob(100, 4 * kKnobTwips + 20, 1, 4);  // Alt on knob 4
    r.releaseKnob();
    r.select(2);
    r.PatchStore(*h.engine);
    r.select(4);
    EXPECT_EQ(h.out(r), 64);
    r.PatchChange(*h.engine);
    EXPECT_EQ(h.out(r), 127);
    r.pressKnob(100, 4 * kKnobTwips + 20, 1, 0);  // plain click on another knob
    r.releaseKnob();
    EXPECT_EQ(r.Selected, 4);
    EXPECT_EQ(r.value(4), 64);
    auto back = readBack(h, "Radio", body(h, r));
    EXPECT_FALSE(static_cast<Radio&>(*back).Lock);
    EXPECT_EQ(static_cast<Radio&>(*back).Selected, 2);
    expectLayout(h, r);
}

TEST(KnobModule, ModifiersSetValuesUnlessLockedAndTheStageComesBack) {
    ModuleHarness h;
    auto& k = place<KnobSequencer>(h, "Knob12");
    h.set(k, 0, 14);  // mod 12
    h.ticks(1);
    EXPECT_EQ(k.CurrentStage, 2);
    k.pressKnob(5 * kKnobTwips + 3, 3, 1, 1);  // Ctrl
    k.releaseKnob();
    k.pressKnob(5 * kKnobTwips + 3, 3, 1, 2);  // Shift
    EXPECT_EQ(k.CurrentStage, 5);
    EXPECT_EQ(k.Enabled, 0);
    EXPECT_EQ(h.out(k), 127);
    k.releaseKnob();
    EXPECT_EQ(k.CurrentStage, 2);
    k.setLock(true);
    k.pressKnob(5 * kKnobTwips + 3, 3, 1, 1);
    k.releaseKnob();
    EXPECT_EQ(k.stageValue(5), 127) << "Ctrl on a locked knob";
    k.pressKnob(5 * kKnobTwips + 3, 3, 1, 0);
    k.dragKnob(5 * kKnobTwips + 300, 172, 1, 0);
    k.releaseKnob();
    EXPECT_EQ(k.stageValue(5), 127) << "a drag on a locked knob";
    EXPECT_EQ(k.headWord(), 16);
    k.stepKnobSet();
    k.setHeadWord(*k.headWord());
    EXPECT_TRUE(k.Lock);
    EXPECT_EQ(k.KnobSet, 1);
    k.PatchStore(*h.engine);
    auto back = readBack(h, "Knob12", body(h, k));
    EXPECT_EQ(static_cast<KnobSequencer&>(*back).stageValue(5), 127);
    expectLayout(h, k);
}

}  // namespace
}  // namespace quillmer::testing
