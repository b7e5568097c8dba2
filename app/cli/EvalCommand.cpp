// `quillmer-cli eval FORMULA [--in V,...] [--clock V]`: runs one formula with the whole
// function library, as the function editor's test does, and prints its value (or its text)
// and what it left in the mailbox. An error goes to stderr with a non-zero status.

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/cli/Commands.h"
#include "expression/FormulaRuntime.h"
#include "shell/DataFiles.h"

namespace quillmer {

namespace {

struct EvalOptions {
    std::string formula;
    std::vector<int> inputs;
    int clock = 0;
};

void printMailbox(const Mailbox& m, std::ostream& out) {
    if (m.flags & kFlagOut) out << "OUT " << int{m.outValue} << '\n';
    if (m.flags & kFlagGoto) out << "GOTO " << int{m.gotoTarget} << '\n';
    if (m.flags & kFlagLed) out << "LED " << m.ledBits << '\n';
    if (m.flags & kFlagLedNumber) out << "nLED " << int{m.ledNumber} << " -" << int{m.ledNumberNegative} << '\n';
    if (m.flags & kFlagLabel) out << "Label " << m.text->label << '\n';
}

int runEval(const EvalOptions& o) {
    FormulaRuntime runtime(nullptr, userDataDir());
    runtime.start();
    runtime.EvalModuleId = kEditorModuleId;
    runtime.EvalInC = static_cast<uint8_t>(o.clock & 127);
    for (size_t i = 0; i < o.inputs.size() && i < 16; ++i) runtime.EvalIn[i + 1] = static_cast<uint8_t>(o.inputs[i] & 127);
    const expr::Calc::Result r = runtime.calc().eval(o.formula);
    if (r.error != expr::kOk) {
        std::cerr << "quillmer-cli: eval: error " << r.error << ": " << r.message << '\n';
        return 1;
    }
    std::cout << (r.isText ? r.text : expr::formatNumber(r.value)) << '\n';
    printMailbox(runtime.mailbox(kEditorModuleId), std::cout);
    return std::cout.good() ? 0 : 1;
}

}  // namespace

void addEvalCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<EvalOptions>();
    CLI::App* eval = app.add_subcommand("eval", "Evaluate a formula and print its value or error");
    eval->add_option("formula", options->formula, "The formula, e.g. \"out(in1+in2*3)\"")->required();
    eval->add_option("--in", options->inputs, "In1..In16, comma separated")->delimiter(',')->check(CLI::Range(0, 127));
    eval->add_option("--clock", options->clock, "InC, the clock value")->check(CLI::Range(0, 127));
    eval->callback([&exitStatus, options] { exitStatus = runEval(*options); });
}

}  // namespace quillmer
