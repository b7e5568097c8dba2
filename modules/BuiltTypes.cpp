#include "modules/BuiltTypes.h"

#include "modules/panels/Chain.h"
#include "modules/processors/Arithmetic.h"

namespace quillmer {

void registerBuiltTypes(ModuleRegistry& registry) {
    registry.add<Div>("Div");
    registry.add<Chain>("Chain");
}

const ModuleRegistry& builtTypes() {
    static const ModuleRegistry registry = [] {
        ModuleRegistry r;
        registerBuiltTypes(r);
        return r;
    }();
    return registry;
}

}  // namespace quillmer
