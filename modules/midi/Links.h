#pragma once
// IPLink: bus values to and from other programs over the network. The Send input goes out
// whenever it changes, or again on a rising Strobe; values that come in are written to the
// output one per tick, in the order they came. A link is off until the user turns it on,
// also in a patch just loaded. Needs the engine lock.

#include <array>
#include <memory>
#include <string>

#include "engine/Module.h"
#include "modules/midi/LinkTransport.h"

namespace quillmer {

class IPLink final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Send", "Value sent whenever it changes", sysbus::Off},
        {" Strobe", "Strobe: 0 to NZ sends the value again", sysbus::Off},
    };
    static constexpr size_t kSettingsBytes = 128;

    IPLink();
    ~IPLink() override;

    const LinkSettings& settings() const { return settings_; }
    // New settings; a link that is on starts again with them. False with `error` when the
    // settings can't be used (the link is then off).
    bool setSettings(const LinkSettings& settings, std::string& error);
    bool on() const { return transport_ != nullptr; }
    // Turns the link on; false with `error` (naming host or port) when it can't be opened.
    bool turnOn(std::string& error);
    void turnOff();
    LinkCounts counts() const;
    LinkCounts shownCounts;  // the counts the panel last had; updates follow them
    uint16_t listeningPort() const;
    std::string status;  // "Off", "On: ...", or why it couldn't start

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    LinkSettings settings_;
    std::array<uint8_t, kSettingsBytes> block_{};  // as read: the spare bytes are kept
    std::unique_ptr<LinkTransport> transport_;
    int16_t lastSent_ = -1;
    bool armed_ = false;
};

}  // namespace quillmer
