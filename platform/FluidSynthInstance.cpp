#include "platform/FluidSynthInstance.h"

#include <fluidsynth.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include "platform/LibrarySetup.h"

namespace quillmer {
namespace {

constexpr const char* kSoundFontFolder = "/usr/share/sounds/sf2/";
// Rendered in pieces of this many frames; any length works.
constexpr int kChunkFrames = 1024;
constexpr double kSynthGain = 0.6;

int16_t toSample(float value) {
    const float scaled = std::clamp(value, -1.0f, 1.0f) * 32767.0f;
    return static_cast<int16_t>(std::lrint(scaled));
}

}  // namespace

std::string findGeneralMidiSoundFont() {
    for (const char* file : {"FluidR3_GM.sf2", "TimGM6mb.sf2"}) {
        const std::string path = std::string(kSoundFontFolder) + file;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(path, ignored)) return path;
    }
    return {};
}

FluidSynthInstance::FluidSynthInstance(const std::string& soundFont, int sampleRate)
    : soundFont_(soundFont.empty() ? findGeneralMidiSoundFont() : soundFont) {
    prepareLibraries();
    if (soundFont_.empty()) {
        problem_ = "no General MIDI SoundFont is installed (timgm6mb-soundfont or fluid-soundfont-gm)";
        return;
    }
    settings_ = new_fluid_settings();
    if (!settings_) {
        problem_ = "FluidSynth could not start";
        return;
    }
    fluid_settings_setnum(settings_, "synth.sample-rate", sampleRate);
    // One rendering thread: the same input gives the same samples, run after run.
    fluid_settings_setint(settings_, "synth.cpu-cores", 1);
    // A full General MIDI mix peaks near full scale at this gain; the default is faint.
    fluid_settings_setnum(settings_, "synth.gain", kSynthGain);
    synth_ = new_fluid_synth(settings_);
    if (!synth_) {
        problem_ = "FluidSynth could not start";
        return;
    }
    fontId_ = fluid_synth_sfload(synth_, soundFont_.c_str(), 1);
    if (fontId_ < 0) problem_ = "the SoundFont " + soundFont_ + " could not be loaded";
}

FluidSynthInstance::~FluidSynthInstance() {
    if (synth_) delete_fluid_synth(synth_);
    if (settings_) delete_fluid_settings(settings_);
}

void FluidSynthInstance::apply(std::span<const uint8_t> bytes) {
    if (!synth_ || bytes.empty()) return;
    const uint8_t status = bytes[0];
    if (status < 0x80 || status >= 0xF0) return;  // 244, 249, clock, SysEx: not for a synth
    const int channel = status & 0x0F;
    const int d1 = bytes.size() > 1 ? bytes[1] & 0x7F : 0;
    const int d2 = bytes.size() > 2 ? bytes[2] & 0x7F : 0;
    switch (status & 0xF0) {
        case 0x80: fluid_synth_noteoff(synth_, channel, d1); break;
        case 0x90:
            if (d2 == 0)
                fluid_synth_noteoff(synth_, channel, d1);
            else
                fluid_synth_noteon(synth_, channel, d1, d2);
            break;
        case 0xA0: fluid_synth_key_pressure(synth_, channel, d1, d2); break;
        case 0xB0: fluid_synth_cc(synth_, channel, d1, d2); break;
        case 0xC0: fluid_synth_program_change(synth_, channel, d1); break;
        case 0xD0: fluid_synth_channel_pressure(synth_, channel, d1); break;
        case 0xE0: fluid_synth_pitch_bend(synth_, channel, d2 * 128 + d1); break;
        default: break;
    }
}

void FluidSynthInstance::resetAll() {
    if (synth_) fluid_synth_system_reset(synth_);
}

void FluidSynthInstance::render(int16_t* interleaved, int frames) {
    std::array<float, 2 * kChunkFrames> chunk{};
    while (frames > 0) {
        const int n = std::min(frames, kChunkFrames);
        if (synth_)
            fluid_synth_write_float(synth_, n, chunk.data(), 0, 2, chunk.data(), 1, 2);
        else
            std::fill(chunk.begin(), chunk.end(), 0.0f);
        for (int i = 0; i < 2 * n; ++i) interleaved[i] = toSample(chunk[static_cast<size_t>(i)]);
        interleaved += 2 * n;
        frames -= n;
    }
}

}  // namespace quillmer
