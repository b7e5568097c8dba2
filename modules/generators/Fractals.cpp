#include "modules/generators/Fractals.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kChaosId = *typeIdByName("Chaos");
const ModuleTypeId kFractalId = *typeIdByName("Fractal");
const ModuleTypeId kFracOutId = *typeIdByName("FracOut");
}  // namespace

int scaledPoint(int scale, double v, int offset) { return (roundToInt(scale / 127.0 * v) + offset) & 127; }

// --- Chaos ---

Chaos::Chaos() : SettingsModule<3>(kChaosId, kInputs) {}

void Chaos::chooseMap(int map) { setByteAt(0, std::clamp(map, 0, 2)); }

void Chaos::settingsChanged() {
    if (map() != seenMap_) needReset_ = true;
    seenMap_ = map();
}

void Chaos::update(Engine&) {
    if (in(2) != 0) needReset_ = true;
    if (in(0) == 0) {
        armed_ = true;
        return;
    }
    if (!armed_ && !needReset_) return;
    const GeneratorTables& t = generatorTables();
    const int seed = in(1);
    double u = 0;
    switch (map()) {
        case 0: u = burt_.step(seed, needReset_, t); break;
        case 1: u = bifurcation_.step(seed, needReset_, t); break;
        default: u = henon_.step(seed, needReset_, t); break;
    }
    setOutput(std::min(roundToInt(in(3) * u) + in(4), 127));
    armed_ = false;
    needReset_ = false;
}

// --- Fractal ---

Fractal::Fractal() : SettingsModule<4>(kFractalId, kInputs) {}

void Fractal::chooseAlgorithm(int index) { setByteAt(0, std::clamp(index, 0, kFractalAlgorithms - 1)); }

void Fractal::settingsChanged() {
    const int a = static_cast<int>(algorithm());
    if (a != seenAlgorithm_) needReset_ = true;
    seenAlgorithm_ = a;
}

void Fractal::pictureClick(bool left) {
    if (left) {
        needReset_ = true;
        pen_ = AfterClick;
    } else {
        picture_.fill(Blank);
    }
    ++pictureVersion_;
    viewChanged = true;
}

void Fractal::stepOrbit(Engine& engine) {
    const GeneratorTables& t = generatorTables();
    const int seed = in(1);
    if (needReset_ || !orbit_.started() || orbit_.algorithm() != algorithm()) {
        orbit_.reset(algorithm(), seed, t);
        needReset_ = false;
    }
    const PlotPoint p = orbit_.step(seed, t, engine.random);
    fractalX_ = static_cast<float>(p.x);
    fractalY_ = static_cast<float>(p.y);
    picture_[static_cast<size_t>(p.y * kSide + p.x)] = pen_;
    ++pictureVersion_;
}

void Fractal::update(Engine& engine) {
    if (in(2) != 0) {
        needReset_ = true;
        fractalX_ = fractalY_ = 0;
        setOutput(0);
        return;
    }
    const bool pending = needReset_;
    if (in(0) == 0 && !turbo() && !pending) {
        armed_ = true;
        return;
    }
    if (!armed_ && !turbo() && !pending) return;
    const int points = turbo() ? kTurboPoints : 1;
    for (int i = 0; i < points; ++i) stepOrbit(engine);
    armed_ = false;
    viewChanged = true;
    setOutput(scaledPoint(in(3), fractalX_, in(4)));
}

// --- FracOut ---

FracOut::FracOut() : TapModule<3, 2>(kFracOutId, kFractalId, kInputs) {}

void FracOut::update(Engine& engine) {
    if (mastersGrew(engine)) viewChanged = true;
    const auto* fractal = static_cast<const Fractal*>(master(engine));
    const double v = fractal == nullptr ? 0.0 : readsX() ? fractal->fractalX() : fractal->fractalY();
    setOutput(scaledPoint(in(0), v, in(1)));
}

}  // namespace quillmer
