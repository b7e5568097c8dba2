#pragma once
// The engine: output bus, names, module types and their instances, the tick and its
// clocks. One object, guarded by one mutex, the engine lock: the tick, the absolute-clock
// passes, MIDI input and every user edit each take it and run to completion.
//
// Thread rule: every public member needs the engine lock held by the caller, except the
// constructor, lock(), tryLock(), inputArrived(), and the timer entry points, which take it
// themselves.

#include <array>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Durations.h"
#include "engine/EngineLock.h"
#include "engine/GridCells.h"
#include "engine/Module.h"
#include "engine/ModuleRegistry.h"
#include "engine/ModuleTypeSlot.h"
#include "engine/OutputBus.h"
#include "engine/OutputNames.h"
#include "engine/EngineSeams.h"
#include "engine/MidiPorts.h"
#include "engine/RandomSource.h"
#include "engine/TimerService.h"

namespace quillmer {

enum class SyncMode : uint8_t { None = 0, Master = 1, Slave = 2 };

// Options of the options window that the tick and the timers read.
struct EngineOptions {
    bool resetModules = false;    // chkResetModules: StartTimers begins a resync pulse
    bool triggersOff = false;     // chkTrigs: the resync pulse leaves "~ TStart"/"~ TLoad" alone
    bool extendedTempo = false;   // chkXpTempo: tempo up to 1000
    // Exact tempo: the tick lasts exactly 2500/Tempo ms rather than TickPeriod. The programs
    // turn it on (the user's default); a bare engine ticks in whole ms.
    bool exactTempo = false;
    bool highPriority = false;    // chkHighPriority
    bool autoAlign = false;       // chkAutoAlign: snap panels to the grid
    bool lockModules = false;     // chkLockModules: no drags, no connecting
    int16_t wholeDelay = 0;       // bxWholeDelay: whole notes before "~ Whole" counts
    int32_t randomSeed = 0;       // bxRanSeed; 0 = none
    int32_t absClockA = 0;        // ms, 0..32767; 0 = off
    int32_t absClockB = 0;
    SyncMode syncMode = SyncMode::None;
    bool bankMsb = false;         // chkBankMSB: a bank is Control Change 0 alone
};

// Lamps of the main window, as state the GUI shows.
struct Lamps {
    bool tick = false;        // toggles every eighth note
    bool timingError = false; // the late lamp
    bool timingErrorFlag = false;
    bool midiOut = false;
    bool midiOutFlag = false;
    bool midiIn = false;
    bool midiInFlag = false;
};

// What the GUI hears of the engine. Called with the engine lock held: don't call back in.
struct EngineEvents {
    std::function<void(bool changed)> patchChanged;
    std::function<void(int page)> pageChanged;
    std::function<void(int tempo)> tempoChanged;
};

// A status dialog's outcome for one module.
struct StatusChoice {
    int priorityIndex = 1;  // option index 0..6
    bool enabled = true;
    bool remove = false;
    bool cancelled = false;
};

// A module that can't be placed: the message says why.
class PlacementError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Engine {
    // First, so that they are ready for the members made after them.
    TimerService& timers_;
    const ModuleRegistry& registry_;
    EngineSeams defaultSeams_;
    EngineSeams* seams_;

public:
    // The matrices' cells; made before the modules and gone after them.
    GridCellStore gridCells;

    Engine(TimerService& timers, const ModuleRegistry& registry, EngineSeams* seams = nullptr);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    std::unique_lock<EngineLock> lock() { return std::unique_lock<EngineLock>(mutex_); }
    // The lock if it is free now; check owns_lock().
    std::unique_lock<EngineLock> tryLock() { return std::unique_lock<EngineLock>(mutex_, std::try_to_lock); }
    // From a device thread, without the lock: MIDI input was queued. Its pass runs at once
    // when the engine is free, else as the holder of the lock lets go of it.
    void inputArrived() { mutex_.raise(); }

    OutputBus bus;
    OutputNames names;
    EngineOptions options;
    Lamps lamps;
    EngineEvents events;
    MidiPorts ports;
    const ModuleRegistry& registry() const { return registry_; }
    TimerService& timers() { return timers_; }
    EngineSeams& seams() { return *seams_; }
    // The random modules' generator. seedRandom puts it on the sequence of `seed` and tells
    // the parts outside the engine (at start with a non-zero "RanSeed", on ResetClocks, and
    // for a command line's seed).
    RandomSource random;
    void seedRandom(int32_t seed) {
        random.seed(seed);
        seams_->reseedRandom(seed);
    }

    // --- patch-wide state ---
    int16_t CurrentSnapshot = 0;
    int16_t SnapshotCount = 0;
    bool patchChanged() const { return patchChanged_; }

    // --- names and connections ---
    // Output lists back to the system names; bus system values rewritten.
    void InitOutputLists();
    void InsertSortedName(NameSlot slot);
    void RemoveSortedName(NameSlot slot);
    void ResolveInputNames();
    void ResetAllInputs();
    void MarkPatchChanged(bool changed);
    // Connects input k of a module to the output at sorted position `position`.
    void connectInput(Module& module, int k, uint16_t position);

    // --- life cycle ---
    // Throws PlacementError (and changes nothing) when the type has no room left.
    Module& New(ModuleTypeId type);
    Module& NewLastModule();
    ModuleTypeId LastModuleType = 0;
    // The next New places its panel at this point (a right click on the workspace).
    void placeAtCursor(int32_t top, int32_t left);
    void Delete(Module& module);
    void CloseAllModules();
    void applyStatus(Module& module, const StatusChoice& choice);
    // The module map's commands on a module found by name: 0 page := argument, 1 delete,
    // 2 disable, 3 enable. False when no module has that name.
    bool MapCommand(std::string_view name, int action, int argument);
    // A tuning table (one of the patch's tone tables): 128 bytes, entry 127 + 1 the number
    // of steps. Until tables are loaded every table is the chromatic twelve-step row.
    const uint8_t* toneRow(int table) const;
    void setToneTables(const uint8_t* tables) { toneTables_ = tables; }  // 128 x 128 bytes
    // The general tables: 128 tables of 128 values, owned by whoever owns the patch. Until
    // they are set every step reads 0 and writes go nowhere. Outside 0..127 a step reads 0.
    void setGeneralTables(uint8_t* tables) { generalTables_ = tables; }
    int generalTableStep(int table, int step) const;
    // Writes a value (cut to 0..127); a change is counted in generalTablesVersion, which
    // table modules and views compare with what they saw last.
    void writeGeneralTableStep(int table, int step, int value);
    uint32_t generalTablesVersion() const { return generalTablesVersion_; }
    // After a whole bank or a row changed at once (a file load, the editor).
    void markGeneralTablesChanged() { ++generalTablesVersion_; }
    // The tables' names, for the modules that show them; empty until the owner of the
    // tables answers (called under the engine's lock).
    std::function<std::string(int table)> toneTableName;
    std::function<std::string(int table)> generalTableName;

    // Bulk placement: names go into the lists without resorting; endBulk sorts once and
    // resolves. For loading and for placing many modules at once.
    Module& placeForBulk(ModuleTypeId type);
    void endBulk();

    // The most instances a type can have: its outputs must stay within the bus.
    static int maxInstances(ModuleTypeId type);
    static constexpr int kMaxRecordCount = 32767;  // a file counts records in 16 bits
    // Loading: a blank record at the type's next index for the file's bytes (throws
    // PlacementError past maxInstances); then restoreInstances attaches the placed ones and
    // gives them name slots. The sorted list is left alone until finishRestore.
    Module& loadRecord(ModuleTypeId type);
    void restoreInstances(ModuleTypeId type);
    // Sorts the names once and resolves every stored connection by name.
    void finishRestore();
    // Snapshots: every placed module stores to / recalls from slot CurrentSnapshot.
    void StoreAllPatches();
    void RecallAllPatches();

    ModuleTypeSlot& typeSlot(ModuleTypeId id) { return *types_[static_cast<size_t>(id)]; }
    // Set when a module is placed, deleted or moved to another pass: the pass lists are
    // rebuilt before the next pass runs.
    bool passListsStale = true;
    Module* findModule(std::string_view name);
    template <class F>
    void forEachModule(F&& f) {
        for (size_t id = 1; id < types_.size(); ++id) types_[id]->forEachActive(f);
    }

    // --- pages ---
    int CurrentPage() const { return currentPage_; }
    // NewDisplayLevel: shows a page; "~ Page" carries the number.
    void showPage(int page);
    bool pageFlip = false;        // PageFlip, the toolbar's flip button
    int32_t frameWidth = 15000;   // workspace size in twips, told by the GUI
    int32_t frameHeight = 9000;

    // --- time ---
    DurationCounters counters;
    int Tempo() const { return tempo_; }
    int32_t TickPeriod() const { return tickPeriod_; }
    int32_t OutputStamp = 0;  // ms, the time stamp of MIDI output under latency
    // The length of a quarter note as the tick really plays it, in microseconds: what a
    // recording's tempo says.
    uint32_t quarterNoteMicros() const;
    // OutputStamp starts over: the latency, plus a tick when the latency is shorter than one.
    void restartOutputStamp();
    bool ResyncPending = false;
    bool stopping() const { return stopping_; }
    bool shutdown() const { return shutdown_; }
    bool runStarted() const { return runStarted_; }
    bool timersRunning() const { return timersRunning_; }
    bool resyncPulseActive() const { return pulseInProgress_; }
    int16_t wholeDelayCount() const { return wholeDelayCount_; }

    void StartTimers();
    void StopTimers();
    void ShutdownStopTimers();
    void ResetClocks();
    void UpdateTimerTick();
    void SetNewTempo(int value);
    void setExtendedTempo(bool on);
    // Exact tempo: on, the tick timer runs at 2500/Tempo ms exactly, and OutputStamp follows
    // it; off, both go by the whole milliseconds of TickPeriod. Takes effect at once.
    void setExactTempo(bool on);
    // A load finished: the next resync pulse also raises "~ TLoad".
    void markPatchLoaded();
    // A key went down anywhere in the main window (repeats too): "~ KeyChar" and "~ KeyCtrl"
    // take its code and the modifiers (1 Shift, 2 Ctrl, 4 Alt), "~ KeyDown" counts up to 127.
    void keyDown(int keyCode, int modifiers);
    // A key went up: "~ KeyDown" back to 0.
    void keyUp() { bus[sysbus::KeyDown] = 0; }
    // The transport: "~ Run" and "~ Stop", always each other's complement.
    void setRun(bool run);

    // One tick, steps 1..15 (lock held). Slave mode calls it from MIDI input.
    void tick();
    // Ticks run since the engine was made, the last tick of a stop included.
    uint64_t ticksRun() const { return ticksRun_; }
    // The update order of one tick.
    void TickModules();
    // The immediate MIDI-input pass; the next tick then skips its own pass 6.
    void runMidiInputPass();
    // Table-load strobe: a request raised by the table loader, seen for one tick. Its value
    // names the table that changed, or is kAllTablesStrobe.
    static constexpr uint8_t kAllTablesStrobe = 128;
    void requestTableLoadStrobe(uint8_t value);
    bool tableLoadStrobe() const { return tableStrobe_; }
    uint8_t tableLoadValue() const { return tableStrobeValue_; }

    // Timer entry points (take the lock).
    void onTickTimer();
    void onResyncPulseTimer();
    void onAbsClockTimer(int16_t pass);

    TimerId tickTimer() const { return tickTimer_; }
    TimerId resyncTimer() const { return resyncTimer_; }
    TimerId absClockATimer() const { return absClockATimer_; }
    TimerId absClockBTimer() const { return absClockBTimer_; }

private:
    enum Group { InputAndDisplay, AfterPass, MidiOutput, MidiInputReaders, MidiOutputOnInput, kGroupCount };
    void runPass(int16_t priority);
    void runGroup(Group group);
    void refreshPassLists();
    void HaltTimers();
    void startTickTimer();
    void advanceOutputStamp();
    void ResetOutputs();
    void registerOutput(Module& module);
    Module& place(ModuleTypeId type);
    void updateLamps();
    void whole();

    EngineLock mutex_{[this] { ports.handleQueuedInput(); }};
    std::vector<std::unique_ptr<ModuleTypeSlot>> types_;  // by ModuleTypeId; 0 unused
    // Slots with placed modules, per pass and per group, in the walking order.
    std::array<std::vector<ModuleTypeSlot*>, kPassCount> passSlots_;
    std::array<std::vector<ModuleTypeSlot*>, kGroupCount> groupSlots_;

    const uint8_t* toneTables_ = nullptr;
    uint8_t* generalTables_ = nullptr;
    uint32_t generalTablesVersion_ = 0;
    bool patchChanged_ = false;
    bool closing_ = false;
    bool bulk_ = false;
    bool placeAtCursor_ = false;
    int32_t cursorTop_ = 0;
    int32_t cursorLeft_ = 0;
    int currentPage_ = 0;

    uint64_t ticksRun_ = 0;
    int tempo_ = 120;
    int32_t tickPeriod_ = 21;
    int32_t stampStart_ = 0;     // OutputStamp at its last restart
    int64_t stampTicks_ = 0;     // ticks since then
    bool timersRunning_ = false;
    bool stopping_ = false;
    bool shutdown_ = false;
    bool pulseInProgress_ = false;
    bool patchLoaded_ = false;
    bool runLatch_ = false;
    bool runStarted_ = false;
    bool midiInputPassRan_ = false;
    int16_t wholeDelayCount_ = 0;
    bool tableStrobe_ = false;
    uint8_t tableStrobeValue_ = 0;
    bool tableStrobeRequest_ = false;
    uint8_t tableStrobeRequestValue_ = 0;

    TimerId tickTimer_ = -1;
    TimerId resyncTimer_ = -1;
    TimerId absClockATimer_ = -1;
    TimerId absClockBTimer_ = -1;
};

}  // namespace quillmer
