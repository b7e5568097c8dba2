#pragma once
// The bio sequence file (.bst): the 24 sequences of a bio set in one pass, little endian.
//   24 names            s (u16 length, Windows-1252 text)
//   24 last positions   i32
//   24 codon arrays     u16 dimensions (0 empty, 1), then u32 count, u32 lower bound, bytes
//   24 feature arrays   the same, with u16 elements
//   24 feature counts   i16
//   amino ranks         21 x 24 bytes, amino x 24 + sequence
// Nothing follows. A sequence whose arrays are shorter than its last position says, or a
// codon above 63, makes the file corrupt. No Qt.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "modules/sequencers/BioData.h"

namespace quillmer {

// Parses a whole file's bytes; false with `reason` (without the file's name).
bool parseBioBytes(std::span<const uint8_t> bytes, BioSet& set, std::string& reason);
std::vector<uint8_t> bioBytes(const BioSet& set);

// Reads a file; false with a message naming it. `set` changes only on success.
bool readBioFile(const std::string& path, BioSet& set, std::string& error);
bool writeBioFile(const std::string& path, const BioSet& set, std::string& error);

// Reads a file and makes it the program's bio set; false (and the set as it was) when it
// can't be read. A missing file is told in `error` too; callers that treat it as no error
// look before.
bool loadBioFile(const std::string& path, std::string& error);
// The shipped default.bst, once, at start: nothing when a set is already installed.
void loadDefaultBioFileOnce();
// The side file beside a patch (its base name with .bst), when there is one.
void loadBioSideFile(const std::string& patchPath);

}  // namespace quillmer
