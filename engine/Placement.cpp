#include "engine/Placement.h"

#include <array>

namespace quillmer {

int pageEdgeTarget(int currentPage, int32_t top, int32_t left, int32_t width, int32_t height,
                   int32_t frameWidth, int32_t frameHeight) {
    const int group = groupOf(currentPage);
    if (left < 0) return pageOf(group, Compass::West);
    if (top < 0) return pageOf(group, Compass::North);
    if (left + width >= frameWidth) return pageOf(group, Compass::East);
    if (top + height >= frameHeight) return pageOf(group, Compass::South);
    return -1;
}

std::string_view priorityCaption(int index) {
    static constexpr std::array<std::string_view, 7> kCaptions{
        "1 = First", "2 = Default", "3 = Late", "4 = Last", "Abs Clk A", "Abs Clk B", "MIDI Input"};
    return index >= 0 && index < 7 ? kCaptions[static_cast<size_t>(index)] : std::string_view{};
}

}  // namespace quillmer
