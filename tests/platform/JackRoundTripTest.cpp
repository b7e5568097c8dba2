// Real MIDI between programs, without sound hardware: a private JACK server with the dummy
// driver, our devices on one side and a plain RtMidi client of the test's on the other.

#include <gtest/gtest.h>
#include <unistd.h>

#include <RtMidi.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/RtMidiDeviceProvider.h"
#include "tests/platform/PrivateJackServer.h"

using namespace quillmer;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<uint8_t>;

template <class F>
bool eventually(F done, std::chrono::milliseconds limit = 5s) {
    for (auto waited = 0ms; waited < limit && !done(); waited += 20ms) std::this_thread::sleep_for(20ms);
    return done();
}

class JackRoundTrip : public ::testing::Test {
protected:
    static void SetUpTestSuite() { server = std::make_unique<PrivateJackServer>("test"); }
    static void TearDownTestSuite() { server.reset(); }
    void SetUp() override {
        if (!server->installed()) GTEST_SKIP() << "jackd is not installed (Debian package jackd2)";
        ASSERT_TRUE(server->started()) << "jackd could not be started";
        ASSERT_TRUE(server->ready()) << "the private JACK server " << server->name() << " did not come up";
    }

    static inline std::unique_ptr<PrivateJackServer> server;
};

}  // namespace

TEST_F(JackRoundTrip, OutAReachesAnotherProgramWithEveryByteInOrder) {
    RtMidiIn other(RtMidi::UNIX_JACK, "QuillmerTest");
    other.ignoreTypes(false, false, false);
    other.openVirtualPort("in");

    RtMidiDeviceProvider provider({MidiPortApi::Jack});
    const auto names = provider.outputNames();
    ASSERT_NE(std::find(names.begin(), names.end(), "JACK: QuillmerTest:in"), names.end());
    auto out = provider.makeOutput("JACK: QuillmerTest:in", 0);
    ASSERT_NE(out, nullptr);
    std::vector<MidiDeviceEvent> events;
    out->setEventHandler([&](const MidiDeviceEvent& e) { events.push_back(e); });
    ASSERT_TRUE(out->open()) << (events.empty() ? "" : events[0].text);

    // Other programs see our client and port by name.
    std::vector<std::string> visible;
    for (unsigned i = 0; i < other.getPortCount(); ++i) visible.push_back(other.getPortName(i));
    EXPECT_NE(std::find(visible.begin(), visible.end(), "Quillmer:Out A"), visible.end());

    // A JACK connection takes hold some cycles after it is asked for, and what is sent before
    // goes nowhere: a probe goes out until one arrives, then the test's own messages.
    const Bytes noteOff{0x80, 0, 0};
    std::vector<unsigned char> probe;
    bool carried = false;
    ASSERT_TRUE(eventually([&] {
        if (!carried) {
            out->sendNow(noteOff);
            other.getMessage(&probe);
            carried = !probe.empty();
        }
        return carried;
    })) << "the connection never carried a message";
    std::this_thread::sleep_for(100ms);  // probes still under way arrive before the drain
    while (other.getMessage(&probe), !probe.empty()) {
    }

    const std::vector<Bytes> sent{{0x90, 60, 100}, {249},         {0xB0, 7, 64}, {0xC0, 5}, {244},
                                  {0x80, 60, 0},   {0xE3, 0, 64}, {248},         {0x99, 38, 127}};
    for (const Bytes& message : sent) out->sendNow(message);

    std::vector<Bytes> received;
    ASSERT_TRUE(eventually([&] {
        std::vector<unsigned char> message;
        while (other.getMessage(&message), !message.empty()) received.emplace_back(message.begin(), message.end());
        return received.size() >= sent.size();
    })) << received.size() << " of " << sent.size() << " arrived";
    EXPECT_EQ(received, sent);
    out->close();
    EXPECT_TRUE(events.empty());
}

TEST_F(JackRoundTrip, InBDeliversChannelAndClockMessagesAndLeavesSysExOut) {
    RtMidiOut other(RtMidi::UNIX_JACK, "QuillmerTest");
    other.openVirtualPort("out");

    RtMidiDeviceProvider provider({MidiPortApi::Jack});
    auto in = provider.makeInput("JACK: QuillmerTest:out", 1);
    ASSERT_NE(in, nullptr);
    std::mutex mutex;
    std::vector<Bytes> received;
    in->setDataHandler([&](const std::vector<MidiInputMessage>& messages) {
        std::lock_guard<std::mutex> held(mutex);
        for (const MidiInputMessage& m : messages) received.push_back({m.status, m.data1, m.data2});
    });
    ASSERT_TRUE(in->open());
    in->start();

    // The same probe as above, from the other side, before the messages under test.
    bool carried = false;
    ASSERT_TRUE(eventually([&] {
        if (!carried) {
            Bytes message{0x80, 0, 0};
            other.sendMessage(&message);
            std::this_thread::sleep_for(5ms);
            std::lock_guard<std::mutex> held(mutex);
            carried = !received.empty();
        }
        return carried;
    })) << "the connection never carried a message";
    std::this_thread::sleep_for(100ms);  // probes still under way arrive before the clear
    {
        std::lock_guard<std::mutex> held(mutex);
        received.clear();
    }

    const std::vector<Bytes> sent{
        {0x90, 64, 90}, {0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7}, {248}, {0xC2, 9}, {0x80, 64, 0}};
    for (Bytes message : sent) other.sendMessage(&message);
    ASSERT_TRUE(eventually([&] {
        std::lock_guard<std::mutex> held(mutex);
        return received.size() >= 4;
    }));
    std::this_thread::sleep_for(50ms);  // anything more would be a fault
    std::lock_guard<std::mutex> held(mutex);
    EXPECT_EQ(received, (std::vector<Bytes>{{0x90, 64, 90}, {248, 0, 0}, {0xC2, 9, 0}, {0x80, 64, 0}}));
}
