#include "shell/Session.h"

#include <cstdlib>

#include "shell/AuthorName.h"
#include "shell/BioFile.h"
#include "shell/DataFiles.h"
#include "tables/TableFiles.h"

#include <filesystem>

namespace quillmer {

namespace {
constexpr int32_t kChainDelayMs = 100;
constexpr const char* kProduct = "Quillmer";

std::string baseName(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}
}  // namespace

Session::Session(TimerService& timers, const ModuleRegistry& registry)
    : engine(timers, registry, this), snapshots(engine), formulas(&formulaStores, userDataDir()) {
    formulaStores.attach(formulas);
    const char* user = std::getenv("USER");
    userName = user && *user ? user : "Anonymous";
    snapshots.markModified = [this] { SetModified(true); };
    snapshots.wiped = [this] { resetComposerList(); };
    engine.events.patchChanged = [this](bool changed) {
        if (changed) SetModified(true);
    };
    chainTimer_ = timers.addTimer("chain load", [this] { onChainTimer(); });
    resetComposerList();
    engine.setToneTables(tones.rows.data());
    engine.setGeneralTables(tables.bank.data());
    engine.toneTableName = [this](int table) { return tones.names.name(table); };
    engine.generalTableName = [this](int table) { return tables.names.name(table); };
    LoadAuxFiles({});
    voiceNames.loadFromDataFolders();
    engine.ports.bankName = [this](int bank) { return voiceNames.bankName(bank); };
    engine.ports.voiceName = [this](int bank, int program) { return voiceNames.voiceName(bank, program); };
}

Session::~Session() {
    engine.timers().setInterval(chainTimer_, 0);
}

void Session::SetModified(bool changed) {
    ChangedMark = changed;
    if (SaveWarningArmed) ModifiedMark = changed;
}

void Session::toggleSaveWarning() {
    SaveWarningArmed = !SaveWarningArmed;
    ModifiedMark = SaveWarningArmed && ChangedMark;
}

void Session::resetComposerList() {
    kept.composerSnapshots.fill(0);
    kept.composerMeasures.fill(7);
    kept.composerCount = 0;
    kept.composerBegin = 0;
    kept.composerEnd = 0;
    composer.resetPosition();
}

void Session::RemoveAllModules() {
    engine.CloseAllModules();
    snapshots.WipePatchList();
}

void Session::newPatch() {
    composer.off();
    engine.StopTimers();
    RemoveAllModules();
    engine.StartTimers();
    CurrentFileName.clear();
    author.clear();
    modifier.clear();
    engine.options.lockModules = false;
    LoadAuxFiles({});
    history.clear();
    snapshots.liveEdited = false;
    SetModified(false);
}

bool Session::OpenFile(const std::string& path, std::string& error) {
    std::vector<uint8_t> bytes;
    loadProblem.clear();
    const auto refuse = [&](const char* message) {
        error = message + path;
        if (!engine.timersRunning()) engine.StartTimers();
        return false;
    };
    if (!readModuleFileBytes(path, bytes, loadProblem)) return refuse("Unable to Load: ");
    if (!checkModuleBytes(bytes, loadProblem)) {
        const FileHeader header = FileHeader::read(bytes.data());
        const bool foreign = header.magic != kFileMagic || header.version > kFormatVersion;
        return refuse(foreign ? "Incompatible File: " : "Unable to Load: ");
    }
    // A record can still refuse its fields: then the patch that was open comes back.
    const PatchState was = capturePatch(*this);
    const bool wasChanged = ChangedMark;
    composer.offTempIf();
    if (engine.timersRunning()) engine.StopTimers();
    RemoveAllModules();
    bool loaded = false;
    try {
        loaded = LoadModuleBytes(bytes, path, error);
    } catch (const std::exception& e) {
        error = "Unable to Load: " + path;
        loadProblem = e.what();
    }
    if (loaded) {
        CurrentFileName = path;
        LoadAuxFiles(path);
        history.clear();
        snapshots.liveEdited = false;
        SetModified(false);
    } else {
        const std::string problem = loadProblem;
        std::string ignored;
        restorePatch(*this, was, ignored);
        loadProblem = problem;
        SetModified(wasChanged);
    }
    engine.StartTimers();
    composer.onIf();
    return loaded;
}

void Session::LoadAuxFiles(const std::string& patchPath) {
    userFunctionProblem.clear();  // a problem of an earlier load has been told
    // A patch without a .tbl of its own starts from the default tables.
    const auto loadDefaultTables = [this] {
        tables = GeneralTables{};
        std::string ignored;  // a missing or broken default leaves the bank empty
        LoadTableFile(findDataFile("default.tbl"), tables, ignored);
    };
    const auto loadDefault = [this] {
        tones = ToneTables{};
        LoadToneTables(findDataFile("default.pbt"), tones);
        ownToneTables_ = false;
    };
    // Table modules take the new names and contents at the next tick.
    engine.markGeneralTablesChanged();
    engine.requestTableLoadStrobe(Engine::kAllTablesStrobe);
    if (patchPath.empty()) {
        loadDefaultTables();
        loadDefault();
        loadDefaultBioFileOnce();
        LoadDefaultUserFunctions();
        return;
    }
    // The side files beside a patch, in the order .tbl, .pbt, .bst, .ufn. A side file whose
    // name can't exist (longer than a name may be) is simply not there.
    const auto own = [&](const char* extension) {
        const std::string path = std::filesystem::path(patchPath).replace_extension(extension).string();
        std::error_code noSuchName;
        return std::filesystem::is_regular_file(path, noSuchName) ? path : std::string();
    };
    GeneralTables read;
    std::string error;
    if (const std::string tbl = own(".tbl"); tbl.empty()) {
        loadDefaultTables();
    } else if (LoadTableFile(tbl, read, error)) {
        tables = read;
    } else {
        // A broken one is told in loadProblem and counts as none.
        loadProblem = error;
        loadDefaultTables();
    }
    if (const std::string pbt = own(".pbt"); !pbt.empty()) {
        LoadToneTables(pbt, tones);
        ownToneTables_ = true;
    } else if (ownToneTables_) {
        loadDefault();
    }
    loadBioSideFile(patchPath);
    if (const std::string ownFunctions = own(".ufn"); !ownFunctions.empty()) {
        if (LoadUserFunctions(ownFunctions, error)) ownUserFunctions_ = true;
    } else if (ownUserFunctions_) {
        LoadDefaultUserFunctions();
    }
}

bool Session::LoadUserFunctions(const std::string& path, std::string& error) {
    UserFunctions lists;
    if (!readUserFunctionFile(path, lists, error)) {
        userFunctionProblem = error;
        return false;
    }
    applyUserFunctions(std::move(lists));
    userFunctionFile = path;
    userFunctionProblem.clear();
    return true;
}

void Session::LoadDefaultUserFunctions() {
    ownUserFunctions_ = false;
    const std::string path = findDataFile("default.ufn");
    std::string error;
    if (!path.empty() && LoadUserFunctions(path, error)) return;
    applyUserFunctions(UserFunctions{});
    userFunctionFile.clear();
}

void Session::SeedUserFunctions(uint32_t seed) {
    if (seed == formulas.seed() && formulas.started()) return;
    formulas.setSeed(seed);
    applyUserFunctions(userFunctions);
}

void Session::applyUserFunctions(UserFunctions lists) {
    userFunctions = std::move(lists);
    userFunctionReport = compileUserFunctions(formulas, userFunctions);
}

std::string Session::caption() const {
    const std::string changed = ChangedMark ? "*" : "";
    if (CurrentFileName.empty()) return changed + kProduct;
    return changed + baseName(CurrentFileName) + BuildAuthorCaption(author, modifier, fileVersion) + "  " + kProduct;
}

void Session::requestChainLoad(const std::string& file) {
    ChainFile = file == "Exit Quillmer" ? std::string() : file;
    engine.timers().setInterval(chainTimer_, kChainDelayMs);
}

// A timer callback: nothing may escape it. Whatever goes wrong with the file becomes the
// load's own message naming it.
void Session::onChainTimer() {
    auto held = engine.lock();
    engine.timers().setInterval(chainTimer_, 0);
    if (ChainFile.empty()) {
        if (exitRequested) exitRequested();
        return;
    }
    std::string error;
    bool loaded = false;
    try {
        loaded = OpenFile(ChainFile, error);
    } catch (const std::exception& e) {
        error = "Unable to Load: " + ChainFile;
        loadProblem = e.what();
        RemoveAllModules();
        engine.names.Init();
        engine.StartTimers();
    }
    if (!loaded && chainFailed) chainFailed(error);
}

}  // namespace quillmer
