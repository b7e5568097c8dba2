// Panels of the sums, products, quotients and scaling types: the result box, the overflow
// light where the type has one, AddDiv's Negate switch, Level's knobs, Mixer's sliders and
// Carry's list of Minus modules.

#include "gui/panels/processors/ProcessorControls.h"
#include "modules/processors/Scaling.h"
#include "modules/processors/Sums.h"

namespace quillmer::gui {

using namespace processors;

namespace {
template <class T>
PanelSpec withLight(int columns) {
    PanelSpec spec = plain(columns);
    spec.controls.push_back(overLamp<T>());
    return spec;
}
}  // namespace

void addArithmeticPanels(const PanelAdder& add) {
    add("Add", withLight<Add>(3));
    add("Add2", withLight<Add2>(2));
    add("Mult", withLight<Mult>(2));
    add("MulAdd", withLight<MulAdd>(3));
    add("MulDiv", withLight<MulDiv>(3));
    add("Minus", withLight<Minus>(2));
    add("Modu", plain(2));
    add("Percent", plain(2));
    add("Scaler", plain(3));
    add("Octave", plain(3));
    add("Bounds", plain(3));
    add("Unity", plain(1));

    PanelSpec addDiv = withLight<AddDiv>(4);
    addDiv.controls.push_back(flagSwitch<AddDiv>("chkNegate", QStringLiteral("Negate"), AddDivOp::kNegateTip, AddDivOp::kNegate, 1000));
    add("AddDiv", std::move(addDiv));

    PanelSpec carry = plain(1);
    carry.controls.push_back(masterMenu<Carry>(Carry::kListTip));
    add("Carry", std::move(carry));

    PanelSpec level = plain(1);
    ControlSpec levelKnob = settingUpDown<Level>("Knob1", LevelOp::kLevelTip, LevelOp::kLevel, true, 0, LevelOp::kLevelMax);
    levelKnob.newRow = true;
    level.controls.push_back(std::move(levelKnob));
    level.controls.push_back(
        settingUpDown<Level>("Knob2", LevelOp::kOffsetTip, LevelOp::kOffset, true, -LevelOp::kOffsetMax, LevelOp::kOffsetMax));
    add("Level", std::move(level));

    PanelSpec mixer = plain(4);
    for (int k = 0; k < 4; ++k) {
        ControlSpec slider = settingUpDown<Mixer>("", MixerOp::kInputs[k].tip, k, false, 0, MixerOp::kSliderMax);
        slider.objectName = QStringLiteral("sVal_%1").arg(k);
        slider.newRow = k == 0;
        mixer.controls.push_back(std::move(slider));
    }
    ControlSpec mix = settingUpDown<Mixer>("sMix", MixerOp::kMixTip, MixerOp::kMix, false, 0, MixerOp::kSliderMax);
    mix.newRow = true;
    mixer.controls.push_back(std::move(mix));
    add("Mixer", std::move(mixer));
}

}  // namespace quillmer::gui
