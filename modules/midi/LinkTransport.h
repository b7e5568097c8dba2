#pragma once
// The transport of an IPLink: values out to a host and port, values in from a port, under
// one message address. The platform layer supplies it (Open Sound Control over UDP); until
// it does, links can't be turned on.
//
// Thread rule: open() and close() run under the engine lock but outside the tick; send()
// and receive() run on the tick and never block or allocate. Counts may be read any time.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace quillmer {

struct LinkSettings {
    std::string host = "127.0.0.1";  // where values go
    uint16_t sendPort = 9000;        // 0: send nothing
    uint16_t listenPort = 9000;      // 0: receive nothing
    std::string address = "/quillmer/link";
    bool unitFloats = false;         // a float in 0..1 received means 0..127
    bool operator==(const LinkSettings&) const = default;
};

struct LinkCounts {
    uint32_t received = 0;  // values taken in
    uint32_t sent = 0;
    uint32_t bad = 0;       // packets that aren't messages, or carry no number
    uint32_t ignored = 0;   // messages to another address
    uint32_t dropped = 0;   // values lost to a full queue, either way
    bool operator==(const LinkCounts&) const = default;
};

class LinkTransport {
public:
    virtual ~LinkTransport() = default;
    // Starts listening and sending; false with `error` naming the host or port.
    virtual bool open(const LinkSettings& settings, std::string& error) = 0;
    virtual void close() = 0;
    // Queues a value to go out; false (and counted) when the queue is full.
    virtual bool send(uint8_t value) = 0;
    // The oldest value received and not taken yet.
    virtual bool receive(uint8_t& value) = 0;
    virtual LinkCounts counts() const = 0;
    // The port it listens on (the one the system chose when asked for any).
    virtual uint16_t listeningPort() const = 0;
};

using LinkTransportFactory = std::function<std::unique_ptr<LinkTransport>()>;
// Installed once at start by the program (and by tests).
void setLinkTransportFactory(LinkTransportFactory factory);
// A new transport; null when none is installed.
std::unique_ptr<LinkTransport> makeLinkTransport();

}  // namespace quillmer
