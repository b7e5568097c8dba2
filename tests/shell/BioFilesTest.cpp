// Bio sequence files: the .bst round trip through the importer, files that are short,
// long, corrupt or not files at all, and the FASTA and GenBank readers on real records
// (checked against the protein each record states) and on malformed ones.

#include <gtest/gtest.h>

#include <fstream>

#include "SessionHarness.h"
#include "modules/sequencers/BioCodes.h"
#include "shell/BioFile.h"
#include "shell/BioImport.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
const std::string kRecords = std::string(QUILLMER_SOURCE_DIR) + "/tests/data/bio/globin-fau.gb";

std::string protein(const BioSequence& s) {
    std::string p;
    for (uint8_t c : s.codons) p += bio::kAminoLetters[bio::codonToAmino()[c]];
    return p;
}

BioImportResult imported(std::string_view text) {
    BioImportResult r;
    std::string error;
    EXPECT_TRUE(importBioText(text, "test", r, error)) << error;
    return r;
}

std::string importError(std::string_view text) {
    BioImportResult r;
    std::string error;
    EXPECT_FALSE(importBioText(text, "in.fa", r, error));
    return error;
}

void writeText(const std::string& path, std::string_view text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
}
}  // namespace

TEST(BioImport, GenBankCodingSequencesTranslateToTheStatedProteins) {
    BioImportResult r;
    std::string error;
    ASSERT_TRUE(importBioFile(kRecords, r, error)) << error;
    ASSERT_EQ(r.sequences, 2);
    // Epsilon-globin: three exons joined; fau: one span. Each ends with its stop codon.
    const BioSequence& globin = r.set.sequences[0];
    const BioSequence& fau = r.set.sequences[1];
    EXPECT_EQ(globin.name, "V00508 CAA23766.1");
    EXPECT_EQ(protein(globin),
              "MVHFTAEEKAAVTSLWSKMNVEEAGGEALGRLLVVYPWTQRFFDSFGNLSSPSAILGNPKVKAHGKKVLTSFGDAIKNMDNLKPAFAKLSELHCDKLHVDPENFKLLGNVMVIILATHFGKEFTPEVQAAWQKLVSAVAIALAHKYH?");
    EXPECT_EQ(protein(fau).substr(0, 20), "MQLFVRAQELHTFEVTGQET");
    EXPECT_EQ(fau.last, 133);
    // fau's marks: the gene spans it all ("<>"), the ubiquitin part is codons 0..73 ("{}").
    EXPECT_NE(fau.flags[0] & (1 << 0), 0);
    EXPECT_NE(fau.flags[133] & (1 << 7), 0);
    EXPECT_NE(fau.flags[0] & (1 << 3), 0);
    EXPECT_NE(fau.flags[73] & (1 << 10), 0);
    EXPECT_NE(fau.flags[74] & (1 << 3), 0) << "the S30 part opens where the first closed";
    EXPECT_EQ(r.set.sequences[2].last, -1) << "the rest are empty";
}

TEST(BioImport, ComplementedJoinsReadTheOtherStrandBackward) {
    const std::string record =
        "LOCUS       TOY 30 bp DNA\n"
        "FEATURES             Location/Qualifiers\n"
        "     CDS             complement(join(1..6,10..12))\n"
        "                     /gene=\"toy\"\n"
        "     repeat_region   4..6\n"
        "ORIGIN\n"
        "        1 catgccnnna aannnnnnnn nnnnnnnnnn\n"
        "//\n";
    const BioImportResult r = imported(record);
    ASSERT_EQ(r.sequences, 1);
    // Bases 10..12 then 1..6, complemented and reversed: TTT GGC ATG.
    const BioSequence& s = r.set.sequences[0];
    EXPECT_EQ(s.name, "TOY toy");
    ASSERT_EQ(s.codons.size(), 3u);
    EXPECT_EQ(bio::codonName(s.codons[0]), "TTT");
    EXPECT_EQ(bio::codonName(s.codons[1]), "GGC");
    EXPECT_EQ(bio::codonName(s.codons[2]), "ATG");
    EXPECT_EQ(s.flags[1], (1 << 5) | (1 << 12)) << "bases 4..6 are the second codon read backward";
}

TEST(BioImport, FastaReadsBasesInFrameAndProteinsAsCodons) {
    BioImportResult r = imported(">one first\nATGGCC\ntgg taa\n>two\nMKW*\n");
    ASSERT_EQ(r.sequences, 2);
    EXPECT_EQ(r.set.sequences[0].name, "one first");
    EXPECT_EQ(protein(r.set.sequences[0]), "MAW?");
    EXPECT_EQ(protein(r.set.sequences[1]), "MKW?");
    EXPECT_EQ(r.set.sequences[1].codons[0], bio::kAminoCodon[7]);
    r = imported(">uracil\nAUGGCCU\n");
    EXPECT_EQ(protein(r.set.sequences[0]), "MA") << "a partial codon at the end is left";
}

TEST(BioImport, MalformedAndNonCodingInputsNameTheRecordAndLine) {
    EXPECT_NE(importError(">a\nATGGCC\n>b\nATGGCCTT\nATGJ\n").find("record \"b\" (line 3), line 5: 'J'"), std::string::npos);
    EXPECT_NE(importError(">a\nATGGCCNNNATG\n").find("'N'"), std::string::npos) << "ambiguous bases are not amino acids here";
    EXPECT_NE(importError(">short\nATGGC\n").find("too short"), std::string::npos);
    EXPECT_NE(importError(">\n\n").find("holds no sequence"), std::string::npos);
    EXPECT_NE(importError("hello\n").find("line 1: neither FASTA"), std::string::npos);
    EXPECT_NE(importError("").find("empty"), std::string::npos);
    const std::string noCds = "\nLOCUS       NONE 6 bp\nFEATURES             Location/Qualifiers\n     gene            1..6\nORIGIN\n        1 atggcc\n//\n";
    EXPECT_NE(importError(noCds).find("record NONE (line 2): no coding sequence"), std::string::npos);
    const std::string badLocation = "LOCUS       BAD 6 bp\nFEATURES             Location/Qualifiers\n     CDS             join(1..\nORIGIN\n        1 atggcc\n//\n";
    EXPECT_NE(importError(badLocation).find("record BAD (line 1), line 3: CDS location"), std::string::npos);
    const std::string pastEnd = "LOCUS       LONG 6 bp\nFEATURES             Location/Qualifiers\n     CDS             1..9\nORIGIN\n        1 atggcc\n//\n";
    EXPECT_NE(importError(pastEnd).find("reaches base 9 of a sequence of 6"), std::string::npos);
    const std::string unended = "LOCUS       OPEN 6 bp\nORIGIN\n        1 atggcc\n";
    EXPECT_NE(importError(unended).find("no \"//\""), std::string::npos);
}

TEST(BioFile, ImportedSetsRoundTripByteForByte) {
    BioImportResult r;
    std::string error;
    ASSERT_TRUE(importBioFile(kRecords, r, error)) << error;
    ScratchDir dir;
    const std::string path = dir.file("genes.bst");
    ASSERT_TRUE(writeBioFile(path, r.set, error)) << error;
    BioSet back;
    ASSERT_TRUE(readBioFile(path, back, error)) << error;
    for (size_t s = 0; s < back.sequences.size(); ++s) {
        EXPECT_EQ(back.sequences[s].name, r.set.sequences[s].name);
        EXPECT_EQ(back.sequences[s].last, r.set.sequences[s].last);
        EXPECT_EQ(back.sequences[s].codons, r.set.sequences[s].codons);
        EXPECT_EQ(back.sequences[s].flags, r.set.sequences[s].flags);
        EXPECT_EQ(back.sequences[s].count, r.set.sequences[s].count);
    }
    EXPECT_EQ(back.sort, r.set.sort);
    EXPECT_EQ(bioBytes(back), readBytes(path));
}

TEST(BioFile, ShortLongCorruptAndNonFilesAreRefusedNamingThePath) {
    BioSet set;
    set.sequences[0] = {"x", 2, {1, 2, 3}, {0, 0, 0}, 0};
    const std::vector<uint8_t> good = bioBytes(set);
    ScratchDir dir;
    BioSet out;
    out.sequences[3].name = "untouched";
    auto refused = [&](const std::vector<uint8_t>& bytes, const std::string& why) {
        const std::string path = dir.file("bad.bst");
        writeText(path, std::string(bytes.begin(), bytes.end()));
        std::string error;
        EXPECT_FALSE(readBioFile(path, out, error)) << why;
        EXPECT_NE(error.find(path), std::string::npos) << error;
        EXPECT_EQ(out.sequences[3].name, "untouched") << why;
        return error;
    };
    refused(std::vector<uint8_t>(good.begin(), good.end() - 1), "short");
    std::vector<uint8_t> longer = good;
    longer.push_back(0);
    EXPECT_NE(refused(longer, "long").find("1 bytes follow"), std::string::npos);
    std::vector<uint8_t> badCodon = good;
    // Sequence 0's codons follow 24 names (2 + 1 bytes for "x", 2 each for the rest),
    // 24 positions and the array's tag.
    badCodon[3 + 23 * 2 + 24 * 4 + 10] = 64;
    EXPECT_NE(refused(badCodon, "codon").find("not a codon number"), std::string::npos);
    BioSet liar = set;
    liar.sequences[0].last = 9;
    EXPECT_NE(refused(bioBytes(liar), "last").find("ends at position 9"), std::string::npos);

    std::string error;
    EXPECT_FALSE(readBioFile(dir.path.string(), out, error));
    EXPECT_NE(error.find(dir.path.string()), std::string::npos);
    EXPECT_FALSE(readBioFile(dir.file("missing.bst"), out, error));
    BioImportResult r;
    EXPECT_FALSE(importBioFile(dir.path.string(), r, error));
    EXPECT_NE(error.find(dir.path.string()), std::string::npos);
}

TEST(BioFile, TheSideFileBesideAPatchReplacesTheSet) {
    ScratchDir dir;
    BioSet set;
    set.sequences[0] = {"side", 1, {1, 2}, {0, 0}, 0};
    std::string error;
    ASSERT_TRUE(writeBioFile(dir.file("song.bst"), set, error)) << error;
    const uint32_t before = bioSetVersion();
    loadBioSideFile(dir.file("song.qmp"));
    EXPECT_EQ(bioSetVersion(), before + 1);
    EXPECT_EQ(bioSet().sequences[0].name, "side");
    loadBioSideFile(dir.file("other.qmp"));
    EXPECT_EQ(bioSetVersion(), before + 1) << "no side file: the set stays";
}
