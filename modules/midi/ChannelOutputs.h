#pragma once
// Channel modules that send one kind of message each when their input changes: the
// controller strip of a channel, polyphonic pressure, pitch bend. Need the engine lock.

#include <array>
#include <string>

#include "modules/midi/NoteOutputs.h"

namespace quillmer {

// MIDIChan: bank, aftertouch, volume, breath, foot, expression and portamento.
class MIDIChan final : public ChannelModule {
public:
    static constexpr InputSpec kInputs[] = {
        {" Bank ", "Bank select", sysbus::Off},
        {" AftrTch ", "Channel aftertouch", sysbus::Off},
        {" Volume ", "Volume (Control Change 7)", sysbus::On},
        {" BreathCt ", "Breath controller (Control Change 2)", sysbus::Off},
        {" FootCtl ", "Foot controller (Control Change 4)", sysbus::Off},
        {" Expres ", "Expression (Control Change 11)", sysbus::On},
        {" Portam ", "Portamento time; 0 turns portamento off", sysbus::Off},
    };
    MIDIChan();
    std::string bankCaption;  // "3. Orchestra"
    void update(Engine& engine) override;

private:
    std::array<int16_t, 7> last_{-1, -1, -1, -1, -1, -1, -1};
    bool portamentoOn_ = false;
};

// MIDIPoly: polyphonic key pressure for one key.
class MIDIPoly final : public ChannelModule {
public:
    static constexpr InputSpec kInputs[] = {{" Input", "Pressure value", sysbus::Off}};
    MIDIPoly();
    uint8_t key = 60;  // bxV1
    // The key box: text cut to 0..127; returns what the box shows.
    std::string setKeyText(const std::string& text);

    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    int16_t last_ = -1;
    std::array<uint8_t, kSnapshotCount> storedKey_{};
};

// MIDIPBend: pitch bend, the input as the most significant byte.
class MIDIPBend final : public ChannelModule {
public:
    static constexpr InputSpec kInputs[] = {{" Input", "Pitch bend, 64 is the centre", sysbus::Mid}};
    MIDIPBend();
    void update(Engine& engine) override;

private:
    int16_t last_ = 63;  // so that the centre goes out at once
};

}  // namespace quillmer
