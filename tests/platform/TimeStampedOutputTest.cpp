// The time-stamped queue: delivery order and times in virtual time, what flush, the time
// base and close do to queued messages, the queue-empty event; the same queue on its real-time
// thread; the capture device it is measured with.

#include <gtest/gtest.h>

#include <chrono>

#include "engine/VirtualTimerService.h"
#include "platform/CaptureDevice.h"
#include "platform/RealTimeStampedOutput.h"
#include "platform/RealTimeTimerService.h"
#include "platform/VirtualTimeStampedOutput.h"

using namespace quillmer;

namespace {

using Bytes = std::vector<uint8_t>;

class VirtualQueue : public ::testing::Test {
protected:
    VirtualQueue() {
        auto capture = std::make_unique<CaptureDevice>("capture", timers, log);
        output = std::make_unique<VirtualTimeStampedOutput>(std::move(capture), timers);
        output->setEventHandler([this](const MidiDeviceEvent& e) {
            if (e.kind == MidiDeviceEvent::Kind::QueueEmpty) queueEmptyAt.push_back(timers.nowMicros());
            if (e.kind == MidiDeviceEvent::Kind::MessagePlayed) playedAt.push_back(timers.nowMicros());
        });
        output->open();
    }

    void send(Bytes bytes, int32_t stampMs) { output->sendAt(bytes, stampMs); }
    std::vector<Bytes> deliveredBytes() const {
        std::vector<Bytes> all;
        for (const CapturedMessage& m : log->messages()) all.push_back(m.bytes);
        return all;
    }
    std::vector<int64_t> deliveredTimes() const {
        std::vector<int64_t> all;
        for (const CapturedMessage& m : log->messages()) all.push_back(m.atMicros);
        return all;
    }

    VirtualTimerService timers;
    std::shared_ptr<CaptureLog> log = std::make_shared<CaptureLog>();
    std::unique_ptr<VirtualTimeStampedOutput> output;
    std::vector<int64_t> queueEmptyAt;
    std::vector<int64_t> playedAt;
};

}  // namespace

TEST_F(VirtualQueue, DeliversAtTimeBasePlusStampInStampOrderAndFifoForEqualStamps) {
    timers.advanceTo(3'000);  // the time base starts off the clock's zero
    output->startTimeBase();
    send({0x90, 60, 100}, 20);
    send({0x80, 60, 0}, 10);
    send({0x90, 62, 1}, 20);  // same stamp as the first: after it
    send({0x90, 64, 2}, 20);
    send({249}, 5);
    timers.advanceTo(100'000);

    EXPECT_EQ(deliveredBytes(),
              (std::vector<Bytes>{{249}, {0x80, 60, 0}, {0x90, 60, 100}, {0x90, 62, 1}, {0x90, 64, 2}}));
    EXPECT_EQ(deliveredTimes(), (std::vector<int64_t>{8'000, 13'000, 23'000, 23'000, 23'000}));
}

TEST_F(VirtualQueue, NothingIsDeliveredBeforeItsStampEvenWhenTheClockStopsJustShort) {
    output->startTimeBase();
    send({0x90, 60, 100}, 50);
    timers.advanceTo(49'999);
    EXPECT_EQ(log->size(), 0u);
    timers.advanceTo(50'000);
    EXPECT_EQ(log->size(), 1u);
}

TEST_F(VirtualQueue, AStampAlreadyDueGoesOutAtOnceAfterEarlierDueMessages) {
    output->startTimeBase();
    send({0x90, 1, 1}, 10);
    timers.advanceTo(30'000);
    send({0x90, 2, 2}, 40);
    send({0x90, 3, 3}, 25);  // late: due 5 ms ago
    EXPECT_EQ(deliveredBytes(), (std::vector<Bytes>{{0x90, 1, 1}, {0x90, 3, 3}}));
    EXPECT_EQ(deliveredTimes().back(), 30'000);
    timers.advanceTo(40'000);
    EXPECT_EQ(log->size(), 3u);
}

TEST_F(VirtualQueue, SendNowOvertakesWhatIsQueued) {
    output->startTimeBase();
    send({0x90, 60, 100}, 10);
    const Bytes sysEx{0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7};
    output->sendNow(sysEx);
    timers.advanceTo(20'000);
    EXPECT_EQ(deliveredBytes(), (std::vector<Bytes>{sysEx, {0x90, 60, 100}}));
}

TEST_F(VirtualQueue, QueuedMessagesWaitWhileTheTimeBaseIsStoppedAndCountFromItsNewStart) {
    send({0x90, 60, 100}, 10);  // queued before any time base runs
    timers.advanceTo(50'000);
    EXPECT_EQ(log->size(), 0u);

    output->startTimeBase();
    send({0x90, 61, 100}, 30);
    timers.advanceTo(70'000);
    output->stopTimeBase();
    timers.advanceTo(200'000);
    EXPECT_EQ(log->size(), 1u);

    output->startTimeBase();  // stamp 30 is now 30 ms after 200 ms
    timers.advanceTo(229'000);
    EXPECT_EQ(log->size(), 1u);
    timers.advanceTo(230'000);
    EXPECT_EQ(deliveredTimes(), (std::vector<int64_t>{60'000, 230'000}));
}

TEST_F(VirtualQueue, FlushCloseAndResetDropWhatIsQueuedButNotWhatComesAfter) {
    output->startTimeBase();
    send({0x90, 60, 100}, 10);
    send({0x90, 61, 100}, 20);
    output->flush();
    send({0x90, 62, 100}, 30);
    timers.advanceTo(40'000);
    EXPECT_EQ(deliveredBytes(), (std::vector<Bytes>{{0x90, 62, 100}}));

    send({0x90, 63, 100}, 50);
    output->reset();
    send({0x90, 64, 100}, 60);
    output->close();
    EXPECT_EQ(output->queuedCount(), 0u);
    EXPECT_FALSE(output->timeBaseRunning());
    timers.advanceTo(100'000);
    EXPECT_EQ(log->size(), 1u);
}

TEST_F(VirtualQueue, QueueEmptyIsRaisedWhenDeliveryRunsDryWhileTheTimeBaseRuns) {
    output->startTimeBase();
    send({249}, 10);
    send({249}, 20);
    timers.advanceTo(15'000);
    EXPECT_TRUE(queueEmptyAt.empty());  // one still waits
    timers.advanceTo(40'000);
    EXPECT_EQ(queueEmptyAt, (std::vector<int64_t>{20'000}));

    // Kept fed, as the engine does with a filler every tick: never dry.
    for (int32_t tick = 1; tick <= 20; ++tick) {
        send({249}, 40 + 10 * tick + 50);
        timers.advanceByMs(10);
    }
    EXPECT_EQ(queueEmptyAt.size(), 1u);

    // A flush or a stopped time base is not the queue running dry.
    output->flush();
    send({249}, 500);
    output->stopTimeBase();
    timers.advanceTo(1'000'000);
    EXPECT_EQ(queueEmptyAt.size(), 1u);
}

TEST_F(VirtualQueue, AMessageQueuedFromTheQueueEmptyHandlerIsStillDelivered) {
    output->setEventHandler([this](const MidiDeviceEvent& e) {
        if (e.kind == MidiDeviceEvent::Kind::QueueEmpty && log->size() == 1) send({249}, 30);
    });
    output->startTimeBase();
    send({249}, 10);
    timers.advanceTo(100'000);
    EXPECT_EQ(deliveredTimes(), (std::vector<int64_t>{10'000, 30'000}));
}

TEST_F(VirtualQueue, ErrorsOfTheWrappedDeviceReachTheQueuesHandler) {
    auto capture = std::make_unique<CaptureDevice>("busy one", timers);
    capture->refuseToOpen();
    VirtualTimeStampedOutput busy(std::move(capture), timers);
    std::vector<MidiDeviceEvent> events;
    busy.setEventHandler([&](const MidiDeviceEvent& e) { events.push_back(e); });
    EXPECT_FALSE(busy.open());
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, MidiDeviceEvent::Kind::Error);
    EXPECT_NE(events[0].text.find("busy one"), std::string::npos);
}

// The MIDI out lamp flashes when a message with a value plays, not when it is queued, and
// not for the latency filler.
TEST_F(VirtualQueue, PlayingAMessageWithAValueIsReportedAtItsTime) {
    output->startTimeBase();
    send({249}, 5);
    send({0x90, 60, 100}, 30);
    timers.advanceTo(20'000);
    EXPECT_TRUE(playedAt.empty());
    timers.advanceTo(40'000);
    EXPECT_EQ(playedAt, std::vector<int64_t>{30'000});
}

TEST(CaptureDevice, KeepsEveryByteWithTheClockTimeOfArrival) {
    VirtualTimerService timers;
    CaptureDevice capture("capture", timers);
    capture.open();
    timers.advanceTo(1'234);
    const Bytes sysEx{0xF0, 0x43, 0x10, 0x4C, 0x00, 0x00, 0x7E, 0x00, 0xF7};
    capture.sendNow(sysEx);
    timers.advanceTo(5'000);
    capture.sendAt(Bytes{0xC0, 5}, 999);  // alone, it has no queue: kept now
    const auto kept = capture.log()->messages();
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].bytes, sysEx);
    EXPECT_EQ(kept[0].atMicros, 1'234);
    EXPECT_EQ(kept[1].bytes, (Bytes{0xC0, 5}));
    EXPECT_EQ(kept[1].atMicros, 5'000);
}

// The real-time thread keeps the order; how close it keeps to the stamps is measured in bench/.
TEST(RealTimeQueue, DeliversEverythingInStampOrderAndStopsWithMessagesStillQueued) {
    RealTimeTimerService clock;
    auto log = std::make_shared<CaptureLog>();
    const auto stampOf = [](uint8_t note) { return int32_t{2} + (49 - note) / 10; };  // bunches, reversed
    {
        RealTimeStampedOutput output(std::make_unique<CaptureDevice>("capture", clock, log), clock);
        output.open();
        output.startTimeBase();
        for (uint8_t note = 0; note < 50; ++note) output.sendAt(Bytes{0x90, note, 1}, stampOf(note));
        ASSERT_TRUE(log->waitFor(50, std::chrono::seconds(5)));
        output.sendAt(Bytes{0x90, 0, 0}, 60'000);  // still queued when the device goes
        const auto kept = log->messages();
        for (size_t i = 1; i < kept.size(); ++i) {
            const uint8_t before = kept[i - 1].bytes[1], now = kept[i].bytes[1];
            EXPECT_LE(stampOf(before), stampOf(now));
            if (stampOf(before) == stampOf(now)) {
                EXPECT_LT(before, now);
            }
        }
    }
    EXPECT_EQ(log->size(), 50u);
}
