#pragma once
// Where panels lie: the snap grid, the page-edge moves and the compass pages, as plain
// functions of positions in twips. The GUI calls them; UpdateModule does too.

#include <cstdint>
#include <string_view>

namespace quillmer {

// Snaps a coordinate to the grid of 120 twips (8 pixels), rounding at 4 pixels.
constexpr int32_t snapToGrid(int32_t twips) { return ((twips / 15 + 4) / 8) * 120; }

// Page positions within a group of four.
enum class Compass : int8_t { North = 0, East = 1, South = 2, West = 3 };

constexpr int pageOf(int group, Compass position) { return group * 4 + static_cast<int>(position); }
constexpr int groupOf(int page) { return page / 4; }
constexpr Compass compassOf(int page) { return static_cast<Compass>(page % 4); }

// The page a panel dragged against an edge of the frame moves to, in test order: left edge
// West, top edge North, right edge East, bottom edge South. At most one fires; -1 for none.
int pageEdgeTarget(int currentPage, int32_t top, int32_t left, int32_t width, int32_t height,
                   int32_t frameWidth, int32_t frameHeight);

// The status dialog shows priorities by option index; the stored value swaps 0 and 1.
constexpr int priorityIndexOf(int16_t stored) {
    const int low = stored & 15;
    return low == 0 ? 1 : low == 1 ? 0 : low;
}
constexpr int16_t storedPriorityOf(int index) {
    return static_cast<int16_t>(index == 0 ? 1 : index == 1 ? 0 : index);
}
// Picture of the status icon: option index + 1, or 9 while disabled.
constexpr int statusPicture(int16_t storedPriority, bool enabled) {
    return enabled ? priorityIndexOf(storedPriority) + 1 : 9;
}
// Captions of the seven priority options, by option index.
std::string_view priorityCaption(int index);

}  // namespace quillmer
