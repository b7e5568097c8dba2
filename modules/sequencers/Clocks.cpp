#include "modules/sequencers/Clocks.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kClockId = *typeIdByName("Clock");
const ModuleTypeId kFreeId = *typeIdByName("Free");
const ModuleTypeId kSyncId = *typeIdByName("Sync");
const ModuleTypeId kCounterId = *typeIdByName("Counter");
const ModuleTypeId kPulseId = *typeIdByName("Pulse");
const ModuleTypeId kGHoldId = *typeIdByName("GHold");
const ModuleTypeId kTempoxId = *typeIdByName("Tempox");

constexpr int kStrobe = 127;
constexpr int kThirtySecondCode = 3;  // "  32nd": GHold's step without Turbo
constexpr int kFreeMinPeriod = 2;
}  // namespace

// Gate lengths round an exact half to the even neighbour (3 ticks at 50 % give 2, 5 ticks
// give 2, 7 give 4), on purpose: gates keep the lengths they have always had.
int PercentOfTicks(int ticks, int percent) {
    const int product = ticks * percent;
    const int quotient = product / 100;
    const int twiceRemainder = 2 * (product % 100);
    if (twiceRemainder > 100) return quotient + 1;
    if (twiceRemainder == 100) return quotient + (quotient & 1);
    return quotient;
}

int GateTicks(int durationCode, int percent) {
    const int period = DurationReload[static_cast<size_t>(durationCode)];
    if (percent <= 0) return 0;
    if (percent >= 100) return period - 2;
    const int x = std::max(1, std::min(PercentOfTicks(period, percent), period - 1));
    return x - 1;
}

// --- Clock ---

Clock::Clock() : Module(kClockId, kInputs) {}

void Clock::update(Engine& engine) {
    if (in(2) != 0) {
        remaining_ = 0;
        setOutput(0);
        return;
    }
    const int dur = in(0);
    const int percent = in(1);
    if (dur != cachedDur_ || percent != cachedPercent_) {
        const DurationLabel label = dur < kDurationCodeCount ? DurationLabel::Dur : DurationLabel::DurYellow;
        code_ = dur < kDurationCodeCount ? dur : kFallbackCode;
        if (label != durLabel) {
            durLabel = label;
            viewChanged = true;
        }
        gateTicks_ = GateTicks(code_, percent);
        cachedDur_ = dur;
        cachedPercent_ = percent;
    }
    if (engine.counters.atZero(code_)) {
        remaining_ = gateTicks_;
        setOutput(kStrobe);
    } else if (remaining_ > 0) {
        --remaining_;
    } else {
        setOutput(0);
    }
}

// --- Free ---

Free::Free() : Module(kFreeId, kInputs) {}

void Free::update(Engine& engine) {
    if (in(2) != 0) {
        phase_ = 0;
        setOutput(0);
        return;
    }
    int dur = in(3);
    if (dur == 0) dur = 12;
    if (dur == 1) dur = 24;
    const int mult = std::max(1, static_cast<int>(in(0)));
    const int period = std::max(kFreeMinPeriod, dur * mult);
    const int onTime = std::clamp(PercentOfTicks(period, in(1)), 1, period - 1);
    if (engine.ResyncPending) phase_ = 0;
    setOutput(phase_ <= onTime ? kStrobe : 0);
    // A period that shrank under the phase starts over at once, rather than running the
    // phase on to 255 and round: on purpose, a shorter period takes effect now.
    if (++phase_ >= period) phase_ = 0;
}

void Free::writeFields(ByteWriter& out) const {
    for (int16_t w : storedWord_) out.i16(w);
}

void Free::readFields(ByteReader& in) {
    for (int16_t& w : storedWord_) w = in.i16();
}

// --- Sync ---

Sync::Sync() : Module(kSyncId, kInputs) {}

void Sync::update(Engine&) {
    if (in(0) != 0) {
        if (aWasLow_) {
            armed_ = true;
            aWasLow_ = false;
        }
    } else {
        aWasLow_ = true;
    }
    if (armed_ && in(1) != 0 && notYetFired_) {
        notYetFired_ = false;
        armed_ = false;
        setOutput(kStrobe);
        return;
    }
    // Any pass that doesn't fire makes ready for the next one, so a B that is already
    // high lets A through on the pass it rises.
    if (!(armed_ && in(1) != 0)) notYetFired_ = true;
    setOutput(0);
}

// --- Counter ---

Counter::Counter() : Module(kCounterId, kInputs) {}

void Counter::update(Engine& engine) {
    const bool reset = in(2) != 0;
    const bool hold = in(3) != 0;
    const int limit = in(4);
    if (reset || engine.ResyncPending) {
        count_ = hold && reset ? limit : 0;
        latch_ = true;
    } else if (in(0) == 0) {
        latch_ = false;
    } else if (!latch_) {
        latch_ = true;
        if (!hold) {
            if (in(1) != 0) {
                if (--count_ < 0) count_ = limit;
            } else if (++count_ > limit) {
                count_ = 0;
            }
        }
    }
    setOutput(count_);
}

// --- Pulse ---

Pulse::Pulse() : Module(kPulseId, kInputs) {}

void Pulse::update(Engine&) {
    if (in(0) == 0) {
        armed_ = true;
        setOutput(0);
    } else if (armed_) {
        armed_ = false;
        setOutput(kStrobe);
    } else {
        setOutput(0);
    }
}

// --- GHold ---

GHold::GHold() : Module(kGHoldId, kInputs) {}

void GHold::update(Engine& engine) {
    if (in(0) == 0) {
        armed_ = true;
    } else if (armed_) {
        delay_ = in(1);
        hold_ = in(2);
        armed_ = false;
    }
    const bool step = turbo || engine.counters.atZero(kThirtySecondCode);
    if (delay_ > 0) {
        if (step) --delay_;
        setOutput(0);
    } else if (hold_ > 0) {
        if (step) --hold_;
        setOutput(kStrobe);
    } else {
        setOutput(0);
    }
}

void GHold::recallSettings(int snapshot) { turbo = storedTurbo_[static_cast<size_t>(snapshot)] != 0; }

void GHold::storeSettings(int snapshot) {
    uint8_t& stored = storedTurbo_[static_cast<size_t>(snapshot)];
    if ((stored != 0) != turbo) stored = turbo ? 1 : 0;  // an unchanged setting keeps its byte
}

void GHold::writeFields(ByteWriter& out) const {
    for (uint8_t b : storedTurbo_) out.u8(b);
}

void GHold::readFields(ByteReader& in) {
    for (uint8_t& b : storedTurbo_) b = in.u8();
    turbo = storedTurbo_[0] != 0;
}

// --- Tempox ---

Tempox::Tempox() : Module(kTempoxId, kInputs) {}

void Tempox::update(Engine& engine) {
    const int tempoInput = in(0);
    if (tempoInput != lastTempoInput_) {
        lastTempoInput_ = tempoInput;
        shownTempo = std::max(1, tempoInput * (engine.options.extendedTempo ? 4 : 2));
        viewChanged = true;
    }
    if (in(2) == 0) {
        setArmed_ = true;
    } else if (setArmed_) {
        setArmed_ = false;
        engine.SetNewTempo(shownTempo);
    }
    if (in(3) == 0) {
        resetArmed_ = true;
    } else if (resetArmed_) {
        resetArmed_ = false;
        engine.ResetClocks();
    }
}

void Tempox::writeFields(ByteWriter& out) const {
    for (uint8_t b : storedByte_) out.u8(b);
}

void Tempox::readFields(ByteReader& in) {
    for (uint8_t& b : storedByte_) b = in.u8();
}

}  // namespace quillmer
