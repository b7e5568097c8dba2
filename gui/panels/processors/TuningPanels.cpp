// Panels of the table modules: the table's name, the buttons that open the table editors
// and the Fill dialog, ToneTbl's Num/N-1 switch and TNames' name of the slot.

#include "gui/panels/processors/ProcessorControls.h"
#include "modules/processors/TableModules.h"

namespace quillmer::gui {

using namespace processors;

namespace {

ControlSpec button(const char* objectName, const char* caption, const char* tip, Dialog dialog, Reader read = {}) {
    ControlSpec b = dialogButton(objectName, QLatin1String(caption), dialog, 700, QLatin1String(tip));
    // A reader gives the table number; the caption stays as it is.
    if (read)
        b.read = [read = std::move(read), caption](const Module& m) {
            Shown s = read(m);
            s.text = caption;
            return s;
        };
    return b;
}

// The name of the general table, and the buttons on it.
void addGeneralTableControls(PanelSpec& spec) {
    ControlSpec name = caption("lblTabla", [](const Module& m) { return Shown::ofText(as<GeneralTableModule>(m).tableName()); });
    name.newRow = true;
    spec.controls.push_back(std::move(name));
    spec.controls.push_back(button("btnFill", "Fill", "Open the Fill dialog on this table", Dialog::Fill));
    // The reader's number is the table the editor opens on; the caption stays.
    spec.controls.push_back(button("cmdTabla", "Table", "Open the table editor on this table", Dialog::TableBank,
                                   [](const Module& m) { return Shown::ofNumber(std::max(as<GeneralTableModule>(m).table(), 0)); }));
}

}  // namespace

void addTuningPanels(const PanelAdder& add) {
    add("Qscale", plain(2));

    PanelSpec tabla = plain(2);
    addGeneralTableControls(tabla);
    add("Tabla", std::move(tabla));

    PanelSpec fit = plain(2);
    addGeneralTableControls(fit);
    add("TFit", std::move(fit));

    PanelSpec write = plain(4);
    write.controls.push_back(valueBox("bxInput", QStringLiteral("The value written"),
                                      [](const Module& m) { return Shown::ofNumber(as<TWrite>(m).shownInput()); }));
    write.controls.back().newRow = true;
    write.controls.push_back(valueBox("bxStep", QStringLiteral("The step written"),
                                      [](const Module& m) { return Shown::ofNumber(as<TWrite>(m).shownStep()); }));
    addGeneralTableControls(write);
    add("TWrite", std::move(write));

    PanelSpec tone = plain(1);
    ControlSpec offset = switchControl(
        "chkOffset", QStringLiteral("Num"), text(ToneTbl::kOffsetTip),
        [](const Module& m) {
            Shown s = Shown::ofOn(as<ToneTbl>(m).countsSteps());
            s.text = std::string(as<ToneTbl>(m).caption());
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            as<ToneTbl>(m).setCountsSteps(g.number != 0);
            e.MarkPatchChanged(true);
        },
        600);
    tone.controls.push_back(std::move(offset));
    ControlSpec toneName = caption("lbTable", [](const Module& m) { return Shown::ofText(as<ToneTbl>(m).tableName()); });
    toneName.newRow = true;
    tone.controls.push_back(std::move(toneName));
    tone.controls.push_back(button("cmdTone", "Tuning", "Open the tuning table editor on this table", Dialog::ToneTable,
                                   [](const Module& m) { return Shown::ofNumber(as<ToneTbl>(m).shownTable()); }));
    add("ToneTbl", std::move(tone));

    PanelSpec names;
    names.inputColumns = 1;
    names.controls.push_back(valueBox("btnTable", QStringLiteral("Table Name Slot #"),
                                      [](const Module& m) { return Shown::ofNumber(as<TNames>(m).slot()); }, 500));
    ControlSpec name;
    name.kind = ControlKind::EditBox;
    name.objectName = QStringLiteral("lblTabla");
    name.tip = QStringLiteral("The name of this slot: type to change it (20 characters)");
    name.textual = true;
    name.widthTwips = 2200;
    name.newRow = true;
    name.read = [](const Module& m) { return Shown::ofText(as<TNames>(m).shownName()); };
    name.edit = [](Module& m, Engine& e, const Gesture& g) {
        auto& n = as<TNames>(m);
        n.setName(n.slot(), g.text);
        e.MarkPatchChanged(true);
    };
    names.controls.push_back(std::move(name));
    add("TNames", std::move(names));
}

}  // namespace quillmer::gui
