// Names, connections and the life cycle of modules.

#include <algorithm>
#include <string>
#include <utility>

#include "engine/Engine.h"
#include "engine/Placement.h"

namespace quillmer {

Engine::Engine(TimerService& timers, const ModuleRegistry& registry, EngineSeams* seams)
    : timers_(timers), registry_(registry), seams_(seams ? seams : &defaultSeams_), ports(*this) {
    types_.reserve(kTypeCount + 1);
    types_.push_back(nullptr);
    for (ModuleTypeId id = 1; id <= kTypeCount; ++id) types_.push_back(registry_.makeSlot(id));
    InitOutputLists();
    // Creation order is the firing order of timers due at the same instant.
    tickTimer_ = timers_.addTimer("tick", [this] { onTickTimer(); });
    resyncTimer_ = timers_.addTimer("resync pulse", [this] { onResyncPulseTimer(); });
    absClockATimer_ = timers_.addTimer("absolute clock A", [this] { onAbsClockTimer(priority::AbsClockA); });
    absClockBTimer_ = timers_.addTimer("absolute clock B", [this] { onAbsClockTimer(priority::AbsClockB); });
}

Engine::~Engine() {
    for (TimerId t : {tickTimer_, resyncTimer_, absClockATimer_, absClockBTimer_}) timers_.setInterval(t, 0);
}

// --- names and connections ---

void Engine::InitOutputLists() {
    names.Init();
    bus.writeSystemValues();
}

void Engine::InsertSortedName(NameSlot slot) {
    names.insertSorted(slot);
    ResolveInputNames();
    MarkPatchChanged(true);
}

void Engine::RemoveSortedName(NameSlot slot) {
    names.removeSorted(slot);
    ResolveInputNames();
    MarkPatchChanged(true);
}

void Engine::ResolveInputNames() {
    if (SnapshotCount == 0) return;
    forEachModule([this](Module& m) { m.resolveStoredNames(names, SnapshotCount); });
}

void Engine::ResetAllInputs() {
    forEachModule([this](Module& m) { m.ResetInputs(names); });
    // The position map is spent here, on purpose: it tells one ResetInputs pass how the
    // sorted list moved, and a later pass must not apply it again. Placing a type without an
    // output re-labels with no change.
    names.consumePositionMap();
    MarkPatchChanged(true);
}

void Engine::MarkPatchChanged(bool changed) {
    patchChanged_ = changed;
    if (events.patchChanged) events.patchChanged(changed);
}

void Engine::connectInput(Module& module, int k, uint16_t position) {
    if (options.lockModules) return;
    module.connect(k, position, names);
    MarkPatchChanged(true);
}

// --- life cycle ---

int Engine::maxInstances(ModuleTypeId type) {
    const TypeInfo& info = typeInfo(type);
    // A module's output id is its family's first id plus its index; past the end of the
    // bus there is nowhere to write. A type without an output is bounded by the file's count.
    return info.hasOutput() ? kBusSize - info.busFamily * kIdsPerFamily : kMaxRecordCount;
}

Module& Engine::place(ModuleTypeId type) {
    ModuleTypeSlot& slot = typeSlot(type);
    if (slot.nextIndex() >= maxInstances(type) || (slot.info().hasOutput() && !names.hasFreeSlot()))
        throw PlacementError("Can't place another " + std::string(slot.info().type) +
                             " module: there is no room left for its output.");
    const int16_t index = slot.AllocInstance();
    Module& m = *slot.at(index);
    m.Name = std::to_string(index + 1) + std::string(slot.info().prefix);
    m.setPriority(priority::Default);
    m.Active = -1;
    m.Enabled = -1;
    m.Page = static_cast<int16_t>(currentPage_);
    m.attach(*this, index);
    return m;
}

void Engine::registerOutput(Module& m) {
    const NameSlot s = names.AllocNameSlot();
    if (s < 0) throw PlacementError("Can't place " + m.Name + ": every output name is in use.");
    m.OutSlot = s;
    names.enter(s, m.Name, m.OutBus);
}

Module& Engine::New(ModuleTypeId type) {
    const bool atCursor = std::exchange(placeAtCursor_, false);
    Module& m = place(type);
    LastModuleType = type;
    if (atCursor) {
        m.Top = cursorTop_;
        m.Left = cursorLeft_;
    }
    ModuleTypeSlot& slot = typeSlot(type);
    slot.TypeUsed = true;
    if (slot.info().hasOutput()) {
        registerOutput(m);
        InsertSortedName(m.OutSlot);
    }
    ResetAllInputs();
    m.presetInputsInAllSnapshots(names);
    return m;
}

Module& Engine::NewLastModule() {
    static const ModuleTypeId kFirstChoice = *typeIdByName("MIDIVoice");
    return New(LastModuleType == 0 ? kFirstChoice : LastModuleType);
}

void Engine::placeAtCursor(int32_t top, int32_t left) {
    placeAtCursor_ = true;
    cursorTop_ = top;
    cursorLeft_ = left;
}

void Engine::Delete(Module& module) {
    if (closing_) return;
    const ModuleTypeId type = module.type();
    const int16_t index = module.Index;
    if (module.info().hasOutput()) {
        RemoveSortedName(module.OutSlot);
        names.free(names.FindNameSlot(module.Name));
    }
    typeSlot(type).freeSlot(index);  // `module` is gone now
    passListsStale = true;
    ResetAllInputs();
}

void Engine::CloseAllModules() {
    closing_ = true;
    for (size_t id = 1; id < types_.size(); ++id) types_[id]->UnloadAll();
    passListsStale = true;
    InitOutputLists();
    closing_ = false;
}

void Engine::applyStatus(Module& module, const StatusChoice& choice) {
    if (choice.cancelled) return;
    module.setPriority(storedPriorityOf(choice.priorityIndex));
    module.Enabled = choice.enabled ? int16_t{-1} : int16_t{0};
    module.viewChanged = true;
    MarkPatchChanged(true);
    if (choice.remove) Delete(module);
}

bool Engine::MapCommand(std::string_view name, int action, int argument) {
    Module* m = findModule(name);
    if (!m) return false;
    switch (action) {
        case 0: m->Page = static_cast<int16_t>(argument); break;
        case 1: Delete(*m); return true;
        case 2: m->Enabled = 0; break;
        case 3: m->Enabled = -1; break;
        default: return false;
    }
    m->viewChanged = true;
    return true;
}

Module& Engine::placeForBulk(ModuleTypeId type) {
    bulk_ = true;
    Module& m = place(type);
    ModuleTypeSlot& slot = typeSlot(type);
    slot.TypeUsed = true;
    if (slot.info().hasOutput()) registerOutput(m);
    m.presetInputsInAllSnapshots(names);
    return m;
}

void Engine::endBulk() {
    if (!bulk_) return;
    bulk_ = false;
    names.RebuildSortedList();
    ResolveInputNames();
    MarkPatchChanged(true);
}

Module& Engine::loadRecord(ModuleTypeId type) {
    ModuleTypeSlot& slot = typeSlot(type);
    if (static_cast<int>(slot.slotCount()) >= maxInstances(type))
        throw PlacementError("more " + std::string(slot.info().type) + " modules than the output bus has room for");
    return slot.appendBlank();
}

void Engine::restoreInstances(ModuleTypeId type) {
    ModuleTypeSlot& slot = typeSlot(type);
    for (size_t i = 0; i < slot.slotCount(); ++i) {
        Module& m = *slot.at(static_cast<int16_t>(i));
        m.Index = static_cast<int16_t>(i);
        if (m.Active == 0) continue;
        m.attach(*this, m.Index);
        slot.TypeUsed = true;
        if (slot.info().hasOutput()) registerOutput(m);
    }
}

void Engine::finishRestore() {
    names.RebuildSortedList();
    ResolveInputNames();
}

void Engine::StoreAllPatches() {
    for (ModuleTypeId id : recallOrder()) typeSlot(id).forEachActive([this](Module& m) { m.PatchStore(*this); });
}

void Engine::RecallAllPatches() {
    for (ModuleTypeId id : recallOrder()) typeSlot(id).forEachActive([this](Module& m) { m.PatchChange(*this); });
}

const uint8_t* Engine::toneRow(int table) const {
    static const std::array<uint8_t, 128> kChromatic = [] {
        std::array<uint8_t, 128> row{};
        for (uint8_t step = 0; step < 12; ++step) {
            row[step] = step;
            row[64u + step] = 1;  // no bend: 1 + 63 is the centre
        }
        row[127] = 11;
        return row;
    }();
    if (!toneTables_) return kChromatic.data();
    return toneTables_ + static_cast<size_t>(table & 127) * 128;
}

int Engine::generalTableStep(int table, int step) const {
    if (!generalTables_ || table < 0 || table > 127 || step < 0 || step > 127) return 0;
    return generalTables_[static_cast<size_t>(table) * 128 + static_cast<size_t>(step)];
}

void Engine::writeGeneralTableStep(int table, int step, int value) {
    if (!generalTables_ || table < 0 || table > 127 || step < 0 || step > 127) return;
    uint8_t& cell = generalTables_[static_cast<size_t>(table) * 128 + static_cast<size_t>(step)];
    const auto cut = static_cast<uint8_t>(std::clamp(value, 0, 127));
    if (cell == cut) return;
    cell = cut;
    ++generalTablesVersion_;
}

Module* Engine::findModule(std::string_view name) {
    for (size_t id = 1; id < types_.size(); ++id)
        if (types_[id]->TypeUsed)
            if (Module* m = types_[id]->findByName(name)) return m;
    return nullptr;
}

void Engine::showPage(int page) {
    if (page < 0 || page >= kPageCount || page == currentPage_) return;
    bus[sysbus::Page] = static_cast<uint8_t>(page);
    currentPage_ = page;
    if (events.pageChanged) events.pageChanged(page);
}

}  // namespace quillmer
