#pragma once
// One FluidSynth synthesizer with a General MIDI SoundFont loaded: the sound of the
// built-in synth, shared by real-time playing and offline rendering. Only channel messages
// reach it: real-time bytes (248, 249, 254...), 244 and SysEx are ignored.
//
// Thread rule: apply() and render() may be called from different threads (FluidSynth
// locks inside); setup happens on one thread before either.

#include <cstdint>
#include <span>
#include <string>

struct _fluid_hashtable_t;
struct _fluid_synth_t;

namespace quillmer {

constexpr int kSynthSampleRate = 44100;
// The synth's name in every output list.
constexpr const char* kBuiltInSynthName = "Built-in Synth";

// The SoundFont to use: FluidR3_GM.sf2 when installed, else TimGM6mb.sf2; empty when neither.
std::string findGeneralMidiSoundFont();

class FluidSynthInstance {
public:
    // Loads `soundFont` (or the one found) at the given sample rate. Check ok() after.
    explicit FluidSynthInstance(const std::string& soundFont = {}, int sampleRate = kSynthSampleRate);
    ~FluidSynthInstance();
    FluidSynthInstance(const FluidSynthInstance&) = delete;
    FluidSynthInstance& operator=(const FluidSynthInstance&) = delete;

    bool ok() const { return synth_ != nullptr && fontId_ >= 0; }
    // Why not ok(), in words the user can act on.
    const std::string& problem() const { return problem_; }
    const std::string& soundFont() const { return soundFont_; }

    // Applies one channel message; anything else is ignored.
    void apply(std::span<const uint8_t> bytes);
    // Silences every channel and returns controllers and programs to their defaults.
    void resetAll();
    // Renders `frames` stereo frames as interleaved 16-bit samples.
    void render(int16_t* interleaved, int frames);

    _fluid_hashtable_t* settings() const { return settings_; }
    _fluid_synth_t* synth() const { return synth_; }

private:
    _fluid_hashtable_t* settings_ = nullptr;
    _fluid_synth_t* synth_ = nullptr;
    int fontId_ = -1;
    std::string soundFont_;
    std::string problem_;
};

}  // namespace quillmer
