// MIDI input modules: what arrives on a port reaches their outputs by class, channel and
// port; bursts collapse to the last value; the voice modules follow the eight voices of a
// slot; the on-screen keyboard maps the pointer to keys; settings survive the record.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/midi/MidiInputs.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

struct MidiInHarness : ModuleHarness {
    void receive(int port, std::vector<MidiInputMessage> messages) { engine->ports.handleInput(port, messages); }
    void note(int port, int channel, int key, int velocity) {
        receive(port, {{static_cast<uint8_t>(0x90 | channel), static_cast<uint8_t>(key), static_cast<uint8_t>(velocity)}});
    }
    void noteOff(int port, int channel, int key, int velocity = 64) {
        receive(port, {{static_cast<uint8_t>(0x80 | channel), static_cast<uint8_t>(key), static_cast<uint8_t>(velocity)}});
    }
    template <class T>
    T& place(std::string_view type, int chanPort) {
        auto& m = static_cast<T&>(add(type));
        m.setChanPort(chanPort);
        return m;
    }
};

}  // namespace

TEST(MidiInputs, EachClassReachesOnlyTheModuleOfItsChannelAndPort) {
    MidiInHarness h;
    auto& cc = h.place<MIDICCIn>("MIDICCIn", 2 + 16);  // channel 3, port B
    cc.setNumber(7);
    auto& ccOtherPort = h.place<MIDICCIn>("MIDICCIn", 2);
    ccOtherPort.setNumber(7);
    auto& pp = h.place<MIDIPPIn>("MIDIPPIn", 2 + 16);
    pp.setNumber(60);
    auto& pc = h.place<MIDIPCIn>("MIDIPCIn", 2 + 16);
    auto& pb = h.place<MIDIPBIn>("MIDIPBIn", 2 + 16);
    auto& ctrlIn = h.place<MIDICIn>("MIDICIn", 2 + 16);
    h.set(ctrlIn, 0, 11);
    auto& polyIn = h.place<MIDIPIn>("MIDIPIn", 2 + 16);
    h.set(polyIn, 0, 61);

    h.receive(1, {{0xB2, 7, 100},
                  {0xB2, 11, 33},
                  {0xB3, 7, 99},  // another channel
                  {0xA2, 60, 45},
                  {0xA2, 61, 46},
                  {0xC2, 19, 0},
                  {0xE2, 5, 90}});
    h.ticks(1);
    EXPECT_EQ(h.out(cc), 100);
    EXPECT_EQ(h.out(ccOtherPort), 0);
    EXPECT_EQ(h.out(pp), 45);
    EXPECT_EQ(h.out(pc), 19);
    EXPECT_EQ(h.out(pb), 90);  // the most significant byte
    EXPECT_EQ(h.out(ctrlIn), 33);
    EXPECT_EQ(h.out(polyIn), 46);

    // The controller from the bus follows the bus; the typed one follows its box.
    h.set(ctrlIn, 0, 7);
    cc.setNumberText("11");
    h.ticks(1);
    EXPECT_EQ(h.out(ctrlIn), 100);
    EXPECT_EQ(h.out(cc), 33);
    // A channel change reads the other channel's table at the next tick.
    cc.setNumber(7);
    cc.setChanPort(3);
    h.ticks(1);
    EXPECT_EQ(h.out(cc), 0);
}

TEST(MidiInputs, ABurstBetweenTicksCollapsesToTheLastValueAndDataIsCutToSevenBits) {
    MidiInHarness h;
    auto& cc = h.place<MIDICCIn>("MIDICCIn", 0);
    cc.setNumber(1);
    std::vector<int> seen;
    for (int v : {10, 20, 30}) h.receive(0, {{0xB0, 1, static_cast<uint8_t>(v)}});
    h.ticks(1);
    seen.push_back(h.out(cc));
    h.receive(0, {{0xB0, 1, 5}, {0xB0, 1, 0x80 | 64}});
    h.ticks(1);
    seen.push_back(h.out(cc));
    h.ticks(3);  // nothing new: the value stays
    seen.push_back(h.out(cc));
    EXPECT_EQ(seen, (std::vector<int>{30, 64, 64}));
}

TEST(MidiInputs, NumberBoxesAreCutToARange) {
    MidiInHarness h;
    auto& cc = h.place<MIDICCIn>("MIDICCIn", 0);
    EXPECT_EQ(cc.setNumberText("300"), "127");
    EXPECT_EQ(cc.setNumberText("-5"), "0");
    EXPECT_EQ(cc.setNumberText(" 42"), "42");
    EXPECT_EQ(cc.setNumberText("abc"), "42");
    EXPECT_EQ(cc.setNumberText("99999999999999999999"), "127");
    auto& key = h.place<MIDIKeyNum>("MIDIKeyNum", 0);
    key.setKeyBit(12);
    EXPECT_EQ(key.keyBit, 8);
}

TEST(MidiInputs, EightVoicesOfOneSlotEachHaveTheirModule) {
    MidiInHarness h;
    std::vector<MIDIKeyNum*> nums;
    std::vector<MIDIKeyVel*> vels;
    for (int k = 0; k <= 8; ++k) {
        nums.push_back(&h.place<MIDIKeyNum>("MIDIKeyNum", 5));
        nums.back()->setKeyBit(k);
        vels.push_back(&h.place<MIDIKeyVel>("MIDIKeyVel", 5));
        vels.back()->setKeyBit(k);
    }
    for (int v = 0; v < 8; ++v) h.note(0, 5, 60 + v, 100 + v);
    h.ticks(1);
    for (int k = 1; k <= 8; ++k) {
        EXPECT_EQ(h.out(*nums[static_cast<size_t>(k)]), 60 + k - 1) << k;
        EXPECT_EQ(h.out(*vels[static_cast<size_t>(k)]), 100 + k - 1) << k;
    }
    EXPECT_EQ(h.out(*nums[0]), 67);  // the last note played
    EXPECT_EQ(h.out(*vels[0]), 107);

    // A ninth key finds no voice: nothing changes, and its note-off finds nothing either.
    h.note(0, 5, 90, 50);
    h.noteOff(0, 5, 90);
    h.ticks(1);
    EXPECT_EQ(h.out(*nums[0]), 67);
    EXPECT_EQ(h.engine->ports.in.InNoteActive[5], 0xFF);

    // Voice 3 (key bit 3 is voice 2) ends by a note-on of velocity 0; a new key takes the
    // lowest free voice, which is that one.
    h.note(0, 5, 62, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(*nums[3]), 62);  // holds after release
    h.note(0, 5, 70, 77);
    h.ticks(1);
    EXPECT_EQ(h.out(*nums[3]), 70);
    EXPECT_EQ(h.out(*vels[3]), 77);
    EXPECT_EQ(h.out(*nums[0]), 70);
}

TEST(MidiInputs, NoteOffOfAnyVelocityEndsTheVoiceAndAFreeVoiceHoldsItsLastNote) {
    MidiInHarness h;
    auto& voice1 = h.place<MIDIKeyNum>("MIDIKeyNum", 0);
    voice1.setKeyBit(1);
    auto& voice3 = h.place<MIDIKeyNum>("MIDIKeyNum", 0);
    voice3.setKeyBit(3);
    h.note(0, 0, 40, 90);
    h.noteOff(0, 0, 40, 64);  // velocity 64 counts as 0
    h.note(0, 0, 41, 90);     // takes voice 0 again
    h.ticks(1);
    EXPECT_EQ(h.out(voice1), 41);
    EXPECT_EQ(h.out(voice3), 0);  // voice 2 never sounded
    h.note(0, 0, 42, 90);
    h.note(0, 0, 43, 90);
    h.ticks(1);
    EXPECT_EQ(h.out(voice3), 43);
    h.noteOff(0, 0, 43);
    h.note(0, 0, 50, 0);  // an unknown note-off: nothing
    h.ticks(2);
    EXPECT_EQ(h.out(voice3), 43);
}

TEST(MidiInputs, TriggeredInputRunsTheReadersAtOnceAndTheTickSkipsItsOwnPass) {
    MidiInHarness h;
    auto& key = h.place<MIDIKeyNum>("MIDIKeyNum", 0);
    h.engine->ports.setTrigger(trigger::NoteOn, true);
    h.note(0, 0, 72, 90);
    EXPECT_EQ(h.out(key), 72);  // before any tick
    h.engine->ports.setTrigger(trigger::NoteOn, false);
    h.note(0, 0, 73, 90);
    EXPECT_EQ(h.out(key), 72);
    h.ticks(1);
    EXPECT_EQ(h.out(key), 73);
}

TEST(MidiInputs, SettingsOfEverySnapshotSurviveTheRecord) {
    MidiInHarness h;
    auto& cc = h.place<MIDICCIn>("MIDICCIn", 0);
    auto& key = h.place<MIDIKeyVel>("MIDIKeyVel", 0);
    auto& ctrl = h.place<MIDICIn>("MIDICIn", 0);
    auto& pc = h.place<MIDIPCIn>("MIDIPCIn", 0);
    auto& kb = static_cast<Keybd&>(h.add("Keybd"));
    for (int s : {0, 3, 127}) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        cc.setChanPort(s % 64);
        cc.setNumber(s);
        key.setChanPort(63 - s % 64);
        key.setKeyBit(s % 9);
        ctrl.setChanPort(s / 2);
        h.set(ctrl, 0, s);
        pc.setChanPort(s % 17);
        kb.setOctave(s % 10);
        kb.zeroOnRelease = s == 3;
        h.engine->StoreAllPatches();
    }
    for (Module* m : std::initializer_list<Module*>{&cc, &key, &ctrl, &pc, &kb}) {
        const std::vector<uint8_t> first = body(h, *m);
        const std::unique_ptr<Module> copy = readBack(h, typeInfo(m->type()).type, first);
        EXPECT_EQ(body(h, *copy), first) << m->Name;
    }
    h.engine->CurrentSnapshot = 3;
    h.engine->RecallAllPatches();
    EXPECT_EQ(cc.ChanPort, 3);
    EXPECT_EQ(cc.number, 3);
    EXPECT_EQ(key.keyBit, 3);
    EXPECT_EQ(key.ChanPort, 60);
    EXPECT_EQ(kb.octave, 3);
    EXPECT_TRUE(kb.zeroOnRelease);
    h.engine->CurrentSnapshot = 127;
    h.engine->RecallAllPatches();
    EXPECT_EQ(cc.ChanPort, 127 % 64);
    EXPECT_EQ(key.keyBit, 127 % 9);
    EXPECT_FALSE(kb.zeroOnRelease);

    // Bytes out of range are kept in the record but cut where they are used.
    std::vector<uint8_t> wild(256, 0xFF);
    const std::unique_ptr<Module> odd = readBack(h, "MIDIKeyNum", wild);
    EXPECT_EQ(static_cast<MidiKeyIn&>(*odd).keyBit, 8);
    EXPECT_EQ(static_cast<MidiKeyIn&>(*odd).ChanPort, 63);
    EXPECT_EQ(body(h, *odd), wild);
}

TEST(Keyboard, ThePointerFindsWhiteAndBlackKeysAndTheDepthGivesTheVelocity) {
    const double white = 1.0 / Keybd::kWhiteKeys;
    EXPECT_EQ(Keybd::keyAt(0.5 * white, 0.9).key, 0);                 // C
    EXPECT_EQ(Keybd::keyAt(0.98 * white, 0.3).key, 1);                // C#, right edge of C
    EXPECT_EQ(Keybd::keyAt(1.02 * white, 0.3).key, 1);                // C#, left edge of D
    EXPECT_EQ(Keybd::keyAt(1.02 * white, 0.8).key, 2);                // below the black key: D
    EXPECT_EQ(Keybd::keyAt(2.98 * white, 0.3).key, 4);                // E has no black key after it
    EXPECT_EQ(Keybd::keyAt(3.02 * white, 0.3).key, 5);                // nor has F one before it
    EXPECT_EQ(Keybd::keyAt(7.5 * white, 0.9).key, 12);                // the second octave
    EXPECT_EQ(Keybd::keyAt(13.98 * white, 0.3).key, 23);              // the last B, no black after
    EXPECT_EQ(Keybd::keyAt(1.0, 0.5).key, -1);
    EXPECT_EQ(Keybd::keyAt(-0.01, 0.5).key, -1);
    EXPECT_LT(Keybd::keyAt(0.5 * white, 0.1).velocity, Keybd::keyAt(0.5 * white, 0.95).velocity);
    EXPECT_EQ(Keybd::keyAt(0.5 * white, 0.0).velocity, 1);
    EXPECT_LE(Keybd::keyAt(0.5 * white, 0.9999).velocity, 127);
}

TEST(Keyboard, PressDragAndReleaseDriveTheOutputAtTheNextTick) {
    MidiInHarness h;
    auto& kb = static_cast<Keybd&>(h.add("Keybd"));
    const double white = 1.0 / Keybd::kWhiteKeys;
    kb.setOctave(5);
    kb.press(0.5 * white, 0.9);
    EXPECT_EQ(h.out(kb), 0);
    h.ticks(1);
    EXPECT_EQ(h.out(kb), 60);
    EXPECT_EQ(kb.gate, 127);
    EXPECT_EQ(kb.noteCaption.substr(0, 6), "Cn : 5");
    kb.drag(2.5 * white, 0.9);  // to E
    h.ticks(1);
    EXPECT_EQ(h.out(kb), 64);
    kb.release();
    h.ticks(1);
    EXPECT_EQ(h.out(kb), 64);  // chkGate out: the value stays
    kb.drag(0.5 * white, 0.9);  // a drag without a press plays nothing
    h.ticks(1);
    EXPECT_EQ(h.out(kb), 64);

    kb.zeroOnRelease = true;
    kb.press(0.5 * white, 0.9);
    h.ticks(1);
    kb.release();
    h.ticks(1);
    EXPECT_EQ(h.out(kb), 0);
    EXPECT_EQ(kb.gate, 0);

    // High octaves: the display keeps the sum, the bus is cut to 127.
    kb.setOctave(Keybd::kMaxOctave);
    kb.press(13.5 * white, 0.9);
    h.ticks(1);
    EXPECT_EQ(kb.note, 9 * 12 + 23);
    EXPECT_EQ(h.out(kb), 127);
}
