#pragma once
// The names offered to inputs. OutputNameList/OutputIdList are indexed by NameSlot in
// creation order; the sorted lists, in byte order, are what an input selector shows, and
// an input's InputPosition indexes them. PositionMap carries old positions to new ones
// after each insertion or removal. Needs the engine lock.
//
// One name comes and goes in O(n) moves of the sorted arrays, never a full sort; freed
// slots wait in a heap so that the lowest is reused first without a scan. Every name is
// also interned (NameTable), and the first sorted position of each NameId is kept, so
// resolving a stored connection is an array read, not a string search.

#include <cstdint>
#include <functional>
#include <queue>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Constants.h"
#include "engine/NameTable.h"

namespace quillmer {

class OutputNames {
public:
    static constexpr std::string_view kFreed = "~~";  // a freed, reusable slot

    OutputNames() { Init(); }

    // Clears every slot and enters the 159 system names; sorted lists in their initial
    // order, PositionMap the identity.
    void Init();

    // The lowest freed slot, or a new slot past TopNameSlot; -1 when all kBusSize slots
    // are in use.
    NameSlot AllocNameSlot();
    bool hasFreeSlot() const { return !freed_.empty() || topNameSlot_ + 1 < kBusSize; }
    // Exact, case-sensitive search from 0 to TopNameSlot; 0 (" Off (0)") when not found.
    NameSlot FindNameSlot(std::string_view name) const;
    void enter(NameSlot slot, std::string name, BusId id);
    void free(NameSlot slot);

    // All live names, sorted by byte value; PositionMap the identity.
    void RebuildSortedList();
    // The list changes for a new name already entered at `slot` / for the name at `slot`
    // that is going away. Both leave PositionMap mapping old positions to new ones.
    void insertSorted(NameSlot slot);
    void removeSorted(NameSlot slot);

    // After the inputs have followed it, the map is spent: back to the identity, so that a
    // later re-labelling without a change of list moves nothing.
    void consumePositionMap();

    // Position of `name` in the sorted list (the first, should two be alike), or -1.
    int sortedPosition(std::string_view name) const;
    int sortedPosition(NameId name) const {
        return name < firstPosition_.size() ? firstPosition_[name] : -1;
    }

    NameSlot TopNameSlot() const { return topNameSlot_; }
    const std::string& OutputName(NameSlot slot) const { return nameList_.at(static_cast<size_t>(slot)); }
    BusId OutputId(NameSlot slot) const { return idList_.at(static_cast<size_t>(slot)); }

    size_t sortedCount() const { return sortedNames_.size(); }
    const std::vector<std::string>& SortedNameList() const { return sortedNames_; }
    const std::vector<BusId>& SortedIdList() const { return sortedIds_; }
    const std::vector<uint16_t>& PositionMap() const { return positionMap_; }

    // Safe lookups for positions that may be stale: out of range reads as " Off (0)".
    const std::string& sortedName(uint16_t position) const;
    NameId sortedNameId(uint16_t position) const;
    BusId sortedId(uint16_t position) const;
    uint16_t mapPosition(uint16_t oldPosition) const {
        return oldPosition < positionMap_.size() ? positionMap_[oldPosition] : uint16_t{0};
    }

    // Interned names (stored connections hold these).
    NameId intern(std::string_view utf8) { return growPositions(table_.intern(utf8)); }
    NameId internCp1252(std::string_view bytes) { return growPositions(table_.internCp1252(bytes)); }
    const std::string& text(NameId id) const { return table_.text(id); }
    const std::string& cp1252(NameId id) const { return table_.cp1252(id); }

private:
    NameId growPositions(NameId id) {
        if (id >= firstPosition_.size()) firstPosition_.resize(static_cast<size_t>(id) + 1, -1);
        return id;
    }
    void insertAt(size_t position, NameSlot slot);

    NameTable table_;
    std::vector<std::string> nameList_;  // OutputNameList: "" never used, "~~" freed
    std::vector<BusId> idList_;          // OutputIdList
    std::vector<NameId> slotNames_;      // the interned name of each slot
    NameSlot topNameSlot_ = 0;
    std::priority_queue<NameSlot, std::vector<NameSlot>, std::greater<>> freed_;  // may hold reused slots
    int unsorted_ = 0;                   // slots entered since the sorted lists were last right

    std::vector<std::string> sortedNames_;
    std::vector<BusId> sortedIds_;
    std::vector<NameSlot> sortedSlots_;
    std::vector<NameId> sortedNameIds_;
    std::vector<int32_t> firstPosition_;  // by NameId: first sorted position, or -1
    std::vector<uint16_t> positionMap_;
};

}  // namespace quillmer
