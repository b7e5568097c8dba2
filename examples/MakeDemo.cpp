// Writes the demo patch: make_demo OUT.qmp

#include <iostream>

#include "engine/VirtualTimerService.h"
#include "examples/DemoPatch.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_demo OUT.qmp\n";
        return 2;
    }
    quillmer::VirtualTimerService timers;
    quillmer::Session session(timers, quillmer::builtTypes());
    auto held = session.engine.lock();
    std::string error;
    if (!quillmer::writeDemoPatch(session, argv[1], error)) {
        std::cerr << "make_demo: " << error << '\n';
        return 1;
    }
    return 0;
}
