#pragma once
// The two bit sets of option boxes the settings store keeps, "SysFlags" and "MIDIFlags",
// and how their bits meet the engine. Bits with no home in the engine (warnings, function
// keys and the like) pass through untouched.

#include <cstdint>

namespace quillmer {
class Engine;
}

namespace quillmer::gui {

namespace sysflag {
constexpr int TriggersOff = 1;    // chkTrigs
constexpr int NoFontMsg = 2;      // chkNoFontMsg
constexpr int NoLastMod = 4;      // chkNoLastMod
constexpr int AutoAlign = 8;      // chkAutoAlign
constexpr int FnKeyPages = 16;    // chkFnKeyPages
constexpr int HighPriority = 32;  // chkHighPriority
constexpr int ResetModules = 64;  // chkResetModules
constexpr int PlayResets = 128;   // chkPlayResets: Run resets the modules
}  // namespace sysflag

namespace midiflag {
// Bits 1..64 are the input triggers, the same bits as the engine's trigger mask.
constexpr int TriggerBits = 127;
constexpr int BankMsb = 128;        // chkBankMSB
constexpr int Poly = 256;           // chkPoly
constexpr int ExtendedTempo = 512;  // chkXpTempo
// Each output port's all-off options (PortOptions, bits below 32) from this bit up.
constexpr int portOptionsShift(int port) { return 10 + 5 * port; }
}  // namespace midiflag

// Engine lock held for all four.
void applySysFlags(int flags, Engine& engine);
void applyMidiFlags(int flags, Engine& engine);
// `kept` with the bits the engine owns replaced by the engine's state.
int sysFlagsOf(const Engine& engine, int kept);
int midiFlagsOf(const Engine& engine, int kept);

}  // namespace quillmer::gui
