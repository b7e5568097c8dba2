#include "modules/midi/MfxFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <sys/stat.h>

#include "engine/AtomicFile.h"
#include "engine/RecordBytes.h"
#include "engine/RegularFile.h"

namespace quillmer {

std::vector<uint8_t> mfxBytes(const MfxList& list) {
    ByteWriter out;
    const size_t n = list.values.size();
    out.reserve(MfxList::kHeaderBytes + 5 * n);
    out.i32(list.eventTop());
    out.i16(list.fileBpm);
    out.raw(list.trackInfo);
    out.fixed(list.listName, MfxList::kNameBytes);
    out.raw(list.values);
    for (size_t i = 0; i < n; ++i) {
        const float t = i < list.times.size() ? list.times[i] : 0.0f;
        uint32_t bits = 0;
        std::memcpy(&bits, &t, sizeof bits);
        out.i32(static_cast<int32_t>(bits));
    }
    return out.take();
}

bool parseMfx(const uint8_t* data, size_t size, MfxList& list, std::string& reason) {
    if (size < MfxList::kHeaderBytes) {
        reason = "the file is shorter than the head of a MIDI file translation";
        return false;
    }
    ByteReader in(data, size);
    const int32_t top = in.i32();
    if (top < -1) {
        reason = "its event count is negative";
        return false;
    }
    const auto count = static_cast<uint64_t>(static_cast<int64_t>(top) + 1);
    if (count * 5 > in.remaining() - 2 - 64 - MfxList::kNameBytes) {
        reason = "it says it holds " + std::to_string(count) + " events, more than its bytes hold";
        return false;
    }
    MfxList read;
    read.fileBpm = in.i16();
    for (uint8_t& b : read.trackInfo) b = in.u8();
    read.listName = in.fixed(MfxList::kNameBytes);
    const size_t end = read.listName.find_last_not_of(' ');
    read.listName.erase(end == std::string::npos ? 0 : end + 1);
    read.values.resize(static_cast<size_t>(count));
    for (uint8_t& v : read.values) v = static_cast<uint8_t>(in.u8() & 127);
    read.times.resize(static_cast<size_t>(count));
    for (size_t i = 0; i < read.times.size(); ++i) {
        const auto bits = static_cast<uint32_t>(in.i32());
        float t = 0;
        std::memcpy(&t, &bits, sizeof t);
        if (!std::isfinite(t)) {
            reason = "the time of event " + std::to_string(i) + " isn't a number";
            return false;
        }
        read.times[i] = t;
    }
    list = std::move(read);
    return true;
}

bool loadMfxFile(const std::string& path, MfxList& list, std::string& error, std::string& reason) {
    struct stat st{};
    if (::stat(path.c_str(), &st) != 0 && (errno == ENOENT || errno == ENOTDIR)) {
        error = "File not found: " + path;
        reason = std::strerror(errno);
        return false;
    }
    error = "Can't load: " + path;
    RegularFile file;
    std::vector<uint8_t> bytes;
    if (!file.open(path, reason) || !file.read(MfxList::kHeaderBytes, bytes, reason)) return false;
    if (bytes.size() == MfxList::kHeaderBytes) {
        // No more than the events the head announces.
        ByteReader head(bytes);
        const int32_t top = head.i32();
        const uint64_t wanted = top < 0 ? 0 : 5 * (static_cast<uint64_t>(top) + 1);
        if (wanted > file.size()) {
            reason = "it says it holds " + std::to_string(static_cast<int64_t>(top) + 1) + " events, more than its bytes hold";
            return false;
        }
        if (!file.read(static_cast<size_t>(wanted), bytes, reason)) return false;
    }
    if (!parseMfx(bytes.data(), bytes.size(), list, reason)) return false;
    error.clear();
    return true;
}

bool saveMfxFile(const std::string& path, const MfxList& list, std::string& error, std::string& reason) {
    const std::vector<uint8_t> bytes = mfxBytes(list);
    AtomicFile file(path);
    std::string saveProblem;
    const auto fail = [&](const std::string& why) {
        error = "Could not save: " + path;
        reason = why;
        return false;
    };
    if (!file.create(saveProblem)) return fail(saveProblem);
    const int fd = ::open(file.tempPath().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) return fail(std::strerror(errno));
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            const std::string why = n < 0 ? std::strerror(errno) : "nothing could be written";
            ::close(fd);
            return fail(why);
        }
        written += static_cast<size_t>(n);
    }
    if (::close(fd) != 0) return fail(std::strerror(errno));
    if (!file.commit(saveProblem)) return fail(saveProblem);
    return true;
}

}  // namespace quillmer
