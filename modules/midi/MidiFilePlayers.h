#pragma once
// MIDIFile plays a translated MIDI list (.mfx) as a 0..127 stream with tempo scaling,
// looping and a position slider; MIDIFileSlave plays another list on the time line of a
// chosen MIDIFile. The list is kept in the patch. Everything here needs the engine lock.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/Module.h"
#include "modules/midi/MfxFile.h"

namespace quillmer {

// The list part of both records: FileBpm (i16), the values and times as dynamic arrays,
// the list name (f20), three bytes kept as read (f3), TrackInfo (64 bytes).
class MidiListHolder {
public:
    MfxList list;
    // Loads a .mfx file: false with the message to show (`error`) and what was wrong.
    bool loadList(const std::string& path, std::string& error, std::string& reason);
    void setList(MfxList newList);
    bool hasList() const { return !list.empty(); }

protected:
    void writeList(ByteWriter& out) const;
    void readList(ByteReader& in);
    // Called when a new list is in place.
    virtual void listChanged() {}
    virtual ~MidiListHolder() = default;

private:
    std::array<uint8_t, 3> spare_{' ', ' ', ' '};
    // The two arrays' heads as read, when they aren't the plain one-dimensional form, so
    // that an unchanged list writes back byte for byte.
    std::vector<uint8_t> valuesHead_, timesHead_;
};

class MIDIFile final : public Module, public MidiListHolder {
public:
    static constexpr InputSpec kInputs[] = {
        {" Reset", "127 returns to the start; 0 plays", sysbus::Off},
        {" Tempo", "Playing speed: 64 is normal, each 32 up doubles it, each 32 down halves it", sysbus::Mid},
    };
    static constexpr int kReset = 0;
    static constexpr int kTempo = 1;
    MIDIFile();

    // Per snapshot.
    bool loop = false;     // chkLoop: at the end, play on from LoopStart
    bool tempoOn = true;   // chkTempo: the Tempo input scales the speed; out, normal speed

    // Play state.
    float PlayTime = 0;
    int32_t NextEvent = 0;
    int32_t LoopStart = 0;
    float TempoStep = 1;
    int16_t LastTempo = -1;
    // What slaves read.
    float PlayTimeOut = 0;
    uint8_t ResetOut = 0;
    uint8_t EndFlag = 0;
    int slider = 0;  // slCurrent, 0..100

    // The slider moved: play on from that share of the list's length.
    void seek(int percent);
    void setLoop(bool on);
    void setTempoOn(bool on);

    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;
    void listChanged() override;

private:
    void rewind();
    std::array<uint8_t, kSnapshotCount> storedLoop_{};
    std::array<uint8_t, kSnapshotCount> storedTempo_{};
    std::array<uint8_t, kSnapshotCount> spare_{};
    // The record holds a third input per snapshot that no control uses: kept as read.
    std::array<std::string, kSnapshotCount> spareNames_;
    std::array<uint16_t, kSnapshotCount> sparePositions_{};
};

class MIDIFileSlave final : public Module, public MidiListHolder {
public:
    MIDIFileSlave();

    int16_t master = -1;  // cbXmID: instance index of the MIDIFile followed, per snapshot
    int32_t NextEvent = 0;
    void setMaster(int index);
    // The menu: "(none)", then the MIDIFile modules by name, as the last update found them.
    std::vector<std::string> masterChoices() const;
    int masterChoice() const;
    void chooseMaster(int row);

    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;
    void listChanged() override;

private:
    void findMasters(Engine& engine);
    float lastTime_ = -1;  // the master's time last seen
    std::vector<int16_t> masterIndices_;
    std::vector<std::string> masterNames_;
    std::array<int16_t, kSnapshotCount> storedMaster_{};
};

// The position of the first event at or after `time` (the list sorted by time).
int32_t firstEventAtOrAfter(const MfxList& list, float time);

}  // namespace quillmer
