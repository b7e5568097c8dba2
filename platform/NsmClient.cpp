#include "platform/NsmClient.h"

#include "platform/OscArgument.h"

#include <lo/lo.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace quillmer {

namespace {

constexpr int kApiMajor = 1;
constexpr int kApiMinor = 2;
constexpr const char* kCapabilities = ":dirty:optional-gui:message:";

// liblo reports its errors through a callback; ours are told through return values.
void quietErrors(int, const char*, const char*) {}

}  // namespace

struct NsmClient::Osc {
    lo_server server = nullptr;
    lo_address manager = nullptr;

    ~Osc() {
        if (manager) lo_address_free(manager);
        if (server) lo_server_free(server);
    }

    static int onMessage(const char* path, const char* types, lo_arg** argv, int argc, lo_message, void* self) {
        Arguments args;
        for (int i = 0; i < argc; ++i) {
            if (types[i] == LO_STRING) args.texts.push_back(oscText(argv[i]));
            if (types[i] == LO_INT32) args.numbers.push_back(oscValue<int32_t>(argv[i]));
        }
        auto* client = static_cast<NsmClient*>(self);
        try {
            client->dispatch(path, args);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "quillmer: session manager message %s: %s\n", path, e.what());
        } catch (...) {
            std::fprintf(stderr, "quillmer: session manager message %s failed\n", path);
        }
        return 0;
    }
};

NsmClient::NsmClient() = default;
NsmClient::~NsmClient() = default;

std::string NsmClient::managerUrlFromEnvironment() {
    const char* url = std::getenv("NSM_URL");
    return url ? std::string(url) : std::string();
}

bool NsmClient::announce(const std::string& managerUrl, const std::string& appName, const std::string& executable,
                         std::string& reason) {
    auto osc = std::make_unique<Osc>();
    // liblo would tell the console itself about a URL without a protocol.
    if (managerUrl.rfind("osc.", 0) == 0) osc->manager = lo_address_new_from_url(managerUrl.c_str());
    if (!osc->manager) {
        reason = "the session manager's address \"" + managerUrl + "\" (NSM_URL) is not an OSC URL";
        return false;
    }
    osc->server = lo_server_new_with_proto(nullptr, lo_address_get_protocol(osc->manager), quietErrors);
    if (!osc->server) {
        reason = "no OSC port could be opened to answer the session manager at " + managerUrl;
        return false;
    }
    lo_server_add_method(osc->server, nullptr, nullptr, &Osc::onMessage, this);
    osc_ = std::move(osc);
    const int sent = lo_send_from(osc_->manager, osc_->server, LO_TT_IMMEDIATE, "/nsm/server/announce", "sssiii",
                                  appName.c_str(), kCapabilities, executable.c_str(), kApiMajor, kApiMinor,
                                  static_cast<int>(::getpid()));
    if (sent < 0) {
        reason = "the session manager at " + managerUrl + " can't be reached: " +
                 (lo_address_errstr(osc_->manager) ? lo_address_errstr(osc_->manager) : "send failed");
        osc_.reset();
        return false;
    }
    return true;
}

void NsmClient::poll(int timeoutMs) {
    if (!osc_) return;
    int wait = timeoutMs;
    while (lo_server_recv_noblock(osc_->server, wait) > 0) wait = 0;
}

int NsmClient::socketFd() const { return osc_ ? lo_server_get_socket_fd(osc_->server) : -1; }

bool NsmClient::managerOffersOptionalGui() const {
    return managerCapabilities_.find(":optional-gui:") != std::string::npos;
}

void NsmClient::dispatch(const std::string& path, const Arguments& args) {
    const auto& t = args.texts;
    if (path == "/reply" && !t.empty() && t[0] == "/nsm/server/announce") {
        accepted_ = true;
        managerName_ = t.size() > 2 ? t[2] : std::string();
        managerCapabilities_ = t.size() > 3 ? t[3] : std::string();
        return;
    }
    if (path == "/error" && !t.empty() && t[0] == "/nsm/server/announce") {
        refusal_ = t.size() > 1 ? t[1] : std::string("the session manager refused us");
        return;
    }
    if (path == "/nsm/client/open") {
        if (t.size() < 3) return;
        if (!handlers_.open) {
            replyOpen(false, kErrGeneral, "Quillmer can't open a project now");
            return;
        }
        try {
            handlers_.open(t[0], t[1], t[2]);
        } catch (const std::exception& e) {
            replyOpen(false, kErrGeneral, e.what());
        }
    } else if (path == "/nsm/client/save") {
        if (!handlers_.save) {
            replySave(false, "Quillmer has no project open");
            return;
        }
        try {
            handlers_.save();
        } catch (const std::exception& e) {
            replySave(false, e.what());
        }
    } else if (path == "/nsm/client/show_optional_gui") {
        if (handlers_.showGui) handlers_.showGui();
    } else if (path == "/nsm/client/hide_optional_gui") {
        if (handlers_.hideGui) handlers_.hideGui();
    } else if (path == "/nsm/client/session_is_loaded") {
        if (handlers_.sessionLoaded) handlers_.sessionLoaded();
    }
}

void NsmClient::reply(const std::string& path, bool ok, int errorCode, const std::string& message) {
    if (!osc_) return;
    if (ok)
        lo_send_from(osc_->manager, osc_->server, LO_TT_IMMEDIATE, "/reply", "ss", path.c_str(), message.c_str());
    else
        lo_send_from(osc_->manager, osc_->server, LO_TT_IMMEDIATE, "/error", "sis", path.c_str(), errorCode,
                     message.c_str());
}

void NsmClient::replyOpen(bool ok, int errorCode, const std::string& message) {
    reply("/nsm/client/open", ok, errorCode, message);
}

void NsmClient::replySave(bool ok, const std::string& message) { reply("/nsm/client/save", ok, kErrGeneral, message); }

void NsmClient::setDirty(bool dirty) {
    if (!osc_ || dirty_ == static_cast<int>(dirty)) return;
    dirty_ = dirty;
    lo_send_from(osc_->manager, osc_->server, LO_TT_IMMEDIATE, dirty ? "/nsm/client/is_dirty" : "/nsm/client/is_clean",
                 "");
}

void NsmClient::setGuiShown(bool shown) {
    if (!osc_ || guiShown_ == static_cast<int>(shown)) return;
    guiShown_ = shown;
    lo_send_from(osc_->manager, osc_->server, LO_TT_IMMEDIATE,
                 shown ? "/nsm/client/gui_is_shown" : "/nsm/client/gui_is_hidden", "");
}

void NsmClient::sendMessage(int priority, const std::string& text) {
    if (!osc_) return;
    lo_send_from(osc_->manager, osc_->server, LO_TT_IMMEDIATE, "/nsm/client/message", "is", priority, text.c_str());
}

}  // namespace quillmer
