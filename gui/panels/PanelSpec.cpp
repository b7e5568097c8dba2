#include "gui/panels/PanelSpec.h"

#include <map>
#include <stdexcept>

#include "engine/Engine.h"
#include "engine/Module.h"

namespace quillmer::gui {

// The table modules' panels (gui/panels/processors/TuningPanels.cpp).
void addTuningPanels(const PanelAdder& add);

namespace {

// Every described type, by id; filled once from the families' files.
class PanelCatalogue {
public:
    PanelCatalogue() {
        const PanelAdder add = [this](std::string_view type, PanelSpec spec) {
            const std::optional<ModuleTypeId> id = typeIdByName(type);
            if (!id) throw std::logic_error("panel for an unknown type: " + std::string(type));
            if (!specs_.emplace(*id, std::move(spec)).second)
                throw std::logic_error("panel described twice: " + std::string(type));
        };
        addProcessorPanels(add);
        addArithmeticPanels(add);
        addBitwisePanels(add);
        addSelectionPanels(add);
        addMemoryPanels(add);
        addTuningPanels(add);
        addClockPanels(add);
        addStepPanels(add);
        addTablePanels(add);
        addNoteOutputPanels(add);
        addNoteValuePanels(add);
        addChainPanel(add);
        addMidiInputPanels(add);
        addDisplayPanels(add);
        addSidePanels(add);
        addGeneratorPanels(add);
        addBioPanels(add);
        addGridPanels(add);
        addFormulaPanels(add);
        placeholder_.placeholder = true;
        placeholder_.controls.push_back(caption("lblNotYet", [](const Module&) { return Shown::ofText("Doesn't run yet"); }));
        placeholder_.controls.back().tip = text(Module::kPlaceholderNote);
    }

    const PanelSpec& find(ModuleTypeId type) const {
        const auto it = specs_.find(type);
        return it == specs_.end() ? placeholder_ : it->second;
    }

private:
    std::map<ModuleTypeId, PanelSpec> specs_;
    PanelSpec placeholder_;
};

}  // namespace

const PanelSpec& panelSpec(ModuleTypeId type) {
    static const PanelCatalogue catalogue;
    return catalogue.find(type);
}

QString text(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

ControlSpec outputBox(const char* objectName) {
    ControlSpec box = valueBox(objectName, QString(), [](const Module& m) { return Shown::ofNumber(m.lastOutput()); }, 540);
    box.place = ControlSpec::Place::Title;
    return box;
}

ControlSpec outputLamp() {
    ControlSpec lamp;
    lamp.kind = ControlKind::Lamp;
    lamp.objectName = QStringLiteral("Shape1");
    lamp.read = [](const Module& m) {
        Shown s;
        s.on = m.lastOutput() != 0;
        return s;
    };
    return lamp;
}

ControlSpec dialogButton(const char* objectName, QString caption, Dialog dialog, int widthTwips, QString tip) {
    ControlSpec button;
    button.kind = ControlKind::Button;
    button.objectName = QLatin1String(objectName);
    button.caption = std::move(caption);
    button.tip = std::move(tip);
    button.dialog = dialog;
    button.widthTwips = widthTwips;
    return button;
}

ControlSpec valueBox(const char* objectName, QString tip, Reader read, int widthTwips) {
    ControlSpec box;
    box.kind = ControlKind::ValueBox;
    box.objectName = QLatin1String(objectName);
    box.tip = std::move(tip);
    box.read = std::move(read);
    box.widthTwips = widthTwips;
    return box;
}

ControlSpec textBox(const char* objectName, QString tip, Reader read, int widthTwips) {
    ControlSpec box = valueBox(objectName, std::move(tip), std::move(read), widthTwips);
    box.textual = true;
    return box;
}

ControlSpec caption(const char* objectName, Reader read, int widthTwips) {
    ControlSpec line;
    line.kind = ControlKind::Caption;
    line.objectName = QLatin1String(objectName);
    line.read = std::move(read);
    line.widthTwips = widthTwips;
    return line;
}

ControlSpec switchControl(const char* objectName, QString caption, QString tip, Reader read, Editor edit,
                          int widthTwips) {
    ControlSpec sw;
    sw.kind = ControlKind::Switch;
    sw.objectName = QLatin1String(objectName);
    sw.caption = std::move(caption);
    sw.tip = std::move(tip);
    sw.read = std::move(read);
    sw.edit = std::move(edit);
    sw.widthTwips = widthTwips;
    return sw;
}

// The switch is in while the module is disabled: its Enabled is the switch's inverse.
ControlSpec enableSwitch() {
    ControlSpec enable = switchControl(
        "opEnable", QStringLiteral("Enable"), QStringLiteral("Click in to disable, out to enable"),
        [](const Module& m) { return Shown::ofOn(m.Enabled == 0); },
        [](Module& m, Engine& e, const Gesture& g) {
            m.Enabled = g.number != 0 ? int16_t{0} : int16_t{-1};
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        });
    enable.enableColours = true;
    return enable;
}

}  // namespace quillmer::gui
