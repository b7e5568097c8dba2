#include "tables/PageTable.h"

#include <cstdio>

namespace quillmer {

void PageTable::setName(int r, std::string name) {
    if (name.size() > kNameLength) name.resize(kNameLength);
    names_.at(static_cast<size_t>(r)) = std::move(name);
}

std::string PageTable::listLine(int r) const {
    char number[8];
    std::snprintf(number, sizeof number, "%03d", r);
    return std::string(number) + "  " + name(r);
}

void PageTable::keep(int r) {
    kept_ = rows_.at(static_cast<size_t>(r));
    undoRow_ = r;
}

void PageTable::undo() {
    if (undoRow_ < 0) return;
    std::swap(kept_, rows_[static_cast<size_t>(undoRow_)]);
}

void PageTable::cut(int r) {
    keep(r);
    copy(r);
    rows_[static_cast<size_t>(r)].fill(0);
}

void PageTable::paste(int r) {
    keep(r);
    Row& to = rows_[static_cast<size_t>(r)];
    for (int i = 0; i < length_; ++i) to[static_cast<size_t>(i)] = clipboard_[static_cast<size_t>(i)];
}

}  // namespace quillmer
