#pragma once
// Quillmer under a session manager: the manager's open, save, show and hide reach the
// program, and the patch's unsaved state and the window's reach the manager. The patch is
// "patch.qmp" in the folder the manager gives; it is saved only when the manager says so
// (or the user does), and nothing asks about unsaved changes. Closing the window hides it
// when the manager can show it again; the manager ends the program with SIGTERM.

#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <memory>

namespace quillmer {
class NsmClient;
}

namespace quillmer::gui {

class Program;

class SessionManagerLink : public QObject {
    Q_OBJECT
public:
    static constexpr const char* kPatchName = "patch.qmp";

    // `client` has announced us and been accepted; it outlives the link.
    SessionManagerLink(NsmClient& client, Program& program, QObject* parent = nullptr);
    ~SessionManagerLink() override;

    // The patch of a project folder the manager names.
    static QString patchPathIn(const QString& folder);
    // Opens the session's patch in `folder` (made where missing) and answers the manager.
    void open(const QString& folder);
    // Ends the program at the manager's wish: no questions.
    void quit();
    // Sends is_dirty / is_clean when the patch's saved state changed (also on a timer).
    void reportDirty();

    // SIGTERM, from a manager or anyone, ends the program through quit().
    void quitOnTermination();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void save();
    NsmClient& client_;
    Program& program_;
    std::unique_ptr<QSocketNotifier> incoming_;
    std::unique_ptr<QSocketNotifier> termination_;
    QTimer dirtyPoll_;
    bool opened_ = false;
    bool quitting_ = false;
};

}  // namespace quillmer::gui
