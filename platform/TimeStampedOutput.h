#pragma once
// A time-stamped queue of our own in front of a device that can only send at once.
// sendAt(bytes, stamp) delivers the message when the clock reaches time-base start + stamp,
// earliest stamp first and in arrival order among equal stamps. While the time base is
// stopped, queued messages wait. When delivery empties the queue while the time base runs,
// a QueueEmpty event is raised (the engine keeps it fed with a filler byte every tick).
//
// Two ways to deliver, one subclass each: RealTimeStampedOutput (its own high-priority
// thread) and VirtualTimeStampedOutput (timers of a virtual clock, exact and repeatable).
//
// Thread rule: the MidiOutputDevice calls come from one thread at a time (the engine's,
// under its lock); delivery may run on another. Calls into the wrapped device never overlap.

#include <memory>
#include <mutex>
#include <vector>

#include "engine/MidiDevice.h"
#include "engine/TimerService.h"
#include "platform/TimeStampedQueue.h"

namespace quillmer {

class TimeStampedOutput : public MidiOutputDevice {
public:
    // `clock` gives the time; it must outlive this device.
    TimeStampedOutput(std::unique_ptr<MidiOutputDevice> device, const TimerService& clock);
    ~TimeStampedOutput() override;

    const std::string& name() const final { return device_->name(); }
    bool open() final;
    // Drops what is queued and stops the time base, then closes the device.
    void close() final;
    bool isOpen() const final { return device_->isOpen(); }
    void sendNow(std::span<const uint8_t> bytes) final;
    void sendAt(std::span<const uint8_t> bytes, int32_t stampMs) final;
    void flush() final;
    void startTimeBase() final;
    void stopTimeBase() final;
    // Drops what is queued and resets the device.
    void reset() final;

    // The wrapped device, for what only it knows (the synth's render, the capture's log).
    MidiOutputDevice& device() { return *device_; }
    size_t queuedCount() const;
    bool timeBaseRunning() const;
    // The clock time of stamp 0: when the time base last started.
    int64_t timeBaseStartMicros() const;

protected:
    // Called after the queue or the time base changed, with no lock held.
    virtual void scheduleChanged() = 0;
    // Sends everything due at `nowMicros` in order and raises QueueEmpty when that empties
    // the queue while the time base runs. Returns the clock time at which the next message
    // is due, or -1 when none waits for the running time base. One delivering thread only.
    int64_t deliverDue(int64_t nowMicros);

    const TimerService& clock_;
    mutable std::mutex mutex_;  // guards the queue and the time base

private:
    std::unique_ptr<MidiOutputDevice> device_;
    std::mutex deviceMutex_;  // calls into device_ one at a time
    TimeStampedQueue queue_;
    bool running_ = false;
    int64_t baseMicros_ = 0;  // clock time of stamp 0
    std::vector<StampedMessage> batch_;  // due messages on their way out; delivery thread only
};

}  // namespace quillmer
