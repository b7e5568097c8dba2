// `quillmer-cli types [--json]`: every type of the catalogue, and whether it runs yet.

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>
#include <vector>

#include "app/cli/Commands.h"
#include "app/cli/PatchInfo.h"
#include "engine/Catalogue.h"
#include "modules/BuiltTypes.h"

namespace quillmer {

namespace {

struct TypeRow {
    const TypeInfo* info;
    std::string_view group;
    bool built;
    std::vector<std::string> inputs;
};

std::string_view groupCaption(MenuGroup group) {
    for (const MenuGroupInfo& g : menuGroups())
        if (g.group == group) return g.caption;
    return {};
}

std::string trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

std::vector<TypeRow> collectTypes() {
    const ModuleRegistry& registry = builtTypes();
    std::vector<TypeRow> rows;
    for (const TypeInfo& info : allTypes()) {
        TypeRow row{&info, groupCaption(info.group), registry.isBuilt(info.id), {}};
        if (row.built) {
            const std::unique_ptr<Module> sample = registry.make(info.id);
            for (int k = 0; k < sample->inputCount(); ++k) row.inputs.push_back(trimmed(sample->inputSpec(k).label));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

void writeText(const std::vector<TypeRow>& rows, std::ostream& out) {
    int built = 0;
    for (const TypeRow& r : rows) {
        built += r.built ? 1 : 0;
        out << r.info->id << '\t' << r.info->type << '\t' << r.info->prefix << '\t' << r.group << '\t'
            << r.info->caption << '\t' << (r.built ? "runs" : "kept, doesn't run yet");
        for (size_t k = 0; k < r.inputs.size(); ++k) out << (k ? ", " : "\t") << r.inputs[k];
        out << '\n';
    }
    out << built << " of " << rows.size() << " types run.\n";
}

void writeJson(const std::vector<TypeRow>& rows, std::ostream& out) {
    out << '[';
    for (size_t i = 0; i < rows.size(); ++i) {
        const TypeRow& r = rows[i];
        out << (i ? "," : "") << "\n  {\"type\": " << jsonString(std::string(r.info->type)) << ", \"id\": " << r.info->id
            << ", \"prefix\": " << jsonString(std::string(r.info->prefix))
            << ", \"group\": " << jsonString(std::string(r.group))
            << ", \"caption\": " << jsonString(std::string(r.info->caption))
            << ", \"built\": " << (r.built ? "true" : "false") << ", \"inputs\": [";
        for (size_t k = 0; k < r.inputs.size(); ++k) out << (k ? ", " : "") << jsonString(r.inputs[k]);
        out << "]}";
    }
    out << "\n]\n";
}

}  // namespace

void addTypesCommand(CLI::App& app, int& exitStatus) {
    CLI::App* types = app.add_subcommand("types", "List every module type and whether it runs yet");
    auto json = std::make_shared<bool>(false);
    types->add_flag("--json", *json, "JSON: a list of objects with type, id, prefix, group, caption, built, inputs");
    types->callback([&exitStatus, json] {
        const std::vector<TypeRow> rows = collectTypes();
        if (*json)
            writeJson(rows, std::cout);
        else
            writeText(rows, std::cout);
        exitStatus = std::cout.good() ? 0 : 1;
    });
}

}  // namespace quillmer
