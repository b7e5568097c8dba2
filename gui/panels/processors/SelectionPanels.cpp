// Panels of the routing types: Relay2's two lamps, Selct's Gate, SelOut's lists of Selct
// modules and channels, Flip's Feedback, and the plain result of Latest and T127.

#include "gui/panels/processors/ProcessorControls.h"
#include "modules/processors/Selection.h"

namespace quillmer::gui {

using namespace processors;

void addSelectionPanels(const PanelAdder& add) {
    add("Latest", plain(3));
    add("T127", plain(1));

    PanelSpec relay = plain(3);
    ControlSpec first = outputLamp();
    first.objectName = QStringLiteral("Shape1_0");
    first.read = [](const Module& m) { return Shown::ofOn(!as<Relay2>(m).secondSelected()); };
    ControlSpec second = outputLamp();
    second.objectName = QStringLiteral("Shape1_1");
    second.read = [](const Module& m) { return Shown::ofOn(as<Relay2>(m).secondSelected()); };
    relay.controls.push_back(std::move(first));
    relay.controls.push_back(std::move(second));
    add("Relay2", std::move(relay));

    PanelSpec selct = plain(2);
    selct.controls.push_back(memberSwitch<Selct>("chkGate", QStringLiteral("Gate"), Selct::kGateTip, &Selct::gate, &Selct::setGate));
    add("Selct", std::move(selct));

    PanelSpec selOut = plain(1);
    selOut.controls.push_back(masterMenu<SelOut>(SelOut::kListTip));
    ControlSpec channel;
    channel.kind = ControlKind::Choice;
    channel.objectName = QStringLiteral("cbChan");
    channel.tip = text(SelOut::kChannelTip);
    channel.widthTwips = 700;
    for (int row = 0; row < SelOut::kChannelRows; ++row) channel.choices.push_back(QString::fromStdString(SelOut::channelName(row)));
    channel.read = [](const Module& m) {
        Shown s;
        s.selected = as<SelOut>(m).channelRow();
        return s;
    };
    channel.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<SelOut>(m).chooseChannel(g.item);
        e.MarkPatchChanged(true);
    };
    selOut.controls.push_back(std::move(channel));
    add("SelOut", std::move(selOut));

    PanelSpec flip = plain(2);
    flip.controls.push_back(
        memberSwitch<Flip>("Check1", QStringLiteral("FeedBack"), Flip::kFeedbackTip, &Flip::feedback, &Flip::setFeedback));
    add("Flip", std::move(flip));
}

}  // namespace quillmer::gui
