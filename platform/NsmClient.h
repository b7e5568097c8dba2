#pragma once
// A client of a session manager (the NSM protocol over OSC, UDP). The manager's address
// comes from NSM_URL; we announce ourselves, and the manager tells us where to open our
// patch, when to save it, and when to show or hide the window. We tell it whether the patch
// has unsaved changes and whether the window shows. Quitting is the manager's SIGTERM.
//
// Single-threaded: the owner calls poll() (or watches socketFd()) and every handler runs
// inside poll(). A handler that throws is caught there; the manager gets an error reply.

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillmer {

class NsmClient {
public:
    // Error codes of the protocol's /error replies.
    static constexpr int kErrGeneral = -1;
    static constexpr int kErrNoSuchFile = -5;
    static constexpr int kErrNotNow = -8;
    static constexpr int kErrBadProject = -9;
    static constexpr int kErrCreateFailed = -10;

    struct Handlers {
        // Open (or create) the project under `path`; reply with replyOpen.
        std::function<void(const std::string& path, const std::string& displayName, const std::string& clientId)> open;
        // Save it; reply with replySave.
        std::function<void()> save;
        std::function<void()> showGui;
        std::function<void()> hideGui;
        std::function<void()> sessionLoaded;
    };

    NsmClient();
    ~NsmClient();
    NsmClient(const NsmClient&) = delete;
    NsmClient& operator=(const NsmClient&) = delete;

    // NSM_URL, or empty when no manager started us.
    static std::string managerUrlFromEnvironment();

    void setHandlers(Handlers handlers) { handlers_ = std::move(handlers); }
    // Opens our own OSC port and sends the announcement. False with `reason` naming the URL.
    bool announce(const std::string& managerUrl, const std::string& appName, const std::string& executable,
                  std::string& reason);
    // Handles every message that has arrived, waiting up to `timeoutMs` for the first.
    void poll(int timeoutMs = 0);
    // The socket to watch for incoming messages; -1 before announce.
    int socketFd() const;

    // The manager accepted the announcement / refused it (with its message).
    bool accepted() const { return accepted_; }
    const std::string& refusal() const { return refusal_; }
    const std::string& managerName() const { return managerName_; }
    bool managerOffersOptionalGui() const;

    void replyOpen(bool ok, int errorCode, const std::string& message);
    void replySave(bool ok, const std::string& message);
    // Tells the manager only when the state changes.
    void setDirty(bool dirty);
    void setGuiShown(bool shown);
    // A one-line status for the manager's window.
    void sendMessage(int priority, const std::string& text);

private:
    struct Osc;  // the liblo server and the manager's address
    // A message's text and whole-number arguments, each in order.
    struct Arguments {
        std::vector<std::string> texts;
        std::vector<int> numbers;
    };
    void dispatch(const std::string& path, const Arguments& args);
    void reply(const std::string& path, bool ok, int errorCode, const std::string& message);

    std::unique_ptr<Osc> osc_;
    Handlers handlers_;
    bool accepted_ = false;
    std::string refusal_;
    std::string managerName_;
    std::string managerCapabilities_;
    int dirty_ = -1;  // unknown until first told
    int guiShown_ = -1;
};

}  // namespace quillmer
