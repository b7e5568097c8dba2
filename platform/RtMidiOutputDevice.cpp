#include "platform/RtMidiOutputDevice.h"

#include <RtMidi.h>

#include "platform/LibrarySetup.h"
#include "platform/RtMidiSupport.h"

namespace quillmer {

RtMidiOutputDevice::RtMidiOutputDevice(MidiPortApi api, std::string target, std::string displayName,
                                       std::string ourPort)
    : ImmediateMidiOutput(std::move(displayName)), api_(api), target_(std::move(target)),
      ourPort_(std::move(ourPort)) {}

RtMidiOutputDevice::~RtMidiOutputDevice() { close(); }

void RtMidiOutputDevice::fail(const std::string& why) { raise({MidiDeviceEvent::Kind::Error, 1, name() + ": " + why}); }

void RtMidiOutputDevice::onLateError(int type, const std::string& text, void* device) {
    if (type == RtMidiError::WARNING || type == RtMidiError::DEBUG_WARNING) return;
    static_cast<RtMidiOutputDevice*>(device)->fail(text);
}

bool RtMidiOutputDevice::open() {
    if (out_) return true;
    prepareLibraries();
    if (const std::string problem = apiProblem(api_); !problem.empty()) {
        fail(problem);
        return false;
    }
    try {
        auto out = std::make_unique<RtMidiOut>(rtMidiApi(api_), kMidiClientName);
        const int index = findRtMidiPort(*out, target_);
        if (index < 0) {
            fail("the port " + target_ + " is not there any more");
            return false;
        }
        out->openPort(static_cast<unsigned>(index), ourPort_);
        out->setErrorCallback(
            [](RtMidiError::Type type, const std::string& text, void* self) { onLateError(type, text, self); }, this);
        out_ = std::move(out);
        return true;
    } catch (const RtMidiError& error) {
        fail(error.getMessage());
        return false;
    }
}

void RtMidiOutputDevice::close() {
    if (!out_) return;
    try {
        out_->closePort();
    } catch (const RtMidiError&) {
        // Closing what is already gone is no news to the user.
    }
    out_.reset();
}

void RtMidiOutputDevice::sendNow(std::span<const uint8_t> bytes) {
    if (!out_ || bytes.empty()) return;
    try {
        out_->sendMessage(bytes.data(), bytes.size());
    } catch (const RtMidiError& error) {
        fail(error.getMessage());
    }
}

}  // namespace quillmer
