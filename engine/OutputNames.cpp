#include "engine/OutputNames.h"

#include <algorithm>
#include <numeric>

#include "engine/OutputBus.h"

namespace quillmer {

void OutputNames::Init() {
    nameList_.assign(kBusSize, std::string());
    idList_.assign(kBusSize, 0);
    slotNames_.assign(kBusSize, 0);
    freed_ = {};
    for (BusId id = 0; id < kSystemOutputCount; ++id) enter(static_cast<NameSlot>(id), systemOutput(id).name, id);
    topNameSlot_ = kSystemOutputCount - 1;
    RebuildSortedList();
}

NameSlot OutputNames::AllocNameSlot() {
    while (!freed_.empty()) {
        const NameSlot s = freed_.top();
        if (nameList_[static_cast<size_t>(s)] == kFreed) return s;
        freed_.pop();  // taken again since it was freed
    }
    if (topNameSlot_ + 1 >= kBusSize) return -1;
    return ++topNameSlot_;
}

NameSlot OutputNames::FindNameSlot(std::string_view name) const {
    const std::optional<NameId> id = table_.find(name);
    if (!id) return 0;
    for (NameSlot s = 0; s <= topNameSlot_; ++s)
        if (slotNames_[static_cast<size_t>(s)] == *id) return s;
    return 0;
}

void OutputNames::enter(NameSlot slot, std::string name, BusId id) {
    const auto s = static_cast<size_t>(slot);
    slotNames_.at(s) = intern(name);
    nameList_[s] = std::move(name);
    idList_[s] = id;
    ++unsorted_;
}

void OutputNames::free(NameSlot slot) {
    const auto s = static_cast<size_t>(slot);
    nameList_.at(s) = kFreed;
    slotNames_[s] = intern(kFreed);
    freed_.push(slot);
}

void OutputNames::RebuildSortedList() {
    std::vector<NameSlot> live;
    live.reserve(static_cast<size_t>(topNameSlot_) + 1);
    for (NameSlot s = 0; s <= topNameSlot_; ++s)
        if (nameList_[static_cast<size_t>(s)] != kFreed) live.push_back(s);
    // std::string compares bytes as unsigned char: " " < digits < upper case < lower case < "~".
    std::stable_sort(live.begin(), live.end(), [this](NameSlot a, NameSlot b) {
        return nameList_[static_cast<size_t>(a)] < nameList_[static_cast<size_t>(b)];
    });
    const size_t n = live.size();
    sortedNames_.resize(n);
    sortedIds_.resize(n);
    sortedSlots_ = live;
    sortedNameIds_.resize(n);
    std::fill(firstPosition_.begin(), firstPosition_.end(), -1);
    for (size_t i = n; i-- > 0;) {
        const auto s = static_cast<size_t>(live[i]);
        sortedNames_[i] = nameList_[s];
        sortedIds_[i] = idList_[s];
        sortedNameIds_[i] = slotNames_[s];
        firstPosition_[slotNames_[s]] = static_cast<int32_t>(i);
    }
    positionMap_.resize(n);
    std::iota(positionMap_.begin(), positionMap_.end(), uint16_t{0});
    unsorted_ = 0;
}

void OutputNames::consumePositionMap() {
    positionMap_.resize(sortedNames_.size());
    std::iota(positionMap_.begin(), positionMap_.end(), uint16_t{0});
}

int OutputNames::sortedPosition(std::string_view name) const {
    const std::optional<NameId> id = table_.find(name);
    return id ? sortedPosition(*id) : -1;
}

// Puts the entry of `slot` at `position`; later entries move up one.
void OutputNames::insertAt(size_t position, NameSlot slot) {
    const auto s = static_cast<size_t>(slot);
    const auto at = static_cast<std::ptrdiff_t>(position);
    sortedNames_.insert(sortedNames_.begin() + at, nameList_[s]);
    sortedIds_.insert(sortedIds_.begin() + at, idList_[s]);
    sortedSlots_.insert(sortedSlots_.begin() + at, slot);
    sortedNameIds_.insert(sortedNameIds_.begin() + at, slotNames_[s]);
    // A name first seen at old i - 1 is now first at i (from the top down, so that a
    // second entry of the same name does not take the first's place).
    for (size_t i = sortedNameIds_.size(); i-- > position + 1;) {
        int32_t& first = firstPosition_[sortedNameIds_[i]];
        if (first == static_cast<int32_t>(i - 1)) first = static_cast<int32_t>(i);
    }
    int32_t& mine = firstPosition_[slotNames_[s]];
    if (mine < 0 || mine > static_cast<int32_t>(position)) mine = static_cast<int32_t>(position);
}

void OutputNames::insertSorted(NameSlot slot) {
    if (unsorted_ != 1 || std::find(sortedSlots_.begin(), sortedSlots_.end(), slot) != sortedSlots_.end()) {
        RebuildSortedList();
    } else {
        // After every name that sorts before it or alike with a lower slot.
        const std::string& name = nameList_[static_cast<size_t>(slot)];
        size_t lo = 0, hi = sortedNames_.size();
        while (lo < hi) {
            const size_t mid = (lo + hi) / 2;
            const int order = sortedNames_[mid].compare(name);
            if (order < 0 || (order == 0 && sortedSlots_[mid] < slot))
                lo = mid + 1;
            else
                hi = mid;
        }
        insertAt(lo, slot);
        positionMap_.resize(sortedNames_.size());
        std::iota(positionMap_.begin(), positionMap_.end(), uint16_t{0});
        unsorted_ = 0;
    }
    const int found = sortedPosition(slotNames_[static_cast<size_t>(slot)]);
    const size_t last = positionMap_.size() - 1;
    if (found >= 0 && static_cast<size_t>(found) != last)
        for (size_t i = static_cast<size_t>(found); i <= last; ++i) positionMap_[i] = static_cast<uint16_t>(i + 1);
    positionMap_[last] = 0;
}

void OutputNames::removeSorted(NameSlot slot) {
    if (unsorted_ != 0) RebuildSortedList();
    consumePositionMap();
    const NameId id = slotNames_[static_cast<size_t>(slot)];
    const int found = sortedPosition(id);
    if (found < 0) return;
    const size_t p = static_cast<size_t>(found);
    const auto at = static_cast<std::ptrdiff_t>(p);
    sortedNames_.erase(sortedNames_.begin() + at);
    sortedIds_.erase(sortedIds_.begin() + at);
    sortedSlots_.erase(sortedSlots_.begin() + at);
    sortedNameIds_.erase(sortedNameIds_.begin() + at);
    for (size_t i = p; i < sortedNameIds_.size(); ++i) {
        int32_t& first = firstPosition_[sortedNameIds_[i]];
        if (first == static_cast<int32_t>(i + 1)) first = static_cast<int32_t>(i);
        positionMap_[i + 1] = static_cast<uint16_t>(i);
    }
    firstPosition_[id] = p < sortedNameIds_.size() && sortedNameIds_[p] == id ? static_cast<int32_t>(p) : -1;
    positionMap_[p] = 0;  // whatever was connected to the removed name falls to " Off (0)"
}

const std::string& OutputNames::sortedName(uint16_t position) const {
    return position < sortedNames_.size() ? sortedNames_[position] : sortedNames_.front();
}

NameId OutputNames::sortedNameId(uint16_t position) const {
    return position < sortedNameIds_.size() ? sortedNameIds_[position] : sortedNameIds_.front();
}

BusId OutputNames::sortedId(uint16_t position) const {
    return position < sortedIds_.size() ? sortedIds_[position] : BusId{0};
}

}  // namespace quillmer
