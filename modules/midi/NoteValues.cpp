#include "modules/midi/NoteValues.h"

#include <algorithm>

#include "engine/Engine.h"
#include "modules/sequencers/Clocks.h"
#include "tables/ToneTables.h"

namespace quillmer {

namespace {
const ModuleTypeId kNotesId = *typeIdByName("Notes");
const ModuleTypeId kXNoteId = *typeIdByName("XNote");
const ModuleTypeId kArpegId = *typeIdByName("Arpeg");
const ModuleTypeId kPitchId = *typeIdByName("Pitch");

constexpr int kLastRow = static_cast<int>(TimeBaseTable.size()) - 1;  // " Turbo"
constexpr int kLastXNote = static_cast<int>(TimeBaseOrder.size()) - 1;
constexpr int kXNoteFallback = 7;  // "  8th"
}  // namespace

// --- Notes ---

Notes::Notes() : Module(kNotesId, {}) {}

void Notes::choose(int row) {
    row_ = std::clamp(row, 0, kLastRow);
    viewChanged = true;
    setOutput(code());
}

void Notes::update(Engine&) { setOutput(code()); }

void Notes::recallSettings(int snapshot) {
    row_ = std::min<int>(storedRow_[static_cast<size_t>(snapshot)], kLastRow);
    setOutput(code());
}

void Notes::storeSettings(int snapshot) { storedRow_[static_cast<size_t>(snapshot)] = static_cast<uint8_t>(row_); }

void Notes::writeFields(ByteWriter& out) const {
    for (uint8_t b : storedRow_) out.u8(b);
}

void Notes::readFields(ByteReader& in) {
    for (uint8_t& b : storedRow_) b = in.u8();
    row_ = std::min<int>(storedRow_[0], kLastRow);
}

// --- XNote ---

XNote::XNote() : Module(kXNoteId, kInputs) {}

void XNote::update(Engine&) {
    int v = in(0);
    if (v > kLastXNote) v = kXNoteFallback;
    const TimeBaseEntry& entry = TimeBaseTable[TimeBaseOrder[static_cast<size_t>(v)]];
    if (entry.code == lastCode_) return;
    lastCode_ = entry.code;
    durationName = entry.name;
    viewChanged = true;
    setOutput(entry.code);
}

void XNote::writeFields(ByteWriter& out) const {
    for (uint8_t b : storedByte_) out.u8(b);
}

void XNote::readFields(ByteReader& in) {
    for (uint8_t& b : storedByte_) b = in.u8();
}

// --- Arpeg ---

Arpeg::Arpeg() : Module(kArpegId, kInputs) {}

void Arpeg::update(Engine& engine) {
    if (in(3) == 0) {
        armed_ = true;
    } else if (armed_) {
        stepsLeft_ = in(2);
        armed_ = false;
    }
    int note = in(0);
    const int percent = in(1);
    // The label follows every pass: a 6 after a 110 matches the stored pair but is valid.
    const DurationLabel label = note < kDurationCodeCount ? DurationLabel::Dur : DurationLabel::DurYellow;
    if (label != noteLabel) {
        noteLabel = label;
        viewChanged = true;
    }
    if (note != storedNote_ || percent != storedPercent_) {
        if (note >= kDurationCodeCount) note = kFallbackCode;
        onTicks_ = GateTicks(note, percent);
        storedNote_ = note;
        storedPercent_ = percent;
    }
    if (!engine.counters.atZero(storedNote_)) {
        if (onCount_ != 0) --onCount_;
        else value_ = 0;
    } else if (stepsLeft_ != 0) {
        value_ = stepsLeft_--;
        onCount_ = onTicks_;
    } else {
        value_ = 0;
        onCount_ = 0;
    }
    setOutput(value_);
}

// --- Pitch ---

Pitch::Pitch() : Module(kPitchId, kInputs) {}

void Pitch::update(Engine&) {
    const int v = in(0);
    if (v == last_) return;
    last_ = v;
    shownValue = v;
    noteCaption = NoteName(v);
    viewChanged = true;
}

}  // namespace quillmer
