// Panels of the bio sequencer and its flag tap: the sequence name, the position, codon and
// amino acid boxes, the two switches, and the flag lamp.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "gui/panels/processors/ProcessorControls.h"
#include "modules/sequencers/BioSequencer.h"

namespace quillmer::gui {

using namespace processors;

void addBioPanels(const PanelAdder& add) {
    PanelSpec seq;
    seq.inputColumns = 3;
    seq.inputLabels = {QStringLiteral("Clock"), QStringLiteral("DNA"), QStringLiteral("Anti"), QStringLiteral("Reset"),
                       QStringLiteral("Sort"), QStringLiteral("Seq#")};
    ControlSpec out = textBox("bxOut1", QStringLiteral("Amino acid or base"), [](const Module& m) {
        return Shown::ofText(std::string(1, as<BioSeq>(m).outputLetter()));
    }, 540);
    out.place = ControlSpec::Place::Title;
    seq.controls.push_back(std::move(out));
    ControlSpec name = caption("lblFile", [](const Module& m) { return Shown::ofText(as<BioSeq>(m).fileLabel()); });
    name.newRow = true;
    seq.controls.push_back(std::move(name));
    const char* boxes[] = {"bxAddr_0", "bxAddr_1", "bxAddr_2"};
    const char* tips[] = {"Position", "Codon", "Amino acid"};
    for (int b = 0; b < 3; ++b) {
        ControlSpec box = textBox(boxes[b], QLatin1String(tips[b]), [b](const Module& m) { return Shown::ofText(as<BioSeq>(m).addressText(b)); }, 720);
        box.newRow = b == 0;
        seq.controls.push_back(std::move(box));
    }
    seq.controls.push_back(memberSwitch<BioSeq>("chkClock", QStringLiteral("4 Clk"), BioSeq::kFourClocksTip, &BioSeq::fourClocks, &BioSeq::setFourClocks));
    ControlSpec stop = memberSwitch<BioSeq>("chkAuto", QStringLiteral("Stop"), BioSeq::kAutoStopTip, &BioSeq::stopAtEnd, &BioSeq::setStopAtEnd);
    stop.newRow = false;
    seq.controls.push_back(std::move(stop));
    add("BioSeq", std::move(seq));

    PanelSpec flag = plain(1);
    ControlSpec lamp = outputLamp();
    lamp.read = [](const Module& m) { return Shown::ofOn(as<BioFlag>(m).lit()); };
    flag.controls = {lamp, masterMenu<BioFlag>(BioFlag::kListTip)};
    add("BioFlag", std::move(flag));
}

}  // namespace quillmer::gui
