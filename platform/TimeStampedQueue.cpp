#include "platform/TimeStampedQueue.h"

#include <algorithm>

namespace quillmer {
namespace {

// std heap functions keep the largest first; "later" is larger, so the earliest comes first.
bool later(const StampedMessage& a, const StampedMessage& b) {
    if (a.stampMs != b.stampMs) return a.stampMs > b.stampMs;
    return a.order > b.order;
}

}  // namespace

void TimeStampedQueue::push(std::span<const uint8_t> bytes, int32_t stampMs) {
    StampedMessage message;
    message.stampMs = stampMs;
    message.order = arrivals_++;
    if (bytes.size() <= message.shortBytes.size()) {
        std::copy(bytes.begin(), bytes.end(), message.shortBytes.begin());
        message.shortLength = static_cast<uint8_t>(bytes.size());
    } else {
        message.longBytes.assign(bytes.begin(), bytes.end());
    }
    heap_.push_back(std::move(message));
    std::push_heap(heap_.begin(), heap_.end(), later);
}

StampedMessage TimeStampedQueue::pop() {
    std::pop_heap(heap_.begin(), heap_.end(), later);
    StampedMessage message = std::move(heap_.back());
    heap_.pop_back();
    return message;
}

}  // namespace quillmer
