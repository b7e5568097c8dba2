#pragma once
// The genetic code as Quillmer numbers it. Bases: G A C T = 0..3. A codon's number is
// first x 16 + second x 4 + third, so 0 is GGG and 63 TTT. Amino acids 0..20 in the order
// of AminoLetters, 20 being the stop codons ("ZOT").

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillmer::bio {

constexpr int kCodons = 64;
constexpr int kAminos = 21;
constexpr int kStop = 20;

inline constexpr std::array<char, 4> kBaseLetters{'G', 'A', 'C', 'T'};
inline constexpr std::string_view kAminoLetters = "IFVLWAGMCYPTSHNQDEKR?";
inline constexpr std::array<std::string_view, kAminos> kAminoNames{
    "ILE", "PHE", "VAL", "LEU", "TRP", "ALA", "GLY", "MET", "CYS", "TYR", "PRO",
    "THR", "SER", "HIS", "ASN", "GLN", "ASP", "GLU", "LYS", "ARG", "ZOT"};
// One codon of each amino acid.
inline constexpr std::array<uint8_t, kAminos> kAminoCodon{29, 62, 12, 60, 48, 8, 0, 28, 50, 54, 40,
                                                          24, 56, 38, 22, 36, 6, 4, 20, 32, 49};

const std::array<uint8_t, kCodons>& codonToAmino();
// The reverse complement of each codon (G-C, A-T).
const std::array<uint8_t, kCodons>& antisense();
// By character code: the amino number of an amino letter, 20 for any other.
const std::array<uint8_t, 128>& letterToAmino();

// "GGG" .. "TTT".
std::string codonName(int codon);
// The base code of a nucleotide letter (either case, U as T), -1 for any other.
int baseCode(char c);

}  // namespace quillmer::bio
