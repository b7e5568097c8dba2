#pragma once
// Author and modifier names as a patch stores them, and the title-bar caption made of them.

#include <string>
#include <string_view>

namespace quillmer {

// A self-inverse, same-length text transform: printable ASCII rotated by 47 places.
std::string transformName(std::string_view name);

// " (Auth: NAME)" or " (Mod: MODIFIER  Auth: AUTHOR)", or "" when both are empty.
// `version` is the file's version number (major * 100 + minor * 10 + revision): files of
// 300..302 kept the modifier plain, 300..301 the author too, so those are transformed back.
std::string BuildAuthorCaption(std::string author, std::string modifier, int version);

}  // namespace quillmer
