#include "gui/OptionFlags.h"

#include "engine/Engine.h"

namespace quillmer::gui {

namespace {
constexpr int kEngineSysBits = sysflag::TriggersOff | sysflag::AutoAlign | sysflag::HighPriority | sysflag::ResetModules;
constexpr int kPortBits = portoption::ActiveSensing | portoption::AllNotesOff | portoption::AllKeysOff |
                          portoption::ResetControls;
// The NRPN triggers before the general controller one: the engine keeps them exclusive.
constexpr int kTriggerOrder[] = {trigger::NoteOn, trigger::NoteOff, trigger::PitchBend, trigger::Poly,
                                 trigger::NrpnLsb, trigger::NrpnMsb, trigger::Control};

int set(int flags, int bit, bool on) { return on ? flags | bit : flags & ~bit; }
}  // namespace

void applySysFlags(int flags, Engine& engine) {
    engine.options.triggersOff = (flags & sysflag::TriggersOff) != 0;
    engine.options.autoAlign = (flags & sysflag::AutoAlign) != 0;
    engine.options.highPriority = (flags & sysflag::HighPriority) != 0;
    engine.options.resetModules = (flags & sysflag::ResetModules) != 0;
}

void applyMidiFlags(int flags, Engine& engine) {
    for (int bit : kTriggerOrder) engine.ports.setTrigger(bit, (flags & bit) != 0);
    engine.options.bankMsb = (flags & midiflag::BankMsb) != 0;
    engine.setExtendedTempo((flags & midiflag::ExtendedTempo) != 0);
    for (int port = 0; port < kPortCount; ++port)
        engine.ports.PortOptions[static_cast<size_t>(port)] = (flags >> midiflag::portOptionsShift(port)) & kPortBits;
}

int sysFlagsOf(const Engine& engine, int kept) {
    int flags = kept & ~kEngineSysBits;
    flags = set(flags, sysflag::TriggersOff, engine.options.triggersOff);
    flags = set(flags, sysflag::AutoAlign, engine.options.autoAlign);
    flags = set(flags, sysflag::HighPriority, engine.options.highPriority);
    flags = set(flags, sysflag::ResetModules, engine.options.resetModules);
    return flags;
}

int midiFlagsOf(const Engine& engine, int kept) {
    int flags = kept & (midiflag::Poly);  // the only MIDI bit the engine doesn't own
    flags |= engine.ports.MidiInTriggerMask() & midiflag::TriggerBits;
    flags = set(flags, midiflag::BankMsb, engine.options.bankMsb);
    flags = set(flags, midiflag::ExtendedTempo, engine.options.extendedTempo);
    for (int port = 0; port < kPortCount; ++port)
        flags |= (engine.ports.PortOptions[static_cast<size_t>(port)] & kPortBits) << midiflag::portOptionsShift(port);
    return flags;
}

}  // namespace quillmer::gui
