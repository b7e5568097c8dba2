#include "engine/SnapshotRows.h"

#include <algorithm>

namespace quillmer {

SnapshotRows::SnapshotRows(int inputs) : inputs_(static_cast<size_t>(inputs)) {
    if (inputs_ == 0) return;
    rows_.assign(inputs_, StoredInput{});
    refs_.assign(1, kSnapshotCount);
}

int SnapshotRows::findRow(std::span<const StoredInput> row) const {
    for (size_t r = 0; r < refs_.size(); ++r)
        if (std::equal(row.begin(), row.end(), rows_.begin() + static_cast<std::ptrdiff_t>(r * inputs_)))
            return static_cast<int>(r);
    return -1;
}

uint8_t SnapshotRows::addRow(std::span<const StoredInput> row) {
    rows_.insert(rows_.end(), row.begin(), row.end());
    refs_.push_back(0);
    return static_cast<uint8_t>(refs_.size() - 1);
}

// One snapshot less uses row r; an unused row is replaced by the last one.
void SnapshotRows::release(uint8_t r) {
    if (--refs_[r] != 0) return;
    const auto last = static_cast<uint8_t>(refs_.size() - 1);
    if (r != last) {
        std::copy_n(rows_.begin() + static_cast<std::ptrdiff_t>(last * inputs_), inputs_,
                    rows_.begin() + static_cast<std::ptrdiff_t>(r * inputs_));
        refs_[r] = refs_[last];
        for (uint8_t& used : rowOf_)
            if (used == last) used = r;
    }
    refs_.pop_back();
    rows_.resize(refs_.size() * inputs_);
}

void SnapshotRows::setRow(int snapshot, std::span<const StoredInput> row) {
    if (inputs_ == 0) return;
    uint8_t& used = rowOf_[static_cast<size_t>(snapshot)];
    const uint8_t old = used;
    const int found = findRow(row);
    if (found == old) return;
    if (found >= 0) {
        used = static_cast<uint8_t>(found);
        ++refs_[used];
        release(old);
    } else if (refs_[old] == 1) {
        std::copy(row.begin(), row.end(), rows_.begin() + static_cast<std::ptrdiff_t>(old * inputs_));
    } else {
        --refs_[old];
        used = addRow(row);
        refs_[used] = 1;
    }
}

void SnapshotRows::set(int snapshot, int input, StoredInput value) {
    if (get(snapshot, input) == value) return;
    const std::span<const StoredInput> current = row(snapshot);
    std::vector<StoredInput> changed(current.begin(), current.end());
    changed[static_cast<size_t>(input)] = value;
    setRow(snapshot, changed);
}

void SnapshotRows::setInAll(int input, StoredInput value) {
    for (size_t r = 0; r < refs_.size(); ++r) rows_[r * inputs_ + static_cast<size_t>(input)] = value;
}

void SnapshotRows::assign(std::span<const StoredInput> rows) {
    if (inputs_ == 0) return;
    rows_.clear();
    refs_.clear();
    for (size_t s = 0; s < kSnapshotCount; ++s) {
        const std::span<const StoredInput> row = rows.subspan(s * inputs_, inputs_);
        int r = -1;
        if (s > 0 && std::equal(row.begin(), row.end(), rows.begin() + static_cast<std::ptrdiff_t>((s - 1) * inputs_)))
            r = rowOf_[s - 1];
        else
            r = findRow(row);
        if (r < 0) r = addRow(row);
        rowOf_[s] = static_cast<uint8_t>(r);
        ++refs_[static_cast<size_t>(r)];
    }
}

void SnapshotRows::splitRow(uint8_t r, int count, std::span<const StoredInput> row) {
    const size_t live = static_cast<size_t>(
        std::count(rowOf_.begin(), rowOf_.begin() + std::min(count, kSnapshotCount), r));
    if (live == 0) return;
    if (live == refs_[r]) {
        std::copy(row.begin(), row.end(), rows_.begin() + static_cast<std::ptrdiff_t>(r * inputs_));
        return;
    }
    const uint8_t added = addRow(row);
    refs_[added] = static_cast<uint8_t>(live);
    refs_[r] = static_cast<uint8_t>(refs_[r] - live);
    for (int s = 0; s < count && s < kSnapshotCount; ++s)
        if (rowOf_[static_cast<size_t>(s)] == r) rowOf_[static_cast<size_t>(s)] = added;
}

}  // namespace quillmer
