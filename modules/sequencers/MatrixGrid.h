#pragma once
// The grid operations of the matrices, on plain cells: Life with five levels per cell, the
// one-dimensional automaton, the kick, and the stability test. A grid is C x R bytes
// 0..127 stored column by column (index column x R + row), as the matrices keep it, so
// that formulas, satellites and panels all work on the same bytes.

#include <array>
#include <cstdint>
#include <span>

#include "engine/RandomSource.h"

namespace quillmer {

struct GridSize {
    int columns = 0;
    int rows = 0;
    int cells() const { return columns * rows; }
    int at(int column, int row) const { return column * rows + row; }
};

// The five Life states; the numbers are the states' own.
enum LifeState : uint8_t { Dead = 0, DiedAlone = 1, Alive = 2, Born = 3, DiedCrowded = 4 };
// The state a cell's value stands for.
LifeState lifeStateOf(int value);
// A state's value, plain or as the base of a randomised one.
int lifeValueOf(LifeState state, bool randomised);

constexpr int kMaxGridCells = 128;

// What one instance remembers between generations; none of it is stored in a file.
struct AutomatonMemory {
    std::array<uint8_t, kMaxGridCells> nextCells{};
    std::array<uint8_t, kMaxGridCells> cellStates{};
    std::array<uint32_t, 4> history{};  // signatures, newest first
    uint32_t caRow = 0;                 // the last automaton row, bit i = column i
    std::array<uint32_t, 3> caHistory{};
    bool stable = false;
};

struct LifeRules {
    bool hi = false;          // a birth on six neighbours too
    bool randomised = false;  // values drawn around each state's level
    bool mutate = false;      // about one cell in five takes a random state
    bool shortStability = false;  // the 4-row test: only signatures 1 and 3 compared
};

// Every cell has an even chance of a new random value.
void kickGrid(std::span<uint8_t> cells, RandomSource& random);

// One generation of Life on a grid that wraps both ways; the new generation replaces the
// cells. True when some cell changed.
bool lifeGeneration(std::span<uint8_t> cells, GridSize size, AutomatonMemory& memory, const LifeRules& rules,
                    RandomSource& random);

// One generation of the one-dimensional automaton with an eight-bit rule: the rows scroll
// down and the new row enters at the top. The seed is the top row (cells of 64 or more),
// or 16 random bits when `randomSeed`. The neighbourhood is a ring of 16 bits: a 16-column
// row wraps, a narrower one has hard edges. True when some cell changed.
bool caGeneration(std::span<uint8_t> cells, GridSize size, AutomatonMemory& memory, uint8_t rule, bool randomSeed,
                  bool randomised, RandomSource& random);

}  // namespace quillmer
