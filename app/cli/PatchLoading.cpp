#include "app/cli/PatchLoading.h"

#include <iostream>

#include "modules/BuiltTypes.h"
#include "shell/Session.h"

namespace quillmer {

const ModuleRegistry& patchRegistry() { return builtTypes(); }

bool loadPatch(Session& session, const std::string& path) {
    auto held = session.engine.lock();
    std::string error;
    if (session.OpenFile(path, error)) return true;
    std::cerr << "quillmer-cli: " << error;
    if (!session.loadProblem.empty()) std::cerr << " (" << session.loadProblem << ')';
    std::cerr << '\n';
    return false;
}

}  // namespace quillmer
