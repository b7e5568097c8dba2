// `quillmer-cli ufn FILE [--save OUT.ufn]`: reads a user function file, compiles it as a
// patch's formulas would be, and lists every entry that doesn't compile. A file that can't be
// read goes to stderr naming the file and the line; either makes the status non-zero.

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <string>

#include "app/cli/Commands.h"
#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionFile.h"
#include "shell/DataFiles.h"

namespace quillmer {

namespace {

struct UfnOptions {
    std::string file;
    std::string save;
};

int runUfn(const UfnOptions& o) {
    UserFunctions lists;
    std::string error;
    if (!readUserFunctionFile(o.file, lists, error)) {
        std::cerr << "quillmer-cli: " << error << '\n';
        return 1;
    }
    FormulaRuntime runtime(nullptr, userDataDir());
    const CompileReport report = compileUserFunctions(runtime, lists);
    int formulas = 0;
    for (const std::string& e : lists.expressions) formulas += e.empty() ? 0 : 1;
    std::cout << lists.variables.size() << " variables, " << lists.functions.size() << " user functions, " << formulas
              << " formulas\n";
    for (size_t i = 0; i < report.variables.size(); ++i)
        if (!report.variables[i].empty()) std::cout << "variable " << lists.variables[i] << "    Error: " << report.variables[i] << '\n';
    for (size_t i = 0; i < report.functions.size(); ++i)
        if (!report.functions[i].empty()) std::cout << "function " << lists.functions[i] << "    Error: " << report.functions[i] << '\n';
    for (int n = 0; n < kFormulaCount; ++n) {
        const std::string& e = report.expressions[static_cast<size_t>(n)];
        if (!e.empty()) std::cout << n << ". " << lists.expressions[static_cast<size_t>(n)] << "    Error: " << e << '\n';
    }
    if (!o.save.empty() && !writeUserFunctionFile(o.save, lists, error)) {
        std::cerr << "quillmer-cli: " << error << '\n';
        return 1;
    }
    return report.errors == 0 && std::cout.good() ? 0 : 1;
}

}  // namespace

void addUfnCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<UfnOptions>();
    CLI::App* ufn = app.add_subcommand("ufn", "Check a user function file (.ufn): every entry that doesn't compile");
    ufn->add_option("file", options->file, "The .ufn file")->required();
    ufn->add_option("--save", options->save, "Write the lists again to this file");
    ufn->callback([&exitStatus, options] { exitStatus = runUfn(*options); });
}

}  // namespace quillmer
