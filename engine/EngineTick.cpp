// The tick, the update order, and the timers that drive them.

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxTempo = 254;
constexpr int kMaxExtendedTempo = 1000;
constexpr int kEighthCounter = 12;
constexpr int kWholeCounter = 96;
// A tick is a 96th of a whole note: 60000 / 24 / Tempo ms.
constexpr int64_t kTickMsTimesTempo = 2500;
constexpr int64_t kTicksPerQuarter = 24;
}  // namespace

// --- the update order ---

void Engine::refreshPassLists() {
    passListsStale = false;
    for (size_t id = 1; id < types_.size(); ++id)
        if (types_[id]->TypeUsed) types_[id]->refreshPasses();
    for (int16_t pass = 0; pass < kPassCount; ++pass) {
        auto& slots = passSlots_[static_cast<size_t>(pass)];
        slots.clear();
        for (ModuleTypeId id : passOrder()) {
            ModuleTypeSlot& slot = *types_[static_cast<size_t>(id)];
            if (slot.TypeUsed && slot.hasPass(pass)) slots.push_back(&slot);
        }
    }
    const std::array<const std::vector<ModuleTypeId>*, kGroupCount> groups = {
        &inputAndDisplayTypes(), &afterPassTypes(), &midiOutputTypes(), &midiInputReaderTypes(),
        &midiOutputTypesOnInput()};
    for (size_t g = 0; g < groups.size(); ++g) {
        groupSlots_[g].clear();
        for (ModuleTypeId id : *groups[g]) {
            ModuleTypeSlot& slot = *types_[static_cast<size_t>(id)];
            if (slot.TypeUsed && slot.anyPlaced()) groupSlots_[g].push_back(&slot);
        }
    }
}

void Engine::runPass(int16_t pass) {
    if (passListsStale) refreshPassLists();
    for (ModuleTypeSlot* slot : passSlots_[static_cast<size_t>(pass)]) slot->UpdateInPass(*this, pass);
}

void Engine::runGroup(Group group) {
    if (passListsStale) refreshPassLists();
    for (ModuleTypeSlot* slot : groupSlots_[group]) slot->UpdateAll(*this);
}

void Engine::TickModules() {
    runGroup(InputAndDisplay);
    runPass(priority::First);
    runPass(priority::Default);
    if (midiInputPassRan_)
        midiInputPassRan_ = false;
    else
        runPass(priority::MidiInput);
    runPass(priority::Late);
    runPass(priority::Last);
    runGroup(AfterPass);
    if (ResyncPending) seams_->resendSliders();
    runGroup(MidiOutput);
}

void Engine::runMidiInputPass() {
    runGroup(MidiInputReaders);
    runPass(priority::MidiInput);
    midiInputPassRan_ = true;
    runGroup(MidiOutputOnInput);
}

// --- the tick ---

void Engine::tick() {
    // Step 1, waiting for the engine to be free, is the caller's lock.
    ports.handleDeviceEvents();
    if (bus[sysbus::Run] != 0 && ports.recording() && seams_->composerRecordingElapsed()) setRun(false);

    if (pulseInProgress_) ResyncPending = false;
    runStarted_ = false;

    if (bus[sysbus::Run] == 0) {
        runLatch_ = false;
    } else if (!runLatch_) {
        runLatch_ = true;
        runStarted_ = true;
        ResetOutputs();
        if (ports.recording()) ports.InitializeMIDITracks();
    }

    TickModules();

    if (ports.recording()) ports.advanceRecordingDeltas();
    ports.sendPerTickBytes();
    updateLamps();
    if (counters.atZero(kWholeCounter)) whole();

    // Table-load strobe: seen for exactly one tick.
    tableStrobe_ = false;
    tableStrobeValue_ = 0;
    if (tableStrobeRequest_) {
        tableStrobe_ = true;
        tableStrobeValue_ = tableStrobeRequestValue_;
        tableStrobeRequest_ = false;
    }

    if (ResyncPending && !pulseInProgress_) {
        timers_.setInterval(resyncTimer_, 3 * tickPeriod_);
        seams_->setResyncPulseVariable(1.0);
        pulseInProgress_ = true;
        if (!options.triggersOff) {
            bus[sysbus::TStart] = 127;
            if (patchLoaded_) bus[sysbus::TLoad] = 127;
        }
    }

    advanceOutputStamp();
    counters.advance();
    bus[sysbus::Turbo] = static_cast<uint8_t>((bus[sysbus::Turbo] + 1) & 127);
    ++ticksRun_;
}

void Engine::updateLamps() {
    if (counters.atZero(kEighthCounter)) {
        lamps.tick = !lamps.tick;
        // The late lamp flashes for at least one eighth note.
        if (lamps.timingErrorFlag && lamps.timingError) {
            lamps.timingError = false;
            lamps.timingErrorFlag = false;
        } else if (lamps.timingErrorFlag) {
            lamps.timingError = true;
        }
    }
    // Activity lamps flash at half the tick rate during steady traffic.
    for (auto [lamp, flag] : {std::pair{&lamps.midiOut, &lamps.midiOutFlag}, std::pair{&lamps.midiIn, &lamps.midiInFlag}}) {
        if (*flag && *lamp) {
            *lamp = false;
            *flag = false;
        }
        if (*flag && !*lamp) *lamp = true;
    }
}

void Engine::whole() {
    if (options.highPriority) seams_->raiseProcessPriority();
    seams_->advanceComposerBar();
    seams_->sampleCpuLoad();
    if (bus[sysbus::Run] != 0) {
        if (wholeDelayCount_ > 0)
            --wholeDelayCount_;
        else
            bus[sysbus::Whole] = static_cast<uint8_t>((bus[sysbus::Whole] + 1) & 127);
    }
}

void Engine::requestTableLoadStrobe(uint8_t value) {
    tableStrobeRequest_ = true;
    tableStrobeRequestValue_ = value;
}

void Engine::keyDown(int keyCode, int modifiers) {
    bus[sysbus::KeyChar] = static_cast<uint8_t>(keyCode & 127);
    bus[sysbus::KeyCtrl] = static_cast<uint8_t>(modifiers & 127);
    if (bus[sysbus::KeyDown] < 127) ++bus[sysbus::KeyDown];
}

void Engine::setRun(bool run) {
    bus[sysbus::Run] = run ? 127 : 0;
    bus[sysbus::Stop] = run ? 0 : 127;
}

// --- timers ---

void Engine::restartOutputStamp() {
    const int32_t latency = ports.Latency();
    OutputStamp = latency >= tickPeriod_ ? latency : latency + tickPeriod_;
    stampStart_ = OutputStamp;
    stampTicks_ = 0;
}

// With exact tempo the stamp is the exact time of the tick, rounded to the nearest ms, so
// stamps keep pace with the ticks instead of running ahead of them.
void Engine::advanceOutputStamp() {
    if (!options.exactTempo) {
        OutputStamp += tickPeriod_;
        return;
    }
    ++stampTicks_;
    const int64_t elapsedMs = (2 * stampTicks_ * kTickMsTimesTempo + tempo_) / (2 * tempo_);
    OutputStamp = static_cast<int32_t>(stampStart_ + elapsedMs);
}

uint32_t Engine::quarterNoteMicros() const {
    if (!options.exactTempo) return static_cast<uint32_t>(kTicksPerQuarter * 1000 * tickPeriod_);
    return static_cast<uint32_t>(60'000'000 / tempo_);
}

void Engine::startTickTimer() {
    if (options.exactTempo)
        timers_.setExactInterval(tickTimer_, kTickMsTimesTempo, tempo_);
    else
        timers_.setInterval(tickTimer_, tickPeriod_);
}

void Engine::ResetOutputs() {
    counters.reset();
    ports.resetRecordingDeltas();
    bus[sysbus::Turbo] = 0;
    bus[sysbus::Whole] = 0;
    wholeDelayCount_ = options.wholeDelay;
}

void Engine::HaltTimers() {
    timers_.setInterval(tickTimer_, 0);
    timers_.setInterval(absClockATimer_, 0);
    timers_.setInterval(absClockBTimer_, 0);
}

void Engine::StartTimers() {
    timers_.setInterval(absClockATimer_, options.absClockA);
    timers_.setInterval(absClockBTimer_, options.absClockB);
    if (options.syncMode == SyncMode::Slave) return;  // input clocks drive the tick
    if (options.resetModules) ResyncPending = true;
    ports.ReopenOutputs = true;
    shutdown_ = false;
    tickPeriod_ = TickPeriodFor(tempo_);
    restartOutputStamp();
    startTickTimer();
    timersRunning_ = true;
}

void Engine::StopTimers() {
    HaltTimers();
    stopping_ = true;  // the last tick: note modules send their note-offs
    tick();
    stopping_ = false;
    lamps.tick = false;
    ResetOutputs();
    timersRunning_ = false;
}

void Engine::ShutdownStopTimers() {
    shutdown_ = true;  // sends are silent from here on, but for the last tick
    ports.stopSweep();
    timers_.setInterval(resyncTimer_, 0);
    HaltTimers();
    stopping_ = true;
    shutdown_ = false;
    tick();
    shutdown_ = true;
    timersRunning_ = false;
    ports.closeInputs();
}

void Engine::ResetClocks() {
    if (options.syncMode == SyncMode::Master) ports.sendClockReset();
    HaltTimers();
    lamps.tick = false;
    ResetOutputs();
    if (options.randomSeed != 0) seedRandom(options.randomSeed);
    StartTimers();
}

void Engine::UpdateTimerTick() {
    tickPeriod_ = TickPeriodFor(tempo_);
    restartOutputStamp();
    // The counters stay where they are, so a tempo change keeps the phase. A stopped or
    // slaved tick timer stays off on purpose: a tempo change must not start the ticks of a
    // stopped engine, nor a second clock beside the master's.
    if (timersRunning_ && options.syncMode != SyncMode::Slave) startTickTimer();
}

void Engine::SetNewTempo(int value) {
    const int highest = options.extendedTempo ? kMaxExtendedTempo : kMaxTempo;
    if (value < 1) value = 1;
    if (value > highest) value = highest;
    if (value == tempo_) return;
    tempo_ = value;
    if (events.tempoChanged) events.tempoChanged(tempo_);
    UpdateTimerTick();
}

void Engine::setExtendedTempo(bool on) {
    options.extendedTempo = on;
    if (!on && tempo_ > kMaxTempo) SetNewTempo(kMaxTempo);
}

void Engine::setExactTempo(bool on) {
    if (options.exactTempo == on) return;
    options.exactTempo = on;
    UpdateTimerTick();
}

void Engine::markPatchLoaded() {
    patchLoaded_ = true;
    ResyncPending = true;
}

void Engine::onTickTimer() {
    auto held = lock();
    if (timers_.interval(tickTimer_) == 0) return;  // stopped while this firing waited
    tick();
}

void Engine::onResyncPulseTimer() {
    auto held = lock();
    timers_.setInterval(resyncTimer_, 0);
    ResyncPending = false;
    pulseInProgress_ = false;
    bus[sysbus::TStart] = 0;
    bus[sysbus::TLoad] = 0;
    seams_->setResyncPulseVariable(0.0);
    patchLoaded_ = false;
}

void Engine::onAbsClockTimer(int16_t pass) {
    auto held = lock();
    const TimerId timer = pass == priority::AbsClockA ? absClockATimer_ : absClockBTimer_;
    if (timers_.interval(timer) == 0) return;
    runPass(pass);
}

}  // namespace quillmer
