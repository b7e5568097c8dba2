#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <vector>

#include "tables/FillState.h"

using namespace quillmer;
namespace fs = std::filesystem;

namespace {

std::vector<uint8_t> ramp(int n, int first = 0) {
    std::vector<uint8_t> v(static_cast<size_t>(n));
    std::iota(v.begin(), v.end(), static_cast<uint8_t>(first));
    return v;
}

std::vector<int> head(const Row& row, int n) { return {row.begin(), row.begin() + n}; }
using V = std::vector<int>;

struct TempDir {
    fs::path path = fs::temp_directory_path() / ("quillmer-fill-" + std::to_string(::getpid()));
    TempDir() { fs::create_directories(path); }
    ~TempDir() { fs::remove_all(path); }
    std::string file(const char* name) const { return (path / name).string(); }
};

}  // namespace

TEST(FillState, OpeningSetsTheKnobsFromTheCallerAndCancelRestores) {
    FillState s;
    s.hold.fill(99);
    s.open(ramp(8, 10), 7, 36);
    EXPECT_EQ(head(s.hold, 9), (V{10, 11, 12, 13, 14, 15, 16, 17, 99})) << "the rest of the row stays";
    EXPECT_EQ(s.knobs.start, 0);
    EXPECT_EQ(s.knobs.end, 7);
    EXPECT_EQ(s.knobs.low, 0);
    EXPECT_EQ(s.knobs.high, 36);
    EXPECT_EQ(s.knobs.scale, 36);
    // Twenty operations, then a close without OK: all taken back.
    for (int i = 0; i < 20; ++i) s.command(i % 2 ? fillcmd::Rand : fillcmd::Revrs);
    int sent = 0;
    EXPECT_TRUE(s.close([&] {
        ++sent;
        EXPECT_EQ(s.knobs.scale, 36) << "the caller gets its own scale back";
        EXPECT_EQ(head(s.hold, 8), (V{10, 11, 12, 13, 14, 15, 16, 17}));
    }));
    EXPECT_EQ(sent, 1);
    EXPECT_EQ(s.knobs.scale, 0) << "the scale is the caller's, cleared on closing";

    // Without a scale of its own the caller gets 127; OK keeps the changes.
    s.open(ramp(4), 3);
    EXPECT_EQ(s.knobs.scale, 127);
    s.command(fillcmd::Erase);
    s.accept();
    EXPECT_FALSE(s.close([&] { ++sent; }));
    EXPECT_EQ(sent, 1);
    EXPECT_EQ(head(s.hold, 4), (V{0, 0, 0, 0}));
}

TEST(FillState, UndoAndRedoWalkTheRingBothWays) {
    FillState s;
    s.open(ramp(4, 1), 3);
    EXPECT_FALSE(s.canUndo());
    s.command(fillcmd::Revrs);                 // 4 3 2 1
    s.knobs.low = 10;
    s.command(fillcmd::Add);                   // 14 13 12 11
    s.command(fillcmd::Erase);                 // 0 0 0 0
    EXPECT_EQ(s.undoCount(), 3);
    EXPECT_TRUE(s.command(fillcmd::Undo));
    EXPECT_TRUE(s.command(fillcmd::Undo));
    EXPECT_EQ(head(s.hold, 4), (V{4, 3, 2, 1}));
    EXPECT_EQ(s.redoCount(), 2);
    EXPECT_TRUE(s.command(fillcmd::Redo));
    EXPECT_EQ(head(s.hold, 4), (V{14, 13, 12, 11}));
    EXPECT_TRUE(s.command(fillcmd::Redo));
    EXPECT_EQ(head(s.hold, 4), (V{0, 0, 0, 0}));
    EXPECT_FALSE(s.command(fillcmd::Redo)) << "nothing left to redo";
    // A new operation after an undo drops what could have been redone.
    s.command(fillcmd::Undo);
    s.command(fillcmd::Revrs);
    EXPECT_FALSE(s.canRedo());
    EXPECT_EQ(head(s.hold, 4), (V{11, 12, 13, 14}));
    s.command(fillcmd::Undo);
    s.command(fillcmd::Undo);
    s.command(fillcmd::Undo);
    EXPECT_EQ(head(s.hold, 4), (V{1, 2, 3, 4}));
    EXPECT_FALSE(s.command(fillcmd::Undo));
}

TEST(FillState, TheRingHoldsSixtyThreeStepsAndWrapsCleanly) {
    FillState s;
    s.open(ramp(1), 0);
    for (int i = 1; i <= 100; ++i) {
        s.hold[0] = static_cast<uint8_t>(i - 1);
        s.push();
        s.hold[0] = static_cast<uint8_t>(i);
    }
    EXPECT_EQ(s.undoCount(), 63);
    int undone = 0;
    while (s.undo()) ++undone;
    EXPECT_EQ(undone, 63);
    EXPECT_EQ(s.hold[0], 100 - 63);
    while (s.redo()) {}
    EXPECT_EQ(s.hold[0], 100);
}

TEST(FillState, CommandsThatDoNotPushAndNormOnZerosThatDoes) {
    FillState s;
    s.open(ramp(8), 7);
    s.command(fillcmd::Copy);
    s.command(fillcmd::Help);
    s.command(fillcmd::OK);
    s.command(11);
    s.command(29);
    EXPECT_EQ(s.undoCount(), 0);
    s.command(fillcmd::Erase);
    const int before = s.undoCount();
    s.knobs.low = 10;
    s.knobs.high = 100;
    s.command(fillcmd::Norm);
    EXPECT_EQ(s.undoCount(), before + 1) << "an all-zero range changes nothing but still costs a step";
    EXPECT_EQ(head(s.hold, 3), (V{0, 0, 0}));
    // Paste takes the copy made before the erase.
    s.knobs.start = 2;
    s.knobs.end = 4;
    s.command(fillcmd::Paste);
    EXPECT_EQ(head(s.hold, 6), (V{0, 0, 0, 1, 2, 0}));
    s.command(fillcmd::Restore);
    EXPECT_EQ(head(s.hold, 8), (V{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(FillState, ReZeroBringsBackTheZerosOfTheStepBefore) {
    FillState s;
    s.open(std::vector<uint8_t>{0, 5, 0, 6}, 3);
    EXPECT_FALSE(s.command(fillcmd::ReZero)) << "no step before";
    s.knobs.low = 20;
    s.command(fillcmd::Add);  // 20 25 20 26
    s.knobs.start = 0;
    s.knobs.end = 2;
    s.command(fillcmd::ReZero);
    EXPECT_EQ(head(s.hold, 4), (V{0, 25, 0, 26})) << "place 3 is outside the range";
    s.command(fillcmd::Undo);
    EXPECT_EQ(head(s.hold, 4), (V{20, 25, 20, 26}));
    s.command(fillcmd::Undo);
    EXPECT_EQ(head(s.hold, 4), (V{0, 5, 0, 6}));
}

TEST(FillState, BuffersSwitchUndoAndSurviveAReopen) {
    FillState s;
    s.open(ramp(4, 1), 3);                      // buffer 0 in use: 1 2 3 4
    s.selectBuffer(2);                          // buffer 2 is empty
    EXPECT_EQ(s.bufferCurrent, 2);
    EXPECT_EQ(head(s.hold, 4), (V{0, 0, 0, 0}));
    s.command(fillcmd::Undo);                   // undoes the switch
    EXPECT_EQ(s.bufferCurrent, 0);
    EXPECT_EQ(head(s.hold, 4), (V{1, 2, 3, 4}));
    s.command(fillcmd::Redo);
    EXPECT_EQ(s.bufferCurrent, 2);
    EXPECT_EQ(head(s.hold, 4), (V{0, 0, 0, 0}));

    s.hold[1] = 9;
    EXPECT_TRUE(s.mergeBuffer());               // zeros take buffer 0's values
    EXPECT_EQ(head(s.hold, 4), (V{1, 9, 3, 4}));
    s.selectBuffer(3);
    s.accept();
    s.close();

    // The buffers are there at the next opening, whoever opens the dialog.
    s.open(ramp(4, 50), 3);
    s.selectBuffer(2);
    EXPECT_EQ(head(s.hold, 4), (V{1, 9, 3, 4}));
    s.selectBuffer(3);
    EXPECT_EQ(head(s.hold, 4), (V{50, 51, 52, 53})) << "what was open when it switched";
    EXPECT_FALSE([&] {
        s.bufferPrevious = s.bufferCurrent;
        return s.mergeBuffer();
    }());
}

TEST(FillState, DrawingAndShiftingAreUndoable) {
    FillState s;
    s.open(ramp(8), 7);
    s.beginDrawing();
    s.setStage(3, 200);
    s.setStage(20, 50);  // past the caller's last stage: the last one
    EXPECT_EQ(s.hold[3], 127);
    EXPECT_EQ(s.hold[7], 50);
    s.fullView = true;
    s.setStage(20, 60);
    EXPECT_EQ(s.hold[20], 60);
    s.command(fillcmd::Undo);
    EXPECT_EQ(head(s.hold, 8), (V{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(s.hold[20], 0);

    s.beginShift();
    s.shiftTo(2);
    s.shiftTo(1);
    EXPECT_EQ(head(s.hold, 3), (V{0, 0, 1}));
    s.command(fillcmd::Undo);
    EXPECT_EQ(head(s.hold, 3), (V{0, 1, 2}));
}

TEST(FillState, FilesLoadIntoHoldAndSaveAllOfIt) {
    TempDir dir;
    FillState s;
    s.open(ramp(8), 7);
    {
        std::ofstream big(dir.file("big.bin"), std::ios::binary);
        for (int i = 0; i < 300; ++i) big.put(static_cast<char>(i + 100));
    }
    int read = 0;
    std::string reason;
    ASSERT_TRUE(s.loadFile(dir.file("big.bin"), false, read, reason)) << reason;
    EXPECT_EQ(read, 128);
    EXPECT_EQ(s.hold[0], 100);
    EXPECT_EQ(s.hold[28], (128 & 127)) << "each byte AND 127";
    // With Append the offset is Low x 128 + High.
    s.knobs.low = 1;
    s.knobs.high = 2;
    ASSERT_TRUE(s.loadFile(dir.file("big.bin"), true, read, reason));
    EXPECT_EQ(read, 128);
    EXPECT_EQ(s.hold[0], (230 & 127));
    // A short file leaves the rest of the row.
    {
        std::ofstream small(dir.file("small.seq"), std::ios::binary);
        small.write("\x01\x02", 2);
    }
    s.hold.fill(7);
    ASSERT_TRUE(s.loadFile(dir.file("small.seq"), false, read, reason));
    EXPECT_EQ(read, 2);
    EXPECT_EQ(head(s.hold, 3), (V{1, 2, 7}));
    // Failures say why and change nothing.
    const Row before = s.hold;
    EXPECT_FALSE(s.loadFile(dir.file("missing.seq"), false, read, reason));
    EXPECT_FALSE(reason.empty());
    EXPECT_FALSE(s.loadFile(dir.path.string(), false, read, reason));
    EXPECT_EQ(s.hold, before);
    EXPECT_FALSE(s.saveFile(dir.file("no/such/folder.seq"), false, reason));

    // Save writes 128 raw bytes, or appends them.
    ASSERT_TRUE(s.saveFile(dir.file("out.seq"), false, reason));
    ASSERT_TRUE(s.saveFile(dir.file("out.seq"), true, reason));
    EXPECT_EQ(fs::file_size(dir.file("out.seq")), 256u);
    FillState t;
    ASSERT_TRUE(t.loadFile(dir.file("out.seq"), false, read, reason));
    EXPECT_EQ(t.hold, s.hold);
}

TEST(FillState, TheTextFormRoundTrips) {
    FillState s;
    std::iota(s.hold.begin(), s.hold.end(), uint8_t{0});
    const std::string text = s.holdText();
    FillState t;
    EXPECT_EQ(t.loadText(text), 128);
    EXPECT_EQ(t.hold, s.hold);
    t.hold.fill(5);
    EXPECT_EQ(t.loadText("3, 4;x 200"), 3);
    EXPECT_EQ(head(t.hold, 4), (V{3, 4, 200 & 127, 5}));
}

TEST(FillState, EveryCommandHasItsCaptionAndTip) {
    int buttons = 0;
    for (int i = 0; i <= fillcmd::kLast; ++i) {
        const FillCommandInfo& c = fillCommand(i);
        if (i == 11 || i == 29) {
            EXPECT_EQ(c.index, -1);
            continue;
        }
        EXPECT_EQ(c.index, i);
        EXPECT_STRNE(c.caption, "");
        EXPECT_STRNE(c.tip, "");
        ++buttons;
    }
    EXPECT_EQ(buttons, 29);
    EXPECT_STREQ(fillCommand(fillcmd::Redo).tip, "Undo the Undos");
    EXPECT_STREQ(fillCommand(fillcmd::Cancel).tip, "Exit without changes");
    EXPECT_STREQ(scaleChoiceInfo(4).caption, "8ve/5ths");
}

TEST(FillState, HarmonicSortUsesTheCurrentKeyAndPushes) {
    FillState s;
    s.open(std::vector<uint8_t>{61, 66, 64, 67, 60}, 4);
    s.hsort.current = 1;  // the tritone at the end
    s.harmonicSort();
    EXPECT_EQ(head(s.hold, 5), (V{60, 67, 64, 61, 66}));
    s.hsort.current = 0;
    s.command(fillcmd::Undo);
    s.harmonicSort();
    EXPECT_EQ(head(s.hold, 5), (V{60, 67, 64, 66, 61}));
}

TEST(HarmonicKeys, BuiltInKeysTextAndParsing) {
    HarmonicKeys k;
    EXPECT_EQ(k.keyText(0), "0 7 5 4 3 9 8 2 10 6 11 1");
    EXPECT_EQ(k.keyText(3), "");
    EXPECT_EQ(k.name(2), "Harm. series (1, 3, 5, 7,  9,11,13, 15,17,19,21, 27)");
    EXPECT_EQ(HarmonicKeys::filterTyped("1,a2;-3"), "1  2  3");
    k.setKeyText(4, "  0 4 7  12 2");
    EXPECT_EQ(k.keyText(4), "0 4 7") << "a word that is no pitch class ends the key";
    EXPECT_EQ(k.key(4)[3], HarmonicKeys::kEnd);
    k.setKeyText(5, "11 10 9 8 7 6 5 4 3 2 1 0 5");
    EXPECT_EQ(k.keyText(5), "11 10 9 8 7 6 5 4 3 2 1 0");
}

TEST(HarmonicKeys, RandomKeysHoldTwelveClassesWhereDrawn) {
    HarmonicKeys k;
    RandomSource random;
    for (int round = 0; round < 50; ++round) {
        k.randomKey(7, random);
        std::array<int, 12> seen{};
        for (uint8_t p : k.key(7)) {
            ASSERT_LE(p, 11);
            ++seen[p];
        }
        // Places copied from built-in keys may repeat a class; the drawn ones never do, so
        // every class is present unless a copied one took its room.
        EXPECT_EQ(k.name(7), "Random");
        EXPECT_EQ(std::accumulate(seen.begin(), seen.end(), 0), 12);
    }
}

TEST(HarmonicKeys, TheFileRoundTripsAndAMissingOneIsNoError) {
    TempDir dir;
    HarmonicKeys k;
    std::string reason;
    EXPECT_TRUE(k.load(dir.file("hsort.bin"), reason)) << reason;
    k.setKeyText(9, "3 1 4");
    k.setName(9, "Pi, déjà vu");
    k.current = 9;
    ASSERT_TRUE(k.save(dir.file("hsort.bin"), reason)) << reason;
    EXPECT_EQ(fs::file_size(dir.file("hsort.bin")), 4u + 144u + 2 * 12 + k.name(0).size() + k.name(1).size() +
                                                          k.name(2).size() + 11u);
    HarmonicKeys back;
    ASSERT_TRUE(back.load(dir.file("hsort.bin"), reason)) << reason;
    EXPECT_EQ(back.current, 9);
    EXPECT_EQ(back.keyText(9), "3 1 4");
    EXPECT_EQ(back.name(9), "Pi, déjà vu");
    EXPECT_EQ(back.keyText(0), k.keyText(0));

    {
        std::ofstream cut(dir.file("cut.bin"), std::ios::binary);
        cut.write("\x01\x00\x00\x00\x00", 5);
    }
    EXPECT_FALSE(back.load(dir.file("cut.bin"), reason));
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(back.current, 9) << "a damaged file changes nothing";
}

TEST(FillState, BarsAndKeysUnderThePointer) {
    FillState s;
    s.open(ramp(8), 7, 64);
    EXPECT_EQ(s.stageAtPixel(-3, 10), 0);
    EXPECT_EQ(s.stageAtPixel(79.9, 10), 7);
    EXPECT_EQ(s.stageAtPixel(500, 10), 7) << "the caller's last stage";
    s.fullView = true;
    EXPECT_EQ(s.stageAtPixel(500, 10), 50);
    EXPECT_EQ(s.valueAtPixel(160, 160), 0);
    EXPECT_EQ(s.valueAtPixel(80, 160), 32);
    EXPECT_EQ(s.valueAtPixel(-50, 160), 84) << "above the top: past the scale, within 127";

    EXPECT_EQ(keyboardKeyAt(50, 800), 0);
    EXPECT_EQ(keyboardKeyAt(1150, 800), 11);
    EXPECT_EQ(keyboardKeyAt(1260 + 770, 900), 19);
    EXPECT_EQ(keyboardKeyAt(230, 400), 1) << "a black key over the seam of C and D";
    EXPECT_EQ(keyboardKeyAt(580, 400), 5) << "none between E and F";
    EXPECT_EQ(keyboardKeyAt(5 * 1260 + 1200, 800), 71);
    EXPECT_EQ(keyboardKeyAt(6 * 1260, 800), -1);
    EXPECT_EQ(keyboardKeyAt(100, 100), -1);
}
