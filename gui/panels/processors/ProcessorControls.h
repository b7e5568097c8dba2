#pragma once
// Controls the processor panels share: the overflow light, switches and up-downs on a
// type's per-snapshot settings, the seven bit buttons, and a tap's list of masters.

#include <string>
#include <string_view>
#include <vector>

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/processors/ProcessorKit.h"

namespace quillmer::gui::processors {

// The result box, the inputs in `columns` columns.
inline PanelSpec plain(int columns) {
    PanelSpec spec;
    spec.inputColumns = columns;
    spec.controls = {outputBox()};
    return spec;
}

// Shape1 "Ovr": lit while the type's over() is true.
template <class T>
ControlSpec overLamp() {
    ControlSpec lamp = outputLamp();
    lamp.tip = QStringLiteral("Ovr");
    lamp.read = [](const Module& m) { return Shown::ofOn(as<T>(m).over()); };
    return lamp;
}

// A switch on byte `i` of a Pure type's settings.
template <class T>
ControlSpec flagSwitch(const char* objectName, QString caption, std::string_view tip, int i, int widthTwips = 900) {
    return switchControl(
        objectName, std::move(caption), text(tip), [i](const Module& m) { return Shown::ofOn(as<T>(m).byteSetting(i) != 0); },
        [i](Module& m, Engine& e, const Gesture& g) {
            as<T>(m).setFlagSetting(i, g.number != 0);
            e.MarkPatchChanged(true);
        },
        widthTwips);
}

// A switch on a module's own bool getter and setter.
template <class T>
ControlSpec memberSwitch(const char* objectName, QString caption, std::string_view tip, bool (T::*get)() const,
                         void (T::*set)(bool)) {
    ControlSpec sw = switchControl(
        objectName, std::move(caption), text(tip), [get](const Module& m) { return Shown::ofOn((as<T>(m).*get)()); },
        [set](Module& m, Engine& e, const Gesture& g) {
            (as<T>(m).*set)(g.number != 0);
            e.MarkPatchChanged(true);
        });
    sw.newRow = true;
    return sw;
}

// A knob or slider: an up-down on a byte or word of a Pure type's settings.
template <class T>
ControlSpec settingUpDown(const char* objectName, std::string_view tip, int i, bool word, int minimum, int maximum) {
    ControlSpec c;
    c.kind = ControlKind::UpDown;
    c.objectName = QLatin1String(objectName);
    c.tip = text(tip);
    c.minimum = minimum;
    c.maximum = maximum;
    c.widthTwips = 840;
    c.read = [i, word](const Module& m) { return Shown::ofNumber(word ? as<T>(m).wordSetting(i) : as<T>(m).byteSetting(i)); };
    c.edit = [i, word, minimum, maximum](Module& m, Engine& e, const Gesture& g) {
        const int v = std::clamp(g.number, minimum, maximum);
        if (word)
            as<T>(m).setWordSetting(i, v);
        else
            as<T>(m).setByteSetting(i, v);
        e.MarkPatchChanged(true);
    };
    return c;
}

// The seven bit buttons of a mask in byte 0, the highest bit first: "Check1(6)".."Check1(0)".
template <class T>
std::vector<ControlSpec> bitButtons(std::string_view tip) {
    std::vector<ControlSpec> buttons;
    for (int b = 6; b >= 0; --b) {
        ControlSpec sw = switchControl(
            "", QString::number(1 << b), text(tip), [b](const Module& m) { return Shown::ofOn(as<T>(m).bit(0, b)); },
            [b](Module& m, Engine& e, const Gesture&) {
                as<T>(m).toggleBit(0, b);
                e.MarkPatchChanged(true);
            },
            360);
        sw.objectName = QStringLiteral("Check1_%1").arg(b);
        sw.newRow = b == 6;
        buttons.push_back(std::move(sw));
    }
    return buttons;
}

// cbXmID: "(none)" and the placed masters by name; choosing one follows it.
template <class T>
ControlSpec masterMenu(std::string_view tip, int widthTwips = 1500) {
    ControlSpec menu;
    menu.kind = ControlKind::Choice;
    menu.objectName = QStringLiteral("cbXmID");
    menu.tip = text(tip);
    menu.widthTwips = widthTwips;
    menu.itemsFromModule = true;
    menu.newRow = true;
    menu.read = [](const Module& m) {
        const T& tap = as<T>(m);
        Shown s;
        s.items.push_back("(none)");
        const std::vector<MasterChoice> list = tap.masterChoices();
        for (size_t row = 0; row < list.size(); ++row) {
            s.items.push_back(list[row].name);
            if (list[row].index == tap.masterIndex()) s.selected = static_cast<int>(row) + 1;
        }
        return s;
    };
    menu.edit = [](Module& m, Engine& e, const Gesture& g) {
        T& tap = as<T>(m);
        const std::vector<MasterChoice> list = tap.masterChoices();
        const int row = g.item - 1;
        tap.chooseMaster(row >= 0 && row < static_cast<int>(list.size()) ? list[static_cast<size_t>(row)].index : -1);
        e.MarkPatchChanged(true);
    };
    return menu;
}

}  // namespace quillmer::gui::processors
