#pragma once
// MIDI input modules: each reads one table of last-received values that the port layer
// fills (MidiInputTables) for its channel and port, and copies the value to its output
// when it changes. A burst between two reads collapses to the last value. Keybd, the
// on-screen keyboard, plays notes with the mouse. Everything here needs the engine lock.

#include <array>
#include <cstdint>
#include <string>

#include "engine/Module.h"

namespace quillmer {

struct MidiInputTables;

// What the input modules share: a ChanPort per snapshot (channel + port * 16, the
// ChannelSlot of the input tables).
class MidiInModule : public Module {
public:
    using Module::Module;

    int16_t ChanPort = 0;
    void setChanPort(int chanPort);
    std::string channelCaption() const;  // "1 A" .. "16D"

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;
    size_t slot() const { return static_cast<size_t>(ChanPort & 63); }
    static const MidiInputTables& tables(const Engine& engine);

    std::array<uint8_t, kSnapshotCount> storedChanPort_{};
};

// A MIDI input module with a number typed in bxV1 (a controller or a key), per snapshot.
class MidiInWithNumber : public MidiInModule {
public:
    using MidiInModule::MidiInModule;

    uint8_t number = 0;
    // The box: text cut to 0..127; returns what the box shows.
    std::string setNumberText(const std::string& text);
    void setNumber(int value);

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

    std::array<uint8_t, kSnapshotCount> storedNumber_{};
};

// MIDICCIn: a controller, its number typed in.
class MIDICCIn final : public MidiInWithNumber {
public:
    MIDICCIn();
    void update(Engine& engine) override;
};

// MIDIPPIn: polyphonic pressure of a key, its number typed in.
class MIDIPPIn final : public MidiInWithNumber {
public:
    MIDIPPIn();
    void update(Engine& engine) override;
};

// MIDIPCIn: the last program change.
class MIDIPCIn final : public MidiInModule {
public:
    MIDIPCIn();
    void update(Engine& engine) override;
};

// MIDIPBIn: the most significant byte of the last pitch bend.
class MIDIPBIn final : public MidiInModule {
public:
    MIDIPBIn();
    void update(Engine& engine) override;
};

// MIDIKeyNum and MIDIKeyVel: the note or velocity of voice k-1 while it sounds (k 1..8),
// or of the last note played (k 0). The value holds after the key is released.
class MidiKeyIn : public MidiInModule {
public:
    MidiKeyIn(ModuleTypeId type, bool velocity);

    uint8_t keyBit = 0;  // cbKeyBit, 0..8
    void setKeyBit(int k);

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    bool velocity_;
    std::array<uint8_t, kSnapshotCount> storedKeyBit_{};
};

class MIDIKeyNum final : public MidiKeyIn {
public:
    MIDIKeyNum();
};

class MIDIKeyVel final : public MidiKeyIn {
public:
    MIDIKeyVel();
};

// MIDICIn and MIDIPIn: the controller or key comes from the bus. Their records carry a
// byte per snapshot after the ChanPort that nothing reads; it is written back as read.
class MidiInFromBus : public MidiInModule {
public:
    static constexpr InputSpec kInputs[] = {{" Input", "Control number to receive from", sysbus::Off}};
    static constexpr InputSpec kPolyInputs[] = {{" Input", "Poly Key number to receive from", sysbus::Off}};
    using MidiInModule::MidiInModule;

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

private:
    std::array<uint8_t, kSnapshotCount> spare_{};
};

class MIDICIn final : public MidiInFromBus {
public:
    MIDICIn();
    void update(Engine& engine) override;
};

class MIDIPIn final : public MidiInFromBus {
public:
    MIDIPIn();
    void update(Engine& engine) override;
};

// Keybd: two octaves of keys played with the mouse. The output is the note while a key is
// held; with `zeroOnRelease` (chkGate) it drops to 0 when the mouse goes up.
class Keybd final : public Module {
public:
    static constexpr int kWhiteKeys = 14;
    static constexpr int kMaxOctave = 9;
    Keybd();

    uint8_t octave = 4;          // UpDown1, per snapshot: the lowest key is octave * 12
    bool zeroOnRelease = false;  // chkGate, per snapshot
    // Shown: the note (bxOut1, not cut to 127), the name with octave and velocity
    // (bxOut2), the gate (bxOut3).
    int note = 0;
    int velocity = 0;
    int gate = 0;
    std::string noteCaption;

    // The key under a point of the picture, x and y as fractions of its width and height
    // (0..1), and the velocity the height on that key gives. -1 outside the picture.
    struct Hit {
        int key = -1;  // 0..23 within the two octaves
        int velocity = 0;
    };
    static Hit keyAt(double x, double y);
    // Mouse gestures: a press or a drag plays the key under the point, a release ends it.
    void press(double x, double y);
    void drag(double x, double y);
    void release();
    void setOctave(int value);
    int heldKey() const { return key_; }  // 0..23 while the mouse holds a key, else -1

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void play(const Hit& hit);
    int key_ = -1;  // the key held, -1 none
    int pending_ = 0;  // what the next update writes
    std::array<uint8_t, kSnapshotCount> storedOctave_{};
    std::array<uint8_t, kSnapshotCount> storedGate_{};
};

}  // namespace quillmer
