// `info` and `convert`: a patch file read, shown or written again.

#include <CLI/CLI.hpp>

#include <iostream>

#include "app/cli/Commands.h"
#include "app/cli/PatchInfo.h"
#include "app/cli/PatchLoading.h"
#include "engine/VirtualTimerService.h"
#include "shell/PatchJson.h"
#include "shell/Session.h"

namespace quillmer {

void addInfoCommand(CLI::App& app, int& exitStatus) {
    auto* command = app.add_subcommand("info", "Show what a patch file holds: header, snapshots, Composer list, modules");
    auto file = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    command->add_option("FILE", *file, "The patch (.qmp)")->required();
    command->add_flag("--json", *json, "Write JSON instead of text");
    command->callback([&exitStatus, file, json] {
        VirtualTimerService timers;
        Session session(timers, patchRegistry());
        if (!loadPatch(session, *file)) {
            exitStatus = 1;
            return;
        }
        auto held = session.engine.lock();
        writePatchInfo(session, std::cout, *json);
    });
}

void addConvertCommand(CLI::App& app, int& exitStatus) {
    auto* command = app.add_subcommand("convert", "Load a patch and save it again; a .qmj file is the text form");
    auto in = std::make_shared<std::string>();
    auto out = std::make_shared<std::string>();
    command->add_option("IN", *in, "The patch to read")->required();
    command->add_option("OUT", *out, "The file to write")->required();
    command->callback([&exitStatus, in, out] {
        if (isPatchJsonPath(*in) || isPatchJsonPath(*out)) {
            exitStatus = convertPatchText(*in, *out);
            return;
        }
        VirtualTimerService timers;
        Session session(timers, patchRegistry());
        if (!loadPatch(session, *in)) {
            exitStatus = 1;
            return;
        }
        auto held = session.engine.lock();
        std::string error;
        if (!session.SaveModuleFile(*out, error)) {
            std::cerr << "quillmer-cli: " << error << '\n';
            exitStatus = 1;
        }
    });
}

}  // namespace quillmer
