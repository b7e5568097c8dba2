#pragma once
// A jackd of the test's own with the dummy driver at 48 kHz: no sound hardware, no clash with
// a server the user runs. JACK clients of this process find it by name until it ends.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/RtMidiDeviceProvider.h"

extern char** environ;

namespace quillmer {

class PrivateJackServer {
public:
    // `label` goes into the server's name beside the process id and the period.
    explicit PrivateJackServer(const std::string& label, int period = 256) {
        const std::string jackd = findJackd();
        if (jackd.empty()) return;
        name_ = "quillmer-" + label + "-" + std::to_string(::getpid()) + "-" + std::to_string(period);
        setenv("JACK_DEFAULT_SERVER", name_.c_str(), 1);
        // A client timeout of 5 s: under the sanitizers a client's first cycles are slow, and
        // the default would drop it from the graph.
        std::vector<std::string> args{"jackd", "--no-realtime", "-t", "5000", "-n", name_, "-d", "dummy",
                                      "-r", "48000", "-p", std::to_string(period)};
        std::vector<char*> argv;
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t quiet;
        posix_spawn_file_actions_init(&quiet);
        posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
        if (posix_spawn(&pid_, jackd.c_str(), &quiet, nullptr, argv.data(), environ) != 0) pid_ = 0;
        posix_spawn_file_actions_destroy(&quiet);
        for (int waited = 0; pid_ > 0 && waited < 250 && !(ready_ = apiProblem(MidiPortApi::Jack).empty()); ++waited)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ~PrivateJackServer() {
        if (pid_ > 0) {
            ::kill(pid_, SIGTERM);
            int status = 0;
            ::waitpid(pid_, &status, 0);
        }
        if (!name_.empty()) unsetenv("JACK_DEFAULT_SERVER");
    }
    PrivateJackServer(const PrivateJackServer&) = delete;
    PrivateJackServer& operator=(const PrivateJackServer&) = delete;

    bool installed() const { return !name_.empty(); }
    bool started() const { return pid_ > 0; }
    bool ready() const { return ready_; }
    const std::string& name() const { return name_; }

private:
    static std::string findJackd() {
        const char* path = std::getenv("PATH");
        std::istringstream dirs(path ? path : "/usr/bin:/bin");
        for (std::string dir; std::getline(dirs, dir, ':');)
            if (::access((dir + "/jackd").c_str(), X_OK) == 0) return dir + "/jackd";
        return {};
    }

    std::string name_;
    pid_t pid_ = 0;
    bool ready_ = false;
};

}  // namespace quillmer
