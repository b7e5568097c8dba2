#pragma once
// Little-endian, packed bytes of a record as the module file stores them. Strings are
// Windows-1252 on disk and UTF-8 in memory: str() and fixed() convert.

#include <algorithm>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Cp1252.h"

namespace quillmer {

// A record that doesn't parse: too short, or a length out of range.
class RecordFormatError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ByteWriter {
public:
    void u8(uint8_t v) { bytes_.push_back(v); }
    void i16(int16_t v) { u16(static_cast<uint16_t>(v)); }
    void u16(uint16_t v) {
        u8(static_cast<uint8_t>(v & 0xFF));
        u8(static_cast<uint8_t>(v >> 8));
    }
    void i32(int32_t v) {
        const auto u = static_cast<uint32_t>(v);
        for (int shift = 0; shift < 32; shift += 8) u8(static_cast<uint8_t>(u >> shift));
    }
    // A variable string: u16 length, then the bytes.
    void str(std::string_view text) {
        const std::string s = utf8ToCp1252(text);
        u16(static_cast<uint16_t>(s.size()));
        bytes_.insert(bytes_.end(), s.begin(), s.end());
    }
    // A variable string already in Windows-1252.
    void rawStr(std::string_view bytes) {
        const size_t at = bytes_.size();
        bytes_.resize(at + 2 + bytes.size());
        bytes_[at] = static_cast<uint8_t>(bytes.size() & 0xFF);
        bytes_[at + 1] = static_cast<uint8_t>(bytes.size() >> 8);
        std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at + 2));
    }
    // A fixed string of exactly n bytes, padded with blanks (cut when longer).
    void fixed(std::string_view text, size_t n) {
        const std::string s = utf8ToCp1252(text);
        for (size_t i = 0; i < n; ++i) u8(i < s.size() ? static_cast<uint8_t>(s[i]) : uint8_t{' '});
    }
    void raw(std::span<const uint8_t> block) { bytes_.insert(bytes_.end(), block.begin(), block.end()); }
    void reserve(size_t n) { bytes_.reserve(n); }

    const std::vector<uint8_t>& bytes() const { return bytes_; }
    std::vector<uint8_t> take() { return std::move(bytes_); }
    size_t size() const { return bytes_.size(); }

private:
    std::vector<uint8_t> bytes_;
};

class ByteReader {
public:
    ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    explicit ByteReader(const std::vector<uint8_t>& bytes) : ByteReader(bytes.data(), bytes.size()) {}

    uint8_t u8() {
        need(1);
        return data_[pos_++];
    }
    uint16_t u16() {
        const uint16_t lo = u8();
        return static_cast<uint16_t>(lo | (u8() << 8));
    }
    int16_t i16() { return static_cast<int16_t>(u16()); }
    int32_t i32() {
        uint32_t v = 0;
        for (int shift = 0; shift < 32; shift += 8) v |= static_cast<uint32_t>(u8()) << shift;
        return static_cast<int32_t>(v);
    }
    std::string str() {
        const uint16_t n = u16();
        need(n);
        std::string s(reinterpret_cast<const char*>(data_ + pos_), n);
        pos_ += n;
        return cp1252ToUtf8(s);
    }
    // A variable string's bytes as stored (Windows-1252), valid as long as the data.
    std::string_view rawStr() {
        const uint16_t n = u16();
        need(n);
        const std::string_view s(reinterpret_cast<const char*>(data_ + pos_), n);
        pos_ += n;
        return s;
    }
    // A fixed string of n bytes, trailing blanks kept.
    std::string fixed(size_t n) {
        need(n);
        std::string s(reinterpret_cast<const char*>(data_ + pos_), n);
        pos_ += n;
        return cp1252ToUtf8(s);
    }
    std::vector<uint8_t> raw(size_t n) {
        need(n);
        std::vector<uint8_t> block(data_ + pos_, data_ + pos_ + n);
        pos_ += n;
        return block;
    }

    void skip(size_t n) {
        need(n);
        pos_ += n;
    }
    const uint8_t* data() const { return data_; }
    size_t position() const { return pos_; }
    size_t remaining() const { return size_ - pos_; }

private:
    void need(size_t n) const {
        if (n > size_ - pos_) throw RecordFormatError("record ends early");
    }
    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
};

}  // namespace quillmer
