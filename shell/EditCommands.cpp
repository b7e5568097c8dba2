#include "shell/EditCommands.h"

#include <algorithm>

#include "shell/AuthorName.h"
#include "shell/Session.h"

namespace quillmer {

PatchState capturePatch(Session& session) {
    Engine& e = session.engine;
    PatchState state;
    state.author = session.author;
    state.modifier = session.modifier;
    state.fileVersion = session.fileVersion;
    state.comboText = session.snapshots.comboText;
    state.currentSnapshot = e.CurrentSnapshot;
    state.snapshotCount = e.SnapshotCount;
    state.liveEdited = session.snapshots.liveEdited;

    // The live settings go into the first free row and the file form says to recall it.
    const bool spare = e.SnapshotCount < kSnapshotCount;
    if (spare) {
        e.CurrentSnapshot = e.SnapshotCount;
        e.SnapshotCount = static_cast<int16_t>(e.SnapshotCount + 1);
        e.StoreAllPatches();
    }
    FileHeader header = session.kept;
    header.authorName = transformName(state.author.substr(0, 32));
    header.modifierName = transformName(state.modifier.substr(0, 32));
    std::string error;
    session.encodePatch(header, state.bytes, std::string(), error);
    e.CurrentSnapshot = state.currentSnapshot;
    e.SnapshotCount = state.snapshotCount;
    return state;
}

bool restorePatch(Session& session, const PatchState& state, std::string& error) {
    Engine& e = session.engine;
    const bool running = e.bus[sysbus::Run] != 0;
    const int page = e.CurrentPage();
    const bool timers = e.timersRunning();
    if (timers) e.StopTimers();
    const bool changed = session.ModifiedMark || session.ChangedMark;
    const bool ok = session.LoadModuleBytes(state.bytes, "the undo list", error);
    e.CurrentSnapshot = state.currentSnapshot;
    e.SnapshotCount = state.snapshotCount;
    session.snapshots.comboText = state.comboText;
    session.snapshots.liveEdited = state.liveEdited;
    session.author = state.author;
    session.modifier = state.modifier;
    session.fileVersion = state.fileVersion;
    e.setRun(running);
    e.showPage(page);
    e.bus[sysbus::Page] = static_cast<uint8_t>(page);
    if (timers) e.StartTimers();
    session.SetModified(changed);
    return ok;
}

void EditHistory::begin(EditKind kind, std::string label, std::string gesture) {
    pending_.kind = kind;
    pending_.label = std::move(label);
    pending_.gesture = std::move(gesture);
    pending_.before = capturePatch(session_);
    open_ = true;
}

bool EditHistory::commit() {
    if (!open_) return false;
    open_ = false;
    // A gesture without a key (a click, a press) ends any run of merged steps.
    const bool ends = pending_.gesture.empty();
    PatchState after = capturePatch(session_);
    if (after == pending_.before) {
        if (ends) sealed_ = true;
        return false;
    }
    session_.SetModified(true);
    // Settings a snapshot keeps now differ from the one in use.
    const EditKind kind = pending_.kind;
    if ((kind == EditKind::Connect || kind == EditKind::Setting || kind == EditKind::StageValue) &&
        session_.engine.SnapshotCount > 0)
        session_.snapshots.liveEdited = after.liveEdited = true;
    steps_.erase(steps_.begin() + static_cast<std::ptrdiff_t>(applied_), steps_.end());
    const bool merge = !sealed_ && !ends && !steps_.empty() && steps_.back().gesture == pending_.gesture;
    sealed_ = ends;
    if (merge) {
        steps_.back().after = std::move(after);
        return true;
    }
    pending_.after = std::move(after);
    pending_.serial = nextSerial_++;
    steps_.push_back(std::move(pending_));
    pending_ = Step{};
    while (steps_.size() > limit_) steps_.pop_front();
    applied_ = steps_.size();
    return true;
}

bool EditHistory::undo(std::string& error) {
    if (!canUndo()) return false;
    sealed_ = true;
    const Step& step = steps_[applied_ - 1];
    if (!restorePatch(session_, step.before, error)) return false;
    --applied_;
    session_.SetModified(true);
    return true;
}

bool EditHistory::redo(std::string& error) {
    if (!canRedo()) return false;
    sealed_ = true;
    if (!restorePatch(session_, steps_[applied_].after, error)) return false;
    ++applied_;
    session_.SetModified(true);
    return true;
}

void EditHistory::clear() {
    steps_.clear();
    applied_ = 0;
    sealed_ = true;
    open_ = false;
}

// --- the edits ---

namespace {
std::string named(const char* what, const Module& m) { return std::string(what) + " " + m.Name; }
}  // namespace

Module& placeModule(Session& session, ModuleTypeId type, int page, int32_t top, int32_t left) {
    Engine& e = session.engine;
    Module* placed = nullptr;
    session.history.apply(EditKind::Place, "Place " + std::string(typeInfo(type).caption), {}, [&] {
        if (e.CurrentPage() != page) e.showPage(page);
        e.placeAtCursor(top, left);
        placed = &e.New(type);
    });
    return *placed;
}

void deleteModule(Session& session, Module& module) {
    session.history.apply(EditKind::Delete, named("Delete", module), {}, [&] { session.engine.Delete(module); });
}

void moveModule(Session& session, Module& module, int page, int32_t top, int32_t left) {
    session.history.apply(EditKind::Move, named("Move", module), {}, [&] {
        module.Page = static_cast<int16_t>(page);
        module.Top = top;
        module.Left = left;
    });
}

void connectInput(Session& session, Module& module, int input, uint16_t position) {
    session.history.apply(EditKind::Connect, named("Connect", module), {},
                          [&] { session.engine.connectInput(module, input, position); });
}

void setTempo(Session& session, int bpm) {
    session.history.apply(EditKind::Tempo, "Tempo", "tempo", [&] { session.engine.SetNewTempo(bpm); });
}

bool storeSnapshot(Session& session, bool asNew) {
    bool stored = true;
    session.history.apply(EditKind::SnapshotStore, asNew ? "Store New Snapshot" : "Store Snapshot", {}, [&] {
        if (asNew)
            stored = session.snapshots.StoreNewPatch();
        else
            session.snapshots.StoreCurrentPatch();
    });
    return stored;
}

void clearSnapshots(Session& session) {
    session.history.apply(EditKind::SnapshotClear, "Clear Snapshots", {}, [&] {
        session.snapshots.WipePatchList();
        session.snapshots.comboText = Snapshots::kAutoSave;
    });
}

}  // namespace quillmer
