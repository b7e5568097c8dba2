#include "platform/RtMidiInputDevice.h"

#include <RtMidi.h>

#include "platform/LibrarySetup.h"
#include "platform/RtMidiSupport.h"

namespace quillmer {
namespace {

constexpr uint8_t kSysExStart = 0xF0;

}  // namespace

RtMidiInputDevice::RtMidiInputDevice(MidiPortApi api, std::string source, std::string displayName, std::string ourPort)
    : api_(api), source_(std::move(source)), name_(std::move(displayName)), ourPort_(std::move(ourPort)) {
    batch_.reserve(1);
}

RtMidiInputDevice::~RtMidiInputDevice() { close(); }

void RtMidiInputDevice::fail(const std::string& why) { raise({MidiDeviceEvent::Kind::Error, 1, name_ + ": " + why}); }

void RtMidiInputDevice::onLateError(int type, const std::string& text, void* device) {
    if (type == RtMidiError::WARNING || type == RtMidiError::DEBUG_WARNING) return;
    static_cast<RtMidiInputDevice*>(device)->fail(text);
}

void RtMidiInputDevice::onMessage(double, std::vector<unsigned char>* message, void* device) {
    if (message) static_cast<RtMidiInputDevice*>(device)->received(*message);
}

void RtMidiInputDevice::received(const std::vector<unsigned char>& message) {
    if (!started_ || message.empty() || message.size() > 3) return;
    if (message[0] < 0x80 || message[0] == kSysExStart) return;
    MidiInputMessage m;
    m.status = message[0];
    if (message.size() > 1) m.data1 = message[1];
    if (message.size() > 2) m.data2 = message[2];
    batch_.assign(1, m);
    deliver(batch_);
}

bool RtMidiInputDevice::open() {
    if (in_) return true;
    prepareLibraries();
    if (const std::string problem = apiProblem(api_); !problem.empty()) {
        fail(problem);
        return false;
    }
    try {
        auto in = std::make_unique<RtMidiIn>(rtMidiApi(api_), kMidiClientName);
        const int index = findRtMidiPort(*in, source_);
        if (index < 0) {
            fail("the port " + source_ + " is not there any more");
            return false;
        }
        // SysEx and active sensing stay out; clock and transport bytes come in.
        in->ignoreTypes(true, false, true);
        in->setCallback(onMessage, this);
        in->openPort(static_cast<unsigned>(index), ourPort_);
        in->setErrorCallback(
            [](RtMidiError::Type type, const std::string& text, void* self) { onLateError(type, text, self); }, this);
        in_ = std::move(in);
        return true;
    } catch (const RtMidiError& error) {
        fail(error.getMessage());
        return false;
    }
}

void RtMidiInputDevice::close() {
    started_ = false;
    if (!in_) return;
    try {
        in_->closePort();
        in_->cancelCallback();
    } catch (const RtMidiError&) {
        // Closing what is already gone is no news to the user.
    }
    in_.reset();
}

}  // namespace quillmer
