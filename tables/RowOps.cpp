#include "tables/RowOps.h"

#include <algorithm>
#include <cmath>

namespace quillmer::rowops {

namespace {

constexpr int kMax = 127;
constexpr int8_t kSame = -1;

// The pitch class each scale moves a pitch class to; kSame leaves it.
constexpr std::array<std::array<int8_t, 12>, kScaleChoices> kScaleMaps = {{
    {kSame, 0, kSame, 4, kSame, kSame, 7, kSame, 7, kSame, 9, kSame},      // Major
    {kSame, 0, kSame, kSame, 3, kSame, 7, kSame, 7, kSame, 9, kSame},      // Minor
    {1, kSame, 3, kSame, 3, 6, kSame, 8, kSame, 10, kSame, 10},            // Pentatonic: the black keys
    {kSame, 0, kSame, 4, kSame, kSame, 7, kSame, 9, kSame, 9, kSame},      // WholeTone
    {0, 0, 0, 0, 0, 7, 7, 7, 7, 7, 0, 0},                                  // 8ve/5ths
    {},                                                                    // Jitter: not a map
    {0, 0, 0, 3, 3, 3, 7, 7, 7, 7, 0, 0},                                  // Min Triad
    {0, 0, 0, 4, 4, 4, 7, 7, 7, 7, 0, 0},                                  // Maj Triad
}};

uint8_t clip(int v, int high = kMax) { return static_cast<uint8_t>(std::clamp(v, 0, std::min(high, kMax))); }

// The range as indexes into the row; empty when Start is past End.
struct Range {
    int first = 0;
    int last = -1;
    bool empty() const { return last < first; }
    int size() const { return last - first + 1; }
};

Range rangeOf(const FillKnobs& k) {
    return {std::max(0, k.start), std::min(kRowLength - 1, k.end)};
}

size_t at(int i) { return static_cast<size_t>(i); }

}  // namespace

int quantizeValue(int v, ScaleChoice choice, RandomSource& random) {
    if (choice == ScaleChoice::Jitter) return std::clamp(v + random.between(-2, 2), 0, kMax);
    const int octave = v / 12;
    const int pitch = v % 12;
    const int8_t to = kScaleMaps[static_cast<size_t>(choice)][static_cast<size_t>(pitch)];
    return octave * 12 + (to == kSame ? pitch : to);
}

void subtractLow(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = clip(row[at(i)] - k.low);
}

void addLow(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = clip(std::min(row[at(i)] + k.low, k.scale));
}

void fillFromStart(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    if (r.empty()) return;
    std::fill(row.begin() + r.first, row.begin() + r.last + 1, row[at(r.first)]);
}

void erase(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = 0;
}

void randomFill(Row& row, const FillKnobs& k, RandomSource& random) {
    const Range r = rangeOf(k);
    // Low above High draws between them all the same.
    const int low = std::min(k.low, k.high);
    const int high = std::max(k.low, k.high);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = clip(random.between(low, high));
}

void count(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    if (r.empty()) return;
    const int step = k.low == 0 ? 1 : k.low;
    int value = row[at(r.first)];
    int direction = 1;
    for (int i = r.first; i <= r.last; ++i) {
        row[at(i)] = clip(value);
        if (value + step > k.scale) direction = -1;
        if (value - step < 0) {
            direction = 1;
            value += step;
        } else {
            value += direction * step;
        }
    }
}

void randomWalk(Row& row, const FillKnobs& k, RandomSource& random) {
    const Range r = rangeOf(k);
    const int step = k.low == 0 ? 4 : k.low;
    for (int i = r.first + 1; i <= r.last; ++i) {
        const int former = row[at(i - 1)];
        int move;
        if (former <= 0)
            move = random.between(0, step);
        else if (former >= k.scale)
            move = random.between(-step, 0);
        else
            move = random.between(-step, step);
        row[at(i)] = clip(former + move, k.scale);
    }
}

void removeDuplicates(Row& row) {
    std::array<bool, 256> seen{};
    Row out{};
    size_t n = 0;
    for (uint8_t v : row) {
        if (seen[v]) continue;
        seen[v] = true;
        out[n++] = v;
    }
    row = out;
}

void zap(Row& row, const FillKnobs& k) {
    Row out{};
    size_t n = 0;
    for (uint8_t v : row)
        if (v != k.low) out[n++] = v;
    row = out;
}

void invert(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = clip(std::clamp(k.scale - row[at(i)], 0, k.scale));
}

void sortAscending(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    if (r.size() < 2) return;
    std::stable_sort(row.begin() + r.first, row.begin() + r.last + 1);
}

void reverse(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    if (r.empty()) return;
    std::reverse(row.begin() + r.first, row.begin() + r.last + 1);
}

void scatter(Row& row, const FillKnobs& k, RandomSource& random) {
    const Range r = rangeOf(k);
    const int n = r.last - r.first;
    if (n < 1) return;
    Row copy = row;
    std::array<bool, kRowLength> taken{};
    for (int p = 0; p <= n; ++p) {
        int from;
        do from = random.between(0, n);
        while (taken[at(from)]);
        taken[at(from)] = true;
        row[at(r.first + p)] = copy[at(r.first + from)];
    }
}

void quantize(Row& row, const FillKnobs& k, ScaleChoice choice, RandomSource& random) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = clip(quantizeValue(row[at(i)], choice, random));
}

void normalise(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    if (r.empty()) return;
    const int m = *std::max_element(row.begin() + r.first, row.begin() + r.last + 1);
    const int span = k.high - k.low;
    if (span == 0 || m == 0) return;
    for (int i = r.first; i <= r.last; ++i) {
        const auto scaled = static_cast<int>(std::nearbyint(static_cast<double>(row[at(i)]) * span / m));
        row[at(i)] = clip(std::clamp(scaled, 0, k.scale) + k.low);
    }
}

void exchange(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i)
        if (row[at(i)] == k.low) row[at(i)] = clip(k.high);
}

void trim(Row& row, const FillKnobs& k) {
    const Range r = rangeOf(k);
    int out = r.first;
    for (int i = r.first; i <= r.last; ++i)
        if (row[at(i)] < k.low) row[at(out++)] = row[at(i)];
    for (; out <= r.last; ++out) row[at(out)] = 0;
}

void smooth(Row& row, const FillKnobs& k) {
    static constexpr int kWeights[] = {256, 64, 16, 4, 1};
    static constexpr int kTotal = 426;
    const Range r = rangeOf(k);
    const Row copy = row;
    for (int i = r.first; i <= r.last; ++i) {
        int sum = 0;
        for (int d = -4; d <= 4; ++d) sum += kWeights[std::abs(d)] * copy[at((i + d) & (kRowLength - 1))];
        row[at(i)] = static_cast<uint8_t>((sum / kTotal) % kRowLength);
    }
}

void patternAdd(Row& row, const FillKnobs& k) {
    const int end = std::min(k.end, kRowLength - 1);
    if (end <= 0) return;
    const int increment = k.low == k.scale ? end + 1 : k.low;
    int running = increment;
    int out = end + 1;
    while (out < kRowLength) {
        for (int i = 0; i <= end && out < kRowLength; ++i) row[at(out++)] = clip(row[at(i)] + running);
        running += increment;
    }
}

void paste(Row& row, const Row& clipboard, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i) row[at(i)] = clipboard[at(i - r.first)];
}

void makeScale(Row& row, const FillKnobs& k, ScaleChoice choice, RandomSource& random) {
    const Range r = rangeOf(k);
    if (r.empty()) return;
    const int low = std::clamp(k.low, 0, kMax);
    const int high = std::clamp(k.high, 0, kMax);
    int value = low;
    int direction = high >= low ? 1 : -1;
    int last = -1;
    int out = r.first;
    // A value that can never change (or a scale that keeps giving the same result) stops
    // the run once a whole sweep there and back has added nothing.
    const int sweep = 2 * std::abs(high - low) + 2;
    int idle = 0;
    while (out <= r.last && idle <= sweep) {
        const int result = quantizeValue(value, choice, random);
        if (result > kMax) break;
        if (result != last) {
            row[at(out++)] = static_cast<uint8_t>(result);
            last = result;
            idle = 0;
        } else {
            ++idle;
        }
        if (low == high) {
            ++idle;
            continue;
        }
        if (value == high) direction = high > low ? -1 : 1;
        else if (value == low) direction = high > low ? 1 : -1;
        value += direction;
    }
}

void restoreZeros(Row& row, const Row& earlier, const FillKnobs& k) {
    const Range r = rangeOf(k);
    for (int i = r.first; i <= r.last; ++i)
        if (earlier[at(i)] == 0) row[at(i)] = 0;
}

void mergeZeros(Row& row, const Row& from) {
    for (size_t i = 0; i < row.size(); ++i)
        if (row[i] == 0) row[i] = from[i];
}

void rotate(Row& row, const Row& copy, int position) {
    for (int i = 0; i < kRowLength; ++i) row[at((i + position) & (kRowLength - 1))] = copy[at(i)];
}

void harmonicSort(Row& row, const FillKnobs& k, std::span<const uint8_t> key) {
    const Range r = rangeOf(k);
    if (r.last - r.first < 2) return;
    const Row scratch = row;
    std::array<bool, kRowLength> taken{};
    Row out = row;
    int next = r.first;
    for (uint8_t pitch : key) {
        if (pitch > 11 || next > r.last) break;
        for (int i = r.first; i <= r.last && next <= r.last; ++i) {
            if (taken[at(i)] || scratch[at(i)] % 12 != pitch) continue;
            out[at(next++)] = scratch[at(i)];
            taken[at(i)] = true;
        }
    }
    for (int i = r.first; i <= r.last && next <= r.last; ++i)
        if (!taken[at(i)]) out[at(next++)] = scratch[at(i)];
    row = out;
}

}  // namespace quillmer::rowops
