// `tuning import` and `tuning export`: a Scala scale into a tuning table of a .pbt file or of
// a patch's own .pbt beside it, and a tuning table back out as a scale.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "app/cli/Commands.h"
#include "shell/DataFiles.h"
#include "tables/Scala.h"
#include "tables/TableFiles.h"

namespace quillmer {

namespace {

struct TuningRequest {
    std::string scale;
    std::string keyMap;
    std::string target;  // a .pbt, or a patch whose .pbt beside it is meant
    std::string out;
    std::string name;
    int table = 0;
};

int fail(const std::string& message) {
    std::cerr << "quillmer-cli: " << message << '\n';
    return 1;
}

// The .pbt a target names: itself, or the patch's side file.
std::string toneFileOf(const std::string& target) {
    const std::filesystem::path path(target);
    return path.extension() == ".pbt" ? target : std::filesystem::path(path).replace_extension(".pbt").string();
}

// What the target plays now: its .pbt, or the shipped tables where it has none.
bool currentTones(const std::string& pbt, ToneTables& tones, std::string& error) {
    std::error_code ignored;
    if (std::filesystem::exists(pbt, ignored)) return LoadToneFile(pbt, tones, error);
    const std::string shipped = findDataFile("default.pbt");
    return shipped.empty() || LoadToneFile(shipped, tones, error);
}

int importScale(const TuningRequest& r) {
    std::string error;
    ScalaScale scale;
    if (!LoadScala(r.scale, scale, error)) return fail(error);
    KeyMap map;
    if (!r.keyMap.empty() && !LoadKeyMap(r.keyMap, map, error)) return fail(error);
    std::error_code ignored;
    const bool patch = std::filesystem::path(r.target).extension() != ".pbt";
    if (patch && !std::filesystem::is_regular_file(r.target, ignored)) return fail("Unable to Load: " + r.target + "\nNo such patch.");
    const std::string pbt = toneFileOf(r.target);
    ToneTables tones;
    if (!currentTones(pbt, tones, error)) return fail(error);
    std::string problem;
    std::vector<std::string> notes;
    if (!scaleToToneRow(scale, r.keyMap.empty() ? nullptr : &map, tones.rows.row(r.table), problem, notes))
        return fail(r.scale + ": " + problem);
    for (const std::string& note : notes) std::cerr << "quillmer-cli: " << r.keyMap << ": " << note << '\n';
    const std::string name = !r.name.empty()              ? r.name
                             : !scale.description.empty() ? scale.description
                                                          : std::filesystem::path(r.scale).stem().string();
    tones.names.setName(r.table, name);
    if (!SaveToneFile(pbt, tones, error)) return fail(error);
    std::cout << "Table " << r.table << " (" << tones.names.name(r.table) << "): " << tones.rows.steps(r.table)
              << " steps, written to " << pbt << '\n';
    return 0;
}

int exportScale(const TuningRequest& r) {
    std::string error;
    ToneTables tones;
    const std::string pbt = toneFileOf(r.target);
    std::error_code ignored;
    if (!std::filesystem::exists(pbt, ignored) && std::filesystem::path(r.target).extension() == ".pbt")
        return fail("Unable to Load: " + pbt + "\nNo such file.");
    if (!currentTones(pbt, tones, error)) return fail(error);
    const std::string name = r.name.empty() ? tones.names.name(r.table) : r.name;
    if (!SaveScala(r.out, tones.rows.row(r.table), name, error)) return fail(error);
    std::cout << "Table " << r.table << " (" << name << "): " << std::min(tones.rows.steps(r.table), kMaxScaleSteps)
              << " steps, written to " << r.out << '\n';
    return 0;
}

}  // namespace

void addTuningCommand(CLI::App& app, int& exitStatus) {
    auto* tuning = app.add_subcommand("tuning", "Import a Scala scale into a tuning table, or export one as a scale");
    tuning->require_subcommand(1);
    auto r = std::make_shared<TuningRequest>();

    auto* in = tuning->add_subcommand("import", "Put a Scala scale (.scl), with an optional keyboard map, into a tuning table");
    in->add_option("FILE", r->scale, "The scale (.scl)")->required();
    in->add_option("--kbm", r->keyMap, "A keyboard map (.kbm) choosing which degree each key plays");
    in->add_option("--into", r->target, "A tuning file (.pbt), or a patch (.qmp) whose own .pbt beside it is written")
        ->required();
    in->add_option("--table", r->table, "The table, 0-127")->required()->check(CLI::Range(0, 127));
    in->add_option("--name", r->name, "The table's name; the scale's description when not given");
    in->callback([&exitStatus, r] { exitStatus = importScale(*r); });

    auto* out = tuning->add_subcommand("export", "Write a tuning table as a Scala scale (.scl)");
    out->add_option("FROM", r->target, "A tuning file (.pbt), or a patch (.qmp): its own .pbt, or the shipped tables")
        ->required();
    out->add_option("OUT", r->out, "The scale to write (.scl)")->required();
    out->add_option("--table", r->table, "The table, 0-127")->required()->check(CLI::Range(0, 127));
    out->add_option("--name", r->name, "The scale's description; the table's name when not given");
    out->callback([&exitStatus, r] { exitStatus = exportScale(*r); });
}

}  // namespace quillmer
