// BioSeq's codon and base walks, forward and antisense, four clocks per codon, the stop at
// the end, and BioFlag's gates from the feature marks, a feature closing one position
// after its mark.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "modules/sequencers/BioCodes.h"
#include "modules/sequencers/BioSequencer.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
int codon(std::string_view three) {
    return bio::baseCode(three[0]) * 16 + bio::baseCode(three[1]) * 4 + bio::baseCode(three[2]);
}

// Sequence 2: ATG GCC TGG TAA (MET ALA TRP stop); a "()" feature over positions 1..2 and a
// "<>" that opens and closes on position 0.
BioSet sampleSet() {
    BioSet set;
    BioSequence& s = set.sequences[2];
    s.name = "sample";
    s.codons = {static_cast<uint8_t>(codon("ATG")), static_cast<uint8_t>(codon("GCC")), static_cast<uint8_t>(codon("TGG")),
                static_cast<uint8_t>(codon("TAA"))};
    s.flags = {0x0001 | 0x0080, 0x0002, static_cast<uint16_t>(0x0002 << 7), 0};
    s.last = 3;
    set.sequences[5].name = "too short";
    set.sequences[5].codons = {1};
    set.sequences[5].flags = {0};
    set.sequences[5].last = 0;
    rankAminos(set);
    return set;
}

struct BioRig {
    ModuleHarness h;
    BioSeq& seq;
    BioRig() : seq(static_cast<BioSeq&>(h.add("BioSeq"))) {
        installBioSet(sampleSet());
        h.set(seq, 5, 2);
        h.ticks(1);
    }
    std::vector<int> walk(int edges) {
        std::vector<int> out;
        for (int i = 0; i < edges; ++i) {
            h.edge(seq, 0);
            out.push_back(h.out(seq));
        }
        return out;
    }
};
}  // namespace

TEST(BioCodes, TablesFollowTheGeneticCodeAndThePairingRule) {
    EXPECT_EQ(bio::codonName(0), "GGG");
    EXPECT_EQ(bio::codonName(63), "TTT");
    EXPECT_EQ(bio::codonToAmino()[static_cast<size_t>(codon("ATG"))], 7);
    EXPECT_EQ(bio::codonToAmino()[static_cast<size_t>(codon("TAA"))], bio::kStop);
    EXPECT_EQ(bio::codonToAmino()[static_cast<size_t>(codon("TGA"))], bio::kStop);
    EXPECT_EQ(bio::antisense()[0], 42);
    EXPECT_EQ(bio::antisense()[2], 10);
    for (int c = 0; c < 64; ++c) {
        ASSERT_EQ(bio::antisense()[bio::antisense()[static_cast<size_t>(c)]], c) << "twice is the codon itself";
    }
    for (int a = 0; a < bio::kAminos; ++a) {
        ASSERT_EQ(bio::codonToAmino()[bio::kAminoCodon[static_cast<size_t>(a)]], a) << bio::kAminoNames[static_cast<size_t>(a)];
        if (a < bio::kStop) {
            ASSERT_EQ(bio::letterToAmino()[static_cast<size_t>(bio::kAminoLetters[static_cast<size_t>(a)])], a);
        }
    }
    EXPECT_EQ(bio::letterToAmino()['B'], bio::kStop);
}

TEST(BioSeq, AminoWalkWrapsAndStopsAtTheEndWhenAsked) {
    BioRig r;
    EXPECT_EQ(r.h.out(r.seq), 7) << "the first output comes at the select: MET";
    EXPECT_EQ(r.seq.fileLabel(), "sample");
    EXPECT_EQ(r.walk(4), (std::vector<int>{5, 4, 20, 7}));
    EXPECT_EQ(r.seq.addressText(0), "1");
    EXPECT_EQ(r.seq.addressText(1), "ATG");
    EXPECT_EQ(r.seq.addressText(2), "MET");
    r.seq.setStopAtEnd(true);
    EXPECT_EQ(r.walk(5), (std::vector<int>{5, 4, 20, 20, 20}));
    EXPECT_NE(r.seq.flagWord() & kBioEndMark, 0);
    // Sort: each amino acid's rank in the sequence instead.
    r.seq.setStopAtEnd(false);
    r.h.set(r.seq, 4, 1);
    r.walk(1);
    const BioSet& set = bioSet();
    EXPECT_EQ(r.h.out(r.seq), set.sort[7 * kBioSequences + 2]);
}

TEST(BioSeq, AntisenseStartsAtTheLastCodonReverseComplemented) {
    BioRig r;
    r.h.set(r.seq, 2, 1);
    r.h.set(r.seq, 3, 127);
    r.h.ticks(1);
    r.h.set(r.seq, 3, 0);
    r.h.ticks(1);
    const int first = bio::codonToAmino()[bio::antisense()[static_cast<size_t>(codon("TAA"))]];  // TTA: LEU
    EXPECT_EQ(r.h.out(r.seq), first);
    EXPECT_EQ(first, 3);
    const std::vector<int> rest = r.walk(3);
    EXPECT_EQ(rest[2], bio::codonToAmino()[bio::antisense()[static_cast<size_t>(codon("ATG"))]]) << "CAT: HIS";
    EXPECT_NE(r.seq.flagWord() & kBioEndMark, 0) << "the end mark comes at position 0";
}

TEST(BioSeq, DnaWalkGivesBasesAndFourClocksHoldTheThirdBase) {
    BioRig r;
    r.h.set(r.seq, 1, 1);
    r.h.set(r.seq, 3, 127);
    r.h.ticks(1);
    r.h.set(r.seq, 3, 0);
    r.h.ticks(1);
    const int A = 1, T = 3, G = 0, C = 2;
    EXPECT_EQ(r.h.out(r.seq), A);
    EXPECT_EQ(r.walk(5), (std::vector<int>{T, G, G, C, C}));
    r.seq.setFourClocks(true);
    r.h.set(r.seq, 3, 127);
    r.h.ticks(1);
    r.h.set(r.seq, 3, 0);
    r.h.ticks(1);
    // A T G G (held) G C C C (held) T ...
    EXPECT_EQ(r.walk(8), (std::vector<int>{T, G, G, G, C, C, C, T}));
}

TEST(BioSeq, ShortMissingAndOutOfRangeSequencesAreNoData) {
    BioRig r;
    r.h.set(r.seq, 5, 5);
    r.h.ticks(1);
    EXPECT_TRUE(r.seq.noData()) << "one position is too short";
    EXPECT_EQ(r.seq.fileLabel(), BioSeq::kNoData);
    r.h.set(r.seq, 5, 24);
    r.h.ticks(1);
    EXPECT_TRUE(r.seq.noData());
    r.h.set(r.seq, 5, 127);
    r.walk(3);
    EXPECT_TRUE(r.seq.noData());
    r.h.set(r.seq, 5, 2);
    r.h.ticks(1);
    EXPECT_FALSE(r.seq.noData());
    // A new set is picked up at once.
    BioSet other = sampleSet();
    other.sequences[2].codons[0] = static_cast<uint8_t>(codon("TGG"));
    installBioSet(std::move(other));
    r.h.ticks(1);
    EXPECT_EQ(r.h.out(r.seq), 4);
}

TEST(BioFlag, FeaturesGateFromTheirMarksAndCloseOnePositionLate) {
    BioRig r;
    std::array<BioFlag*, 4> flags{};
    const int which[] = {1, 2, 8, 9};
    for (size_t i = 0; i < flags.size(); ++i) {
        flags[i] = &static_cast<BioFlag&>(r.h.add("BioFlag"));
        flags[i]->chooseMaster(r.seq.Index);
        r.h.set(*flags[i], 0, which[i]);
    }
    auto gates = [&] {
        std::vector<int> g;
        for (BioFlag* f : flags) g.push_back(r.h.out(*f));
        return g;
    };
    r.h.set(r.seq, 3, 127);
    r.h.ticks(1);
    r.h.set(r.seq, 3, 0);
    r.h.ticks(2);
    EXPECT_EQ(gates(), (std::vector<int>{127, 0, 2, 0})) << "position 0: <> opens and closes there";
    r.h.edge(r.seq, 0);
    r.h.ticks(1);
    EXPECT_EQ(gates(), (std::vector<int>{0, 127, 4, 0})) << "position 1: <> off, () on";
    r.h.edge(r.seq, 0);
    r.h.ticks(1);
    EXPECT_EQ(gates(), (std::vector<int>{0, 127, 4, 0})) << "position 2: () closes here, still on";
    r.h.edge(r.seq, 0);
    r.h.ticks(1);
    EXPECT_EQ(gates(), (std::vector<int>{0, 0, 1, 1})) << "position 3: the end";
    r.h.edge(r.seq, 0);
    r.h.ticks(1);
    EXPECT_EQ(gates(), (std::vector<int>{127, 0, 2, 0})) << "around again";
}
