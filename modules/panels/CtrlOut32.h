#pragma once
// CtrlOut32: a bank of 32 control sliders in a window of their own that floats above the
// workspace. Each slider sends its controller on the bank's channel and port whenever its
// value changes (and all of them again on a resync). No output. Needs the engine lock.

#include <array>
#include <cstdint>
#include <string>

#include "engine/Module.h"

namespace quillmer {

class CtrlOut32 final : public Module {
public:
    static constexpr int kSliders = 32;
    static constexpr size_t kModuleBytes = 258;

    CtrlOut32();

    std::string title;                          // the window's title
    std::array<std::string, kSliders> labels;   // under each slider

    int value(int slider) const { return values_[static_cast<size_t>(slider)]; }
    void setValue(int slider, int value);
    int controller(int slider) const { return module_[kFirstController + static_cast<size_t>(slider)] & 127; }
    void setController(int slider, int controller);
    // Channel + port * 16, as the channel button shows it: "1 A" .. "16D".
    int chanPort() const { return module_[kChanPort] & 63; }
    void setChanPort(int chanPort);
    std::string channelCaption() const;
    bool windowShown() const { return module_[kShown] != 0; }
    void setWindowShown(bool shown);
    int windowLeft() const { return word(kWindowLeft); }
    int windowTop() const { return word(kWindowTop); }
    void setWindowPlace(int left, int top);
    // Control changes sent since the module was made.
    int sent() const { return sent_; }

    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void onAttach(Engine& engine) override;
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    // The bytes kept once per module: channel and port, the controllers, the window.
    static constexpr size_t kChanPort = 0;
    static constexpr size_t kFirstController = 2;
    static constexpr size_t kShown = kFirstController + kSliders;
    static constexpr size_t kWindowLeft = kShown + 1;
    static constexpr size_t kWindowTop = kWindowLeft + 2;
    int word(size_t at) const { return static_cast<int16_t>(module_[at] | (module_[at + 1] << 8)); }
    void putWord(size_t at, int v);

    std::array<uint8_t, kSliders> values_{};
    std::array<int16_t, kSliders> lastSent_{};  // -1: send at the next update
    std::array<std::array<uint8_t, kSliders>, kSnapshotCount> stored_{};
    std::array<uint8_t, kModuleBytes> module_{};
    int sent_ = 0;
};

}  // namespace quillmer
