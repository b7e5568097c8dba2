// Panels of the slide, run and page tables. The bars and the knob forward the mouse to
// the slide module; the Fill and Table buttons open their dialogs through the board.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "gui/panels/sequencers/TableViews.h"
#include "modules/sequencers/Pages.h"
#include "modules/sequencers/Runs.h"
#include "modules/sequencers/Slides.h"

namespace quillmer::gui {

namespace {

SlideSequencer::Button slideButton(int button) {
    return button == 1 ? SlideSequencer::Button::Left : button == 0 ? SlideSequencer::Button::None : SlideSequencer::Button::Other;
}

PanelSpec slidePanel(int stages, int barWidth, int rightEdge) {
    PanelSpec spec;
    spec.inputColumns = 1;

    ControlSpec out = valueBox("bxOut1", QString(), [](const Module& m) { return Shown::ofNumber(as<SlideSequencer>(m).shownValue()); }, 540);
    out.place = ControlSpec::Place::Title;
    ControlSpec stage = valueBox("bxStage", text(SlideSequencer::kStageTip),
                                 [](const Module& m) { return Shown::ofNumber(as<SlideSequencer>(m).shownStage()); }, 450);
    stage.place = ControlSpec::Place::BesideInputs;

    ControlSpec knob;
    knob.kind = ControlKind::Knob;
    knob.objectName = QStringLiteral("iKnob");
    knob.tip = text(SlideSequencer::kKnobTip);
    knob.widthTwips = KnobView::kSideTwips;
    knob.place = ControlSpec::Place::BesideInputs;
    knob.read = [](const Module& m) { return Shown::ofNumber(as<SlideSequencer>(m).ScaleLimit); };
    knob.edit = [](Module& m, Engine& e, const Gesture& g) {
        auto& s = as<SlideSequencer>(m);
        const int value = knobValueAt(g.x, g.y);
        if (g.kind == Gesture::Kind::Press) {
            const auto key = g.keys & 1   ? SlideSequencer::KnobKey::CtrlHeld
                             : g.keys & 2 ? SlideSequencer::KnobKey::ShiftHeld
                             : g.keys & 4 ? SlideSequencer::KnobKey::AltHeld
                                          : SlideSequencer::KnobKey::Plain;
            s.knob(value, key);
        } else if (g.kind == Gesture::Kind::Move) {
            s.knob(value);
        } else if (g.kind == Gesture::Kind::Value) {
            s.setScaleLimit(g.number);
        }
        e.MarkPatchChanged(true);
    };

    ControlSpec upDown;
    upDown.kind = ControlKind::UpDown;
    upDown.objectName = QStringLiteral("UpDown1");
    upDown.tip = text(SlideSequencer::kUpDownTip);
    upDown.widthTwips = 720;
    upDown.place = ControlSpec::Place::BesideInputs;
    upDown.rangeFromModule = true;
    upDown.read = [](const Module& m) {
        const auto& s = as<SlideSequencer>(m);
        Shown shown = Shown::ofNumber(s.stageValue(s.CurrentStage));
        shown.selected = s.ScaleLimit;
        return shown;
    };
    upDown.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<SlideSequencer>(m).setUpDown(g.number);
        e.MarkPatchChanged(true);
    };

    ControlSpec scale;
    scale.kind = ControlKind::Button;
    scale.objectName = QStringLiteral("cmdScale");
    scale.caption = QStringLiteral("Norm");
    scale.tip = text(SlideSequencer::kScaleTip);
    scale.widthTwips = 600;
    scale.newRow = true;
    scale.edit = [](Module& m, Engine& e, const Gesture&) {
        as<SlideSequencer>(m).normalize();
        e.MarkPatchChanged(true);
    };
    ControlSpec undo;
    undo.kind = ControlKind::Button;
    undo.objectName = QStringLiteral("cmdUndo");
    undo.caption = QStringLiteral("Undo");
    undo.tip = text(SlideSequencer::kUndoTip);
    undo.widthTwips = 600;
    undo.enabledFromModule = true;
    undo.enabled = false;
    undo.read = [](const Module& m) { return Shown::ofOn(as<SlideSequencer>(m).UndoEnabled); };
    undo.edit = [](Module& m, Engine& e, const Gesture&) {
        as<SlideSequencer>(m).undoNormalize();
        e.MarkPatchChanged(true);
    };
    ControlSpec fill = dialogButton("btnFill", " Fill ", Dialog::Fill);

    ControlSpec bars;
    bars.kind = ControlKind::Bars;
    bars.objectName = QStringLiteral("iBars");
    bars.stages = stages;
    bars.barWidth = barWidth;
    bars.rightEdge = rightEdge;
    bars.widthTwips = BarsView::widthTwips(rightEdge);
    bars.heightTwips = BarsView::heightTwips();
    bars.newRow = true;
    bars.read = [](const Module& m) {
        const auto& s = as<SlideSequencer>(m);
        Shown shown;
        shown.row.reserve(static_cast<size_t>(s.stageCount()));
        for (int i = 0; i < s.stageCount(); ++i) shown.row.push_back(s.stageValue(i));
        shown.number = s.ScaleLimit;
        shown.selected = s.CurrentStage;
        return shown;
    };
    bars.edit = [](Module& m, Engine& e, const Gesture& g) {
        auto& s = as<SlideSequencer>(m);
        switch (g.kind) {
            case Gesture::Kind::Press: s.mouseDown(g.x, g.y, slideButton(g.button)); break;
            case Gesture::Kind::Move:
                s.mouseMove(g.x, g.y, slideButton(g.button));
                if (!s.painting()) return;  // a hover changes nothing
                break;
            case Gesture::Kind::Release: s.mouseUp(); break;
            case Gesture::Kind::Leave: s.mouseLeave(); return;
            default: return;
        }
        e.MarkPatchChanged(true);
    };

    spec.controls = {std::move(out), std::move(stage), std::move(knob), std::move(upDown),
                     std::move(scale), std::move(undo), std::move(fill), std::move(bars)};
    return spec;
}

PanelSpec runPanel() {
    PanelSpec spec;
    spec.inputColumns = 1;
    ControlSpec out = valueBox("bxOut1", text(RunSequencer::kOutputTip), [](const Module& m) { return Shown::ofNumber(as<RunSequencer>(m).ShownOutput); }, 540);
    out.place = ControlSpec::Place::Title;
    ControlSpec stage = valueBox("bxStage", text(RunSequencer::kStageTip), [](const Module& m) { return Shown::ofNumber(as<RunSequencer>(m).CurrentStage); }, 450);
    stage.place = ControlSpec::Place::BesideInputs;
    ControlSpec fill = dialogButton("btnFill", "Fill", Dialog::Fill);
    fill.place = ControlSpec::Place::BesideInputs;
    spec.controls = {std::move(out), std::move(stage), std::move(fill)};
    return spec;
}

PanelSpec pagePanel() {
    PanelSpec spec;
    spec.inputColumns = 2;
    ControlSpec out = valueBox("bxOut1", text(PageSequencer::kOutputTip), [](const Module& m) { return Shown::ofNumber(std::max(0, as<PageSequencer>(m).ShownOutput)); }, 540);
    out.place = ControlSpec::Place::Title;
    ControlSpec stage = valueBox("bxStage", text(PageSequencer::kStageTip), [](const Module& m) { return Shown::ofNumber(std::max(0, as<PageSequencer>(m).ShownStage)); }, 450);
    ControlSpec page = valueBox("bxPage", text(PageSequencer::kStageTip), [](const Module& m) { return Shown::ofNumber(std::max(0, as<PageSequencer>(m).ShownPage)); }, 450);
    ControlSpec table = dialogButton("btnTable", "Table", Dialog::PageTable);
    ControlSpec fill = dialogButton("btnFill", "Fill", Dialog::Fill);
    spec.controls = {std::move(out), std::move(stage), std::move(page), std::move(table), std::move(fill)};
    return spec;
}

}  // namespace

void addTablePanels(const PanelAdder& add) {
    add("Slide4", slidePanel(4, 10, 124));
    add("Slide8", slidePanel(8, 10, 164));
    add("Slide12", slidePanel(12, 10, 204));
    add("Slide16", slidePanel(16, 10, 244));
    add("Slide24", slidePanel(24, 10, 324));
    add("Slide32", slidePanel(32, 10, 404));
    add("Slide48", slidePanel(48, 8, 468));
    add("Slide64", slidePanel(64, 7, 532));
    add("Slide128", slidePanel(128, 5, 724));
    for (const char* type : {"Run8", "Run12", "Run16", "Run24", "Run32", "Run48", "Run64", "Run128"}) add(type, runPanel());
    for (const char* type : {"Page08", "Page12", "Page16", "Page24", "Page32", "Page64", "Page128"}) add(type, pagePanel());
}

}  // namespace quillmer::gui
