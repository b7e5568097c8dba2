#pragma once
// UFSldr: a bank of up to 64 sliders that formulas read and write by module number
// (GetSlider, PutSlider, SliderRange). A slider's value is its position x (0..1) times its
// range plus its offset; its sensitivity scales a drag. Positions are kept per snapshot;
// ranges, offsets, sensitivities, captions and the bank's text per module. It has no output.
// Needs the engine lock.

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "engine/Module.h"
#include "expression/FormulaPanels.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

constexpr int kBankSliders = 64;

struct SliderSetup {
    double range = 127;
    double offset = 0;
    float sens = 1;
};

class UFSldr final : public Module, public FormulaSliderBank, public FillTarget {
public:
    UFSldr();

    int sliderCount() const { return count_; }
    void setSliderCount(int n);
    int stage() const { return stage_; }
    void setStage(int s);
    double position(int num) const { return inRange(num) ? x_[static_cast<size_t>(num)] : 0.0; }
    void setPosition(int num, double x);
    // A drag by `pixels` along a track `track` pixels long, scaled by the slider's sensitivity.
    void drag(int num, int pixels, int track);
    // A touch on the panel's bars (module pixels): the bar under x takes the height at y.
    static constexpr int kBarsLeft = 86, kBarsTop = 12, kBarsBottom = 78, kBarWidth = 4;
    void touch(int x, int y);
    const SliderSetup& setup(int num) const { return setups_[static_cast<size_t>(num & 63)]; }
    // The setup dialog's OK: every slider's range (at least 0.1, by its size), offset and
    // sensitivity (above 0), and the text.
    void applySetup(std::span<const SliderSetup> setups, const std::string& doc);
    const std::string& doc() const { return doc_; }
    const std::string& caption(int num) const { return captions_[static_cast<size_t>(num & 63)]; }
    void setCaption(int num, std::string text);
    // The value as the value box shows it: "0.###".
    static std::string formatValue(double v);

    // FormulaSliderBank
    double sliderValue(int num) const override;
    void putSliderValue(int num, double value) override;
    void setSliderRange(int num, double range, double offset) override;

    // FillTarget: positions as 0..127.
    int fillStages() const override { return count_; }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

    void update(Engine&) override {}
    bool writesOwnHead() const override { return true; }
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    static bool inRange(int num) { return num >= 0 && num < kBankSliders; }
    int16_t count_ = 16;
    int16_t stage_ = 0;
    int16_t spareWord_ = 0;
    uint8_t spare_[2] = {0, 0};
    std::string doc_;
    std::array<double, kBankSliders> x_{};
    std::array<SliderSetup, kBankSliders> setups_{};
    std::array<std::string, kBankSliders> captions_{};
    std::array<std::array<uint8_t, kBankSliders>, kSnapshotCount> stored_{};
};

}  // namespace quillmer
