#pragma once
// The instances of one type: one array of records, index = instance index (part of each
// BusId, so indices stay put: a deleted module leaves a free slot holding a blank record).
// Needs the engine lock.
//
// Storage is shaped for the tick. A built type keeps its records, of its own concrete
// class, in chunks of 64 laid side by side (TypedSlot), so a pass walks memory in order and
// calls the type's update directly, not through the virtual table. Each slot keeps, per
// update pass, the list of its placed instances in index order, rebuilt only when a module
// is placed, deleted or given another priority. Free indices wait in a heap: the lowest
// is reused first without a scan. A type not built (or stood in for by a test) keeps its
// records one by one on the heap (FactorySlot).

#include <array>
#include <functional>
#include <memory>
#include <new>
#include <queue>
#include <string_view>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"

namespace quillmer {

class Engine;

// Update passes have stored priorities 0..6 (see priority::).
constexpr int kPassCount = 7;

class ModuleTypeSlot {
public:
    explicit ModuleTypeSlot(ModuleTypeId id) : id_(id) {}
    virtual ~ModuleTypeSlot() = default;
    ModuleTypeSlot(const ModuleTypeSlot&) = delete;
    ModuleTypeSlot& operator=(const ModuleTypeSlot&) = delete;

    ModuleTypeId id() const { return id_; }
    const TypeInfo& info() const { return typeInfo(id_); }
    bool TypeUsed = false;

    // The index AllocInstance would give: the lowest free slot, or the next new one.
    int nextIndex();
    // That index, its record made new and blank (Active 0).
    int16_t AllocInstance();
    // Writes a blank record into the slot; the index stays taken by nothing.
    void freeSlot(int16_t index);
    // A blank record at the end (a file's records are read into these in order).
    Module& appendBlank();
    // Drops every instance; the type is unused again.
    void UnloadAll();

    // Priority pass: every placed instance of that priority, in index order.
    void UpdateInPass(Engine& engine, int16_t priority) {
        if (TypeUsed) runPass(engine, priority);
    }
    // Types outside the priority system: every placed instance.
    void UpdateAll(Engine& engine) {
        if (TypeUsed) runAll(engine);
    }
    // Placed instances of a pass, in index order (rebuilt by refreshPasses).
    bool hasPass(int16_t priority) const { return !byPass_[static_cast<size_t>(priority)].empty(); }
    bool anyPlaced() const { return !placed_.empty(); }
    void refreshPasses();

    // Every placed instance, in index order.
    template <class F>
    void forEachActive(F&& f) {
        if (!TypeUsed) return;
        for (Module* m : records_)
            if (m->Active != 0) f(*m);
    }

    // Records to write: every slot up to the last, or none when no module is placed.
    size_t SaveCount() const { return anyActive() ? records_.size() : 0; }
    size_t slotCount() const { return records_.size(); }
    Module* at(int16_t index) const;  // nullptr past the end
    bool anyActive() const;
    Module* findByName(std::string_view name) const;

protected:
    // A blank record of the type made at `index` (its storage is the slot's own).
    virtual Module* construct(size_t index) = 0;
    virtual void destroy(size_t index) = 0;
    virtual void runPass(Engine& engine, int16_t priority);
    virtual void runAll(Engine& engine);

    std::vector<Module*> records_;  // Records; a free slot has Active 0
    std::array<std::vector<Module*>, kPassCount> byPass_;
    std::vector<Module*> placed_;

private:
    Module* blankAt(size_t index);
    ModuleTypeId id_;
    std::priority_queue<int16_t, std::vector<int16_t>, std::greater<>> free_;  // may hold taken ones
};

// Records of one built type T, in chunks that never move.
template <class T>
class TypedSlot final : public ModuleTypeSlot {
public:
    using ModuleTypeSlot::ModuleTypeSlot;
    ~TypedSlot() override { UnloadAll(); }

protected:
    Module* construct(size_t index) override {
        const size_t chunk = index / kChunk;
        while (chunks_.size() <= chunk) chunks_.push_back(std::make_unique<Chunk>());
        return new (&chunks_[chunk]->cells[index % kChunk]) T();
    }
    void destroy(size_t index) override { static_cast<T*>(records_[index])->~T(); }
    void runPass(Engine& engine, int16_t priority) override {
        for (Module* m : byPass_[static_cast<size_t>(priority)]) {
            T& t = *static_cast<T*>(m);
            if (t.Active == 0 || t.priority() != priority) continue;  // changed during the pass
            if (t.moved()) t.followMove(engine);
            if (t.Enabled != 0) t.T::update(engine);  // every record here is exactly a T
        }
    }
    void runAll(Engine& engine) override {
        for (Module* m : placed_) {
            T& t = *static_cast<T*>(m);
            if (t.Active == 0) continue;
            if (t.moved()) t.followMove(engine);
            if (t.Enabled != 0) t.T::update(engine);
        }
    }

private:
    static constexpr size_t kChunk = 64;
    struct Chunk {
        struct alignas(T) Cell {
            std::byte bytes[sizeof(T)];
        };
        Cell cells[kChunk];
    };
    std::vector<std::unique_ptr<Chunk>> chunks_;
};

// Records made one by one by a factory: placeholders and stand-ins.
class FactorySlot final : public ModuleTypeSlot {
public:
    using Factory = std::function<std::unique_ptr<Module>()>;
    FactorySlot(ModuleTypeId id, Factory make) : ModuleTypeSlot(id), make_(std::move(make)) {}
    ~FactorySlot() override { UnloadAll(); }

protected:
    Module* construct(size_t index) override;
    void destroy(size_t index) override;

private:
    Factory make_;
    std::vector<std::unique_ptr<Module>> owned_;
};

}  // namespace quillmer
