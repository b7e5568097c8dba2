#pragma once
// The names offered to inputs. OutputNameList/OutputIdList are indexed by NameSlot in
// creation order; the sorted lists, in byte order, are what an input selector shows, and
// an input's InputPosition indexes them. PositionMap carries old positions to new ones
// after each insertion or removal. Needs the engine lock.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Constants.h"

namespace quillmer {

class OutputNames {
public:
    static constexpr std::string_view kFreed = "~~";  // a freed, reusable slot

    OutputNames() { Init(); }

    // Clears every slot and enters the 159 system names; sorted lists in their initial
    // order, PositionMap the identity.
    void Init();

    // The first freed slot from 0 up, or a new slot past TopNameSlot.
    NameSlot AllocNameSlot();
    // Exact, case-sensitive search from 0 to TopNameSlot; 0 (" Off (0)") when not found.
    NameSlot FindNameSlot(std::string_view name) const;
    void enter(NameSlot slot, std::string name, BusId id);
    void free(NameSlot slot) { nameList_.at(static_cast<size_t>(slot)) = kFreed; }

    // All live names, sorted by byte value; PositionMap the identity.
    void RebuildSortedList();
    // The list changes for a new name already entered at `slot` / for the name at `slot`
    // that is going away. Both leave PositionMap mapping old positions to new ones.
    void insertSorted(NameSlot slot);
    void removeSorted(NameSlot slot);

    // After the inputs have followed it, the map is spent: back to the identity, so that a
    // later re-labelling without a change of list moves nothing.
    void consumePositionMap();

    // Position of `name` in the sorted list, or -1.
    int sortedPosition(std::string_view name) const;

    NameSlot TopNameSlot() const { return topNameSlot_; }
    const std::string& OutputName(NameSlot slot) const { return nameList_.at(static_cast<size_t>(slot)); }
    BusId OutputId(NameSlot slot) const { return idList_.at(static_cast<size_t>(slot)); }

    size_t sortedCount() const { return sortedNames_.size(); }
    const std::vector<std::string>& SortedNameList() const { return sortedNames_; }
    const std::vector<BusId>& SortedIdList() const { return sortedIds_; }
    const std::vector<uint16_t>& PositionMap() const { return positionMap_; }

    // Safe lookups for positions that may be stale: out of range reads as " Off (0)".
    const std::string& sortedName(uint16_t position) const;
    BusId sortedId(uint16_t position) const;
    uint16_t mapPosition(uint16_t oldPosition) const;

private:
    std::vector<std::string> nameList_;  // OutputNameList: "" never used, "~~" freed
    std::vector<BusId> idList_;          // OutputIdList
    NameSlot topNameSlot_ = 0;
    std::vector<std::string> sortedNames_;
    std::vector<BusId> sortedIds_;
    std::vector<uint16_t> positionMap_;
};

}  // namespace quillmer
