#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/midi/NoteValues.h"
#include "modules/sequencers/Clocks.h"
#include "modules/sequencers/Steps.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

const std::vector<std::string> kTypes{"Clock", "Free", "Sync", "Counter", "Pulse", "GHold", "Kicker",
                                      "Tempox", "Stepper", "Step2", "Step4", "Step8", "Step12", "Step16",
                                      "Step24", "Step32", "Notes", "XNote", "Arpeg", "Pitch"};

UsualForm layoutOf(std::string_view type) {
    const FileSlot& slot = fileSlotOf(*typeIdByName(type));
    return *usualForm(parseLayout(slot.layout));
}

std::vector<uint8_t> fields(const Module& m) {
    ByteWriter out;
    m.writeFields(out);
    return out.bytes();
}

}  // namespace

TEST(RecordFields, EachTypeWritesExactlyItsLayoutAfterTheInputIds) {
    ModuleHarness h;
    for (const std::string& type : kTypes) {
        Module& m = h.add(type);
        const UsualForm form = layoutOf(type);
        EXPECT_EQ(form.strings, 128u * static_cast<uint32_t>(m.inputCount())) << type;
        EXPECT_EQ(fields(m).size(), form.bytes - 2 * form.strings) << type;
    }
}

TEST(RecordFields, EveryByteComesBackAsItWasRead) {
    ModuleHarness h;
    for (const std::string& type : kTypes) {
        Module& m = h.add(type);
        // Fields of any content, the bytes nothing reads included.
        std::vector<uint8_t> pattern(fields(m).size());
        for (size_t i = 0; i < pattern.size(); ++i) pattern[i] = static_cast<uint8_t>(i * 37 + 11);
        ByteReader in(pattern);
        m.readFields(in);
        EXPECT_EQ(fields(m), pattern) << type;
    }
}

TEST(RecordFields, SettingsOfSeveralSnapshotsSurviveWriteAndRead) {
    ModuleHarness h;
    auto& step = static_cast<StepSequencer&>(h.add("Step12"));
    auto& notes = static_cast<Notes&>(h.add("Notes"));
    auto& hold = static_cast<GHold&>(h.add("GHold"));
    auto& stepper = static_cast<Stepper&>(h.add("Stepper"));
    Module& clock = h.add("Clock");
    for (int s : {0, 5, 127}) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        step.editStageText(s % 12, std::to_string(s % 100 + 1));
        notes.choose(s % 31);
        hold.turbo = s == 5;
        h.set(stepper, Stepper::kLimit, s % 16);
        h.connect(clock, 0, "1Step12-");
        h.set(clock, 1, s / 2);
        h.engine->StoreAllPatches();
    }
    for (Module* m : std::initializer_list<Module*>{&step, &notes, &hold, &stepper, &clock}) {
        const std::vector<uint8_t> first = body(h, *m);
        const std::unique_ptr<Module> copy = readBack(h, typeInfo(m->type()).type, first);
        EXPECT_EQ(body(h, *copy), first) << m->Name;
    }

    // And they recall as they were stored.
    const std::unique_ptr<Module> stepCopy = readBack(h, "Step12", body(h, step));
    const std::unique_ptr<Module> notesCopy = readBack(h, "Notes", body(h, notes));
    const std::unique_ptr<Module> holdCopy = readBack(h, "GHold", body(h, hold));
    h.engine->CurrentSnapshot = 5;
    for (Module* m : {stepCopy.get(), notesCopy.get(), holdCopy.get()}) m->attach(*h.engine, 3);
    for (Module* m : {stepCopy.get(), notesCopy.get(), holdCopy.get()}) m->PatchChange(*h.engine);
    EXPECT_EQ(static_cast<StepSequencer&>(*stepCopy).stageValue(5), 6);
    EXPECT_EQ(static_cast<StepSequencer&>(*stepCopy).stageValue(0), 1) << "kept from snapshot 0's edit";
    EXPECT_EQ(static_cast<Notes&>(*notesCopy).row(), 5);
    EXPECT_TRUE(static_cast<GHold&>(*holdCopy).turbo);
    EXPECT_EQ(stepper.storedName(127, Stepper::kLimit), "~  15");
}
