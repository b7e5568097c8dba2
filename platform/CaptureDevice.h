#pragma once
// An output device for tests and measurements: it keeps every byte of every message it is
// given, with the clock time it arrived. Put it behind a TimeStampedOutput to have sendAt()
// messages kept at the time they were delivered.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/TimerService.h"
#include "platform/ImmediateMidiOutput.h"

namespace quillmer {

struct CapturedMessage {
    std::vector<uint8_t> bytes;
    int64_t atMicros = 0;  // the clock's time when the message arrived
};

// What a capture device kept. Safe from any thread.
class CaptureLog {
public:
    void add(std::span<const uint8_t> bytes, int64_t atMicros);
    std::vector<CapturedMessage> messages() const;
    size_t size() const;
    void clear();
    void reserve(size_t count);
    // Waits until at least `count` messages are kept or `timeout` passes; true if they are.
    bool waitFor(size_t count, std::chrono::milliseconds timeout) const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable grown_;
    std::vector<CapturedMessage> messages_;
};

class CaptureDevice final : public ImmediateMidiOutput {
public:
    // `clock` must outlive the device; the log may be shared with the test that reads it.
    CaptureDevice(std::string name, const TimerService& clock,
                  std::shared_ptr<CaptureLog> log = std::make_shared<CaptureLog>());

    bool open() override;
    void close() override { open_ = false; }
    bool isOpen() const override { return open_; }
    // Kept even while closed: a test sees what a closed port would have lost.
    void sendNow(std::span<const uint8_t> bytes) override;

    // A later open() fails with an Error event, as a busy device would.
    void refuseToOpen() { refuse_ = true; }
    const std::shared_ptr<CaptureLog>& log() const { return log_; }

private:
    const TimerService& clock_;
    std::shared_ptr<CaptureLog> log_;
    bool open_ = false;
    bool refuse_ = false;
};

}  // namespace quillmer
