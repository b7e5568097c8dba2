#include "modules/sequencers/Rhythm.h"

#include <algorithm>
#include <cmath>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kRhythmId = *typeIdByName("Rhythm");
constexpr int kHoldFrom = 110;

RhythmRows newRows() {
    RhythmRows rows;
    rows.lengths.fill(RhythmRows::kMaxLength);
    rows.bits[0] = 1;
    rows.lengths[0] = 8;
    return rows;
}

// Shared by every Rhythm of the program.
RhythmRows& clipboard() {
    static RhythmRows rows = newRows();
    return rows;
}
RhythmRows& undoBuffer() {
    static RhythmRows rows = newRows();
    return rows;
}
}  // namespace

Rhythm::Rhythm() : Module(kRhythmId, kInputs), Rows(newRows()) {
    for (int s = 0; s < kSnapshotCount; ++s) storeSettings(s);
}

void Rhythm::update(Engine& engine) {
    const int g = in(kGates);
    if (g != LastGatesInput) {
        LastGatesInput = g;
        GateMask = g;
    }
    if (GateMask != ShownMask) {
        ShownMask = GateMask;
        viewChanged = true;
    }

    bool running = true;
    if (engine.ResyncPending) {
        Counter = 0;
        running = false;
    } else {
        const int d = in(kNote);
        bool turbo = false;
        if (d < kHoldFrom) {
            setState(State::Note, d);
        } else if (d != kTurboCode) {
            setState(State::Hold, d);
            Counter = 0;
            running = false;
        } else {
            turbo = true;
            setState(State::Turbo, d);
        }
        if (running && (turbo || engine.counters.atZero(d % kDurationCodeCount))) Counter += 1;
    }

    int out = 0;
    if (running) {
        const auto count = static_cast<long>(Counter);
        for (int r = 0; r < kRows; ++r) {
            if (!((GateMask >> r) & 1)) continue;
            const auto at = static_cast<size_t>(r);
            const int pos = static_cast<int>(count % Rows.lengths[at]);
            if (pos != ShownPos[at] && !HidePositions) viewChanged = true;
            ShownPos[at] = pos;
            if ((Rows.bits[at] >> pos) & 1) out |= 1 << r;
        }
    }
    if (out == ShownOut) return;
    ShownOut = out;
    setOutput(out);
    viewChanged = true;
}

void Rhythm::setState(State s, int note) {
    if (note == LastNote) return;
    LastNote = note;
    state = s;
    viewChanged = true;
}

void Rhythm::toggleGate(int row, int step) {
    if (row < 0 || row >= kRows || step < 0 || step >= RhythmRows::kMaxLength) return;
    Rows.bits[static_cast<size_t>(row)] ^= 1u << step;
    viewChanged = true;
}

void Rhythm::setLength(int row, int step) {
    if (row < 0 || row >= kRows) return;
    Rows.lengths[static_cast<size_t>(row)] = RhythmRows::repairLength(step + 1);
    viewChanged = true;
}

void Rhythm::toggleRow(int row) {
    if (row < 0 || row >= kRows) return;
    GateMask ^= 1 << row;
    viewChanged = true;
}

void Rhythm::pressLamp(int row, int step, int button, int keys) {
    if (button == 0) return;
    if (step == -1) {
        toggleRow(row);
        return;
    }
    if (button == 1 && !(keys & 2))
        toggleGate(row, step);
    else
        setLength(row, step);
}

int Rhythm::stepAtY(double y, double height) {
    if (height <= 0) return 0;
    const double step = std::floor(32 - (height - y) / height * 32 - 0.5);
    return std::clamp(static_cast<int>(step), 0, RhythmRows::kMaxLength - 1);
}

void Rhythm::copyRows() const { clipboard() = Rows; }

void Rhythm::pasteRows() {
    undoBuffer() = Rows;
    Rows = clipboard();
    for (int& length : Rows.lengths) length = RhythmRows::repairLength(length);
    viewChanged = true;
}

void Rhythm::undoRows() {
    std::swap(Rows, undoBuffer());
    for (int& length : Rows.lengths) length = RhythmRows::repairLength(length);
    viewChanged = true;
}

void Rhythm::recallSettings(int snapshot) {
    ByteReader in(stored_.data() + static_cast<size_t>(snapshot * kSnapshotBytes), kSnapshotBytes);
    for (uint32_t& bits : Rows.bits) bits = static_cast<uint32_t>(in.i32());
    for (int& length : Rows.lengths) length = RhythmRows::repairLength(in.u8());
    GateMask = in.u8();
    HidePositions = in.u8() != 0;
    ShownMask = -1;
    viewChanged = true;
}

void Rhythm::storeSettings(int snapshot) {
    ByteWriter out;
    for (uint32_t bits : Rows.bits) out.i32(static_cast<int32_t>(bits));
    for (int length : Rows.lengths) out.u8(static_cast<uint8_t>(length));
    out.u8(static_cast<uint8_t>(GateMask & 127));
    out.u8(HidePositions ? 1 : 0);
    std::copy(out.bytes().begin(), out.bytes().end(), stored_.begin() + snapshot * kSnapshotBytes);
}

void Rhythm::writeFields(ByteWriter& out) const { out.raw(stored_); }

void Rhythm::readFields(ByteReader& in) {
    for (uint8_t& b : stored_) b = in.u8();
    recallSettings(0);
}

}  // namespace quillmer
