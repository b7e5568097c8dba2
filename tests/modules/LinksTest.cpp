// IPLink over a transport of queues: off until turned on, what it sends and when, values in
// one per tick, its settings block.

#include <gtest/gtest.h>

#include <deque>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/midi/Links.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

struct Wire {
    std::vector<int> out;
    std::deque<uint8_t> in;
    int opened = 0;
    bool refuse = false;
};

class QueueTransport final : public LinkTransport {
public:
    explicit QueueTransport(Wire& wire) : wire_(wire) {}
    bool open(const LinkSettings& settings, std::string& error) override {
        if (wire_.refuse) {
            error = "Unable to listen on UDP port " + std::to_string(settings.listenPort);
            return false;
        }
        ++wire_.opened;
        return true;
    }
    void close() override {}
    bool send(uint8_t value) override {
        wire_.out.push_back(value);
        return true;
    }
    bool receive(uint8_t& value) override {
        if (wire_.in.empty()) return false;
        value = wire_.in.front();
        wire_.in.pop_front();
        return true;
    }
    LinkCounts counts() const override { return {}; }
    uint16_t listeningPort() const override { return 9000; }

private:
    Wire& wire_;
};

struct LinkHarness : ModuleHarness {
    LinkHarness() {
        setLinkTransportFactory([this] { return std::make_unique<QueueTransport>(wire); });
    }
    ~LinkHarness() { setLinkTransportFactory(nullptr); }
    Wire wire;
};

}  // namespace

TEST(IPLink, OffUntilTurnedOnThenSendsOnChangeAndOnStrobe) {
    LinkHarness h;
    auto& link = static_cast<IPLink&>(h.add("IPLink"));
    h.set(link, 0, 40);
    h.wire.in = {5};
    h.ticks(3);
    EXPECT_TRUE(h.wire.out.empty());
    EXPECT_EQ(h.out(link), 0) << "nothing comes in while off";
    std::string error;
    ASSERT_TRUE(link.turnOn(error)) << error;
    h.ticks(3);
    EXPECT_EQ(h.wire.out, (std::vector<int>{40})) << "the value as it stands, then only changes";
    h.set(link, 0, 41);
    h.ticks(2);
    h.edge(link, 1);
    h.ticks(2);
    EXPECT_EQ(h.wire.out, (std::vector<int>{40, 41, 41}));
    link.turnOff();
    h.set(link, 0, 42);
    h.ticks(2);
    EXPECT_EQ(h.wire.out.size(), 3u);
    ASSERT_TRUE(link.turnOn(error));
    h.ticks(1);
    EXPECT_EQ(h.wire.out.back(), 42);
}

TEST(IPLink, ValuesComeInOnePerTickInTheirOrder) {
    LinkHarness h;
    auto& link = static_cast<IPLink&>(h.add("IPLink"));
    std::string error;
    ASSERT_TRUE(link.turnOn(error));
    h.wire.in = {10, 20, 20, 30};
    EXPECT_EQ(h.values(link, 6), (std::vector<int>{10, 20, 20, 30, 30, 30}));
}

TEST(IPLink, RefusedOpenAndBadSettingsLeaveItOff) {
    LinkHarness h;
    auto& link = static_cast<IPLink&>(h.add("IPLink"));
    std::string error;
    h.wire.refuse = true;
    EXPECT_FALSE(link.turnOn(error));
    EXPECT_FALSE(link.on());
    EXPECT_NE(link.status.find("9000"), std::string::npos) << link.status;
    h.wire.refuse = false;
    LinkSettings bad = link.settings();
    for (const char* address : {"", "no-slash", "/with space", "/a*b", "/x/"
                                "0123456789012345678901234567890123456789012345678901234567890123"}) {
        bad.address = address;
        error.clear();
        EXPECT_FALSE(link.setSettings(bad, error)) << address;
        EXPECT_FALSE(error.empty());
    }
    bad = link.settings();
    bad.host = "";
    EXPECT_FALSE(link.setSettings(bad, error));
    EXPECT_EQ(link.settings(), LinkSettings{}) << "unchanged";
    setLinkTransportFactory(nullptr);
    EXPECT_FALSE(link.turnOn(error)) << "no transport installed";
}

TEST(IPLink, NewSettingsRestartALinkThatIsOn) {
    LinkHarness h;
    auto& link = static_cast<IPLink&>(h.add("IPLink"));
    std::string error;
    ASSERT_TRUE(link.turnOn(error));
    LinkSettings s = link.settings();
    s.sendPort = 9100;
    ASSERT_TRUE(link.setSettings(s, error)) << error;
    EXPECT_TRUE(link.on());
    EXPECT_EQ(h.wire.opened, 2);
}

TEST(IPLink, RecordKeepsSettingsAndSpareBytesAndStartsOff) {
    LinkHarness h;
    auto& link = static_cast<IPLink&>(h.add("IPLink"));
    LinkSettings s;
    s.host = "192.168.1.20";
    s.sendPort = 57120;
    s.listenPort = 0;
    s.address = "/quillmer/bass";
    s.unitFloats = true;
    std::string error;
    ASSERT_TRUE(link.setSettings(s, error));
    ASSERT_TRUE(link.turnOn(error));
    std::vector<uint8_t> bytes = body(h, link);
    ByteWriter whole;
    for (int i = 0; i < 9; ++i) whole.i16(0);
    whole.str(link.Name);
    whole.raw(bytes);
    ByteReader in(whole.bytes());
    skipRecord(in, parseLayout(fileSlotOf(link.type()).layout));
    EXPECT_EQ(in.remaining(), 0u);

    bytes[bytes.size() - 1] = 0xAB;  // a spare byte at the block's end
    bytes[bytes.size() - 128 + 8 + 20] = 0xCD;  // past the host's end: unused
    auto back = readBack(h, "IPLink", bytes);
    auto& read = static_cast<IPLink&>(*back);
    EXPECT_EQ(read.settings(), s);
    EXPECT_FALSE(read.on()) << "a loaded link is off until turned on";
    EXPECT_EQ(body(h, read), bytes) << "byte for byte";
}
