// Fuzz target: the user function file reader (.ufn) and compiling what it read. A file that
// reads writes back to text that reads to the same lists, and compiles without a crash.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionFile.h"

using namespace quillmer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    UserFunctions lists;
    std::string error;
    if (!parseUserFunctions(text, "fuzz.ufn", lists, error)) {
        if (error.find("fuzz.ufn: line ") == std::string::npos) std::abort();
        return 0;
    }
    UserFunctions again;
    if (!parseUserFunctions(formatUserFunctions(lists), "again.ufn", again, error)) std::abort();
    if (again.variables.size() != lists.variables.size() || again.functions.size() != lists.functions.size()) std::abort();
    static FormulaRuntime runtime;
    compileUserFunctions(runtime, lists);
    for (int n = 0; n < kFormulaCount; ++n) runtime.evaluate(1, n);
    return 0;
}
