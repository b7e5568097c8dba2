#pragma once
// Messages waiting for their time stamp: earliest stamp first, and first in, first out
// among equal stamps. Channel and real-time messages are kept without allocating; only a
// longer message (a SysEx) takes heap memory. Not thread-safe: the owner locks.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace quillmer {

struct StampedMessage {
    int32_t stampMs = 0;
    uint64_t order = 0;  // arrival number: breaks ties between equal stamps
    uint8_t shortLength = 0;
    std::array<uint8_t, 3> shortBytes{};
    std::vector<uint8_t> longBytes;  // used when the message is longer than 3 bytes

    std::span<const uint8_t> bytes() const {
        if (!longBytes.empty()) return longBytes;
        return {shortBytes.data(), shortLength};
    }
};

class TimeStampedQueue {
public:
    // Room for this many messages before the first allocation.
    explicit TimeStampedQueue(size_t reserve = 4096) { heap_.reserve(reserve); }

    void push(std::span<const uint8_t> bytes, int32_t stampMs);
    bool empty() const { return heap_.empty(); }
    size_t size() const { return heap_.size(); }
    // The earliest stamp; only when not empty.
    int32_t nextStamp() const { return heap_.front().stampMs; }
    // Moves the earliest message out; only when not empty.
    StampedMessage pop();
    void clear() { heap_.clear(); }

private:
    std::vector<StampedMessage> heap_;  // a min-heap on (stamp, order)
    uint64_t arrivals_ = 0;
};

}  // namespace quillmer
