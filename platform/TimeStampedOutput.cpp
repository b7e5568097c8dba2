#include "platform/TimeStampedOutput.h"

namespace quillmer {

TimeStampedOutput::TimeStampedOutput(std::unique_ptr<MidiOutputDevice> device, const TimerService& clock)
    : clock_(clock), device_(std::move(device)) {
    batch_.reserve(256);
    // The device's own events (errors) are ours.
    device_->setEventHandler([this](const MidiDeviceEvent& event) { raise(event); });
}

TimeStampedOutput::~TimeStampedOutput() { device_->setEventHandler(nullptr); }

bool TimeStampedOutput::open() {
    std::lock_guard<std::mutex> held(deviceMutex_);
    return device_->open();
}

void TimeStampedOutput::close() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        queue_.clear();
        running_ = false;
    }
    scheduleChanged();
    std::lock_guard<std::mutex> held(deviceMutex_);
    device_->close();
}

void TimeStampedOutput::sendNow(std::span<const uint8_t> bytes) {
    std::lock_guard<std::mutex> held(deviceMutex_);
    device_->sendNow(bytes);
}

void TimeStampedOutput::sendAt(std::span<const uint8_t> bytes, int32_t stampMs) {
    {
        std::lock_guard<std::mutex> held(mutex_);
        queue_.push(bytes, stampMs);
    }
    scheduleChanged();
}

void TimeStampedOutput::flush() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        queue_.clear();
    }
    scheduleChanged();
}

void TimeStampedOutput::startTimeBase() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        baseMicros_ = clock_.nowMicros();
        running_ = true;
    }
    scheduleChanged();
}

void TimeStampedOutput::stopTimeBase() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        running_ = false;
    }
    scheduleChanged();
}

void TimeStampedOutput::reset() {
    flush();
    std::lock_guard<std::mutex> held(deviceMutex_);
    device_->reset();
}

size_t TimeStampedOutput::queuedCount() const {
    std::lock_guard<std::mutex> held(mutex_);
    return queue_.size();
}

bool TimeStampedOutput::timeBaseRunning() const {
    std::lock_guard<std::mutex> held(mutex_);
    return running_;
}

int64_t TimeStampedOutput::timeBaseStartMicros() const {
    std::lock_guard<std::mutex> held(mutex_);
    return baseMicros_;
}

int64_t TimeStampedOutput::deliverDue(int64_t nowMicros) {
    bool ranDry = false;
    {
        std::lock_guard<std::mutex> held(mutex_);
        if (!running_) return -1;
        while (!queue_.empty() && baseMicros_ + int64_t{queue_.nextStamp()} * 1000 <= nowMicros)
            batch_.push_back(queue_.pop());
        ranDry = !batch_.empty() && queue_.empty();
    }
    if (!batch_.empty()) {
        bool audible = false;  // what lights the MIDI out lamp: a message with a non-zero value
        {
            std::lock_guard<std::mutex> held(deviceMutex_);
            for (const StampedMessage& message : batch_) {
                const auto bytes = message.bytes();
                device_->sendNow(bytes);
                audible = audible || (bytes.size() == 3 && bytes[2] != 0);
            }
        }
        batch_.clear();
        if (audible) raise({MidiDeviceEvent::Kind::MessagePlayed, 0, {}});
        if (ranDry) raise({MidiDeviceEvent::Kind::QueueEmpty, 0, {}});
    }
    // Asked last: the event's handler may have queued more.
    std::lock_guard<std::mutex> held(mutex_);
    if (!running_ || queue_.empty()) return -1;
    return baseMicros_ + int64_t{queue_.nextStamp()} * 1000;
}

}  // namespace quillmer
