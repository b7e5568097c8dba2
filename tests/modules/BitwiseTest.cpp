// Bit operations at the byte's edges, the logic types, the bit buttons and Test's fifteen
// comparisons.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/processors/Bitwise.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(ByteOperations, ShiftsLoseBitsAndRotatesWrapAtTheByteEdges) {
    EXPECT_EQ(shiftLeftByte(0x81, 1), 0x02);
    EXPECT_EQ(shiftRightByte(0x81, 1), 0x40);
    EXPECT_EQ(rotateLeftByte(0x81, 1), 0x03);
    EXPECT_EQ(rotateRightByte(0x81, 1), 0xC0);
    EXPECT_EQ(shiftLeftByte(0xFF, 7), 0x80);
    EXPECT_EQ(shiftLeftByte(0xFF, 8), 0);
    EXPECT_EQ(shiftRightByte(0xFF, 8), 0);
    EXPECT_EQ(shiftRightByte(0xFF, 127), 0);
    EXPECT_EQ(rotateLeftByte(0x96, 8), 0x96) << "a full turn";
    EXPECT_EQ(rotateLeftByte(0x96, 11), rotateLeftByte(0x96, 3));
    EXPECT_EQ(rotateRightByte(0x96, 0), 0x96);
    for (int n = 0; n < 16; ++n) EXPECT_EQ(rotateRightByte(rotateLeftByte(0x5A, n), n), 0x5A) << n;
}

TEST(Shift, SwitchesChooseTheOperationAndTheResultIsKeptInRange) {
    ModuleHarness h;
    auto& shift = static_cast<Shift&>(h.add("Shift"));
    EXPECT_EQ(run(h, shift, {96, 2}), 24) << "right shift by default";
    EXPECT_EQ(run(h, shift, {1, 1}), 0);
    shift.setFlagSetting(ShiftOp::kRotate, true);
    EXPECT_EQ(run(h, shift, {1, 1}), 127) << "rotated into bit 7: 128, limited";
    EXPECT_EQ(run(h, shift, {3, 1}), 127);
    EXPECT_EQ(run(h, shift, {2, 1}), 1);
    shift.setFlagSetting(ShiftOp::kLeft, true);
    EXPECT_EQ(run(h, shift, {64, 1}), 127) << "128 limited";
    EXPECT_EQ(run(h, shift, {64, 2}), 1) << "rotated round to bit 0";
    shift.setFlagSetting(ShiftOp::kRotate, false);
    EXPECT_EQ(run(h, shift, {64, 2}), 0) << "shifted out";
    EXPECT_EQ(run(h, shift, {5, 3}), 40);
}

TEST(Logic, BitByBitAndTheTwoGates) {
    ModuleHarness h;
    EXPECT_EQ(run(h, h.add("LogiAND"), {0x55, 0x0F}), 0x05);
    EXPECT_EQ(run(h, h.add("LogiOR"), {0x40, 0x02, 0x01}), 0x43);
    EXPECT_EQ(run(h, h.add("LogiXOR"), {0x7F, 0x55}), 0x2A);

    auto& no = static_cast<LogiEQ0&>(h.add("LogiEQ0"));
    auto& yes = static_cast<LogiNE0&>(h.add("LogiNE0"));
    EXPECT_EQ(run(h, no, {0}), 127);
    EXPECT_TRUE(no.over()) << "the light follows the output";
    EXPECT_EQ(run(h, no, {1}), 0);
    EXPECT_FALSE(no.over());
    EXPECT_EQ(run(h, yes, {0}), 0);
    EXPECT_FALSE(yes.over());
    EXPECT_EQ(run(h, yes, {1}), 127);
    EXPECT_TRUE(yes.over());
}

TEST(Logic, BitButtonsOfInvertAndMask) {
    ModuleHarness h;
    auto& invert = static_cast<Invert&>(h.add("Invert"));
    auto& mask = static_cast<Mask&>(h.add("Mask"));
    EXPECT_EQ(run(h, invert, {0x2A}), 0x2A) << "no buttons in";
    EXPECT_EQ(run(h, mask, {0x2A}), 0x2A) << "a new Mask lets every bit pass";
    invert.toggleBit(0, 6);
    invert.toggleBit(0, 0);
    EXPECT_TRUE(invert.bit(0, 6));
    EXPECT_FALSE(invert.bit(0, 5));
    mask.toggleBit(0, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(invert), 0x6B) << "the buttons count at the next update";
    EXPECT_EQ(h.out(mask), 0x28);
    invert.toggleBit(0, 6);
    EXPECT_EQ(run(h, invert, {0x7F}), 0x7E);
}

TEST(Logic, BitsShowsTheInputAndWritesNothing) {
    ModuleHarness h;
    auto& bits = static_cast<Bits&>(h.add("Bits"));
    EXPECT_EQ(run(h, bits, {0x45}), 0);
    EXPECT_EQ(bits.bitsText(), "01000101");
    EXPECT_TRUE(bits.bitLit(6));
    EXPECT_FALSE(bits.bitLit(7));
    EXPECT_TRUE(bits.viewChanged);
    bits.viewChanged = false;
    h.ticks(1);
    EXPECT_FALSE(bits.viewChanged) << "redrawn only on a change";
}

TEST(TestModule, ComparisonsOfAWithB) {
    const int expected[6][3] = {
        // a < b, a = b, a > b
        {0, 127, 0}, {0, 127, 127}, {0, 0, 127}, {127, 127, 0}, {127, 0, 0}, {127, 0, 127},
    };
    for (int test = 0; test < 6; ++test) {
        EXPECT_EQ(quillmer::Test::evaluate(test, 3, 4, 0, 0), expected[test][0]) << test;
        EXPECT_EQ(quillmer::Test::evaluate(test, 4, 4, 0, 0), expected[test][1]) << test;
        EXPECT_EQ(quillmer::Test::evaluate(test, 5, 4, 0, 0), expected[test][2]) << test;
    }
    EXPECT_EQ(quillmer::Test::evaluate(15, 5, 4, 0, 0), 0) << "an unknown test gives 0";
}

TEST(TestModule, RTestsAndTheMaskTable) {
    for (int r = 0; r < 8; ++r) {
        EXPECT_EQ(quillmer::Test::evaluate(6, 0, 0, 0, r), r % 4 == 2 ? 127 : 0);
        EXPECT_EQ(quillmer::Test::evaluate(7, 0, 0, 0, r), r % 4 == 3 ? 127 : 0);
        EXPECT_EQ(quillmer::Test::evaluate(8, 0, 0, 0, r), r % 4 == 1 ? 127 : 0);
        EXPECT_EQ(quillmer::Test::evaluate(9, 0, 0, 0, r), r > 3 ? 127 : 0);
    }
    EXPECT_EQ(quillmer::Test::evaluate(10, 0, 0x01, 0, 0), 127);
    EXPECT_EQ(quillmer::Test::evaluate(10, 7, 0x01, 0, 0), 127) << "7 mod 7 is step 0";
    EXPECT_EQ(quillmer::Test::evaluate(10, 6, 0x3F, 0, 0), 0);
    EXPECT_EQ(quillmer::Test::evaluate(10, 127, 0x02, 0, 0), 127) << "127 mod 7 is step 1";
}

TEST(TestModule, ChangeTestsUseTheValueOfTheLastUpdate) {
    ModuleHarness h;
    auto& test = static_cast<quillmer::Test&>(h.add("Test"));
    test.chooseTest(13);  // rise
    EXPECT_EQ(run(h, test, {10, 0}), 10) << "p starts at 0";
    EXPECT_EQ(run(h, test, {10, 0}), 0);
    EXPECT_EQ(run(h, test, {4, 0}), 0);
    test.chooseTest(14);  // fall
    EXPECT_EQ(run(h, test, {1, 0}), 3);
    test.chooseTest(12);  // distance
    EXPECT_EQ(run(h, test, {9, 0}), 8);
    test.chooseTest(11);  // distance at least B
    EXPECT_EQ(run(h, test, {14, 5}), 127);
    EXPECT_EQ(run(h, test, {18, 5}), 0);
    test.chooseTest(99);
    EXPECT_EQ(test.test(), 14) << "kept to the list";
}

TEST(TestModule, RReadsTheBusSlot128AboveInputA) {
    ModuleHarness h;
    auto& test = static_cast<quillmer::Test&>(h.add("Test"));
    Module& source = h.add("Unity");
    test.chooseTest(9);
    h.connect(test, 0, source.Name);
    const BusId above = static_cast<BusId>(source.OutBus + 128);
    h.engine->bus[above] = 6;
    h.ticks(1);
    EXPECT_EQ(h.out(test), 127);
    h.engine->bus[above] = 2;
    h.ticks(1);
    EXPECT_EQ(h.out(test), 0);
}
