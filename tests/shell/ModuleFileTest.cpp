#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "engine/FileLayout.h"
#include "modules/midi/NoteOutputs.h"
#include "modules/panels/Chain.h"
#include "shell/AuthorName.h"

#include <unistd.h>

using namespace quillmer;
using namespace quillmer::testing;

namespace {

// A patch of Divs and placeholders with different settings in three snapshots.
void buildPatch(SessionHarness& h) {
    Engine& e = h.session.engine;
    Module& a = h.add("Div");
    Module& b = h.add("Div");
    Module& rand = h.add("Image");  // not built yet: kept as it is
    h.add("MIDIVoice");
    a.setPriority(priority::Late);
    b.Page = 5;
    b.Top = 1200;
    b.Left = 2400;
    rand.Page = 2;
    h.session.snapshots.comboText = "Intro";
    h.connect(b, 0, "1Div-");
    h.connect(b, 1, "~   3");
    h.session.snapshots.StoreNewPatch();
    h.session.snapshots.comboText = "Verse";
    h.connect(b, 1, "1Image-");
    h.connect(a, 0, "~ Turbo");
    h.session.snapshots.StoreNewPatch();
    h.session.snapshots.comboText = "Chorus";
    h.connect(a, 1, " mid (64)");
    h.session.snapshots.StoreNewPatch();
    e.SetNewTempo(97);
    e.showPage(5);
    e.setRun(true);
}

int16_t countAt(const std::vector<uint8_t>& bytes, std::string_view type) {
    const FileSlot& slot = fileSlotOf(*typeIdByName(type));
    return static_cast<int16_t>(bytes[slot.countOffset] | bytes[slot.countOffset + 1u] << 8);
}

}  // namespace

TEST(ModuleFile, AnEmptyPatchIsJustTheHeaderAndStillHoldsTempoAndNames) {
    ScratchDir dir;
    SessionHarness h;
    h.session.engine.SetNewTempo(140);
    ASSERT_EQ(h.save(dir.file("empty.qmp")), "");
    const auto bytes = readBytes(dir.file("empty.qmp"));
    EXPECT_EQ(bytes.size(), 8276u);
    EXPECT_EQ(bytes[0x101], 111);
    EXPECT_EQ(bytes[0x105], 29);
    EXPECT_EQ(bytes[0x18CB], 140);
    EXPECT_EQ(std::string(bytes.begin() + 0x10D, bytes.begin() + 0x10D + 12), "000 AutoSave") << "the save stored slot 0";
}

TEST(ModuleFile, SaveLoadSaveGivesIdenticalBytes) {
    ScratchDir dir;
    SessionHarness first;
    buildPatch(first);
    ASSERT_EQ(first.save(dir.file("a.qmp")), "");
    SessionHarness second;
    ASSERT_EQ(second.load(dir.file("a.qmp")), "");
    ASSERT_EQ(second.save(dir.file("b.qmp")), "");
    const auto a = readBytes(dir.file("a.qmp"));
    const auto b = readBytes(dir.file("b.qmp"));
    EXPECT_EQ(a.size(), b.size());
    EXPECT_TRUE(a == b);

    Engine& e = second.session.engine;
    EXPECT_EQ(e.Tempo(), 97);
    EXPECT_EQ(e.CurrentPage(), 5);
    EXPECT_EQ(e.bus[sysbus::Run], 127);
    EXPECT_EQ(e.SnapshotCount, 3);
    EXPECT_EQ(second.session.snapshots.SnapshotNames[1], "001 Verse");
    Module* b2 = e.findModule("2Div-");
    ASSERT_NE(b2, nullptr);
    EXPECT_EQ(b2->Page, 5);
    EXPECT_EQ(b2->Left, 2400);
    EXPECT_EQ(b2->inputCaption(1, e.names), "1Image-") << "recalled from the current snapshot";
    EXPECT_EQ(second.session.snapshots.SnapshotNames[0], "000 AutoSave") << "saving overwrote slot 0";
    EXPECT_EQ(e.findModule("1Div-")->storedName(1, 1), " Off (0)");
    EXPECT_EQ(e.findModule("1Div-")->storedName(2, 1), " mid (64)");
    EXPECT_EQ(e.findModule("1Image-")->Page, 2);
    EXPECT_EQ(e.findModule("1Div-")->priority(), priority::Late);
}

TEST(ModuleFile, LinksHoldByNameWhenNameSlotsChange) {
    ScratchDir dir;
    SessionHarness h;
    for (int i = 0; i < 3; ++i) h.add("Mult");  // they take the first name slots
    Module& source = h.add("Div");
    Module& reader = h.add("Div");
    h.connect(source, 0, "~ 100");
    h.connect(source, 1, "~   2");
    h.connect(reader, 0, "1Div-");
    h.connect(reader, 1, "~   5");
    const NameSlot slotBefore = source.OutSlot;
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");

    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("p.qmp")), "");
    Engine& e = loaded.session.engine;
    Module* s = e.findModule("1Div-");
    Module* r = e.findModule("2Div-");
    EXPECT_NE(s->OutSlot, slotBefore) << "Div stands before Mult in the file, so it registers first";
    e.StartTimers();
    loaded.timers.advanceByMs(e.TickPeriod());
    EXPECT_EQ(e.bus[r->OutBus], 10);
}

TEST(ModuleFile, FreeSlotsKeepInstanceNumbers) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    Module& middle = h.add("Div");
    h.add("Div");
    h.session.engine.Delete(middle);
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    EXPECT_EQ(countAt(readBytes(dir.file("p.qmp")), "Div"), 3);

    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("p.qmp")), "");
    Engine& e = loaded.session.engine;
    EXPECT_EQ(e.findModule("3Div-")->Index, 2);
    EXPECT_EQ(e.findModule("3Div-")->OutBus, 24 * 128 + 2);
    EXPECT_EQ(loaded.add("Div").Name, "2Div-");
}

TEST(ModuleFile, UnknownInputNamesComeUpOffInEverySnapshot) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    Module& reader = h.add("Div");
    h.connect(reader, 0, "1Div-");
    h.session.snapshots.StoreNewPatch();
    h.session.snapshots.StoreNewPatch();
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    // Rename every connection to "1Div-" (not the module's own name) to one nobody has.
    auto bytes = readBytes(dir.file("p.qmp"));
    const std::string from = "1Div-", to = "7Xyz-";
    bool first = true;
    for (size_t i = 0; i + from.size() <= bytes.size(); ++i) {
        if (std::equal(from.begin(), from.end(), bytes.begin() + static_cast<long>(i))) {
            if (first) {
                first = false;
                continue;
            }
            std::copy(to.begin(), to.end(), bytes.begin() + static_cast<long>(i));
        }
    }
    writeBytes(dir.file("p.qmp"), bytes);

    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("p.qmp")), "");
    Module* r = loaded.session.engine.findModule("2Div-");
    for (int s = 0; s < loaded.session.engine.SnapshotCount; ++s) {
        EXPECT_EQ(r->storedName(s, 0), " Off (0)") << s;
        EXPECT_EQ(r->stored(s, 0).position, 0) << s;
    }
    EXPECT_EQ(r->InputBus[0], sysbus::Off);
}

TEST(ModuleFile, OlderAndNegativeVersionsLoadAndThirtyIsRefused) {
    ScratchDir dir;
    SessionHarness h;
    buildPatch(h);
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    auto bytes = readBytes(dir.file("p.qmp"));
    bytes[0x105] = 0;
    writeBytes(dir.file("v0.qmp"), bytes);
    std::fill_n(bytes.begin() + 0x105, 4, uint8_t{0xFF});  // -1
    writeBytes(dir.file("minus.qmp"), bytes);
    std::fill_n(bytes.begin() + 0x105, 4, uint8_t{0});
    bytes[0x105] = 30;
    writeBytes(dir.file("v30.qmp"), bytes);
    bytes[0x105] = 29;
    bytes[0x101] = 112;
    writeBytes(dir.file("magic.qmp"), bytes);

    SessionHarness loaded;
    EXPECT_EQ(loaded.load(dir.file("v0.qmp")), "");
    EXPECT_EQ(loaded.moduleCount(), 4u);
    EXPECT_EQ(loaded.load(dir.file("minus.qmp")), "") << "only a version above 29 is refused";
    EXPECT_EQ(loaded.moduleCount(), 4u);
    EXPECT_EQ(loaded.load(dir.file("v30.qmp")), "Incompatible File: " + dir.file("v30.qmp"));
    EXPECT_EQ(loaded.moduleCount(), 0u);
    EXPECT_EQ(loaded.session.engine.names.sortedCount(), 159u);
    EXPECT_EQ(loaded.load(dir.file("magic.qmp")), "Incompatible File: " + dir.file("magic.qmp"));
    EXPECT_EQ(loaded.load(dir.file("missing.qmp")), "Unable to Load: " + dir.file("missing.qmp"));
}

TEST(ModuleFile, RecordsInARetiredSlotAreParsedAndDropped) {
    ScratchDir dir;
    SessionHarness only;
    only.add("Div");
    ASSERT_EQ(only.save(dir.file("div.qmp")), "");
    const size_t divRecord = readBytes(dir.file("div.qmp")).size() - kHeaderSize;

    // A Div (slot 8) and a MIDIVoice (slot 63), with a record of retired slot 9 between them.
    SessionHarness h;
    h.add("Div");
    auto& voice = static_cast<ChannelModule&>(h.add("MIDIVoice"));
    voice.setChanPort(h.session.engine, 37);
    voice.Page = 6;
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    auto bytes = readBytes(dir.file("p.qmp"));
    const FileSlot& retired = fileOrder()[9];
    ASSERT_TRUE(retired.retired());
    bytes[retired.countOffset] = 2;
    auto records = blankRecordBytes(parseLayout(retired.layout));
    records[18] = 3;  // a name of three characters: the records need not be blank
    records.insert(records.begin() + 20, {'x', 'y', 'z'});
    records.insert(records.end(), records.begin(), records.end());
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(kHeaderSize + divRecord), records.begin(), records.end());
    writeBytes(dir.file("r.qmp"), bytes);

    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("r.qmp")), "");
    EXPECT_EQ(loaded.moduleCount(), 2u);
    EXPECT_NE(loaded.session.engine.findModule("1Div-"), nullptr);
    auto* read = static_cast<ChannelModule*>(loaded.session.engine.findModule(voice.Name));
    ASSERT_NE(read, nullptr) << "the record after the retired ones is read from the right place";
    EXPECT_EQ(read->ChanPort, 37);
    EXPECT_EQ(read->Page, 6);
    // Saved again, the retired records are gone.
    ASSERT_EQ(loaded.save(dir.file("again.qmp")), "");
    EXPECT_EQ(readBytes(dir.file("again.qmp")).size(), readBytes(dir.file("p.qmp")).size());
}

TEST(ModuleFile, AShortPatchOverALongFileKeepsTheOldTail) {
    ScratchDir dir;
    SessionHarness big;
    for (int i = 0; i < 20; ++i) big.add("Div");
    ASSERT_EQ(big.save(dir.file("p.qmp")), "");
    const size_t bigSize = readBytes(dir.file("p.qmp")).size();
    SessionHarness small;
    small.add("Div");
    ASSERT_EQ(small.save(dir.file("p.qmp")), "");
    EXPECT_EQ(readBytes(dir.file("p.qmp")).size(), bigSize);
    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("p.qmp")), "");
    EXPECT_EQ(loaded.moduleCount(), 1u);
}

TEST(ModuleFile, AFailedSaveLeavesTheOldFileWhole) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    const auto before = readBytes(dir.file("p.qmp"));
    h.add("Div");
    // Folders no one can save into, root included: one missing, one that is the old file.
    for (const std::string& target : {dir.file("no/such/folder/p.qmp"), dir.file("p.qmp/inside.qmp")}) {
        const std::string error = h.save(target);
        EXPECT_EQ(error.rfind("Unable to save " + target + ": ", 0), 0u) << error;
        EXPECT_TRUE(h.session.ModifiedMark) << "the patch still needs saving";
    }
    EXPECT_EQ(readBytes(dir.file("p.qmp")), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), {}), 1) << "no temporary left behind";
}

// Damaged files never crash: each load either works or fails with a message and leaves an
// empty patch.
TEST(ModuleFile, TruncatedAndBitFlippedFilesFailCleanly) {
    ScratchDir dir;
    SessionHarness h;
    buildPatch(h);
    Module& chain = h.add("Chain");
    static_cast<Chain&>(chain).fileName = "next.qmp";
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    const auto good = readBytes(dir.file("p.qmp"));
    std::mt19937 random(11);
    SessionHarness loaded;
    for (int round = 0; round < 150; ++round) {
        std::vector<uint8_t> bad = good;
        if (round % 2 == 0) {
            bad.resize(random() % good.size());
        } else {
            for (int flips = 0; flips < 1 + round % 7; ++flips) {
                const size_t at = round % 4 == 1 ? random() % bad.size() : kHeaderSize + random() % (bad.size() - kHeaderSize);
                bad[at] ^= static_cast<uint8_t>(1u << (random() % 8));
            }
        }
        writeBytes(dir.file("bad.qmp"), bad);
        const std::string error = loaded.load(dir.file("bad.qmp"));
        if (!error.empty()) {
            EXPECT_TRUE(error.rfind("Unable to Load: ", 0) == 0 || error.rfind("Incompatible File: ", 0) == 0) << error;
            EXPECT_EQ(loaded.moduleCount(), 0u);
        }
        auto held = loaded.session.engine.lock();
        for (int t = 0; t < 3; ++t) loaded.session.engine.tick();
    }
}

TEST(AuthorCaption, NamesAndTheTransform) {
    EXPECT_EQ(transformName(transformName("Ada Lovelace")), "Ada Lovelace");
    EXPECT_EQ(transformName("Ada").size(), 3u);
    EXPECT_NE(transformName("Ada"), "Ada");
    EXPECT_EQ(BuildAuthorCaption("", "", 10), "");
    EXPECT_EQ(BuildAuthorCaption("Ada", "", 10), " (Auth: Ada)");
    EXPECT_EQ(BuildAuthorCaption("Ada", "Ada", 10), " (Auth: Ada)");
    EXPECT_EQ(BuildAuthorCaption("Ada", "Bo", 10), " (Mod: Bo  Auth: Ada)");
    EXPECT_EQ(BuildAuthorCaption("Anonymous", "Bo", 10), " (Auth: Bo)");
    EXPECT_EQ(BuildAuthorCaption(transformName("Ada"), transformName("Bo"), 301), " (Mod: Bo  Auth: Ada)");
    EXPECT_EQ(BuildAuthorCaption("Ada", transformName("Bo"), 302), " (Mod: Bo  Auth: Ada)");
}

TEST(Session, AuthorSurvivesAndModifierIsWhoSavedLast) {
    ScratchDir dir;
    SessionHarness first;
    first.session.userName = "Ada";
    ASSERT_EQ(first.save(dir.file("p.qmp")), "");
    SessionHarness second;
    second.session.userName = "Bo";
    ASSERT_EQ(second.load(dir.file("p.qmp")), "");
    EXPECT_EQ(second.session.author, "Ada");
    ASSERT_EQ(second.save(dir.file("p.qmp")), "");
    SessionHarness third;
    ASSERT_EQ(third.load(dir.file("p.qmp")), "");
    third.session.CurrentFileName = dir.file("p.qmp");
    EXPECT_EQ(third.session.caption(), "p.qmp (Mod: Bo  Auth: Ada)  Quillmer");
}

TEST(SideFiles, ATuningFileBesideThePatchLoadsWithItAndTheDefaultComesBack) {
    ScratchDir dir;
    SessionHarness h;
    auto held = h.session.engine.lock();
    Engine& e = h.session.engine;
    ASSERT_EQ(e.toneRow(0)[127], 11) << "the shipped default: chromatic row 0";
    ASSERT_EQ(h.save(dir.file("song.qmp")), "");
    ASSERT_EQ(h.save(dir.file("plain.qmp")), "");
    ToneTables own;
    own.rows.row(0)[127] = 4;  // five steps
    own.names.setName(0, "Song Scale");
    ASSERT_TRUE(SaveToneTables(dir.file("song.pbt"), own));

    std::string error;
    ASSERT_TRUE(h.session.OpenFile(dir.file("song.qmp"), error)) << error;
    EXPECT_TRUE(h.session.usesOwnToneTables());
    EXPECT_EQ(e.toneRow(0)[127], 4);
    EXPECT_EQ(h.session.tones.names.name(0), "Song Scale");
    ASSERT_TRUE(h.session.OpenFile(dir.file("plain.qmp"), error)) << error;
    EXPECT_FALSE(h.session.usesOwnToneTables());
    EXPECT_EQ(e.toneRow(0)[127], 11);
}
