#include "engine/ModuleRegistry.h"

#include <stdexcept>
#include <string>

namespace quillmer {

void ModuleRegistry::add(std::string_view typeName, Factory factory) {
    const auto id = typeIdByName(typeName);
    if (!id) throw std::logic_error("registry: " + std::string(typeName) + " is not in the catalogue");
    Factory& slot = factories_[static_cast<size_t>(*id)];
    if (slot) throw std::logic_error("registry: " + std::string(typeName) + " registered twice");
    slot = std::move(factory);
}

void ModuleRegistry::replace(std::string_view typeName, Factory factory) {
    const auto id = typeIdByName(typeName);
    if (!id) throw std::logic_error("registry: " + std::string(typeName) + " is not in the catalogue");
    factories_[static_cast<size_t>(*id)] = std::move(factory);
}

bool ModuleRegistry::isBuilt(ModuleTypeId id) const {
    return id >= 1 && id <= kTypeCount && factories_[static_cast<size_t>(id)] != nullptr;
}

std::unique_ptr<Module> ModuleRegistry::make(ModuleTypeId id) const {
    std::unique_ptr<Module> module =
        isBuilt(id) ? factories_[static_cast<size_t>(id)]() : std::make_unique<PlaceholderModule>(id);
    if (module->type() != id) throw std::logic_error("registry: factory made the wrong type");
    return module;
}

}  // namespace quillmer
