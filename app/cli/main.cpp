// quillmer-cli: Quillmer without the windows, for users, scripts and tests.
// main gathers the subcommands and runs the one chosen; each lives in a file of its own.

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

#include "app/cli/Commands.h"

int main(int argc, char** argv) {
    CLI::App app{"Quillmer, the modular MIDI step sequencer, without the windows", "quillmer-cli"};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("quillmer-cli ") + QUILLMER_VERSION);
    // One line for a mistake on the command line; --help still prints the whole help.
    app.failure_message(
        [](const CLI::App*, const CLI::Error& e) { return std::string("quillmer-cli: ") + e.what() + "\n"; });

    int exitStatus = 0;
    quillmer::addInfoCommand(app, exitStatus);
    quillmer::addRunCommand(app, exitStatus);
    quillmer::addConvertCommand(app, exitStatus);
    quillmer::addPortsCommand(app, exitStatus);
    quillmer::addTypesCommand(app, exitStatus);
    quillmer::addEvalCommand(app, exitStatus);
    quillmer::addUfnCommand(app, exitStatus);
    quillmer::addMfxCommand(app, exitStatus);
    quillmer::addBioCommand(app, exitStatus);
    quillmer::addTuningCommand(app, exitStatus);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const std::exception& e) {
        std::cerr << "quillmer-cli: " << e.what() << '\n';
        return 1;
    }
    return exitStatus;
}
