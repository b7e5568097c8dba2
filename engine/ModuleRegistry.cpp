#include "engine/ModuleRegistry.h"

#include <stdexcept>
#include <string>

namespace quillmer {

namespace {
ModuleTypeId catalogueId(std::string_view typeName) {
    const auto id = typeIdByName(typeName);
    if (!id) throw std::logic_error("registry: " + std::string(typeName) + " is not in the catalogue");
    return *id;
}
}  // namespace

void ModuleRegistry::add(std::string_view typeName, Factory factory, SlotMaker slot) {
    Entry& entry = entries_[static_cast<size_t>(catalogueId(typeName))];
    if (entry.factory) throw std::logic_error("registry: " + std::string(typeName) + " registered twice");
    entry = Entry{std::move(factory), std::move(slot)};
}

void ModuleRegistry::replace(std::string_view typeName, Factory factory) {
    entries_[static_cast<size_t>(catalogueId(typeName))] = Entry{std::move(factory), nullptr};
}

bool ModuleRegistry::isBuilt(ModuleTypeId id) const {
    return id >= 1 && id <= kTypeCount && entries_[static_cast<size_t>(id)].factory != nullptr;
}

std::unique_ptr<Module> ModuleRegistry::make(ModuleTypeId id) const {
    std::unique_ptr<Module> module =
        isBuilt(id) ? entries_[static_cast<size_t>(id)].factory() : std::make_unique<PlaceholderModule>(id);
    if (module->type() != id) throw std::logic_error("registry: factory made the wrong type");
    return module;
}

std::unique_ptr<ModuleTypeSlot> ModuleRegistry::makeSlot(ModuleTypeId id) const {
    if (isBuilt(id) && entries_[static_cast<size_t>(id)].slot) return entries_[static_cast<size_t>(id)].slot(id);
    return std::make_unique<FactorySlot>(id, [this, id] { return make(id); });
}

}  // namespace quillmer
