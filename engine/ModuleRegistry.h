#pragma once
// From ModuleTypeId to the code that makes an instance and the slot that stores them.
// Types with no entry are made as placeholders. One line per built type, in
// modules/BuiltTypes.cpp.

#include <array>
#include <functional>
#include <memory>

#include "engine/Catalogue.h"
#include "engine/Module.h"
#include "engine/ModuleTypeSlot.h"

namespace quillmer {

class ModuleRegistry {
public:
    using Factory = std::function<std::unique_ptr<Module>()>;
    using SlotMaker = std::function<std::unique_ptr<ModuleTypeSlot>(ModuleTypeId)>;

    template <class T>
    void add(std::string_view typeName) {
        add(typeName, [] { return std::make_unique<T>(); },
            [](ModuleTypeId id) { return std::make_unique<TypedSlot<T>>(id); });
    }
    // Throws when the name is not in the catalogue or is registered twice.
    void add(std::string_view typeName, Factory factory, SlotMaker slot = nullptr);

    // Puts other code in a type's place, built or not (tests stand probes in for types).
    void replace(std::string_view typeName, Factory factory);

    bool isBuilt(ModuleTypeId id) const;
    // One instance on its own (a panel's sample, a test's record).
    std::unique_ptr<Module> make(ModuleTypeId id) const;
    // The slot that keeps the type's instances in an engine.
    std::unique_ptr<ModuleTypeSlot> makeSlot(ModuleTypeId id) const;

private:
    struct Entry {
        Factory factory;
        SlotMaker slot;
    };
    std::array<Entry, kTypeCount + 1> entries_;
};

}  // namespace quillmer
