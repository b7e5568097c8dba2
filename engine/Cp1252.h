#pragma once
// Text on disk is Windows-1252; in memory it is UTF-8.

#include <string>
#include <string_view>

namespace quillmer {

std::string cp1252ToUtf8(std::string_view bytes);
// Characters Windows-1252 can't hold become '?'.
std::string utf8ToCp1252(std::string_view text);

}  // namespace quillmer
