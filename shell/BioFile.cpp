#include "shell/BioFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

#include "engine/AtomicFile.h"
#include "engine/RecordBytes.h"
#include "engine/RegularFile.h"
#include "shell/DataFiles.h"

namespace quillmer {

namespace {
constexpr size_t kMaxBioFileBytes = size_t{256} << 20;
constexpr size_t kSortBytes = 21 * kBioSequences;

// An array's tag: 0 dimensions for an empty one, else one dimension of `count` elements.
uint32_t readArrayTag(ByteReader& in, size_t elementSize, const char* what, int s) {
    const uint16_t dims = in.u16();
    if (dims == 0) return 0;
    if (dims != 1) throw RecordFormatError(std::string(what) + " of sequence " + std::to_string(s) + " has " +
                                           std::to_string(dims) + " dimensions, not 1");
    const auto count = static_cast<uint32_t>(in.i32());
    in.i32();  // lower bound
    if (static_cast<uint64_t>(count) * elementSize > in.remaining())
        throw RecordFormatError(std::string(what) + " of sequence " + std::to_string(s) + " runs past the end of the file");
    return count;
}

void writeArrayTag(ByteWriter& out, size_t count) {
    if (count == 0) {
        out.u16(0);
        return;
    }
    out.u16(1);
    out.i32(static_cast<int32_t>(count));
    out.i32(0);
}
}  // namespace

bool parseBioBytes(std::span<const uint8_t> bytes, BioSet& set, std::string& reason) {
    BioSet read;
    try {
        ByteReader in(bytes.data(), bytes.size());
        for (BioSequence& seq : read.sequences) seq.name = in.str();
        for (BioSequence& seq : read.sequences) seq.last = in.i32();
        for (size_t s = 0; s < read.sequences.size(); ++s) {
            const uint32_t n = readArrayTag(in, 1, "the codons", static_cast<int>(s));
            auto& codons = read.sequences[s].codons;
            codons.resize(n);
            for (uint8_t& c : codons) {
                c = in.u8();
                if (c > 63) throw RecordFormatError("codon " + std::to_string(c) + " in sequence " + std::to_string(s) + " is not a codon number");
            }
        }
        for (size_t s = 0; s < read.sequences.size(); ++s) {
            const uint32_t n = readArrayTag(in, 2, "the feature marks", static_cast<int>(s));
            auto& flags = read.sequences[s].flags;
            flags.resize(n);
            for (uint16_t& f : flags) f = in.u16();
        }
        for (BioSequence& seq : read.sequences) seq.count = in.i16();
        for (uint8_t& r : read.sort) r = in.u8();
        if (in.remaining() != 0) throw RecordFormatError(std::to_string(in.remaining()) + " bytes follow the bio set");
    } catch (const RecordFormatError& e) {
        reason = e.what();
        return false;
    }
    for (size_t s = 0; s < read.sequences.size(); ++s) {
        const BioSequence& seq = read.sequences[s];
        const auto need = static_cast<size_t>(std::max(seq.last, 0)) + 1;
        if (seq.last >= 1 && (seq.codons.size() < need || seq.flags.size() < need)) {
            reason = "sequence " + std::to_string(s) + " ends at position " + std::to_string(seq.last) +
                     " but holds only " + std::to_string(std::min(seq.codons.size(), seq.flags.size())) + " positions";
            return false;
        }
    }
    set = std::move(read);
    return true;
}

std::vector<uint8_t> bioBytes(const BioSet& set) {
    ByteWriter out;
    for (const BioSequence& seq : set.sequences) out.str(seq.name);
    for (const BioSequence& seq : set.sequences) out.i32(seq.last);
    for (const BioSequence& seq : set.sequences) {
        writeArrayTag(out, seq.codons.size());
        out.raw(seq.codons);
    }
    for (const BioSequence& seq : set.sequences) {
        writeArrayTag(out, seq.flags.size());
        for (uint16_t f : seq.flags) out.u16(f);
    }
    for (const BioSequence& seq : set.sequences) out.i16(seq.count);
    out.raw(set.sort);
    static_assert(sizeof(set.sort) == kSortBytes);
    return out.take();
}

bool readBioFile(const std::string& path, BioSet& set, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kMaxBioFileBytes + 1, bytes, reason)) {
        error = "Unable to Load: " + path + ": " + reason;
        return false;
    }
    if (bytes.size() > kMaxBioFileBytes) {
        error = "Unable to Load: " + path + ": larger than any bio sequence file";
        return false;
    }
    if (!parseBioBytes(bytes, set, reason)) {
        error = "Unable to Load: " + path + ": not a bio sequence file (" + reason + ")";
        return false;
    }
    return true;
}

bool writeBioFile(const std::string& path, const BioSet& set, std::string& error) {
    const std::vector<uint8_t> bytes = bioBytes(set);
    AtomicFile file(path);
    if (!file.create(error)) return false;
    const int fd = ::open(file.tempPath().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) {
        error = saveError(path, std::strerror(errno));
        return false;
    }
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            error = saveError(path, n < 0 ? std::strerror(errno) : "nothing could be written");
            ::close(fd);
            return false;
        }
        written += static_cast<size_t>(n);
    }
    if (::close(fd) != 0) {
        error = saveError(path, std::strerror(errno));
        return false;
    }
    return file.commit(error);
}

bool loadBioFile(const std::string& path, std::string& error) {
    BioSet set;
    if (!readBioFile(path, set, error)) return false;
    installBioSet(std::move(set));
    return true;
}

void loadDefaultBioFileOnce() {
    if (bioSetVersion() != 0) return;
    const std::string path = findDataFile("default.bst");
    std::string ignored;
    if (!path.empty()) loadBioFile(path, ignored);
}

void loadBioSideFile(const std::string& patchPath) {
    const std::string own = std::filesystem::path(patchPath).replace_extension(".bst").string();
    std::error_code noSuchName;
    if (!std::filesystem::is_regular_file(own, noSuchName)) return;
    std::string ignored;
    loadBioFile(own, ignored);
}

}  // namespace quillmer
