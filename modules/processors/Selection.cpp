#include "modules/processors/Selection.h"

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kLatestId = *typeIdByName("Latest");
const ModuleTypeId kRelay2Id = *typeIdByName("Relay2");
const ModuleTypeId kSelctId = *typeIdByName("Selct");
const ModuleTypeId kSelOutId = *typeIdByName("SelOut");
const ModuleTypeId kFlipId = *typeIdByName("Flip");
const ModuleTypeId kT127Id = *typeIdByName("T127");
}  // namespace

// --- Latest ---

Latest::Latest() : SettingsModule<0>(kLatestId, kInputs) {}

void Latest::update(Engine&) {
    bool found = false;
    for (int k = 0; k < 3; ++k) {
        const int v = in(k);
        int& seen = seen_[static_cast<size_t>(k)];
        if (v == seen) continue;
        seen = v;
        if (!found) {
            found = true;
            winner_ = k;
        }
    }
    setOutput(seen_[static_cast<size_t>(winner_)]);
}

// --- Relay2 ---

Relay2::Relay2() : SettingsModule<0>(kRelay2Id, kInputs) {}

void Relay2::update(Engine&) {
    if (sameInputsAsLastUpdate(3)) return;
    const bool second = in(2) != 0;
    if (second != second_) {
        second_ = second;
        viewChanged = true;
    }
    setOutput(in(second ? 1 : 0));
}

// --- Selct ---

Selct::Selct() : SettingsModule<1>(kSelctId, kInputs) {}

void Selct::update(Engine&) {
    const int value = in(0);
    const int s = in(1);
    if (s == 0) {
        setOutput(value);
        return;
    }
    if (gate()) {
        channels_.fill(0);
        multi_.fill(0);
    }
    channels_[static_cast<size_t>(std::min(s, kChannels) - 1)] = static_cast<uint8_t>(value);
    for (int b = 0; b < 7; ++b)
        if ((s >> b) & 1) multi_[static_cast<size_t>(b)] = static_cast<uint8_t>(value);
}

// --- SelOut ---

SelOut::SelOut() : TapModule<2, 1>(kSelOutId, kSelctId, {}) {}

std::string SelOut::channelName(int row) {
    if (row < Selct::kChannels) return std::to_string(row + 1);
    std::string name(1, 'm');
    name += std::to_string(row - Selct::kChannels);
    return name;
}

void SelOut::update(Engine& engine) {
    if (mastersGrew(engine)) viewChanged = true;
    const auto* selct = static_cast<const Selct*>(master(engine));
    const int row = std::min(channelRow(), kChannelRows - 1);
    if (selct == nullptr)
        setOutput(0);
    else
        setOutput(row < Selct::kChannels ? selct->channel(row) : selct->multi(row - Selct::kChannels));
}

// --- Flip ---

Flip::Flip() : SettingsModule<1>(kFlipId, kInputs) {}

void Flip::update(Engine&) {
    const bool set = set_.rose(in(0));
    const bool reset = reset_.rose(in(1));
    if (set) state_ = feedback() && state_ != 0 ? 0 : kStrobe;
    if (reset) state_ = 0;  // a reset in the same update wins
    setOutput(state_);
}

// --- T127 ---

T127::T127() : SettingsModule<1>(kT127Id, kInputs) {}

void T127::writeBody(ByteWriter& out, const OutputNames&) const { writeFields(out); }

void T127::readBody(ByteReader& in, OutputNames&) { readFields(in); }

void T127::update(Engine& engine) { setOutput(static_cast<uint8_t>(engine.generalTableStep(kPage, in(0)))); }

}  // namespace quillmer
