#include "app/cli/PatchLoading.h"

#include <iostream>

#include "modules/BuiltTypes.h"
#include "shell/Session.h"

namespace quillmer {

const ModuleRegistry& patchRegistry() { return builtTypes(); }

bool loadPatch(Session& session, const std::string& path) {
    auto held = session.engine.lock();
    std::string error;
    if (session.OpenFile(path, error)) {
        // A broken .ufn beside the patch: the patch runs on the default formulas.
        if (!session.userFunctionProblem.empty()) std::cerr << "quillmer-cli: " << session.userFunctionProblem << '\n';
        return true;
    }
    std::cerr << "quillmer-cli: " << error;
    if (!session.loadProblem.empty()) std::cerr << " (" << session.loadProblem << ')';
    std::cerr << '\n';
    return false;
}

}  // namespace quillmer
