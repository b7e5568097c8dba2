#include "modules/midi/ControllerOutput.h"

#include <algorithm>
#include <charconv>

#include "engine/Engine.h"

namespace quillmer {

MIDICtrl::MIDICtrl() : ChannelModule(*typeIdByName("MIDICtrl"), kInputs) { storedController_.fill(controller); }

void MIDICtrl::update(Engine& engine) {
    if (SendSetup || engine.ResyncPending) {
        SendSetup = false;
        last_ = -1;
    }
    const int value = in(0);
    if (value == last_) return;
    last_ = static_cast<int16_t>(value);
    send(engine, 0xB0, controller, value, ControlTrack);
    viewChanged = true;
}

std::string MIDICtrl::setControllerText(const std::string& text) {
    int value = controller;
    std::from_chars(text.data(), text.data() + text.size(), value);
    const auto chosen = static_cast<uint8_t>(std::clamp(value, 0, 127));
    if (chosen != controller) last_ = -1;  // the new controller gets the value now
    controller = chosen;
    viewChanged = true;
    return std::to_string(controller);
}

// Another controller or channel gets the value at once.
void MIDICtrl::recallSettings(int snapshot) {
    const int16_t before = ChanPort;
    ChannelModule::recallSettings(snapshot);
    const auto stored = static_cast<uint8_t>(storedController_[static_cast<size_t>(snapshot)] & 127);
    if (stored != controller || ChanPort != before) last_ = -1;
    controller = stored;
}

void MIDICtrl::storeSettings(int snapshot) {
    ChannelModule::storeSettings(snapshot);
    storedController_[static_cast<size_t>(snapshot)] = controller;
}

// Per snapshot: ChanPort, then the controller number.
void MIDICtrl::writeFields(ByteWriter& out) const {
    ChannelModule::writeFields(out);
    for (uint8_t c : storedController_) out.u8(c);
}

void MIDICtrl::readFields(ByteReader& in) {
    ChannelModule::readFields(in);
    for (uint8_t& c : storedController_) c = in.u8();  // kept as read, cut where used
    controller = static_cast<uint8_t>(storedController_[0] & 127);
}

}  // namespace quillmer
