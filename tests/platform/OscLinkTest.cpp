// IPLink over real UDP on the loopback interface: two engines linked, what goes on the
// wire, and packets that aren't what they should be.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "../modules/ModuleHarness.h"
#include "modules/midi/Links.h"
#include "platform/OscLinkTransport.h"

using namespace quillmer;
using namespace quillmer::testing;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<uint8_t>;

// A UDP socket of the test's own on the loopback interface.
struct Udp {
    Udp() {
        fd = socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
        socklen_t n = sizeof a;
        getsockname(fd, reinterpret_cast<sockaddr*>(&a), &n);
        port = ntohs(a.sin_port);
        timeval wait{2, 0};
        setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    }
    ~Udp() { close(fd); }
    void sendTo(uint16_t to, const Bytes& bytes) const {
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        a.sin_port = htons(to);
        sendto(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&a), sizeof a);
    }
    Bytes receive() const {
        Bytes b(1500);
        const ssize_t n = recv(fd, b.data(), b.size(), 0);
        b.resize(n < 0 ? 0 : static_cast<size_t>(n));
        return b;
    }
    int fd;
    uint16_t port = 0;
};

// A free UDP port: one the system hands out and takes back.
uint16_t freePort() { return Udp().port; }

// OSC, encoded here by hand as any tool would put it on the wire.
void padded(Bytes& b, const std::string& s) {
    b.insert(b.end(), s.begin(), s.end());
    do b.push_back(0);
    while (b.size() % 4 != 0);
}
void bigEndian(Bytes& b, uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) b.push_back(static_cast<uint8_t>(v >> shift));
}
Bytes oscInt(const std::string& address, int32_t v) {
    Bytes b;
    padded(b, address);
    padded(b, ",i");
    bigEndian(b, static_cast<uint32_t>(v));
    return b;
}
Bytes oscFloat(const std::string& address, float f) {
    Bytes b;
    padded(b, address);
    padded(b, ",f");
    uint32_t bits = 0;
    std::memcpy(&bits, &f, 4);
    bigEndian(b, bits);
    return b;
}
Bytes oscString(const std::string& address, const std::string& s) {
    Bytes b;
    padded(b, address);
    padded(b, ",s");
    padded(b, s);
    return b;
}

struct LinkEnd {
    explicit LinkEnd(const LinkSettings& s) {
        link = &static_cast<IPLink&>(h.add("IPLink"));
        std::string error;
        EXPECT_TRUE(link->setSettings(s, error)) << error;
        EXPECT_TRUE(link->turnOn(error)) << error;
    }
    ModuleHarness h;
    IPLink* link = nullptr;
};

// Ticks `end` until `done` holds or two seconds pass.
template <class F>
bool tickUntil(LinkEnd& end, F done) {
    const auto deadline = std::chrono::steady_clock::now() + 2s;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        end.h.ticks(1);
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

LinkSettings listening(uint16_t port) {
    LinkSettings s;
    s.sendPort = 0;
    s.listenPort = port;
    return s;
}

}  // namespace

TEST(OscLink, TwoEnginesCarryAStreamOfValuesInOrder) {
    installOscLinkTransport();
    const uint16_t port = freePort();
    LinkEnd receiver(listening(port));
    LinkSettings out;
    out.listenPort = 0;
    out.sendPort = port;
    LinkEnd sender(out);
    for (int v = 1; v <= 40; ++v) {
        sender.h.set(*sender.link, 0, v);
        sender.h.ticks(1);
    }
    std::vector<int> heard;
    EXPECT_TRUE(tickUntil(receiver, [&] {
        const int v = receiver.h.out(*receiver.link);
        if (heard.empty() || heard.back() != v) heard.push_back(v);
        return v == 40;
    }));
    std::vector<int> expected{0};
    for (int v = 1; v <= 40; ++v) expected.push_back(v);
    if (!heard.empty() && heard.front() != 0) expected.erase(expected.begin());
    EXPECT_EQ(heard, expected) << "every value, one a tick, in the order sent";
    EXPECT_EQ(receiver.link->counts().received, 40u);
    EXPECT_EQ(sender.link->counts().sent, 40u);
    EXPECT_EQ(receiver.link->counts().bad, 0u);
    setLinkTransportFactory(nullptr);
}

TEST(OscLink, SendsPlainOscThatAnyToolReads) {
    installOscLinkTransport();
    Udp tool;
    LinkSettings s;
    s.listenPort = 0;
    s.sendPort = tool.port;
    s.address = "/synth/cutoff";
    LinkEnd end(s);
    end.h.set(*end.link, 0, 99);
    end.h.ticks(1);
    EXPECT_EQ(tool.receive(), oscInt("/synth/cutoff", 99));
    setLinkTransportFactory(nullptr);
}

TEST(OscLink, BadPacketsAreCountedAndIgnoredAndTheLinkGoesOn) {
    installOscLinkTransport();
    const uint16_t port = freePort();
    LinkSettings s = listening(port);
    s.unitFloats = true;
    LinkEnd end(s);
    Udp tool;
    tool.sendTo(port, {'n', 'o', 't', ' ', 'o', 's', 'c'});
    tool.sendTo(port, {'/', 'x'});                                    // cut short
    tool.sendTo(port, oscString("/quillmer/link", "loud"));          // no number
    tool.sendTo(port, oscInt("/other/address", 5));                  // not ours
    Bytes truncated = oscInt("/quillmer/link", 7);
    truncated.resize(truncated.size() - 2);
    tool.sendTo(port, truncated);
    tool.sendTo(port, oscFloat("/quillmer/link", 0.5f));             // a fader's half way
    EXPECT_TRUE(tickUntil(end, [&] { return end.h.out(*end.link) != 0; }));
    EXPECT_EQ(end.h.out(*end.link), 64);
    const LinkCounts c = end.link->counts();
    EXPECT_EQ(c.bad, 4u);
    EXPECT_EQ(c.ignored, 1u);
    EXPECT_EQ(c.received, 1u);
    tool.sendTo(port, oscInt("/quillmer/link", 300));
    EXPECT_TRUE(tickUntil(end, [&] { return end.h.out(*end.link) == 127; })) << "cut to 127";
    setLinkTransportFactory(nullptr);
}

TEST(OscLink, APortInUseIsNamedAndTheLinkStaysOff) {
    installOscLinkTransport();
    const uint16_t port = freePort();
    LinkEnd first(listening(port));
    ModuleHarness h;
    auto& second = static_cast<IPLink&>(h.add("IPLink"));
    std::string error;
    ASSERT_TRUE(second.setSettings(listening(port), error));
    EXPECT_FALSE(second.turnOn(error));
    EXPECT_NE(error.find(std::to_string(port)), std::string::npos) << error;
    EXPECT_FALSE(second.on());
    setLinkTransportFactory(nullptr);
}
