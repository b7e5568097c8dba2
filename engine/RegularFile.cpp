#include "engine/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace quillmer {

std::string notRegularReason(unsigned mode) {
    if (S_ISREG(mode)) return {};
    if (S_ISDIR(mode)) return "it is a folder, not a file";
    if (S_ISFIFO(mode)) return "it is a pipe, not a file";
    if (S_ISCHR(mode) || S_ISBLK(mode)) return "it is a device, not a file";
    if (S_ISSOCK(mode)) return "it is a socket, not a file";
    return "it is not a regular file";
}

RegularFile::~RegularFile() { close(); }

void RegularFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    size_ = 0;
}

bool RegularFile::open(const std::string& path, std::string& reason) {
    close();
    // O_NONBLOCK: opening a FIFO with no writer would otherwise wait for one.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        reason = std::strerror(errno);
        return false;
    }
    struct stat st {};
    if (fstat(fd, &st) != 0) {
        reason = std::strerror(errno);
        ::close(fd);
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        reason = notRegularReason(st.st_mode);
        ::close(fd);
        return false;
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    fd_ = fd;
    size_ = static_cast<uint64_t>(st.st_size);
    return true;
}

namespace {

// Reads up to `limit` bytes at `offset` (or at the file position when offset < 0).
bool readInto(int fd, int64_t offset, size_t limit, std::vector<uint8_t>& bytes, std::string& reason) {
    constexpr size_t kChunk = size_t{1} << 20;
    size_t taken = 0;
    while (taken < limit) {
        const size_t want = std::min(kChunk, limit - taken);
        const size_t at = bytes.size();
        bytes.resize(at + want);
        const ssize_t n = offset < 0 ? ::read(fd, bytes.data() + at, want)
                                     : ::pread(fd, bytes.data() + at, want, static_cast<off_t>(offset) + static_cast<off_t>(taken));
        if (n < 0) {
            bytes.resize(at);
            if (errno == EINTR) continue;
            reason = std::strerror(errno);
            return false;
        }
        bytes.resize(at + static_cast<size_t>(n));
        if (n == 0) break;
        taken += static_cast<size_t>(n);
    }
    return true;
}

}  // namespace

bool RegularFile::read(size_t limit, std::vector<uint8_t>& bytes, std::string& reason) {
    if (fd_ < 0) {
        reason = "the file is not open";
        return false;
    }
    return readInto(fd_, -1, limit, bytes, reason);
}

bool RegularFile::readAt(uint64_t offset, size_t limit, std::vector<uint8_t>& bytes, std::string& reason) {
    if (fd_ < 0) {
        reason = "the file is not open";
        return false;
    }
    return readInto(fd_, static_cast<int64_t>(offset), limit, bytes, reason);
}

bool readRegularFile(const std::string& path, size_t limit, std::vector<uint8_t>& bytes, std::string& reason) {
    bytes.clear();
    RegularFile file;
    return file.open(path, reason) && file.read(limit, bytes, reason);
}

}  // namespace quillmer
