#include "app/cli/PatchInfo.h"

#include <iomanip>
#include <sstream>
#include <vector>

#include "engine/Placement.h"
#include "shell/Session.h"

namespace quillmer {

namespace {

struct ModuleInfo {
    std::string type, name;
    int index, page, priority;
    bool enabled, placeholder;
    std::vector<std::pair<std::string, std::string>> inputs;  // label, connected output
};

}  // namespace

std::string jsonString(const std::string& s) {
    std::ostringstream out;
    out << '"';
    for (const unsigned char c : s) {
        if (c == '"' || c == '\\') out << '\\' << c;
        else if (c < 0x20) out << "\\u" << std::hex << std::setw(4) << std::setfill('0') << int{c} << std::dec;
        else out << c;
    }
    out << '"';
    return out.str();
}

namespace {

std::string trimmedLabel(std::string_view label) {
    const size_t first = label.find_first_not_of(' ');
    const size_t last = label.find_last_not_of(' ');
    return first == std::string_view::npos ? std::string() : std::string(label.substr(first, last - first + 1));
}

std::vector<ModuleInfo> collectModules(Session& session) {
    std::vector<ModuleInfo> modules;
    Engine& e = session.engine;
    e.forEachModule([&](Module& m) {
        ModuleInfo info{std::string(m.info().type), m.Name, m.Index, m.Page, priorityIndexOf(m.priority()),
                        m.Enabled != 0, m.isPlaceholder(), {}};
        for (int k = 0; k < m.inputCount(); ++k)
            info.inputs.emplace_back(trimmedLabel(m.inputSpec(k).label), m.inputCaption(k, e.names));
        modules.push_back(std::move(info));
    });
    return modules;
}

}  // namespace

void writePatchInfo(Session& session, std::ostream& out, bool json) {
    Engine& e = session.engine;
    const FileHeader& h = session.kept;
    const auto modules = collectModules(session);
    const int snapshots = e.SnapshotCount;
    if (!json) {
        out << "file: " << session.CurrentFileName << "\n"
            << "format version: " << h.version << ", written by " << h.versionMajor << '.' << h.versionMinor << '.'
            << h.versionRevision << "\n"
            << "author: " << session.author << "\nmodifier: " << session.modifier << "\n"
            << "tempo: " << e.Tempo() << "\npage: " << e.CurrentPage() << "\nrun: " << (e.bus[sysbus::Run] ? "yes" : "no")
            << "\nsnapshots: " << snapshots << " (current " << e.CurrentSnapshot << ")\n";
        for (int s = 0; s < snapshots; ++s) out << "  " << session.snapshots.SnapshotNames[static_cast<size_t>(s)] << "\n";
        out << "composer: " << h.composerCount << " lines (begin " << h.composerBegin << ", end " << h.composerEnd << ")\n";
        for (int i = 0; i < h.composerCount && i < kComposerLines; ++i)
            out << "  " << i << ": snapshot " << int{h.composerSnapshots[static_cast<size_t>(i)]} << ", "
                << h.composerMeasures[static_cast<size_t>(i)] + 1 << " measures\n";  // stored minus one
        out << "modules: " << modules.size() << "\n";
        for (const ModuleInfo& m : modules) {
            out << "  " << m.name << "  " << m.type << " #" << m.index << "  page " << m.page << "  "
                << priorityCaption(m.priority) << (m.enabled ? "" : "  disabled") << (m.placeholder ? "  (not built yet)" : "")
                << "\n";
            for (const auto& [label, source] : m.inputs) out << "    " << label << " <- " << source << "\n";
        }
        return;
    }
    out << "{\n  \"file\": " << jsonString(session.CurrentFileName) << ",\n  \"formatVersion\": " << h.version
        << ",\n  \"programVersion\": \"" << h.versionMajor << '.' << h.versionMinor << '.' << h.versionRevision << "\""
        << ",\n  \"author\": " << jsonString(session.author) << ",\n  \"modifier\": " << jsonString(session.modifier)
        << ",\n  \"tempo\": " << e.Tempo() << ",\n  \"page\": " << e.CurrentPage()
        << ",\n  \"run\": " << (e.bus[sysbus::Run] ? "true" : "false") << ",\n  \"currentSnapshot\": " << e.CurrentSnapshot
        << ",\n  \"snapshots\": [";
    for (int s = 0; s < snapshots; ++s)
        out << (s ? ", " : "") << jsonString(session.snapshots.SnapshotNames[static_cast<size_t>(s)]);
    out << "],\n  \"composer\": {\"begin\": " << h.composerBegin << ", \"end\": " << h.composerEnd << ", \"lines\": [";
    for (int i = 0; i < h.composerCount && i < kComposerLines; ++i)
        out << (i ? ", " : "") << "{\"snapshot\": " << int{h.composerSnapshots[static_cast<size_t>(i)]}
            << ", \"measures\": " << h.composerMeasures[static_cast<size_t>(i)] + 1 << "}";
    out << "]},\n  \"modules\": [";
    for (size_t i = 0; i < modules.size(); ++i) {
        const ModuleInfo& m = modules[i];
        out << (i ? "," : "") << "\n    {\"type\": " << jsonString(m.type) << ", \"index\": " << m.index
            << ", \"name\": " << jsonString(m.name) << ", \"page\": " << m.page << ", \"priority\": "
            << jsonString(std::string(priorityCaption(m.priority))) << ", \"enabled\": " << (m.enabled ? "true" : "false")
            << ", \"built\": " << (m.placeholder ? "false" : "true") << ", \"inputs\": {";
        for (size_t k = 0; k < m.inputs.size(); ++k)
            out << (k ? ", " : "") << jsonString(m.inputs[k].first) << ": " << jsonString(m.inputs[k].second);
        out << "}}";
    }
    out << "\n  ]\n}\n";
}

}  // namespace quillmer
