// Panels of the generators: the map and algorithm menus of Chaos and Fractal, Fractal's
// Turbo and orbit picture, the taps' lists, the switches of the random modules and Prob's
// table buttons.

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "gui/panels/processors/ProcessorControls.h"
#include "modules/generators/Fractals.h"
#include "modules/generators/Randoms.h"

namespace quillmer::gui {

using namespace processors;

namespace {

// A drop-down on a module's own choice.
template <class T, class Names>
ControlSpec choiceMenu(const char* objectName, std::string_view tip, const Names& names, int (T::*get)() const,
                       void (T::*set)(int), int widthTwips = 1500) {
    ControlSpec menu;
    menu.kind = ControlKind::Choice;
    menu.objectName = QLatin1String(objectName);
    menu.tip = text(tip);
    menu.widthTwips = widthTwips;
    menu.newRow = true;
    for (std::string_view n : names) menu.choices.push_back(text(n));
    menu.read = [get](const Module& m) {
        Shown s;
        s.selected = (as<T>(m).*get)();
        return s;
    };
    menu.edit = [set](Module& m, Engine& e, const Gesture& g) {
        (as<T>(m).*set)(g.item);
        e.MarkPatchChanged(true);
    };
    return menu;
}

int fractalIndex(const Fractal& f) { return static_cast<int>(f.algorithm()); }

}  // namespace

void addGeneratorPanels(const PanelAdder& add) {
    PanelSpec chaos = plain(3);
    chaos.inputLabels = {QStringLiteral("Clk"), QStringLiteral("Seed"), QStringLiteral("Rst"), QStringLiteral("Scale"),
                         QStringLiteral("Ofst")};
    chaos.controls.push_back(choiceMenu<Chaos>("cbFunc", Chaos::kMapTip, Chaos::kMapNames, &Chaos::map, &Chaos::chooseMap));
    add("Chaos", std::move(chaos));

    PanelSpec fractal = plain(3);
    ControlSpec algorithm;
    algorithm.kind = ControlKind::Choice;
    algorithm.objectName = QStringLiteral("cbAlgorithm");
    algorithm.tip = text(Fractal::kAlgorithmTip);
    algorithm.widthTwips = 1500;
    algorithm.newRow = true;
    for (std::string_view n : kFractalNames) algorithm.choices.push_back(text(n));
    algorithm.read = [](const Module& m) {
        Shown s;
        s.selected = fractalIndex(as<Fractal>(m));
        return s;
    };
    algorithm.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<Fractal>(m).chooseAlgorithm(g.item);
        e.MarkPatchChanged(true);
    };
    fractal.controls.push_back(std::move(algorithm));
    ControlSpec turbo = memberSwitch<Fractal>("chkTurbo", QStringLiteral("Turbo"), Fractal::kTurboTip, &Fractal::turbo, &Fractal::setTurbo);
    turbo.newRow = false;
    fractal.controls.push_back(std::move(turbo));
    ControlSpec picture;
    picture.kind = ControlKind::Picture;
    picture.objectName = QStringLiteral("Picture1");
    picture.tip = text(Fractal::kPictureTip);
    picture.widthTwips = 1920;
    picture.heightTwips = 1920;
    picture.newRow = true;
    picture.read = [](const Module& m) {
        const auto& pens = as<Fractal>(m).picture();
        return Shown::ofText(std::string(pens.begin(), pens.end()));
    };
    picture.edit = [](Module& m, Engine&, const Gesture& g) { as<Fractal>(m).pictureClick(g.button == 1); };
    fractal.controls.push_back(std::move(picture));
    add("Fractal", std::move(fractal));

    PanelSpec fracOut = plain(2);
    fracOut.controls.push_back(masterMenu<FracOut>(FracOut::kListTip));
    ControlSpec xy = switchControl(
        "cbXY", QStringLiteral("=X"), text(FracOut::kXYTip),
        [](const Module& m) {
            Shown s = Shown::ofOn(as<FracOut>(m).readsX());
            s.text = as<FracOut>(m).readsX() ? "=X" : "=Y";
            return s;
        },
        [](Module& m, Engine& e, const Gesture& g) {
            as<FracOut>(m).setReadsX(g.number != 0);
            e.MarkPatchChanged(true);
        },
        480);
    fracOut.controls.push_back(std::move(xy));
    add("FracOut", std::move(fracOut));

    add("Rand", plain(3));
    PanelSpec rand3 = plain(3);
    rand3.controls.push_back(memberSwitch<Rand3>("cbRRan", QStringLiteral("Whole"), Rand3::kWholeTip, &Rand3::whole, &Rand3::setWhole));
    add("Rand3", std::move(rand3));
    PanelSpec ranPat = plain(3);
    ranPat.controls.push_back(memberSwitch<RanPat>("chkFran", QStringLiteral("1/f"), RanPat::kWanderTip, &RanPat::wander, &RanPat::setWander));
    add("RanPat", std::move(ranPat));
    add("URand", plain(3));

    PanelSpec uranOut = plain(1);
    uranOut.controls = {outputBox("bxOut")};
    uranOut.controls.push_back(masterMenu<URanOut>(URanOut::kListTip));
    ControlSpec channel;
    channel.kind = ControlKind::UpDown;
    channel.objectName = QStringLiteral("cbChan");
    channel.tip = text(URanOut::kChannelTip);
    channel.minimum = 0;
    channel.maximum = URanOut::kChannels - 1;
    channel.widthTwips = 840;
    channel.read = [](const Module& m) { return Shown::ofNumber(as<URanOut>(m).channel()); };
    channel.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<URanOut>(m).chooseChannel(g.number);
        e.MarkPatchChanged(true);
    };
    uranOut.controls.push_back(std::move(channel));
    add("URanOut", std::move(uranOut));

    PanelSpec prob = plain(2);
    ControlSpec table;
    table.kind = ControlKind::Button;
    table.objectName = QStringLiteral("cmdTable");
    table.tip = QStringLiteral("Edit the probability table");
    table.caption = QStringLiteral("Table");
    table.dialog = Dialog::TableBank;
    table.newRow = true;
    table.read = [](const Module& m) {
        Shown s = Shown::ofNumber(as<Prob>(m).table());
        s.text = "T" + std::to_string(as<Prob>(m).table());
        return s;
    };
    prob.controls.push_back(std::move(table));
    ControlSpec fill;
    fill.kind = ControlKind::Button;
    fill.objectName = QStringLiteral("btnFill");
    fill.tip = QStringLiteral("Fill the table");
    fill.caption = QStringLiteral("Fill");
    fill.dialog = Dialog::Fill;
    prob.controls.push_back(std::move(fill));
    add("Prob", std::move(prob));

    PanelSpec numGen = plain(4);
    numGen.controls.push_back(memberSwitch<NumGen>("chkFran", QStringLiteral("x8192"), NumGen::kLargeTip, &NumGen::large, &NumGen::setLarge));
    add("NumGen", std::move(numGen));

    PanelSpec funGen = plain(2);
    funGen.controls.push_back(choiceMenu<FunGen>("cbFunc", "Function", FunGen::kFunctionNames, &FunGen::function, &FunGen::chooseFunction));
    add("FunGen", std::move(funGen));

    PanelSpec corupt = plain(2);
    corupt.controls.push_back(
        memberSwitch<Corupt>("chkSubst", QStringLiteral("Subst"), Corupt::kSubstituteTip, &Corupt::substitute, &Corupt::setSubstitute));
    add("Corupt", std::move(corupt));
}

}  // namespace quillmer::gui
