// Panels of the sending MIDI modules. Each has the channel button and the enable switch; the
// note modules add the Clock/Legato switch, the shown note and the program; MIDITone its four
// info boxes.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/midi/ChannelOutputs.h"
#include "modules/midi/NoteOutputs.h"

namespace quillmer::gui {

namespace {

Shown textOf(std::string s) { return Shown::ofText(std::move(s)); }  // short for the readers below

ControlSpec legatoSwitch() {
    return switchControl(
        "Check1", QStringLiteral("Clock"), QString(),
        [](const Module& m) {
            Shown s;
            s.on = as<NoteModule>(m).legato;
            s.text = s.on ? "LEG" : "Clock";
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            as<NoteModule>(m).legato = g.number != 0;
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        });
}

ControlSpec lamp() {
    ControlSpec l = outputLamp();
    l.read = [](const Module& m) {
        Shown s;
        s.on = as<NoteModule>(m).lampOn;
        return s;
    };
    return l;
}

ControlSpec programCaption() {
    ControlSpec c = caption("lblPName", [](const Module& m) { return textOf(as<NoteModule>(m).programCaption); });
    c.newRow = true;
    return c;
}

// bxIn and bxOut1 of MIDIVoice and MIDIKey: the note sent, as a number and as a name.
std::vector<ControlSpec> shownNote() {
    return {valueBox("bxIn", QString(), [](const Module& m) { return Shown::ofNumber(as<NoteModule>(m).SentNote); }, 600),
            textBox("bxOut1", QString(), [](const Module& m) { return textOf(as<MIDIVoice>(m).noteCaption); })};
}

PanelSpec sender(int columns) {
    PanelSpec spec;
    spec.inputColumns = columns;
    spec.askBeforeDelete = true;
    spec.controls.push_back(channelButton());
    spec.controls.push_back(enableSwitch());  // off: all sending stops, a sounding note stays on
    return spec;
}

}  // namespace

ControlSpec channelButton() {
    ControlSpec chan;
    chan.kind = ControlKind::Button;
    chan.objectName = QStringLiteral("bChan");
    chan.tip = QStringLiteral("Change MIDI Out Channel & Port");
    chan.read = [](const Module& m) { return textOf(as<ChannelModule>(m).channelCaption()); };
    chan.dialog = Dialog::Channel;
    chan.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<ChannelModule>(m).setChanPort(e, static_cast<int16_t>(g.number));
        e.MarkPatchChanged(true);
    };
    chan.widthTwips = 540;
    chan.place = ControlSpec::Place::Title;
    return chan;
}

void addNoteOutputPanels(const PanelAdder& add) {
    PanelSpec tone = sender(3);
    tone.inputLabels = {QStringLiteral("Clock"), QStringLiteral("Note"), QStringLiteral("Root"),
                        QStringLiteral("Velo"),  QStringLiteral("Pan"),  QStringLiteral("MdWh"),
                        QStringLiteral("Prog"),  QStringLiteral("TTable"), QStringLiteral("Octv")};
    tone.controls.push_back(legatoSwitch());
    tone.controls.push_back(switchControl(
        "Check2", QStringLiteral("Strip"), QStringLiteral("Click in to strip octaves from Note input"),
        [](const Module& m) {
            Shown s;
            s.on = as<MIDITone>(m).stripOctaves;
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            as<MIDITone>(m).stripOctaves = g.number != 0;
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        }));
    tone.controls.push_back(lamp());
    const auto info = [](const char* tip, int MIDITone::*field) {
        return valueBox("bxInfo", QLatin1String(tip), [field](const Module& m) { return Shown::ofNumber(as<MIDITone>(m).*field); }, 540);
    };
    tone.controls.push_back(info("Midi note value sent", &MIDITone::shownNote));
    tone.controls.push_back(info("Pitch Bend Sent", &MIDITone::shownBend));
    tone.controls.push_back(info("Scale step being played", &MIDITone::shownStep));
    tone.controls.push_back(info("Octave being played", &MIDITone::shownOctave));
    tone.controls.push_back(programCaption());
    add("MIDITone", std::move(tone));

    PanelSpec voice = sender(4);
    voice.controls.push_back(legatoSwitch());
    voice.controls.push_back(lamp());
    for (ControlSpec& c : shownNote()) voice.controls.push_back(std::move(c));
    voice.controls.push_back(programCaption());
    add("MIDIVoice", std::move(voice));

    PanelSpec key = sender(4);
    key.controls.push_back(legatoSwitch());
    key.controls.push_back(lamp());
    for (ControlSpec& c : shownNote()) key.controls.push_back(std::move(c));
    add("MIDIKey", std::move(key));

    PanelSpec chan = sender(4);
    chan.controls.push_back(caption("lblBName", [](const Module& m) { return textOf(as<MIDIChan>(m).bankCaption); }));
    add("MIDIChan", std::move(chan));

    PanelSpec poly = sender(1);
    ControlSpec keyBox;
    keyBox.kind = ControlKind::EditBox;
    keyBox.objectName = QStringLiteral("bxV1");
    keyBox.tip = QStringLiteral("Key number");
    keyBox.widthTwips = 600;
    keyBox.place = ControlSpec::Place::BesideInputs;
    keyBox.read = [](const Module& m) { return Shown::ofNumber(as<MIDIPoly>(m).key); };
    keyBox.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<MIDIPoly>(m).setKeyText(g.text);
        e.MarkPatchChanged(true);
    };
    poly.controls.push_back(std::move(keyBox));
    add("MIDIPoly", std::move(poly));

    add("MIDIPBend", sender(1));
}

}  // namespace quillmer::gui
