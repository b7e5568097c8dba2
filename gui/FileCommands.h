#pragma once
// The file commands of the main window: New, Open, Save, Save As, opening a named file (a
// drop, a recent file, the command line) and the one question they all ask about unsaved
// changes. Each holds the engine lock only for its own short steps, never across a dialog.

#include <QObject>
#include <QString>

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class RecentFiles;
class UserDialogs;
struct ProgramSettings;

class FileCommands : public QObject {
    Q_OBJECT
public:
    static constexpr const char* kFilter = "Quillmer Modules (*.qmp)";
    static constexpr const char* kUnnamed = "Unnamed.qmp";

    FileCommands(Session& session, UserDialogs& dialogs, RecentFiles& recent, ProgramSettings& settings,
                 QObject* parent = nullptr);

    // PromptSaveChanges: true to go on, false when the user cancelled (or a save failed).
    bool promptSaveChanges(bool canCancel);
    void fileNew();
    void fileOpen();
    bool fileSave();
    bool fileSaveAs();
    // OpenFile: loads `path` with no dialog and no question; a missing file does nothing.
    void openFile(const QString& path);
    // A file the user pointed at (a drop, a recent file): asks about changes, then OpenFile.
    void openChosenFile(const QString& path);

    // StopTimersMIDI and StartTimersMIDI, nested: only the outermost pair acts.
    void pauseTimers();
    void resumeTimers();

signals:
    // The patch, its name or its saved state changed: captions and views need a new look.
    void patchReplaced();
    void recentFilesChanged();

private:
    QString startFolder() const;
    void remember(const QString& path);
    bool saveTo(const QString& path);
    void load(const QString& path);
    bool offerToStoreSnapshot();

    Session& session_;
    UserDialogs& dialogs_;
    RecentFiles& recent_;
    ProgramSettings& settings_;
    int pauseDepth_ = 0;
};

// Pauses the timers for as long as it lives. Take it without the engine lock held.
class TimersPaused {
public:
    explicit TimersPaused(FileCommands& commands) : commands_(commands) { commands_.pauseTimers(); }
    ~TimersPaused() { commands_.resumeTimers(); }
    TimersPaused(const TimersPaused&) = delete;
    TimersPaused& operator=(const TimersPaused&) = delete;

private:
    FileCommands& commands_;
};

}  // namespace quillmer::gui
