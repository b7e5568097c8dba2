// Panels of the bit types: the seven bit buttons of Invert and Mask, Shift's two switches,
// Bits' binary display, the lights of the two gates and Test's list of tests.

#include "gui/panels/processors/ProcessorControls.h"
#include "modules/processors/Bitwise.h"

namespace quillmer::gui {

using namespace processors;

void addBitwisePanels(const PanelAdder& add) {
    add("LogiAND", plain(2));
    add("LogiOR", plain(3));
    add("LogiXOR", plain(2));
    PanelSpec no = plain(1);
    no.controls.push_back(overLamp<LogiEQ0>());
    add("LogiEQ0", std::move(no));
    PanelSpec yes = plain(1);
    yes.controls.push_back(overLamp<LogiNE0>());
    add("LogiNE0", std::move(yes));

    PanelSpec invert = plain(1);
    for (ControlSpec& b : bitButtons<Invert>("bits set invert input bits (XORed with input)")) invert.controls.push_back(std::move(b));
    add("Invert", std::move(invert));
    PanelSpec mask = plain(1);
    for (ControlSpec& b : bitButtons<Mask>(MaskOp::kBitTip)) mask.controls.push_back(std::move(b));
    add("Mask", std::move(mask));

    PanelSpec shift = plain(2);
    ControlSpec left = flagSwitch<Shift>("cbLeft", QStringLiteral("Left"), ShiftOp::kLeftTip, ShiftOp::kLeft);
    left.newRow = true;
    shift.controls.push_back(std::move(left));
    shift.controls.push_back(flagSwitch<Shift>("cbRot", QStringLiteral("Rotate"), ShiftOp::kRotateTip, ShiftOp::kRotate));
    add("Shift", std::move(shift));

    // Bits has no output: its binary display stands in the result's place.
    PanelSpec bits;
    bits.inputColumns = 1;
    ControlSpec shown = textBox("lblBits", QString(), [](const Module& m) { return Shown::ofText(as<Bits>(m).bitsText()); }, 900);
    shown.place = ControlSpec::Place::Title;
    bits.controls.push_back(std::move(shown));
    ControlSpec leds = caption("LEDSelect", [](const Module& m) {
        std::string dots;
        for (int b = 7; b >= 0; --b) dots += as<Bits>(m).bitLit(b) ? "\u25cf" : "\u25cb";
        return Shown::ofText(dots);
    }, 1500);
    leds.newRow = true;
    bits.controls.push_back(std::move(leds));
    add("Bits", std::move(bits));

    PanelSpec test = plain(2);
    ControlSpec menu;
    menu.kind = ControlKind::Choice;
    menu.objectName = QStringLiteral("cbTest");
    menu.tip = text(quillmer::Test::kListTip);
    menu.widthTwips = 1500;
    menu.newRow = true;
    for (std::string_view name : quillmer::Test::kTestNames) menu.choices.push_back(text(name));
    menu.read = [](const Module& m) {
        Shown s;
        s.selected = as<quillmer::Test>(m).test();
        return s;
    };
    menu.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<quillmer::Test>(m).chooseTest(g.item);
        e.MarkPatchChanged(true);
    };
    test.controls.push_back(std::move(menu));
    add("Test", std::move(test));
}

}  // namespace quillmer::gui
