#include "modules/midi/ChannelOutputs.h"

#include <algorithm>
#include <charconv>

#include "engine/Engine.h"

namespace quillmer {

namespace {
enum ChanInput { kBank, kAfterTouch, kVolume, kBreath, kFoot, kExpression, kPortamento };

}  // namespace

// --- MIDIChan ---

MIDIChan::MIDIChan() : ChannelModule(*typeIdByName("MIDIChan"), kInputs) {}

void MIDIChan::update(Engine& engine) {
    if (SendSetup || engine.ResyncPending) {
        SendSetup = false;
        last_.fill(-1);
    }
    for (int k = kBank; k <= kPortamento; ++k) {
        const int value = in(k);
        if (value == last_[static_cast<size_t>(k)]) continue;
        last_[static_cast<size_t>(k)] = static_cast<int16_t>(value);
        switch (k) {
            case kBank:
                if (engine.options.bankMsb) {
                    send(engine, 0xB0, 0, value, ControlTrack);
                } else {
                    send(engine, 0xB0, 0, 0, ControlTrack);
                    send(engine, 0xB0, 32, value, ControlTrack);
                }
                engine.ports.currentBank[static_cast<size_t>(ChanPort & 63)] = static_cast<int16_t>(value);
                bankCaption = std::to_string(value) + ". " + (engine.ports.bankName ? engine.ports.bankName(value) : std::string());
                viewChanged = true;
                break;
            case kAfterTouch: send(engine, 0xD0, value, 0, ControlTrack); break;
            case kVolume: send(engine, 0xB0, 7, value, ControlTrack); break;
            case kBreath: send(engine, 0xB0, 2, value, ControlTrack); break;
            case kFoot: send(engine, 0xB0, 4, value, ControlTrack); break;
            case kExpression: send(engine, 0xB0, 11, value, ControlTrack); break;
            case kPortamento:
                if (value != 0) {
                    if (!portamentoOn_) send(engine, 0xB0, 65, 127, ControlTrack);
                    portamentoOn_ = true;
                    send(engine, 0xB0, 5, value, ControlTrack);
                } else {
                    send(engine, 0xB0, 5, 0, ControlTrack);
                    if (portamentoOn_) send(engine, 0xB0, 65, 0, ControlTrack);
                    portamentoOn_ = false;
                }
                break;
            default: break;
        }
    }
}

// --- MIDIPoly ---

MIDIPoly::MIDIPoly() : ChannelModule(*typeIdByName("MIDIPoly"), kInputs) { storedKey_.fill(key); }

void MIDIPoly::update(Engine& engine) {
    if (engine.ResyncPending) last_ = -1;
    const int value = in(0);
    if (value == last_) return;
    last_ = static_cast<int16_t>(value);
    send(engine, 0xA0, key, value, ControlTrack);
}

std::string MIDIPoly::setKeyText(const std::string& text) {
    int value = key;
    std::from_chars(text.data(), text.data() + text.size(), value);
    key = static_cast<uint8_t>(std::clamp(value, 0, 127));
    viewChanged = true;
    return std::to_string(key);
}

void MIDIPoly::recallSettings(int snapshot) {
    ChannelModule::recallSettings(snapshot);
    key = storedKey_[static_cast<size_t>(snapshot)];
}

void MIDIPoly::storeSettings(int snapshot) {
    ChannelModule::storeSettings(snapshot);
    storedKey_[static_cast<size_t>(snapshot)] = key;
}

// Per snapshot: ChanPort, then the key.
void MIDIPoly::writeFields(ByteWriter& out) const {
    ChannelModule::writeFields(out);
    for (uint8_t k : storedKey_) out.u8(k);
}

void MIDIPoly::readFields(ByteReader& in) {
    ChannelModule::readFields(in);
    for (uint8_t& k : storedKey_) k = static_cast<uint8_t>(in.u8() & 127);
    key = storedKey_[0];
}

// --- MIDIPBend ---

MIDIPBend::MIDIPBend() : ChannelModule(*typeIdByName("MIDIPBend"), kInputs) {}

void MIDIPBend::update(Engine& engine) {
    const int value = in(0);
    if (value == last_ && !engine.ResyncPending) return;
    last_ = static_cast<int16_t>(value);
    send(engine, 0xE0, 0, value, ControlTrack);
}

}  // namespace quillmer
