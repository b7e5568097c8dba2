// The function families against worked values: stores, bit matrix, bits, MIDI, grids,
// tables, random tables, angles and pixels.

#include <gtest/gtest.h>

#include <cmath>

#include "engine/Engine.h"
#include "engine/ModuleRegistry.h"
#include "engine/VirtualTimerService.h"
#include "expression/EngineFormulaStores.h"
#include "tests/expression/RuntimeHarness.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(StoreFunctions, GridsSlotsAndRegisters) {
    RuntimeHarness h;
    h.runtime.EvalModuleId = 100;
    EXPECT_EQ(h.value("Fetch(5, 5)"), 0);  // nothing made yet
    EXPECT_EQ(h.value("Store(1023, 31, 0.1) + Store(1024, 0, 9) + Store(0, 32, 9)"), 0.1);
    EXPECT_EQ(h.value("Fetch(1023, 31)"), static_cast<double>(0.1f));  // single precision
    EXPECT_EQ(h.value("Fetch(1024, 0) + Fetch(-1, 0)"), 0);
    EXPECT_EQ(h.value("MakeXTable(3, 2) + FetchX(3, 0) + FetchX(3, 10)"), 2 + 1 + 1024);
    EXPECT_EQ(h.value("MakeXTable(4, 0.5) + FetchX(4, 1)"), 0);  // base under 1: nothing
    EXPECT_EQ(h.value("StoreX(127, 127, 5) + FetchX(127, 127) + StoreX(128, 0, 5)"), 10);
    // Slots, per module: Ins pushes down and the last falls off.
    for (int i = 1; i <= 17; ++i) h.value("Ins(" + std::to_string(i) + ")");
    EXPECT_EQ(h.value("Get(0)*100 + Get(15)"), 17 * 100 + 2);
    EXPECT_EQ(h.value("Put(16, 3) + Put(4, 8) + Get(4) + Get(-1)"), 16);
    h.runtime.EvalModuleId = 101;
    EXPECT_EQ(h.value("Get(0) + V1"), 0);
    EXPECT_EQ(h.value("V1.(6) + V1 + V9.(1)"), 13);
    h.runtime.EvalModuleId = 100;
    EXPECT_EQ(h.value("V1"), 0);
    // The letters are shared and set by handle.
    EXPECT_EQ(h.value("Q.(7) + Q"), 14);
    h.runtime.EvalModuleId = 101;
    EXPECT_EQ(h.value("Q"), 7);
    EXPECT_EQ(h.runtime.calc().variable(h.runtime.letterHandle('Q')), 7);
}

TEST(StoreFunctions, BitMatrixRowsLifeAndAutomata) {
    RuntimeHarness h;
    h.runtime.EvalModuleId = 100;  // Uid 1
    EXPECT_EQ(h.value("LM.(0, 2147483648) + LM(0)"), 2 * 2147483648.0);
    EXPECT_EQ(h.value("LM.(32, 1) + LM(32)"), 0);
    EXPECT_EQ(h.value("LMI(5) + LM(1) + LM(0)"), 5 + 2147483648.0 + 5);
    EXPECT_EQ(h.value("LM.(2, 3) + LMCRC"), 3 + (5 ^ 2147483648u ^ 3));
    EXPECT_EQ(h.value("LMClr + LMCRC + LM(1)"), 0);
    // A blinker on page 1 (this module's Uid) turns and turns back.
    h.value("LMWrite(1, 10, 7 * 2^4)");  // row 10, columns 4..6
    EXPECT_EQ(h.value("Life(1, 2)"), 3);
    EXPECT_EQ(h.value("LMRow(2, 9) + LMRow(2, 10) + LMRow(2, 11)"), 3 * 32);
    EXPECT_EQ(h.value("LMBit(2, 9, 5) + LMBit(2, 10, 4)"), 1);
    EXPECT_EQ(h.value("Life(2, 3) + LMRow(3, 10)"), 3 + 112);
    EXPECT_EQ(h.value("LMCopy(3, 4) + LMRow(4, 10) + LMCopy(3, 128)"), 1 + 112);
    // Cells beyond the edge are dead: a corner block of three becomes a block of four.
    h.value("LMWrite(5, 0, 3) + LMWrite(5, 1, 1)");
    EXPECT_EQ(h.value("Life(5, 5) + LMRow(5, 0) + LMRow(5, 1)"), 4 + 3 + 3);
    // Rule 90 on 8 bits, the ends joined: 00010000 -> 00101000.
    EXPECT_EQ(h.value("CA(8, 90, 16)"), 40);
    EXPECT_EQ(h.value("CA(8, 90, 1)"), 2 + 128);  // wraps round
    EXPECT_EQ(h.value("CA(0, 204, 12345)"), 12345);  // rule 204 keeps every cell
    EXPECT_NE(h.value("LRan"), h.value("LRan"));
    EXPECT_EQ(h.value("LMRan + (LMCRC = 0)"), 0);
}

TEST(StoreFunctions, FitScaleAppliesTheNineScales) {
    RuntimeHarness h;
    struct Case {
        int value;
        int scale;
        int fit;
    };
    const Case cases[] = {
        {61, 0, 61}, {61, 9, 61}, {61, 1, 60}, {63, 1, 64}, {66, 1, 67}, {68, 1, 67}, {70, 1, 69},
        {64, 2, 63}, {60, 3, 61}, {62, 3, 63}, {71, 3, 70}, {70, 4, 69}, {66, 4, 67},  {65, 5, 67},
        {69, 5, 67}, {64, 5, 60}, {65, 6, 60}, {66, 6, 72}, {70, 7, 60}, {69, 7, 67}, {64, 8, 63},
    };
    for (const Case& c : cases)
        EXPECT_EQ(h.value("FitScale(" + std::to_string(c.value) + ", " + std::to_string(c.scale) + ")"), c.fit)
            << c.value << " in scale " << c.scale;
}

TEST(BitFunctions, ShiftsRotatesAndTheSharedCarry) {
    RuntimeHarness h;
    EXPECT_EQ(h.value("SHRB(3)"), 1);
    EXPECT_EQ(h.value("RCLB(0)"), 1);  // the carry from SHRB
    EXPECT_EQ(h.value("SHLM(64)"), 0);
    EXPECT_EQ(h.value("RCRW(0)"), 32768);  // carry from SHLM into the top of 16 bits
    EXPECT_EQ(h.value("RRB(1)"), 128);
    EXPECT_EQ(h.value("RLW(32768)"), 1);
    EXPECT_EQ(h.value("RLL(2147483648)"), 1);
    EXPECT_EQ(h.value("RRL(1)"), 2147483648.0);
    EXPECT_EQ(h.value("SHLL(4294967295)"), 4294967294.0);
    EXPECT_EQ(h.value("RCLL(0)"), 1);
    EXPECT_EQ(h.value("SHRM(255)"), 63);  // cut to 7 bits first
    EXPECT_EQ(h.value("SLXM(1, 8)"), 2);  // the count is taken modulo 7
    EXPECT_EQ(h.value("SRXM(64, 13)"), 1);
    EXPECT_EQ(h.value("SLXB(1, 8) + SRXW(65535, 16) + SLXL(1, 31)"), 2147483648.0);
    EXPECT_EQ(h.value("RRXB(1, 1) + RLXB(128, 9) + RRXW(1, 16)"), 128 + 1 + 1);
    EXPECT_EQ(h.value("RLXM(64, 1)"), 1);
    EXPECT_EQ(h.value("SHRB(-1)"), 127);  // -1 is all ones
    EXPECT_EQ(h.value("RBIT(5, 2) + RBIT(5, 1) + RBIT(5, 32)"), 1);
    EXPECT_EQ(h.value("WBIT(5, 1, 1) + WBIT(5, 0, 0) + WBIT(5, 40, 1)"), 7 + 4 + 5);
    EXPECT_EQ(h.value("TBIT(5, 0) + TBIT(0, 31)"), 4 + 2147483648.0);
}

TEST(MidiFunctions, MessagesGoOutAsBuilt) {
    RuntimeHarness h;
    h.value("MIDIMsg(1, 18, 147, 200, 64)");  // note on, channel 18 -> 2, data cut to 7 bits
    h.value("MIDICtrl(2, 0, 7, 100) + MIDIPoly(7, 15, 60, 1)");
    ASSERT_EQ(h.stores.sent.size(), 3u);
    EXPECT_EQ(h.stores.sent[0], (RecordingStores::Sent{1, 0x92, 72, 64}));
    EXPECT_EQ(h.stores.sent[1], (RecordingStores::Sent{2, 0xB0, 7, 100}));
    EXPECT_EQ(h.stores.sent[2], (RecordingStores::Sent{3, 0xAF, 60, 1}));
}

TEST(MidiFunctions, NrpnAndRpnOut) {
    RuntimeHarness h;
    using S = RecordingStores::Sent;
    EXPECT_EQ(h.value("NRPNOut(0, 1, 2, 3, 4)"), 3);  // lsd left at 9999: no CC 38
    EXPECT_EQ(h.stores.sent, (std::vector<S>{{0, 0xB1, 99, 2}, {0, 0xB1, 98, 3}, {0, 0xB1, 6, 4}}));
    h.stores.sent.clear();
    EXPECT_EQ(h.value("NRPNOut(0, 1, 2, 3, 4, 5, 1)"), 4);
    EXPECT_EQ(h.stores.sent, (std::vector<S>{{0, 0xB1, 101, 2}, {0, 0xB1, 100, 3}, {0, 0xB1, 6, 4}, {0, 0xB1, 38, 5}}));
    h.stores.sent.clear();
    // 9999 for the parameter or the data: the next argument is signed, around 8192.
    EXPECT_EQ(h.value("NRPNOut(0, 0, 9999, -1, 9999, 4095)"), 4);
    EXPECT_EQ(h.stores.sent,
              (std::vector<S>{{0, 0xB0, 99, 63}, {0, 0xB0, 98, 127}, {0, 0xB0, 6, 95}, {0, 0xB0, 38, 127}}));
    h.stores.sent.clear();
    EXPECT_EQ(h.value("NRPNOut(0, 0, 9999, -4097, 1) + NRPNOut(0, 0, 1, 1, 9999, 4096)"), 0);
    EXPECT_TRUE(h.stores.sent.empty());
}

TEST(MidiFunctions, InputTablesAreReadBySlot) {
    RuntimeHarness h;
    const int slot = 2 * 16 + 5;  // port 2, channel 5
    h.stores.in.InControl[7][slot] = 99;
    h.stores.in.InPolyPressure[60][slot] = 33;
    EXPECT_EQ(h.value("MIDICtrlIn(2, 5, 7) + MIDICtrlIn(6, 21, 135)"), 198);  // port and 3, chan and 15
    EXPECT_EQ(h.value("MIDIPolyIn(2, 5, 60) + MIDIPolyIn(2, 5, 61)"), 33);
    EXPECT_EQ(h.value("NRPNIn(2, 5, 1, 2)"), 0);  // tables not made yet
    h.stores.in.allocateParameterTables();
    h.stores.in.InNrpnTable[MidiInputTables::parameterIndex(1, 2, slot)] = 1000;
    h.stores.in.InRpnTable[MidiInputTables::parameterIndex(1, 2, slot)] = 2000;
    EXPECT_EQ(h.value("NRPNIn(2, 5, 1, 2) + NRPNIn(2, 5, 1, 2, 1)"), 3000);
    EXPECT_EQ(h.value("NRPNIn(2, 5, 1, 2, 0, 1) + NRPNIn(2, 5, 1, 2)"), 1000);  // read, then cleared
    EXPECT_EQ(h.value("MIDIKeysOff(0, 0)"), 0);
}

TEST(GridFunctions, CellsInsideTheShapeOnly) {
    RuntimeHarness h;
    EXPECT_EQ(h.value("W16x8(3, 7, 15, 200) + R16x8(3, 7, 15)"), 254);
    EXPECT_EQ(h.value("W16x8(3, 8, 0, 1) + W12x8(3, 0, 12, 1) + W4x4(128, 0, 0, 1) + R8x4(3, 4, 0)"), 0);
    EXPECT_EQ(h.stores.cells.size(), 1u);
    EXPECT_EQ(h.value("W12x8(1, 7, 11, 5) + R12x8(1, 7, 11) + R16x8(1, 7, 11)"), 10);  // shapes apart
    EXPECT_EQ(h.value("F16x8(3) + RTbl(5, 5) + RFile(1, 3) + UFOMouse(1, 1) + GetSlider(1, 63)"), 0);
    EXPECT_EQ(h.value("SliderRange(1, 2, -0.01)"), 0.1);
    EXPECT_EQ(h.value("SliderRange(1, 2, -50) + SliderRange(1, 64)"), 50);
}

TEST(RandomAndAngle, TablesWrapAndTheModeSticks) {
    RuntimeHarness h;
    const double first = h.value("RRSeed(16383) * 0 + RRAN");
    const double wrapped = h.value("RRAN");
    EXPECT_EQ(h.value("RRSeed(0) * 0 + RRAN"), wrapped);  // index 16383 then 0
    EXPECT_EQ(h.value("RRSeed(99999) * 0 + RRAN"), first);  // cut to 16383
    double low = 1;
    double high = 0;
    double step = 0;
    double last = h.value("RWSeed(0) * 0 + RW");
    for (int i = 0; i < 20000; ++i) {
        const double v = h.value("RW");
        low = std::min(low, v);
        high = std::max(high, v);
        step = std::max(step, std::fabs(v - last));
        last = v;
    }
    EXPECT_GE(low, 0);
    EXPECT_LT(high, 1);
    EXPECT_LE(step, 1.0 / 16 + 1e-6 + 1.0);  // a walk, except across the wrap
    EXPECT_EQ(h.value("TrigMode"), 0);
    EXPECT_EQ(h.value("Degree"), 1);
    EXPECT_NEAR(h.value("sin(30)"), 0.5, 1e-12);
    EXPECT_EQ(h.value("Grad + TrigMode"), 4);
    EXPECT_NEAR(h.value("acos(0)"), 100, 1e-9);
    EXPECT_EQ(h.value("Radian"), 0);
}

TEST(PixelFunctions, PicturesAreMadeOnFirstTouch) {
    RuntimeHarness h;
    EXPECT_EQ(h.runtime.picture(9), nullptr);
    EXPECT_EQ(h.value("RPix(9, 1, 1)"), 0);
    EXPECT_EQ(h.runtime.picture(9), nullptr);
    EXPECT_EQ(h.value("WPix(9, 1, 2, RGB(255, 0, 300))"), 255 + 255 * 65536);
    ASSERT_NE(h.runtime.picture(9), nullptr);
    EXPECT_EQ(h.runtime.picture(9)->pixels[2 * kPictureSize + 1], 255u + 255u * 65536u);
    EXPECT_EQ(h.value("WPix(9, 128, 0, 1) + WPix(9, 0, -1, 1) + WPix(128, 0, 0, 1)"), 0);
    EXPECT_EQ(h.value("PEN(9, 77) + WPix(9, 5, 5, -1) + RPix(9, 5, 5)"), 0 + 77 + 77);
    EXPECT_EQ(h.value("ClsPix(9) + RPix(9, 1, 2) + RPix(9, 127, 127)"), 1 + 77 + 77);
    EXPECT_EQ(h.value("InfoPix(9, 127, 127) + InfoPix(9, 128, 0) + InfoPix(-1, 0, 0)"), 1);
    EXPECT_EQ(h.runtime.picture(9)->changes, 3u);
}

TEST(EngineWiring, FunctionsReachTheEngine) {
    VirtualTimerService timers;
    ModuleRegistry registry;
    Engine engine(timers, registry);
    EngineFormulaStores stores(engine);
    FormulaRuntime runtime(&stores);
    stores.attach(runtime);
    runtime.start();
    auto value = [&runtime](const char* text) { return runtime.calc().eval(text).value; };
    engine.bus[sysbus::FirstSlider + 3] = 42;
    EXPECT_EQ(value("CPS(3)"), 42);
    value("RunStop(1)");
    EXPECT_EQ(engine.bus[sysbus::Run], 127);
    EXPECT_EQ(engine.bus[sysbus::Stop], 0);
    value("RunStop(0)");
    EXPECT_EQ(engine.bus[sysbus::Run], 0);
    engine.ports.in.InControl[10][16 + 2] = 77;
    EXPECT_EQ(value("MIDICtrlIn(1, 2, 10)"), 77);
    value("SetAbsClkA(250) + SetAbsClkB(99999)");
    EXPECT_EQ(engine.options.absClockA, 250);
    EXPECT_EQ(engine.options.absClockB, 32767);
    // A formula timer flips its state each period on the engine's timers.
    value("SetTimer(4, 10)");
    timers.advanceByMs(10);
    EXPECT_EQ(value("Timer(4)"), 1);
    timers.advanceByMs(10);
    EXPECT_EQ(value("Timer(4)"), 0);
    timers.advanceByMs(10);
    value("SetTimer(4, 0)");
    EXPECT_EQ(value("Timer(4)"), 0);
    timers.advanceByMs(50);
    EXPECT_EQ(value("Timer(4)"), 0);
    const double r = value("RND()");
    EXPECT_GE(r, 0);
    EXPECT_LT(r, 1);
}
