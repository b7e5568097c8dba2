#pragma once

#include <lo/lo.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace quillmer {

// liblo hands arguments at their place in the packet, four-byte aligned, while lo_arg
// asks for eight: read them as bytes, never through the union's members.
template <typename T>
T oscValue(const lo_arg* arg) {
    T value{};
    std::memcpy(&value, reinterpret_cast<const unsigned char*>(arg), sizeof value);
    return value;
}

inline std::string oscText(const lo_arg* arg) { return std::string(reinterpret_cast<const char*>(arg)); }

}  // namespace quillmer
