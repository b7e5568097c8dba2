#pragma once
// "Built-in Synth" rendered offline into a WAV file (16-bit stereo, 44.1 kHz), on the clock
// of a timer service, usually virtual time. Each message is applied at its own sample: the
// audio is rendered up to the clock's time, then the message is applied (FluidSynth starts
// it at its next 64-sample block). The same messages at the same times give the same file,
// byte for byte. Behind a VirtualTimeStampedOutput, sendAt() messages land on their stamps.
//
// Sample 0 is the clock's time at open(); close() renders up to the clock's time and saves.
// Thread rule: the thread that owns the clock.

#include <memory>

#include "engine/TimerService.h"
#include "platform/FluidSynthInstance.h"
#include "platform/ImmediateMidiOutput.h"
#include "platform/WavFileWriter.h"

namespace quillmer {

class OfflineSynthOutput final : public ImmediateMidiOutput {
public:
    OfflineSynthOutput(const TimerService& clock, std::string wavPath, std::string soundFont = {});
    ~OfflineSynthOutput() override;

    // Fails with an Error event when there is no SoundFont or the file can't be made.
    bool open() override;
    // Renders up to now and saves the file; a failed save raises an Error event naming it.
    void close() override;
    bool isOpen() const override { return wav_ != nullptr; }
    void sendNow(std::span<const uint8_t> bytes) override;
    void reset() override;

    // Gives up the render: nothing is saved, a file that was there stays as it was.
    void discard();
    // Renders up to a clock time (a release tail after the last note, say).
    void renderUntil(int64_t clockMicros);
    int64_t renderedFrames() const { return wav_ ? wav_->frames() : savedFrames_; }
    // Whether the last close() saved the file.
    bool saved() const { return saved_; }
    // What the last failed open() or close() raised, naming the file; empty when none failed.
    const std::string& problem() const { return problem_; }

private:
    const TimerService& clock_;
    std::string wavPath_;
    std::string soundFont_;
    std::unique_ptr<FluidSynthInstance> synth_;
    std::unique_ptr<WavFileWriter> wav_;
    int64_t originMicros_ = 0;
    int64_t savedFrames_ = 0;
    bool saved_ = false;
    std::string problem_;
};

}  // namespace quillmer
