#include "gui/FileCommands.h"

#include <QFileInfo>

#include "gui/FormulaEditor.h"
#include "gui/ProgramSettings.h"
#include "gui/RecentFiles.h"
#include "gui/UserDialogs.h"
#include "shell/EditCommands.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
const QString kProduct = QStringLiteral("Quillmer");
QString openFilter() { return QString::fromLatin1(FileCommands::kOpenFilter); }
QString saveFilter() { return QString::fromLatin1(FileCommands::kSaveFilter); }
}  // namespace

FileCommands::FileCommands(Session& session, UserDialogs& dialogs, RecentFiles& recent, ProgramSettings& settings,
                           QObject* parent)
    : QObject(parent), session_(session), dialogs_(dialogs), recent_(recent), settings_(settings) {}

void FileCommands::pauseTimers() {
    if (pauseDepth_++ > 0) return;
    auto held = session_.engine.lock();
    session_.engine.StopTimers();
    session_.engine.ports.closeInputs();
}

void FileCommands::resumeTimers() {
    if (--pauseDepth_ > 0) return;
    auto held = session_.engine.lock();
    session_.engine.ports.openInputs();
    session_.engine.StartTimers();
}

bool FileCommands::promptSaveChanges(bool canCancel) {
    if (!managedPath_.isEmpty()) return true;  // the manager's save keeps the session
    QString name;
    {
        auto held = session_.engine.lock();
        if (!session_.ModifiedMark) return true;
        name = QString::fromStdString(session_.CurrentFileName);
    }
    name = name.isEmpty() ? QString::fromLatin1(kUnnamed) : QFileInfo(name).fileName();
    switch (dialogs_.askSaveChanges(name + QStringLiteral(" has been changed.  Save it now?"), canCancel)) {
        case SaveAnswer::Cancel: return false;
        case SaveAnswer::No: return true;
        case SaveAnswer::Yes: break;
    }
    // A save that didn't happen (its dialog cancelled, or it failed) keeps the patch open:
    // nothing the user wanted kept is thrown away. At a session's end there is no choice.
    return fileSave() || !canCancel;
}

void FileCommands::fileNew() {
    if (!promptSaveChanges(true)) return;
    {
        auto held = session_.engine.lock();
        session_.engine.ports.closeInputs();
        session_.newPatch();
        session_.engine.ports.openInputs();
    }
    keepManagedName();
    emit patchReplaced();
}

void FileCommands::fileOpen() {
    TimersPaused paused(*this);
    if (!promptSaveChanges(true)) return;
    const QString path = dialogs_.openFileName(QStringLiteral("Open Module File"), startFolder(), openFilter());
    if (path.isEmpty()) return;
    settings_.currentDir = QFileInfo(path).absolutePath();
    load(path);
}

bool FileCommands::fileSave() {
    QString path;
    {
        auto held = session_.engine.lock();
        path = QString::fromStdString(session_.CurrentFileName);
    }
    if (path.isEmpty()) return fileSaveAs();
    return saveTo(path);
}

bool FileCommands::fileSaveAs() {
    TimersPaused paused(*this);
    const QString path = dialogs_.saveFileName(QStringLiteral("Save Module File"), startFolder(), saveFilter());
    if (path.isEmpty()) return false;
    if (!managedPath_.isEmpty()) return saveCopy(path);
    remember(path);
    {
        auto held = session_.engine.lock();
        session_.CurrentFileName = path.toStdString();
    }
    return saveTo(path);
}

bool FileCommands::saveTo(const QString& path) {
    if (!offerToStoreSnapshot()) return false;
    bool saved = false;
    std::string error;
    {
        TimersPaused paused(*this);
        auto held = session_.engine.lock();
        saved = session_.SaveModuleFile(path.toStdString(), error);
    }
    emit patchReplaced();
    if (!saved) dialogs_.critical(kProduct, QString::fromStdString(error));
    return saved;
}

// A save keeps the live settings in the autosave slot and then recalls the current
// snapshot; edits made to it since it was stored would only be in the autosave then.
bool FileCommands::offerToStoreSnapshot() {
    QString name;
    {
        auto held = session_.engine.lock();
        const Engine& e = session_.engine;
        if (!session_.snapshots.liveEdited || e.SnapshotCount == 0 || e.CurrentSnapshot == 0) return true;
        name = QString::fromStdString(session_.snapshots.SnapshotNames[static_cast<size_t>(e.CurrentSnapshot)]);
    }
    switch (dialogs_.askSaveChanges(QStringLiteral("The settings of snapshot \"") + name +
                                        QStringLiteral("\" have been changed.  Store them in it before saving?"),
                                    true)) {
        case SaveAnswer::Cancel: return false;
        case SaveAnswer::No: return true;
        case SaveAnswer::Yes: break;
    }
    auto held = session_.engine.lock();
    storeSnapshot(session_, false);
    return true;
}

bool FileCommands::saveCopy(const QString& path) {
    bool saved = false;
    std::string error;
    {
        TimersPaused paused(*this);
        auto held = session_.engine.lock();
        const bool changed = session_.ModifiedMark;
        saved = session_.SaveModuleFile(path.toStdString(), error);
        if (changed) session_.SetModified(true);  // the session's own file still waits for its save
    }
    emit patchReplaced();
    if (!saved) dialogs_.critical(kProduct, QString::fromStdString(error));
    return saved;
}

void FileCommands::keepManagedName() {
    if (managedPath_.isEmpty()) return;
    auto held = session_.engine.lock();
    if (session_.CurrentFileName == managedPath_.toStdString()) return;
    session_.CurrentFileName = managedPath_.toStdString();
    session_.SetModified(true);
}

bool FileCommands::openManaged(std::string& error) {
    const std::string path = managedPath_.toStdString();
    bool ok = false;
    if (QFileInfo::exists(managedPath_)) {
        auto held = session_.engine.lock();
        session_.engine.ports.closeInputs();
        ok = session_.OpenFile(path, error);
        if (!ok && !session_.loadProblem.empty()) error += " (" + session_.loadProblem + ")";
        session_.engine.ports.openInputs();
    } else {
        {
            auto held = session_.engine.lock();
            session_.engine.ports.closeInputs();
            session_.newPatch();
            session_.CurrentFileName = path;
            session_.engine.ports.openInputs();
        }
        ok = saveManaged(error);
    }
    emit patchReplaced();
    return ok;
}

bool FileCommands::saveManaged(std::string& error) {
    bool saved = false;
    {
        TimersPaused paused(*this);
        auto held = session_.engine.lock();
        session_.CurrentFileName = managedPath_.toStdString();
        saved = session_.SaveModuleFile(session_.CurrentFileName, error);
    }
    emit patchReplaced();
    return saved;
}

void FileCommands::openFile(const QString& path) {
    if (!QFileInfo(path).isFile()) return;
    load(path);
}

// The patch is replaced only by a file that loads whole; a file that doesn't leaves the open
// patch, its name and its saved state as they were.
void FileCommands::load(const QString& path) {
    bool loaded = false;
    std::string error;
    std::string problem;
    {
        auto held = session_.engine.lock();
        session_.engine.ports.closeInputs();
        loaded = session_.OpenFile(path.toStdString(), error);
        problem = session_.loadProblem;
        session_.engine.ports.openInputs();
    }
    if (loaded) {
        remember(path);
        keepManagedName();
    }
    emit patchReplaced();
    if (loaded) tellUserFunctionProblem(session_, dialogs_);
    if (!loaded) {
        QString text = QString::fromStdString(error);
        if (!problem.empty()) text += QStringLiteral("\n\n") + QString::fromStdString(problem);
        dialogs_.critical(kProduct, text);
    }
}

void FileCommands::openChosenFile(const QString& chosen) {
    const QString path = chosen;  // a copy: the recent list it may come from changes below
    if (!QFileInfo(path).isFile()) return;
    if (!promptSaveChanges(true)) return;
    openFile(path);
}

QString FileCommands::startFolder() const {
    QString current;
    {
        auto held = session_.engine.lock();
        current = QString::fromStdString(session_.CurrentFileName);
    }
    if (!current.isEmpty()) return QFileInfo(current).absolutePath();
    return settings_.currentDir.isEmpty() ? settings_.defaultDir : settings_.currentDir;
}

void FileCommands::remember(const QString& path) {
    recent_.add(path);
    settings_.currentDir = QFileInfo(path).absolutePath();
    emit recentFilesChanged();
}

}  // namespace quillmer::gui
