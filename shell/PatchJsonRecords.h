#pragma once
// One module record of a patch in the text form and back. Internal to PatchJson.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "engine/FileLayout.h"
#include "engine/RecordBytes.h"

namespace quillmer::patchjson {

using Json = nlohmann::ordered_json;

// A value of the document that can't stand; the text says where and why.
class DocumentError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Bytes as lines of hexadecimal, 32 bytes a line, and back.
Json hexLines(std::span<const uint8_t> bytes);
std::vector<uint8_t> fromHexLines(const Json& lines, const std::string& where);
std::string base64(std::span<const uint8_t> bytes);
std::vector<uint8_t> fromBase64(const Json& text, const std::string& where);

// A whole number of `key` in `object` within lo..hi; `fallback` when the key is absent, or
// an error when there is no fallback.
int64_t number(const Json& object, const char* key, int64_t lo, int64_t hi, const std::string& where);
int64_t number(const Json& object, const char* key, int64_t lo, int64_t hi, const std::string& where,
               int64_t fallback);
std::string text(const Json& object, const char* key, const std::string& where, const std::string& fallback);

// Reads one record of `type` at `in` into members of `module` (after "type" and "index").
void decodeRecord(ByteReader& in, const std::vector<LayoutToken>& layout, std::string_view type, Json& module);
// The record's bytes from a module object as decodeRecord writes it.
std::vector<uint8_t> encodeRecord(const Json& module, const std::vector<LayoutToken>& layout, std::string_view type,
                                  const std::string& where);

}  // namespace quillmer::patchjson
