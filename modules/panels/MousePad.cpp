#include "modules/panels/MousePad.h"

#include <algorithm>

#include "engine/Engine.h"
#include "modules/panels/RawHead.h"

namespace quillmer {

namespace {
const ModuleTypeId kPadId = *typeIdByName("Mousexy");
constexpr int kReadings = static_cast<int>(PadReading::kCount);
}  // namespace

// --- Mousexy ---

Mousexy::Mousexy() : Module(kPadId, {}) {}

int Mousexy::axis(int pos, int size) {
    if (size <= 1) return 0;
    return std::clamp((pos * 127 + (size - 1) / 2) / (size - 1), 0, 127);
}

void Mousexy::press(int x, int y, int size, int buttons) {
    buttons_ = buttons & 7;
    ++clicks_;
    drag(x, y, size);
}

void Mousexy::drag(int x, int y, int size) {
    x_ = axis(x, size);
    y_ = 127 - axis(y, size);
    viewChanged = true;
}

void Mousexy::release() {
    buttons_ = 0;
    if (springBack()) x_ = y_ = 64;
    viewChanged = true;
}

void Mousexy::setSpringBack(bool on) {
    kept_[0] = on ? 1 : 0;
    viewChanged = true;
}

int Mousexy::reading(PadReading r) const {
    switch (r) {
        case PadReading::X: return x_;
        case PadReading::Y: return y_;
        case PadReading::Buttons: return buttons_;
        case PadReading::Gate: return buttons_ != 0 ? 127 : 0;
        case PadReading::Clicks: return clicks_ & 127;
        default: return 0;
    }
}

void Mousexy::writeBody(ByteWriter& out, const OutputNames&) const {
    writeRawHead(out, *this);
    out.raw(kept_);
}

void Mousexy::readBody(ByteReader& in, OutputNames&) {
    readRawHead(in, *this);
    for (uint8_t& b : kept_) b = in.u8();
}

void Mousexy::onAttach(Engine&) { Name = numberedName(*this); }

const Mousexy* findPad(Engine& engine, int index) {
    const Module* m = engine.typeSlot(kPadId).at(static_cast<int16_t>(index));
    if (m == nullptr || m->Active == 0 || m->isPlaceholder()) return nullptr;
    return static_cast<const Mousexy*>(m);
}

// --- MouseOut ---

MouseOut::MouseOut() : Module(*typeIdByName("MouseOut"), {}) {}

void MouseOut::setPad(int index) {
    pad_ = std::clamp(index, 0, 127);
    viewChanged = true;
}

void MouseOut::setReading(int reading) {
    reading_ = std::clamp(reading, 0, kReadings - 1);
    viewChanged = true;
}

void MouseOut::update(Engine& engine) {
    const Mousexy* pad = findPad(engine, pad_);
    setOutput(pad ? pad->reading(reading_) : 0);
}

void MouseOut::recallSettings(int snapshot) {
    pad_ = stored_.get(0, snapshot) & 127;
    reading_ = std::min<int>(stored_.get(1, snapshot), kReadings - 1);
}

void MouseOut::storeSettings(int snapshot) {
    if ((stored_.get(0, snapshot) & 127) != pad_) stored_.put(0, snapshot, pad_);
    if (std::min<int>(stored_.get(1, snapshot), kReadings - 1) != reading_) stored_.put(1, snapshot, reading_);
}

void MouseOut::readFields(ByteReader& in) {
    stored_.read(in);
    pad_ = stored_.get(0, 0) & 127;
    reading_ = std::min<int>(stored_.get(1, 0), kReadings - 1);
}

}  // namespace quillmer
