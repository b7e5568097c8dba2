#pragma once
// From ModuleTypeId to the code that makes an instance. Types with no entry are made as
// placeholders. One line per built type, in modules/BuiltTypes.cpp.

#include <array>
#include <functional>
#include <memory>

#include "engine/Catalogue.h"
#include "engine/Module.h"

namespace quillmer {

class ModuleRegistry {
public:
    using Factory = std::function<std::unique_ptr<Module>()>;

    template <class T>
    void add(std::string_view typeName) {
        add(typeName, [] { return std::make_unique<T>(); });
    }
    // Throws when the name is not in the catalogue or is registered twice.
    void add(std::string_view typeName, Factory factory);

    // Puts other code in a type's place, built or not (tests stand probes in for types).
    void replace(std::string_view typeName, Factory factory);

    bool isBuilt(ModuleTypeId id) const;
    std::unique_ptr<Module> make(ModuleTypeId id) const;

private:
    std::array<Factory, kTypeCount + 1> factories_;
};

}  // namespace quillmer
