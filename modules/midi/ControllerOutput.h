#pragma once
// MIDICtrl: one controller of a channel, sent whenever its input changes. Needs the engine lock.

#include <array>
#include <string>

#include "modules/midi/NoteOutputs.h"

namespace quillmer {

class MIDICtrl final : public ChannelModule {
public:
    static constexpr InputSpec kInputs[] = {{" Input", "Controller value, sent when it changes", sysbus::Off}};
    static constexpr uint8_t kDefaultController = 1;  // the modulation wheel

    MIDICtrl();
    uint8_t controller = kDefaultController;
    // The controller box: text cut to 0..127; returns what the box shows. A new number sends
    // the value at once.
    std::string setControllerText(const std::string& text);

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    int16_t last_ = -1;
    std::array<uint8_t, kSnapshotCount> storedController_{};
};

}  // namespace quillmer
