// Panels of the processors: Div's two inputs and its result, Kicker's tally beside its lamp.

#include "engine/Module.h"
#include "gui/panels/PanelSpec.h"
#include "modules/processors/Events.h"

namespace quillmer::gui {

void addProcessorPanels(const PanelAdder& add) {
    PanelSpec div;
    div.inputColumns = 2;
    div.controls = {outputBox()};
    add("Div", std::move(div));

    PanelSpec kicker;
    ControlSpec tally =
        valueBox("lblTally", QStringLiteral("Tally"), [](const Module& m) { return Shown::ofNumber(as<Kicker>(m).shownTally); }, 540);
    tally.place = ControlSpec::Place::Title;
    kicker.controls = {outputLamp(), std::move(tally)};
    add("Kicker", std::move(kicker));
}

}  // namespace quillmer::gui
