#pragma once
// The module file's order of types and each type's record layout, as data. A layout is a
// list of tokens: "H" the head with the name; "384s" 384 strings; "768b" raw bytes;
// "128f20" fixed strings of 20 bytes; "f3" one fixed string; "s" one string; "d1", "d4"
// a dynamic array of 1- or 4-byte elements. A layout without "H" starts with raw bytes that
// stand in place of the head.

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/RecordBytes.h"

namespace quillmer {

constexpr int kFileSlotCount = 197;

struct FileSlot {
    int16_t k;                // place in the file order
    uint16_t countOffset;     // file offset of the type's record count
    std::string_view type;    // empty for a retired slot
    std::string_view layout;

    bool retired() const { return type.empty(); }
};

struct LayoutToken {
    enum class Kind : uint8_t { Head, Strings, Bytes, FixedStrings, Dynamic };
    Kind kind;
    uint32_t count = 1;  // strings, bytes or fixed strings
    uint32_t size = 0;   // fixed string length, or element size of a dynamic array
};

std::span<const FileSlot> fileOrder();
// The file slot of a type; every type has exactly one.
const FileSlot& fileSlotOf(ModuleTypeId id);
std::vector<LayoutToken> parseLayout(std::string_view layout);

// Reads one record of a layout, whatever its content, and returns its bytes.
std::vector<uint8_t> readRecordBytes(ByteReader& in, const std::vector<LayoutToken>& layout);
// The same record's bytes where they stand (valid as long as the reader's data).
std::span<const uint8_t> recordSpan(ByteReader& in, const std::vector<LayoutToken>& layout);
// Passes over one record; throws RecordFormatError where it doesn't parse.
void skipRecord(ByteReader& in, const std::vector<LayoutToken>& layout);
// The largest record a layout can have: every string at its longest (65535 bytes). A
// dynamic array has no bound of its own: a layout with one gives UINT64_MAX.
uint64_t maxRecordBytes(const std::vector<LayoutToken>& layout);
// A free slot's record: zero words, empty strings, blank fixed strings, empty arrays.
std::vector<uint8_t> blankRecordBytes(const std::vector<LayoutToken>& layout);

// The usual form of a record body: n input names per snapshot, then a block of bytes that
// starts with their positions. True when the layout is "H <n>s <m>b" (or "H <m>b").
struct UsualForm {
    uint32_t strings = 0;
    uint32_t bytes = 0;
};
std::optional<UsualForm> usualForm(const std::vector<LayoutToken>& layout);

}  // namespace quillmer
