#pragma once
// A small session manager for tests: one UDP socket on the loopback that speaks just
// enough OSC (strings and 32-bit integers) to play the manager's side of the handshake.
// It answers whoever wrote to it last.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quillmer::testing {

class FakeSessionManager {
public:
    using Arg = std::variant<std::string, int>;
    struct Message {
        std::string path;
        std::string types;
        std::vector<std::string> texts;
        std::vector<int> numbers;
    };

    FakeSessionManager() {
        fd_ = ::socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a);
        socklen_t n = sizeof a;
        ::getsockname(fd_, reinterpret_cast<sockaddr*>(&a), &n);
        port_ = ntohs(a.sin_port);
    }
    ~FakeSessionManager() { ::close(fd_); }
    FakeSessionManager(const FakeSessionManager&) = delete;
    FakeSessionManager& operator=(const FakeSessionManager&) = delete;

    std::string url() const { return "osc.udp://127.0.0.1:" + std::to_string(port_) + "/"; }

    // The next message, waiting up to `timeoutMs`; `between` runs every few milliseconds
    // while waiting (the client's poll, in a test where both live on one thread).
    template <class Between>
    std::optional<Message> receive(int timeoutMs, Between&& between) {
        for (int waited = 0; waited <= timeoutMs; waited += kStepMs) {
            between();
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, kStepMs) > 0) return read();
        }
        return std::nullopt;
    }
    std::optional<Message> receive(int timeoutMs) {
        return receive(timeoutMs, [] {});
    }

    void send(const std::string& path, const std::vector<Arg>& args) {
        std::vector<uint8_t> out;
        text(out, path);
        std::string types = ",";
        for (const Arg& a : args) types += std::holds_alternative<int>(a) ? 'i' : 's';
        text(out, types);
        for (const Arg& a : args) {
            if (const int* i = std::get_if<int>(&a)) {
                const auto u = static_cast<uint32_t>(*i);
                for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(u >> shift));
            } else {
                text(out, std::get<std::string>(a));
            }
        }
        ::sendto(fd_, out.data(), out.size(), 0, reinterpret_cast<const sockaddr*>(&client_), sizeof client_);
    }

private:
    static constexpr int kStepMs = 5;

    static void text(std::vector<uint8_t>& out, const std::string& s) {
        out.insert(out.end(), s.begin(), s.end());
        do out.push_back(0);
        while (out.size() % 4 != 0);
    }

    std::optional<Message> read() {
        uint8_t buffer[65536];
        socklen_t n = sizeof client_;
        const ssize_t got = ::recvfrom(fd_, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&client_), &n);
        if (got <= 0) return std::nullopt;
        size_t at = 0;
        const auto size = static_cast<size_t>(got);
        const auto readText = [&] {
            std::string s;
            while (at < size && buffer[at] != 0) s += static_cast<char>(buffer[at++]);
            at = (at + 4) & ~size_t{3};
            return s;
        };
        Message m;
        m.path = readText();
        m.types = readText();
        for (size_t i = 1; i < m.types.size(); ++i) {
            if (m.types[i] == 's') {
                m.texts.push_back(readText());
            } else if (m.types[i] == 'i' && at + 4 <= size) {
                m.numbers.push_back(static_cast<int>(uint32_t{buffer[at]} << 24 | uint32_t{buffer[at + 1]} << 16 |
                                                     uint32_t{buffer[at + 2]} << 8 | buffer[at + 3]));
                at += 4;
            }
        }
        return m;
    }

    int fd_ = -1;
    uint16_t port_ = 0;
    sockaddr_in client_{};
};

}  // namespace quillmer::testing
