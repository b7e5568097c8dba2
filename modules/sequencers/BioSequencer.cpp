#include "modules/sequencers/BioSequencer.h"

#include "engine/Engine.h"
#include "modules/sequencers/BioCodes.h"

namespace quillmer {

namespace {
const ModuleTypeId kBioSeqId = *typeIdByName("BioSeq");
const ModuleTypeId kBioFlagId = *typeIdByName("BioFlag");
constexpr uint16_t kOpenBits = 0x007F;
constexpr uint16_t kCloseBits = 0x3F80;

// Read backward, a feature's opening is its closing.
uint16_t swapHalves(uint16_t w) {
    return static_cast<uint16_t>((w & ~(kOpenBits | kCloseBits)) | ((w & kOpenBits) << 7) | ((w & kCloseBits) >> 7));
}
}  // namespace

// --- BioSeq ---

BioSeq::BioSeq() : SettingsModule<1>(kBioSeqId, kInputs) {}

void BioSeq::selectSequence(const BioSet& set) {
    selected_ = in(5);
    seenVersion_ = bioSetVersion();
    const bool inRange = selected_ < kBioSequences;
    const BioSequence* seq = inRange ? &set.sequences[static_cast<size_t>(selected_)] : nullptr;
    last_ = seq != nullptr ? seq->last : -1;
    noData_ = seq == nullptr || !seq->hasData();
    lastShownPos_ = lastSum_ = -1;
    pendingFlag_ = kBioFirstMark;
    dnaMode_ = in(1) != 0;
    reverse_ = in(2) != 0;
    pos_ = reverse_ ? last_ : 0;
    baseIndex_ = 0;
    holdBase_ = false;
    label_ = noData_ ? std::string(kNoData) : seq->name;
    viewChanged = true;
}

void BioSeq::advance() {
    reverse_ = in(2) != 0;
    pos_ += reverse_ ? -1 : 1;
    if (pos_ > last_) pos_ = 0;
    if (pos_ < 0) pos_ = last_;
}

void BioSeq::update(Engine& engine) {
    const BioSet& set = bioSet();
    const int reset = in(3);
    const bool ordinary = reset != kStrobe && !engine.ResyncPending && !noData_ && in(5) == selected_ &&
                          seenVersion_ == bioSetVersion();
    if (!ordinary) {
        selectSequence(set);
        if (noData_) return;
    } else if (in(0) == 0) {
        armed_ = true;
    } else if (armed_ && reset == 0) {
        armed_ = false;
        if (!((flagWord_ & kBioEndMark) != 0 && stopAtEnd())) {
            if (in(1) == 0) {
                dnaMode_ = false;
                baseIndex_ = 0;
                advance();
            } else {
                dnaMode_ = true;
                if (fourClocks() && baseIndex_ == 2 && !holdBase_) {
                    holdBase_ = true;
                } else {
                    holdBase_ = false;
                    if (++baseIndex_ > 2) {
                        baseIndex_ = 0;
                        advance();
                    }
                }
            }
        }
    }

    if (pos_ + baseIndex_ == lastSum_) return;
    lastSum_ = pos_ + baseIndex_;
    const BioSequence& seq = set.sequences[static_cast<size_t>(selected_)];
    int c = seq.codons[static_cast<size_t>(pos_)] & 63;
    uint16_t w = static_cast<uint16_t>(seq.flags[static_cast<size_t>(pos_)] | pendingFlag_);
    pendingFlag_ = 0;
    if (!reverse_) {
        if (pos_ == last_) w |= kBioEndMark;
    } else {
        c = bio::antisense()[static_cast<size_t>(c)];
        w = swapHalves(w);
        if (pos_ == 0) w |= kBioEndMark;
    }
    flagWord_ = w;
    shownCodon_ = c;
    if (!dnaMode_) {
        const int a = bio::codonToAmino()[static_cast<size_t>(c)];
        setOutput(in(4) == 0 ? a : set.sort[static_cast<size_t>(a * kBioSequences + selected_)]);
        letter_ = bio::kAminoLetters[static_cast<size_t>(a)];
        position_ = pos_;
        lastShownPos_ = pos_;
    } else {
        const int base = (c >> ((2 - baseIndex_) * 2)) & 3;
        setOutput(base);
        letter_ = bio::kBaseLetters[static_cast<size_t>(base)];
        if (pos_ != lastShownPos_) {
            position_ = pos_;
            lastShownPos_ = pos_;
        }
    }
    viewChanged = true;
}

std::string BioSeq::addressText(int box) const {
    if (noData_) return {};
    switch (box) {
        case 0: return std::to_string(position_ + 1);
        case 1: return bio::codonName(shownCodon_);
        default: return std::string(bio::kAminoNames[bio::codonToAmino()[static_cast<size_t>(shownCodon_)]]);
    }
}

// --- BioFlag ---

BioFlag::BioFlag() : TapModule<1, 1>(kBioFlagId, kBioSeqId, kInputs) {}

void BioFlag::update(Engine& engine) {
    if (mastersGrew(engine)) viewChanged = true;
    const auto* seq = static_cast<const BioSeq*>(master(engine));
    const uint16_t v = seq != nullptr ? seq->flagWord() : 0;
    const size_t n = static_cast<size_t>(in(0) % 10);
    if ((v & kBioFirstMark) != 0) {
        gates_.fill(0);
        allBits_ = 0;
        seenWord_ = kBioFirstMark;
    }
    if (v != seenWord_) {
        const uint16_t effective = static_cast<uint16_t>((seenWord_ & kCloseBits) | (v & ~kCloseBits));
        seenWord_ = v;
        const bool end = (effective & kBioEndMark) != 0;
        gates_[0] = end ? 127 : 0;
        gates_[9] = end ? 1 : 0;
        allBits_ = static_cast<uint8_t>(end ? (allBits_ | 1) : (allBits_ & ~1));
        for (int k = 1; k <= kBioFeaturePairs; ++k) {
            if ((effective & (1u << (6 + k))) != 0) {
                gates_[static_cast<size_t>(k)] = 0;
                allBits_ = static_cast<uint8_t>(allBits_ & ~(1 << k));
            }
            if ((effective & (1u << (k - 1))) != 0) {
                gates_[static_cast<size_t>(k)] = 127;
                allBits_ = static_cast<uint8_t>(allBits_ | (1 << k));
            }
        }
        gates_[8] = allBits_;
    }
    setOutput(gates_[n]);
}

}  // namespace quillmer
