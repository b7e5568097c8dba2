#pragma once
// One open patch and everything that goes with it: the engine, the snapshots, the file it
// came from and whether it changed since. The desktop program and the command line both
// work through a Session. Thread rule: members need the engine lock, except the chain
// timer's entry point, which takes it.

#include <functional>
#include <string>
#include <vector>

#include "engine/Engine.h"
#include "engine/EngineSeams.h"
#include "expression/EngineFormulaStores.h"
#include "expression/FormulaRuntime.h"
#include "expression/UserFunctionFile.h"
#include "shell/Composer.h"
#include "shell/EditCommands.h"
#include "shell/FileHeader.h"
#include "shell/Snapshots.h"
#include "shell/VoiceNames.h"
#include "tables/GeneralTables.h"
#include "tables/ToneTables.h"

namespace quillmer {

// The program's own version, written into every saved file.
struct ProgramVersion {
    static constexpr int16_t major = 0;
    static constexpr int16_t minor = 1;
    static constexpr int16_t revision = 0;
};

// Reads a module file (.qmp): only a regular file, its header and no more of the rest than
// the header's counts can need (every counted record at its longest). False with `reason`.
// A path ending in ".qmj" is read as the text form and converted.
bool readModuleFileBytes(const std::string& path, std::vector<uint8_t>& bytes, std::string& reason);
// The text form (.qmj) of a patch as the bytes of its module file; false with `reason`.
bool readPatchJsonFile(const std::string& path, std::vector<uint8_t>& bytes, std::string& reason);
// Writes a whole file atomically: the old one stays whole when anything fails.
bool writeWholeFile(const std::string& path, const std::vector<uint8_t>& bytes, std::string& error);
// Passes over every record the header counts without loading any: false with `reason` (where
// the file ends early, which record of which type does not parse).
bool checkModuleBytes(const std::vector<uint8_t>& bytes, std::string& reason);

class Session : public EngineSeams {
public:
    Session(TimerService& timers, const ModuleRegistry& registry);
    ~Session() override;

    Engine engine;
    Snapshots snapshots;
    ToneTables tones;  // the tuning tables the note modules play through
    GeneralTables tables;  // the general tables that table modules and formulas read
    VoiceNames voiceNames;  // bank and voice names of the module captions
    // What the file header keeps that has no other home yet: the Composer list, the
    // floating sliders and the window size. Written back as it was read.
    FileHeader kept;
    Composer composer{engine, snapshots, kept};  // plays the list in `kept`

    // The formulas of the formula modules: the runtime, its doors into the engine, and the
    // user function lists it was compiled from.
    EngineFormulaStores formulaStores{engine};
    FormulaRuntime formulas;
    UserFunctions userFunctions;
    CompileReport userFunctionReport;
    std::string userFunctionFile;     // where the lists came from; empty when none was read
    std::string userFunctionProblem;  // why the last .ufn didn't load; empty when it did
    // Reads a .ufn and recompiles the runtime, while a patch runs too: modules run the new
    // formulas from their next update. False with `error`; then nothing changes.
    bool LoadUserFunctions(const std::string& path, std::string& error);
    // "default.ufn" from the data folders; without one the runtime starts with the default
    // formula in every entry.
    void LoadDefaultUserFunctions();
    // The seed of the formulas' random tables ("UFSeed"): the lists compile again with it.
    void SeedUserFunctions(uint32_t seed);
    // Compiles lists the editor holds.
    void applyUserFunctions(UserFunctions lists);
    bool usesOwnUserFunctions() const { return ownUserFunctions_; }

    std::string CurrentFileName;  // empty for a new patch
    std::string author;           // of the open file, plain
    std::string modifier;
    int fileVersion = 0;          // major * 100 + minor * 10 + revision of the open file
    std::string userName;         // who saves

    // --- the modified mark and the save light ---
    bool ModifiedMark = false;
    bool ChangedMark = false;
    bool SaveWarningArmed = true;
    // 1 clean, 2 changed and armed (yellow), 3 changed and not armed.
    int saveLight() const { return !ChangedMark ? 1 : SaveWarningArmed ? 2 : 3; }
    void SetModified(bool changed);
    void toggleSaveWarning();

    // --- files (the caller stops the timers first and starts them after) ---
    // False with "Unable to Load: FILE" or "Incompatible File: FILE"; the patch is then empty
    // and `loadProblem` says what was wrong. Only a regular file is read, and no more of it
    // than its header's counts can need.
    bool LoadModuleFile(const std::string& path, std::string& error);
    // The same from bytes already read; `path` only names them in the message.
    bool LoadModuleBytes(const std::vector<uint8_t>& bytes, const std::string& path, std::string& error);
    std::string loadProblem;  // what the last failed load found, as "it is a folder, not a file"
    // Atomic: the file that was there stays whole when anything fails. Only a regular file is
    // replaced (through its symbolic links, keeping its mode; a read-only one is refused),
    // and the patch counts as saved only when the file is in place. A ".qmj" path gets the
    // text form.
    bool SaveModuleFile(const std::string& path, std::string& error);
    // The bytes a save writes (without an old tail), or false with `error` naming `path`.
    bool ModuleFileBytes(std::vector<uint8_t>& bytes, const std::string& path, std::string& error);
    // The bytes of the patch as it stands, with `header` giving the names and version words.
    bool encodePatch(FileHeader header, std::vector<uint8_t>& bytes, const std::string& path, std::string& error);
    // Everything that belongs to a patch goes; tempo and options stay.
    void RemoveAllModules();
    // File New, OpenFile: with the timers stopped and started around them.
    void newPatch();
    // The whole file is read and checked before the open patch is touched: on failure the
    // patch, its name and its saved state stay as they were, and `loadProblem` says why.
    bool OpenFile(const std::string& path, std::string& error);
    // Side files with the patch's base name load with it ("song.pbt" beside "song.qmp");
    // where the last patch had one and this one hasn't, the default comes back. An empty
    // path loads every default.
    void LoadAuxFiles(const std::string& patchPath);
    bool usesOwnToneTables() const { return ownToneTables_; }

    // Title bar text: "*" while changed, the file name, the author caption, two blanks, the
    // product.
    std::string caption() const;

    // Undo and redo of the patch edits.
    EditHistory history{*this};

    // --- Chain ---
    std::string ChainFile;
    std::function<void()> exitRequested;           // a chain with no next file
    std::function<void(const std::string&)> chainFailed;

    // EngineSeams
    void SetNewPatch() override { snapshots.SetNewPatch(); }
    bool composerRecordingElapsed() override { return composer.recordingElapsed(); }
    bool recordingTimeUp() const override { return composer.recordingTimeUp(); }
    void advanceComposerBar() override { composer.measureHook(); }
    void composerTransport(int code) override { composer.remoteButton(code); }
    void requestChainLoad(const std::string& file) override;
    FormulaRuntime* formulaRuntime() override { return formulas.started() ? &formulas : nullptr; }

private:
    void onChainTimer();
    void resetComposerList();
    TimerId chainTimer_ = -1;
    bool ownToneTables_ = false;
    bool ownUserFunctions_ = false;
    size_t lastSaveBytes_ = 0;  // the length of the last save, to make room at once
};

}  // namespace quillmer
