#pragma once
// Every output name a connection has stored, kept once: a stored connection holds a small
// NameId instead of a string. Id 0 is the empty name. Names are never dropped; a table
// grows only by the distinct names an engine has seen. Needs the engine lock.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/SnapshotRows.h"

namespace quillmer {

class NameTable {
public:
    NameTable();

    NameId intern(std::string_view utf8);
    // A name as a file stores it, in Windows-1252.
    NameId internCp1252(std::string_view bytes);
    std::optional<NameId> find(std::string_view utf8) const;

    const std::string& text(NameId id) const { return *texts_[id]; }
    const std::string& cp1252(NameId id) const { return cp1252_[id]; }
    size_t size() const { return texts_.size(); }

private:
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
    };
    using Index = std::unordered_map<std::string, NameId, Hash, std::equal_to<>>;
    Index ids_;       // UTF-8 text -> id
    Index rawIds_;    // Windows-1252 bytes -> id
    std::vector<const std::string*> texts_;  // keys of ids_, which stay put
    std::vector<std::string> cp1252_;
};

}  // namespace quillmer
