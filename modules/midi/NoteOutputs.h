#pragma once
// Note modules: bus values become Note On and Note Off with their channel set-up.
// MIDITone plays through a tuning table; MIDIVoice and MIDIKey are its plain cousins.
// Everything here needs the engine lock.

#include <array>
#include <string>

#include "engine/Module.h"

namespace quillmer {

// What all sending modules share: a ChanPort per snapshot (low four bits the channel, the
// value / 16 the port), a recording track, and the set-up sent when placed.
class ChannelModule : public Module {
public:
    using Module::Module;

    int16_t ChanPort = 0;
    int ControlTrack = 0;
    // The channel dialog chose a new ChanPort: the next send reopens the ports and the
    // module sends its set-up again. A sounding note ends on the new channel.
    void setChanPort(Engine& engine, int16_t chanPort);
    std::string channelCaption() const;  // "1 A" .. "16D"

    // Per snapshot: the ChanPort.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

protected:
    void onAttach(Engine& engine) override;
    void recallSettings(int snapshot) override { ChanPort = storedChanPort_[static_cast<size_t>(snapshot)]; }
    void storeSettings(int snapshot) override { storedChanPort_[static_cast<size_t>(snapshot)] = static_cast<uint8_t>(ChanPort); }
    void send(Engine& engine, int status, int data1, int data2, int track) const;
    int channel() const { return ChanPort & 15; }
    int port() const { return (ChanPort / 16) & 3; }

    bool SendSetup = true;  // cleared for a module read from a file
    std::array<uint8_t, kSnapshotCount> storedChanPort_{};
};

// The trigger logic of the note modules: a clock gate or, in legato, a change of note.
class NoteModule : public ChannelModule {
public:
    using ChannelModule::ChannelModule;

    int NoteTrack = 0;
    bool legato = false;  // Check1 in: "LEG"
    // Shown on the panel.
    uint8_t SentNote = 64;
    uint8_t SentVelocity = 127;
    bool lampOn = false;
    std::string programCaption;  // "5. Strings"

    void update(Engine& engine) override;

protected:
    static constexpr int kClock = 0;
    static constexpr int kNote = 1;
    static constexpr int kTransp = 2;
    static constexpr int kVelocity = 3;

    void onAttach(Engine& engine) override;
    // Program, pan and modulation, when the type has them (inputs 4, 5, 6).
    void sendControls(Engine& engine);
    virtual void sendSetup(Engine& engine) = 0;
    virtual bool hasControls() const { return true; }
    virtual void SendNoteOn(Engine& engine) = 0;
    virtual void SendNoteOff(Engine& engine) = 0;

    int16_t LastPan = -1;
    int16_t LastModWheel = -1;
    int16_t LastProgram = -1;
    bool GateArmed = false;
    bool NoteHeld = false;
    int16_t LastNoteInput = -1;
    bool LegatoPending = false;
};

// MIDIVoice: note plus transposition; Transp 127 plays the note as it is and never sends
// its Note Off.
class MIDIVoice : public NoteModule {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock ", "Gate: note sounds while non-zero", sysbus::Off},
        {" Note ", "Note number", sysbus::Mid},
        {" Transp ", "Transpose: added to note value;  Set to 127 to inhibit note-off messages (not added to note)", sysbus::Off},
        {" Velocity ", "Velocity; 0 sends no note", sysbus::On},
        {" Pan ", "Pan (Control Change 10)", sysbus::Mid},
        {" ModWhl ", "Modulation wheel (Control Change 1)", sysbus::Off},
        {" ProgChg ", "Program change", sysbus::Off},
    };
    MIDIVoice();
    std::string noteCaption;  // "En : 5"

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

protected:
    MIDIVoice(ModuleTypeId type, std::span<const InputSpec> inputs) : NoteModule(type, inputs) {}
    void sendSetup(Engine& engine) override;
    void SendNoteOn(Engine& engine) override;
    void SendNoteOff(Engine& engine) override;
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

    uint8_t SentTransp = 0;
    std::array<uint8_t, kSnapshotCount> storedLegato_{};
};

// MIDIKey: MIDIVoice without pan, modulation, program or set-up.
class MIDIKey final : public MIDIVoice {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock ", "Gate: note sounds while non-zero", sysbus::Off},
        {" Note ", "Note number", sysbus::Mid},
        {" Transp ", "Transpose: added to note value;  Set to 127 to inhibit note-off messages (not added to note)", sysbus::Off},
        {" Velo ", "Velocity; 0 sends no note", sysbus::On},
    };
    MIDIKey();

protected:
    void sendSetup(Engine&) override {}
    bool hasControls() const override { return false; }
};

// MIDITone: scale and octave arithmetic through a tuning table, with pitch-bend
// microtuning and the channel's pitch-bend range set to one semitone.
class MIDITone final : public NoteModule {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock ", "Gate: note sounds while non-zero", sysbus::Off},
        {" Note ", "Scale step to play", sysbus::Mid},
        {" Transp ", "Root: added to the note", sysbus::Off},
        {" Velocity ", "Velocity; 0 sends no note", sysbus::On},
        {" Pan ", "Pan (Control Change 10)", sysbus::Mid},
        {" ModWhl ", "Modulation wheel (Control Change 1)", sysbus::Off},
        {" ProgChg ", "Program change", sysbus::Off},
        {" Tuning Table ", "Tuning table number", sysbus::Off},
        {" Octave ", "Octave added to the note", sysbus::Off},
    };
    MIDITone();

    bool stripOctaves = false;  // Check2: "Click in to strip octaves from Note input"
    // The four info boxes: note sent, bend sent (without the 63), scale step, octave.
    int shownNote = 0, shownBend = 0, shownStep = 0, shownOctave = 0;

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

protected:
    void sendSetup(Engine& engine) override;
    void SendNoteOn(Engine& engine) override;
    void SendNoteOff(Engine& engine) override;
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    static constexpr int kTable = 7;
    static constexpr int kOctave = 8;
    std::array<uint8_t, kSnapshotCount> storedLegato_{};
    std::array<uint8_t, kSnapshotCount> storedStrip_{};
    std::array<uint8_t, kSnapshotCount> spare_{};  // kept as read
};

}  // namespace quillmer
