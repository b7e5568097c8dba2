#include "modules/sequencers/BioData.h"

#include <algorithm>
#include <memory>
#include <numeric>

#include "modules/sequencers/BioCodes.h"

namespace quillmer {

namespace {
struct Held {
    BioSet set;
    uint32_t version = 0;
};
Held& held() {
    static Held h;
    return h;
}
}  // namespace

void rankAminos(BioSet& set) {
    for (size_t s = 0; s < set.sequences.size(); ++s) {
        const BioSequence& seq = set.sequences[s];
        std::array<int, bio::kAminos> counts{};
        for (uint8_t c : seq.codons) ++counts[bio::codonToAmino()[c & 63]];
        std::array<int, bio::kAminos> order{};
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(),
                         [&](int a, int b) { return counts[static_cast<size_t>(a)] > counts[static_cast<size_t>(b)]; });
        for (size_t rank = 0; rank < order.size(); ++rank)
            set.sort[static_cast<size_t>(order[rank]) * kBioSequences + s] = static_cast<uint8_t>(rank);
    }
}

const BioSet& bioSet() { return held().set; }
uint32_t bioSetVersion() { return held().version; }
void installBioSet(BioSet set) {
    held().set = std::move(set);
    ++held().version;
}

}  // namespace quillmer
