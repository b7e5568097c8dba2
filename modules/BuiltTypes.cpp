#include "modules/BuiltTypes.h"

#include "modules/midi/ChannelOutputs.h"
#include "modules/midi/NoteOutputs.h"
#include "modules/panels/Chain.h"
#include "modules/processors/Arithmetic.h"

namespace quillmer {

void registerBuiltTypes(ModuleRegistry& registry) {
    registry.add<Div>("Div");
    registry.add<Chain>("Chain");
    registry.add<MIDITone>("MIDITone");
    registry.add<MIDIVoice>("MIDIVoice");
    registry.add<MIDIKey>("MIDIKey");
    registry.add<MIDIChan>("MIDIChan");
    registry.add<MIDIPoly>("MIDIPoly");
    registry.add<MIDIPBend>("MIDIPBend");
}

const ModuleRegistry& builtTypes() {
    static const ModuleRegistry registry = [] {
        ModuleRegistry r;
        registerBuiltTypes(r);
        return r;
    }();
    return registry;
}

}  // namespace quillmer
