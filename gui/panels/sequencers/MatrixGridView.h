#pragma once
// The drawn controls of the grid family: a matrix's whole grid of knobs with its column and
// row lamps, the eight rule lamps of the one-dimensional automaton, and Rhythm's seven rows
// of 32 gate lamps. Each is one picture; a knob is a frame of a pre-drawn strip, so a
// repaint of a full grid is a handful of copies. Gestures go to the modules in their own
// units (twips of the knob grid, rows and steps of the lamps).

#include <QPoint>
#include <QRect>

#include "gui/panels/PanelSpec.h"

namespace quillmer::gui {

// Where things lie in a matrix picture: a strip of column lamps on top, a strip of row lamps
// on the left, then the knobs, 23 pixels (345 twips) a cell.
struct GridPicture {
    static constexpr int kCell = 23;
    static constexpr int kLamp = 8;
    int columns = 0;
    int rows = 0;
    int width() const { return kLamp + columns * kCell + 1; }
    int height() const { return kLamp + rows * kCell + 1; }
    QRect cellRect(int column, int row) const { return {kLamp + column * kCell, kLamp + row * kCell, kCell, kCell}; }
    // A point of the picture as twips from the knobs' top left corner (negative on the lamps).
    QPoint twipsAt(int x, int y) const;
    // The cell under a point, or (-1, -1).
    QPoint cellAt(int x, int y) const;
};

// Rhythm's lamps: per row the enable lamp, 32 gate lamps, the output lamp and the length.
struct RhythmPicture {
    static constexpr int kEnable = 14;  // the enable lamp's column
    static constexpr int kLamp = 11;    // a gate lamp's pitch
    static constexpr int kRowHeight = 13;
    static constexpr int kSteps = 32;
    static constexpr int kRows = 7;
    static int width() { return kEnable + kSteps * kLamp + 4 + kLamp + 26; }
    static int height() { return kRows * kRowHeight + 1; }
    static QRect gateRect(int row, int step) { return {kEnable + step * kLamp, row * kRowHeight + 1, kLamp - 1, kRowHeight - 2}; }
    static QRect enableRect(int row) { return {2, row * kRowHeight + 2, kEnable - 5, kRowHeight - 4}; }
    static QRect outRect(int row) { return {kEnable + kSteps * kLamp + 4, row * kRowHeight + 1, kLamp - 1, kRowHeight - 2}; }
    // The row under y, or -1; the step under x (-1 on the enable lamp, 32 past the gates).
    static int rowAt(int y);
    static int stepAt(int x);
};

// iKnobs: the C x R knobs; a Life size colours each knob by the level its value stands for.
ControlSpec matrixGridControl(int columns, int rows, bool levelled);
// LEDSelect with the lbBits labels: lit bits of the rule, shown only in the CA/1D mode.
ControlSpec ruleLampsControl();
// LED1 with LEDSelect and LEDOut: the gates, the row enables, the output bits and lengths.
ControlSpec rhythmLampsControl();

}  // namespace quillmer::gui
