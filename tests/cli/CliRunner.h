// Runs the built quillmer-cli with arguments, stderr joined to stdout.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace quillmer::testing {

struct CliResult {
    int status = -1;
    std::string out;
};

inline CliResult runCli(const std::string& arguments) {
    CliResult r;
    FILE* pipe = ::popen((std::string(QUILLMER_CLI) + " " + arguments + " 2>&1").c_str(), "r");
    if (!pipe) return r;
    std::array<char, 4096> buffer{};
    while (size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe)) r.out.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
}

}  // namespace quillmer::testing
