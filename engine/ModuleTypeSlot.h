#pragma once
// The instances of one type: one array of records, index = instance index (part of each
// BusId, so indices stay put: a deleted module leaves a free slot). Needs the engine lock.

#include <functional>
#include <memory>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"

namespace quillmer {

class Engine;

class ModuleTypeSlot {
public:
    explicit ModuleTypeSlot(ModuleTypeId id) : id_(id) {}

    ModuleTypeId id() const { return id_; }
    const TypeInfo& info() const { return typeInfo(id_); }
    bool TypeUsed = false;

    // The first free slot's index (its record made new by `make`), or a new slot at the end.
    int16_t AllocInstance(const std::function<std::unique_ptr<Module>()>& make);

    // Priority pass: every placed instance of that priority, in index order.
    void UpdateInPass(Engine& engine, int16_t priority) {
        if (!TypeUsed) return;
        for (auto& m : records_)
            if (m->Active != 0 && m->Priority == priority) m->UpdateModule(engine);
    }
    // Types outside the priority system: every placed instance.
    void UpdateAll(Engine& engine) {
        if (!TypeUsed) return;
        for (auto& m : records_)
            if (m->Active != 0) m->UpdateModule(engine);
    }

    // Every placed instance, in index order.
    template <class F>
    void forEachActive(F&& f) {
        if (!TypeUsed) return;
        for (auto& m : records_)
            if (m->Active != 0) f(*m);
    }

    // Drops every instance; the type is unused again.
    void UnloadAll() {
        records_.clear();
        TypeUsed = false;
    }
    // Writes a blank record into the slot; the index stays taken by nothing.
    void freeSlot(int16_t index, const std::function<std::unique_ptr<Module>()>& make);

    // Takes the records of a loaded file; index = place in the vector.
    void adopt(std::vector<std::unique_ptr<Module>> records) { records_ = std::move(records); }
    // Records to write: every slot up to the last, or none when no module is placed.
    size_t SaveCount() const { return anyActive() ? records_.size() : 0; }
    size_t slotCount() const { return records_.size(); }
    Module* at(int16_t index) const;  // nullptr past the end
    bool anyActive() const;
    Module* findByName(std::string_view name) const;

private:
    ModuleTypeId id_;
    std::vector<std::unique_ptr<Module>> records_;  // Records; a free slot has Active 0
};

}  // namespace quillmer
