#include <gtest/gtest.h>

#include <array>

#include "ModuleHarness.h"
#include "modules/sequencers/Steps.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

using Values = std::vector<int>;

Stepper& addStepper(ModuleHarness& h, int duration, int limit) {
    auto& stepper = static_cast<Stepper&>(h.add("Stepper"));
    h.set(stepper, Stepper::kDuration, duration);
    h.set(stepper, Stepper::kLimit, limit);
    return stepper;
}

std::array<uint8_t, 128> fillRow(int first, int stride) {
    std::array<uint8_t, 128> row{};
    for (int i = 0; i < 128; ++i) row[static_cast<size_t>(i)] = static_cast<uint8_t>((first + i * stride) & 127);
    return row;
}

}  // namespace

TEST(Stepper, CountsOnItsDurationAndWrapsAtAnInclusiveLimit) {
    ModuleHarness h;
    Stepper& up = addStepper(h, 2, 3);
    EXPECT_EQ(h.values(up, 8), (Values{1, 1, 2, 2, 3, 3, 0, 0}));
    ModuleHarness h2;
    Stepper& down = addStepper(h2, 2, 3);
    h2.set(down, Stepper::kReverse, 127);
    EXPECT_EQ(h2.values(down, 6), (Values{3, 3, 2, 2, 1, 1}));
}

TEST(Stepper, TurboStepsEveryTickButHoldComesFirst) {
    ModuleHarness h;
    Stepper& stepper = addStepper(h, 126, 127);
    EXPECT_EQ(h.values(stepper, 3), (Values{1, 2, 3}));
    EXPECT_TRUE(stepper.Turbo);
    EXPECT_EQ(stepper.durLabel, DurationLabel::Turbo);
    h.set(stepper, Stepper::kHold, 127);
    EXPECT_EQ(h.values(stepper, 2), (Values{3, 3}));
}

TEST(Stepper, ALimitThatDropsUnderTheCount) {
    ModuleHarness h;
    Stepper& stepper = addStepper(h, 126, 10);
    h.ticks(5);
    h.set(stepper, Stepper::kLimit, 2);
    EXPECT_EQ(h.values(stepper, 2), (Values{0, 1})) << "counting up wraps at once";

    ModuleHarness h2;
    Stepper& down = addStepper(h2, 126, 10);
    h2.ticks(5);
    h2.set(down, Stepper::kLimit, 2);
    h2.set(down, Stepper::kReverse, 127);
    EXPECT_EQ(h2.values(down, 6), (Values{4, 3, 2, 1, 0, 2})) << "counting down runs out, then wraps to the new limit";
}

TEST(Stepper, ResetAndResyncHoldAtTheStart) {
    ModuleHarness h;
    Stepper& stepper = addStepper(h, 126, 127);
    h.ticks(3);
    h.set(stepper, Stepper::kReset, 127);
    h.set(stepper, Stepper::kHold, 127);
    EXPECT_EQ(h.values(stepper, 2), (Values{0, 0})) << "Reset beats Hold";
    h.set(stepper, Stepper::kReset, 0);
    h.set(stepper, Stepper::kHold, 0);
    EXPECT_EQ(h.values(stepper, 2), (Values{1, 2}));
    h.engine->ResyncPending = true;
    EXPECT_EQ(h.values(stepper, 2), (Values{0, 1})) << "held for the tick the flag stands";
}

TEST(Stepper, OutOfRangeDurationsRunAtCodeSixWithAYellowLamp) {
    ModuleHarness h;
    Stepper& stepper = addStepper(h, 115, 127);
    EXPECT_EQ(h.values(stepper, 12), (Values{1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2}));
    EXPECT_EQ(stepper.durLabel, DurationLabel::DurYellow);
    EXPECT_FALSE(stepper.Turbo);
    h.set(stepper, Stepper::kDuration, 24);
    h.ticks(1);
    EXPECT_EQ(stepper.durLabel, DurationLabel::Dur);
}

TEST(Stepper, StoresItsInputsInAnotherOrderThanItsMenuShows) {
    ModuleHarness h;
    auto& stepper = static_cast<Stepper&>(h.add("Stepper"));
    EXPECT_EQ(stepper.storedName(127, Stepper::kLimit), " On (127)") << "a new Limit is on in every snapshot";
    // The second button of the panel is Limit, the fifth stored input.
    ASSERT_EQ(stepper.menuInput(1), Stepper::kLimit);
    EXPECT_EQ(stepper.inputSpec(stepper.menuInput(1)).label, " Limit");
    h.connect(stepper, stepper.menuInput(1), "~   7");
    h.connect(stepper, stepper.menuInput(2), "~   1");  // Reverse
    stepper.PatchStore(*h.engine);
    ByteWriter body;
    stepper.writeBody(body, h.engine->names);
    ByteReader in(body.bytes());
    std::vector<std::string> names;
    for (int k = 0; k < 5; ++k) names.push_back(in.str());
    EXPECT_EQ(names, (std::vector<std::string>{" Off (0)", "~   1", " Off (0)", " Off (0)", "~   7"}));
}

TEST(StepTables, StageReductionIsAndForPowersOfTwoAndModOtherwise) {
    struct Case {
        const char* type;
        int input;
        int stage;
    };
    const Case cases[] = {{"Step2", 127, 1},  {"Step2", 2, 0},    {"Step4", 6, 2},    {"Step8", 13, 5},
                          {"Step12", 127, 7}, {"Step12", 12, 0},  {"Step16", 127, 15}, {"Step24", 127, 7},
                          {"Step24", 48, 0},  {"Step24", 100, 4}, {"Step32", 100, 4}};
    for (const Case& c : cases) {
        ModuleHarness h;
        auto& table = static_cast<StepSequencer&>(h.add(c.type));
        table.UpdateSeq(fillRow(1, 1));  // stage i holds i + 1
        h.set(table, 0, c.input);
        h.ticks(1);
        EXPECT_EQ(table.CurrentStage, c.stage) << c.type << " fed " << c.input;
        EXPECT_EQ(h.out(table), c.stage + 1) << c.type << " fed " << c.input;
    }
}

TEST(StepTables, AClickedStageStaysUntilTheInputChanges) {
    ModuleHarness h;
    auto& table = static_cast<StepSequencer&>(h.add("Step8"));
    table.UpdateSeq(fillRow(0, 10));
    h.set(table, 0, 3);
    h.ticks(1);
    EXPECT_EQ(h.out(table), 30);
    EXPECT_TRUE(table.lampBright(3));
    table.clickStage(5);
    EXPECT_EQ(h.out(table), 50) << "at once, without a tick";
    EXPECT_TRUE(table.lampBright(3)) << "the lamp waits for the next redraw";
    h.ticks(2);
    h.set(table, 0, 3);
    h.ticks(1);
    EXPECT_EQ(h.out(table), 50) << "the same 3 again changes nothing";
    h.set(table, 0, 4);
    h.ticks(1);
    EXPECT_EQ(h.out(table), 40);
    EXPECT_TRUE(table.lampBright(4));
}

TEST(StepTables, StageEditsReachTheBusOnlyForTheCurrentStage) {
    ModuleHarness h;
    auto& table = static_cast<StepSequencer&>(h.add("Step8"));
    h.set(table, 0, 2);
    h.ticks(1);
    table.editStageText(2, "abc");
    EXPECT_EQ(table.stageText(2), "0");
    table.editStageText(2, " 42 ");
    EXPECT_EQ(h.out(table), 42);
    table.editStageText(4, "99");
    EXPECT_EQ(h.out(table), 42) << "stage 4 isn't playing";
    EXPECT_EQ(table.stageValue(4), 99);
    table.stepUpDown(1);
    EXPECT_EQ(h.out(table), 43);
    EXPECT_EQ(table.ShownOutput, 43);
    table.setUpDown(500);
    table.stepUpDown(1);
    EXPECT_EQ(table.upDownValue(), 127);
    table.setUpDown(0);
    table.stepUpDown(-1);
    EXPECT_EQ(h.out(table), 0);
}

TEST(StepTables, ValueBoxesParseLikeTheOtherNumberBoxes) {
    EXPECT_EQ(ParseBusValue("abc"), 0);
    EXPECT_EQ(ParseBusValue(""), 0);
    EXPECT_EQ(ParseBusValue("7x"), 0) << "not a number as a whole";
    EXPECT_EQ(ParseBusValue("200"), 127);
    EXPECT_EQ(ParseBusValue("-5"), 0);
    EXPECT_EQ(ParseBusValue("+5"), 5);
    EXPECT_EQ(ParseBusValue("12.5"), 12);
    EXPECT_EQ(ParseBusValue("13.5"), 14);
    EXPECT_EQ(ParseBusValue("12.51"), 13);
    EXPECT_EQ(ParseBusValue("99999999999999"), 127);
}

TEST(StepTables, RowsArePerSnapshotAndTheStageStaysOnRecall) {
    ModuleHarness h;
    auto& table = static_cast<StepSequencer&>(h.add("Step24"));
    h.engine->SnapshotCount = 3;
    h.set(table, 0, 27);  // stage 3
    h.ticks(1);
    table.UpdateSeq(fillRow(0, 1));
    h.engine->StoreAllPatches();
    h.engine->CurrentSnapshot = 2;
    table.editStageText(3, "77");
    table.editStageText(23, "5");
    h.engine->StoreAllPatches();

    h.engine->CurrentSnapshot = 0;
    h.engine->RecallAllPatches();
    EXPECT_EQ(h.out(table), 3) << "recall sends out at once";
    EXPECT_EQ(table.CurrentStage, 3);
    h.engine->CurrentSnapshot = 2;
    h.engine->RecallAllPatches();
    EXPECT_EQ(h.out(table), 77);
    EXPECT_EQ(table.stageValue(23), 5);
    h.engine->CurrentSnapshot = 1;
    h.engine->RecallAllPatches();
    EXPECT_EQ(h.out(table), 0) << "a snapshot never stored has a row of zeros";
}

TEST(StepTables, UpdateSeqTakesTheFirstNValuesOfTheFillRow) {
    ModuleHarness h;
    auto& table = static_cast<StepSequencer&>(h.add("Step4"));
    table.clickStage(3);
    table.UpdateSeq(fillRow(100, 1));
    EXPECT_EQ(table.stageValue(0), 100);
    EXPECT_EQ(table.stageValue(3), 103);
    EXPECT_EQ(h.out(table), 103);
}
