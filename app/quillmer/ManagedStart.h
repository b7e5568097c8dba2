#pragma once
// The start under a session manager (NSM_URL set): announce, wait for the manager to say
// which project to open, and take its client name for our MIDI ports, all before a port
// opens. Without NSM_URL, or when the manager can't be reached or refuses us, the program
// starts as usual.

#include <optional>
#include <string>

namespace quillmer {

class NsmClient;

struct ManagedStart {
    std::string folder;    // where the project lives
    std::string clientId;  // our client name in the session
};

// Waits at most `timeoutMs` for the manager. Problems are told on stderr.
std::optional<ManagedStart> joinSessionManager(NsmClient& client, const std::string& executable, int timeoutMs = 10000);

}  // namespace quillmer
