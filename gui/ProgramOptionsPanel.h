#pragma once
// The program side of the options window: the option boxes the tick and the panels read,
// the two absolute clocks, the random seed, the whole-note delay, program changes that
// recall snapshots, and "Clear snapshots".

#include <QWidget>
#include <functional>
#include <utility>
#include <vector>

class QCheckBox;
class QComboBox;
class QPushButton;
class QSpinBox;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class UserDialogs;
struct ProgramSettings;

class ProgramOptionsPanel : public QWidget {
    Q_OBJECT
public:
    static constexpr const char* kClearQuestion = "Erase all Snapshots - This cannot be undone - Are you sure?";

    ProgramOptionsPanel(Session& session, ProgramSettings& settings, UserDialogs& dialogs, QWidget* parent = nullptr);

    // Shows the engine's state (takes the lock).
    void reload();

    QCheckBox* extendedTempoBox() const { return extendedTempo_; }
    QPushButton* clearSnapshotsButton() const { return clearSnapshots_; }

signals:
    // Something the main window shows changed (tempo limits, snapshots, the save light).
    void edited();

private:
    QWidget* makeOptionBoxes();
    QWidget* makeValues();
    QWidget* makeProgramChange();
    // A check box that reads and writes one flag under the engine lock.
    QCheckBox* addFlag(const char* name, const char* caption, const char* tip, std::function<bool()> read,
                       std::function<void(bool)> write);
    void clearSnapshots();

    Session& session_;
    ProgramSettings& settings_;
    UserDialogs& dialogs_;
    std::vector<std::pair<QCheckBox*, std::function<bool()>>> flags_;  // box and how to read it
    QCheckBox* extendedTempo_ = nullptr;
    QSpinBox* absClockA_ = nullptr;
    QSpinBox* absClockB_ = nullptr;
    QSpinBox* randomSeed_ = nullptr;
    QSpinBox* wholeDelay_ = nullptr;
    QCheckBox* progChg_ = nullptr;
    QComboBox* progChgChannel_ = nullptr;
    QPushButton* clearSnapshots_ = nullptr;
    QWidget* flagBox_ = nullptr;
};

}  // namespace quillmer::gui
