#include "platform/OscLinkTransport.h"

#include "platform/OscArgument.h"

#include <lo/lo.h>
#include <netdb.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <atomic>
#include <cmath>
#include <cstring>
#include <thread>
#include <vector>

namespace quillmer {

namespace {

// One producer, one consumer, no locks.
template <size_t N>
class ValueRing {
public:
    bool push(uint8_t v) {
        const size_t head = head_.load(std::memory_order_relaxed);
        if (head - tail_.load(std::memory_order_acquire) == N) return false;
        slots_[head % N] = v;
        head_.store(head + 1, std::memory_order_release);
        return true;
    }
    bool pop(uint8_t& v) {
        const size_t tail = tail_.load(std::memory_order_relaxed);
        if (tail == head_.load(std::memory_order_acquire)) return false;
        v = slots_[tail % N];
        tail_.store(tail + 1, std::memory_order_release);
        return true;
    }
    void clear() { tail_.store(head_.load()); }

private:
    std::array<uint8_t, N> slots_{};
    std::atomic<size_t> head_{0};
    std::atomic<size_t> tail_{0};
};

// liblo reports a failed bind through a handler without context: it lands here, on the
// thread that opens.
thread_local std::string openError;
void onLoError(int number, const char* message, const char* where) {
    openError = std::string(message ? message : "error") + (where ? std::string(" (") + where + ")" : std::string()) +
                " [" + std::to_string(number) + "]";
}

class OscLinkTransport final : public LinkTransport {
public:
    ~OscLinkTransport() override { close(); }

    bool open(const LinkSettings& settings, std::string& error) override {
        close();
        settings_ = settings;
        if (settings.sendPort != 0 && !checkHost(settings, error)) return false;
        if (settings.listenPort != 0) {
            openError.clear();
            server_ = lo_server_new(std::to_string(settings.listenPort).c_str(), onLoError);
            if (server_ == nullptr) {
                error = "Unable to listen on UDP port " + std::to_string(settings.listenPort) +
                        (openError.empty() ? std::string() : ": " + openError);
                return false;
            }
            lo_server_enable_queue(server_, 0, 1);  // bundles now, whatever their time tag
            lo_server_add_method(server_, nullptr, nullptr, &OscLinkTransport::onMessage, this);
        }
        if (settings.sendPort != 0) target_ = lo_address_new(settings.host.c_str(), std::to_string(settings.sendPort).c_str());
        wake_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        if (wake_ < 0) {
            error = std::string("Unable to start a link: ") + std::strerror(errno);
            close();
            return false;
        }
        stop_ = false;
        thread_ = std::thread([this] { run(); });
        return true;
    }

    void close() override {
        if (thread_.joinable()) {
            stop_ = true;
            wake();
            thread_.join();
        }
        if (wake_ >= 0) ::close(wake_);
        wake_ = -1;
        if (server_ != nullptr) lo_server_free(server_);
        server_ = nullptr;
        if (target_ != nullptr) lo_address_free(target_);
        target_ = nullptr;
        in_.clear();
        out_.clear();
    }

    bool send(uint8_t value) override {
        if (target_ == nullptr) return false;
        if (!out_.push(value)) {
            ++dropped_;
            return false;
        }
        wake();
        return true;
    }

    bool receive(uint8_t& value) override { return in_.pop(value); }

    LinkCounts counts() const override {
        return {received_.load(), sent_.load(), bad_.load(), ignored_.load(), dropped_.load()};
    }

    uint16_t listeningPort() const override {
        return server_ != nullptr ? static_cast<uint16_t>(lo_server_get_port(server_)) : 0;
    }

private:
    static bool checkHost(const LinkSettings& settings, std::string& error) {
        addrinfo hints{};
        hints.ai_family = AF_UNSPEC;
        hints.ai_socktype = SOCK_DGRAM;
        addrinfo* found = nullptr;
        const int rc = getaddrinfo(settings.host.c_str(), std::to_string(settings.sendPort).c_str(), &hints, &found);
        if (found != nullptr) freeaddrinfo(found);
        if (rc != 0) {
            error = "Unknown host " + settings.host + ": " + gai_strerror(rc);
            return false;
        }
        return true;
    }

    void wake() {
        if (wake_ < 0) return;
        const uint64_t one = 1;
        [[maybe_unused]] const ssize_t n = ::write(wake_, &one, sizeof one);
    }

    void run() {
        std::vector<uint8_t> packet(65536);
        const int fd = server_ != nullptr ? lo_server_get_socket_fd(server_) : -1;
        while (!stop_) {
            std::array<pollfd, 2> fds{pollfd{wake_, POLLIN, 0}, pollfd{fd, POLLIN, 0}};
            if (poll(fds.data(), fd >= 0 ? 2 : 1, -1) < 0 && errno != EINTR) break;
            if (fds[0].revents & POLLIN) {
                uint64_t count = 0;
                [[maybe_unused]] const ssize_t n = ::read(wake_, &count, sizeof count);
            }
            sendQueued();
            if (fd >= 0 && (fds[1].revents & POLLIN)) {
                for (;;) {
                    const ssize_t n = ::recv(fd, packet.data(), packet.size(), MSG_DONTWAIT);
                    if (n < 0) break;
                    takePacket(packet.data(), static_cast<size_t>(n));
                }
            }
        }
    }

    void sendQueued() {
        uint8_t value = 0;
        while (out_.pop(value)) {
            lo_message message = lo_message_new();
            lo_message_add_int32(message, value);
            if (lo_send_message(target_, settings_.address.c_str(), message) >= 0) ++sent_;
            lo_message_free(message);
        }
    }

    void takePacket(uint8_t* data, size_t size) {
        if (size == 0 || lo_server_dispatch_data(server_, data, size) < 0) ++bad_;
    }

    static int onMessage(const char* path, const char* types, lo_arg** argv, int argc, lo_message /*message*/,
                         void* user) {
        auto* self = static_cast<OscLinkTransport*>(user);
        if (path == nullptr || self->settings_.address != path) {
            ++self->ignored_;
            return 0;
        }
        double value = 0;
        if (argc < 1 || types == nullptr || !numberOf(types[0], argv[0], value)) {
            ++self->bad_;
            return 0;
        }
        if (self->settings_.unitFloats && (types[0] == LO_FLOAT || types[0] == LO_DOUBLE)) value *= 127.0;
        const auto v = static_cast<uint8_t>(std::lround(std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 127.0)));
        if (self->in_.push(v))
            ++self->received_;
        else
            ++self->dropped_;
        return 0;
    }

    static bool numberOf(char type, const lo_arg* arg, double& value) {
        switch (type) {
            case LO_INT32: value = oscValue<int32_t>(arg); return true;
            case LO_INT64: value = static_cast<double>(oscValue<int64_t>(arg)); return true;
            case LO_FLOAT: value = oscValue<float>(arg); return true;
            case LO_DOUBLE: value = oscValue<double>(arg); return true;
            case LO_TRUE: value = 127; return true;
            case LO_FALSE: value = 0; return true;
            default: return false;
        }
    }

    LinkSettings settings_;
    lo_server server_ = nullptr;
    lo_address target_ = nullptr;
    int wake_ = -1;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    ValueRing<256> in_;
    ValueRing<256> out_;
    std::atomic<uint32_t> received_{0}, sent_{0}, bad_{0}, ignored_{0}, dropped_{0};
};

}  // namespace

std::unique_ptr<LinkTransport> makeOscLinkTransport() { return std::make_unique<OscLinkTransport>(); }

void installOscLinkTransport() { setLinkTransportFactory(&makeOscLinkTransport); }

}  // namespace quillmer
