#pragma once
// A table the Fill dialog can edit. The dialog knows only this: the table's values go
// into its row when it opens, and after every change the row comes back through UpdateSeq.
// Needs the engine lock.

#include <cstdint>
#include <span>

namespace quillmer {

class FillTarget {
public:
    virtual ~FillTarget() = default;
    // The number of values the table takes (the dialog's last stage is one less).
    virtual int fillStages() const = 0;
    virtual void copyToFill(std::span<uint8_t> hold) const = 0;
    // The table's ceiling for Invert, Add and Norm; 0: none (127).
    virtual int fillScale() const { return 0; }
    // The dialog's row and scale: the first fillStages() values become the table.
    virtual void UpdateSeq(std::span<const uint8_t> hold, int fillScale) = 0;
    // The dialog opens on this table, or closes.
    virtual void fillOpened(bool /*open*/) {}
};

}  // namespace quillmer
