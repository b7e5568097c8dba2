#pragma once
// The page table as its editor works on it: 128 rows of up to 128 values with a name of
// at most 20 characters each, and the editor's one-row clipboard and undo.

#include <array>
#include <string>

#include "tables/RowOps.h"

namespace quillmer {

class PageTable {
public:
    static constexpr int kRows = 128;
    static constexpr int kNameLength = 20;

    explicit PageTable(int length = kRowLength) : length_(length) {}
    int length() const { return length_; }
    Row& row(int r) { return rows_.at(static_cast<size_t>(r)); }
    const Row& row(int r) const { return rows_.at(static_cast<size_t>(r)); }
    const std::string& name(int r) const { return names_.at(static_cast<size_t>(r)); }
    void setName(int r, std::string name);
    // "000  name"
    std::string listLine(int r) const;

    // Before an edit of row r: what Undo gives back.
    void keep(int r);
    bool canUndo() const { return undoRow_ >= 0; }
    // Undo swaps the row with its kept state, so a second Undo redoes.
    void undo();
    void copy(int r) { clipboard_ = rows_.at(static_cast<size_t>(r)); }
    void cut(int r);
    void paste(int r);

private:
    int length_;
    std::array<Row, kRows> rows_{};
    std::array<std::string, kRows> names_;
    Row clipboard_{};
    Row kept_{};
    int undoRow_ = -1;
};

}  // namespace quillmer
