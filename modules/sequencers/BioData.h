#pragma once
// The bio sequence set the whole program shares, one at a time: up to 24 coding sequences,
// each a codon number and a feature word per position, with each amino acid's rank. A new
// set replaces the old; BioSeq modules pick it up at their next select. Needs the engine
// lock (the set is read by the tick).
//
// Feature word: bits 0..6 open the pairs "<>", "()", "[]", "{}", "!|", "@#", "$%"; bits
// 7..13 close them in the same order; bit 14 is the end of the sequence; bit 15 the first
// output after a select.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace quillmer {

constexpr int kBioSequences = 24;
constexpr int kBioFeaturePairs = 7;
constexpr uint16_t kBioEndMark = 1u << 14;
constexpr uint16_t kBioFirstMark = 1u << 15;

struct BioSequence {
    std::string name;
    int32_t last = -1;               // last position, 0-based; below 1: no data
    std::vector<uint8_t> codons;     // codon number per position
    std::vector<uint16_t> flags;     // feature word per position
    int16_t count = 0;               // kept as read: the number of features marked
    bool hasData() const { return last >= 1 && codons.size() > static_cast<size_t>(last) && flags.size() > static_cast<size_t>(last); }
};

struct BioSet {
    std::array<BioSequence, kBioSequences> sequences;
    // Rank of amino a in sequence s at a x 24 + s: 0 for its most frequent amino acid.
    std::array<uint8_t, 21 * kBioSequences> sort{};
};

// Ranks every sequence's amino acids by how often they occur, most often first (ties by
// amino number), into set.sort.
void rankAminos(BioSet& set);

const BioSet& bioSet();
// Counts installs: a BioSeq selects again when it changes.
uint32_t bioSetVersion();
void installBioSet(BioSet set);

}  // namespace quillmer
