// Fuzz target: the module file reader (.qmp). Any bytes either load or fail with the load's
// message and an empty patch; a patch that loads ticks, saves, and loads again from what it
// saved, to the same bytes.

#include <cstdint>
#include <cstdlib>
#include <cstdio>
#include <string>
#include <vector>

#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

using namespace quillmer;

namespace {

[[noreturn]] void finding(const char* what, const std::string& error) {
    std::fprintf(stderr, "fuzz_qmp: %s: %s\n", what, error.c_str());
    std::abort();
}

size_t moduleCount(Engine& e) {
    size_t n = 0;
    e.forEachModule([&](Module&) { ++n; });
    return n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static VirtualTimerService timers;
    static Session session(timers, builtTypes());
    static Session again(timers, builtTypes());

    const std::vector<uint8_t> bytes(data, data + size);
    std::string error;
    auto held = session.engine.lock();
    if (!session.LoadModuleBytes(bytes, "fuzz.qmp", error)) {
        if (error != "Unable to Load: fuzz.qmp" && error != "Incompatible File: fuzz.qmp") finding("load message", error);
        if (moduleCount(session.engine) != 0) finding("a failed load left modules", error);
        return 0;
    }
    std::vector<uint8_t> saved;
    if (!session.ModuleFileBytes(saved, "fuzz.qmp", error)) finding("a loaded patch doesn't save", error);
    for (int i = 0; i < 4; ++i) session.engine.tick();

    auto heldAgain = again.engine.lock();
    if (!again.LoadModuleBytes(saved, "saved.qmp", error)) finding("a saved patch doesn't load", error);
    std::vector<uint8_t> resaved;
    if (!again.ModuleFileBytes(resaved, "saved.qmp", error)) finding("a reloaded patch doesn't save", error);
    if (resaved != saved) finding("saving what was loaded from a save changes it", "");
    return 0;
}
