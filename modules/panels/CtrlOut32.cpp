#include "modules/panels/CtrlOut32.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
// A new bank sends on controllers the MIDI standard leaves free: 16..31, then 102..117.
int defaultController(int slider) { return slider < 16 ? 16 + slider : 102 + slider - 16; }
}  // namespace

CtrlOut32::CtrlOut32() : Module(*typeIdByName("CtrlOut32"), {}) {
    lastSent_.fill(-1);
    for (int i = 0; i < kSliders; ++i) module_[kFirstController + static_cast<size_t>(i)] = static_cast<uint8_t>(defaultController(i));
}

void CtrlOut32::setValue(int slider, int value) {
    if (slider < 0 || slider >= kSliders) return;
    values_[static_cast<size_t>(slider)] = static_cast<uint8_t>(std::clamp(value, 0, 127));
    viewChanged = true;
}

void CtrlOut32::setController(int slider, int controller) {
    if (slider < 0 || slider >= kSliders) return;
    module_[kFirstController + static_cast<size_t>(slider)] = static_cast<uint8_t>(std::clamp(controller, 0, 127));
    lastSent_[static_cast<size_t>(slider)] = -1;
    viewChanged = true;
}

void CtrlOut32::setChanPort(int chanPort) {
    module_[kChanPort] = static_cast<uint8_t>(chanPort & 63);
    lastSent_.fill(-1);
    viewChanged = true;
}

std::string CtrlOut32::channelCaption() const {
    const std::string channel = std::to_string((chanPort() & 15) + 1);
    return channel + (channel.size() == 1 ? " " : "") + static_cast<char>('A' + chanPort() / 16);
}

void CtrlOut32::setWindowShown(bool shown) {
    module_[kShown] = shown ? 1 : 0;
    viewChanged = true;
}

void CtrlOut32::putWord(size_t at, int v) {
    const auto u = static_cast<uint16_t>(static_cast<int16_t>(std::clamp(v, -32768, 32767)));
    module_[at] = static_cast<uint8_t>(u & 0xFF);
    module_[at + 1] = static_cast<uint8_t>(u >> 8);
}

void CtrlOut32::setWindowPlace(int left, int top) {
    putWord(kWindowLeft, left);
    putWord(kWindowTop, top);
}

void CtrlOut32::update(Engine& engine) {
    if (engine.ResyncPending) lastSent_.fill(-1);
    const int channel = chanPort() & 15;
    const int port = chanPort() / 16;
    for (size_t i = 0; i < kSliders; ++i) {
        if (lastSent_[i] == values_[i]) continue;
        lastSent_[i] = values_[i];
        engine.ports.SendMIDI(port, static_cast<uint8_t>(0xB0 | channel), static_cast<uint8_t>(controller(static_cast<int>(i))),
                              values_[i]);
        ++sent_;
    }
}

void CtrlOut32::onAttach(Engine&) {
    // A bank made new or read from a file sends its sliders once, when it first runs.
    lastSent_.fill(-1);
}

void CtrlOut32::recallSettings(int snapshot) {
    values_ = stored_[static_cast<size_t>(snapshot)];
    for (uint8_t& v : values_) v &= 127;
    viewChanged = true;
}

void CtrlOut32::storeSettings(int snapshot) {
    auto& row = stored_[static_cast<size_t>(snapshot)];
    for (size_t i = 0; i < kSliders; ++i)
        if ((row[i] & 127) != values_[i]) row[i] = values_[i];
}

void CtrlOut32::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.str(title);
    for (const std::string& label : labels) out.str(label);
    Module::writeBody(out, names);
}

void CtrlOut32::readBody(ByteReader& in, OutputNames& names) {
    title = in.str();
    for (std::string& label : labels) label = in.str();
    Module::readBody(in, names);
}

void CtrlOut32::writeFields(ByteWriter& out) const {
    for (const auto& row : stored_) out.raw(row);
    out.raw(module_);
}

void CtrlOut32::readFields(ByteReader& in) {
    for (auto& row : stored_)
        for (uint8_t& b : row) b = in.u8();
    for (uint8_t& b : module_) b = in.u8();
    values_ = stored_[0];
    for (uint8_t& v : values_) v &= 127;
}

}  // namespace quillmer
