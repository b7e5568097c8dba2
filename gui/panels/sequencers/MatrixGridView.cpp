#include "gui/panels/sequencers/MatrixGridView.h"

#include <QPainter>
#include <QPixmap>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "engine/Engine.h"
#include "modules/sequencers/MatrixTypes.h"
#include "modules/sequencers/Rhythm.h"

namespace quillmer::gui {

namespace {

constexpr int kTwipsPerPixel = kKnobTwips / GridPicture::kCell;

const QColor kLampOff(105, 84, 28);
const QColor kLampOn(255, 214, 64);
const QColor kDim(34, 34, 40);

// --- the knob strips ---

// The pointer's direction for each value, found from the same angle rule a drag uses, so
// that a knob shows exactly what a drag to its pointer would set.
const std::array<QPointF, 128>& pointerDirections() {
    static const std::array<QPointF, 128> directions = [] {
        std::array<QPointF, 128> sum{};
        constexpr int kSamples = 2048;
        for (int i = 0; i < kSamples; ++i) {
            const double a = 2 * std::numbers::pi * (i + 0.5) / kSamples;
            const double dx = std::cos(a);
            const double dy = std::sin(a);
            const int v = knobValueAt(172.5 + dx * 100, 172.5 + dy * 100);
            sum[static_cast<size_t>(v & 127)] += QPointF(dx, dy);
        }
        for (QPointF& d : sum) {
            const double length = std::hypot(d.x(), d.y());
            d = length > 0 ? d / length : QPointF(0, 1);
        }
        return sum;
    }();
    return directions;
}

QColor levelColour(int value) {
    switch (lifeStateOf(value)) {
        case Dead: return {80, 80, 88};
        case DiedAlone: return {70, 110, 190};
        case DiedCrowded: return {160, 90, 190};
        case Alive: return {80, 200, 100};
        case Born: return {250, 220, 80};
    }
    return {80, 80, 88};
}

void drawKnob(QPainter& p, const QRectF& cell, int value, int set, bool levelled) {
    const QPointF centre = cell.center();
    const double radius = cell.width() / 2 - 2;
    const QColor colour = levelled ? levelColour(value) : QColor(150, 170, 190);
    const QPointF dir = pointerDirections()[static_cast<size_t>(value)];
    p.setRenderHint(QPainter::Antialiasing);
    switch (set) {
        case 1: {  // a filled arc from the seam at the bottom
            p.setPen(Qt::NoPen);
            p.setBrush(QColor(48, 48, 56));
            p.drawEllipse(centre, radius, radius);
            p.setBrush(colour);
            const QRectF box(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
            p.drawPie(box, -90 * 16, -static_cast<int>(value * 360.0 * 16 / 128));
            break;
        }
        case 2: {  // a dot whose size is the value
            p.setPen(QPen(QColor(60, 60, 70), 1));
            p.setBrush(Qt::NoBrush);
            p.drawEllipse(centre, radius, radius);
            p.setPen(Qt::NoPen);
            p.setBrush(colour);
            const double r = 1.5 + (radius - 1.5) * value / 127.0;
            p.drawEllipse(centre, r, r);
            break;
        }
        default: {  // a cap with a pointer
            p.setPen(QPen(colour, 1.6));
            p.setBrush(QColor(44, 44, 52));
            p.drawEllipse(centre, radius, radius);
            p.drawLine(centre + dir * 2, centre + dir * (radius - 0.5));
            break;
        }
    }
}

// One strip of 128 frames of a knob cell per set, plain or coloured by Life level.
const QPixmap& knobStrip(int set, bool levelled) {
    static std::array<QPixmap, 2 * kKnobSets> strips;
    const size_t at = static_cast<size_t>((set % kKnobSets) * 2 + (levelled ? 1 : 0));
    QPixmap& strip = strips[at];
    if (strip.isNull()) {
        constexpr int cell = GridPicture::kCell;
        strip = QPixmap(cell * 128, cell);
        strip.fill(kDim);
        QPainter p(&strip);
        for (int v = 0; v < 128; ++v) drawKnob(p, QRectF(v * cell, 0, cell, cell), v, set % kKnobSets, levelled);
    }
    return strip;
}

void drawLamp(QPainter& p, const QRect& r, bool lit) {
    p.fillRect(r, lit ? kLampOn : kLampOff);
}

// --- the matrix grid ---

// What the grid reader copies: row holds the cells (index column x R + row), number the
// column, selected the row, on the edit highlight, text the knob set.
Shown readGrid(const MatrixSequencer& x) {
    Shown s;
    const auto cells = x.cells();
    s.row.assign(cells.begin(), cells.end());
    s.number = x.Column;
    s.selected = x.Row;
    s.on = x.editing();
    s.text = std::to_string(x.KnobSet);
    return s;
}

void paintGrid(QPainter& p, const GridPicture& grid, bool levelled, const Shown& s) {
    if (static_cast<int>(s.row.size()) < grid.columns * grid.rows) return;
    const int set = s.text.empty() ? 0 : s.text[0] - '0';
    const QPixmap& strip = knobStrip(set, levelled);
    constexpr int cell = GridPicture::kCell;
    for (int c = 0; c < grid.columns; ++c) {
        drawLamp(p, QRect(GridPicture::kLamp + c * cell + 3, 1, cell - 6, GridPicture::kLamp - 3), c == s.number);
        for (int r = 0; r < grid.rows; ++r) {
            const int v = s.row[static_cast<size_t>(c * grid.rows + r)] & 127;
            p.drawPixmap(grid.cellRect(c, r).topLeft(), strip, QRect(v * cell, 0, cell, cell));
        }
    }
    for (int r = 0; r < grid.rows; ++r)
        drawLamp(p, QRect(1, GridPicture::kLamp + r * cell + 3, GridPicture::kLamp - 3, cell - 6), r == s.selected);
    if (s.on) {
        p.setRenderHint(QPainter::Antialiasing, false);
        p.setPen(QPen(QColor(255, 255, 255), 1));
        p.setBrush(Qt::NoBrush);
        p.drawRect(grid.cellRect(s.number, s.selected).adjusted(0, 0, -1, -1));
    }
}

void editGrid(const GridPicture& grid, Module& m, Engine& e, const Gesture& g) {
    auto& x = as<MatrixSequencer>(m);
    const QPoint at = grid.twipsAt(g.x, g.y);
    const int button = g.button == 1 ? 1 : g.button != 0 ? 2 : 0;
    switch (g.kind) {
        case Gesture::Kind::Press:
            if (at.x() < 0 || at.y() < 0) return;
            x.pressCell(at.x(), at.y(), button, g.keys);
            break;
        case Gesture::Kind::Move:
            if (!x.editing()) return;
            x.dragCell(at.x(), at.y(), button);
            break;
        case Gesture::Kind::Release:
            if (!x.editing()) return;
            x.releaseCell();
            return;
        case Gesture::Kind::Wheel: {
            const QPoint c = grid.cellAt(g.x, g.y);
            if (c.x() < 0) return;
            x.wheelCell(c.x(), c.y(), g.notches, g.keys);
            break;
        }
        default: return;
    }
    e.MarkPatchChanged(true);
}

// --- the rule lamps ---

constexpr int kRuleLampWidth = 30;
constexpr int kRuleHeight = 28;

void paintRule(QPainter& p, const QRect& area, const Shown& s) {
    if (!s.on) return;  // the rule shows only in the CA/1D mode
    p.setPen(QColor(200, 200, 200));
    for (int i = 0; i < 8; ++i) {
        const int bit = 7 - i;
        const QRect lamp(i * kRuleLampWidth + 6, 3, kRuleLampWidth - 12, 9);
        drawLamp(p, lamp, (s.number >> bit) & 1);
        const QString label = QString::number((bit >> 2) & 1) + QString::number((bit >> 1) & 1) + QString::number(bit & 1);
        p.drawText(QRect(i * kRuleLampWidth, 13, kRuleLampWidth, area.height() - 13), Qt::AlignHCenter | Qt::AlignTop, label);
    }
}

// --- Rhythm ---

// What the lamps' reader copies: row holds the gate words, then the lengths, then the
// positions; number is the enable mask, selected the output bits, on hides the positions.
Shown readRhythm(const Rhythm& r) {
    Shown s;
    for (int row = 0; row < Rhythm::kRows; ++row) s.row.push_back(static_cast<int>(r.rows().bits[static_cast<size_t>(row)]));
    for (int row = 0; row < Rhythm::kRows; ++row) s.row.push_back(r.rowLength(row));
    for (int row = 0; row < Rhythm::kRows; ++row) s.row.push_back(r.HidePositions ? -1 : r.position(row));
    s.number = r.GateMask;
    s.selected = r.ShownOut;
    return s;
}

void paintRhythm(QPainter& p, const QRect&, const Shown& s) {
    constexpr int rows = RhythmPicture::kRows;
    if (static_cast<int>(s.row.size()) < 3 * rows) return;
    p.setPen(QColor(200, 200, 200));
    for (int r = 0; r < rows; ++r) {
        const auto bits = static_cast<uint32_t>(s.row[static_cast<size_t>(r)]);
        const int length = s.row[static_cast<size_t>(rows + r)];
        const int at = s.row[static_cast<size_t>(2 * rows + r)];
        const bool enabled = (s.number >> r) & 1;
        p.fillRect(RhythmPicture::enableRect(r), enabled ? QColor(90, 220, 110) : QColor(40, 70, 45));
        for (int step = 0; step < RhythmPicture::kSteps; ++step) {
            const QRect lamp = RhythmPicture::gateRect(r, step);
            const bool on = (bits >> step) & 1;
            if (step >= length)
                p.fillRect(lamp, on ? QColor(70, 62, 50) : QColor(44, 44, 50));
            else
                p.fillRect(lamp, on ? kLampOn : kLampOff);
            if (step == at && enabled) {
                p.setPen(QColor(255, 255, 255));
                p.drawRect(lamp.adjusted(0, 0, -1, -1));
                p.setPen(QColor(200, 200, 200));
            }
        }
        p.fillRect(RhythmPicture::outRect(r), (s.selected >> r) & 1 ? QColor(255, 80, 60) : QColor(70, 30, 25));
        const QRect out = RhythmPicture::outRect(r);
        p.drawText(QRect(out.right() + 3, out.top() - 1, 24, RhythmPicture::kRowHeight), Qt::AlignLeft | Qt::AlignVCenter,
                   QString::number(length));
    }
}

ControlSpec drawn(const char* objectName, QString tip, int widthPixels, int heightPixels) {
    ControlSpec c;
    c.kind = ControlKind::Drawn;
    c.objectName = QLatin1String(objectName);
    c.tip = std::move(tip);
    c.widthTwips = widthPixels * kTwipsPerPixel;
    c.heightTwips = heightPixels * kTwipsPerPixel;
    c.newRow = true;
    return c;
}

}  // namespace

QPoint GridPicture::twipsAt(int x, int y) const {
    return {(x - kLamp) * kTwipsPerPixel, (y - kLamp) * kTwipsPerPixel};
}

QPoint GridPicture::cellAt(int x, int y) const {
    if (x < kLamp || y < kLamp) return {-1, -1};
    const int c = (x - kLamp) / kCell;
    const int r = (y - kLamp) / kCell;
    if (c >= columns || r >= rows) return {-1, -1};
    return {c, r};
}

int RhythmPicture::rowAt(int y) {
    if (y < 0) return -1;
    const int row = y / kRowHeight;
    return row < kRows ? row : -1;
}

int RhythmPicture::stepAt(int x) {
    if (x < kEnable) return -1;
    return std::min((x - kEnable) / kLamp, kSteps);
}

ControlSpec matrixGridControl(int columns, int rows, bool levelled) {
    const GridPicture grid{columns, rows};
    ControlSpec c = drawn("iKnobs",
                          QStringLiteral("Drag a knob to turn it, or use the wheel (Shift: by ten); "
                                         "Ctrl-click 0, Shift-click 127, Alt-click 64"),
                          grid.width(), grid.height());
    c.read = [](const Module& m) { return readGrid(as<MatrixSequencer>(m)); };
    c.paint = [grid, levelled](QPainter& p, const QRect&, const Shown& s) { paintGrid(p, grid, levelled, s); };
    c.edit = [grid](Module& m, Engine& e, const Gesture& g) { editGrid(grid, m, e, g); };
    return c;
}

ControlSpec ruleLampsControl() {
    ControlSpec c = drawn("LEDSelect", QStringLiteral("On = cell lives, off= dies"), 8 * kRuleLampWidth, kRuleHeight);
    c.read = [](const Module& m) {
        const auto& x = as<MatrixSequencer>(m);
        Shown s = Shown::ofNumber(x.Rule);
        s.on = x.Mode == MatrixSequencer::CAMode;
        return s;
    };
    c.paint = paintRule;
    c.edit = [](Module& m, Engine& e, const Gesture& g) {
        auto& x = as<MatrixSequencer>(m);
        if (g.kind != Gesture::Kind::Press || x.Mode != MatrixSequencer::CAMode) return;
        const int lamp = g.x / kRuleLampWidth;
        if (lamp < 0 || lamp > 7) return;
        const int bit = 7 - lamp;
        x.setRuleBit(bit, !((x.Rule >> bit) & 1));
        e.MarkPatchChanged(true);
    };
    return c;
}

ControlSpec rhythmLampsControl() {
    ControlSpec c = drawn("LED1",
                          QStringLiteral("Click to set/clear gates; right-click (or Shift-click) ends the row there; "
                                         "the lamp on the left enables/inhibits the row"),
                          RhythmPicture::width(), RhythmPicture::height());
    c.read = [](const Module& m) { return readRhythm(as<Rhythm>(m)); };
    c.paint = paintRhythm;
    c.edit = [](Module& m, Engine& e, const Gesture& g) {
        if (g.kind != Gesture::Kind::Press) return;
        const int row = RhythmPicture::rowAt(g.y);
        const int step = RhythmPicture::stepAt(g.x);
        if (row < 0 || step >= RhythmPicture::kSteps) return;
        as<Rhythm>(m).pressLamp(row, step, g.button == 1 ? 1 : 2, g.keys);
        e.MarkPatchChanged(true);
    };
    return c;
}

}  // namespace quillmer::gui
