// What reaches another program through the ALSA sequencer. The sequencer carries events, not
// bytes: RtMidi encodes each message as an event, and the statuses 244 (the clock reset a
// master sends its slave) and 249 (the latency filler) have no event. RtMidi drops them with
// a warning, which must not close the port. Runs where the sequencer's device exists; JACK,
// which carries bytes, is tested in JackRoundTripTest.

#include <gtest/gtest.h>
#include <unistd.h>

#include <RtMidi.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/RtMidiDeviceProvider.h"

using namespace quillmer;
using namespace std::chrono_literals;

namespace {
using Bytes = std::vector<uint8_t>;
}

TEST(AlsaSequencer, TheClockResetAndTheFillerNeverReachTheWireAndThePortStaysOpen) {
    if (::access("/dev/snd/seq", F_OK) != 0)
        GTEST_SKIP() << "no ALSA sequencer on this machine (/dev/snd/seq is missing; the snd-seq module makes it)";
    RtMidiIn other(RtMidi::LINUX_ALSA, "QuillmerTest");
    other.ignoreTypes(false, false, false);
    other.openVirtualPort("in");

    RtMidiDeviceProvider provider({MidiPortApi::Alsa});
    const auto names = provider.outputNames();
    const auto found = std::find_if(names.begin(), names.end(),
                                    [](const std::string& n) { return n.rfind("ALSA: QuillmerTest:in", 0) == 0; });
    ASSERT_NE(found, names.end());
    auto out = provider.makeOutput(*found, 0);
    ASSERT_NE(out, nullptr);
    std::vector<MidiDeviceEvent> events;
    out->setEventHandler([&](const MidiDeviceEvent& e) { events.push_back(e); });
    ASSERT_TRUE(out->open()) << (events.empty() ? "" : events[0].text);

    const std::vector<Bytes> sent{{0x90, 60, 100}, {249}, {0xB0, 7, 64}, {244}, {0x80, 60, 0}, {248}, {0xC0, 5}};
    for (const Bytes& message : sent) out->sendNow(message);

    std::vector<Bytes> received;
    const auto deadline = std::chrono::steady_clock::now() + 2s;
    while (std::chrono::steady_clock::now() < deadline) {  // long enough for anything late
        std::vector<unsigned char> message;
        while (other.getMessage(&message), !message.empty()) received.emplace_back(message.begin(), message.end());
        std::this_thread::sleep_for(20ms);
    }
    std::string seen;
    for (const Bytes& m : received) {
        if (!seen.empty()) seen += ' ';
        seen += std::to_string(m[0]);
    }
    RecordProperty("statuses_received", seen);
    EXPECT_EQ(received, (std::vector<Bytes>{{0x90, 60, 100}, {0xB0, 7, 64}, {0x80, 60, 0}, {248}, {0xC0, 5}}))
        << "statuses that arrived: " << seen;
    EXPECT_TRUE(out->isOpen());
    EXPECT_TRUE(events.empty()) << "RtMidi's warning about an event-less status closes nothing";
    out->close();
}
