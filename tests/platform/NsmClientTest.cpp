// The session manager's handshake from the client's side, against a fake manager on the
// loopback: announce, open, save, dirty and clean, the window shown and hidden.

#include <gtest/gtest.h>

#include "platform/NsmClient.h"
#include "tests/platform/FakeSessionManager.h"

namespace quillmer {
namespace {

using testing::FakeSessionManager;
using Message = FakeSessionManager::Message;

struct Handshake : ::testing::Test {
    // The next message from the client, polling it meanwhile.
    Message next() {
        auto m = manager.receive(2000, [this] { client.poll(0); });
        EXPECT_TRUE(m.has_value());
        return m.value_or(Message{});
    }
    void settle() {
        for (int i = 0; i < 20; ++i) client.poll(5);
    }
    void announceAndAccept() {
        std::string reason;
        ASSERT_TRUE(client.announce(manager.url(), "Quillmer", "quillmer", reason)) << reason;
        const Message m = next();
        ASSERT_EQ(m.path, "/nsm/server/announce");
        manager.send("/reply", {"/nsm/server/announce", "Hello", "Fake Manager", ":server-control:optional-gui:"});
        settle();
        ASSERT_TRUE(client.accepted());
    }

    FakeSessionManager manager;
    NsmClient client;
};

TEST_F(Handshake, TheAnnouncementNamesUsOurCapabilitiesAndTheApi) {
    std::string reason;
    ASSERT_TRUE(client.announce(manager.url(), "Quillmer", "quillmer", reason)) << reason;
    const Message m = next();
    EXPECT_EQ(m.path, "/nsm/server/announce");
    EXPECT_EQ(m.types, ",sssiii");
    ASSERT_EQ(m.texts.size(), 3u);
    EXPECT_EQ(m.texts[0], "Quillmer");
    EXPECT_NE(m.texts[1].find(":dirty:"), std::string::npos);
    EXPECT_NE(m.texts[1].find(":optional-gui:"), std::string::npos);
    EXPECT_EQ(m.texts[1].find(":switch:"), std::string::npos);  // a new project is a new start
    EXPECT_EQ(m.texts[2], "quillmer");
    ASSERT_EQ(m.numbers.size(), 3u);
    EXPECT_EQ(m.numbers[0], 1);
    EXPECT_EQ(m.numbers[2], static_cast<int>(::getpid()));
    manager.send("/reply", {"/nsm/server/announce", "Hello", "Fake Manager", ":optional-gui:"});
    settle();
    EXPECT_TRUE(client.accepted());
    EXPECT_EQ(client.managerName(), "Fake Manager");
    EXPECT_TRUE(client.managerOffersOptionalGui());
}

TEST_F(Handshake, ARefusalIsKeptWithItsMessage) {
    std::string reason;
    ASSERT_TRUE(client.announce(manager.url(), "Quillmer", "quillmer", reason));
    next();
    manager.send("/error", {"/nsm/server/announce", -2, "Incompatible API"});
    settle();
    EXPECT_FALSE(client.accepted());
    EXPECT_EQ(client.refusal(), "Incompatible API");
}

TEST_F(Handshake, OpenSaveDirtyAndTheWindowInTheOrderAManagerSendsThem) {
    std::vector<std::string> seen;
    NsmClient::Handlers h;
    h.open = [&](const std::string& path, const std::string& display, const std::string& id) {
        seen.push_back("open " + path + " " + display + " " + id);
        client.replyOpen(true, 0, "Opened");
    };
    h.save = [&] {
        seen.push_back("save");
        client.replySave(true, "Saved");
    };
    h.showGui = [&] { seen.push_back("show"); };
    h.hideGui = [&] { seen.push_back("hide"); };
    client.setHandlers(h);
    announceAndAccept();

    manager.send("/nsm/client/open", {"/sessions/live/Quillmer.nABC", "Quillmer", "nABC"});
    Message m = next();
    EXPECT_EQ(m.path, "/reply");
    EXPECT_EQ(m.texts, (std::vector<std::string>{"/nsm/client/open", "Opened"}));

    client.setDirty(true);
    EXPECT_EQ(next().path, "/nsm/client/is_dirty");
    client.setDirty(true);  // no news, no message
    client.setDirty(false);
    EXPECT_EQ(next().path, "/nsm/client/is_clean");

    manager.send("/nsm/client/save", {});
    m = next();
    EXPECT_EQ(m.texts, (std::vector<std::string>{"/nsm/client/save", "Saved"}));

    manager.send("/nsm/client/hide_optional_gui", {});
    manager.send("/nsm/client/show_optional_gui", {});
    settle();
    client.setGuiShown(true);
    EXPECT_EQ(next().path, "/nsm/client/gui_is_shown");
    EXPECT_EQ(seen, (std::vector<std::string>{"open /sessions/live/Quillmer.nABC Quillmer nABC", "save", "hide", "show"}));
}

TEST_F(Handshake, AFailedSaveAndAHandlerThatThrowsAnswerWithErrors) {
    NsmClient::Handlers h;
    h.save = [&] { client.replySave(false, "Unable to save /x/patch.qmp: Permission denied"); };
    h.open = [](const std::string&, const std::string&, const std::string&) { throw std::runtime_error("disk full"); };
    client.setHandlers(h);
    announceAndAccept();
    manager.send("/nsm/client/save", {});
    Message m = next();
    EXPECT_EQ(m.path, "/error");
    ASSERT_EQ(m.texts.size(), 2u);
    EXPECT_EQ(m.texts[0], "/nsm/client/save");
    EXPECT_EQ(m.texts[1], "Unable to save /x/patch.qmp: Permission denied");
    EXPECT_EQ(m.numbers, std::vector<int>{NsmClient::kErrGeneral});
    manager.send("/nsm/client/open", {"/p", "Quillmer", "nX"});
    m = next();
    EXPECT_EQ(m.path, "/error");
    EXPECT_EQ(m.texts.at(1), "disk full");
}

TEST(NsmClientAddress, ABadUrlIsRefusedNamingIt) {
    NsmClient client;
    std::string reason;
    EXPECT_FALSE(client.announce("not a url", "Quillmer", "quillmer", reason));
    EXPECT_NE(reason.find("not a url"), std::string::npos) << reason;
    client.poll(0);  // harmless without a manager
    client.setDirty(true);
}

}  // namespace
}  // namespace quillmer
