#pragma once
// The cells of the matrices: one grid per instance of each size, indexed by instance
// number, column and row, with the instance's outside-write and stable flags. The matrix
// modules work on these bytes; their satellites and the formula functions reach them here.
// Needs the engine lock.

#include <array>
#include <cstdint>
#include <deque>

namespace quillmer {

struct GridCells {
    static constexpr int kMaxCells = 128;
    std::array<uint8_t, kMaxCells> cells{};  // column x rows + row
    bool outsideWrite = false;  // a formula wrote a cell; the matrix takes it on its next pass
    bool stable = false;        // the automaton repeats itself
    uint32_t version = 0;       // counts changes, for views

    // A write from outside the matrix: false when the cell held the value already.
    bool writeFromOutside(int at, int value) {
        const auto v = static_cast<uint8_t>(value < 0 ? 0 : value > 127 ? 127 : value);
        if (at < 0 || at >= kMaxCells || cells[static_cast<size_t>(at)] == v) return false;
        cells[static_cast<size_t>(at)] = v;
        outsideWrite = true;
        ++version;
        return true;
    }
};

class GridCellStore {
public:
    static constexpr int kSizes = 6;
    // The sizes in the order of the formula functions: 16x8, 16x4, 12x8, 8x8, 8x4, 4x4.
    static constexpr int sizeIndex(int columns, int rows) {
        constexpr int sizes[kSizes][2] = {{16, 8}, {16, 4}, {12, 8}, {8, 8}, {8, 4}, {4, 4}};
        for (int i = 0; i < kSizes; ++i)
            if (sizes[i][0] == columns && sizes[i][1] == rows) return i;
        return -1;
    }
    // The grid of an instance, made blank when new; references stay valid.
    GridCells& grid(int size, int index) {
        auto& grids = grids_[static_cast<size_t>(size)];
        while (static_cast<int>(grids.size()) <= index) grids.emplace_back();
        return grids[static_cast<size_t>(index)];
    }
    // nullptr for an instance never placed.
    GridCells* find(int size, int index) {
        if (size < 0 || size >= kSizes || index < 0) return nullptr;
        auto& grids = grids_[static_cast<size_t>(size)];
        return index < static_cast<int>(grids.size()) ? &grids[static_cast<size_t>(index)] : nullptr;
    }

private:
    std::array<std::deque<GridCells>, kSizes> grids_;
};

}  // namespace quillmer
