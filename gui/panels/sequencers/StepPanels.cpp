// Panels of the step family: Stepper with its duration lamp, and the stage tables, whose
// boxes are typed into, clicked to select and stepped with the up-down.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/sequencers/Steps.h"

namespace quillmer::gui {

namespace {
PanelSpec stageTable(int count) {
    PanelSpec spec;
    spec.inputColumns = 1;
    ControlSpec stages;
    stages.kind = ControlKind::StageRow;
    stages.objectName = QStringLiteral("bxV1");
    stages.tip = text(StepSequencer::kStageTip);
    stages.read = [](const Module& m) {
        const auto& table = as<StepSequencer>(m);
        Shown s;
        s.row.reserve(static_cast<size_t>(table.stageCount()));
        for (int i = 0; i < table.stageCount(); ++i) s.row.push_back(table.stageValue(i));
        s.selected = table.CurrentStage;
        s.number = table.LitStage;
        return s;
    };
    stages.edit = [](Module& m, Engine& e, const Gesture& g) {
        auto& table = as<StepSequencer>(m);
        switch (g.kind) {
            case Gesture::Kind::Text: table.editStageText(g.item, g.text); break;
            case Gesture::Kind::Click: table.clickStage(g.item); break;
            case Gesture::Kind::Value: table.setUpDown(g.number); break;
            default: return;
        }
        e.MarkPatchChanged(true);
    };
    stages.newRow = true;
    stages.stages = count;

    ControlSpec upDown;
    upDown.kind = ControlKind::UpDown;
    upDown.objectName = QStringLiteral("UpDown1");
    upDown.tip = text(StepSequencer::kUpDownTip);
    upDown.read = [](const Module& m) { return Shown::ofNumber(as<StepSequencer>(m).upDownValue()); };
    upDown.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<StepSequencer>(m).setUpDown(g.number);
        e.MarkPatchChanged(true);
    };

    ControlSpec fill;
    fill.kind = ControlKind::Button;
    fill.objectName = QStringLiteral("btnFill");
    fill.caption = text(StepSequencer::kFillCaption);
    fill.dialog = Dialog::Fill;
    fill.widthTwips = 600;
    fill.place = ControlSpec::Place::BesideInputs;
    upDown.place = ControlSpec::Place::BesideInputs;
    upDown.widthTwips = 720;
    ControlSpec out = valueBox("bxOut1", QString(), [](const Module& m) { return Shown::ofNumber(as<StepSequencer>(m).ShownOutput); }, 540);
    out.place = ControlSpec::Place::Title;

    spec.controls = {std::move(out), std::move(upDown), std::move(fill), std::move(stages)};
    return spec;
}
}  // namespace

void addStepPanels(const PanelAdder& add) {
    PanelSpec stepper;
    stepper.inputColumns = 3;
    for (std::string_view label : Stepper::kPanelLabels) stepper.inputLabels.push_back(text(label));
    stepper.durationLabel = [](const Module& m) { return as<Stepper>(m).durLabel; };
    ControlSpec count = valueBox("bxOut", QString(), [](const Module& m) { return Shown::ofNumber(as<Stepper>(m).Count); }, 540);
    count.place = ControlSpec::Place::Title;
    stepper.controls = {std::move(count)};
    add("Stepper", std::move(stepper));

    for (int n : {2, 4, 8, 12, 16, 24, 32}) add("Step" + std::to_string(n), stageTable(n));
}

}  // namespace quillmer::gui
