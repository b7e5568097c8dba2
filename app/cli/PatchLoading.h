#pragma once
// Opening a patch for a command: the load of the desktop program, with its failure as one
// line on stderr.

#include <string>

#include "engine/ModuleRegistry.h"

namespace quillmer {

class Session;

// Every type that runs.
const ModuleRegistry& patchRegistry();
// Loads `path` as the desktop program opens a file (timers stopped and started around it).
// False, with the reason on stderr, when it can't.
bool loadPatch(Session& session, const std::string& path);

}  // namespace quillmer
