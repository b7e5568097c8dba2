// Panels of the matrices and their satellites, and of the gate, rhythm, pick, switch and
// knob families. A matrix shows its whole grid of knobs in one picture (MatrixGridView).

#include <QGuiApplication>
#include <initializer_list>
#include <utility>

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "gui/panels/sequencers/MatrixGridView.h"
#include "modules/sequencers/Gates.h"
#include "modules/sequencers/Knobs.h"
#include "modules/sequencers/MatrixTypes.h"
#include "modules/sequencers/Picks.h"
#include "modules/sequencers/Rhythm.h"
#include "modules/sequencers/Steps.h"
#include "modules/sequencers/Switches.h"

namespace quillmer::gui {

namespace {

ControlSpec titleOutput() {
    ControlSpec out = outputBox();
    out.place = ControlSpec::Place::Title;
    return out;
}

ControlSpec button(const char* objectName, QString caption, QString tip, Editor edit, int widthTwips = 600) {
    ControlSpec b;
    b.kind = ControlKind::Button;
    b.objectName = QLatin1String(objectName);
    b.caption = std::move(caption);
    b.tip = std::move(tip);
    b.edit = std::move(edit);
    b.widthTwips = widthTwips;
    return b;
}

ControlSpec fillButton(QString tip = QStringLiteral("Sequencer Fill")) {
    ControlSpec fill = button("btnFill", QStringLiteral(" Fill "), std::move(tip), nullptr);
    fill.dialog = Dialog::Fill;
    return fill;
}

ControlSpec stageRow(const char* objectName, QString tip, int stages, Reader read, Editor edit) {
    ControlSpec row;
    row.kind = ControlKind::StageRow;
    row.objectName = QLatin1String(objectName);
    row.tip = std::move(tip);
    row.stages = stages;
    row.read = std::move(read);
    row.edit = std::move(edit);
    row.newRow = true;
    return row;
}

// A check box of a module flag.
template <class T>
ControlSpec flagSwitch(const char* objectName, const char* caption, const char* tip, bool T::*flag) {
    return switchControl(
        objectName, QLatin1String(caption), QLatin1String(tip),
        [flag](const Module& m) { return Shown::ofOn(as<T>(m).*flag); },
        [flag](Module& m, Engine& e, const Gesture& g) {
            as<T>(m).*flag = g.number != 0;
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        },
        600);
}

int heldKeys() {
    const Qt::KeyboardModifiers keys = QGuiApplication::keyboardModifiers();
    return (keys & Qt::ControlModifier ? 1 : 0) | (keys & Qt::ShiftModifier ? 2 : 0) | (keys & Qt::AltModifier ? 4 : 0);
}

PanelSpec matrixPanel(int columns, int rows) {
    PanelSpec spec;
    spec.inputColumns = 2;
    const bool fourRow = rows == 4;
    const bool modes = rows == 8 && columns != 12;
    spec.controls.push_back(titleOutput());
    // btnFill and cmdFillRow: the panel board runs the editor before the dialog opens, so
    // the matrix knows whether the whole grid or the current row is filled.
    ControlSpec fill = fillButton();
    fill.edit = [](Module& m, Engine&, const Gesture&) { as<MatrixSequencer>(m).chooseFill(false); };
    spec.controls.push_back(std::move(fill));
    ControlSpec fillRow = button("cmdFillRow", QStringLiteral("Fill Row"), QStringLiteral("Fill for current row only"),
                                 [](Module& m, Engine&, const Gesture&) { as<MatrixSequencer>(m).chooseFill(true); }, 1140);
    fillRow.dialog = Dialog::Fill;
    fillRow.read = [](const Module& m) {
        Shown s = Shown::ofText("Fill Row " + std::to_string(as<MatrixSequencer>(m).Row));
        s.items = {" Row: " + std::to_string(as<MatrixSequencer>(m).Row)};
        return s;
    };
    spec.controls.push_back(std::move(fillRow));
    ControlSpec table = button("cmdTable", QStringLiteral("Table"), QStringLiteral("Open Page Table"), nullptr);
    table.dialog = Dialog::PageTable;
    spec.controls.push_back(std::move(table));
    spec.controls.push_back(button("cmdKnobSet", QStringLiteral("1"), QStringLiteral("Knob Graphics"),
                                   [](Module& m, Engine&, const Gesture&) { as<MatrixSequencer>(m).stepKnobSet(); }, 300));
    spec.controls.back().read = [](const Module& m) { return Shown::ofText(std::to_string(as<MatrixSequencer>(m).KnobSet + 1)); };
    ControlSpec lock = flagSwitch<MatrixSequencer>("chkLock", "Lock", "Lock Knobs", &MatrixSequencer::Lock);
    lock.newRow = true;
    spec.controls.push_back(std::move(lock));
    if (columns != 12) {
        spec.controls.push_back(flagSwitch<MatrixSequencer>("chkKick", "Kick", "Kick Life Cycle if it stabalizes", &MatrixSequencer::Kick));
        spec.controls.push_back(flagSwitch<MatrixSequencer>("chkRan", "Ran", "Life cell values randomized", &MatrixSequencer::Ran));
    }
    if (fourRow)
        spec.controls.push_back(flagSwitch<MatrixSequencer>("chkHi", "Hi", "Put Life in Hi mode (more cells occupied)", &MatrixSequencer::Hi));
    if (modes) {
        ControlSpec type = button("cmdType", QStringLiteral("Life"), QStringLiteral("Select CA type"),
                                  [](Module& m, Engine& e, const Gesture&) {
                                      as<MatrixSequencer>(m).stepMode();
                                      e.MarkPatchChanged(true);
                                  },
                                  840);
        type.read = [](const Module& m) {
            static const char* names[] = {"Life", "HiLife", "CA/1D"};
            return Shown::ofText(names[as<MatrixSequencer>(m).Mode % 3]);
        };
        spec.controls.push_back(std::move(type));
    }
    spec.controls.push_back(matrixGridControl(columns, rows, columns != 12));
    if (modes) spec.controls.push_back(ruleLampsControl());
    return spec;
}

PanelSpec satellitePanel() {
    PanelSpec spec;
    spec.inputColumns = 2;
    ControlSpec parent;
    parent.kind = ControlKind::Choice;
    parent.objectName = QStringLiteral("cbXmID");
    parent.tip = text(MatrixOutput::kParentTip);
    parent.itemsFromModule = true;
    parent.read = [](const Module& m) {
        const auto& out = as<MatrixOutput>(m);
        Shown s;
        for (int number : out.parentChoices()) s.items.push_back(std::to_string(number));
        s.selected = out.parentRow();
        return s;
    };
    parent.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<MatrixOutput>(m).chooseParentRow(g.item);
        e.MarkPatchChanged(true);
    };
    parent.widthTwips = 720;
    spec.controls = {titleOutput(), std::move(parent)};
    return spec;
}

PanelSpec knobPanel(int n) {
    PanelSpec spec;
    spec.inputColumns = 1;
    ControlSpec knobs = stageRow(
        "iKnobs", QStringLiteral("Stage value"), n,
        [](const Module& m) {
            const auto& k = as<KnobSequencer>(m);
            Shown s;
            for (int i = 0; i < k.stageCount(); ++i) s.row.push_back(k.stageValue(i));
            s.selected = k.CurrentStage;
            s.number = k.CurrentStage;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            auto& k = as<KnobSequencer>(m);
            switch (g.kind) {
                case Gesture::Kind::Text: k.setKnob(g.item, ParseBusValue(g.text)); break;
                case Gesture::Kind::Click:
                    k.pressKnob(g.item * kKnobTwips + 1, 1, 2, 0);  // shows the knob without changing it
                    k.releaseKnob();
                    k.CurrentStage = g.item;
                    return;
                default: return;
            }
            e.MarkPatchChanged(true);
        });
    ControlSpec lock = switchControl(
        "chkLock", QStringLiteral("Lock"), QStringLiteral("Lock Knobs"),
        [](const Module& m) { return Shown::ofOn(as<KnobSequencer>(m).Lock); },
        [](Module& m, Engine& e, const Gesture& g) {
            as<KnobSequencer>(m).setLock(g.number != 0);
            e.MarkPatchChanged(true);
        },
        600);
    spec.controls = {titleOutput(), std::move(lock), fillButton(QStringLiteral("Fill utility")), std::move(knobs)};
    return spec;
}

PanelSpec pickPanel(int n) {
    PanelSpec spec;
    ControlSpec values = stageRow(
        "opValue", QStringLiteral("Click to choose; type or drag to change"), n,
        [](const Module& m) {
            const auto& p = as<PickSequencer>(m);
            Shown s;
            for (int i = 0; i < p.count(); ++i) s.row.push_back(p.value(i));
            s.selected = p.Selected;
            s.number = p.Selected;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            auto& p = as<PickSequencer>(m);
            switch (g.kind) {
                case Gesture::Kind::Click: p.choose(g.item); break;
                case Gesture::Kind::Text:
                    p.choose(g.item);
                    p.setUpDown(ParseBusValue(g.text));
                    break;
                case Gesture::Kind::Value: p.setUpDown(g.number); break;
                default: return;
            }
            e.MarkPatchChanged(true);
        });
    spec.controls = {titleOutput(), fillButton(QStringLiteral("Fill utility")), std::move(values)};
    return spec;
}

PanelSpec radioPanel() {
    PanelSpec spec;
    ControlSpec knobs = stageRow(
        "opButton", QStringLiteral("Click to choose; type or drag to change"), Radio::kKnobs,
        [](const Module& m) {
            const auto& r = as<Radio>(m);
            Shown s;
            for (int i = 0; i < Radio::kKnobs; ++i) s.row.push_back(r.value(i));
            s.selected = r.Selected;
            s.number = r.Selected;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            auto& r = as<Radio>(m);
            switch (g.kind) {
                case Gesture::Kind::Click: r.select(g.item); break;
                case Gesture::Kind::Text:
                    r.select(g.item);
                    if (!r.Lock) r.setUpDown(ParseBusValue(g.text));
                    break;
                case Gesture::Kind::Value:
                    if (!r.Lock) r.setUpDown(g.number);
                    break;
                default: return;
            }
            e.MarkPatchChanged(true);
        });
    spec.controls = {titleOutput(), flagSwitch<Radio>("chkLock", "Lock", "Lock Knobs", &Radio::Lock),
                     fillButton(text(Radio::kFillTip)), std::move(knobs)};
    return spec;
}

PanelSpec patternPanel(int n) {
    PanelSpec spec;
    spec.inputColumns = 2;
    ControlSpec stages = stageRow(
        "chkStage", QStringLiteral("1 = stage on; click a stage to toggle it"), n,
        [](const Module& m) {
            const auto& p = as<GatePatterns>(m);
            Shown s;
            for (int i = 0; i < p.stageCount(); ++i) s.row.push_back(p.stageOn(p.CurrentPattern, i) ? 1 : 0);
            s.selected = std::max(p.LastStage, 0);
            s.number = s.selected;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            auto& p = as<GatePatterns>(m);
            switch (g.kind) {
                case Gesture::Kind::Click: p.setStage(g.item, !p.stageOn(p.CurrentPattern, g.item)); break;
                case Gesture::Kind::Text: p.setStage(g.item, ParseBusValue(g.text) != 0); break;
                default: return;
            }
            e.MarkPatchChanged(true);
        });
    ControlSpec patternNumber = valueBox("bxPatNum", QStringLiteral("Pattern"),
                                         [](const Module& m) { return Shown::ofNumber(as<GatePatterns>(m).CurrentPattern); });
    ControlSpec copy = button("btnCopy", QStringLiteral("Copy"), text(GatePatterns::kCopyTip),
                              [](Module& m, Engine& e, const Gesture&) {
                                  as<GatePatterns>(m).copyButton(heldKeys());
                                  e.MarkPatchChanged(true);
                              });
    spec.controls = {titleOutput(), std::move(patternNumber), std::move(copy), std::move(stages)};
    return spec;
}

PanelSpec rhythmPanel() {
    PanelSpec spec;
    spec.inputColumns = 2;
    ControlSpec state = switchControl(
        "Check1", QStringLiteral("Note"), QStringLiteral("checked = Don't display stage positions (saves cpu cycles)"),
        [](const Module& m) {
            const auto& r = as<Rhythm>(m);
            static const char* names[] = {"Note", "Hold", "Turbo"};
            Shown s = Shown::ofOn(r.HidePositions);
            s.text = names[static_cast<int>(r.state)];
            s.warn = r.state != Rhythm::State::Note;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            as<Rhythm>(m).HidePositions = g.number != 0;
            e.MarkPatchChanged(true);
        });
    auto rowsButton = [](const char* name, const char* caption, void (*act)(Rhythm&)) {
        return button(name, QLatin1String(caption), QString(), [act](Module& m, Engine& e, const Gesture&) {
            act(as<Rhythm>(m));
            e.MarkPatchChanged(true);
        });
    };
    spec.controls = {titleOutput(), std::move(state),
                     rowsButton("cmdCopy", "Copy", [](Rhythm& r) { r.copyRows(); }),
                     rowsButton("cmdPaste", "Paste", [](Rhythm& r) { r.pasteRows(); }),
                     rowsButton("cmdUndo", "Undo", [](Rhythm& r) { r.undoRows(); }), rhythmLampsControl()};
    return spec;
}

PanelSpec lampsPanel(int inputColumns) {
    PanelSpec spec;
    spec.inputColumns = inputColumns;
    spec.controls = {titleOutput(), outputLamp()};
    return spec;
}

}  // namespace

void addGridPanels(const PanelAdder& add) {
    for (auto [c, r] : std::initializer_list<std::pair<int, int>>{{4, 4}, {8, 4}, {8, 8}, {12, 8}, {16, 4}, {16, 8}}) {
        const std::string size = std::to_string(c) + "x" + std::to_string(r);
        add("Matrix" + size, matrixPanel(c, r));
        add("MOut" + size, satellitePanel());
    }
    for (int n : {2, 4, 8, 12, 16, 24}) add("Knob" + std::to_string(n), knobPanel(n));
    for (int n : {4, 8, 16, 24}) add(n < 10 ? "Pick0" + std::to_string(n) : "Pick" + std::to_string(n), pickPanel(n));
    add("Radio", radioPanel());
    for (int n : {8, 16, 32}) add(n < 10 ? "Gatex0" + std::to_string(n) : "Gatex" + std::to_string(n), patternPanel(n));
    add("Rhythm", rhythmPanel());
    add("Gates", lampsPanel(4));
    for (int n : {2, 4, 8, 16}) add("Switch" + std::to_string(n), lampsPanel(n <= 4 ? n + 1 : 4));
}

}  // namespace quillmer::gui
