#include "shell/AuthorName.h"

namespace quillmer {

std::string transformName(std::string_view name) {
    std::string out(name);
    for (char& c : out)
        if (c >= 33 && c <= 126) c = static_cast<char>(33 + (c - 33 + 47) % 94);
    return out;
}

std::string BuildAuthorCaption(std::string author, std::string modifier, int version) {
    if (version >= 300 && version <= 302) modifier = transformName(modifier);
    if (version >= 300 && version <= 301) author = transformName(author);
    if (author == "Anonymous") author.clear();
    if (modifier == "Anonymous") modifier.clear();
    if (author.empty() && modifier.empty()) return "";
    if (author.empty() || modifier.empty() || author == modifier)
        return " (Auth: " + (author.empty() ? modifier : author) + ")";
    return " (Mod: " + modifier + "  Auth: " + author + ")";
}

}  // namespace quillmer
