#pragma once
// A progress bar for long offline renders, drawn on one line of a terminal.

#include <algorithm>
#include <cstdint>
#include <string>

namespace quillmer {

// "[#########...........]  45%  measure 9 of 20": `done` of `total` steps (measures).
inline std::string progressLine(int64_t done, int64_t total, int width = 30) {
    total = std::max<int64_t>(total, 1);
    done = std::clamp<int64_t>(done, 0, total);
    const int64_t filled = done * width / total;
    // Appended piece by piece: GCC 12 warns falsely of overlaps in "[" + std::string(...).
    std::string line = "[";
    line.append(static_cast<size_t>(filled), '#');
    line.append(static_cast<size_t>(width - filled), '.');
    line += "] ";
    const std::string percent = std::to_string(done * 100 / total);
    line.append(3 - std::min<size_t>(3, percent.size()), ' ');
    line += percent;
    line += "%  measure ";
    line += std::to_string(done);
    line += " of ";
    line += std::to_string(total);
    return line;
}

}  // namespace quillmer
