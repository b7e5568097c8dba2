#pragma once
// `quillmer-cli info`: what a patch file holds, as text or JSON.

#include <ostream>
#include <string>

namespace quillmer {

class Session;

// A JSON string literal of `s`, quotes included.
std::string jsonString(const std::string& s);
// Writes the open patch's header fields, snapshots, Composer list and every module.
void writePatchInfo(Session& session, std::ostream& out, bool json);

}  // namespace quillmer
