#include "engine/AtomicFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "engine/RegularFile.h"

namespace quillmer {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxLinks = 40;            // as the kernel's own limit on a path
constexpr size_t kTempNameRoom = 200;    // of the target's name in a temporary name
constexpr const char* kTempMark = ".quillmer-";
constexpr size_t kTempRandom = 6;        // the XXXXXX of mkstemp

std::string folderOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Follows symbolic links at the end of `path`; false with `reason` for a loop.
bool followLinks(const std::string& path, std::string& resolved, std::string& reason) {
    resolved = path;
    for (int hop = 0; hop < kMaxLinks; ++hop) {
        struct stat st {};
        if (lstat(resolved.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return true;
        std::vector<char> buffer(static_cast<size_t>(st.st_size > 0 ? st.st_size : 255) + 2);
        const ssize_t n = readlink(resolved.c_str(), buffer.data(), buffer.size() - 1);
        if (n < 0) {
            reason = std::strerror(errno);
            return false;
        }
        const std::string link(buffer.data(), static_cast<size_t>(n));
        resolved = !link.empty() && link[0] == '/' ? link : folderOf(resolved) + "/" + link;
    }
    reason = std::strerror(ELOOP);
    return false;
}

bool isOurTemp(const std::string& entry, const std::string& prefix) {
    if (entry.size() != prefix.size() + kTempRandom || entry.compare(0, prefix.size(), prefix) != 0) return false;
    for (size_t i = prefix.size(); i < entry.size(); ++i) {
        const char c = entry[i];
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))) return false;
    }
    return true;
}

// Removes temporary files that a killed save of the same target left behind.
void removeStaleTemps(const std::string& resolved) {
    const std::string folder = folderOf(resolved);
    const std::string prefix = AtomicFile::tempPrefix(resolved);
    DIR* dir = opendir(folder.c_str());
    if (!dir) return;
    std::vector<std::string> stale;
    while (const dirent* e = readdir(dir)) {
        const std::string entry = e->d_name;
        if (isOurTemp(entry, prefix)) stale.push_back(folder + "/" + entry);
    }
    closedir(dir);
    for (const std::string& path : stale) {
        struct stat st {};
        if (lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode)) unlink(path.c_str());
    }
}

// Copies the whole of `from` over the content of `to`, in place, and syncs it.
bool copyInPlace(const std::string& from, const std::string& to, std::string& reason) {
    const int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) {
        reason = std::strerror(errno);
        return false;
    }
    const int out = open(to.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (out < 0) {
        reason = std::strerror(errno);
        close(in);
        return false;
    }
    std::vector<char> buffer(size_t{1} << 16);
    off_t size = 0;
    bool ok = true;
    while (ok) {
        const ssize_t n = read(in, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            ok = n == 0;
            break;
        }
        for (ssize_t done = 0; ok && done < n;) {
            const ssize_t w = write(out, buffer.data() + done, static_cast<size_t>(n - done));
            if (w < 0 && errno == EINTR) continue;
            ok = w > 0;
            if (ok) done += w;
        }
        size += n;
    }
    ok = ok && ftruncate(out, size) == 0 && fsync(out) == 0;
    if (!ok) reason = std::strerror(errno != 0 ? errno : EIO);
    close(in);
    if (close(out) != 0 && ok) {
        reason = std::strerror(errno);
        ok = false;
    }
    return ok;
}

}  // namespace

std::string saveError(const std::string& path, const std::string& reason) {
    return "Unable to save " + path + ": " + reason;
}

std::string AtomicFile::tempPrefix(const std::string& resolvedTarget) {
    // Built step by step: GCC 12 at -O3 sees a false overlap in the chained form.
    std::string prefix = ".";
    prefix += nameOf(resolvedTarget).substr(0, kTempNameRoom);
    prefix += kTempMark;
    return prefix;
}

AtomicFile::~AtomicFile() { discard(); }

bool AtomicFile::create(std::string& error) {
    discard();
    std::string reason;
    if (!followLinks(target_, resolved_, reason)) {
        error = saveError(target_, reason);
        return false;
    }
    struct stat st {};
    exists_ = stat(resolved_.c_str(), &st) == 0;
    linked_ = false;
    mode_t mode = 0;
    if (exists_) {
        if (!S_ISREG(st.st_mode)) {
            error = saveError(target_, notRegularReason(st.st_mode));
            return false;
        }
        // Checked by its mode bits, not access(): root may write anything, but a file its
        // user made read-only stays as it is.
        if ((st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(resolved_.c_str(), W_OK) != 0) {
            error = saveError(target_, "the file is read-only");
            return false;
        }
        mode = st.st_mode & 07777;
        linked_ = st.st_nlink > 1;
    } else if (errno != ENOENT) {
        error = saveError(target_, std::strerror(errno));
        return false;
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        mode = 0666 & ~mask;
    }

    removeStaleTemps(resolved_);
    // Same folder as the file replaced, so the final rename never crosses file systems.
    const std::string pattern = folderOf(resolved_) + "/" + tempPrefix(resolved_) + std::string(kTempRandom, 'X');
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int fd = mkstemp(name.data());
    if (fd < 0) {
        error = saveError(target_, std::strerror(errno));
        return false;
    }
    // mkstemp makes it 0600: the new file gets the old one's mode, or the usual one.
    if (exists_ && fchown(fd, st.st_uid, st.st_gid) != 0) {
        // Only the owner of the old file changes: the content is what matters.
    }
    fchmod(fd, mode);
    close(fd);
    temp_ = name.data();
    return true;
}

bool AtomicFile::commit(std::string& error) {
    if (temp_.empty()) {
        error = saveError(target_, "nothing was written");
        return false;
    }
    const int fd = open(temp_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || fsync(fd) != 0) {
        error = saveError(target_, std::strerror(errno));
        if (fd >= 0) close(fd);
        discard();
        return false;
    }
    close(fd);
    if (linked_) {
        std::string reason;
        const bool copied = copyInPlace(temp_, resolved_, reason);
        if (!copied) error = saveError(target_, reason);
        discard();
        return copied;
    }
    if (std::rename(temp_.c_str(), resolved_.c_str()) != 0) {
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
    fs::remove(temp_, ignored);
    temp_.clear();
}

}  // namespace quillmer
