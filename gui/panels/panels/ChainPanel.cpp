// The Chain panel: its file button asks for the next patch; Cancel means leave the program.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/panels/Chain.h"

namespace quillmer::gui {

void addChainPanel(const PanelAdder& add) {
    PanelSpec chain;
    chain.inputColumns = 2;
    ControlSpec get;
    get.kind = ControlKind::Button;
    get.objectName = QStringLiteral("cmdGet");
    get.caption = QStringLiteral("File");
    get.tip = QStringLiteral("Select Chain File");
    get.widthTwips = 600;
    get.dialog = Dialog::ChainFile;
    get.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<Chain>(m).fileName = g.text.empty() ? std::string(Chain::kExit) : g.text;
        m.viewChanged = true;
        e.MarkPatchChanged(true);
    };
    ControlSpec file = caption("lblFile", [](const Module& m) {
        const std::string& name = as<Chain>(m).fileName;
        return Shown::ofText(name.substr(name.find_last_of('/') + 1));  // the base name; the tip has it whole
    }, 2100);
    chain.controls = {std::move(get), std::move(file)};
    add("Chain", std::move(chain));
}

}  // namespace quillmer::gui
