#pragma once
// Processors that choose where a value comes from or goes: Latest, Relay2, Selct and its
// tap SelOut, Flip, and T127, which picks a step of table page 127.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "modules/processors/ProcessorKit.h"

namespace quillmer {

// The input that changed most recently: A, B and C are compared in that order with the
// values seen last and the first that differs wins; all three are remembered.
class Latest final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In 1", "Value to be sent to output when changed", sysbus::Off},
        {" In 2", "Value to be sent to output when changed", sysbus::Off},
        {" In 3", "Value to be sent to output when changed", sysbus::Off},
    };
    Latest();
    int winner() const { return winner_; }
    void update(Engine& engine) override;

private:
    std::array<int, 3> seen_{};
    int winner_ = 0;
};

// The first input while Select is 0, else the second; a lamp beside each shows which.
class Relay2 final : public SettingsModule<0> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In 1", "Input sent to output when selected", sysbus::Off},
        {" In 2", "Input sent to output when selected", sysbus::Off},
        {" Select", "Switch Input Select", sysbus::Off},
    };
    Relay2();
    bool secondSelected() const { return second_; }
    void update(Engine& engine) override;

private:
    bool second_ = false;
};

// A switch of 0 sends the input to the own output. A switch s of 1..127 writes it to the
// exclusive channel min(s, 16) and to the multi channel of each bit set in s; the own output
// holds. With Gate in, every channel of this module is 0 before that write. The Gate switch
// is a byte per snapshot.
class Selct final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" In", "Input to be sent to output(s) if selected", sysbus::Off},
        {" Select", "Selection switch: 0 for input>output; 1-16 for SelOut channels; 1-127 for Multi SelectOut",
         sysbus::Off},
    };
    static constexpr std::string_view kGateTip = "Click in to gate (make 0) unselected output(s)";
    static constexpr int kChannels = 16;
    static constexpr int kMultiChannels = 8;  // bits 0..6 of the switch reach m0..m6
    Selct();
    bool gate() const { return flagAt(0); }
    void setGate(bool on) { setFlagAt(0, on); }
    int channel(int c) const { return channels_[static_cast<size_t>(c)]; }  // 0..15
    int multi(int m) const { return multi_[static_cast<size_t>(m)]; }       // 0..7
    void update(Engine& engine) override;

private:
    std::array<uint8_t, kChannels> channels_{};
    std::array<uint8_t, kMultiChannels> multi_{};
};

// The value at one channel of a chosen Selct: exclusive channels 1..16 or multi m0..m6.
// Per snapshot two bytes: the master (see TapModule), then the channel row 0..22.
class SelOut final : public TapModule<2, 1> {
public:
    static constexpr std::string_view kListTip = "Selection Module to get data from";
    static constexpr std::string_view kChannelTip = "Select channel to monitor: 1-16 = exclusive; m0-m6 = multi";
    static constexpr int kChannelRows = 23;
    SelOut();
    int channelRow() const { return byteAt(1); }
    void chooseChannel(int row) { setByteAt(1, std::clamp(row, 0, kChannelRows - 1)); }
    static std::string channelName(int row);  // "1".."16", "m0".."m6"
    void update(Engine& engine) override;
};

// A set-reset latch on rising edges; with Feedback in, each rise of Set toggles it. The
// Feedback switch is a byte per snapshot.
class Flip final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Set", "NZ Sets output to 127", sysbus::Off},
        {" Reset", "NZ Resets output to 0", sysbus::Off},
    };
    static constexpr std::string_view kFeedbackTip =
        "FeedBack: Checked feeds output to Reset, output flips 0-127-0...";
    Flip();
    bool feedback() const { return flagAt(0); }
    void setFeedback(bool on) { setFlagAt(0, on); }
    void update(Engine& engine) override;

private:
    RisingEdge set_;
    RisingEdge reset_;
    int state_ = 0;
};

// Step A of table page 127. Its record has no room for input names: only a byte per
// snapshot, kept as read, so its connection lasts until the patch is closed.
class T127 final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Step", "Table Seq Page#127 Step to send", sysbus::Off},
    };
    static constexpr int kPage = 127;
    T127();
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine& engine) override;
};

}  // namespace quillmer
