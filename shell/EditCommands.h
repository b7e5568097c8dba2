#pragma once
// Patch edits as undoable steps. Each step keeps the patch as it was before and after the
// edit: the module records with the live settings (held in a free snapshot row while they
// are encoded), the header and the snapshot list. Undo and redo put one of them back. The
// desktop program and the tests apply edits through the same functions. All of it needs
// the engine lock.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "engine/Catalogue.h"

namespace quillmer {

class Module;
class Session;

// The patch as an undo step keeps it.
struct PatchState {
    std::vector<uint8_t> bytes;
    std::string author, modifier, comboText;
    int fileVersion = 0;
    int16_t currentSnapshot = 0;
    int16_t snapshotCount = 0;
    bool liveEdited = false;  // the live settings differ from the current snapshot
    bool operator==(const PatchState&) const = default;
};

// Takes the patch as it stands; the live state goes along unless all 128 snapshots are used.
PatchState capturePatch(Session& session);
// Puts a taken patch back; the run state, the shown page and the file name stay.
bool restorePatch(Session& session, const PatchState& state, std::string& error);

enum class EditKind { Place, Delete, Move, Connect, Setting, StageValue, Tempo, SnapshotStore, SnapshotClear };

class EditHistory {
public:
    static constexpr size_t kDefaultLimit = 250;

    explicit EditHistory(Session& session, size_t limit = kDefaultLimit) : session_(session), limit_(limit) {}

    // Runs `edit` as one step. Steps in a row with the same non-empty `gesture` key (the
    // keys typed into one box, the notches of one wheel) become one.
    template <class Edit>
    void apply(EditKind kind, std::string label, std::string gesture, Edit&& edit) {
        begin(kind, std::move(label), std::move(gesture));
        try {
            edit();
        } catch (...) {
            commit();
            throw;
        }
        commit();
    }
    void begin(EditKind kind, std::string label, std::string gesture = {});
    // False when the edit changed nothing (no step is kept).
    bool commit();

    bool canUndo() const { return applied_ > 0; }
    bool canRedo() const { return applied_ < steps_.size(); }
    std::string undoLabel() const { return canUndo() ? steps_[applied_ - 1].label : std::string(); }
    std::string redoLabel() const { return canRedo() ? steps_[applied_].label : std::string(); }
    EditKind undoKind() const { return steps_[applied_ - 1].kind; }
    // A number that names the step undo would take back (0: none). Steps are numbered as
    // they are kept, so a caller can tell whether its own step is still the last one.
    uint64_t undoSerial() const { return canUndo() ? steps_[applied_ - 1].serial : 0; }
    bool undo(std::string& error);
    bool redo(std::string& error);
    // The next step starts afresh, whatever its gesture key.
    void seal() { sealed_ = true; }
    // A new or opened patch: nothing to undo.
    void clear();
    size_t size() const { return steps_.size(); }
    size_t limit() const { return limit_; }

private:
    struct Step {
        EditKind kind;
        std::string label, gesture;
        PatchState before, after;
        uint64_t serial = 0;
    };
    Session& session_;
    size_t limit_;
    std::deque<Step> steps_;
    size_t applied_ = 0;
    uint64_t nextSerial_ = 1;
    bool sealed_ = true;
    bool open_ = false;
    Step pending_{};
};

// --- the edits ---
// Each marks the patch changed. A refused edit (the modules are locked, no room on the bus)
// leaves no step behind.

// Places a module of `type` on `page` at `top`, `left` (twips). Throws PlacementError.
Module& placeModule(Session& session, ModuleTypeId type, int page, int32_t top, int32_t left);
void deleteModule(Session& session, Module& module);
void moveModule(Session& session, Module& module, int page, int32_t top, int32_t left);
void connectInput(Session& session, Module& module, int input, uint16_t position);
void setTempo(Session& session, int bpm);
// Store New (false when all 128 are used) and Store Current.
bool storeSnapshot(Session& session, bool asNew);
// Every snapshot goes; the live settings stay.
void clearSnapshots(Session& session);

}  // namespace quillmer
