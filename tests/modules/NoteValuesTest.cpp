#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/midi/NoteValues.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
using Values = std::vector<int>;
}

TEST(Notes, TheChosenRowsCodeGoesOutAtOnceAndPerSnapshot) {
    ModuleHarness h;
    auto& notes = static_cast<Notes&>(h.add("Notes"));
    notes.choose(10);
    EXPECT_EQ(h.out(notes), 24);
    EXPECT_EQ(notes.rowName(), "  4th");
    notes.choose(30);
    EXPECT_EQ(h.out(notes), 126) << "\" Turbo\"";
    notes.choose(16);
    notes.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 1;
    notes.choose(17);
    EXPECT_EQ(h.out(notes), 98) << "a dotted whole is code 98";
    notes.PatchStore(*h.engine);
    h.engine->CurrentSnapshot = 0;
    notes.PatchChange(*h.engine);
    EXPECT_EQ(h.out(notes), 96);
    EXPECT_EQ(notes.rowName(), "  Whl");
}

TEST(XNote, InputsRunInRisingLengthAndAbove29CountAs7) {
    ModuleHarness h;
    auto& x = static_cast<XNote&>(h.add("XNote"));
    int lastPeriod = 0;
    for (int v = 0; v < 30; ++v) {
        h.set(x, 0, v);
        h.ticks(1);
        const int period = DurationReload[h.out(x)];
        EXPECT_GE(period, lastPeriod) << "input " << v;
        lastPeriod = period;
    }
    h.set(x, 0, 30);
    h.ticks(1);
    EXPECT_EQ(h.out(x), 12);
    EXPECT_EQ(x.durationName, "  8th");
}

TEST(XNote, TheNameChangesOnlyWithTheCode) {
    ModuleHarness h;
    auto& x = static_cast<XNote&>(h.add("XNote"));
    h.set(x, 0, 2);
    h.ticks(1);
    EXPECT_EQ(x.durationName, "t 16th");
    h.set(x, 0, 3);  // a dotted 32nd: the same 4 ticks
    h.ticks(1);
    EXPECT_EQ(h.out(x), 4);
    EXPECT_EQ(x.durationName, "t 16th");
}

TEST(Arpeg, ARisingClockCountsDownStepsOnTheBeats) {
    ModuleHarness h;
    auto& arp = static_cast<Arpeg&>(h.add("Arpeg"));
    h.set(arp, 0, 6);
    h.set(arp, 1, 50);  // GateTicks 2: three ticks high
    h.set(arp, 2, 3);
    h.ticks(1);
    h.set(arp, 3, 127);
    const Values expected{0, 0, 0, 0, 0, 3, 3, 3, 0, 0, 0, 2, 2, 2, 0, 0, 0, 1, 1, 1, 0, 0, 0, 0};
    EXPECT_EQ(h.values(arp, 24), expected);
    EXPECT_EQ(h.values(arp, 12), Values(12, 0)) << "a clock held high loads once";
    h.edge(arp, 3);
    EXPECT_EQ(h.values(arp, 5), (Values{0, 0, 0, 3, 3}));
}

TEST(Arpeg, NoteAbove109IsNote6WithAYellowLabel) {
    ModuleHarness h;
    auto& arp = static_cast<Arpeg&>(h.add("Arpeg"));
    h.set(arp, 0, 110);
    h.set(arp, 1, 0);
    h.set(arp, 2, 2);
    h.ticks(1);
    h.set(arp, 3, 127);
    EXPECT_EQ(h.values(arp, 12), (Values{0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(arp.noteLabel, DurationLabel::DurYellow);
    h.set(arp, 0, 6);
    h.ticks(1);
    EXPECT_EQ(arp.noteLabel, DurationLabel::Dur);
}

TEST(Pitch, ShowsANoteNameAndNeverWritesTheBus) {
    ModuleHarness h;
    auto& pitch = static_cast<Pitch&>(h.add("Pitch"));
    h.set(pitch, 0, 64);
    h.ticks(1);
    EXPECT_EQ(pitch.shownValue, 64);
    EXPECT_EQ(pitch.noteCaption, "En : 5");
    h.set(pitch, 0, 127);
    h.ticks(1);
    EXPECT_EQ(pitch.noteCaption, "Gn : 10");
    // The same ticks without the Pitch: not one bus element differs.
    ModuleHarness plain;
    plain.ticks(2);
    const std::vector<uint8_t> with(h.engine->bus.data(), h.engine->bus.data() + kBusSize);
    const std::vector<uint8_t> without(plain.engine->bus.data(), plain.engine->bus.data() + kBusSize);
    EXPECT_EQ(with, without) << "a type without an output owns no bus element";
}
