// Panels of the types that remember: Delay's Turbo, DLTap's list of Delay modules, HiLo's
// Lowest, Accum's Auto switch, and the plain result of the others.

#include "gui/panels/processors/ProcessorControls.h"
#include "modules/processors/Memory.h"

namespace quillmer::gui {

using namespace processors;

void addMemoryPanels(const PanelAdder& add) {
    add("Sample", plain(2));
    add("Slew", plain(2));
    add("Diff", plain(1));
    add("Tally", plain(3));

    PanelSpec delay = plain(2);
    delay.controls.push_back(memberSwitch<Delay>("Check1", QStringLiteral("Turbo"), Delay::kTurboTip, &Delay::turbo, &Delay::setTurbo));
    add("Delay", std::move(delay));

    PanelSpec tap = plain(1);
    tap.controls.push_back(masterMenu<DLTap>(DLTap::kListTip));
    add("DLTap", std::move(tap));

    PanelSpec hilo = plain(2);
    hilo.controls.push_back(memberSwitch<HiLo>("Check1", QStringLiteral("Lowest"), HiLo::kLowestTip, &HiLo::lowest, &HiLo::setLowest));
    add("HiLo", std::move(hilo));

    PanelSpec accum = plain(3);
    accum.controls.push_back(
        memberSwitch<Accum>("chkAuto", QStringLiteral("No Auto"), Accum::kAutoTip, &Accum::noAutoTurn, &Accum::setNoAutoTurn));
    add("Accum", std::move(accum));
}

}  // namespace quillmer::gui
