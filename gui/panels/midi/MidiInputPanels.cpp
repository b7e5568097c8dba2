// Panels of the MIDI input modules (channel button, selector, output), the on-screen
// keyboard, and the MIDI file players (list, loop and tempo switches, position slider,
// master choice).

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/midi/MidiFilePlayers.h"
#include "modules/midi/MidiInputs.h"

namespace quillmer::gui {

namespace {

ControlSpec inChannelButton() {
    ControlSpec chan;
    chan.kind = ControlKind::Button;
    chan.objectName = QStringLiteral("bChan");
    chan.tip = QStringLiteral("Change MIDI In Channel & Port");
    chan.read = [](const Module& m) {
        Shown s = Shown::ofText(as<MidiInModule>(m).channelCaption());
        s.number = as<MidiInModule>(m).ChanPort;
        return s;
    };
    chan.dialog = Dialog::Channel;
    chan.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<MidiInModule>(m).setChanPort(g.number);
        e.MarkPatchChanged(true);
    };
    chan.widthTwips = 540;
    chan.place = ControlSpec::Place::Title;
    return chan;
}

ControlSpec numberBox(const char* tip) {
    ControlSpec box;
    box.kind = ControlKind::EditBox;
    box.objectName = QStringLiteral("bxV1");
    box.tip = QLatin1String(tip);
    box.widthTwips = 600;
    box.read = [](const Module& m) { return Shown::ofNumber(as<MidiInWithNumber>(m).number); };
    box.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<MidiInWithNumber>(m).setNumberText(g.text);
        e.MarkPatchChanged(true);
    };
    return box;
}

PanelSpec reader(bool enable) {
    PanelSpec spec;
    spec.inputColumns = 1;
    spec.controls.push_back(inChannelButton());
    spec.controls.push_back(outputBox());
    if (enable) spec.controls.push_back(enableSwitch());
    return spec;
}

ControlSpec keyBitMenu() {
    ControlSpec menu;
    menu.kind = ControlKind::Choice;
    menu.objectName = QStringLiteral("cbKeyBit");
    menu.tip = QStringLiteral("Polyphony channel select");
    for (int k = 0; k <= 8; ++k) menu.choices.push_back(QString::number(k));
    menu.widthTwips = 600;
    menu.read = [](const Module& m) {
        Shown s;
        s.selected = as<MidiKeyIn>(m).keyBit;
        return s;
    };
    menu.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<MidiKeyIn>(m).setKeyBit(g.item);
        e.MarkPatchChanged(true);
    };
    return menu;
}

ControlSpec getListButton() {
    ControlSpec get;
    get.kind = ControlKind::Button;
    get.objectName = QStringLiteral("btnGet");
    get.caption = QStringLiteral("Get");
    get.tip = QStringLiteral("Select File to Load into Set buffer");
    get.dialog = Dialog::MfxFile;
    get.widthTwips = 540;
    get.edit = [](Module& m, Engine& e, const Gesture& g) {
        if (g.text.empty()) return;
        std::string error, reason;
        auto* holder = dynamic_cast<MidiListHolder*>(&m);
        if (holder && holder->loadList(g.text, error, reason)) {
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        }
    };
    return get;
}

ControlSpec listName() {
    return caption("lblFile", [](const Module& m) {
        const auto* holder = dynamic_cast<const MidiListHolder*>(&m);
        if (!holder || !holder->hasList()) return Shown::ofText("(no list)");
        return Shown::ofText(holder->list.listName + " [" + std::to_string(holder->list.values.size()) + "]");
    }, 1800);
}

}  // namespace

void addMidiInputPanels(const PanelAdder& add) {
    PanelSpec cc = reader(true);
    cc.controls.push_back(numberBox("Control number to receive from"));
    add("MIDICCIn", std::move(cc));
    PanelSpec pp = reader(true);
    pp.controls.push_back(numberBox("Key number to receive from"));
    add("MIDIPPIn", std::move(pp));
    add("MIDIPCIn", reader(true));
    add("MIDIPBIn", reader(true));
    PanelSpec keyNum = reader(true);
    keyNum.controls.push_back(keyBitMenu());
    add("MIDIKeyNum", std::move(keyNum));
    PanelSpec keyVel = reader(true);
    keyVel.controls.push_back(keyBitMenu());
    add("MIDIKeyVel", std::move(keyVel));
    add("MIDICIn", reader(false));
    add("MIDIPIn", reader(false));

    PanelSpec keys;
    ControlSpec picture;
    picture.kind = ControlKind::Keyboard;
    picture.objectName = QStringLiteral("Picture1");
    picture.widthTwips = 3360;
    picture.read = [](const Module& m) { return Shown::ofNumber(as<Keybd>(m).heldKey()); };
    picture.edit = [](Module& m, Engine&, const Gesture& g) {
        Keybd& k = as<Keybd>(m);
        const double x = g.item / 10000.0;
        const double y = g.number / 10000.0;
        if (g.text == "down")
            k.press(x, y);
        else if (g.text == "drag")
            k.drag(x, y);
        else
            k.release();
    };
    ControlSpec octave;
    octave.kind = ControlKind::UpDown;
    octave.objectName = QStringLiteral("UpDown1");
    octave.tip = QStringLiteral("increments/decrements the octave offset");
    octave.minimum = 0;
    octave.maximum = Keybd::kMaxOctave;
    octave.widthTwips = 600;
    octave.newRow = true;
    octave.read = [](const Module& m) { return Shown::ofNumber(as<Keybd>(m).octave); };
    octave.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<Keybd>(m).setOctave(g.number);
        e.MarkPatchChanged(true);
    };
    keys.controls = {
        std::move(picture),
        std::move(octave),
        switchControl(
            "chkGate", QStringLiteral("Gate"), QStringLiteral("Check for 0 output when mouse up"),
            [](const Module& m) { return Shown::ofOn(as<Keybd>(m).zeroOnRelease); },
            [](Module& m, Engine& e, const Gesture& g) {
                as<Keybd>(m).zeroOnRelease = g.number != 0;
                m.viewChanged = true;
                e.MarkPatchChanged(true);
            }, 600),
        valueBox("bxOut1", QStringLiteral("Note"), [](const Module& m) { return Shown::ofNumber(as<Keybd>(m).note); }, 600),
        textBox("bxOut2", QStringLiteral("Note name : octave, and velocity"),
                [](const Module& m) { return Shown::ofText(as<Keybd>(m).noteCaption); }, 1200),
        valueBox("bxOut3", QStringLiteral("Gate"), [](const Module& m) { return Shown::ofNumber(as<Keybd>(m).gate); }, 540),
    };
    add("Keybd", std::move(keys));

    PanelSpec file;
    file.inputColumns = 2;
    ControlSpec position;
    position.kind = ControlKind::Slider;
    position.objectName = QStringLiteral("slCurrent");
    position.tip = QStringLiteral("Play position");
    position.minimum = 0;
    position.maximum = 100;
    position.widthTwips = 1800;
    position.newRow = true;
    position.read = [](const Module& m) { return Shown::ofNumber(as<MIDIFile>(m).slider); };
    position.edit = [](Module& m, Engine&, const Gesture& g) { as<MIDIFile>(m).seek(g.number); };
    file.controls = {
        outputBox(),
        getListButton(),
        switchControl(
            "chkLoop", QStringLiteral("Loop"), QStringLiteral("Click in to play on from the start at the end"),
            [](const Module& m) { return Shown::ofOn(as<MIDIFile>(m).loop); },
            [](Module& m, Engine& e, const Gesture& g) {
                as<MIDIFile>(m).setLoop(g.number != 0);
                e.MarkPatchChanged(true);
            }, 600),
        switchControl(
            "chkTempo", QStringLiteral("Tempo"), QStringLiteral("Click in for the Tempo input to scale the speed"),
            [](const Module& m) { return Shown::ofOn(as<MIDIFile>(m).tempoOn); },
            [](Module& m, Engine& e, const Gesture& g) {
                as<MIDIFile>(m).setTempoOn(g.number != 0);
                e.MarkPatchChanged(true);
            }, 600),
        std::move(position),
        listName(),
    };
    add("MIDIFile", std::move(file));

    PanelSpec slave;
    ControlSpec master;
    master.kind = ControlKind::Choice;
    master.objectName = QStringLiteral("cbXmID");
    master.tip = QStringLiteral("The MIDI File module to follow");
    master.itemsFromModule = true;
    master.widthTwips = 1500;
    master.read = [](const Module& m) {
        const auto& s = as<MIDIFileSlave>(m);
        Shown shown;
        shown.items = s.masterChoices();
        shown.selected = s.masterChoice();
        return shown;
    };
    master.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<MIDIFileSlave>(m).chooseMaster(g.item);
        e.MarkPatchChanged(true);
    };
    slave.controls = {outputBox(), getListButton(), std::move(master), listName()};
    add("MIDIFileSlave", std::move(slave));
}

}  // namespace quillmer::gui
