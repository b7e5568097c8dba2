#pragma once
// The time-stamped queue in virtual time: a timer of the service fires exactly when the
// next stamp falls due, and the message is sent from inside that firing, so the device sees
// the clock at the stamp itself. A stamp already due when it is queued goes out at once
// (after anything queued earlier that is due too). Runs are exact and repeatable.
//
// Thread rule: the thread that owns the timer service, only.

#include "platform/TimeStampedOutput.h"

namespace quillmer {

class VirtualTimeStampedOutput final : public TimeStampedOutput {
public:
    // `timers` must outlive this device.
    VirtualTimeStampedOutput(std::unique_ptr<MidiOutputDevice> device, TimerService& timers);
    // Turns the delivery timer off (the service has no way to remove it).
    ~VirtualTimeStampedOutput() override;

private:
    void scheduleChanged() override;
    void armFor(int64_t dueMicros);

    TimerService& timers_;
    TimerId timer_;
    int64_t armedFor_ = -1;  // clock time the timer fires next, -1 when off
};

}  // namespace quillmer
