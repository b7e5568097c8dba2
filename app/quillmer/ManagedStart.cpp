#include "app/quillmer/ManagedStart.h"

#include <chrono>
#include <cstdio>

#include "platform/NsmClient.h"
#include "platform/RtMidiDeviceProvider.h"

namespace quillmer {

std::optional<ManagedStart> joinSessionManager(NsmClient& client, const std::string& executable, int timeoutMs) {
    const std::string url = NsmClient::managerUrlFromEnvironment();
    if (url.empty()) return std::nullopt;
    std::optional<ManagedStart> start;
    NsmClient::Handlers handlers;
    handlers.open = [&](const std::string& path, const std::string&, const std::string& clientId) {
        start = ManagedStart{path, clientId};
    };
    client.setHandlers(handlers);
    std::string reason;
    if (!client.announce(url, "Quillmer", executable, reason)) {
        std::fprintf(stderr, "quillmer: %s; starting without it\n", reason.c_str());
        return std::nullopt;
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!start && client.refusal().empty() && std::chrono::steady_clock::now() < deadline) client.poll(50);
    if (!client.refusal().empty()) {
        std::fprintf(stderr, "quillmer: the session manager at %s refused us: %s\n", url.c_str(), client.refusal().c_str());
        return std::nullopt;
    }
    if (!start) {
        std::fprintf(stderr, "quillmer: the session manager at %s did not answer; starting without it\n", url.c_str());
        return std::nullopt;
    }
    client.setHandlers({});
    setMidiClientName(start->clientId);
    return start;
}

}  // namespace quillmer
