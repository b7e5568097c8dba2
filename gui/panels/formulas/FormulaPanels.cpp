// Panels of the formula modules and the slider bank: the formula list, the output, the
// switches, the lamp row, the label, the formula's title; the slider bank's bars, value,
// stage, Fill and Setup.

#include <QPainter>

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/formulas/FormulaModules.h"
#include "modules/formulas/SliderBank.h"

namespace quillmer::gui {

namespace {

ControlSpec formulaList() {
    ControlSpec list;
    list.kind = ControlKind::Choice;
    list.objectName = QStringLiteral("cbFn");
    list.tip = QStringLiteral("The formula this module runs");
    for (int n = 0; n < 128; ++n) list.choices.push_back(QString::number(n));
    list.widthTwips = 700;
    list.place = ControlSpec::Place::BesideInputs;
    list.read = [](const Module& m) {
        Shown s;
        s.selected = as<FormulaModule>(m).currentFormula();
        return s;
    };
    list.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<FormulaModule>(m).chooseFormula(g.item);
        e.MarkPatchChanged(true);
    };
    return list;
}

std::string lampText(uint32_t bits, int lamps) {
    std::string row;
    for (int i = 0; i < lamps; ++i) row += ((bits >> i) & 1u) != 0 ? "\u25CF" : "\u25CB";
    return row;
}

// A point of a drawn view in the pixels of its design size: the view may be drawn larger.
int designPixel(int at, int shownSize, int designSize) {
    return shownSize > 0 ? static_cast<int>(static_cast<int64_t>(at) * designSize / shownSize) : at;
}

const QColor kLampLit(255, 60, 40);
const QColor kLampDark(128, 24, 16);

// The lamp matrix: 32 rows of 32 cells, lit as the formula's LM rows say. A left click on a
// cell toggles it unless "Lock" is in.
ControlSpec lampMatrix() {
    ControlSpec c;
    c.kind = ControlKind::Drawn;
    c.objectName = QStringLiteral("picMatrix");
    c.tip = QStringLiteral("Click a lamp to turn it on or off");
    c.widthTwips = kMatrixPixelWidth * kPadUnitsPerPixel;
    c.heightTwips = kMatrixPixelHeight * kPadUnitsPerPixel;
    c.newRow = true;
    c.read = [](const Module& m) {
        const auto& f = as<FormulaModule>(m);
        Shown s;
        s.row.resize(kMatrixSize);
        for (int r = 0; r < kMatrixSize; ++r) {
            uint32_t word = 0;
            for (int col = 0; col < kMatrixSize; ++col) word |= f.cell(col, r) ? 1u << col : 0u;
            s.row[static_cast<size_t>(r)] = static_cast<int>(word);
        }
        return s;
    };
    c.paint = [](QPainter& p, const QRect& area, const Shown& shown) {
        const double sx = static_cast<double>(area.width()) / kMatrixPixelWidth;
        const double sy = static_cast<double>(area.height()) / kMatrixPixelHeight;
        for (size_t r = 0; r < shown.row.size(); ++r) {
            const auto word = static_cast<uint32_t>(shown.row[r]);
            for (int col = 0; col < kMatrixSize; ++col) {
                const QRectF cell(area.left() + (kMatrixMargin + col * kMatrixCellWidth + 1) * sx,
                                  area.top() + (static_cast<int>(r) * kMatrixCellHeight + 1) * sy, (kMatrixCellWidth - 2) * sx,
                                  (kMatrixCellHeight - 2) * sy);
                p.fillRect(cell, ((word >> col) & 1u) != 0 ? kLampLit : kLampDark);
            }
        }
    };
    c.edit = [](Module& m, Engine& e, const Gesture& g) {
        if (g.kind != Gesture::Kind::Press) return;
        const int x = designPixel(g.x, g.number, kMatrixPixelWidth);
        const int y = designPixel(g.y, g.item, kMatrixPixelHeight);
        if (as<FormulaModule>(m).pressMatrix(e, x, y, g.button) == MatrixPress::Toggled) e.MarkPatchChanged(true);
    };
    return c;
}

// The mouse pad of UCalc7: shows the label; presses, drags and releases reach the module in
// position units (15 to a pixel of its design size) for UFOMouse.
constexpr int kPadWidthTwips = 2700;
constexpr int kPadHeightTwips = 1500;

ControlSpec mousePad() {
    ControlSpec c;
    c.kind = ControlKind::Drawn;
    c.objectName = QStringLiteral("Label1");
    c.tip = QStringLiteral("Press and drag: the formula reads button, keys and offsets with UFOMouse");
    c.widthTwips = kPadWidthTwips;
    c.heightTwips = kPadHeightTwips;
    c.read = [](const Module& m) {
        const auto& f = as<FormulaModule>(m);
        Shown s = Shown::ofText(f.label());
        for (int reading = 0; reading < 5; ++reading) s.row.push_back(f.padReading(reading));
        return s;
    };
    c.paint = [](QPainter& p, const QRect& area, const Shown& shown) {
        p.setPen(QColor(200, 200, 210));
        p.drawText(area.adjusted(4, 2, -4, -2), Qt::AlignCenter | Qt::TextWordWrap, QString::fromStdString(shown.text));
        if (shown.row.size() == 5 && shown.row[4] != 0)
            p.drawText(area.adjusted(4, 2, -4, -2), Qt::AlignRight | Qt::AlignBottom,
                       QStringLiteral("%1, %2").arg(shown.row[2]).arg(shown.row[3]));
    };
    c.edit = [](Module& m, Engine&, const Gesture& g) {
        auto& f = as<FormulaModule>(m);
        const int x = designPixel(g.x, g.number, kPadWidthTwips / kPadUnitsPerPixel) * kPadUnitsPerPixel;
        const int y = designPixel(g.y, g.item, kPadHeightTwips / kPadUnitsPerPixel) * kPadUnitsPerPixel;
        // Shift state as the pad keeps it: 1 Shift, 2 Ctrl, 4 Alt.
        const int shift = ((g.keys & 2) != 0 ? 1 : 0) | ((g.keys & 1) != 0 ? 2 : 0) | (g.keys & 4);
        switch (g.kind) {
            case Gesture::Kind::Press: f.padDown(g.button, shift, x, y); break;
            case Gesture::Kind::Move: f.padMove(x, y); break;
            case Gesture::Kind::Release: f.padUp(); break;
            default: return;
        }
        m.viewChanged = true;
    };
    return c;
}

PanelSpec formulaPanel(const FormulaShape& shape, int columns) {
    PanelSpec spec;
    spec.inputColumns = columns;
    ControlSpec out = outputBox();
    out.place = ControlSpec::Place::Title;
    spec.controls.push_back(std::move(out));
    spec.controls.push_back(formulaList());
    for (int i = 0; i < shape.switches; ++i) {
        const int slot = shape.busIns + i + 2;
        ControlSpec sw = switchControl(
            ("chkA" + std::to_string(i)).c_str(), QStringLiteral("In %1").arg(slot),
            QStringLiteral("In %1: pressed=1").arg(slot), [i](const Module& m) { return Shown::ofOn(as<FormulaModule>(m).switchPressed(i)); },
            [i](Module& m, Engine& e, const Gesture& g) {
                as<FormulaModule>(m).setSwitch(i, g.number != 0);
                e.MarkPatchChanged(true);
            },
            600);
        sw.tipFromModule = true;
        sw.read = [i](const Module& m) {
            const auto& f = as<FormulaModule>(m);
            Shown s = Shown::ofOn(f.switchPressed(i));
            s.tip = f.switchTip(i);
            return s;
        };
        sw.newRow = i == 0;
        spec.controls.push_back(std::move(sw));
    }
    if (shape.rowLamps > 0) {
        const int lamps = shape.rowLamps;
        ControlSpec row = caption("shpLeds", [lamps](const Module& m) { return Shown::ofText(lampText(as<FormulaModule>(m).lampBits(), lamps)); });
        row.newRow = true;
        spec.controls.push_back(std::move(row));
    }
    if (shape.lampMatrix) {
        ControlSpec lock = switchControl(
            "chkLock", QStringLiteral("Lock"), QStringLiteral("Clicks leave the lamps alone"),
            [](const Module& m) { return Shown::ofOn(as<FormulaModule>(m).locked()); },
            [](Module& m, Engine& e, const Gesture& g) {
                as<FormulaModule>(m).setLocked(g.number != 0);
                e.MarkPatchChanged(true);
            },
            600);
        lock.newRow = true;
        spec.controls.push_back(std::move(lock));
        spec.controls.push_back(lampMatrix());
    }
    if (shape.label) {
        ControlSpec label = shape.mousePad ? mousePad()
                                           : caption("lbText", [](const Module& m) { return Shown::ofText(as<FormulaModule>(m).label()); });
        label.newRow = true;
        spec.controls.push_back(std::move(label));
    }
    ControlSpec doc = caption("lblDoc", [](const Module& m) { return Shown::ofText(as<FormulaModule>(m).shownDoc()); });
    doc.tip = QStringLiteral("The title of the formula that runs");
    doc.newRow = true;
    spec.controls.push_back(std::move(doc));
    spec.inputTip = [](const Module& m, int input) { return as<FormulaModule>(m).inputTip(input); };
    spec.nameTip = [](const Module& m) { return as<FormulaModule>(m).shownDoc(); };
    return spec;
}

PanelSpec sliderPanel() {
    PanelSpec spec;
    spec.inputColumns = 1;
    ControlSpec value = valueBox("bxOut1", QStringLiteral("The value of the current slider"), [](const Module& m) {
        const auto& b = as<UFSldr>(m);
        return Shown::ofText(UFSldr::formatValue(b.sliderValue(b.stage())));
    }, 900);
    value.textual = true;
    value.place = ControlSpec::Place::Title;
    ControlSpec stage = valueBox("bxStage", QStringLiteral("The current slider"), [](const Module& m) { return Shown::ofNumber(as<UFSldr>(m).stage()); }, 450);
    ControlSpec fill = dialogButton("btnFill", QStringLiteral(" Fill "), Dialog::Fill);
    ControlSpec setup = dialogButton("bSetup", QStringLiteral("Setup"), Dialog::SliderSetup, 700,
                                     QStringLiteral("Range, offset and sensitivity of each slider"));
    ControlSpec count;
    count.kind = ControlKind::UpDown;
    count.objectName = QStringLiteral("UpDown1");
    count.tip = QStringLiteral("How many sliders");
    count.minimum = 1;
    count.maximum = kBankSliders;
    count.read = [](const Module& m) { return Shown::ofNumber(as<UFSldr>(m).sliderCount()); };
    count.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<UFSldr>(m).setSliderCount(g.number);
        e.MarkPatchChanged(true);
    };
    ControlSpec bars;
    bars.kind = ControlKind::Bars;
    bars.objectName = QStringLiteral("iBars");
    bars.stages = kBankSliders;
    bars.barWidth = UFSldr::kBarWidth;
    bars.rightEdge = UFSldr::kBarsLeft + kBankSliders * UFSldr::kBarWidth;
    bars.newRow = true;
    bars.read = [](const Module& m) {
        const auto& b = as<UFSldr>(m);
        Shown s;
        for (int i = 0; i < kBankSliders; ++i) s.row.push_back(i < b.sliderCount() ? static_cast<int>(b.position(i) * 127.0 + 0.5) : 0);
        s.number = 127;
        s.selected = b.stage();
        return s;
    };
    bars.edit = [](Module& m, Engine& e, const Gesture& g) {
        if (g.button == 0 || (g.kind != Gesture::Kind::Press && g.kind != Gesture::Kind::Move)) return;
        as<UFSldr>(m).touch(g.x, g.y);
        e.MarkPatchChanged(true);
    };
    spec.controls = {std::move(value), std::move(stage), std::move(count), std::move(fill), std::move(setup), std::move(bars)};
    return spec;
}

}  // namespace

void addFormulaPanels(const PanelAdder& add) {
    add("UCalc0", formulaPanel(UCalc0::kShape, 1));
    add("UCalc1", formulaPanel(UCalc1::kShape, 2));
    add("UCalc2", formulaPanel(UCalc2::kShape, 2));
    add("UCalc3", formulaPanel(UCalc3::kShape, 3));
    add("UCalc4", formulaPanel(UCalc4::kShape, 2));
    add("UCalc5", formulaPanel(UCalc5::kShape, 3));
    add("UCalc6", formulaPanel(UCalc6::kShape, 2));
    add("UCalc7", formulaPanel(UCalc7::kShape, 1));
    add("UCalcXC", formulaPanel(UCalcXC::kShape, 6));
    add("UCalcXV", formulaPanel(UCalcXV::kShape, 4));
    add("UFSldr", sliderPanel());
}

}  // namespace quillmer::gui
