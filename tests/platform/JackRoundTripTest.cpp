// Real MIDI between programs, without sound hardware: a private JACK server with the dummy
// driver, our devices on one side and a plain RtMidi client of the test's on the other.

#include <gtest/gtest.h>
#include <signal.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <RtMidi.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <thread>

#include "platform/RtMidiDeviceProvider.h"

extern char** environ;

using namespace quillmer;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<uint8_t>;

std::string findOnPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream dirs(path ? path : "/usr/bin:/bin");
    for (std::string dir; std::getline(dirs, dir, ':');) {
        const std::string candidate = dir + "/" + program;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return {};
}

template <class F>
bool eventually(F done, std::chrono::milliseconds limit = 5s) {
    for (auto waited = 0ms; waited < limit && !done(); waited += 20ms) std::this_thread::sleep_for(20ms);
    return done();
}

class JackRoundTrip : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        const std::string jackd = findOnPath("jackd");
        if (jackd.empty()) return;
        serverName = "quillmer-test-" + std::to_string(::getpid());
        setenv("JACK_DEFAULT_SERVER", serverName.c_str(), 1);
        // A client timeout of 5 s: under ThreadSanitizer a client's first cycles are slow, and
        // the default would drop it from the graph.
        std::vector<std::string> args{"jackd", "--no-realtime", "-t", "5000", "-n", serverName, "-d", "dummy",
                                      "-r",    "48000",         "-p", "256"};
        std::vector<char*> argv;
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t quiet;
        posix_spawn_file_actions_init(&quiet);
        posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
        if (posix_spawn(&server, jackd.c_str(), &quiet, nullptr, argv.data(), environ) != 0) server = 0;
        posix_spawn_file_actions_destroy(&quiet);
        if (server > 0) ready = eventually([] { return apiProblem(MidiPortApi::Jack).empty(); });
    }
    static void TearDownTestSuite() {
        if (server > 0) {
            ::kill(server, SIGTERM);
            int status = 0;
            ::waitpid(server, &status, 0);
        }
        unsetenv("JACK_DEFAULT_SERVER");
    }
    void SetUp() override {
        if (serverName.empty()) GTEST_SKIP() << "jackd is not installed (Debian package jackd2)";
        ASSERT_GT(server, 0) << "jackd could not be started";
        ASSERT_TRUE(ready) << "the private JACK server " << serverName << " did not come up";
    }

    static inline std::string serverName;
    static inline pid_t server = 0;
    static inline bool ready = false;
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
