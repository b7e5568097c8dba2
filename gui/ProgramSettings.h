#pragma once
// The program's own preferences, as opposed to a patch's: section "Settings" of the
// settings store, read when the main window comes up and written when it goes.

#include <QColor>
#include <QPoint>
#include <QSize>
#include <QString>
#include <array>
#include <optional>

#include "engine/MidiPorts.h"

class QSettings;

namespace quillmer {
class Engine;
}

namespace quillmer::gui {

enum class WindowState { Normal = 0, Minimised = 1, Maximised = 2 };

struct ProgramSettings {
    std::optional<QPoint> mainPos;  // none on a first start: the window manager places it
    QSize mainSize{1100, 720};
    WindowState mainState = WindowState::Normal;
    QColor backColor{0x23, 0x27, 0x2e};
    int zoom = 100;            // the workspace's, in percent
    int latency = 0;           // ms
    bool runPrgChg = false;    // program changes recall snapshots
    int runPrgChgChan = 0;     // ChannelSlot 0..63
    int wholeDelay = 0;
    int ranSeed = 0;
    QString defaultDir;
    QString currentDir;
    QString filePlayer;
    int sysFlags = 0;
    int midiFlags = 0;
    bool exactTempo = true;          // the tick at 2500/Tempo ms exactly, not whole ms
    bool sampleAccurateJack = true;  // JACK ports through our own client
    int ufSeed = 0;
    QString appDir;
    std::array<QString, kPortCount> outputPorts;
    std::array<QString, kPortCount> inputPorts;

    ProgramSettings();

    // The keys in the order of a start. "UFSeed" and "AppDir" are written back at once when
    // they are missing or changed. `examplesDir` is the default of "CurrentDir".
    void read(QSettings& store, const QString& examplesDir, const QString& programDir);
    // The keys in the order of a close.
    void write(QSettings& store) const;
    // The chosen devices, "<n>MidiOutPort" and "<n>MidiInPort".
    void readPorts(QSettings& store);
    void writePorts(QSettings& store) const;

    // Settings into the engine's options and back (engine lock held).
    void applyTo(Engine& engine) const;
    void takeFrom(const Engine& engine);
};

}  // namespace quillmer::gui
