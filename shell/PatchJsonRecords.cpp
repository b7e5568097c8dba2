#include "shell/PatchJsonRecords.h"

#include <algorithm>
#include <array>

#include "engine/Constants.h"

namespace quillmer::patchjson {

namespace {

constexpr size_t kHexLineBytes = 32;
constexpr int kSnapshots = kSnapshotCount;

std::string trimmedRight(std::string s) {
    const size_t end = s.find_last_not_of(' ');
    s.erase(end == std::string::npos ? 0 : end + 1);
    return s;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Types whose own bytes stand snapshot after snapshot, a row of several bytes each; the
// others keep one array of 128 bytes per setting.
bool settingsInRows(std::string_view type) {
    for (std::string_view family : {"Step", "Slide", "Run", "Knob"})
        if (type.starts_with(family)) return true;
    for (std::string_view t : {"Shift", "Level", "Mixer", "AddDiv", "SelOut", "Carry"})
        if (type == t) return true;
    return false;
}

const Json& member(const Json& object, const char* key, const std::string& where) {
    const auto it = object.find(key);
    if (it == object.end()) throw DocumentError(where + ": \"" + key + "\" is missing");
    return *it;
}

std::string stringAt(const Json& value, const std::string& where) {
    if (!value.is_string()) throw DocumentError(where + " must be text");
    return value.get<std::string>();
}

// A variable string of the record, checked for its length on disk.
void writeString(ByteWriter& out, const std::string& s, const std::string& where) {
    if (utf8ToCp1252(s).size() > 65535) throw DocumentError(where + " is longer than 65535 characters");
    out.str(s);
}

void writeFixed(ByteWriter& out, const std::string& s, size_t size, const std::string& where) {
    if (utf8ToCp1252(s).size() > size)
        throw DocumentError(where + " is longer than " + std::to_string(size) + " characters");
    out.fixed(s, size);
}

Json stringsOf(ByteReader& in, uint32_t count) {
    Json list = Json::array();
    for (uint32_t i = 0; i < count; ++i) list.push_back(in.str());
    return list;
}

// --- the head ---

void decodeHead(ByteReader& in, Json& module) {
    module["active"] = in.i16();
    module["enabled"] = in.i16();
    module["outSlot"] = in.i16();
    module["priority"] = in.i16();
    module["page"] = in.i16();
    module["top"] = in.i32();
    module["left"] = in.i32();
    module["name"] = in.str();
}

void encodeHead(ByteWriter& out, const Json& module, const std::string& where) {
    for (const char* key : {"active", "enabled", "outSlot", "priority", "page"})
        out.i16(static_cast<int16_t>(number(module, key, INT16_MIN, INT16_MAX, where, 0)));
    for (const char* key : {"top", "left"}) out.i32(static_cast<int32_t>(number(module, key, INT32_MIN, INT32_MAX, where, 0)));
    writeString(out, text(module, "name", where, ""), where + " \"name\"");
}

// --- the usual form: per snapshot the input names, their ids and the type's own bytes ---

struct SnapshotEntry {
    Json inputs = Json::array();
    Json ids = Json::array();
    Json settings = Json::array();
};

void decodeUsual(ByteReader& in, const UsualForm& form, std::string_view type, Json& module) {
    const uint32_t k = form.strings / kSnapshots;
    std::array<SnapshotEntry, kSnapshots> entries;
    for (SnapshotEntry& e : entries) e.inputs = stringsOf(in, k);
    for (SnapshotEntry& e : entries)
        for (uint32_t i = 0; i < k; ++i) e.ids.push_back(in.i16());
    const size_t own = form.bytes - size_t{form.strings} * 2;
    const size_t perSnapshot = own / kSnapshots;
    const std::vector<uint8_t> block = in.raw(perSnapshot * kSnapshots);
    for (size_t s = 0; s < kSnapshots; ++s)
        for (size_t j = 0; j < perSnapshot; ++j)
            entries[s].settings.push_back(settingsInRows(type) ? block[s * perSnapshot + j] : block[j * kSnapshots + s]);

    Json snapshots = Json::object();
    for (size_t s = 0; s < kSnapshots; ++s) {
        Json entry = Json::object();
        const auto keep = [&](const char* key, const Json& value, const Json* before) {
            if (!value.empty() && (!before || *before != value)) entry[key] = value;
        };
        const SnapshotEntry* before = s == 0 ? nullptr : &entries[s - 1];
        keep("inputs", entries[s].inputs, before ? &before->inputs : nullptr);
        keep("ids", entries[s].ids, before ? &before->ids : nullptr);
        keep("settings", entries[s].settings, before ? &before->settings : nullptr);
        if (!entry.empty() || s == 0) snapshots[std::to_string(s)] = entry;
    }
    module["snapshots"] = snapshots;
    const std::vector<uint8_t> rest = in.raw(own - perSnapshot * kSnapshots);
    if (!rest.empty()) module["data"] = hexLines(rest);
}

// A list of `count` values of the snapshot entry, or the snapshot before's.
Json entryList(const Json& entry, const char* key, const Json& before, size_t count, const std::string& where) {
    const auto it = entry.find(key);
    if (it == entry.end()) return before;
    if (!it->is_array() || it->size() != count)
        throw DocumentError(where + " \"" + key + "\" must be a list of " + std::to_string(count));
    return *it;
}

void encodeUsual(ByteWriter& out, const Json& module, const UsualForm& form, std::string_view type,
                 const std::string& where) {
    const uint32_t k = form.strings / kSnapshots;
    const size_t own = form.bytes - size_t{form.strings} * 2;
    const size_t perSnapshot = own / kSnapshots;
    const Json& snapshots = member(module, "snapshots", where);
    if (!snapshots.is_object()) throw DocumentError(where + " \"snapshots\" must be an object");
    for (const auto& [key, value] : snapshots.items()) {
        const bool slot = !key.empty() && key.size() <= 3 && std::all_of(key.begin(), key.end(), [](char c) {
            return c >= '0' && c <= '9';
        }) && std::stoi(key) < kSnapshots;
        if (!slot) throw DocumentError(where + " \"snapshots\": \"" + key + "\" is not a snapshot number from 0 to 127");
        if (!value.is_object()) throw DocumentError(where + " snapshot " + key + " must be an object");
    }
    std::array<SnapshotEntry, kSnapshots> entries;
    SnapshotEntry before;
    before.inputs = Json::array();
    for (uint32_t i = 0; i < k; ++i) {
        before.inputs.push_back("");
        before.ids.push_back(0);
    }
    for (size_t j = 0; j < perSnapshot; ++j) before.settings.push_back(0);
    for (size_t s = 0; s < kSnapshots; ++s) {
        const std::string at = where + " snapshot " + std::to_string(s);
        const auto it = snapshots.find(std::to_string(s));
        if (it != snapshots.end()) {
            before.inputs = entryList(*it, "inputs", before.inputs, k, at);
            before.ids = entryList(*it, "ids", before.ids, k, at);
            before.settings = entryList(*it, "settings", before.settings, perSnapshot, at);
        }
        entries[s] = before;
    }
    for (size_t s = 0; s < kSnapshots; ++s)
        for (uint32_t i = 0; i < k; ++i)
            writeString(out, stringAt(entries[s].inputs[i], where + " snapshot " + std::to_string(s) + " input"),
                        where + " snapshot " + std::to_string(s) + " input");
    const auto inRange = [&](const Json& v, int64_t lo, int64_t hi, const std::string& what) {
        if (!v.is_number_integer() || v.get<int64_t>() < lo || v.get<int64_t>() > hi)
            throw DocumentError(where + " " + what + " must be a whole number from " + std::to_string(lo) + " to " +
                                std::to_string(hi));
        return v.get<int64_t>();
    };
    for (size_t s = 0; s < kSnapshots; ++s)
        for (uint32_t i = 0; i < k; ++i)
            out.i16(static_cast<int16_t>(inRange(entries[s].ids[i], INT16_MIN, INT16_MAX,
                                                 "snapshot " + std::to_string(s) + " \"ids\"")));
    std::vector<uint8_t> block(perSnapshot * kSnapshots);
    for (size_t s = 0; s < kSnapshots; ++s)
        for (size_t j = 0; j < perSnapshot; ++j) {
            const auto v = static_cast<uint8_t>(
                inRange(entries[s].settings[j], 0, 255, "snapshot " + std::to_string(s) + " \"settings\""));
            (settingsInRows(type) ? block[s * perSnapshot + j] : block[j * kSnapshots + s]) = v;
        }
    out.raw(block);
    const size_t restSize = own - block.size();
    const std::vector<uint8_t> rest =
        module.contains("data") ? fromHexLines(module["data"], where + " \"data\"") : std::vector<uint8_t>(restSize, 0);
    if (rest.size() != restSize)
        throw DocumentError(where + " \"data\" must hold " + std::to_string(restSize) + " bytes, not " +
                            std::to_string(rest.size()));
    out.raw(rest);
}

// --- any other layout: one part per token ---

Json decodePart(ByteReader& in, const LayoutToken& t) {
    switch (t.kind) {
        case LayoutToken::Kind::Head: break;  // only ever first, read by decodeHead
        case LayoutToken::Kind::Strings: return t.count == 1 ? Json(in.str()) : stringsOf(in, t.count);
        case LayoutToken::Kind::Bytes: return hexLines(in.raw(t.count));
        case LayoutToken::Kind::FixedStrings: {
            Json list = Json::array();
            for (uint32_t i = 0; i < t.count; ++i) list.push_back(trimmedRight(in.fixed(t.size)));
            return t.count == 1 ? list[0] : list;
        }
        case LayoutToken::Kind::Dynamic: {
            Json part = Json::object();
            Json dims = Json::array();
            const uint16_t n = in.u16();
            uint64_t elements = n == 0 ? 0 : 1;
            for (uint16_t d = 0; d < n; ++d) {
                const int32_t count = in.i32();
                const int32_t lower = in.i32();
                dims.push_back(Json::array({count, lower}));
                const auto c = static_cast<uint32_t>(count);
                elements = c != 0 && elements > UINT32_MAX / c ? UINT64_MAX : elements * c;
            }
            if (elements > in.remaining() / std::max<uint32_t>(t.size, 1)) throw RecordFormatError("array runs past the end");
            part["dims"] = dims;
            part["data"] = hexLines(in.raw(static_cast<size_t>(elements * t.size)));
            return part;
        }
    }
    return Json();
}

void encodePart(ByteWriter& out, const Json& part, const LayoutToken& t, const std::string& where) {
    const auto list = [&](uint32_t count) -> const Json& {
        if (!part.is_array() || part.size() != count)
            throw DocumentError(where + " must be a list of " + std::to_string(count));
        return part;
    };
    switch (t.kind) {
        case LayoutToken::Kind::Head: break;
        case LayoutToken::Kind::Strings:
            if (t.count == 1) {
                writeString(out, stringAt(part, where), where);
            } else {
                for (const Json& s : list(t.count)) writeString(out, stringAt(s, where), where);
            }
            break;
        case LayoutToken::Kind::Bytes: {
            const std::vector<uint8_t> bytes = fromHexLines(part, where);
            if (bytes.size() != t.count)
                throw DocumentError(where + " must hold " + std::to_string(t.count) + " bytes, not " +
                                    std::to_string(bytes.size()));
            out.raw(bytes);
            break;
        }
        case LayoutToken::Kind::FixedStrings:
            if (t.count == 1) {
                writeFixed(out, stringAt(part, where), t.size, where);
            } else {
                for (const Json& s : list(t.count)) writeFixed(out, stringAt(s, where), t.size, where);
            }
            break;
        case LayoutToken::Kind::Dynamic: {
            if (!part.is_object()) throw DocumentError(where + " must be an object with \"dims\" and \"data\"");
            const Json& dims = member(part, "dims", where);
            if (!dims.is_array() || dims.size() > 60) throw DocumentError(where + " \"dims\" must be a short list");
            out.u16(static_cast<uint16_t>(dims.size()));
            uint64_t elements = dims.empty() ? 0 : 1;
            for (const Json& d : dims) {
                if (!d.is_array() || d.size() != 2 || !d[0].is_number_integer() || !d[1].is_number_integer() ||
                    d[0].get<int64_t>() < 0 || d[0].get<int64_t>() > INT32_MAX || d[1].get<int64_t>() < INT32_MIN ||
                    d[1].get<int64_t>() > INT32_MAX)
                    throw DocumentError(where + " \"dims\": each is [count, lower bound], whole numbers");
                out.i32(static_cast<int32_t>(d[0].get<int64_t>()));
                out.i32(static_cast<int32_t>(d[1].get<int64_t>()));
                elements = std::min<uint64_t>(elements * d[0].get<uint64_t>(), UINT32_MAX);
            }
            const std::vector<uint8_t> data = fromHexLines(member(part, "data", where), where + " \"data\"");
            if (data.size() != elements * t.size)
                throw DocumentError(where + " \"data\" must hold " + std::to_string(elements * t.size) + " bytes");
            out.raw(data);
            break;
        }
    }
}

std::optional<UsualForm> perSnapshotForm(const std::vector<LayoutToken>& layout) {
    const std::optional<UsualForm> form = usualForm(layout);
    if (!form || form->strings % kSnapshots != 0 || form->bytes < size_t{form->strings} * 2) return std::nullopt;
    return form;
}

}  // namespace

Json hexLines(std::span<const uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    Json lines = Json::array();
    for (size_t at = 0; at < bytes.size(); at += kHexLineBytes) {
        std::string line;
        for (size_t i = at; i < std::min(bytes.size(), at + kHexLineBytes); ++i) {
            line += kDigits[bytes[i] >> 4];
            line += kDigits[bytes[i] & 15];
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<uint8_t> fromHexLines(const Json& lines, const std::string& where) {
    if (!lines.is_array()) throw DocumentError(where + " must be a list of hexadecimal lines");
    std::vector<uint8_t> bytes;
    for (const Json& line : lines) {
        if (!line.is_string()) throw DocumentError(where + " must be a list of hexadecimal lines");
        const std::string& s = line.get_ref<const std::string&>();
        if (s.size() % 2 != 0) throw DocumentError(where + " has a line of an odd number of digits");
        for (size_t i = 0; i < s.size(); i += 2) {
            const int hi = hexDigit(s[i]);
            const int lo = hexDigit(s[i + 1]);
            if (hi < 0 || lo < 0) throw DocumentError(where + " holds \"" + s.substr(i, 2) + "\", which is not hexadecimal");
            bytes.push_back(static_cast<uint8_t>(hi * 16 + lo));
        }
    }
    return bytes;
}

namespace {
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
}

std::string base64(std::span<const uint8_t> bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t n = std::min<size_t>(3, bytes.size() - i);
        uint32_t v = uint32_t{bytes[i]} << 16;
        if (n > 1) v |= uint32_t{bytes[i + 1]} << 8;
        if (n > 2) v |= bytes[i + 2];
        for (size_t j = 0; j < 4; ++j) out += j <= n ? kBase64[(v >> (18 - 6 * j)) & 63] : '=';
    }
    return out;
}

std::vector<uint8_t> fromBase64(const Json& value, const std::string& where) {
    if (!value.is_string()) throw DocumentError(where + " must be base64 text");
    const std::string& s = value.get_ref<const std::string&>();
    if (s.size() % 4 != 0) throw DocumentError(where + " is not base64: its length is not a multiple of 4");
    std::vector<uint8_t> out;
    out.reserve(s.size() / 4 * 3);
    for (size_t i = 0; i < s.size(); i += 4) {
        uint32_t v = 0;
        int pads = 0;
        for (size_t j = 0; j < 4; ++j) {
            const char c = s[i + j];
            const size_t d = kBase64.find(c);
            const bool pad = c == '=' && i + 4 == s.size() && j >= 2 && (j == 3 || s[i + 3] == '=');
            if (d == std::string_view::npos && !pad)
                throw DocumentError(where + " is not base64: it holds '" + std::string(1, c) + "'");
            if (pad) ++pads;
            v = (v << 6) | static_cast<uint32_t>(pad ? 0 : d);
        }
        out.push_back(static_cast<uint8_t>(v >> 16));
        if (pads < 2) out.push_back(static_cast<uint8_t>(v >> 8));
        if (pads < 1) out.push_back(static_cast<uint8_t>(v));
    }
    return out;
}

int64_t number(const Json& object, const char* key, int64_t lo, int64_t hi, const std::string& where) {
    const Json& v = member(object, key, where);
    if (!v.is_number_integer() || v.get<int64_t>() < lo || v.get<int64_t>() > hi)
        throw DocumentError(where + ": \"" + key + "\" must be a whole number from " + std::to_string(lo) + " to " +
                            std::to_string(hi));
    return v.get<int64_t>();
}

int64_t number(const Json& object, const char* key, int64_t lo, int64_t hi, const std::string& where,
               int64_t fallback) {
    return object.contains(key) ? number(object, key, lo, hi, where) : fallback;
}

std::string text(const Json& object, const char* key, const std::string& where, const std::string& fallback) {
    const auto it = object.find(key);
    if (it == object.end()) return fallback;
    if (!it->is_string()) throw DocumentError(where + ": \"" + key + "\" must be text");
    return it->get<std::string>();
}

void decodeRecord(ByteReader& in, const std::vector<LayoutToken>& layout, std::string_view type, Json& module) {
    size_t first = 0;
    if (layout.front().kind == LayoutToken::Kind::Head) {
        decodeHead(in, module);
        first = 1;
    }
    if (const std::optional<UsualForm> form = perSnapshotForm(layout)) {
        decodeUsual(in, *form, type, module);
        return;
    }
    Json parts = Json::array();
    for (size_t i = first; i < layout.size(); ++i) parts.push_back(decodePart(in, layout[i]));
    module["parts"] = parts;
}

std::vector<uint8_t> encodeRecord(const Json& module, const std::vector<LayoutToken>& layout, std::string_view type,
                                  const std::string& where) {
    ByteWriter out;
    size_t first = 0;
    if (layout.front().kind == LayoutToken::Kind::Head) {
        encodeHead(out, module, where);
        first = 1;
    }
    if (const std::optional<UsualForm> form = perSnapshotForm(layout)) {
        encodeUsual(out, module, *form, type, where);
        return out.take();
    }
    const Json& parts = member(module, "parts", where);
    if (!parts.is_array() || parts.size() != layout.size() - first)
        throw DocumentError(where + " \"parts\" must be a list of " + std::to_string(layout.size() - first));
    for (size_t i = first; i < layout.size(); ++i)
        encodePart(out, parts[i - first], layout[i], where + " part " + std::to_string(i - first + 1));
    return out.take();
}

}  // namespace quillmer::patchjson
