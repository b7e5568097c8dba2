#pragma once
// A module panel declared once, as data: which controls it has beyond the common frame
// (status icon, name, input buttons), what each shows and which module operation a
// gesture on it calls. The frame builds itself from this; one description per type,
// written by the family's file in gui/panels/ and collected by panelSpec().
//
// Readers run with the engine lock held and only copy; editors run with the lock held and
// only forward to the module or the engine.

#include <QRect>
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Durations.h"

namespace quillmer {
class Engine;
class Module;
}  // namespace quillmer

class QPainter;

namespace quillmer::gui {

// What one control shows, copied from its module.
struct Shown {
    int number = 0;
    std::string text;
    bool on = false;        // a switch pressed in, a lamp lit
    bool warn = false;      // drawn yellow: the module replaced a value out of range
    std::vector<int> row;   // a stage row's values
    int selected = 0;       // a stage row's current stage, a menu's row
    std::vector<std::string> items;  // a menu's rows, where the module gives them
    std::string tip;        // the tool tip, for a control whose module gives it
    bool operator==(const Shown&) const = default;

    static Shown ofNumber(int n) {
        Shown s;
        s.number = n;
        return s;
    }
    static Shown ofText(std::string t) {
        Shown s;
        s.text = std::move(t);
        return s;
    }
    static Shown ofOn(bool on) {
        Shown s;
        s.on = on;
        return s;
    }
};

// A gesture on a control, as the module receives it.
struct Gesture {
    int item = 0;       // a stage, a menu row
    int number = 0;     // an up-down value
    std::string text;   // typed text, a chosen file
    enum class Kind { Text, Click, Value, Press, Move, Release, Leave, Wheel } kind = Kind::Click;
    // A mouse gesture on a drawn control: where, in its own units, and which button
    // (0 none, 1 left, 2 any other) with which keys (1 Ctrl, 2 Shift, 4 Alt).
    int x = 0;
    int y = 0;
    int button = 0;
    int keys = 0;
    int notches = 0;  // a wheel turn on a drawn control: notches away from the user
};

enum class ControlKind {
    ValueBox,  // read-only box: the output, an info box, a tally (bxOut1, bxInfo, lblTally)
    Caption,   // a line of text (lblPName, Label1)
    Lamp,      // Shape1, in the title row
    Switch,    // a button that stays in (Check1, chkTurbo, opEnable)
    Button,    // a push button (btnFill)
    EditBox,   // a typed number (the key of MIDIPoly)
    Choice,    // a drop-down list (cbNotes)
    StageRow,  // the stage boxes, numbers and lamps of a stage table
    UpDown,    // steps a value up and down (UpDown1)
    Bars,      // the bars of a slide table, drawn and painted with the mouse
    Knob,      // a knob turned by the angle of the pointer (iKnob)
    Slider,    // a position from minimum to maximum (slCurrent)
    Drawn,     // drawn by the description's painter (pads, meters, pictures); gestures carry
               // the point in pixels, the view's width in number and height in item
    Picture,   // a 128 x 128 picture of points (Fractal's orbit): the reader's text holds a
               // byte a point; a click's gesture has button 1 (left) or 2
    Keyboard,  // Keybd's keys: a gesture's text is "down", "drag" or "up", item and number
               // the point's x and y in ten-thousandths of the picture
};

// Buttons whose gesture needs a question first; the panel board asks it. TableBank and
// ToneTable open the general-table and tuning editors on the table number the button's
// reader gives (Shown::number).
// ControlSliders and PixelWindow open the floating windows of CtrlOut32 and Image;
// PictureFile asks for a picture file and forwards its path as text.
// OpenFile asks for a file to read, with the title and filter in the control's choices.
enum class Dialog {
    None, Channel, ChainFile, Fill, PageTable, MfxFile, TableBank, ToneTable, ControlSliders, PixelWindow, PictureFile,
    OpenFile, SliderSetup
};

using Reader = std::function<Shown(const Module&)>;
using Editor = std::function<void(Module&, Engine&, const Gesture&)>;
// Draws a Drawn control from what its reader copied (no lock held).
using Painter = std::function<void(QPainter&, const QRect&, const Shown&)>;

struct ControlSpec {
    ControlKind kind = ControlKind::ValueBox;
    QString objectName;      // the control's role name: "bxOut1", "Check1"
    QString tip;
    QString caption;         // fixed caption; a reader's text replaces it
    int widthTwips = 900;
    Reader read;             // null: nothing changes on it
    Editor edit;             // null: read only
    Painter paint;           // a Drawn control's picture
    Dialog dialog = Dialog::None;
    std::vector<QString> choices;
    bool itemsFromModule = false;  // a menu whose rows the reader gives (Shown::items)
    int minimum = 0;         // an up-down's range
    int maximum = 127;
    int stages = 0;          // a stage row's stage count
    int heightTwips = 0;     // a drawn control's height; 0: a row's
    int barWidth = 0;        // bars: pixels a bar, and the right edge of the painted area
    int rightEdge = 0;
    bool rangeFromModule = false;    // an up-down whose maximum the reader gives (Shown::selected)
    bool enabledFromModule = false;  // a button the reader enables (Shown::on)
    bool enabled = true;
    bool newRow = false;     // starts a new row of controls
    bool enableColours = false;  // a switch green while out, red while in (opEnable)
    bool textual = false;        // a value box or an edit box that shows text, not a number
    bool tipFromModule = false;  // the reader gives the tool tip (Shown::tip)
    // Where it lies: in the rows below the inputs, at the right end of the title row (the
    // output box, lamps always), or on the inputs' first line after the last button.
    enum class Place { Rows, Title, BesideInputs } place = Place::Rows;
};

struct PanelSpec {
    int inputColumns = 3;
    // Labels above the input buttons, by button row; empty: the inputs' own labels.
    std::vector<QString> inputLabels;
    // A duration input at button row 0 whose label turns yellow or reads "Turbo".
    std::function<DurationLabel(const Module&)> durationLabel;
    std::vector<ControlSpec> controls;
    // Tool tips the module gives: of an input by its index, and of the name. Null: fixed ones.
    std::function<std::string(const Module&, int input)> inputTip;
    std::function<std::string(const Module&)> nameTip;
    // The note modules ask "Delete NAME?" before a delete from the status dialog.
    bool askBeforeDelete = false;
    // A type whose logic isn't built yet: the frame says so.
    bool placeholder = false;
};

// The description of a type; a plain frame for a type that has none (not built yet).
const PanelSpec& panelSpec(ModuleTypeId type);

// --- helpers for the family descriptions ---

QString text(std::string_view s);
// A read-only number box of the module's last output.
ControlSpec outputBox(const char* objectName = "bxOut1");
// The gate lamp: bright while the output is non-zero.
ControlSpec outputLamp();
ControlSpec valueBox(const char* objectName, QString tip, Reader read, int widthTwips = 900);
ControlSpec caption(const char* objectName, Reader read, int widthTwips = 2700);
ControlSpec textBox(const char* objectName, QString tip, Reader read, int widthTwips = 1200);
// A button that stays in; the gesture's number is 1 for in, 0 for out.
ControlSpec switchControl(const char* objectName, QString caption, QString tip, Reader read, Editor edit,
                          int widthTwips = 900);
// A push button that opens one of the panel board's dialogs.
ControlSpec dialogButton(const char* objectName, QString caption, Dialog dialog, int widthTwips = 600, QString tip = {});
// The channel button: "1 A" .. "16D", opening the channel dialog.
ControlSpec channelButton();
// opEnable: in disables the module at once (red), out enables it (green).
ControlSpec enableSwitch();

// Module casts for readers and editors; the description is only ever given its own type.
template <class T>
const T& as(const Module& m) { return static_cast<const T&>(m); }
template <class T>
T& as(Module& m) { return static_cast<T&>(m); }

// Where the families put their descriptions, by type name.
using PanelAdder = std::function<void(std::string_view type, PanelSpec spec)>;
void addProcessorPanels(const PanelAdder& add);
void addArithmeticPanels(const PanelAdder& add);
void addBitwisePanels(const PanelAdder& add);
void addSelectionPanels(const PanelAdder& add);
void addMemoryPanels(const PanelAdder& add);
void addClockPanels(const PanelAdder& add);
void addStepPanels(const PanelAdder& add);
void addTablePanels(const PanelAdder& add);
void addNoteOutputPanels(const PanelAdder& add);
void addNoteValuePanels(const PanelAdder& add);
void addChainPanel(const PanelAdder& add);
void addMidiInputPanels(const PanelAdder& add);
void addDisplayPanels(const PanelAdder& add);
void addSidePanels(const PanelAdder& add);
void addGeneratorPanels(const PanelAdder& add);
void addBioPanels(const PanelAdder& add);
void addGridPanels(const PanelAdder& add);
void addFormulaPanels(const PanelAdder& add);

}  // namespace quillmer::gui
