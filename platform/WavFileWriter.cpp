#include "platform/WavFileWriter.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace quillmer {
namespace {

constexpr int kChannels = 2;
constexpr int kBytesPerSample = 2;
constexpr int kHeaderBytes = 44;

void put16(std::FILE* out, uint32_t v) {
    const std::array<uint8_t, 2> b{static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8)};
    std::fwrite(b.data(), 1, b.size(), out);
}

void put32(std::FILE* out, uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

}  // namespace

WavFileWriter::WavFileWriter(std::string path, int sampleRate) : file_(std::move(path)), sampleRate_(sampleRate) {}

WavFileWriter::~WavFileWriter() {
    if (out_) std::fclose(out_);
}

bool WavFileWriter::begin(std::string& error) {
    if (!file_.create(error)) return false;
    out_ = std::fopen(file_.tempPath().c_str(), "wb");
    if (!out_) {
        error = saveError(file_.target(), std::strerror(errno));
        file_.discard();
        return false;
    }
    frames_ = 0;
    writeHeader();
    return true;
}

// RIFF header of a 16-bit stereo PCM file, sizes as far as written.
void WavFileWriter::writeHeader() {
    const auto dataBytes = static_cast<uint32_t>(frames_ * kChannels * kBytesPerSample);
    const auto rate = static_cast<uint32_t>(sampleRate_);
    std::fwrite("RIFF", 1, 4, out_);
    put32(out_, kHeaderBytes - 8 + dataBytes);
    std::fwrite("WAVEfmt ", 1, 8, out_);
    put32(out_, 16);  // size of the format chunk
    put16(out_, 1);   // PCM
    put16(out_, kChannels);
    put32(out_, rate);
    put32(out_, rate * kChannels * kBytesPerSample);
    put16(out_, kChannels * kBytesPerSample);
    put16(out_, kBytesPerSample * 8);
    std::fwrite("data", 1, 4, out_);
    put32(out_, dataBytes);
}

void WavFileWriter::append(const int16_t* interleaved, int64_t frames) {
    if (!out_ || frames <= 0) return;
    // Little endian on disk, whatever the machine.
    std::array<uint8_t, 4096> bytes{};
    const int64_t samples = frames * kChannels;
    for (int64_t i = 0; i < samples;) {
        size_t n = 0;
        for (; n + 1 < bytes.size() && i < samples; ++i) {
            const auto v = static_cast<uint16_t>(interleaved[i]);
            bytes[n++] = static_cast<uint8_t>(v);
            bytes[n++] = static_cast<uint8_t>(v >> 8);
        }
        std::fwrite(bytes.data(), 1, n, out_);
    }
    frames_ += frames;
}

bool WavFileWriter::finish(std::string& error) {
    if (!out_) {
        error = saveError(file_.target(), "the file was not begun");
        return false;
    }
    std::rewind(out_);
    writeHeader();
    const bool written = std::fflush(out_) == 0 && !std::ferror(out_);
    const int savedErrno = errno;
    std::fclose(out_);
    out_ = nullptr;
    if (!written) {
        error = saveError(file_.target(), std::strerror(savedErrno));
        file_.discard();
        return false;
    }
    return file_.commit(error);
}

}  // namespace quillmer
