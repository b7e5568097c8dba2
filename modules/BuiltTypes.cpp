#include "modules/BuiltTypes.h"

#include "modules/midi/ChannelOutputs.h"
#include "modules/midi/NoteOutputs.h"
#include "modules/midi/NoteValues.h"
#include "modules/panels/Chain.h"
#include "modules/processors/Arithmetic.h"
#include "modules/processors/Events.h"
#include "modules/sequencers/Clocks.h"
#include "modules/sequencers/Steps.h"

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
    registry.add<Clock>("Clock");
    registry.add<Free>("Free");
    registry.add<Sync>("Sync");
    registry.add<Counter>("Counter");
    registry.add<Pulse>("Pulse");
    registry.add<GHold>("GHold");
    registry.add<Kicker>("Kicker");
    registry.add<Tempox>("Tempox");
    registry.add<Stepper>("Stepper");
    registry.add<Step2>("Step2");
    registry.add<Step4>("Step4");
    registry.add<Step8>("Step8");
    registry.add<Step12>("Step12");
    registry.add<Step16>("Step16");
    registry.add<Step24>("Step24");
    registry.add<Step32>("Step32");
    registry.add<Notes>("Notes");
    registry.add<XNote>("XNote");
    registry.add<Arpeg>("Arpeg");
    registry.add<Pitch>("Pitch");
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
