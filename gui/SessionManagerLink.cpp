#include "gui/SessionManagerLink.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QCloseEvent>
#include <QDir>
#include <QEvent>

#include "gui/FileCommands.h"
#include "gui/MainWindow.h"
#include "gui/Program.h"
#include "platform/NsmClient.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {

constexpr int kDirtyPollMs = 250;
int terminationPipe[2] = {-1, -1};

void onTermination(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t n = ::write(terminationPipe[1], &byte, 1);
}

}  // namespace

SessionManagerLink::SessionManagerLink(NsmClient& client, Program& program, QObject* parent)
    : QObject(parent), client_(client), program_(program) {
    NsmClient::Handlers handlers;
    handlers.open = [this](const std::string&, const std::string&, const std::string&) {
        // We don't offer to switch projects: the manager starts us again for another.
        client_.replyOpen(false, NsmClient::kErrNotNow, "Quillmer opens another project when it is started again");
    };
    handlers.save = [this] { save(); };
    handlers.showGui = [this] {
        program_.mainWindow().show();
        program_.mainWindow().raise();
    };
    handlers.hideGui = [this] { program_.mainWindow().hide(); };
    client_.setHandlers(handlers);

    if (const int fd = client_.socketFd(); fd >= 0) {
        incoming_ = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
        connect(incoming_.get(), &QSocketNotifier::activated, this, [this] { client_.poll(0); });
    }
    program_.mainWindow().installEventFilter(this);
    connect(&dirtyPoll_, &QTimer::timeout, this, &SessionManagerLink::reportDirty);
    dirtyPoll_.start(kDirtyPollMs);
}

SessionManagerLink::~SessionManagerLink() {
    program_.mainWindow().removeEventFilter(this);
}

QString SessionManagerLink::patchPathIn(const QString& folder) {
    return QDir(folder).filePath(QString::fromLatin1(kPatchName));
}

void SessionManagerLink::open(const QString& folder) {
    if (!QDir().mkpath(folder)) {
        client_.replyOpen(false, NsmClient::kErrCreateFailed,
                          "Quillmer can't make the project folder " + folder.toStdString());
        return;
    }
    FileCommands& files = program_.mainWindow().files();
    files.setManagedPath(patchPathIn(folder));
    std::string error;
    if (!files.openManaged(error)) {
        // A patch that doesn't load is never overwritten by a save of ours.
        files.setManagedPath(QString());
        client_.replyOpen(false, NsmClient::kErrBadProject, error);
        return;
    }
    opened_ = true;
    reportDirty();
    client_.setGuiShown(program_.mainWindow().isVisible());
    client_.replyOpen(true, 0, "Opened " + patchPathIn(folder).toStdString());
}

void SessionManagerLink::save() {
    if (!opened_) {
        client_.replySave(false, "Quillmer has no session patch open");
        return;
    }
    std::string error;
    const bool saved = program_.mainWindow().files().saveManaged(error);
    reportDirty();
    client_.replySave(saved, saved ? "Saved" : error);
}

void SessionManagerLink::reportDirty() {
    if (!opened_) return;
    bool modified = false;
    {
        Session& session = program_.session();
        auto held = session.engine.lock();
        modified = session.ModifiedMark;
    }
    client_.setDirty(modified);
}

void SessionManagerLink::quit() {
    if (quitting_) return;
    quitting_ = true;
    dirtyPoll_.stop();
    program_.mainWindow().close();
}

void SessionManagerLink::quitOnTermination() {
    if (terminationPipe[0] < 0 && ::pipe2(terminationPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    struct sigaction action {};
    action.sa_handler = onTermination;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    termination_ = std::make_unique<QSocketNotifier>(terminationPipe[0], QSocketNotifier::Read);
    connect(termination_.get(), &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(terminationPipe[0], &byte, 1) > 0) {
        }
        quit();
    });
}

bool SessionManagerLink::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &program_.mainWindow()) {
        switch (event->type()) {
            case QEvent::Close:
                // The window goes; the program stays in the session until the manager ends it.
                if (!quitting_ && client_.managerOffersOptionalGui()) {
                    event->ignore();
                    program_.mainWindow().hide();
                    return true;
                }
                break;
            case QEvent::Show: client_.setGuiShown(true); break;
            case QEvent::Hide: client_.setGuiShown(false); break;
            default: break;
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quillmer::gui
