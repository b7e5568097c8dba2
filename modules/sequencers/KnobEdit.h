#pragma once
// What every knob of a panel does under the mouse, shared by the knob rows, Radio and the
// matrix grids. A press picks the knob and keeps the module's own input off until the
// release; Ctrl, Shift and Alt set 0, 127 and 64 at once; a plain click changes nothing,
// so a stray click never moves a knob; a drag with the left button turns it. Coordinates
// are twips from the top left of the knob area, a knob cell being 345 twips square.

#include <cstdint>

#include "engine/Module.h"
#include "modules/sequencers/Slides.h"

namespace quillmer {

constexpr int kKnobTwips = 345;
constexpr int kKnobSets = 3;

// The value a press puts on a knob for these keys (1 Ctrl, 2 Shift, 4 Alt); -1 for none.
constexpr int knobKeyValue(int keys) { return keys & 1 ? 0 : keys & 2 ? 127 : keys & 4 ? 64 : -1; }
// The knob value of a pointer at (x, y) over the knob in cell (column, row).
inline int knobValueInCell(double x, double y, int column, int row = 0) {
    return knobValueAt(x - column * double{kKnobTwips}, y - row * double{kKnobTwips});
}

// One press, drag and release on a set of knobs.
struct KnobEdit {
    bool active = false;       // EditActive
    int16_t savedEnabled = 0;  // SavedEnabled
    int savedStage = 0;        // SavedStage (a grid keeps column x rows + row)

    // Mouse down: the module stops reading its input until the release.
    void begin(Module& m, int stageBefore) {
        savedStage = stageBefore;
        savedEnabled = m.Enabled;
        m.Enabled = 0;
    }
    // Mouse up: true when the module takes its input again and its stage goes back.
    bool end(Module& m) {
        active = false;
        if (savedEnabled == 0) return false;
        m.Enabled = savedEnabled;
        savedEnabled = 0;
        return true;
    }
};

}  // namespace quillmer
