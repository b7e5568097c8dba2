#include <CLI/CLI.hpp>

#include <iostream>

#include "app/cli/Commands.h"
#include "platform/DesktopDevices.h"

namespace quillmer {

void addPortsCommand(CLI::App& app, int& exitStatus) {
    CLI::App* ports = app.add_subcommand("ports", "List the MIDI devices that can be chosen");
    ports->callback([&exitStatus] {
        writeMidiDeviceReport(reportMidiDevices(), std::cout);
        exitStatus = std::cout.good() ? 0 : 1;
    });
}

}  // namespace quillmer
