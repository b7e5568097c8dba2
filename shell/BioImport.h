#pragma once
// Turning sequence files into a bio set: FASTA (each record a coding sequence read in
// frame from its first base; a protein record is written back as codons, one per amino
// acid) and GenBank (each CDS feature a coding sequence, spliced and complemented as its
// location says; the other features become the feature marks of the positions they
// cover). At most 24 sequences are taken. No Qt.

#include <string>
#include <string_view>
#include <vector>

#include "modules/sequencers/BioData.h"

namespace quillmer {

struct BioImportResult {
    BioSet set;
    int sequences = 0;
    std::vector<std::string> notes;  // what was left out, and why
};

// `source` names the input in messages. False with `error` naming the source, the record
// and the line of a malformed or non-coding input.
bool importBioText(std::string_view text, const std::string& source, BioImportResult& result, std::string& error);
bool importBioFile(const std::string& path, BioImportResult& result, std::string& error);

// The feature pair (0..6) a GenBank feature key marks; -1 for a key that marks nothing.
int featurePairOf(std::string_view key);

}  // namespace quillmer
