#pragma once
// Reading the files a user names: only a regular file is read (a folder, a FIFO or a device
// is refused before anything waits on it), and never more than the caller's limit, the
// largest size its format allows.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quillmer {

class RegularFile {
public:
    RegularFile() = default;
    ~RegularFile();
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    // Opens `path` for reading without blocking; false with `reason` ("No such file or
    // directory", "it is a folder, not a file", ...) when it can't be read as a file.
    bool open(const std::string& path, std::string& reason);
    // The size the file had when it was opened.
    uint64_t size() const { return size_; }
    // Appends up to `limit` more bytes, fewer at the end of the file; false with `reason`
    // on a read error.
    bool read(size_t limit, std::vector<uint8_t>& bytes, std::string& reason);
    // Reads from a position without moving: up to `limit` bytes.
    bool readAt(uint64_t offset, size_t limit, std::vector<uint8_t>& bytes, std::string& reason);
    void close();

private:
    int fd_ = -1;
    uint64_t size_ = 0;
};

// The whole of a regular file, at most `limit` bytes of it. False with `reason`.
bool readRegularFile(const std::string& path, size_t limit, std::vector<uint8_t>& bytes, std::string& reason);

// Why a path that exists can't be taken as a file ("it is a folder, not a file"); empty for
// a regular file. `mode` is a stat() mode.
std::string notRegularReason(unsigned mode);

}  // namespace quillmer
