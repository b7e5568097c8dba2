#pragma once
// A short list of 16-bit ids kept inside its owner. A module reads its inputs' bus ids every
// tick, so the first few live on the module's own cache line; a type with more inputs
// spills them to the heap. Not copyable or movable: `data_` may point into the object.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace quillmer {

template <size_t Inline>
class InlineIds {
public:
    InlineIds() = default;
    explicit InlineIds(size_t count) { resize(count); }
    InlineIds(const InlineIds&) = delete;
    InlineIds& operator=(const InlineIds&) = delete;

    void resize(size_t count) {
        if (count > Inline) {
            heap_ = std::make_unique<uint16_t[]>(count);
            data_ = heap_.get();
        }
        size_ = static_cast<uint16_t>(count);
    }

    uint16_t& operator[](size_t i) { return data_[i]; }
    uint16_t operator[](size_t i) const { return data_[i]; }
    uint16_t& at(size_t i) {
        if (i >= size_) throw std::out_of_range("input index out of range");
        return data_[i];
    }
    uint16_t at(size_t i) const {
        if (i >= size_) throw std::out_of_range("input index out of range");
        return data_[i];
    }
    size_t size() const { return size_; }
    uint16_t* begin() { return data_; }
    uint16_t* end() { return data_ + size_; }
    const uint16_t* begin() const { return data_; }
    const uint16_t* end() const { return data_ + size_; }

private:
    uint16_t* data_ = inline_;
    uint16_t inline_[Inline] = {};
    uint16_t size_ = 0;
    std::unique_ptr<uint16_t[]> heap_;
};

}  // namespace quillmer
