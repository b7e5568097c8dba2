#include "modules/midi/Links.h"

#include <algorithm>
#include <cstring>

#include "engine/Engine.h"

namespace quillmer {

namespace {

// Where the settings lie in the record's block of 128 bytes; the rest is kept as read.
constexpr size_t kSendPortAt = 0;
constexpr size_t kListenPortAt = 2;
constexpr size_t kFlagsAt = 4;
constexpr size_t kHostAt = 8;
constexpr size_t kHostBytes = 40;
constexpr size_t kAddressAt = 48;
constexpr size_t kAddressBytes = 64;
constexpr uint8_t kUnitFloats = 1;

uint16_t readU16(const uint8_t* at) { return static_cast<uint16_t>(at[0] | (at[1] << 8)); }
void writeU16(uint8_t* at, uint16_t v) {
    at[0] = static_cast<uint8_t>(v & 0xFF);
    at[1] = static_cast<uint8_t>(v >> 8);
}
std::string readText(const uint8_t* at, size_t n) {
    const auto* end = std::find(at, at + n, uint8_t{0});
    return std::string(reinterpret_cast<const char*>(at), static_cast<size_t>(end - at));
}
void writeText(uint8_t* at, size_t n, const std::string& text) {
    std::memset(at, 0, n);
    std::memcpy(at, text.data(), std::min(text.size(), n));
}

LinkSettings settingsOf(const std::array<uint8_t, IPLink::kSettingsBytes>& block) {
    LinkSettings read;
    read.sendPort = readU16(block.data() + kSendPortAt);
    read.listenPort = readU16(block.data() + kListenPortAt);
    read.unitFloats = (block[kFlagsAt] & kUnitFloats) != 0;
    read.host = readText(block.data() + kHostAt, kHostBytes);
    read.address = readText(block.data() + kAddressAt, kAddressBytes);
    return read;
}

}  // namespace

IPLink::IPLink() : Module(*typeIdByName("IPLink"), kInputs) {
    status = "Off";
    ByteWriter defaults;
    writeFields(defaults);  // the block of blank settings differs from the defaults: written out
    std::copy(defaults.bytes().begin(), defaults.bytes().end(), block_.begin());
}

IPLink::~IPLink() { turnOff(); }

bool IPLink::setSettings(const LinkSettings& settings, std::string& error) {
    if (settings.host.empty() || settings.host.size() >= kHostBytes) {
        error = "A link's host is a name or address of 1 to " + std::to_string(kHostBytes - 1) + " characters";
        return false;
    }
    if (settings.address.empty() || settings.address[0] != '/' || settings.address.size() >= kAddressBytes ||
        settings.address.find_first_of(" #*,?[]{}") != std::string::npos) {
        error = "A link's address begins with / and has no blanks or # * , ? [ ] { } (at most " +
                std::to_string(kAddressBytes - 1) + " characters): " + settings.address;
        return false;
    }
    const bool wasOn = on();
    turnOff();
    settings_ = settings;
    viewChanged = true;
    return wasOn ? turnOn(error) : true;
}

bool IPLink::turnOn(std::string& error) {
    if (on()) return true;
    std::unique_ptr<LinkTransport> transport = makeLinkTransport();
    if (!transport) {
        error = "Links to other programs aren't available in this program";
        status = error;
        viewChanged = true;
        return false;
    }
    if (!transport->open(settings_, error)) {
        status = error;
        viewChanged = true;
        return false;
    }
    transport_ = std::move(transport);
    lastSent_ = -1;  // the value goes out at once
    status = "On: to " + settings_.host + ":" + std::to_string(settings_.sendPort) + ", listening on " +
             std::to_string(transport_->listeningPort());
    viewChanged = true;
    return true;
}

void IPLink::turnOff() {
    if (!transport_) return;
    transport_->close();
    transport_.reset();
    shownCounts = {};
    status = "Off";
    viewChanged = true;
}

LinkCounts IPLink::counts() const { return transport_ ? transport_->counts() : LinkCounts{}; }
uint16_t IPLink::listeningPort() const { return transport_ ? transport_->listeningPort() : 0; }

void IPLink::update(Engine& /*engine*/) {
    if (!transport_) return;
    if (const LinkCounts now = transport_->counts(); !(now == shownCounts)) {
        shownCounts = now;
        viewChanged = true;
    }
    uint8_t received = 0;
    if (transport_->receive(received)) setOutput(received & 127);
    const int value = in(0);
    bool strobe = false;
    if (in(1) == 0) {
        armed_ = true;
    } else if (armed_) {
        armed_ = false;
        strobe = true;
    }
    if (value != lastSent_ || strobe) {
        lastSent_ = static_cast<int16_t>(value);
        transport_->send(static_cast<uint8_t>(value));
    }
}

// One block per module: ports, flags, host and address; spare bytes kept as read.
void IPLink::writeFields(ByteWriter& out) const {
    if (settingsOf(block_) == settings_) {  // unchanged: the block goes back as it came
        out.raw(block_);
        return;
    }
    std::array<uint8_t, kSettingsBytes> block = block_;
    writeU16(block.data() + kSendPortAt, settings_.sendPort);
    writeU16(block.data() + kListenPortAt, settings_.listenPort);
    block[kFlagsAt] = static_cast<uint8_t>((block[kFlagsAt] & ~kUnitFloats) | (settings_.unitFloats ? kUnitFloats : 0));
    writeText(block.data() + kHostAt, kHostBytes, settings_.host);
    writeText(block.data() + kAddressAt, kAddressBytes, settings_.address);
    out.raw(block);
}

void IPLink::readFields(ByteReader& in) {
    for (uint8_t& b : block_) b = in.u8();
    settings_ = settingsOf(block_);
}

}  // namespace quillmer
