#include "engine/Cp1252.h"

#include <array>
#include <cstdint>

namespace quillmer {

namespace {

// Code points of 0x80..0x9F; 0 where Windows-1252 has no character (kept as the C1 control).
constexpr std::array<char32_t, 32> kHigh{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char32_t codePointOf(uint8_t byte) {
    if (byte >= 0x80 && byte < 0xA0) {
        const char32_t cp = kHigh[byte - 0x80];
        return cp ? cp : byte;
    }
    return byte;
}

void appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

char byteOf(char32_t cp) {
    if (cp < 0x80 || (cp >= 0xA0 && cp < 0x100)) return static_cast<char>(cp);
    for (size_t i = 0; i < kHigh.size(); ++i)
        if (kHigh[i] == cp || (kHigh[i] == 0 && cp == 0x80 + i)) return static_cast<char>(0x80 + i);
    return '?';
}

}  // namespace

namespace {
bool isAscii(std::string_view text) {
    for (char c : text)
        if (static_cast<uint8_t>(c) >= 0x80) return false;
    return true;
}
}  // namespace

std::string cp1252ToUtf8(std::string_view bytes) {
    if (isAscii(bytes)) return std::string(bytes);  // the same bytes in both
    std::string out;
    out.reserve(bytes.size());
    for (char c : bytes) appendUtf8(out, codePointOf(static_cast<uint8_t>(c)));
    return out;
}

std::string utf8ToCp1252(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const auto lead = static_cast<uint8_t>(text[i]);
        int extra = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        if (lead >= 0x80 && lead < 0xC0) extra = 0;  // a stray continuation byte
        char32_t cp = extra == 0 ? lead : extra == 1 ? (lead & 0x1F) : extra == 2 ? (lead & 0x0F) : (lead & 0x07);
        if (lead >= 0x80 && lead < 0xC0) cp = 0xFFFD;
        for (int k = 1; k <= extra && i + static_cast<size_t>(k) < text.size(); ++k)
            cp = (cp << 6) | (static_cast<uint8_t>(text[i + static_cast<size_t>(k)]) & 0x3F);
        out += byteOf(cp);
        i += static_cast<size_t>(extra) + 1;
    }
    return out;
}

}  // namespace quillmer
