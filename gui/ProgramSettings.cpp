#include "gui/ProgramSettings.h"

#include <QRandomGenerator>
#include <QSettings>

#include "engine/Engine.h"
#include "gui/OptionFlags.h"
#include "platform/DesktopDevices.h"
#include "gui/Zoom.h"
#include "platform/FluidSynthInstance.h"

namespace quillmer::gui {

namespace {
const QString kSection = QStringLiteral("Settings");
const QString kNoDevice = QString::fromUtf8(quillmer::kNoDevice.data(), static_cast<qsizetype>(quillmer::kNoDevice.size()));

int readInt(QSettings& store, const char* key, int fallback) {
    bool ok = false;
    const int value = store.value(QLatin1String(key)).toString().toInt(&ok);
    return ok ? value : fallback;
}
// Values are text holding numbers, as they always were.
void writeInt(QSettings& store, const char* key, int value) {
    store.setValue(QLatin1String(key), QString::number(value));
}
}  // namespace

ProgramSettings::ProgramSettings() {
    outputPorts.fill(kNoDevice);
    inputPorts.fill(kNoDevice);
}

void ProgramSettings::read(QSettings& store, const QString& examplesDir, const QString& programDir) {
    store.beginGroup(kSection);
    if (store.contains(QStringLiteral("MainLeft")) && store.contains(QStringLiteral("MainTop")))
        mainPos = QPoint(readInt(store, "MainLeft", 0), readInt(store, "MainTop", 0));
    mainSize = QSize(readInt(store, "MainWidth", mainSize.width()), readInt(store, "MainHeight", mainSize.height()));
    mainState = static_cast<WindowState>(std::clamp(readInt(store, "MainState", 0), 0, 2));
    const int color = readInt(store, "BackColor", -1);
    if (color >= 0) backColor = QColor::fromRgb(static_cast<QRgb>(color));
    zoom = nearestZoomStep(readInt(store, "Zoom", kNormalZoom));
    latency = std::clamp(readInt(store, "Latency", 0), 0, 1000);
    runPrgChg = readInt(store, "RunPrgChg", 0) != 0;
    runPrgChgChan = std::clamp(readInt(store, "RunPrgChgChan", 0), 0, kChannelSlots - 1);
    wholeDelay = std::clamp(readInt(store, "WholeDelay", 0), 0, 32767);
    ranSeed = readInt(store, "RanSeed", 0);
    defaultDir = store.value(QStringLiteral("DefaultDir")).toString();
    currentDir = store.value(QStringLiteral("CurrentDir"), examplesDir).toString();
    filePlayer = store.value(QStringLiteral("FilePlayer")).toString();
    sysFlags = readInt(store, "SysFlags", 0);
    midiFlags = readInt(store, "MIDIFlags", 0);
    exactTempo = readInt(store, "ExactTempo", -1) != 0;
    sampleAccurateJack = readInt(store, "SampleAccurateJack", -1) != 0;
    ufSeed = readInt(store, "UFSeed", 0);
    if (!store.contains(QStringLiteral("UFSeed"))) {
        ufSeed = static_cast<int>(QRandomGenerator::global()->bounded(1, 32768));
        writeInt(store, "UFSeed", ufSeed);
    }
    appDir = store.value(QStringLiteral("AppDir")).toString();
    if (appDir != programDir) {
        appDir = programDir;
        store.setValue(QStringLiteral("AppDir"), appDir);
    }
    store.endGroup();
}

void ProgramSettings::write(QSettings& store) const {
    store.beginGroup(kSection);
    if (mainPos) {
        writeInt(store, "MainLeft", mainPos->x());
        writeInt(store, "MainTop", mainPos->y());
    }
    writeInt(store, "MainWidth", mainSize.width());
    writeInt(store, "MainHeight", mainSize.height());
    writeInt(store, "MainState", static_cast<int>(mainState));
    writeInt(store, "BackColor", static_cast<int>(backColor.rgb() & 0xFFFFFF));
    writeInt(store, "Zoom", zoom);
    writeInt(store, "RunPrgChg", runPrgChg ? -1 : 0);
    writeInt(store, "RunPrgChgChan", runPrgChgChan);
    writeInt(store, "Latency", latency);
    writeInt(store, "SysFlags", sysFlags);
    writeInt(store, "RanSeed", ranSeed);
    writeInt(store, "WholeDelay", wholeDelay);
    store.setValue(QStringLiteral("CurrentDir"), currentDir);
    store.setValue(QStringLiteral("FilePlayer"), filePlayer);
    writeInt(store, "MIDIFlags", midiFlags);
    writeInt(store, "ExactTempo", exactTempo ? -1 : 0);
    writeInt(store, "SampleAccurateJack", sampleAccurateJack ? -1 : 0);
    store.endGroup();
}

void ProgramSettings::readPorts(QSettings& store) {
    store.beginGroup(kSection);
    for (int port = 0; port < kPortCount; ++port) {
        const auto p = static_cast<size_t>(port);
        // On a first start port A plays the built-in synth, so a new user hears something.
        const QString firstChoice = port == 0 ? QString::fromUtf8(kBuiltInSynthName) : kNoDevice;
        outputPorts[p] = store.value(QString::fromStdString(outputPortKey(port)), firstChoice).toString();
        inputPorts[p] = store.value(QString::fromStdString(inputPortKey(port)), kNoDevice).toString();
    }
    store.endGroup();
}

void ProgramSettings::writePorts(QSettings& store) const {
    store.beginGroup(kSection);
    for (int port = 0; port < kPortCount; ++port) {
        const auto p = static_cast<size_t>(port);
        store.setValue(QString::fromStdString(outputPortKey(port)), outputPorts[p]);
        store.setValue(QString::fromStdString(inputPortKey(port)), inputPorts[p]);
    }
    store.endGroup();
}

void ProgramSettings::applyTo(Engine& engine) const {
    engine.ports.setLatency(latency);
    engine.ports.progChgToSnapshot = runPrgChg;
    engine.ports.progChgChannelSlot = runPrgChgChan;
    engine.options.wholeDelay = static_cast<int16_t>(wholeDelay);
    engine.options.randomSeed = ranSeed;
    applySysFlags(sysFlags, engine);
    applyMidiFlags(midiFlags, engine);
    engine.setExactTempo(exactTempo);
    setSampleAccurateJack(sampleAccurateJack);
}

void ProgramSettings::takeFrom(const Engine& engine) {
    latency = engine.ports.Latency();
    runPrgChg = engine.ports.progChgToSnapshot;
    runPrgChgChan = engine.ports.progChgChannelSlot;
    wholeDelay = engine.options.wholeDelay;
    ranSeed = engine.options.randomSeed;
    sysFlags = sysFlagsOf(engine, sysFlags);
    midiFlags = midiFlagsOf(engine, midiFlags);
    exactTempo = engine.options.exactTempo;
    sampleAccurateJack = quillmer::sampleAccurateJack();
    for (int port = 0; port < kPortCount; ++port) {
        const auto p = static_cast<size_t>(port);
        outputPorts[p] = QString::fromStdString(engine.ports.outputName(port));
        inputPorts[p] = QString::fromStdString(engine.ports.inputName(port));
    }
}

}  // namespace quillmer::gui
