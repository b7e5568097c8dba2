#pragma once
// Rhythm: seven gate loops of 2..32 steps read by one counter on a duration, so that loops
// of different lengths drift against each other. Output bit r is row r's gate at its own
// position. The Gates input, when it changes, enables and inhibits the rows.
// Needs the engine lock.

#include <array>
#include <cstdint>
#include <string>

#include "engine/Catalogue.h"
#include "engine/Module.h"

namespace quillmer {

// One Rhythm's pattern: the gates and the length of each row.
struct RhythmRows {
    static constexpr int kRows = 7;
    static constexpr int kMaxLength = 32;
    std::array<uint32_t, kRows> bits{};
    std::array<int, kRows> lengths{};
    // A length outside 2..32 reads as 32.
    static int repairLength(int length) { return length < 2 || length > kMaxLength ? kMaxLength : length; }
    bool operator==(const RhythmRows&) const = default;
};

class Rhythm final : public Module {
public:
    static constexpr int kRows = RhythmRows::kRows;
    static constexpr int kNote = 0;
    static constexpr int kGates = 1;
    static constexpr InputSpec kInputs[] = {
        {" Note", "Duration: 0=1/8th, 1=1/4th, 2-96=ticks; 97-109=same as Note; 126=Turbo, 127=Hold", sysbus::Off},
        {" Gates", "Bit values enable/inhibit the 7 gate rows.", sysbus::Off},
    };
    // What the state lamp (Check1's caption) reads.
    enum class State : uint8_t { Note, Hold, Turbo };

    Rhythm();

    const RhythmRows& rows() const { return Rows; }
    int rowLength(int row) const { return Rows.lengths[static_cast<size_t>(row)]; }
    bool gateAt(int row, int step) const { return (Rows.bits[static_cast<size_t>(row)] >> step) & 1; }
    int position(int row) const { return ShownPos[static_cast<size_t>(row)]; }
    float counter() const { return Counter; }

    int GateMask = 1;
    bool HidePositions = false;  // Check1
    State state = State::Note;
    int ShownOut = 0;

    // LED1: a click toggles a gate; the length gesture makes the row end after `step`.
    void toggleGate(int row, int step);
    void setLength(int row, int step);
    // LEDSelect: a click enables or inhibits a row.
    void toggleRow(int row);
    // A press on the lamps (button 1 left, 2 other; keys 2 Shift): on a gate lamp the left
    // button toggles it, the other button or Shift with the left makes the row end there;
    // step -1 is the row's enable lamp.
    void pressLamp(int row, int step, int button, int keys);
    // The step under a pointer at y over a lamp strip of usable height `height`, 0..31.
    static int stepAtY(double y, double height);
    // Copy, Paste and Undo through the clipboard and undo buffer that all Rhythms share.
    void copyRows() const;
    void pasteRows();
    void undoRows();

    // Per snapshot: the gate words, the lengths, the enable mask and Check1.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    static constexpr int kSnapshotBytes = kRows * 4 + kRows + 2;
    void setState(State s, int note);
    RhythmRows Rows;
    std::array<int, kRows> ShownPos{};
    float Counter = 0;
    int LastGatesInput = 0;  // an input left off keeps the mask a new or loaded module has
    int ShownMask = -1;
    int LastNote = -1;
    std::array<uint8_t, kSnapshotBytes * kSnapshotCount> stored_{};
};

}  // namespace quillmer
