#pragma once
// A 16-bit stereo PCM WAV file written as it is rendered, saved atomically at the end: the
// target only appears (or is replaced) when finish() succeeds.
//
// Thread rule: one thread.

#include <cstdint>
#include <cstdio>
#include <string>

#include "engine/AtomicFile.h"

namespace quillmer {

class WavFileWriter {
public:
    WavFileWriter(std::string path, int sampleRate);
    // Leaves nothing behind unless finish() succeeded.
    ~WavFileWriter();
    WavFileWriter(const WavFileWriter&) = delete;
    WavFileWriter& operator=(const WavFileWriter&) = delete;

    // False with `error` naming the file.
    bool begin(std::string& error);
    void append(const int16_t* interleaved, int64_t frames);
    // Fills in the sizes and puts the file in place; false with `error` naming the file when
    // any write failed, and then the file that was there before stays as it was.
    bool finish(std::string& error);
    int64_t frames() const { return frames_; }
    const std::string& path() const { return file_.target(); }

private:
    void writeHeader();

    void write(const void* data, size_t size);

    AtomicFile file_;
    int sampleRate_;
    std::FILE* out_ = nullptr;
    int64_t frames_ = 0;
    int writeErrno_ = 0;  // of the first write that failed (a full disk, say); 0 while all went well
};

}  // namespace quillmer
