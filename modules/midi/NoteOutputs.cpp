#include "modules/midi/NoteOutputs.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kPan = 4;
constexpr int kModWheel = 5;
constexpr int kProgram = 6;
constexpr int kInhibitNoteOff = 127;  // Transp value on MIDIVoice and MIDIKey
constexpr int kToneRowBytes = 128;
constexpr int kNoBend = 1;  // a bend byte of 1 sends 64, the centre

std::string noteName(int note) { return std::string(PitchNames[static_cast<size_t>(note % 12)]) + " : " + std::to_string(note / 12); }
}  // namespace

// --- ChannelModule ---

void ChannelModule::onAttach(Engine& engine) {
    if (SendSetup) {  // a new module, not one read from a file
        ChanPort = static_cast<int16_t>(Index & 15);
        storedChanPort_.fill(static_cast<uint8_t>(ChanPort));
    }
    ControlTrack = engine.ports.allocateRecordingTrack();
}

void ChannelModule::setChanPort(Engine& engine, int16_t chanPort) {
    ChanPort = static_cast<int16_t>(chanPort & 63);
    engine.ports.ReopenOutputs = true;
    SendSetup = true;
    if (engine.options.resetModules) engine.ResyncPending = true;
    viewChanged = true;
}

void ChannelModule::writeFields(ByteWriter& out) const {
    for (uint8_t cp : storedChanPort_) out.u8(cp);
}

void ChannelModule::readFields(ByteReader& in) {
    for (uint8_t& cp : storedChanPort_) cp = static_cast<uint8_t>(in.u8() & 63);
    SendSetup = false;  // a module read from a file sends no set-up
    ChanPort = storedChanPort_[0];
}

std::string ChannelModule::channelCaption() const { return channelSlotCaption(ChanPort); }

void ChannelModule::send(Engine& engine, int status, int data1, int data2, int track) const {
    engine.ports.SendMIDI(port(), static_cast<uint8_t>(status | channel()), static_cast<uint8_t>(data1 & 127),
                          static_cast<uint8_t>(data2 & 127), track);
}

// --- NoteModule ---

// MIDITone and MIDIVoice record notes and controllers on two tracks; the other sending
// modules, MIDIKey among them, have the one track.
void NoteModule::onAttach(Engine& engine) {
    ChannelModule::onAttach(engine);
    NoteTrack = hasControls() ? engine.ports.allocateRecordingTrack() : ControlTrack;
}

void NoteModule::sendControls(Engine& engine) {
    const int program = in(kProgram);
    if (program != LastProgram) {
        LastProgram = static_cast<int16_t>(program);
        send(engine, 0xC0, program, 0, ControlTrack);
        const auto& names = engine.ports.voiceName;
        programCaption = std::to_string(program) + ". " +
                         (names ? names(engine.ports.currentBank[static_cast<size_t>(ChanPort & 63)], program) : std::string());
        viewChanged = true;
    }
    const int pan = in(kPan);
    if (pan != LastPan) {
        LastPan = static_cast<int16_t>(pan);
        send(engine, 0xB0, 10, pan, ControlTrack);
    }
    const int wheel = in(kModWheel);
    if (wheel != LastModWheel) {
        LastModWheel = static_cast<int16_t>(wheel);
        send(engine, 0xB0, 1, wheel, ControlTrack);
    }
}

void NoteModule::update(Engine& engine) {
    if (engine.stopping()) {
        SendNoteOff(engine);
        return;
    }
    if (SendSetup || engine.ResyncPending) {
        LastPan = LastModWheel = LastProgram = -1;
        sendSetup(engine);
        SendSetup = false;
    }
    if (hasControls()) sendControls(engine);

    const bool runStarted = engine.runStarted();
    if (legato) {
        if (!LegatoPending && !runStarted) {
            const int note = in(kNote);
            if (note != LastNoteInput) {
                LastNoteInput = static_cast<int16_t>(note);
                LegatoPending = true;
                SendNoteOff(engine);
                NoteHeld = true;
                GateArmed = false;
            }
        } else {
            SendNoteOn(engine);
            LegatoPending = false;
            NoteHeld = true;
            GateArmed = false;
        }
        return;
    }
    if (in(kClock) != 0) {
        NoteHeld = true;
        if (GateArmed || runStarted) {
            SendNoteOn(engine);
            GateArmed = false;
        }
    } else {
        GateArmed = true;
        if (NoteHeld && !runStarted) SendNoteOff(engine);
        NoteHeld = false;
    }
}

// --- MIDIVoice and MIDIKey ---

MIDIVoice::MIDIVoice() : NoteModule(*typeIdByName("MIDIVoice"), kInputs) {}
MIDIKey::MIDIKey() : MIDIVoice(*typeIdByName("MIDIKey"), kInputs) {}

void MIDIVoice::sendSetup(Engine& engine) {
    if (SendSetup) send(engine, 0xB0, 7, 112, ControlTrack);
}

void MIDIVoice::SendNoteOn(Engine& engine) {
    SentVelocity = in(kVelocity);
    if (SentVelocity == 0) return;
    if (engine.seams().recordingTimeUp()) return;
    SentTransp = in(kTransp);
    const int note = SentTransp == kInhibitNoteOff ? in(kNote) : std::min(in(kNote) + SentTransp, 127);
    SentNote = static_cast<uint8_t>(note);
    send(engine, 0x90, SentNote, SentVelocity, NoteTrack);
    lampOn = SentVelocity >= 1;
    noteCaption = noteName(SentNote);
    viewChanged = true;
}

void MIDIVoice::SendNoteOff(Engine& engine) {
    if (SentTransp == kInhibitNoteOff || SentVelocity == 0) return;
    send(engine, 0x80, SentNote, 0, NoteTrack);
    lampOn = false;
    viewChanged = true;
}

void MIDIVoice::recallSettings(int snapshot) {
    ChannelModule::recallSettings(snapshot);
    legato = storedLegato_[static_cast<size_t>(snapshot)] != 0;
}

void MIDIVoice::storeSettings(int snapshot) {
    ChannelModule::storeSettings(snapshot);
    storedLegato_[static_cast<size_t>(snapshot)] = legato ? 1 : 0;
}

// Per snapshot: ChanPort, then the legato switch.
void MIDIVoice::writeFields(ByteWriter& out) const {
    ChannelModule::writeFields(out);
    for (uint8_t l : storedLegato_) out.u8(l);
}

void MIDIVoice::readFields(ByteReader& in) {
    ChannelModule::readFields(in);
    for (uint8_t& l : storedLegato_) l = in.u8();
}

// --- MIDITone ---

MIDITone::MIDITone() : NoteModule(*typeIdByName("MIDITone"), kInputs) {}

void MIDITone::sendSetup(Engine& engine) {
    if (SendSetup) send(engine, 0xB0, 7, 112, ControlTrack);
    // Pitch-bend range of one semitone, for the table's microtuning.
    send(engine, 0xB0, 101, 0, ControlTrack);
    send(engine, 0xB0, 100, 0, ControlTrack);
    send(engine, 0xB0, 6, 1, ControlTrack);
    send(engine, 0xB0, 38, 0, ControlTrack);
}

void MIDITone::SendNoteOn(Engine& engine) {
    SentVelocity = in(kVelocity);
    if (SentVelocity == 0) return;
    if (engine.seams().recordingTimeUp()) return;
    const uint8_t* table = engine.toneRow(in(kTable));
    const int steps = table[127] + 1;
    const int a = in(kNote);
    const int root = in(kTransp);
    const int octave = in(kOctave);
    const int step = a % steps;
    const int rootStep = root % steps;
    // Every read stays inside the table's own row of 128 bytes. Bytes 64..126 bend steps
    // 0..62, and step 63 reads byte 127, the step count, as the row lays out. A table of
    // more than 64 steps has no bend bytes for its steps from 64 on: they play unbent
    // rather than take a byte of the next row or of the names behind the last one.
    const int semitones = step < kToneRowBytes ? table[step] : 0;
    const int bend = 64 + step < kToneRowBytes ? table[64 + step] : kNoBend;
    const int octaves = stripOctaves ? octave : a / steps + root / steps + octave;
    // The root enters whole even though its octaves are already counted.
    SentNote = static_cast<uint8_t>(std::min(12 * octaves + root + semitones, 127));
    send(engine, 0xE0, 0, bend + 63, ControlTrack);
    send(engine, 0x90, SentNote, SentVelocity, NoteTrack);
    shownNote = SentNote;
    shownBend = bend;
    shownStep = (step + rootStep) % steps;
    shownOctave = octaves + (step + rootStep) / steps;
    lampOn = SentVelocity >= 1;
    viewChanged = true;
}

void MIDITone::SendNoteOff(Engine& engine) {
    if (SentVelocity == 0) return;
    send(engine, 0x80, SentNote, 0, NoteTrack);
    lampOn = false;
    viewChanged = true;
}

void MIDITone::recallSettings(int snapshot) {
    ChanPort = storedChanPort_[static_cast<size_t>(snapshot)];
    legato = storedLegato_[static_cast<size_t>(snapshot)] != 0;
    stripOctaves = storedStrip_[static_cast<size_t>(snapshot)] != 0;
}

void MIDITone::storeSettings(int snapshot) {
    storedChanPort_[static_cast<size_t>(snapshot)] = static_cast<uint8_t>(ChanPort);
    storedLegato_[static_cast<size_t>(snapshot)] = legato ? 1 : 0;
    storedStrip_[static_cast<size_t>(snapshot)] = stripOctaves ? 1 : 0;
}

// Per snapshot: ChanPort, legato, octave strip, and a byte kept as read.
void MIDITone::writeFields(ByteWriter& out) const {
    for (int s = 0; s < kSnapshotCount; ++s) {
        out.u8(storedChanPort_[static_cast<size_t>(s)]);
        out.u8(storedLegato_[static_cast<size_t>(s)]);
        out.u8(storedStrip_[static_cast<size_t>(s)]);
        out.u8(spare_[static_cast<size_t>(s)]);
    }
}

void MIDITone::readFields(ByteReader& in) {
    for (int s = 0; s < kSnapshotCount; ++s) {
        storedChanPort_[static_cast<size_t>(s)] = static_cast<uint8_t>(in.u8() & 63);
        storedLegato_[static_cast<size_t>(s)] = in.u8();
        storedStrip_[static_cast<size_t>(s)] = in.u8();
        spare_[static_cast<size_t>(s)] = in.u8();
    }
    SendSetup = false;
    ChanPort = storedChanPort_[0];
}

}  // namespace quillmer
