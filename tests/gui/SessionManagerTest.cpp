// The desktop program under a session manager: a fake manager on the loopback opens the
// project, asks for saves, sees the patch go dirty and clean, shows and hides the window,
// and ends the real program with SIGTERM.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <QDir>
#include <QFileInfo>
#include <chrono>
#include <thread>

#include "gui/FileCommands.h"
#include "gui/SessionManagerLink.h"
#include "platform/NsmClient.h"
#include "tests/gui/GuiHarness.h"
#include "tests/platform/FakeSessionManager.h"

namespace quillmer {
namespace {

using testing::FakeSessionManager;
using Message = FakeSessionManager::Message;

struct Managed : ::testing::Test {
    Managed() {
        std::string reason;
        EXPECT_TRUE(client.announce(manager.url(), "Quillmer", "quillmer", reason)) << reason;
        EXPECT_EQ(next().path, "/nsm/server/announce");
        manager.send("/reply", {"/nsm/server/announce", "Welcome", "Fake Manager", ":optional-gui:"});
        for (int i = 0; i < 20 && !client.accepted(); ++i) client.poll(5);
        EXPECT_TRUE(client.accepted());
        link = std::make_unique<gui::SessionManagerLink>(client, *h.program);
    }
    ~Managed() override { link.reset(); }

    // The next message from the program, letting its events run meanwhile.
    Message next() {
        auto m = manager.receive(3000, [] { QApplication::processEvents(); });
        EXPECT_TRUE(m.has_value());
        return m.value_or(Message{});
    }
    // Messages until one with `path` (and, for a reply, its first text): the one found.
    // The paths of those before it are in `passed`.
    Message until(const std::string& path, const std::string& about = {}) {
        passed.clear();
        for (int i = 0; i < 10; ++i) {
            const Message m = next();
            if (m.path == path && (about.empty() || (!m.texts.empty() && m.texts[0] == about))) return m;
            if (m.path.empty()) break;
            passed.push_back(m.path);
        }
        ADD_FAILURE() << "no " << path << " " << about;
        return {};
    }
    Session& session() { return h.program->session(); }
    QString folder() const { return QDir(dir.path()).filePath(QStringLiteral("Quillmer.nTEST")); }
    QString patch() const { return gui::SessionManagerLink::patchPathIn(folder()); }

    std::vector<std::string> passed;
    QTemporaryDir dir;
    testing::GuiHarness h;
    FakeSessionManager manager;
    NsmClient client;
    std::unique_ptr<gui::SessionManagerLink> link;
};

TEST_F(Managed, OpenMakesTheProjectSaveKeepsItAndTheManagerSeesDirtyAndClean) {
    link->open(folder());
    const Message opened = until("/reply", "/nsm/client/open");
    EXPECT_TRUE(QFileInfo(patch()).isFile());  // a new project is saved at once
    {
        auto held = session().engine.lock();
        EXPECT_EQ(session().CurrentFileName, patch().toStdString());
    }

    {
        auto held = session().engine.lock();
        session().engine.New(*typeIdByName("Div"));
        session().SetModified(true);
    }
    until("/nsm/client/is_dirty");

    manager.send("/nsm/client/save", {});
    const Message saved = until("/reply", "/nsm/client/save");
    EXPECT_EQ(saved.texts.at(1), "Saved");
    // Clean before the reply: the manager knows the state when the save is done.
    EXPECT_EQ(passed, std::vector<std::string>{"/nsm/client/is_clean"});

    // What was saved comes back in a program the manager starts again.
    testing::GuiHarness again;
    auto held = again.program->session().engine.lock();
    std::string error;
    ASSERT_TRUE(again.program->session().OpenFile(patch().toStdString(), error)) << error;
    size_t modules = 0;
    again.program->session().engine.forEachModule([&](Module&) { ++modules; });
    EXPECT_EQ(modules, 1u);
    EXPECT_TRUE(h.dialogs.saveQuestions.empty());
    EXPECT_TRUE(h.dialogs.saveDialogs.empty());
}

TEST_F(Managed, TheWindowHidesOnCloseAndAtTheManagersWish) {
    link->open(folder());
    until("/reply", "/nsm/client/open");
    manager.send("/nsm/client/hide_optional_gui", {});
    until("/nsm/client/gui_is_hidden");
    EXPECT_FALSE(h.window().isVisible());
    manager.send("/nsm/client/show_optional_gui", {});
    until("/nsm/client/gui_is_shown");
    EXPECT_TRUE(h.window().isVisible());

    // Closing the window with unsaved changes neither asks nor ends the program.
    {
        auto held = session().engine.lock();
        session().SetModified(true);
    }
    h.window().close();
    testing::processEvents();
    EXPECT_FALSE(h.window().isVisible());
    EXPECT_FALSE(h.program->exitDone());
    EXPECT_TRUE(h.dialogs.saveQuestions.empty());

    // The manager's quit ends it, still without a question.
    link->quit();
    for (int i = 0; i < 40 && !h.program->exitDone(); ++i) {
        h.timers.advanceByMs(50);
        testing::letQtTimersRun();
    }
    EXPECT_TRUE(h.program->exitDone());
    EXPECT_TRUE(h.dialogs.saveQuestions.empty());
}

TEST_F(Managed, NewAndSaveAsUnderAManagerKeepTheSessionsPatch) {
    link->open(folder());
    until("/reply", "/nsm/client/open");
    h.window().files().fileNew();  // no question
    {
        auto held = session().engine.lock();
        EXPECT_EQ(session().CurrentFileName, patch().toStdString());
        EXPECT_TRUE(session().ModifiedMark);
    }
    const QString copy = QDir(dir.path()).filePath(QStringLiteral("copy.qmj"));
    h.dialogs.saveAsAnswers.push_back(copy);
    EXPECT_TRUE(h.window().files().fileSaveAs());
    EXPECT_TRUE(QFileInfo(copy).isFile());
    auto held = session().engine.lock();
    EXPECT_EQ(session().CurrentFileName, patch().toStdString());
    EXPECT_TRUE(session().ModifiedMark);  // the session's own file still waits for its save
    EXPECT_TRUE(h.dialogs.saveQuestions.empty());
    EXPECT_EQ(h.dialogs.saveDialogs.at(0).text, QString::fromLatin1(gui::FileCommands::kSaveFilter));
}

TEST_F(Managed, APatchThatDoesntLoadIsReportedAndNeverOverwritten) {
    QDir().mkpath(folder());
    {
        QFile broken(patch());
        ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
        broken.write("not a patch at all");
    }
    link->open(folder());
    const Message refused = until("/error", "/nsm/client/open");
    EXPECT_EQ(refused.numbers, std::vector<int>{NsmClient::kErrBadProject});
    manager.send("/nsm/client/save", {});
    until("/error", "/nsm/client/save");
    QFile kept(patch());
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), QByteArray("not a patch at all"));
}

#ifdef QUILLMER_PROGRAM
TEST(ManagedProgram, TheRealProgramJoinsASessionAndEndsOnSigterm) {
    QTemporaryDir dir;
    FakeSessionManager manager;
    const QString folder = QDir(dir.path()).filePath(QStringLiteral("Quillmer.nREAL"));
    const std::string home = dir.path().toStdString();
    std::vector<std::string> env = {"NSM_URL=" + manager.url(), "QT_QPA_PLATFORM=offscreen",
                                    "XDG_CONFIG_HOME=" + home, "XDG_DATA_HOME=" + home, "HOME=" + home};
    if (const char* path = std::getenv("PATH")) env.push_back(std::string("PATH=") + path);
    std::vector<char*> envp;
    for (std::string& e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    char name[] = "quillmer";
    char noMidi[] = "-m";
    char* argv[] = {name, noMidi, nullptr};
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        ::execve(QUILLMER_PROGRAM, argv, envp.data());
        ::_exit(127);
    }
    const auto wait = [&](const std::string& path, const std::string& about = {}) {
        for (int i = 0; i < 12; ++i) {
            const auto m = manager.receive(30000);
            if (!m) break;
            if (m->path == path && (about.empty() || (!m->texts.empty() && m->texts[0] == about))) return *m;
        }
        ADD_FAILURE() << "no " << path << " " << about;
        return Message{};
    };
    const Message announce = wait("/nsm/server/announce");
    EXPECT_EQ(announce.texts.at(0), "Quillmer");
    manager.send("/reply", {"/nsm/server/announce", "Welcome", "Fake Manager", ":optional-gui:"});
    manager.send("/nsm/client/open", {folder.toStdString(), "Quillmer", "nREAL"});
    wait("/reply", "/nsm/client/open");
    EXPECT_TRUE(QFileInfo(gui::SessionManagerLink::patchPathIn(folder)).isFile());
    manager.send("/nsm/client/save", {});
    wait("/reply", "/nsm/client/save");

    ::kill(pid, SIGTERM);
    int status = -1;
    for (int i = 0; i < 600 && ::waitpid(pid, &status, WNOHANG) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (status == -1) ::kill(pid, SIGKILL);
    ASSERT_TRUE(WIFEXITED(status)) << "the program did not end on SIGTERM";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
#endif

}  // namespace
}  // namespace quillmer
