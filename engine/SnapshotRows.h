#pragma once
// The stored connections of one module in all 128 snapshots. A row is what one snapshot
// holds for every input: the output's name (an interned NameId, the durable key) and its
// place in the sorted name list when last resolved. Snapshots that hold the same row share
// it, so a module costs one row until a snapshot holds something different; the file still
// stores all 128 rows. Needs the engine lock.

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/Constants.h"

namespace quillmer {

// An interned output name (see NameTable); 0 is the empty name of a never-stored input.
using NameId = uint32_t;

struct StoredInput {
    NameId name = 0;
    uint16_t position = 0;
    bool operator==(const StoredInput&) const = default;
};

class SnapshotRows {
public:
    explicit SnapshotRows(int inputs);

    int inputs() const { return static_cast<int>(inputs_); }
    StoredInput get(int snapshot, int input) const {
        return rows_[static_cast<size_t>(rowOf_[static_cast<size_t>(snapshot)]) * inputs_ + static_cast<size_t>(input)];
    }
    std::span<const StoredInput> row(int snapshot) const {
        return {rows_.data() + static_cast<size_t>(rowOf_[static_cast<size_t>(snapshot)]) * inputs_, inputs_};
    }
    // Puts a whole row into one snapshot / one entry into one snapshot / into every one.
    void setRow(int snapshot, std::span<const StoredInput> row);
    void set(int snapshot, int input, StoredInput value);
    void setInAll(int input, StoredInput value);
    // Every snapshot's row at once (a record as read): rows[s * inputs + k].
    void assign(std::span<const StoredInput> rows);

    // Rewrites the rows of snapshots 0..count-1 through `resolve(std::span<StoredInput>)`,
    // which returns true when it changed the row. A row shared with a later snapshot is
    // copied first, so later snapshots keep what they held.
    template <class Resolve>
    void resolveFirst(int count, Resolve&& resolve) {
        if (inputs_ == 0 || count <= 0) return;
        const size_t distinct = refs_.size();
        std::array<StoredInput, kMaxInlineInputs> local;
        std::vector<StoredInput> spilled(inputs_ > kMaxInlineInputs ? inputs_ : 0);
        const std::span<StoredInput> scratch =
            spilled.empty() ? std::span<StoredInput>(local.data(), inputs_) : std::span<StoredInput>(spilled);
        for (size_t r = 0; r < distinct; ++r) {
            const StoredInput* stored = rows_.data() + r * inputs_;
            std::copy(stored, stored + inputs_, scratch.begin());
            if (!resolve(scratch)) continue;
            splitRow(static_cast<uint8_t>(r), count, scratch);
        }
    }

    size_t distinctRows() const { return refs_.size(); }
    // Which of the distinct rows snapshot s uses, and that row.
    size_t rowIndex(int snapshot) const { return rowOf_[static_cast<size_t>(snapshot)]; }
    std::span<const StoredInput> distinctRow(size_t r) const { return {rows_.data() + r * inputs_, inputs_}; }

private:
    static constexpr size_t kMaxInlineInputs = 32;
    // Gives snapshots below `count` that use row r the content `row`.
    void splitRow(uint8_t r, int count, std::span<const StoredInput> row);
    int findRow(std::span<const StoredInput> row) const;
    uint8_t addRow(std::span<const StoredInput> row);
    void release(uint8_t r);

    size_t inputs_;
    std::array<uint8_t, kSnapshotCount> rowOf_{};  // the distinct row each snapshot uses
    std::vector<StoredInput> rows_;                 // distinct rows, inputs_ entries each
    std::vector<uint8_t> refs_;                     // snapshots using each row
};

}  // namespace quillmer
