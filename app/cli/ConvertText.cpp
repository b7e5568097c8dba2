// `convert` to or from the text form: the module file's bytes pass through unchanged, so a
// .qmp converted to .qmj and back is the same file.

#include <iostream>

#include "app/cli/Commands.h"
#include "app/cli/PatchLoading.h"
#include "engine/RegularFile.h"
#include "shell/FileHeader.h"
#include "shell/PatchJson.h"
#include "shell/Session.h"

namespace quillmer {

namespace {

constexpr size_t kLargestModuleFile = size_t{256} << 20;

int failed(const std::string& message) {
    std::cerr << "quillmer-cli: " << message << '\n';
    return 1;
}

}  // namespace

int convertPatchText(const std::string& in, const std::string& out) {
    std::vector<uint8_t> bytes;
    std::string reason;
    // A .qmp is taken whole, whatever lies past its content, so that nothing of it is lost.
    const bool read = isPatchJsonPath(in) ? readPatchJsonFile(in, bytes, reason)
                                          : readRegularFile(in, kLargestModuleFile, bytes, reason);
    if (!read || !checkModuleBytes(bytes, reason)) return failed("Unable to Load: " + in + " (" + reason + ")");
    if (isPatchJsonPath(out)) {
        std::string text;
        const auto built = [](ModuleTypeId id) { return patchRegistry().isBuilt(id); };
        if (!patchToJson(bytes, built, text, reason)) return failed("Unable to Load: " + in + " (" + reason + ")");
        bytes.assign(text.begin(), text.end());
    }
    std::string error;
    if (!writeWholeFile(out, bytes, error)) return failed(error);
    return 0;
}

}  // namespace quillmer
