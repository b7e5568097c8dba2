#include "platform/CaptureDevice.h"

namespace quillmer {

void CaptureLog::add(std::span<const uint8_t> bytes, int64_t atMicros) {
    {
        std::lock_guard<std::mutex> held(mutex_);
        messages_.push_back({{bytes.begin(), bytes.end()}, atMicros});
    }
    grown_.notify_all();
}

std::vector<CapturedMessage> CaptureLog::messages() const {
    std::lock_guard<std::mutex> held(mutex_);
    return messages_;
}

size_t CaptureLog::size() const {
    std::lock_guard<std::mutex> held(mutex_);
    return messages_.size();
}

void CaptureLog::clear() {
    std::lock_guard<std::mutex> held(mutex_);
    messages_.clear();
}

void CaptureLog::reserve(size_t count) {
    std::lock_guard<std::mutex> held(mutex_);
    messages_.reserve(count);
}

bool CaptureLog::waitFor(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock<std::mutex> held(mutex_);
    return grown_.wait_for(held, timeout, [&] { return messages_.size() >= count; });
}

CaptureDevice::CaptureDevice(std::string name, const TimerService& clock, std::shared_ptr<CaptureLog> log)
    : ImmediateMidiOutput(std::move(name)), clock_(clock), log_(std::move(log)) {}

bool CaptureDevice::open() {
    if (refuse_) {
        raise({MidiDeviceEvent::Kind::Error, 1, name() + ": the device is busy"});
        return false;
    }
    open_ = true;
    return true;
}

void CaptureDevice::sendNow(std::span<const uint8_t> bytes) { log_->add(bytes, clock_.nowMicros()); }

}  // namespace quillmer
