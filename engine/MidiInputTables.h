#pragma once
// What MIDI input leaves for the input modules: the last value of every kind of message,
// by ChannelSlot (port * 16 + channel). Values are kept until overwritten, never cleared.

#include <array>
#include <cstdint>
#include <vector>

namespace quillmer {

constexpr int kChannelSlots = 64;
constexpr int kVoicesPerSlot = 8;

struct MidiInputTables {
    using SlotBytes = std::array<uint8_t, kChannelSlots>;

    SlotBytes InProgram{};
    std::array<SlotBytes, 128> InControl{};       // [controller][slot]
    std::array<SlotBytes, 128> InPolyPressure{};  // [note][slot]
    SlotBytes InPitchBend{};                      // the most significant byte only
    SlotBytes InNoteActive{};                     // a bit per sounding voice
    std::array<SlotBytes, kVoicesPerSlot> InVoiceNote{};
    std::array<SlotBytes, kVoicesPerSlot> InVoiceVelocity{};
    SlotBytes InLastNote{};
    SlotBytes InLastVelocity{};
    std::array<int16_t, kChannelSlots> InNoteFlag{};    // -1 on each note-on
    std::array<int16_t, kChannelSlots> InRpnSelect{};   // -1 after CC 99 (NRPN), 0 after CC 101
    SlotBytes InParamMsb{};
    SlotBytes InParamLsb{};
    SlotBytes InDataMsb{};
    // By parameter (msb * 128 + lsb) and slot; empty until an input module asks for them.
    std::vector<int16_t> InNrpnTable;
    std::vector<int16_t> InRpnTable;

    static constexpr size_t parameterIndex(int msb, int lsb, int slot) {
        return static_cast<size_t>((msb * 128 + lsb) * kChannelSlots + slot);
    }
    void allocateParameterTables() {
        if (InNrpnTable.empty()) InNrpnTable.assign(128 * 128 * kChannelSlots, 0);
        if (InRpnTable.empty()) InRpnTable.assign(128 * 128 * kChannelSlots, 0);
    }
};

}  // namespace quillmer
