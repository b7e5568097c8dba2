// A whole patch, Clock -> Stepper -> Step8 -> MIDIKey, played for several bars: the notes,
// their times, a stop in the middle of a note and a run that starts with the gate high.

#include <gtest/gtest.h>

#include "../engine/FakeDevices.h"
#include "../engine/Harness.h"
#include "modules/sequencers/Steps.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

constexpr int kTick = 21;  // ms at tempo 120
const std::array<uint8_t, 8> kStages{60, 62, 64, 65, 67, 69, 71, 72};

struct Note {
    bool on;
    int note;
    int64_t tick;  // when it went out, in ticks from the start
};

struct WholePatch : Harness {
    WholePatch() : Harness(std::vector<std::string>{}) {
        engine->ports.attachOutput(0, std::make_unique<FakeOutput>("Synth", timers, &sent));
        clock = &add("Clock");
        connect(*clock, 0, "~  12");  // an eighth
        connect(*clock, 1, "~  50");  // half of it on
        stepper = &add("Stepper");
        connect(*stepper, 0, "~  12");
        connect(*stepper, 4, "~   7");  // Limit: eight stages
        Module& steps = add("Step8");
        connect(steps, 0, stepper->Name);
        static_cast<StepSequencer&>(steps).UpdateSeq(kStages);
        Module& key = add("MIDIKey");
        connect(key, 0, clock->Name);
        connect(key, 1, steps.Name);
    }
    std::vector<Note> notes() const {
        std::vector<Note> out;
        for (const SentMessage& m : sent) {
            const int kind = m.bytes[0] & 0xF0;
            if (kind == 0x90 || kind == 0x80) out.push_back({kind == 0x90, m.bytes[1], m.atMicros / 1000 / kTick});
        }
        return out;
    }
    Module* clock = nullptr;
    Module* stepper = nullptr;
    std::vector<SentMessage> sent;
};

}  // namespace

TEST(WholePatch, EighthNotesWalkTheStagesBarAfterBar) {
    WholePatch p;
    p.engine->StartTimers();
    p.ticks(4 * 96);
    auto notes = p.notes();
    // The gate is high from the first tick, but a note waits for the gate to have been low.
    // Its first fall releases the module's resting note, 64, which never sounded.
    ASSERT_FALSE(notes.empty());
    EXPECT_FALSE(notes.front().on);
    EXPECT_EQ(notes.front().note, 64);
    EXPECT_EQ(notes.front().tick, 7);
    notes.erase(notes.begin());
    ASSERT_EQ(notes.size(), 2u * 31u);
    for (int i = 0; i < 31; ++i) {
        const Note& on = notes[2u * static_cast<size_t>(i)];
        const Note& off = notes[2u * static_cast<size_t>(i) + 1];
        const int64_t tick = 13 + 12 * i;  // ticks count from 1
        EXPECT_TRUE(on.on);
        EXPECT_EQ(on.tick, tick) << i;
        EXPECT_EQ(on.note, kStages[static_cast<size_t>(i + 2) % 8]) << "the count is 1 on the first tick";
        EXPECT_FALSE(off.on);
        EXPECT_EQ(off.note, on.note);
        EXPECT_EQ(off.tick, tick + 6) << "six ticks on: half of an eighth";
    }
}

TEST(WholePatch, AStopEndsTheSoundingNoteOnTheLastTickAndARunStartsWithTheGateHigh) {
    WholePatch p;
    p.engine->StartTimers();
    p.ticks(15);  // a note began on tick 13
    p.sent.clear();
    p.engine->StopTimers();
    auto notes = p.notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_FALSE(notes[0].on);
    EXPECT_EQ(notes[0].note, kStages[2]);
    p.timers.advanceByMs(500);
    EXPECT_TRUE(p.notes().size() == 1u) << "nothing while stopped";

    // Run pressed: the first tick sounds at once although the gate never went low.
    p.sent.clear();
    p.engine->setRun(true);
    p.engine->StartTimers();
    const int64_t start = p.timers.nowMicros();
    p.ticks(1);
    notes = p.notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_TRUE(notes[0].on);
    EXPECT_EQ(p.sent.back().atMicros - start, kTick * 1000);
    EXPECT_EQ(notes[0].note, kStages[(2 + 1) % 8]) << "the Stepper counts on from where it stood";
}
