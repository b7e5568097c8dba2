#pragma once
// The subcommands of quillmer-cli. Each adds itself to the command line; when it is chosen,
// its callback runs and leaves the program's exit status in `exitStatus`. A failure is one
// line on stderr and a non-zero status.

#include <string>

namespace CLI {
class App;
}

namespace quillmer {

// `ports`: the MIDI devices that can be chosen, and which MIDI systems work now.
void addPortsCommand(CLI::App& app, int& exitStatus);
// `info FILE [--json]`: header fields, snapshots, Composer list and every module.
void addInfoCommand(CLI::App& app, int& exitStatus);
// `run FILE (--ticks N | --bars N | --song) ...`: play a patch, offline unless --realtime.
void addRunCommand(CLI::App& app, int& exitStatus);
// `convert IN OUT`: load and save again.
void addConvertCommand(CLI::App& app, int& exitStatus);
// A patch to or from its text form (.qmj), byte for byte: the exit status.
int convertPatchText(const std::string& in, const std::string& out);

// `mfx FILE.mid --track N --class CLASS [--channel C] OUT.mfx`: a MIDI file's track and
// message class translated to a .mfx list.
void addMfxCommand(CLI::App& app, int& exitStatus);

// `types [--json]`: every catalogue type, its id, prefix, menu group, caption and inputs,
// and whether it runs yet.
void addTypesCommand(CLI::App& app, int& exitStatus);
// `tuning import FILE.scl [--kbm FILE.kbm] --into PATCH_OR_PBT --table N` and
// `tuning export PATCH_OR_PBT OUT.scl --table N`: Scala scales in and out of tuning tables.
void addTuningCommand(CLI::App& app, int& exitStatus);
// `eval FORMULA [--in V,...] [--clock V]`: a formula's value, or its error.
void addEvalCommand(CLI::App& app, int& exitStatus);
// `bio import IN OUT.bst`: the coding sequences of a FASTA or GenBank file as a .bst file.
void addBioCommand(CLI::App& app, int& exitStatus);
// `ufn FILE [--save OUT]`: checks a user function file.
void addUfnCommand(CLI::App& app, int& exitStatus);

}  // namespace quillmer
