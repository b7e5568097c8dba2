#include "shell/PatchJson.h"

#include <algorithm>
#include <map>

#include "shell/AuthorName.h"
#include "shell/FileHeader.h"
#include "shell/PatchJsonRecords.h"
#include "shell/Session.h"

namespace quillmer {

using patchjson::DocumentError;
using patchjson::Json;
using patchjson::number;

namespace {

constexpr std::string_view kFormatName = "Quillmer patch";
constexpr int kTextVersion = 1;
constexpr size_t kSnapshotNameBytes = 24;
constexpr size_t kLabelBytes = 32;

std::string trimmedRight(std::string s) {
    const size_t end = s.find_last_not_of(' ');
    s.erase(end == std::string::npos ? 0 : end + 1);
    return s;
}

// --- layout of the text: a small change is a small diff ---

std::string compact(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

bool allNumbers(const Json& value) {
    return value.is_array() && std::all_of(value.begin(), value.end(), [](const Json& v) { return v.is_number(); });
}

// `depth` levels open one member a line; deeper values, and lists of numbers, stand on one.
void emit(std::string& out, const Json& value, int indent, int depth) {
    if (depth <= 0 || !value.is_structured() || value.empty() || allNumbers(value)) {
        out += compact(value);
        return;
    }
    const bool object = value.is_object();
    out += object ? "{\n" : "[\n";
    const std::string pad(static_cast<size_t>(indent + 2), ' ');
    size_t i = 0;
    for (auto it = value.begin(); it != value.end(); ++it, ++i) {
        out += pad;
        if (object) out += compact(Json(it.key())) + ": ";
        emit(out, *it, indent + 2, depth - 1);
        out += i + 1 < value.size() ? ",\n" : "\n";
    }
    out += std::string(static_cast<size_t>(indent), ' ') + (object ? "}" : "]");
}

// --- bytes to document ---

Json headerOf(const FileHeader& h) {
    Json j = Json::object();
    j["formatVersion"] = h.version;
    j["tempo"] = h.tempo;
    j["currentSnapshot"] = h.currentSnapshot;
    j["snapshotCount"] = h.snapshotCount;
    j["currentPage"] = h.currentPage;
    j["run"] = h.runState;
    j["author"] = trimmedRight(transformName(h.authorName));
    j["modifier"] = trimmedRight(transformName(h.modifierName));
    j["programVersion"] = Json::array({h.versionMajor, h.versionMinor, h.versionRevision});
    j["mainWindow"] = Json::array({h.mainWidth, h.mainHeight});
    j["lockPageHide"] = h.lockPageHide;
    j["pageHide"] = h.pageHide;
    j["lockModules"] = h.lockModules;
    j["absClock"] = Json::array({h.absClock0, h.absClock1});
    j["sliderValues"] = h.sliderValues;
    Json labels = Json::array();
    for (const std::string& label : h.sliderLabels) labels.push_back(trimmedRight(label));
    j["sliderLabels"] = labels;
    j["sliderPanel"] = Json::array({h.sliderPanelTop, h.sliderPanelLeft});
    j["sliderSend"] = h.sliderSend;
    j["sliderChannel"] = h.sliderChannel;
    j["sliderGroups"] = Json::array({h.sliderGroup1, h.sliderGroup2});
    return j;
}

// The names of the snapshots in use, and of any slot after them that holds one.
Json snapshotsOf(const FileHeader& h) {
    size_t used = static_cast<size_t>(std::clamp<int>(h.snapshotCount, 0, kSnapshotCount));
    for (size_t i = used; i < h.snapshotNames.size(); ++i)
        if (!trimmedRight(h.snapshotNames[i]).empty()) used = i + 1;
    Json names = Json::array();
    for (size_t i = 0; i < used; ++i) names.push_back(trimmedRight(h.snapshotNames[i]));
    return names;
}

// The lines in use, and after them what every later line holds where they are all alike.
Json composerOf(const FileHeader& h) {
    const auto line = [&](size_t i) { return Json::array({h.composerSnapshots[i], h.composerMeasures[i]}); };
    const Json rest = line(kComposerLines - 1);
    size_t used = static_cast<size_t>(std::clamp<int>(h.composerCount, 0, kComposerLines));
    for (size_t i = used; i < kComposerLines; ++i)
        if (line(i) != rest) used = i + 1;
    Json j = Json::object();
    j["count"] = h.composerCount;
    j["begin"] = h.composerBegin;
    j["end"] = h.composerEnd;
    Json lines = Json::array();
    for (size_t i = 0; i < used; ++i) lines.push_back(line(i));
    j["lines"] = lines;
    if (used < kComposerLines) j["rest"] = rest;
    return j;
}

// The header bytes our header doesn't model (reserved areas that aren't zero), as runs.
Json unkeptHeaderBytes(const uint8_t* original, const std::vector<uint8_t>& rewritten) {
    Json runs = Json::object();
    for (size_t i = 0; i < kHeaderSize;) {
        if (original[i] == rewritten[i]) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < kHeaderSize && original[end] != rewritten[end]) ++end;
        runs[std::to_string(i)] = patchjson::hexLines({original + i, end - i});
        i = end;
    }
    return runs;
}

std::string documentText(const Json& doc) {
    std::string out = "{\n";
    size_t i = 0;
    for (auto it = doc.begin(); it != doc.end(); ++it, ++i) {
        const std::string& key = it.key();
        const int depth = key == "modules" ? 3 : key == "composer" || key == "headerBytes" ? 2
                          : key == "header" || key == "snapshots"                    ? 1
                                                                                     : 0;
        out += "  " + compact(Json(key)) + ": ";
        emit(out, *it, 2, depth);
        out += i + 1 < doc.size() ? ",\n" : "\n";
    }
    out += "}\n";
    return out;
}

// --- document to bytes ---

template <class T>
T narrow(const Json& object, const char* key, const std::string& where, T fallback) {
    return static_cast<T>(number(object, key, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), where, fallback));
}

template <class T, size_t N>
void numbers(const Json& object, const char* key, const std::string& where, std::array<T, N>& out) {
    const auto it = object.find(key);
    if (it == object.end()) return;
    if (!it->is_array() || it->size() != N)
        throw DocumentError(where + ": \"" + key + "\" must be a list of " + std::to_string(N));
    for (size_t i = 0; i < N; ++i) {
        const Json& v = (*it)[i];
        if (!v.is_number_integer() || v.get<int64_t>() < std::numeric_limits<T>::min() ||
            v.get<int64_t>() > std::numeric_limits<T>::max())
            throw DocumentError(where + ": \"" + key + "\" must hold whole numbers from " +
                                std::to_string(std::numeric_limits<T>::min()) + " to " +
                                std::to_string(std::numeric_limits<T>::max()));
        out[i] = static_cast<T>(v.get<int64_t>());
    }
}

std::string fitted(const std::string& text, size_t size, const std::string& where) {
    if (utf8ToCp1252(text).size() > size)
        throw DocumentError(where + " is longer than " + std::to_string(size) + " characters");
    return text;
}

void readHeader(const Json& doc, FileHeader& h) {
    const auto found = doc.find("header");
    const Json header = found == doc.end() ? Json::object() : *found;
    const std::string where = "\"header\"";
    if (!header.is_object()) throw DocumentError(where + " must be an object");
    h.version = narrow<int32_t>(header, "formatVersion", where, kFormatVersion);
    if (h.version > kFormatVersion || h.version < 0)
        throw DocumentError(where + ": \"formatVersion\" " + std::to_string(h.version) +
                            " is not a module file version this program reads");
    h.tempo = narrow<int16_t>(header, "tempo", where, h.tempo);
    h.currentSnapshot = narrow<int16_t>(header, "currentSnapshot", where, 0);
    h.currentPage = narrow<int16_t>(header, "currentPage", where, 0);
    h.runState = narrow<uint8_t>(header, "run", where, 0);
    h.authorName = transformName(fitted(patchjson::text(header, "author", where, ""), 32, where + " \"author\""));
    h.modifierName = transformName(fitted(patchjson::text(header, "modifier", where, ""), 32, where + " \"modifier\""));
    std::array<int16_t, 3> version{};
    numbers(header, "programVersion", where, version);
    h.versionMajor = version[0];
    h.versionMinor = version[1];
    h.versionRevision = version[2];
    std::array<int16_t, 2> pair{};
    numbers(header, "mainWindow", where, pair);
    h.mainWidth = pair[0];
    h.mainHeight = pair[1];
    h.lockPageHide = narrow<uint8_t>(header, "lockPageHide", where, 0);
    h.pageHide = narrow<uint8_t>(header, "pageHide", where, 0);
    h.lockModules = narrow<uint8_t>(header, "lockModules", where, 0);
    pair = {};
    numbers(header, "absClock", where, pair);
    h.absClock0 = pair[0];
    h.absClock1 = pair[1];
    numbers(header, "sliderValues", where, h.sliderValues);
    if (const auto labels = header.find("sliderLabels"); labels != header.end()) {
        if (!labels->is_array() || labels->size() != kSliderCount)
            throw DocumentError(where + ": \"sliderLabels\" must be a list of 16");
        for (size_t i = 0; i < kSliderCount; ++i) {
            if (!(*labels)[i].is_string()) throw DocumentError(where + ": \"sliderLabels\" must hold text");
            h.sliderLabels[i] = fitted((*labels)[i].get<std::string>(), kLabelBytes, where + " slider label");
        }
    }
    pair = {};
    numbers(header, "sliderPanel", where, pair);
    h.sliderPanelTop = pair[0];
    h.sliderPanelLeft = pair[1];
    h.sliderSend = narrow<uint8_t>(header, "sliderSend", where, 0);
    h.sliderChannel = narrow<uint8_t>(header, "sliderChannel", where, 0);
    std::array<uint8_t, 2> groups{};
    numbers(header, "sliderGroups", where, groups);
    h.sliderGroup1 = groups[0];
    h.sliderGroup2 = groups[1];

    const auto names = doc.find("snapshots");
    size_t named = 0;
    if (names != doc.end()) {
        if (!names->is_array() || names->size() > kSnapshotCount)
            throw DocumentError("\"snapshots\" must be a list of at most 128 names");
        for (size_t i = 0; i < names->size(); ++i) {
            const std::string at = "snapshot " + std::to_string(i);
            if (!(*names)[i].is_string()) throw DocumentError(at + " must be text");
            h.snapshotNames[i] = fitted((*names)[i].get<std::string>(), kSnapshotNameBytes, at + "'s name");
        }
        named = names->size();
    }
    h.snapshotCount = narrow<int16_t>(header, "snapshotCount", where, static_cast<int16_t>(named));
}

void readComposer(const Json& doc, FileHeader& h) {
    const auto found = doc.find("composer");
    if (found == doc.end()) return;
    const std::string where = "\"composer\"";
    if (!found->is_object()) throw DocumentError(where + " must be an object");
    const Json& c = *found;
    const auto lineOf = [&](const Json& line, size_t i) {
        const std::string at = where + " line " + std::to_string(i + 1);
        if (!line.is_array() || line.size() != 2 || !line[0].is_number_integer() || !line[1].is_number_integer() ||
            line[0].get<int64_t>() < 0 || line[0].get<int64_t>() > 255 || line[1].get<int64_t>() < INT16_MIN ||
            line[1].get<int64_t>() > INT16_MAX)
            throw DocumentError(at + " must be [snapshot 0..255, measures]");
        h.composerSnapshots[i] = static_cast<uint8_t>(line[0].get<int64_t>());
        h.composerMeasures[i] = static_cast<int16_t>(line[1].get<int64_t>());
    };
    size_t given = 0;
    if (const auto lines = c.find("lines"); lines != c.end()) {
        if (!lines->is_array() || lines->size() > kComposerLines)
            throw DocumentError(where + " \"lines\" must be a list of at most 1000 lines");
        for (size_t i = 0; i < lines->size(); ++i) lineOf((*lines)[i], i);
        given = lines->size();
    }
    if (const auto rest = c.find("rest"); rest != c.end())
        for (size_t i = given; i < kComposerLines; ++i) lineOf(*rest, i);
    h.composerCount = narrow<int16_t>(c, "count", where, static_cast<int16_t>(given));
    h.composerBegin = narrow<int16_t>(c, "begin", where, 0);
    h.composerEnd = narrow<int16_t>(c, "end", where, 0);
}

// Records of one file slot, by index.
using SlotRecords = std::map<int, std::vector<uint8_t>>;

void readModules(const Json& doc, std::map<int, SlotRecords>& slots) {
    const auto found = doc.find("modules");
    if (found == doc.end()) return;
    if (!found->is_array()) throw DocumentError("\"modules\" must be a list");
    std::map<int, int> retiredSeen;
    for (size_t m = 0; m < found->size(); ++m) {
        const Json& module = (*found)[m];
        std::string where = "module " + std::to_string(m + 1);
        if (!module.is_object()) throw DocumentError(where + " must be an object");
        int k = 0;
        int index = 0;
        if (module.contains("retired")) {
            k = static_cast<int>(number(module, "retired", 0, kFileSlotCount - 1, where));
            if (!fileOrder()[static_cast<size_t>(k)].retired())
                throw DocumentError(where + ": file slot " + std::to_string(k) + " is not a retired one");
            index = retiredSeen[k]++;
        } else {
            const std::string type = patchjson::text(module, "type", where, "");
            const std::optional<ModuleTypeId> id = typeIdByName(type);
            if (!id) throw DocumentError(where + ": \"" + type + "\" is not a module type");
            k = fileSlotOf(*id).k;
            index = static_cast<int>(number(module, "index", 0, INT16_MAX - 1, where));
            where += " (" + type + " " + std::to_string(index) + ")";
        }
        const FileSlot& slot = fileOrder()[static_cast<size_t>(k)];
        const std::vector<LayoutToken> layout = parseLayout(slot.layout);
        std::vector<uint8_t> record;
        if (module.contains("record")) {
            record = patchjson::fromBase64(module["record"], where + " \"record\"");
            ByteReader check(record);
            try {
                skipRecord(check, layout);
            } catch (const RecordFormatError& e) {
                throw DocumentError(where + ": the record does not parse: " + e.what());
            }
            if (check.remaining() != 0) throw DocumentError(where + ": the record is longer than its type's layout");
        } else {
            record = patchjson::encodeRecord(module, layout, slot.type, where);
        }
        if (!slots[k].emplace(index, std::move(record)).second)
            throw DocumentError(where + ": the type has this index twice");
    }
    for (const auto& [k, records] : slots) {
        int expected = 0;
        for (const auto& [index, bytes] : records)
            if (index != expected++)
                throw DocumentError("the " + std::string(fileOrder()[static_cast<size_t>(k)].type) + " modules skip index " +
                                    std::to_string(expected - 1) + ": a type's indices run from 0 without a gap");
    }
}

std::vector<uint8_t> assemble(const Json& doc) {
    if (!doc.is_object()) throw DocumentError("the document must be an object");
    if (patchjson::text(doc, "format", "the document", "") != kFormatName)
        throw DocumentError("this is not a Quillmer patch text: \"format\" must be \"" + std::string(kFormatName) + "\"");
    const int64_t version = number(doc, "textVersion", 1, INT32_MAX, "the document", kTextVersion);
    if (version > kTextVersion)
        throw DocumentError("the text version " + std::to_string(version) + " is newer than this program reads");
    FileHeader header;
    readHeader(doc, header);
    readComposer(doc, header);
    std::map<int, SlotRecords> slots;
    readModules(doc, slots);

    ByteWriter out;
    out.raw(std::vector<uint8_t>(kHeaderSize, 0));
    for (const auto& [k, records] : slots) {
        header.typeCounts[static_cast<size_t>(k)] = static_cast<int16_t>(records.size());
        for (const auto& [index, bytes] : records) out.raw(bytes);
    }
    std::vector<uint8_t> bytes = out.take();
    const std::vector<uint8_t> head = header.write();
    std::copy(head.begin(), head.end(), bytes.begin());

    if (const auto runs = doc.find("headerBytes"); runs != doc.end()) {
        if (!runs->is_object()) throw DocumentError("\"headerBytes\" must be an object");
        for (const auto& [offset, lines] : runs->items()) {
            const std::string where = "\"headerBytes\" at " + offset;
            size_t at = 0;
            try {
                at = std::stoul(offset);
            } catch (const std::exception&) {
                throw DocumentError(where + ": not an offset");
            }
            const std::vector<uint8_t> run = patchjson::fromHexLines(lines, where);
            if (at > kHeaderSize || run.size() > kHeaderSize - at) throw DocumentError(where + ": runs past the header");
            std::copy(run.begin(), run.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
        }
    }
    if (const auto tail = doc.find("tail"); tail != doc.end()) {
        const std::vector<uint8_t> rest = patchjson::fromBase64(*tail, "\"tail\"");
        bytes.insert(bytes.end(), rest.begin(), rest.end());
    }
    return bytes;
}

// "line L, column C" of byte `position` (1-based, as the parser counts).
std::string placeOf(std::string_view text, size_t position) {
    const size_t end = std::min(position == 0 ? 0 : position - 1, text.size());
    size_t line = 1;
    size_t lineStart = 0;
    for (size_t i = 0; i < end; ++i)
        if (text[i] == '\n') {
            ++line;
            lineStart = i + 1;
        }
    return "line " + std::to_string(line) + ", column " + std::to_string(end - lineStart + 1);
}

}  // namespace

bool isPatchJsonPath(std::string_view path) {
    if (path.size() < 4) return false;
    std::string ext(path.substr(path.size() - 4));
    std::transform(ext.begin(), ext.end(), ext.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    return ext == ".qmj";
}

bool patchToJson(const std::vector<uint8_t>& bytes, const BuiltTypeTest& built, std::string& text,
                 std::string& reason) {
    if (!checkModuleBytes(bytes, reason)) return false;
    const FileHeader header = FileHeader::read(bytes.data());
    Json doc = Json::object();
    doc["format"] = kFormatName;
    doc["textVersion"] = kTextVersion;
    doc["header"] = headerOf(header);
    doc["snapshots"] = snapshotsOf(header);
    doc["composer"] = composerOf(header);
    const Json unkept = unkeptHeaderBytes(bytes.data(), header.write());
    if (!unkept.empty()) doc["headerBytes"] = unkept;

    Json modules = Json::array();
    ByteReader in(bytes.data() + kHeaderSize, bytes.size() - kHeaderSize);
    try {
        for (const FileSlot& slot : fileOrder()) {
            const int16_t count = header.typeCounts[static_cast<size_t>(slot.k)];
            const std::vector<LayoutToken> layout = parseLayout(slot.layout);
            const bool runs = !slot.retired() && built(*typeIdByName(slot.type));
            for (int16_t i = 0; i < count; ++i) {
                Json module = Json::object();
                if (slot.retired()) {
                    module["retired"] = slot.k;
                } else {
                    module["type"] = slot.type;
                    module["index"] = i;
                }
                if (runs) {
                    patchjson::decodeRecord(in, layout, slot.type, module);
                } else {
                    module["record"] = patchjson::base64(recordSpan(in, layout));
                }
                modules.push_back(std::move(module));
            }
        }
    } catch (const RecordFormatError& e) {
        reason = std::string("a record does not parse: ") + e.what();
        return false;
    }
    doc["modules"] = modules;
    if (in.remaining() != 0) doc["tail"] = patchjson::base64({in.data() + in.position(), in.remaining()});
    text = documentText(doc);
    return true;
}

bool patchFromJson(std::string_view text, std::vector<uint8_t>& bytes, std::string& reason) {
    Json doc;
    try {
        doc = Json::parse(text.begin(), text.end());
    } catch (const Json::parse_error& e) {
        std::string what = e.what();
        const size_t detail = what.find("syntax error");
        if (detail != std::string::npos) what = what.substr(detail);
        reason = placeOf(text, e.byte) + ": " + what;
        return false;
    }
    try {
        bytes = assemble(doc);
    } catch (const DocumentError& e) {
        reason = e.what();
        return false;
    } catch (const std::exception& e) {
        reason = e.what();
        return false;
    }
    return true;
}

}  // namespace quillmer
