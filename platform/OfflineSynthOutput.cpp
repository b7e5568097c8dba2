#include "platform/OfflineSynthOutput.h"

#include <algorithm>
#include <array>

namespace quillmer {
namespace {

constexpr int64_t kRenderFrames = 4096;

}  // namespace

OfflineSynthOutput::OfflineSynthOutput(const TimerService& clock, std::string wavPath, std::string soundFont)
    : ImmediateMidiOutput(kBuiltInSynthName), clock_(clock), wavPath_(std::move(wavPath)),
      soundFont_(std::move(soundFont)) {}

OfflineSynthOutput::~OfflineSynthOutput() { close(); }

bool OfflineSynthOutput::open() {
    if (wav_) return true;
    auto synth = std::make_unique<FluidSynthInstance>(soundFont_);
    if (!synth->ok()) {
        problem_ = name() + ": " + synth->problem();
        raise({MidiDeviceEvent::Kind::Error, 1, problem_});
        return false;
    }
    auto wav = std::make_unique<WavFileWriter>(wavPath_, kSynthSampleRate);
    std::string error;
    if (!wav->begin(error)) {
        problem_ = error;
        raise({MidiDeviceEvent::Kind::Error, 3, name() + ": " + error});
        return false;
    }
    synth_ = std::move(synth);
    wav_ = std::move(wav);
    originMicros_ = clock_.nowMicros();
    saved_ = false;
    problem_.clear();
    return true;
}

void OfflineSynthOutput::renderUntil(int64_t clockMicros) {
    if (!wav_) return;
    const int64_t target = (clockMicros - originMicros_) * kSynthSampleRate / 1'000'000;
    std::array<int16_t, 2 * kRenderFrames> buffer{};
    while (wav_->frames() < target) {
        const int64_t n = std::min(kRenderFrames, target - wav_->frames());
        synth_->render(buffer.data(), static_cast<int>(n));
        wav_->append(buffer.data(), n);
    }
}

void OfflineSynthOutput::sendNow(std::span<const uint8_t> bytes) {
    if (!wav_) return;
    renderUntil(clock_.nowMicros());
    synth_->apply(bytes);
}

void OfflineSynthOutput::reset() {
    if (!wav_) return;
    renderUntil(clock_.nowMicros());
    synth_->resetAll();
}

void OfflineSynthOutput::discard() {
    wav_.reset();  // a writer not finished leaves nothing behind
    synth_.reset();
    saved_ = false;
}

void OfflineSynthOutput::close() {
    if (!wav_) return;
    renderUntil(clock_.nowMicros());
    savedFrames_ = wav_->frames();
    std::string error;
    saved_ = wav_->finish(error);
    wav_.reset();
    synth_.reset();
    if (!saved_) {
        problem_ = error;
        raise({MidiDeviceEvent::Kind::Error, 3, name() + ": " + error});
    }
}

}  // namespace quillmer
