// Panels of the modules that speak in durations and note names: the duration menu of
// Notes, XNote's duration name, Arpeg's steps and Pitch's note display.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/midi/NoteValues.h"

namespace quillmer::gui {

void addNoteValuePanels(const PanelAdder& add) {
    PanelSpec notes;
    notes.askBeforeDelete = true;
    ControlSpec menu;
    menu.kind = ControlKind::Choice;
    menu.objectName = QStringLiteral("cbNotes");
    menu.widthTwips = 1200;
    for (const TimeBaseEntry& entry : TimeBaseTable) menu.choices.push_back(text(entry.name));
    menu.read = [](const Module& m) {
        Shown s;
        s.selected = as<Notes>(m).row();
        return s;
    };
    menu.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<Notes>(m).choose(g.item);
        e.MarkPatchChanged(true);
    };
    notes.controls = {std::move(menu), outputBox()};
    add("Notes", std::move(notes));

    PanelSpec xnote;
    xnote.inputColumns = 1;
    xnote.askBeforeDelete = true;
    ControlSpec name = caption("Label1", [](const Module& m) { return Shown::ofText(std::string(as<XNote>(m).durationName)); }, 900);
    name.place = ControlSpec::Place::BesideInputs;
    xnote.controls = {outputBox(), std::move(name)};
    add("XNote", std::move(xnote));

    PanelSpec arpeg;
    arpeg.inputColumns = 4;
    arpeg.askBeforeDelete = true;
    arpeg.durationLabel = [](const Module& m) { return as<Arpeg>(m).noteLabel; };
    arpeg.controls = {outputBox()};
    add("Arpeg", std::move(arpeg));

    PanelSpec pitch;
    pitch.inputColumns = 1;
    pitch.askBeforeDelete = true;
    pitch.controls = {
        valueBox("bxIn", QString(), [](const Module& m) { return Shown::ofNumber(as<Pitch>(m).shownValue); }, 540),
        textBox("bxOut1", QString(), [](const Module& m) { return Shown::ofText(as<Pitch>(m).noteCaption); }, 900),
    };
    for (ControlSpec& c : pitch.controls) c.place = ControlSpec::Place::BesideInputs;
    add("Pitch", std::move(pitch));
}

}  // namespace quillmer::gui
