// Fuzz target: the .mfx reader, and a MIDIFile module playing what it reads. Any bytes
// either give a reason or a list that writes back as the bytes it came from (values cut to
// seven bits) and plays for a while without harm.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "modules/midi/MidiFilePlayers.h"

using namespace quillmer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    MfxList list;
    std::string reason;
    if (!parseMfx(data, size, list, reason)) {
        if (reason.empty()) std::abort();
        return 0;
    }
    const std::vector<uint8_t> written = mfxBytes(list);
    if (written.size() > size) std::abort();
    for (size_t i = 0; i < written.size(); ++i) {
        const bool value = i >= MfxList::kHeaderBytes && i < MfxList::kHeaderBytes + list.values.size();
        const bool name = i >= MfxList::kHeaderBytes - MfxList::kNameBytes && i < MfxList::kHeaderBytes;
        if (!name && written[i] != (value ? (data[i] & 127) : data[i])) std::abort();
    }

    // One engine for every input: making one is most of the work of a run.
    static VirtualTimerService timers;
    static Engine engine(timers, builtTypes());
    auto& file = static_cast<MIDIFile&>(engine.New(*typeIdByName("MIDIFile")));
    auto& slave = static_cast<MIDIFileSlave&>(engine.New(*typeIdByName("MIDIFileSlave")));
    file.setList(list);
    file.setLoop(size % 2 == 1);
    slave.setList(list);
    slave.setMaster(file.Index);
    for (int tick = 0; tick < 64; ++tick) {
        file.UpdateModule(engine);
        slave.UpdateModule(engine);
        if (tick == 32) file.seek(static_cast<int>(size % 101));
    }
    const int odd = file.EndFlag > 1 ? 1 : 0;
    engine.Delete(slave);
    engine.Delete(file);
    return odd;
}
