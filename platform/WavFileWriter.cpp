#include "platform/WavFileWriter.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace quillmer {
namespace {

constexpr int kChannels = 2;
constexpr int kBytesPerSample = 2;
constexpr int kHeaderBytes = 44;

}  // namespace

void WavFileWriter::write(const void* data, size_t size) {
    if (std::fwrite(data, 1, size, out_) != size && writeErrno_ == 0) writeErrno_ = errno != 0 ? errno : EIO;
}

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
    writeErrno_ = 0;
    writeHeader();
    return true;
}

// RIFF header of a 16-bit stereo PCM file, sizes as far as written.
void WavFileWriter::writeHeader() {
    const auto dataBytes = static_cast<uint32_t>(frames_ * kChannels * kBytesPerSample);
    const auto rate = static_cast<uint32_t>(sampleRate_);
    std::array<uint8_t, kHeaderBytes> h{};
    size_t at = 0;
    const auto text = [&](const char* four) {
        for (int i = 0; i < 4; ++i) h[at++] = static_cast<uint8_t>(four[i]);
    };
    const auto put16 = [&](uint32_t v) {
        h[at++] = static_cast<uint8_t>(v);
        h[at++] = static_cast<uint8_t>(v >> 8);
    };
    const auto put32 = [&](uint32_t v) {
        put16(v & 0xFFFF);
        put16(v >> 16);
    };
    text("RIFF");
    put32(kHeaderBytes - 8 + dataBytes);
    text("WAVE");
    text("fmt ");
    put32(16);  // size of the format chunk
    put16(1);   // PCM
    put16(kChannels);
    put32(rate);
    put32(rate * kChannels * kBytesPerSample);
    put16(kChannels * kBytesPerSample);
    put16(kBytesPerSample * 8);
    text("data");
    put32(dataBytes);
    write(h.data(), h.size());
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
        write(bytes.data(), n);
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
    if (std::fflush(out_) != 0 && writeErrno_ == 0) writeErrno_ = errno != 0 ? errno : EIO;
    if (std::ferror(out_) && writeErrno_ == 0) writeErrno_ = EIO;
    if (std::fclose(out_) != 0 && writeErrno_ == 0) writeErrno_ = errno != 0 ? errno : EIO;
    out_ = nullptr;
    if (writeErrno_ != 0) {
        error = saveError(file_.target(), std::strerror(writeErrno_));
        file_.discard();
        return false;
    }
    return file_.commit(error);
}

}  // namespace quillmer
