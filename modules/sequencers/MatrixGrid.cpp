#include "modules/sequencers/MatrixGrid.h"

#include <algorithm>

namespace quillmer {

namespace {
constexpr int kAliveFrom = 75;
constexpr uint32_t kRing = 0xFFFF;

// Stores the new generation; true when some cell changed.
bool writeBack(std::span<uint8_t> cells, const AutomatonMemory& memory) {
    bool changed = false;
    for (size_t i = 0; i < cells.size(); ++i) {
        if (cells[i] == memory.nextCells[i]) continue;
        cells[i] = memory.nextCells[i];
        changed = true;
    }
    return changed;
}

LifeState nextLifeState(LifeState old, int neighbours, bool hi) {
    const bool living = old == Born || old == Alive;
    if (neighbours < 2) return living ? DiedAlone : Dead;
    if (neighbours == 3 || (hi && neighbours == 6)) return living ? Alive : Born;
    if (neighbours >= 4) return living ? DiedCrowded : Dead;
    if (old == DiedCrowded || old == DiedAlone) return Dead;
    return old == Born ? Alive : old;
}
}  // namespace

LifeState lifeStateOf(int value) {
    if (value < 25) return Dead;
    if (value < 50) return DiedAlone;
    if (value < 75) return DiedCrowded;
    if (value < 100) return Alive;
    return Born;
}

int lifeValueOf(LifeState state, bool randomised) {
    static constexpr int plain[] = {0, 32, 96, 127, 64};
    static constexpr int base[] = {0, 25, 75, 100, 50};
    return randomised ? base[state] : plain[state];
}

void kickGrid(std::span<uint8_t> cells, RandomSource& random) {
    for (uint8_t& cell : cells)
        if (random.between(0, 100) < 50) cell = static_cast<uint8_t>(random.between(0, 127));
}

bool lifeGeneration(std::span<uint8_t> cells, GridSize size, AutomatonMemory& memory, const LifeRules& rules,
                    RandomSource& random) {
    const int C = size.columns;
    const int R = size.rows;
    std::array<uint8_t, kMaxGridCells> alive{};
    for (int i = 0; i < size.cells(); ++i) alive[static_cast<size_t>(i)] = cells[static_cast<size_t>(i)] >= kAliveFrom;

    uint32_t signature = 0;
    bool anyAlive = false;
    for (int r = 0; r < R; ++r) {
        const int up = (r + R - 1) % R;
        const int down = (r + 1) % R;
        for (int c = 0; c < C; ++c) {
            const int left = (c + C - 1) % C;
            const int right = (c + 1) % C;
            const auto a = [&](int col, int row) { return alive[static_cast<size_t>(col * R + row)]; };
            const int n = a(left, up) + a(c, up) + a(right, up) + a(left, r) + a(right, r) + a(left, down) +
                          a(c, down) + a(right, down);
            const auto i = static_cast<size_t>(c * R + r);
            LifeState state = nextLifeState(lifeStateOf(cells[i]), n, rules.hi);
            if (rules.mutate && random.between(0, 4) == 0) state = static_cast<LifeState>(random.between(0, 4));

            int value = lifeValueOf(state, rules.randomised);
            if (rules.randomised) {
                if (state == memory.cellStates[i]) {
                    value = memory.nextCells[i];
                } else {
                    value = std::min(127, value + random.between(0, state == Born ? 27 : 24));
                }
            }
            memory.cellStates[i] = state;
            memory.nextCells[i] = static_cast<uint8_t>(value);
            signature += static_cast<uint32_t>(state + 5 * (r + R * c));
            anyAlive = anyAlive || state != Dead;
        }
    }
    auto& h = memory.history;
    h = {signature, h[0], h[1], h[2]};
    const bool repeats = h[2] == h[0];
    memory.stable = rules.shortStability ? repeats : (repeats && h[1] == h[3]) || !anyAlive;
    return writeBack(cells.first(static_cast<size_t>(size.cells())), memory);
}

bool caGeneration(std::span<uint8_t> cells, GridSize size, AutomatonMemory& memory, uint8_t rule, bool randomSeed,
                  bool randomised, RandomSource& random) {
    const int C = size.columns;
    const int R = size.rows;
    uint32_t seed = 0;
    if (randomSeed) {
        seed = static_cast<uint32_t>(random.between(0, static_cast<int>(kRing)));
    } else {
        for (int i = 0; i < C; ++i)
            if (cells[static_cast<size_t>(size.at(i, 0))] >= 64) seed |= 1u << i;
    }
    uint32_t p = seed << 1;
    if (p & 0x10000) p |= 1;
    p &= kRing;
    uint32_t row = 0;
    for (int i = 0; i < C; ++i) {
        if ((rule >> (p & 7)) & 1) row |= 1u << i;
        p = (p >> 1) | ((p & 1) << 15);
    }

    // Scroll down: the bottom row falls off, the new one enters at the top.
    for (int c = 0; c < C; ++c) {
        for (int r = R - 1; r > 0; --r)
            memory.nextCells[static_cast<size_t>(size.at(c, r))] = cells[static_cast<size_t>(size.at(c, r - 1))];
    }
    for (int i = 0; i < C; ++i) {
        static constexpr int level[] = {0, 96, 32, 64};  // born bright, died dim, survived between
        const auto s = static_cast<uint8_t>(((row >> i) & 1) + 2 * ((memory.caRow >> i) & 1));
        const auto at = static_cast<size_t>(size.at(i, 0));
        int value = level[s];
        if (randomised) value = s != memory.cellStates[at] ? value + random.between(0, 31) : memory.nextCells[at];
        memory.nextCells[at] = static_cast<uint8_t>(value & 127);
        memory.cellStates[at] = s;
    }

    const uint32_t last = memory.caRow;
    auto& h = memory.caHistory;
    memory.stable = row == last || (row == h[0] && last == h[1]) || row == 0;
    h = {last, h[0], h[1]};
    memory.caRow = row;
    return writeBack(cells.first(static_cast<size_t>(size.cells())), memory);
}

}  // namespace quillmer
