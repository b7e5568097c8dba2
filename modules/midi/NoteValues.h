#pragma once
// Modules that speak in note durations and note names and send no MIDI: Notes, XNote,
// Arpeg and Pitch. Everything here needs the engine lock.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/Durations.h"
#include "engine/Module.h"

namespace quillmer {

// A menu of the 31 durations; the output is the chosen row's duration code. No inputs.
class Notes final : public Module {
public:
    Notes();

    int row() const { return row_; }  // cbNotes, 0..30, per snapshot
    std::string_view rowName() const { return TimeBaseTable[static_cast<size_t>(row_)].name; }
    // The menu's choice: the code goes out at once.
    void choose(int row);

    // Per snapshot: the menu row, one byte.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    int code() const { return TimeBaseTable[static_cast<size_t>(row_)].code; }
    int row_ = 0;
    std::array<uint8_t, kSnapshotCount> storedRow_{};
};

// 0..29 as durations in rising length (above 29 counts as 7); the output is the code.
class XNote final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Input", "Value of 0-29 gives note, triplet, dotted ...etc", sysbus::Off},
    };
    XNote();

    std::string_view durationName;  // Label1, rewritten when the code changes

    // One byte per snapshot that the record carries; nothing here reads it, it is written
    // back as it was read.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    int lastCode_ = -1;
    std::array<uint8_t, kSnapshotCount> storedByte_{};
};

// A stepped gate: a rising Clock loads Steps; on each beat of Note the output is the steps
// left, held for the on-time, then 0. So it counts Steps, Steps-1, .. 1.
class Arpeg final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Note", "Arp Note Duration: 0=1/8th, 1=1/4th,2-96=ticks", sysbus::Off},
        {" % On", "Gate-On time", sysbus::Off},
        {" Steps", "Number of arpeggios per clock", sysbus::Off},
        {" Clock", "Gate edge starts arpeggios", sysbus::Off},
    };
    Arpeg();

    DurationLabel noteLabel = DurationLabel::Dur;  // yellow while Note is above 109
    int stepsLeft() const { return stepsLeft_; }
    void update(Engine& engine) override;

private:
    bool armed_ = false;
    int stepsLeft_ = 0;
    int storedNote_ = -1;  // after the substitution of 6 for codes above 109
    int storedPercent_ = -1;
    int onTicks_ = 0;
    int onCount_ = 0;
    int value_ = 0;
};

// Shows its input as a number and a note name; sends nothing, has no output.
class Pitch final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Input", "Value for Note/Octave display", sysbus::Off},
    };
    Pitch();

    int shownValue = 0;                 // bxIn
    std::string noteCaption = "Cn : 0"; // bxOut1
    void update(Engine& engine) override;

private:
    int last_ = -1;
};

}  // namespace quillmer
