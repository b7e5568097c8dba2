#pragma once
// The text form of a patch (.qmj): the module file's content as a JSON document that a
// person can read, edit and compare. It holds the header, the snapshots by name, the
// Composer list and every module with its settings per snapshot; a snapshot a module holds
// just as the one before it is not written again. Converting a .qmp to the text and back
// gives the same bytes, records of types that don't run yet (kept whole, as base64) and
// anything past the content included.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Catalogue.h"

namespace quillmer {

// True for a path ending in ".qmj" (any case).
bool isPatchJsonPath(std::string_view path);

// Which types run here: their records are written out field by field, the others whole.
using BuiltTypeTest = std::function<bool(ModuleTypeId)>;

// Module file bytes to the text form. False with `reason` when they are not a module file.
bool patchToJson(const std::vector<uint8_t>& bytes, const BuiltTypeTest& built, std::string& text,
                 std::string& reason);

// The text form to module file bytes. False with `reason`: the line and column of a
// malformed document, or the place and the rule of a value that can't stand.
bool patchFromJson(std::string_view text, std::vector<uint8_t>& bytes, std::string& reason);

// The largest text form read: far more than any patch needs.
constexpr size_t kLargestPatchJson = size_t{256} << 20;

}  // namespace quillmer
