// Peak resident memory (VmHWM) of a 10,000-module patch with one snapshot in use: made in
// place and played for a while, or, with --load FILE, read from a file (--save FILE
// writes one first). Prints the peak with and without what an empty session needs.

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

using namespace quillmer;

namespace {

long peakKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}

void buildPatch(Session& session, int count) {
    Engine& e = session.engine;
    const char* kinds[] = {"Clock", "Stepper", "Step8", "MIDIKey", "Counter", "Pulse", "Free", "Step16", "MIDITone", "Div"};
    std::vector<Module*> placed;
    for (int i = 0; i < count; ++i) placed.push_back(&e.placeForBulk(*typeIdByName(kinds[i % 10])));
    e.endBulk();
    for (size_t i = 1; i < placed.size(); ++i)
        for (int k = 0; k < placed[i]->inputCount(); ++k)
            e.connectInput(*placed[i], k, static_cast<uint16_t>(e.names.sortedPosition(placed[i - 1]->Name)));
    session.snapshots.StoreNewPatch();
}

}  // namespace

int main(int argc, char** argv) {
    const int count = 10000;
    std::string load, save;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        if (flag == "--load") load = argv[i + 1];
        if (flag == "--save") save = argv[i + 1];
    }
    VirtualTimerService timers;
    Session session(timers, builtTypes());
    const long empty = peakKilobytes();
    std::string error;
    if (!load.empty()) {
        if (!session.LoadModuleFile(load, error)) {
            std::cerr << error << '\n';
            return 1;
        }
    } else {
        buildPatch(session, count);
        if (!save.empty() && !session.SaveModuleFile(save, error)) {
            std::cerr << error << '\n';
            return 1;
        }
    }
    const long beforePlaying = peakKilobytes();
    {
        auto held = session.engine.lock();
        session.engine.setRun(true);
        for (int t = 0; t < 960; ++t) session.engine.tick();
    }
    const long peak = peakKilobytes();
    std::cout << (load.empty() ? "made in place" : "loaded from " + load) << ": " << count << " modules\n"
              << "VmHWM " << peak << " KB in all, " << empty << " KB before the patch, " << beforePlaying
              << " KB before playing\n"
              << "per module: " << static_cast<double>(peak) * 1024.0 / count << " bytes in all, "
              << static_cast<double>(peak - empty) * 1024.0 / count << " bytes for the patch\n";
    return 0;
}
