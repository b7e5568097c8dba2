#pragma once
// The points where the tick and the timers hand over to parts that live outside the engine core: the
// MIDI port layer, recording, the Composer, the floating sliders, the process and the
// formula runtime. Each default does nothing. Called with the engine lock held, from the
// tick, in the order the tick names them.

#include <cstdint>

namespace quillmer {

class TickSeams {
public:
    virtual ~TickSeams() = default;

    // Step 2: a timed Composer recording counts its remaining ticks; true when it ran out.
    virtual bool composerRecordingElapsed() { return false; }
    // Whether the Composer is recording (steps 4 and 6).
    virtual bool composerRecording() const { return false; }
    // Step 4: the run began while recording: new MIDI tracks.
    virtual void initializeMidiTracks() {}
    // Step 6: per-track delta counters after the modules ran.
    virtual void advanceRecordingDeltas() {}
    // Step 7: per-port real-time bytes (clock, active sensing, the latency filler).
    virtual void sendPerTickBytes() {}
    // Step 9, every whole note: keep the process at high priority; advance the Composer;
    // sample the process load.
    virtual void raiseProcessPriority() {}
    virtual void advanceComposerBar() {}
    virtual void sampleCpuLoad() {}
    // TickModules step 8: the floating sliders resend while a resync is pending.
    virtual void resendSliders() {}
    // The formula runtime's view of the resync pulse (1.0 while it lasts).
    virtual void setResyncPulseVariable(double /*value*/) {}
    // StartTimers: the MIDI outputs reopen on the next send (their time base restarts), and
    // the exit drain starts over.
    virtual void requestOutputReopen() {}
    // ResetOutputs: every recording track's delta counter to 0.
    virtual void resetRecordingDeltas() {}
    // ShutdownStopTimers: the all-keys-off sweep stops; MIDI inputs close.
    virtual void stopSweep() {}
    virtual void closeMidiInputs() {}
    // ResetClocks: a master sends its private reset (status 244) on all ports.
    virtual void sendClockReset() {}
    // ResetClocks: reseed the random generator with a non-zero seed.
    virtual void reseedRandom(int32_t /*seed*/) {}
};

}  // namespace quillmer
