#include "platform/BuiltInSynthOutput.h"

#include <fluidsynth.h>

#include <algorithm>
#include <vector>

namespace quillmer {
namespace {

// Those of our preferred sound systems that this FluidSynth was built with, in our order.
std::vector<std::string> candidateDrivers(fluid_settings_t* settings) {
    std::vector<std::string> built;
    fluid_settings_foreach_option(settings, "audio.driver", &built, [](void* list, const char*, const char* option) {
        static_cast<std::vector<std::string>*>(list)->emplace_back(option);
    });
    std::vector<std::string> order;
    for (const char* preferred : {"pipewire", "pulseaudio", "jack", "alsa"})
        if (std::find(built.begin(), built.end(), preferred) != built.end()) order.emplace_back(preferred);
    return order;
}

// Opens the first sound system that works for `synth`; nullptr when none does.
fluid_audio_driver_t* openDriver(FluidSynthInstance& synth, std::string& name) {
    fluid_settings_t* settings = synth.settings();
    fluid_settings_setstr(settings, "audio.jack.id", "Quillmer Synth");
    fluid_settings_setint(settings, "audio.jack.autoconnect", 1);
    fluid_settings_setstr(settings, "audio.pulseaudio.media-role", "music");
    for (const std::string& driver : candidateDrivers(settings)) {
        fluid_settings_setstr(settings, "audio.driver", driver.c_str());
        if (fluid_audio_driver_t* opened = new_fluid_audio_driver(settings, synth.synth())) {
            name = driver;
            return opened;
        }
    }
    return nullptr;
}

}  // namespace

BuiltInSynthOutput::BuiltInSynthOutput(std::string soundFont)
    : ImmediateMidiOutput(kBuiltInSynthName), soundFont_(std::move(soundFont)) {}

BuiltInSynthOutput::~BuiltInSynthOutput() { close(); }

bool BuiltInSynthOutput::open() {
    if (driver_) return true;
    auto synth = std::make_unique<FluidSynthInstance>(soundFont_);
    if (!synth->ok()) {
        raise({MidiDeviceEvent::Kind::Error, 1, name() + ": " + synth->problem()});
        return false;
    }
    driver_ = openDriver(*synth, driverName_);
    if (!driver_) {
        raise({MidiDeviceEvent::Kind::Error, 2,
               name() + ": no sound output could be opened (tried PipeWire, PulseAudio, JACK and ALSA)"});
        return false;
    }
    synth_ = std::move(synth);
    return true;
}

void BuiltInSynthOutput::close() {
    // The driver goes first: it renders from the synth on its own thread.
    if (driver_) delete_fluid_audio_driver(driver_);
    driver_ = nullptr;
    driverName_.clear();
    synth_.reset();
}

void BuiltInSynthOutput::sendNow(std::span<const uint8_t> bytes) {
    if (synth_) synth_->apply(bytes);
}

void BuiltInSynthOutput::reset() {
    if (synth_) synth_->resetAll();
}

std::string probeSynthAudioDriver() {
    // No SoundFont needed to find out whether sound comes out.
    FluidSynthInstance synth("/nonexistent");
    if (!synth.synth()) return {};
    std::string name;
    if (fluid_audio_driver_t* driver = openDriver(synth, name)) delete_fluid_audio_driver(driver);
    return name;
}

}  // namespace quillmer
