// The records of the small processors: exact sizes of the file layout, every byte back as
// it was read, and settings of several snapshots through write, read and recall.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/processors/Bitwise.h"
#include "modules/processors/Memory.h"
#include "modules/processors/Scaling.h"
#include "modules/processors/Selection.h"
#include "modules/processors/Sums.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

const std::vector<std::string> kTypes{
    "Add",     "Add2",    "AddDiv", "Minus",   "Carry",   "Mult",  "MulAdd", "MulDiv", "Modu",   "Percent",
    "Scaler",  "Level",   "Octave", "Bounds",  "Mixer",   "Unity", "Invert", "Mask",   "Shift",  "Bits",
    "Diff",    "LogiAND", "LogiOR", "LogiXOR", "LogiEQ0", "LogiNE0", "Test", "Latest", "Tally",  "HiLo",
    "Accum",   "Relay2",  "Selct",  "SelOut",  "Flip",    "Sample", "Delay", "DLTap",  "Slew",   "T127"};

}  // namespace

TEST(ProcessorRecords, EveryTypeIsBuiltAndABlankBodyComesBackAtItsLayoutsSize) {
    ModuleHarness h;
    for (const std::string& type : kTypes) {
        const ModuleTypeId id = *typeIdByName(type);
        ASSERT_TRUE(h.registry.isBuilt(id)) << type;
        const UsualForm form = *usualForm(parseLayout(fileSlotOf(id).layout));
        Module& m = h.add(type);
        EXPECT_FALSE(m.isPlaceholder()) << type;
        if (type != "T127") {
            EXPECT_EQ(form.strings, 128u * static_cast<uint32_t>(m.inputCount())) << type;
        }
        // Empty names, zero bytes: what a file's blank record holds.
        const std::vector<uint8_t> blank(2 * form.strings + form.bytes, 0);
        const std::unique_ptr<Module> copy = readBack(h, type, blank);
        EXPECT_EQ(body(h, *copy), blank) << type;
    }
}

TEST(ProcessorRecords, EveryByteComesBackAsItWasRead) {
    ModuleHarness h;
    for (const std::string& type : kTypes) {
        const std::unique_ptr<Module> m = h.registry.make(*typeIdByName(type));
        ByteWriter out;
        m->writeFields(out);
        std::vector<uint8_t> pattern(out.bytes().size());
        for (size_t i = 0; i < pattern.size(); ++i) pattern[i] = static_cast<uint8_t>(i * 37 + 11);
        ByteReader in(pattern);
        m->readFields(in);
        ByteWriter again;
        m->writeFields(again);
        EXPECT_EQ(again.bytes(), pattern) << type;
        // A recall and a store of an unedited snapshot change no byte either.
        Module& placed = h.add(type);
        ByteReader in2(pattern);
        placed.readFields(in2);
        h.engine->CurrentSnapshot = 3;
        placed.PatchChange(*h.engine);
        placed.PatchStore(*h.engine);
        ByteWriter third;
        placed.writeFields(third);
        EXPECT_EQ(third.bytes(), pattern) << type;
    }
}

TEST(ProcessorRecords, SettingsOfSeveralSnapshotsSurviveWriteReadAndRecall) {
    ModuleHarness h;
    auto& level = static_cast<Level&>(h.add("Level"));
    auto& mixer = static_cast<Mixer&>(h.add("Mixer"));
    auto& mask = static_cast<Mask&>(h.add("Mask"));
    auto& shift = static_cast<Shift&>(h.add("Shift"));
    auto& addDiv = static_cast<AddDiv&>(h.add("AddDiv"));
    auto& test = static_cast<quillmer::Test&>(h.add("Test"));
    auto& delay = static_cast<Delay&>(h.add("Delay"));
    auto& accum = static_cast<Accum&>(h.add("Accum"));
    auto& carry = static_cast<Carry&>(h.add("Carry"));
    auto& selOut = static_cast<SelOut&>(h.add("SelOut"));
    const std::vector<int> snapshots{0, 5, 127};
    for (int s : snapshots) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        level.setWordSetting(LevelOp::kLevel, s);
        level.setWordSetting(LevelOp::kOffset, -s / 2);
        mixer.setByteSetting(MixerOp::kMix, s % 100);
        mask.setByteSetting(0, s & 127);
        shift.setFlagSetting(ShiftOp::kRotate, s == 5);
        addDiv.setWordSetting(AddDivOp::kNegate, s == 127 ? 1 : 0);
        test.chooseTest(s % 15);
        delay.setTurbo(s != 0);
        accum.setNoAutoTurn(s == 5);
        carry.chooseMaster(s);
        selOut.chooseMaster(s / 2);
        selOut.chooseChannel(s % 23);
        h.set(level, 0, s);
        h.engine->StoreAllPatches();
    }
    std::vector<std::unique_ptr<Module>> copies;
    for (Module* m : std::initializer_list<Module*>{&level, &mixer, &mask, &shift, &addDiv, &test, &delay, &accum,
                                                    &carry, &selOut}) {
        const std::vector<uint8_t> first = body(h, *m);
        copies.push_back(readBack(h, typeInfo(m->type()).type, first));
        EXPECT_EQ(body(h, *copies.back()), first) << m->Name;
        copies.back()->attach(*h.engine, static_cast<int16_t>(100 + copies.size()));
    }
    for (int s : snapshots) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        for (auto& c : copies) c->PatchChange(*h.engine);
        EXPECT_EQ(static_cast<Level&>(*copies[0]).wordSetting(LevelOp::kLevel), s);
        EXPECT_EQ(static_cast<Level&>(*copies[0]).wordSetting(LevelOp::kOffset), -s / 2);
        EXPECT_EQ(static_cast<Mixer&>(*copies[1]).byteSetting(MixerOp::kMix), s % 100);
        EXPECT_EQ(static_cast<Mixer&>(*copies[1]).byteSetting(0), 100) << "an unedited slider";
        EXPECT_EQ(static_cast<Mask&>(*copies[2]).byteSetting(0), s & 127);
        EXPECT_EQ(static_cast<Shift&>(*copies[3]).byteSetting(ShiftOp::kRotate) != 0, s == 5);
        EXPECT_EQ(static_cast<AddDiv&>(*copies[4]).wordSetting(AddDivOp::kNegate), s == 127 ? 1 : 0);
        EXPECT_EQ(static_cast<quillmer::Test&>(*copies[5]).test(), s % 15);
        EXPECT_EQ(static_cast<Delay&>(*copies[6]).turbo(), s != 0);
        EXPECT_EQ(static_cast<Accum&>(*copies[7]).noAutoTurn(), s == 5);
        EXPECT_EQ(static_cast<Carry&>(*copies[8]).masterIndex(), s);
        EXPECT_EQ(static_cast<SelOut&>(*copies[9]).masterIndex(), s / 2);
        EXPECT_EQ(static_cast<SelOut&>(*copies[9]).channelRow(), s % 23);
        EXPECT_EQ(copies[0]->storedName(s, 0), ModuleHarness::constant(s)) << "inputs of the snapshot too";
    }
}

TEST(ProcessorRecords, ARecalledSettingIsComputedWithAtOnce) {
    ModuleHarness h;
    auto& mask = static_cast<Mask&>(h.add("Mask"));
    h.set(mask, 0, 127);
    mask.setByteSetting(0, 0x0F);
    h.engine->StoreAllPatches();
    h.engine->CurrentSnapshot = 1;
    mask.setByteSetting(0, 0x70);
    h.engine->StoreAllPatches();
    h.ticks(1);
    EXPECT_EQ(h.out(mask), 0x70);
    h.engine->CurrentSnapshot = 0;
    h.engine->RecallAllPatches();
    h.ticks(1);
    EXPECT_EQ(h.out(mask), 0x0F) << "same inputs, another setting: computed again";
}

TEST(ProcessorRecords, EveryTypesInputsOfSeveralSnapshotsComeBack) {
    ModuleHarness h;
    std::vector<Module*> placed;
    for (const std::string& type : kTypes) placed.push_back(&h.add(type));
    for (int s : {0, 5, 127}) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        for (Module* m : placed)
            for (int k = 0; k < m->inputCount(); ++k) h.set(*m, k, (s + 3 * k) % 128);
        h.engine->StoreAllPatches();
    }
    for (Module* m : placed) {
        const std::string_view type = typeInfo(m->type()).type;
        const std::vector<uint8_t> first = body(h, *m);
        const std::unique_ptr<Module> copy = readBack(h, type, first);
        EXPECT_EQ(body(h, *copy), first) << type;
        if (type == "T127") continue;  // its record holds no input names
        copy->resolveStoredNames(h.engine->names, kSnapshotCount);
        for (int s : {0, 5, 127})
            for (int k = 0; k < copy->inputCount(); ++k)
                EXPECT_EQ(h.engine->names.sortedName(copy->stored(s, k).position), ModuleHarness::constant((s + 3 * k) % 128))
                    << type << " snapshot " << s << " input " << k;
    }
}
