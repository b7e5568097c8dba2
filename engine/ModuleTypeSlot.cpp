#include "engine/ModuleTypeSlot.h"

namespace quillmer {

int16_t ModuleTypeSlot::AllocInstance(const std::function<std::unique_ptr<Module>()>& make) {
    for (size_t i = 0; i < records_.size(); ++i) {
        if (records_[i]->Active == 0) {
            records_[i] = make();
            return static_cast<int16_t>(i);
        }
    }
    records_.push_back(make());
    return static_cast<int16_t>(records_.size() - 1);
}

void ModuleTypeSlot::freeSlot(int16_t index, const std::function<std::unique_ptr<Module>()>& make) {
    if (index < 0 || static_cast<size_t>(index) >= records_.size()) return;
    records_[static_cast<size_t>(index)] = make();
    records_[static_cast<size_t>(index)]->Index = index;
}

Module* ModuleTypeSlot::at(int16_t index) const {
    if (index < 0 || static_cast<size_t>(index) >= records_.size()) return nullptr;
    return records_[static_cast<size_t>(index)].get();
}

bool ModuleTypeSlot::anyActive() const {
    for (const auto& m : records_)
        if (m->Active != 0) return true;
    return false;
}

Module* ModuleTypeSlot::findByName(std::string_view name) const {
    for (const auto& m : records_)
        if (m->Active != 0 && m->Name == name) return m.get();
    return nullptr;
}

}  // namespace quillmer
