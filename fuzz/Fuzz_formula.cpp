// Fuzz target: the formula parser and evaluator with the whole function library. The text is
// split at line breaks into formulas 1..4 (so that Ex, Loop and the rest reach each other);
// each is compiled, run, and compiled once more as the body of a function. Nothing may crash
// or hang, every error has its words, and a failed compile leaves the entry as it was.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "expression/FormulaRuntime.h"

using namespace quillmer;

namespace {

FormulaRuntime& runtime() {
    static FormulaRuntime* r = [] {
        auto* made = new FormulaRuntime();  // no data folder: no files
        made->start();
        made->calc().setStepBudget(20000);
        return made;
    }();
    return *r;
}

void checkError(expr::Calc& calc) {
    const int e = calc.error();
    if (e < expr::kOk || e > expr::kAcsch) std::abort();
    if (e != expr::kOk && calc.errorMessage().empty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 4096) return 0;
    FormulaRuntime& r = runtime();
    expr::Calc& calc = r.calc();
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string_view parts[4];
    size_t start = 0;
    for (int i = 0; i < 4; ++i) {
        const size_t end = std::min(text.find('\n', start), text.size());
        parts[i] = text.substr(std::min(start, text.size()), end - std::min(start, text.size()));
        start = end + 1;
    }
    for (int i = 0; i < 4; ++i) {
        const expr::Handle before = r.formula(i + 1).handle;
        const int error = r.setFormula(i + 1, parts[i]);
        checkError(calc);
        if (error != expr::kOk && r.formula(i + 1).handle != before) std::abort();
    }
    r.EvalIn = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const double v = r.evaluate(100, 1);
    checkError(calc);
    if (calc.error() != expr::kOk && v != 0) std::abort();
    const expr::Calc::Result whole = calc.eval(text);
    checkError(calc);
    if (calc.defineFunction("fz(a, b$='q')=" + std::string(parts[0]))) {
        calc.eval("fz(1) + fz(2, 'x')");
        checkError(calc);
    }
    for (int i = 1; i <= 4; ++i) r.clearFlags(100);
    return whole.isText && whole.text.size() == SIZE_MAX ? 1 : 0;
}
