// Panels of the side modules: the controller sender, the two SysEx senders, the sequencer
// data file and the network link. Errors a module reports show in its status line.

#include <algorithm>
#include <cstdlib>

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/midi/ControllerOutput.h"
#include "modules/midi/Links.h"
#include "modules/midi/SysExOutputs.h"
#include "modules/sequencers/Sfile.h"

namespace quillmer::gui {

namespace {

std::string baseName(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

ControlSpec fileButton(const char* caption, QString title, QString filter, Editor edit) {
    ControlSpec b;
    b.kind = ControlKind::Button;
    b.objectName = QStringLiteral("cmdGet");
    b.caption = QLatin1String(caption);
    b.tip = title;
    b.widthTwips = 600;
    b.dialog = Dialog::OpenFile;
    b.choices = {std::move(title), std::move(filter)};
    b.edit = std::move(edit);
    return b;
}

ControlSpec editBox(const char* objectName, QString tip, Reader read, Editor edit, int widthTwips, bool textual) {
    ControlSpec box;
    box.kind = ControlKind::EditBox;
    box.objectName = QLatin1String(objectName);
    box.tip = std::move(tip);
    box.read = std::move(read);
    box.edit = std::move(edit);
    box.widthTwips = widthTwips;
    box.textual = textual;
    return box;
}

PanelSpec controllerPanel() {
    PanelSpec spec;
    spec.inputColumns = 1;
    spec.controls.push_back(channelButton());
    spec.controls.push_back(enableSwitch());
    ControlSpec number = editBox(
        "bxV1", QStringLiteral("Controller number (0-127)"),
        [](const Module& m) { return Shown::ofNumber(as<MIDICtrl>(m).controller); },
        [](Module& m, Engine& e, const Gesture& g) {
            as<MIDICtrl>(m).setControllerText(g.text);
            e.MarkPatchChanged(true);
        },
        600, false);
    number.place = ControlSpec::Place::BesideInputs;
    spec.controls.push_back(std::move(number));
    return spec;
}

PanelSpec sysExPanel() {
    PanelSpec spec;
    spec.inputColumns = 3;
    ControlSpec message = editBox(
        "txMessage", QStringLiteral("Message in hex, v where the Value input goes: F0 43 10 4C 02 01 00 v F7"),
        [](const Module& m) { return Shown::ofText(as<SysEx>(m).shownMessage); },
        [](Module& m, Engine& e, const Gesture& g) {
            std::string error;
            if (as<SysEx>(m).setMessageText(e, g.text, error)) e.MarkPatchChanged(true);
            m.viewChanged = true;  // a refused text goes back to the message in force
        },
        3000, true);
    message.newRow = true;
    spec.controls.push_back(std::move(message));
    ControlSpec port;
    port.kind = ControlKind::Choice;
    port.objectName = QStringLiteral("cbPort");
    port.tip = QStringLiteral("Port the message goes out on");
    port.choices = {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")};
    port.widthTwips = 500;
    port.newRow = true;
    port.read = [](const Module& m) {
        Shown s;
        s.selected = as<SysEx>(m).shownPort;
        return s;
    };
    port.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<SysEx>(m).setPort(e, g.item);
        e.MarkPatchChanged(true);
    };
    spec.controls.push_back(std::move(port));
    ControlSpec table;
    table.kind = ControlKind::Button;
    table.objectName = QStringLiteral("cmdTable");
    table.tip = QStringLiteral("Edit the general table that holds the message");
    table.widthTwips = 900;
    table.dialog = Dialog::TableBank;
    table.read = [](const Module& m) {
        Shown s;
        s.number = as<SysEx>(m).table();
        s.text = "Table " + std::to_string(s.number);
        return s;
    };
    spec.controls.push_back(std::move(table));
    spec.controls.push_back(valueBox("lblSent", QStringLiteral("Messages sent"),
                                     [](const Module& m) { return Shown::ofNumber(as<SysEx>(m).messagesSent); }, 600));
    return spec;
}

PanelSpec sysExFilePanel() {
    PanelSpec spec;
    spec.inputColumns = 2;
    spec.controls.push_back(fileButton("File", QStringLiteral("Select SysEx File"),
                                       QStringLiteral("SysEx Files (*.syx);;All Files (*)"),
                                       [](Module& m, Engine& e, const Gesture& g) {
                                           std::string error;
                                           if (as<SysExFile>(m).chooseFile(g.text, error)) e.MarkPatchChanged(true);
                                       }));
    spec.controls.push_back(caption("lblFile", [](const Module& m) {
        const auto& f = as<SysExFile>(m);
        return Shown::ofText(f.fileName.empty() ? std::string("(no file)") : baseName(f.fileName));
    }, 2100));
    ControlSpec status = caption("lblStatus", [](const Module& m) { return Shown::ofText(as<SysExFile>(m).status); }, 3000);
    status.newRow = true;
    status.tip = QStringLiteral("The file's messages, or why it can't be sent");
    spec.controls.push_back(std::move(status));
    ControlSpec note = editBox(
        "txNote", QStringLiteral("A note of your own about this file"),
        [](const Module& m) { return Shown::ofText(as<SysExFile>(m).note); },
        [](Module& m, Engine& e, const Gesture& g) {
            as<SysExFile>(m).note = g.text;
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        },
        3000, true);
    note.newRow = true;
    spec.controls.push_back(std::move(note));
    return spec;
}

PanelSpec sequencerFilePanel() {
    PanelSpec spec;
    spec.inputColumns = 4;
    spec.controls.push_back(outputBox());
    spec.controls.push_back(fileButton("Load", QStringLiteral("Select Sequencer Data File"),
                                       QStringLiteral("Sequencer Files (*.seq);;All Files (*)"),
                                       [](Module& m, Engine& e, const Gesture& g) {
                                           std::string error;
                                           if (as<Sfile>(m).loadFile(g.text, error)) e.MarkPatchChanged(true);
                                       }));
    spec.controls.push_back(caption("lblSteps", [](const Module& m) {
        const auto& f = as<Sfile>(m);
        if (!f.problem.empty()) return Shown::ofText(f.problem);
        std::string text = std::to_string(f.data().size()) + " steps, at " + std::to_string(f.currentStep());
        if (!f.source.empty()) text += " — " + baseName(f.source);
        return Shown::ofText(text);
    }, 2700));
    return spec;
}

PanelSpec linkPanel() {
    PanelSpec spec;
    spec.inputColumns = 2;
    spec.controls.push_back(outputBox());
    spec.controls.push_back(switchControl(
        "chkOn", QStringLiteral("Off"), QStringLiteral("Click in to turn the link on"),
        [](const Module& m) {
            Shown s;
            s.on = as<IPLink>(m).on();
            s.text = s.on ? "On" : "Off";
            return s;
        },
        [](Module& m, Engine&, const Gesture& g) {
            std::string error;
            if (g.number != 0)
                as<IPLink>(m).turnOn(error);
            else
                as<IPLink>(m).turnOff();
        },
        600));
    using Field = void (*)(LinkSettings&, const std::string&);
    const auto setting = [](const char* name, QString tip, int width, bool textual, std::string (*show)(const LinkSettings&), Field set) {
        ControlSpec box = editBox(
            name, std::move(tip), [show](const Module& m) {
                Shown s;
                s.text = show(as<IPLink>(m).settings());
                s.number = std::atoi(s.text.c_str());
                return s;
            },
            [set](Module& m, Engine& e, const Gesture& g) {
                auto& link = as<IPLink>(m);
                LinkSettings s = link.settings();
                set(s, g.text);
                std::string error;
                if (!link.setSettings(s, error)) link.status = error;
                m.viewChanged = true;
                e.MarkPatchChanged(true);
            },
            width, textual);
        box.newRow = true;
        return box;
    };
    spec.controls.push_back(setting("txHost", QStringLiteral("Host the values go to"), 1800, true,
                                    [](const LinkSettings& s) { return s.host; },
                                    [](LinkSettings& s, const std::string& t) { s.host = t; }));
    spec.controls.push_back(setting("txSendPort", QStringLiteral("UDP port they go to; 0 sends nothing"), 700, false,
                                    [](const LinkSettings& s) { return std::to_string(s.sendPort); },
                                    [](LinkSettings& s, const std::string& t) {
                                        s.sendPort = static_cast<uint16_t>(std::clamp(std::atoi(t.c_str()), 0, 65535));
                                    }));
    spec.controls.push_back(setting("txListenPort", QStringLiteral("UDP port values come in on; 0 takes none"), 700, false,
                                    [](const LinkSettings& s) { return std::to_string(s.listenPort); },
                                    [](LinkSettings& s, const std::string& t) {
                                        s.listenPort = static_cast<uint16_t>(std::clamp(std::atoi(t.c_str()), 0, 65535));
                                    }));
    spec.controls.push_back(setting("txAddress", QStringLiteral("OSC address of the messages, both ways"), 1800, true,
                                    [](const LinkSettings& s) { return s.address; },
                                    [](LinkSettings& s, const std::string& t) { s.address = t; }));
    spec.controls.push_back(switchControl(
        "chkUnit", QStringLiteral("0..1"), QStringLiteral("In: a float from 0 to 1 that comes in means 0 to 127"),
        [](const Module& m) { return Shown::ofOn(as<IPLink>(m).settings().unitFloats); },
        [](Module& m, Engine& e, const Gesture& g) {
            auto& link = as<IPLink>(m);
            LinkSettings s = link.settings();
            s.unitFloats = g.number != 0;
            std::string error;
            if (!link.setSettings(s, error)) link.status = error;
            m.viewChanged = true;
            e.MarkPatchChanged(true);
        },
        600));
    ControlSpec status = caption("lblStatus", [](const Module& m) {
        const auto& link = as<IPLink>(m);
        const LinkCounts c = link.shownCounts;
        std::string text = link.status;
        if (link.on())
            text += " | in " + std::to_string(c.received) + ", out " + std::to_string(c.sent) + ", bad " +
                    std::to_string(c.bad) + ", other " + std::to_string(c.ignored);
        return Shown::ofText(text);
    }, 3000);
    status.newRow = true;
    spec.controls.push_back(std::move(status));
    return spec;
}

}  // namespace

void addSidePanels(const PanelAdder& add) {
    add("MIDICtrl", controllerPanel());
    add("SysEx", sysExPanel());
    add("SysExFile", sysExFilePanel());
    add("Sfile", sequencerFilePanel());
    add("IPLink", linkPanel());
}

}  // namespace quillmer::gui
