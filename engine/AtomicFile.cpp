#include "engine/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

namespace quillmer {

std::string saveError(const std::string& path, const std::string& reason) {
    return "Unable to save " + path + ": " + reason;
}

AtomicFile::~AtomicFile() { discard(); }

bool AtomicFile::create(std::string& error) {
    discard();
    // Same folder as the target, so the final rename never crosses file systems.
    std::string pattern = target_ + ".XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int fd = mkstemp(name.data());
    if (fd < 0) {
        error = saveError(target_, std::strerror(errno));
        return false;
    }
    // mkstemp makes it 0600; a saved file gets the usual mode.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
    close(fd);
    temp_ = name.data();
    return true;
}

bool AtomicFile::commit(std::string& error) {
    if (temp_.empty()) {
        error = saveError(target_, "nothing was written");
        return false;
    }
    const int fd = open(temp_.c_str(), O_RDONLY);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
    if (std::rename(temp_.c_str(), target_.c_str()) != 0) {
        error = saveError(target_, std::strerror(errno));
        discard();
        return false;
    }
    temp_.clear();
    return true;
}

void AtomicFile::discard() {
    if (temp_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove(temp_, ignored);
    temp_.clear();
}

}  // namespace quillmer
