#include "shell/Snapshots.h"

#include <cstdio>

#include "engine/Engine.h"

namespace quillmer {

std::string Snapshots::buildName(const std::string& typed, int slot, bool keepAutoSave) {
    std::string text = typed;
    if (text.empty()) text = "Unnamed";
    if (text.find(kAutoSave) != std::string::npos) text = keepAutoSave ? kAutoSave : "Unnamed";
    std::string kept;
    for (char c : text.substr(0, 4))
        if (std::string_view(" 0123456789").find(c) == std::string_view::npos) kept += c;
    char number[8];
    std::snprintf(number, sizeof number, "%03d ", slot);
    std::string name = number + kept + (text.size() > 4 ? text.substr(4) : std::string());
    if (name.size() > 24) name.resize(24);
    return name;
}

void Snapshots::SetNewPatch() {
    if (engine_.SnapshotCount == 0) return;
    liveEdited = false;
    engine_.bus[sysbus::Page] = static_cast<uint8_t>(engine_.CurrentSnapshot);
    engine_.RecallAllPatches();
    comboText = SnapshotNames[static_cast<size_t>(engine_.CurrentSnapshot)];
}

bool Snapshots::StoreNewPatch() { return storeNew(false); }

bool Snapshots::storeNew(bool keepAutoSave) {
    if (engine_.SnapshotCount >= kSnapshotCount) {
        if (showMessage) showMessage(kFull);
        return false;
    }
    if (markModified) markModified();
    const int16_t slot = engine_.SnapshotCount;
    comboText = SnapshotNames[static_cast<size_t>(slot)] = buildName(comboText, slot, keepAutoSave);
    engine_.CurrentSnapshot = slot;
    engine_.SnapshotCount = static_cast<int16_t>(slot + 1);
    engine_.StoreAllPatches();
    liveEdited = false;
    return true;
}

void Snapshots::StoreCurrentPatch() {
    if (markModified) markModified();
    if (engine_.SnapshotCount == 0) {
        StoreNewPatch();
        return;
    }
    const int16_t slot = engine_.CurrentSnapshot;
    if (slot == 0) comboText = kAutoSave;
    comboText = SnapshotNames[static_cast<size_t>(slot)] = buildName(comboText, slot, slot == 0);
    engine_.StoreAllPatches();
    liveEdited = false;
}

void Snapshots::doPatchAuto() {
    const int16_t remembered = engine_.CurrentSnapshot;
    engine_.CurrentSnapshot = 0;
    if (engine_.SnapshotCount == 0) {
        if (markModified) markModified();
        storeNew(true);  // the first snapshot a save makes is the autosave slot
        return;
    }
    StoreCurrentPatch();
    if (remembered != 0) {
        engine_.CurrentSnapshot = remembered;
        SetNewPatch();
    }
}

void Snapshots::WipePatchList() {
    engine_.SnapshotCount = 0;
    engine_.CurrentSnapshot = 0;
    SnapshotNames.fill(std::string());
    comboText = kAutoSave;
    liveEdited = false;
    if (wiped) wiped();
}

void Snapshots::select(int slot) {
    if (slot < 0 || slot >= engine_.SnapshotCount) return;
    engine_.CurrentSnapshot = static_cast<int16_t>(slot);
    SetNewPatch();
}

}  // namespace quillmer
