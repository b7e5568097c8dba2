#include "engine/NameTable.h"

#include "engine/Cp1252.h"

namespace quillmer {

NameTable::NameTable() { intern(""); }

NameId NameTable::intern(std::string_view utf8) {
    if (const auto it = ids_.find(utf8); it != ids_.end()) return it->second;
    const auto id = static_cast<NameId>(texts_.size());
    const auto [it, added] = ids_.emplace(std::string(utf8), id);
    texts_.push_back(&it->first);
    cp1252_.push_back(utf8ToCp1252(utf8));
    return id;
}

NameId NameTable::internCp1252(std::string_view bytes) {
    if (const auto it = rawIds_.find(bytes); it != rawIds_.end()) return it->second;
    const NameId id = intern(cp1252ToUtf8(bytes));
    rawIds_.emplace(std::string(bytes), id);
    return id;
}

std::optional<NameId> NameTable::find(std::string_view utf8) const {
    if (const auto it = ids_.find(utf8); it != ids_.end()) return it->second;
    return std::nullopt;
}

}  // namespace quillmer
