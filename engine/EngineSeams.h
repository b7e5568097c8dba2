#pragma once
// The points where the engine hands over to parts that live outside it: the Composer,
// snapshots, the floating sliders, the process and the formula runtime. Each default does
// nothing. Called with the engine lock held.

#include <cstdint>
#include <string>

namespace quillmer {

class FormulaRuntime;

class EngineSeams {
public:
    virtual ~EngineSeams() = default;

    // Tick step 2: a timed Composer recording counts its remaining ticks; true when it ran out.
    virtual bool composerRecordingElapsed() { return false; }
    // A timed recording has run out: note modules start no more notes.
    virtual bool recordingTimeUp() const { return false; }
    // Every whole note: keep the process at high priority; advance the Composer; sample the
    // process load for the CPU meter.
    virtual void raiseProcessPriority() {}
    virtual void advanceComposerBar() {}
    virtual void sampleCpuLoad() {}
    // The floating sliders resend while a resync is pending.
    virtual void resendSliders() {}
    // The formula runtime that formula modules run on; none until it has been started.
    virtual FormulaRuntime* formulaRuntime() { return nullptr; }
    // The formula runtime's view of the resync pulse (1.0 while it lasts).
    virtual void setResyncPulseVariable(double /*value*/) {}
    // The engine's random generator was seeded (Engine::seedRandom): parts with random
    // sources of their own follow it.
    virtual void reseedRandom(int32_t /*seed*/) {}
    // Remote control received on port A: the Composer's transport, by the BusId of the
    // output concerned (131 start, 137 continue, 138 stop).
    virtual void composerTransport(int /*code*/) {}
    // A program change chose snapshot `CurrentSnapshot`: recall it.
    virtual void SetNewPatch() {}
    // A Chain module fired: load `file` soon, outside the tick, or exit when it is empty.
    virtual void requestChainLoad(const std::string& /*file*/) {}
};

}  // namespace quillmer
