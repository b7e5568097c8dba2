#include "platform/JackMidiDevices.h"

#include "platform/JackMidiClient.h"
#include "platform/RtMidiDeviceProvider.h"

namespace quillmer {

JackClientSource::JackClientSource(const TimerService& clock) : clock_(clock) {}

std::shared_ptr<JackMidiClient> JackClientSource::client(std::string& problem) {
    std::lock_guard<std::mutex> held(mutex_);
    if (client_ && !client_->alive()) client_.reset();
    if (!client_) client_ = JackMidiClient::open(kMidiClientName, clock_, problem);
    return client_;
}

// --- output ---

JackMidiOutput::JackMidiOutput(std::shared_ptr<JackClientSource> source, std::string peer, std::string displayName,
                               int port)
    : source_(std::move(source)), peer_(std::move(peer)), name_(std::move(displayName)), port_(port) {}

JackMidiOutput::~JackMidiOutput() { close(); }

bool JackMidiOutput::open() {
    if (isOpen()) return true;
    close();
    std::string problem;
    std::shared_ptr<JackMidiClient> client = source_->client(problem);
    const auto events = [this](const MidiDeviceEvent& event) {
        MidiDeviceEvent named = event;
        if (named.kind == MidiDeviceEvent::Kind::Error) named.text = name_ + ": " + named.text;
        raise(named);
    };
    if (!client || !client->openOutput(port_, ourPortName(true, port_), peer_, events, problem)) {
        raise({MidiDeviceEvent::Kind::Error, 1, name_ + ": " + problem});
        return false;
    }
    client_ = std::move(client);
    return true;
}

void JackMidiOutput::close() {
    if (!client_) return;
    client_->closeOutput(port_);
    client_.reset();
}

bool JackMidiOutput::isOpen() const { return client_ && client_->alive(); }

void JackMidiOutput::sendNow(std::span<const uint8_t> bytes) {
    if (isOpen()) client_->sendNow(port_, bytes);
}

void JackMidiOutput::sendAt(std::span<const uint8_t> bytes, int32_t stampMs) {
    if (isOpen()) client_->sendAt(port_, bytes, stampMs);
}

void JackMidiOutput::flush() {
    if (client_) client_->flush(port_);
}

void JackMidiOutput::startTimeBase() {
    if (client_) client_->startTimeBase(port_);
}

void JackMidiOutput::stopTimeBase() {
    if (client_) client_->stopTimeBase(port_);
}

// --- input ---

JackMidiInput::JackMidiInput(std::shared_ptr<JackClientSource> source, std::string peer, std::string displayName,
                             int port)
    : source_(std::move(source)), peer_(std::move(peer)), name_(std::move(displayName)), port_(port) {}

JackMidiInput::~JackMidiInput() { close(); }

bool JackMidiInput::open() {
    if (isOpen()) return true;
    close();
    std::string problem;
    std::shared_ptr<JackMidiClient> client = source_->client(problem);
    const auto data = [this](const std::vector<MidiInputMessage>& messages) { deliver(messages); };
    const auto events = [this](const MidiDeviceEvent& event) {
        MidiDeviceEvent named = event;
        named.text = name_ + ": " + named.text;
        raise(named);
    };
    if (!client || !client->openInput(port_, ourPortName(false, port_), peer_, data, events, problem)) {
        raise({MidiDeviceEvent::Kind::Error, 1, name_ + ": " + problem});
        return false;
    }
    client_ = std::move(client);
    return true;
}

void JackMidiInput::close() {
    if (!client_) return;
    client_->closeInput(port_);
    client_.reset();
}

bool JackMidiInput::isOpen() const { return client_ && client_->alive(); }

void JackMidiInput::start() {
    if (client_) client_->startInput(port_, true);
}

void JackMidiInput::stop() {
    if (client_) client_->startInput(port_, false);
}

}  // namespace quillmer
