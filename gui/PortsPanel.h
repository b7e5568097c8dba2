#pragma once
// The MIDI side of the options window: a page per port A..D with its output and input
// device and the output's all-off options, the latency box, the "MIDI Sync" and "Remote
// Ctrl" choices and the input triggers.

#include <QWidget>
#include <array>

#include "engine/MidiPorts.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;
class QTabWidget;

namespace quillmer {
class Engine;
}

namespace quillmer::gui {

class PortsPanel : public QWidget {
    Q_OBJECT
public:
    explicit PortsPanel(Engine& engine, QWidget* parent = nullptr);

    // Fills the device lists again and shows the engine's state (takes the lock).
    void reload();

    QComboBox* outputBox(int port) const { return outputBoxes_[static_cast<size_t>(port)]; }
    QComboBox* inputBox(int port) const { return inputBoxes_[static_cast<size_t>(port)]; }
    QLineEdit* latencyBox() const { return latency_; }
    QCheckBox* triggerBox(int bit) const;

private:
    QWidget* makePortPage(int port);
    QWidget* makeTimingBox();
    QWidget* makeTriggerBox();
    void chooseOutput(int port, const QString& name);
    void chooseInput(int port, const QString& name);
    void setPortOption(int port, int bit, bool on);
    void setTrigger(int bit, bool on);
    void showState();

    Engine& engine_;
    QTabWidget* tabs_ = nullptr;
    std::array<QComboBox*, kPortCount> outputBoxes_{};
    std::array<QComboBox*, kPortCount> inputBoxes_{};
    std::array<std::array<QCheckBox*, 4>, kPortCount> portOptionBoxes_{};
    QLineEdit* latency_ = nullptr;
    std::array<QRadioButton*, 3> syncButtons_{};
    std::array<QRadioButton*, 3> remoteButtons_{};
    std::array<QCheckBox*, 7> triggerBoxes_{};
};

}  // namespace quillmer::gui
