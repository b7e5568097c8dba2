#include "modules/processors/Memory.h"

#include <cstdlib>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kSampleId = *typeIdByName("Sample");
const ModuleTypeId kDelayId = *typeIdByName("Delay");
const ModuleTypeId kDLTapId = *typeIdByName("DLTap");
const ModuleTypeId kSlewId = *typeIdByName("Slew");
const ModuleTypeId kDiffId = *typeIdByName("Diff");
const ModuleTypeId kTallyId = *typeIdByName("Tally");
const ModuleTypeId kHiLoId = *typeIdByName("HiLo");
const ModuleTypeId kAccumId = *typeIdByName("Accum");
constexpr int kThirtySecondCode = 3;
}  // namespace

// --- Sample ---

Sample::Sample() : SettingsModule<0>(kSampleId, kInputs) {}

void Sample::update(Engine&) {
    if (strobe_.rose(in(1))) setOutput(in(0));
}

// --- Delay ---

Delay::Delay() : SettingsModule<1>(kDelayId, kInputs) {}

void Delay::update(Engine& engine) {
    bool step = turbo();
    if (!step) {
        if (!engine.counters.atZero(kThirtySecondCode)) {
            armed_ = true;
        } else if (armed_) {
            armed_ = false;
            step = true;
        }
    }
    if (step) position_ = (position_ + kRing - 1) & (kRing - 1);
    ring_[static_cast<size_t>(position_)] = in(0);
    setOutput(tap(in(1)));
}

// --- DLTap ---

DLTap::DLTap() : TapModule<1, 1>(kDLTapId, kDelayId, kInputs) {}

void DLTap::update(Engine& engine) {
    if (mastersGrew(engine)) viewChanged = true;
    const auto* delay = static_cast<const Delay*>(master(engine));
    setOutput(delay != nullptr ? delay->tap(in(0)) : 0);
}

// --- Slew ---

Slew::Slew() : SettingsModule<0>(kSlewId, kInputs) {}

void Slew::update(Engine&) {
    const int target = in(0);
    const int amount = in(1);
    if (amount == 0) {
        follower_ = target;
    } else {
        follower_ += (target - follower_) * ((255 - 2 * amount) / 256.0);
    }
    setOutput(roundToInt(follower_));
}

// --- Diff ---

Diff::Diff() : SettingsModule<0>(kDiffId, kInputs) {}

void Diff::update(Engine&) {
    const int v = in(0);
    if (v == previous_) return;
    setOutput(std::abs(v - previous_));
    previous_ = v;
}

// --- Tally ---

Tally::Tally() : SettingsModule<1>(kTallyId, kInputs) {}

void Tally::update(Engine&) {
    if (in(2) != 0 && !cleared_) {
        marks_.fill(0);
        count_ = 0;
        cleared_ = true;
    }
    if (clock_.rose(in(0))) {
        cleared_ = false;
        uint8_t& mark = marks_[static_cast<size_t>(in(1) & 127)];
        if (mark == 0) {
            mark = 255;
            ++count_;
        }
    }
    setOutput(std::min(count_, 127));
}

// --- HiLo ---

HiLo::HiLo() : SettingsModule<1>(kHiLoId, kInputs) {}

void HiLo::update(Engine&) {
    const int v = in(0);
    if (in(1) != 0)
        value_ = lowest() ? 127 : 0;
    else if (value_ < 0 || (lowest() ? v < value_ : v > value_))
        value_ = v;
    setOutput(value_);
}

// --- Accum ---

Accum::Accum() : SettingsModule<1>(kAccumId, kInputs) {}

void Accum::update(Engine&) {
    const bool clock = clock_.rose(in(0));
    const bool reverse = reverse_.rose(in(2));
    const int upper = in(4);
    const int lower = in(5);
    if (in(3) != 0) {
        value_ = lower;
        up_ = true;
    } else {
        if (reverse) up_ = !up_;
        if (clock && upper > lower) {
            value_ += up_ ? in(1) : -in(1);
            if (value_ >= upper) {
                value_ = upper;
                if (!noAutoTurn()) up_ = false;
            } else if (value_ <= lower) {
                value_ = lower;
                if (!noAutoTurn()) up_ = true;
            }
        }
    }
    setOutput(clampBus(value_));
}

}  // namespace quillmer
