#include "modules/sequencers/BioCodes.h"

namespace quillmer::bio {

const std::array<uint8_t, kCodons>& codonToAmino() {
    static const std::array<uint8_t, kCodons> table = [] {
        // Runs of codon numbers and their amino acid, in the G A C T numbering.
        struct Run {
            int first, last, amino;
        };
        constexpr Run runs[] = {{0, 3, 6},    {4, 5, 17},   {6, 7, 16},   {8, 11, 5},   {12, 15, 2},  {16, 17, 19},
                                {18, 19, 12}, {20, 21, 18}, {22, 23, 14}, {24, 27, 11}, {28, 28, 7},  {29, 31, 0},
                                {32, 35, 19}, {36, 37, 15}, {38, 39, 13}, {40, 43, 10}, {44, 47, 3},  {48, 48, 4},
                                {49, 49, 20}, {50, 51, 8},  {52, 53, 20}, {54, 55, 9},  {56, 59, 12}, {60, 61, 3},
                                {62, 63, 1}};
        std::array<uint8_t, kCodons> t{};
        for (const Run& r : runs)
            for (int c = r.first; c <= r.last; ++c) t[static_cast<size_t>(c)] = static_cast<uint8_t>(r.amino);
        return t;
    }();
    return table;
}

const std::array<uint8_t, kCodons>& antisense() {
    static const std::array<uint8_t, kCodons> table = [] {
        std::array<uint8_t, kCodons> t{};
        constexpr int complement[4] = {2, 3, 0, 1};  // G<->C, A<->T
        for (int c = 0; c < kCodons; ++c) {
            const int b0 = c >> 4, b1 = (c >> 2) & 3, b2 = c & 3;
            t[static_cast<size_t>(c)] = static_cast<uint8_t>(complement[b2] * 16 + complement[b1] * 4 + complement[b0]);
        }
        return t;
    }();
    return table;
}

const std::array<uint8_t, 128>& letterToAmino() {
    static const std::array<uint8_t, 128> table = [] {
        std::array<uint8_t, 128> t{};
        t.fill(kStop);
        for (size_t a = 0; a < kAminoLetters.size(); ++a)
            if (kAminoLetters[a] != '?') t[static_cast<size_t>(kAminoLetters[a])] = static_cast<uint8_t>(a);
        return t;
    }();
    return table;
}

std::string codonName(int codon) {
    codon &= 63;
    return {kBaseLetters[static_cast<size_t>(codon >> 4)], kBaseLetters[static_cast<size_t>((codon >> 2) & 3)],
            kBaseLetters[static_cast<size_t>(codon & 3)]};
}

int baseCode(char c) {
    switch (c) {
        case 'G': case 'g': return 0;
        case 'A': case 'a': return 1;
        case 'C': case 'c': return 2;
        case 'T': case 't': case 'U': case 'u': return 3;
        default: return -1;
    }
}

}  // namespace quillmer::bio
