#include "engine/ModuleTypeSlot.h"

#include <stdexcept>

namespace quillmer {

Module* ModuleTypeSlot::blankAt(size_t index) {
    Module* m = construct(index);
    m->Active = 0;
    m->Index = static_cast<int16_t>(index);
    return m;
}

int ModuleTypeSlot::nextIndex() {
    while (!free_.empty()) {
        const int16_t i = free_.top();
        if (static_cast<size_t>(i) < records_.size() && records_[static_cast<size_t>(i)]->Active == 0) return i;
        free_.pop();  // taken again since
    }
    return static_cast<int>(records_.size());
}

int16_t ModuleTypeSlot::AllocInstance() {
    const int index = nextIndex();
    const auto i = static_cast<size_t>(index);
    if (i < records_.size()) {
        free_.pop();
        destroy(i);
        records_[i] = blankAt(i);
    } else {
        records_.push_back(nullptr);
        records_[i] = blankAt(i);
    }
    return static_cast<int16_t>(index);
}

void ModuleTypeSlot::freeSlot(int16_t index) {
    if (index < 0 || static_cast<size_t>(index) >= records_.size()) return;
    const auto i = static_cast<size_t>(index);
    destroy(i);
    records_[i] = blankAt(i);
    free_.push(index);
}

Module& ModuleTypeSlot::appendBlank() {
    const size_t i = records_.size();
    records_.push_back(nullptr);
    records_[i] = blankAt(i);
    free_.push(static_cast<int16_t>(i));  // dropped by nextIndex once it is placed
    return *records_[i];
}

void ModuleTypeSlot::UnloadAll() {
    for (size_t i = records_.size(); i-- > 0;) destroy(i);
    records_.clear();
    free_ = {};
    for (auto& pass : byPass_) pass.clear();
    placed_.clear();
    TypeUsed = false;
}

void ModuleTypeSlot::refreshPasses() {
    for (auto& pass : byPass_) pass.clear();
    placed_.clear();
    for (Module* m : records_) {
        if (m->Active == 0) continue;
        placed_.push_back(m);
        const int16_t p = m->priority();
        if (p >= 0 && p < kPassCount) byPass_[static_cast<size_t>(p)].push_back(m);
    }
}

void ModuleTypeSlot::runPass(Engine& engine, int16_t priority) {
    for (Module* m : byPass_[static_cast<size_t>(priority)])
        if (m->Active != 0 && m->priority() == priority) m->UpdateModule(engine);
}

void ModuleTypeSlot::runAll(Engine& engine) {
    for (Module* m : placed_)
        if (m->Active != 0) m->UpdateModule(engine);
}

Module* ModuleTypeSlot::at(int16_t index) const {
    if (index < 0 || static_cast<size_t>(index) >= records_.size()) return nullptr;
    return records_[static_cast<size_t>(index)];
}

bool ModuleTypeSlot::anyActive() const {
    for (const Module* m : records_)
        if (m->Active != 0) return true;
    return false;
}

Module* ModuleTypeSlot::findByName(std::string_view name) const {
    for (Module* m : records_)
        if (m->Active != 0 && m->Name == name) return m;
    return nullptr;
}

Module* FactorySlot::construct(size_t index) {
    std::unique_ptr<Module> made = make_();
    if (made->type() != id()) throw std::logic_error("registry: factory made the wrong type");
    if (owned_.size() <= index) owned_.resize(index + 1);
    owned_[index] = std::move(made);
    return owned_[index].get();
}

void FactorySlot::destroy(size_t index) { owned_[index].reset(); }

}  // namespace quillmer
