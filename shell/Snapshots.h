#pragma once
// Snapshots: up to 128 complete settings of the patch, each an index into the arrays every
// record carries, plus a name. Needs the engine lock.

#include <array>
#include <functional>
#include <string>

#include "engine/Constants.h"

namespace quillmer {

class Engine;

class Snapshots {
public:
    explicit Snapshots(Engine& engine) : engine_(engine) {}

    static constexpr const char* kAutoSave = "AutoSave";
    static constexpr const char* kFull = " Can't make more patches.";

    // The name for a slot from the text the user typed: "002 Verse"; an old number prefix
    // is dropped, never doubled. Text holding "AutoSave" is "Unnamed" unless kept.
    static std::string buildName(const std::string& text, int slot, bool keepAutoSave = false);

    std::array<std::string, kSnapshotCount> SnapshotNames{};
    std::string comboText = kAutoSave;  // the text of the snapshot box
    // The live settings were edited since the current snapshot was recalled or stored.
    bool liveEdited = false;

    // Recall slot CurrentSnapshot; nothing while there are no snapshots.
    void SetNewPatch();
    // Store into a new slot; false (and the message) when all 128 are used.
    bool StoreNewPatch();
    void StoreCurrentPatch();
    // Store the live state in slot 0 without leaving the current slot.
    void doPatchAuto();
    void WipePatchList();
    // The snapshot box or its spin chose a slot: recall it.
    void select(int slot);

    std::function<void()> markModified;
    std::function<void(const std::string&)> showMessage;
    std::function<void()> wiped;  // the Composer's list goes with the snapshots

private:
    bool storeNew(bool keepAutoSave);
    Engine& engine_;
};

}  // namespace quillmer
