// Panels of the modules that make time. Each has its gate lamp, except Counter, which
// shows its count, and Tempox, which has no output and shows the tempo it will set.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/sequencers/Clocks.h"

namespace quillmer::gui {

namespace {
PanelSpec lampOnly(int columns) {
    PanelSpec spec;
    spec.inputColumns = columns;
    spec.controls = {outputLamp()};
    return spec;
}
}  // namespace

void addClockPanels(const PanelAdder& add) {
    PanelSpec clock = lampOnly(3);
    clock.durationLabel = [](const Module& m) { return as<Clock>(m).durLabel; };
    add("Clock", std::move(clock));
    add("Free", lampOnly(4));
    add("Sync", lampOnly(2));
    add("Pulse", lampOnly(1));

    PanelSpec counter;
    counter.inputColumns = 3;
    counter.controls = {outputBox("bxOut")};
    add("Counter", std::move(counter));

    PanelSpec ghold = lampOnly(3);
    ghold.controls.push_back(switchControl(
        "chkTurbo", QStringLiteral("Turbo"), text(GHold::kTurboTip),
        [](const Module& m) {
            Shown s;
            s.on = as<GHold>(m).turbo;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            as<GHold>(m).turbo = g.number != 0;
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        }));
    add("GHold", std::move(ghold));

    PanelSpec tempo;
    tempo.inputColumns = 4;
    ControlSpec enable = enableSwitch();
    enable.tip = text(Tempox::kEnableTip);
    tempo.controls = {
        std::move(enable),
        valueBox("bxTempo", QStringLiteral("Tempo"), [](const Module& m) { return Shown::ofNumber(as<Tempox>(m).shownTempo); }),
    };
    add("Tempox", std::move(tempo));
}

}  // namespace quillmer::gui
