#pragma once
// The registry of every module type whose logic is built.

#include "engine/ModuleRegistry.h"

namespace quillmer {

// One line per built type; the rest stay placeholders.
void registerBuiltTypes(ModuleRegistry& registry);
// A registry with every built type, made once.
const ModuleRegistry& builtTypes();

}  // namespace quillmer
