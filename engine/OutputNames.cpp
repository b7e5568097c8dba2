#include "engine/OutputNames.h"

#include <algorithm>
#include <numeric>

#include "engine/OutputBus.h"

namespace quillmer {

void OutputNames::Init() {
    nameList_.assign(kBusSize, std::string());
    idList_.assign(kBusSize, 0);
    for (BusId id = 0; id < kSystemOutputCount; ++id) enter(static_cast<NameSlot>(id), systemOutput(id).name, id);
    topNameSlot_ = kSystemOutputCount - 1;
    RebuildSortedList();
}

NameSlot OutputNames::AllocNameSlot() {
    for (NameSlot s = 0; s <= topNameSlot_; ++s)
        if (nameList_[static_cast<size_t>(s)] == kFreed) return s;
    ++topNameSlot_;
    if (static_cast<size_t>(topNameSlot_) >= nameList_.size()) {
        nameList_.resize(nameList_.size() + 1);
        idList_.resize(idList_.size() + 1);
    }
    return topNameSlot_;
}

NameSlot OutputNames::FindNameSlot(std::string_view name) const {
    for (NameSlot s = 0; s <= topNameSlot_; ++s)
        if (nameList_[static_cast<size_t>(s)] == name) return s;
    return 0;
}

void OutputNames::enter(NameSlot slot, std::string name, BusId id) {
    nameList_.at(static_cast<size_t>(slot)) = std::move(name);
    idList_.at(static_cast<size_t>(slot)) = id;
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
    sortedNames_.resize(live.size());
    sortedIds_.resize(live.size());
    for (size_t i = 0; i < live.size(); ++i) {
        sortedNames_[i] = nameList_[static_cast<size_t>(live[i])];
        sortedIds_[i] = idList_[static_cast<size_t>(live[i])];
    }
    positionMap_.resize(live.size());
    std::iota(positionMap_.begin(), positionMap_.end(), uint16_t{0});
}

void OutputNames::consumePositionMap() {
    positionMap_.resize(sortedNames_.size());
    std::iota(positionMap_.begin(), positionMap_.end(), uint16_t{0});
}

int OutputNames::sortedPosition(std::string_view name) const {
    const auto it = std::lower_bound(sortedNames_.begin(), sortedNames_.end(), name,
                                     [](const std::string& a, std::string_view b) { return a < b; });
    if (it == sortedNames_.end() || *it != name) return -1;
    return static_cast<int>(it - sortedNames_.begin());
}

void OutputNames::insertSorted(NameSlot slot) {
    RebuildSortedList();
    const int found = sortedPosition(OutputName(slot));
    const size_t last = positionMap_.size() - 1;
    if (found >= 0 && static_cast<size_t>(found) != last)
        for (size_t i = static_cast<size_t>(found); i <= last; ++i) positionMap_[i] = static_cast<uint16_t>(i + 1);
    positionMap_[last] = 0;
}

void OutputNames::removeSorted(NameSlot slot) {
    RebuildSortedList();
    const int found = sortedPosition(OutputName(slot));
    if (found < 0) return;
    const size_t p = static_cast<size_t>(found);
    for (size_t i = p; i + 1 < sortedNames_.size(); ++i) {
        sortedNames_[i] = std::move(sortedNames_[i + 1]);
        sortedIds_[i] = sortedIds_[i + 1];
        positionMap_[i + 1] = static_cast<uint16_t>(i);
    }
    sortedNames_.pop_back();
    sortedIds_.pop_back();
    positionMap_[p] = 0;  // whatever was connected to the removed name falls to " Off (0)"
}

const std::string& OutputNames::sortedName(uint16_t position) const {
    return position < sortedNames_.size() ? sortedNames_[position] : sortedNames_.front();
}

BusId OutputNames::sortedId(uint16_t position) const {
    return position < sortedIds_.size() ? sortedIds_[position] : BusId{0};
}

uint16_t OutputNames::mapPosition(uint16_t oldPosition) const {
    return oldPosition < positionMap_.size() ? positionMap_[oldPosition] : uint16_t{0};
}

}  // namespace quillmer
