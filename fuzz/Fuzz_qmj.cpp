// Fuzz target: the text form of a patch (.qmj). Any text is read or refused with a reason;
// what is read and passes the module file's check turns back into the same bytes through
// the text again, with every type written out field by field.

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "shell/PatchJson.h"
#include "shell/Session.h"

using namespace quillmer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!patchFromJson(std::string_view(reinterpret_cast<const char*>(data), size), bytes, reason)) {
        if (reason.empty()) std::abort();
        return 0;
    }
    if (!checkModuleBytes(bytes, reason)) return 0;
    std::string text;
    if (!patchToJson(bytes, [](ModuleTypeId) { return true; }, text, reason)) std::abort();
    std::vector<uint8_t> again;
    if (!patchFromJson(text, again, reason) || again != bytes) std::abort();
    return 0;
}
