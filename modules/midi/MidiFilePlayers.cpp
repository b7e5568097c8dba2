#include "modules/midi/MidiFilePlayers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/Engine.h"

namespace quillmer {

namespace {

constexpr int kResetValue = 127;

// A dynamic array's head: dimensions, then per dimension its count and lower bound.
// Returns the number of elements (the product of the counts) and the head's bytes.
uint64_t readArrayHead(ByteReader& in, size_t elementSize, std::vector<uint8_t>& head) {
    const size_t start = in.position();
    const uint16_t dims = in.u16();
    uint64_t count = dims == 0 ? 0 : 1;
    bool plain = dims == 0;
    for (uint16_t d = 0; d < dims; ++d) {
        const auto n = static_cast<uint32_t>(in.i32());
        const int32_t lower = in.i32();
        plain = dims == 1 && lower == 0;
        count = n != 0 && count > UINT64_MAX / n ? UINT64_MAX : count * n;
    }
    if (count > in.remaining() / elementSize) throw RecordFormatError("array runs past the end");
    if (plain)
        head.clear();
    else
        head.assign(in.data() + start, in.data() + in.position());
    return count;
}

void writeArrayHead(ByteWriter& out, size_t count, const std::vector<uint8_t>& head) {
    if (!head.empty()) {
        out.raw(head);
        return;
    }
    if (count == 0) {
        out.u16(0);
        return;
    }
    out.u16(1);
    out.i32(static_cast<int32_t>(count));
    out.i32(0);
}

}  // namespace

int32_t firstEventAtOrAfter(const MfxList& list, float time) {
    return static_cast<int32_t>(std::lower_bound(list.times.begin(), list.times.end(), time) - list.times.begin());
}

// --- MidiListHolder ---

bool MidiListHolder::loadList(const std::string& path, std::string& error, std::string& reason) {
    MfxList loaded;
    if (!loadMfxFile(path, loaded, error, reason)) return false;
    setList(std::move(loaded));
    return true;
}

void MidiListHolder::setList(MfxList newList) {
    list = std::move(newList);
    list.times.resize(list.values.size());
    valuesHead_.clear();
    timesHead_.clear();
    listChanged();
}

void MidiListHolder::writeList(ByteWriter& out) const {
    out.i16(list.fileBpm);
    writeArrayHead(out, list.values.size(), valuesHead_);
    out.raw(list.values);
    writeArrayHead(out, list.times.size(), timesHead_);
    for (float t : list.times) {
        uint32_t bits = 0;
        std::memcpy(&bits, &t, sizeof bits);
        out.i32(static_cast<int32_t>(bits));
    }
    out.fixed(list.listName, MfxList::kNameBytes);
    out.raw(spare_);
    out.raw(list.trackInfo);
}

// Values are kept as read; the player cuts them to 0..127. When the two arrays differ in
// length, the events both hold are played.
void MidiListHolder::readList(ByteReader& in) {
    MfxList read;
    read.fileBpm = in.i16();
    const uint64_t values = readArrayHead(in, 1, valuesHead_);
    read.values = in.raw(static_cast<size_t>(values));
    const uint64_t times = readArrayHead(in, 4, timesHead_);
    read.times.resize(static_cast<size_t>(times));
    for (float& t : read.times) {
        const auto bits = static_cast<uint32_t>(in.i32());
        std::memcpy(&t, &bits, sizeof t);
    }
    read.listName = in.fixed(MfxList::kNameBytes);
    for (uint8_t& b : spare_) b = in.u8();
    for (uint8_t& b : read.trackInfo) b = in.u8();
    list = std::move(read);
    listChanged();
}

// --- MIDIFile ---

MIDIFile::MIDIFile() : Module(*typeIdByName("MIDIFile"), kInputs) {
    storedTempo_.fill(1);
    spareNames_.fill(systemOutput(sysbus::Off).name);
}

void MIDIFile::listChanged() {
    LoopStart = 0;
    EndFlag = 0;
    rewind();
    viewChanged = true;
}

void MIDIFile::rewind() {
    PlayTime = 0;
    NextEvent = 0;
    slider = 0;
}

void MIDIFile::seek(int percent) {
    if (!hasList()) return;
    slider = std::clamp(percent, 0, 100);
    PlayTime = std::max(0.0f, list.lastTime()) * static_cast<float>(slider) / 100.0f;
    NextEvent = firstEventAtOrAfter(list, PlayTime);
    EndFlag = 0;
    viewChanged = true;
}

void MIDIFile::setLoop(bool on) {
    loop = on;
    viewChanged = true;
}

void MIDIFile::setTempoOn(bool on) {
    tempoOn = on;
    LastTempo = -1;
    viewChanged = true;
}

void MIDIFile::update(Engine& engine) {
    if (!hasList()) return;
    const auto top = static_cast<int32_t>(std::min(list.values.size(), list.times.size())) - 1;
    if (top < 0) return;
    const int r = engine.ResyncPending ? kResetValue : in(kReset);
    ResetOut = static_cast<uint8_t>(r);
    if (r == kResetValue) {
        rewind();
        EndFlag = 0;
        setOutput(list.values[0] & 127);
    } else if (r == 0 && EndFlag == 0) {
        // Past the last event: back to the loop start, or the end.
        if (NextEvent > top) {
            if (loop) {
                NextEvent = std::clamp(LoopStart, 0, top);
                PlayTime = list.times[static_cast<size_t>(NextEvent)];
            } else {
                NextEvent = 0;
                PlayTime = 0;
                EndFlag = 1;
            }
        }
        // Every event whose time has come; the output is the last of them.
        int value = -1;
        while (EndFlag == 0 && NextEvent <= top && PlayTime >= list.times[static_cast<size_t>(NextEvent)]) {
            value = list.values[static_cast<size_t>(NextEvent)] & 127;
            ++NextEvent;
        }
        if (value >= 0) setOutput(value);
    }

    const int t = tempoOn ? in(kTempo) : 64;
    if (t != LastTempo) {
        LastTempo = static_cast<int16_t>(t);
        TempoStep = static_cast<float>(std::exp2((t - 64) / 32.0));
    }
    PlayTimeOut = PlayTime;
    if (EndFlag == 0 && r == 0) PlayTime += TempoStep;

    // A list from a damaged record may hold times that aren't numbers: the slider stays at 0.
    const float last = list.times[static_cast<size_t>(top)];
    const float share = last > 0 ? PlayTime / last * 100.0f : 0.0f;
    const int shown = std::isfinite(share) ? static_cast<int>(std::clamp(share, 0.0f, 100.0f)) : 0;
    if (shown != slider) {
        slider = shown;
        viewChanged = true;
    }
}

void MIDIFile::recallSettings(int snapshot) {
    loop = storedLoop_[static_cast<size_t>(snapshot)] != 0;
    tempoOn = storedTempo_[static_cast<size_t>(snapshot)] != 0;
}

void MIDIFile::storeSettings(int snapshot) {
    storedLoop_[static_cast<size_t>(snapshot)] = loop ? 1 : 0;
    storedTempo_[static_cast<size_t>(snapshot)] = tempoOn ? 1 : 0;
}

// Per snapshot: chkLoop, chkTempo, a byte kept as read.
void MIDIFile::writeFields(ByteWriter& out) const {
    out.raw(storedLoop_);
    out.raw(storedTempo_);
    out.raw(spare_);
}

void MIDIFile::readFields(ByteReader& in) {
    for (uint8_t& b : storedLoop_) b = in.u8();
    for (uint8_t& b : storedTempo_) b = in.u8();
    for (uint8_t& b : spare_) b = in.u8();
    recallSettings(0);
}

// The list, then three input names per snapshot (the third kept as read), their positions,
// and the fields.
void MIDIFile::writeBody(ByteWriter& out, const OutputNames& names) const {
    writeList(out);
    ByteWriter usual;
    Module::writeBody(usual, names);
    ByteReader two(usual.bytes());
    for (size_t s = 0; s < kSnapshotCount; ++s) {
        out.rawStr(two.rawStr());
        out.rawStr(two.rawStr());
        out.rawStr(spareNames_[s]);
    }
    for (size_t s = 0; s < kSnapshotCount; ++s) {
        out.u16(two.u16());
        out.u16(two.u16());
        out.u16(sparePositions_[s]);
    }
    out.raw(std::span<const uint8_t>(usual.bytes().data() + two.position(), two.remaining()));
}

void MIDIFile::readBody(ByteReader& in, OutputNames& names) {
    readList(in);
    ByteWriter usual;
    for (size_t s = 0; s < kSnapshotCount; ++s) {
        usual.rawStr(in.rawStr());
        usual.rawStr(in.rawStr());
        spareNames_[s] = std::string(in.rawStr());
    }
    for (size_t s = 0; s < kSnapshotCount; ++s) {
        usual.u16(in.u16());
        usual.u16(in.u16());
        sparePositions_[s] = in.u16();
    }
    usual.raw(in.raw(3 * kSnapshotCount));
    ByteReader rest(usual.bytes());
    Module::readBody(rest, names);
}

// --- MIDIFileSlave ---

MIDIFileSlave::MIDIFileSlave() : Module(*typeIdByName("MIDIFileSlave"), {}) { storedMaster_.fill(-1); }

void MIDIFileSlave::setMaster(int index) {
    master = static_cast<int16_t>(std::max(-1, index));
    lastTime_ = -1;
    viewChanged = true;
}

void MIDIFileSlave::listChanged() {
    NextEvent = 0;
    lastTime_ = -1;
    viewChanged = true;
}

void MIDIFileSlave::findMasters(Engine& engine) {
    std::vector<int16_t> indices;
    std::vector<std::string> names;
    engine.typeSlot(*typeIdByName("MIDIFile")).forEachActive([&](Module& m) {
        indices.push_back(m.Index);
        names.push_back(m.Name);
    });
    if (indices == masterIndices_ && names == masterNames_) return;
    masterIndices_ = std::move(indices);
    masterNames_ = std::move(names);
    viewChanged = true;
}

std::vector<std::string> MIDIFileSlave::masterChoices() const {
    std::vector<std::string> rows{"(none)"};
    rows.insert(rows.end(), masterNames_.begin(), masterNames_.end());
    return rows;
}

int MIDIFileSlave::masterChoice() const {
    const auto it = std::find(masterIndices_.begin(), masterIndices_.end(), master);
    return it == masterIndices_.end() ? 0 : static_cast<int>(it - masterIndices_.begin()) + 1;
}

void MIDIFileSlave::chooseMaster(int row) {
    setMaster(row >= 1 && static_cast<size_t>(row) <= masterIndices_.size() ? masterIndices_[static_cast<size_t>(row - 1)] : -1);
}

void MIDIFileSlave::update(Engine& engine) {
    findMasters(engine);
    if (!hasList() || master < 0) return;
    const Module* m = engine.typeSlot(*typeIdByName("MIDIFile")).at(master);
    if (!m || m->Active == 0) return;
    const auto& file = static_cast<const MIDIFile&>(*m);
    const auto top = static_cast<int32_t>(std::min(list.values.size(), list.times.size())) - 1;
    if (top < 0) return;
    const float time = file.PlayTimeOut;
    if (file.ResetOut == kResetValue) {
        NextEvent = 0;
        lastTime_ = -1;
        setOutput(list.values[0] & 127);
        return;
    }
    if (file.ResetOut != 0 || file.EndFlag == 1) return;
    // The master went back (a loop, the slider): pick up the list from there.
    if (time < lastTime_) NextEvent = firstEventAtOrAfter(list, time);
    lastTime_ = time;
    int value = -1;
    while (NextEvent <= top && time >= list.times[static_cast<size_t>(NextEvent)]) {
        value = list.values[static_cast<size_t>(NextEvent)] & 127;
        ++NextEvent;
    }
    if (value >= 0) setOutput(value);
}

void MIDIFileSlave::recallSettings(int snapshot) {
    master = storedMaster_[static_cast<size_t>(snapshot)];
    lastTime_ = -1;
}

void MIDIFileSlave::storeSettings(int snapshot) { storedMaster_[static_cast<size_t>(snapshot)] = master; }

// The list, then the master's instance index per snapshot (i16, -1 none).
void MIDIFileSlave::writeBody(ByteWriter& out, const OutputNames&) const {
    writeList(out);
    for (int16_t m : storedMaster_) out.i16(m);
}

void MIDIFileSlave::readBody(ByteReader& in, OutputNames&) {
    readList(in);
    for (int16_t& m : storedMaster_) m = in.i16();
    recallSettings(0);
}

}  // namespace quillmer
