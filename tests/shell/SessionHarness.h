#pragma once
// A session in virtual time with the built types, and a scratch folder for files.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "engine/VirtualTimerService.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

namespace quillmer::testing {

struct ScratchDir {
    ScratchDir() {
        std::random_device seed;
        path = std::filesystem::temp_directory_path() / ("quillmer-test-" + std::to_string(seed()));
        std::filesystem::create_directories(path);
    }
    ~ScratchDir() { std::filesystem::remove_all(path); }
    std::string file(const std::string& name) const { return (path / name).string(); }
    std::filesystem::path path;
};

inline std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

struct SessionHarness {
    SessionHarness() : session(timers, builtTypes()) {}

    Module& add(std::string_view type) { return session.engine.New(*typeIdByName(type)); }
    void connect(Module& m, int k, std::string_view output) {
        const int p = session.engine.names.sortedPosition(output);
        session.engine.connectInput(m, k, static_cast<uint16_t>(p < 0 ? 0 : p));
    }
    std::string save(const std::string& path) {
        std::string error;
        return session.SaveModuleFile(path, error) ? std::string() : error;
    }
    std::string load(const std::string& path) {
        std::string error;
        return session.LoadModuleFile(path, error) ? std::string() : error;
    }
    size_t moduleCount() {
        size_t n = 0;
        session.engine.forEachModule([&](Module&) { ++n; });
        return n;
    }

    VirtualTimerService timers;
    Session session;
};

}  // namespace quillmer::testing
