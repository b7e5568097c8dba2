#pragma once
// The file commands of the main window: New, Open, Save, Save As, opening a named file (a
// drop, a recent file, the command line) and the one question they all ask about unsaved
// changes. Each holds the engine lock only for its own short steps, never across a dialog.

#include <QObject>
#include <QString>
#include <string>

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
    // Open and Save As offer the text form (.qmj) too.
    static constexpr const char* kOpenFilter = "Quillmer Modules (*.qmp *.qmj);;Quillmer Patch Text (*.qmj)";
    static constexpr const char* kSaveFilter = "Quillmer Modules (*.qmp);;Quillmer Patch Text (*.qmj)";
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

    // Under a session manager the patch lives at `path`, which the manager decides: no
    // question about unsaved changes, Save always writes there, Save As writes a copy, and
    // Open and New replace the content of the session's patch. Empty: not managed.
    void setManagedPath(const QString& path) { managedPath_ = path; }
    const QString& managedPath() const { return managedPath_; }
    // Opens the managed patch, or makes it (an empty patch, saved at once) where there is
    // none. False with `error` when a file there doesn't load.
    bool openManaged(std::string& error);
    // Saves the managed patch without a question. False with `error`.
    bool saveManaged(std::string& error);

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
    bool saveCopy(const QString& path);
    // After New or Open under a manager: the content is the session's, and not yet saved.
    void keepManagedName();

    Session& session_;
    UserDialogs& dialogs_;
    RecentFiles& recent_;
    ProgramSettings& settings_;
    int pauseDepth_ = 0;
    QString managedPath_;
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
