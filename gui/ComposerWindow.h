#pragma once
// The "Play List Composer": the snapshots on the left, the play list on the right, the
// list's editing commands, the transport with recording, saving the recording and playing
// it in a MIDI player. The logic is the session's Composer; this window only forwards and
// draws, reading the Composer's state under the engine lock at about 20 Hz.

#include <QDialog>
#include <QTemporaryDir>
#include <QTimer>
#include <array>
#include <functional>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QUrl;
class QWidget;

namespace quillmer {
class MidiFileWriter;
class Session;
}  // namespace quillmer

namespace quillmer::gui {

class Lamp;
class UserDialogs;
struct ProgramSettings;

class ComposerWindow : public QDialog {
    Q_OBJECT
public:
    ComposerWindow(Session& session, UserDialogs& dialogs, ProgramSettings& settings, QWidget* parent = nullptr);
    ~ComposerWindow() override;

    static constexpr int kPlayers = 2;

    // WakeUp: both lists again from the patch, and the transport as it stands.
    void wakeUp();
    // Reads the Composer and redraws what changed.
    void refresh();

    // The player buttons open a file through these; tests put their own in.
    std::function<bool(const QUrl&)> openWithDesktop;
    std::function<bool(const QString& program, const QStringList& arguments)> startProgram;

    QListWidget* snapshotList() const { return list1_; }
    QListWidget* playList() const { return list2_; }
    QPushButton* button(const char* objectName) const;
    QLineEdit* measuresBox() const { return txMeasures_; }
    QLineEdit* stepBox() const { return bxStep_; }
    QLabel* measuresLabel() const { return lbMeasures_; }
    QCheckBox* shortNames() const { return chQuotes_; }
    Lamp* recordingLamp() const { return led_; }
    QPushButton* player(int i) const { return players_[static_cast<size_t>(i)]; }
    // The file the players open: the last one saved, or else the last recording.
    QString playFile() const { return playFile_; }
    // The custom player was right-clicked: choose its program.
    void choosePlayer();

signals:
    // The window was closed (Exit or its close button): the Composer goes off.
    void closedByUser();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void build();
    void edit(const std::function<int(int line, int snapshot)>& command);
    void updateMeasures();
    void saveMidiFile();
    void runPlayer(int i);
    void showSaveResult(const QString& path, const QString& error);

    Session& session_;
    UserDialogs& dialogs_;
    ProgramSettings& settings_;
    std::unique_ptr<MidiFileWriter> writer_;
    QTemporaryDir recordings_;
    QString playFile_;
    QListWidget* list1_ = nullptr;
    QListWidget* list2_ = nullptr;
    QWidget* lists_ = nullptr;
    QLineEdit* txMeasures_ = nullptr;
    QLineEdit* bxStep_ = nullptr;
    QLabel* lbMeasures_ = nullptr;
    QCheckBox* chQuotes_ = nullptr;
    Lamp* led_ = nullptr;
    std::array<QPushButton*, kPlayers> players_{};
    QTimer refreshTimer_;
    uint64_t shownChanges_ = ~uint64_t{0};
    QStringList shownSnapshots_;
};

}  // namespace quillmer::gui
