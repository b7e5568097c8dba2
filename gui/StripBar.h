#pragma once
// The strip under the toolbar: snapshot name and spin, tempo slider and spin, the four page
// buttons with the group button, the flip button, the four lamps, the CPU meter and the save
// light. It edits the engine under the lock and shows what the main window read from it.

#include <QWidget>
#include <string>
#include <vector>

#include "engine/Engine.h"

class QAbstractButton;
class QLabel;
class QButtonGroup;
class QComboBox;
class QSlider;
class QSpinBox;
class QToolButton;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class CpuMeter;
class Lamp;

// What the strip shows, copied from the engine under the lock.
struct StripState {
    int tempo = 120;
    int maxTempo = 254;
    int page = 0;
    bool pageFlip = false;
    Lamps lamps;
    int saveLight = 1;
    int currentSnapshot = 0;
    std::vector<std::string> snapshotNames;  // the slots in use
    std::string comboText;
    bool snapshotEdited = false;  // the live settings differ from the current snapshot

    static StripState read(Session& session);  // lock held
};

class StripBar : public QWidget {
    Q_OBJECT
public:
    explicit StripBar(Session& session, QWidget* parent = nullptr);

    void showState(const StripState& state);

    // For the main window's keys and for tests: the controls by role.
    QComboBox* snapshotBox() const { return snapshotBox_; }
    QSpinBox* snapshotSpin() const { return snapshotSpin_; }
    QSlider* tempoSlider() const { return tempoSlider_; }
    QSpinBox* tempoSpin() const { return tempoSpin_; }
    QToolButton* pageButton(int position) const { return pageButtons_[static_cast<size_t>(position)]; }
    QToolButton* groupButton() const { return groupButton_; }
    QToolButton* flipButton() const { return flipButton_; }
    Lamp* saveLight() const { return saveLight_; }
    QLabel* snapshotEditedMark() const { return editedMark_; }

signals:
    // The strip changed something the rest of the window shows (a page, a snapshot).
    void edited();

private:
    QWidget* makeSnapshotControls();
    QWidget* makeTempoControls();
    QWidget* makePageControls();
    QWidget* makeLamps();
    void setTempo(int value);
    void choosePage(int position);
    void nextGroup();
    void chooseSnapshot(int slot);

    Session& session_;
    QComboBox* snapshotBox_ = nullptr;
    QSpinBox* snapshotSpin_ = nullptr;
    QLabel* editedMark_ = nullptr;
    QSlider* tempoSlider_ = nullptr;
    QSpinBox* tempoSpin_ = nullptr;
    std::array<QToolButton*, 4> pageButtons_{};
    QButtonGroup* pageGroup_ = nullptr;
    QToolButton* groupButton_ = nullptr;
    QToolButton* flipButton_ = nullptr;
    Lamp* beatLamp_ = nullptr;
    Lamp* timingLamp_ = nullptr;
    Lamp* midiInLamp_ = nullptr;
    Lamp* midiOutLamp_ = nullptr;
    CpuMeter* cpuMeter_ = nullptr;
    Lamp* saveLight_ = nullptr;
    std::vector<std::string> shownNames_;
    std::string shownComboText_;
};

// Colours of the save light by state: 1 clean, 2 changed and armed, 3 changed and not armed.
QColor saveLightColor(int state);

}  // namespace quillmer::gui
