#include "shell/BioImport.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "engine/RegularFile.h"
#include "modules/sequencers/BioCodes.h"

namespace quillmer {

namespace {
constexpr size_t kMaxInputBytes = size_t{128} << 20;
constexpr size_t kNameLength = 40;
constexpr std::string_view kAminoAlphabet = "ACDEFGHIKLMNPQRSTVWY*";

struct ImportError {
    std::string text;
};

std::string trim(std::string_view s) {
    const size_t a = s.find_first_not_of(" \t\r\n");
    if (a == std::string_view::npos) return {};
    const size_t b = s.find_last_not_of(" \t\r\n");
    return std::string(s.substr(a, b - a + 1));
}

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find('\n', at);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(at, end - at);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.push_back(line);
        at = end + 1;
    }
    return lines;
}

// A coding sequence about to become a BioSequence: its bases and, per base, the marks.
struct Coding {
    std::string name;
    std::string bases;  // G A C T only
    std::vector<uint16_t> flags;  // per codon
    int16_t features = 0;
};

BioSequence toSequence(const Coding& c) {
    BioSequence seq;
    seq.name = c.name.substr(0, kNameLength);
    const size_t codons = c.bases.size() / 3;
    seq.codons.resize(codons);
    for (size_t p = 0; p < codons; ++p)
        seq.codons[p] = static_cast<uint8_t>(bio::baseCode(c.bases[3 * p]) * 16 + bio::baseCode(c.bases[3 * p + 1]) * 4 +
                                             bio::baseCode(c.bases[3 * p + 2]));
    seq.flags = c.flags;
    seq.flags.resize(codons, 0);
    seq.last = static_cast<int32_t>(codons) - 1;
    seq.count = c.features;
    return seq;
}

// --- FASTA ---

void readFasta(const std::vector<std::string_view>& lines, const std::string& source, std::vector<Coding>& out) {
    size_t i = 0;
    while (i < lines.size()) {
        const std::string_view header = lines[i];
        const size_t headerLine = i + 1;
        std::string name = trim(header.substr(1));
        if (name.empty()) name = "record " + std::to_string(out.size() + 1);
        const std::string where = source + ": record \"" + name.substr(0, kNameLength) + "\" (line " + std::to_string(headerLine) + ")";
        std::string letters;
        std::vector<size_t> lineOf;
        for (++i; i < lines.size() && (lines[i].empty() || lines[i][0] != '>'); ++i) {
            for (char ch : lines[i]) {
                if (std::isspace(static_cast<unsigned char>(ch)) || std::isdigit(static_cast<unsigned char>(ch))) continue;
                letters += static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
                lineOf.push_back(i + 1);
            }
        }
        if (letters.empty()) throw ImportError{where + ": holds no sequence"};
        const bool nucleotides = std::all_of(letters.begin(), letters.end(), [](char c) { return bio::baseCode(c) >= 0; });
        Coding coding;
        coding.name = name;
        if (nucleotides) {
            for (char c : letters) coding.bases += bio::kBaseLetters[static_cast<size_t>(bio::baseCode(c))];
        } else {
            // Mostly nucleotides with a few others: ambiguous bases, not a protein.
            const auto dna = std::count_if(letters.begin(), letters.end(), [](char c) { return bio::baseCode(c) >= 0 || c == 'N'; });
            const bool mostlyBases = dna * 10 >= static_cast<long>(letters.size()) * 9;
            for (size_t k = 0; k < letters.size(); ++k) {
                const char c = letters[k];
                if (bio::baseCode(c) >= 0) continue;
                if (mostlyBases || kAminoAlphabet.find(c) == std::string_view::npos)
                    throw ImportError{where + ", line " + std::to_string(lineOf[k]) + ": '" + std::string(1, c) +
                                      "' is neither a base (G, A, C, T) nor an amino acid letter"};
            }
            for (char c : letters) {
                const int a = c == '*' ? bio::kStop : bio::letterToAmino()[static_cast<size_t>(c)];
                coding.bases += bio::codonName(bio::kAminoCodon[static_cast<size_t>(a)]);
            }
        }
        if (coding.bases.size() < 6) throw ImportError{where + ": too short to play: at least two codons are needed"};
        out.push_back(std::move(coding));
    }
}

// --- GenBank ---

struct Span {
    long first = 0;  // 1-based, inclusive
    long last = 0;
    bool minus = false;
};

class LocationParser {
public:
    explicit LocationParser(std::string_view text) : s_(text) {}
    // The spans in reading order; nullopt for a malformed or remote location.
    std::optional<std::vector<Span>> parse() {
        std::vector<Span> spans;
        if (!item(spans) || at_ != s_.size()) return std::nullopt;
        return spans;
    }

private:
    bool take(std::string_view word) {
        if (s_.substr(at_, word.size()) != word) return false;
        at_ += word.size();
        return true;
    }
    bool number(long& v) {
        const size_t start = at_;
        v = 0;
        while (at_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[at_]))) {
            v = v * 10 + (s_[at_] - '0');
            if (v > 1'000'000'000) return false;
            ++at_;
        }
        return at_ > start;
    }
    bool list(std::vector<Span>& spans) {
        if (!item(spans)) return false;
        while (take(","))
            if (!item(spans)) return false;
        return take(")");
    }
    bool item(std::vector<Span>& spans) {
        if (take("complement(")) {
            std::vector<Span> inner;
            if (!list(inner)) return false;
            for (auto it = inner.rbegin(); it != inner.rend(); ++it) spans.push_back({it->first, it->last, !it->minus});
            return true;
        }
        if (take("join(") || take("order(")) return list(spans);
        take("<");
        long a = 0;
        if (!number(a)) return false;
        long b = a;
        if (take("..")) {
            take(">");
            if (!number(b)) return false;
        } else if (take("^")) {
            if (!number(b)) return false;
        } else {
            take(">");
        }
        if (a < 1 || b < a) return false;
        spans.push_back({a, b, false});
        return true;
    }
    std::string_view s_;
    size_t at_ = 0;
};

struct Feature {
    std::string key;
    std::string location;
    std::vector<std::string> qualifiers;
    size_t line = 0;
};

std::string qualifier(const Feature& f, std::string_view name) {
    const std::string prefix = "/" + std::string(name) + "=";
    for (const std::string& q : f.qualifiers)
        if (q.rfind(prefix, 0) == 0) {
            std::string v = q.substr(prefix.size());
            std::erase(v, '"');
            return v;
        }
    return {};
}
bool hasQualifier(const Feature& f, std::string_view name) {
    const std::string flag = "/" + std::string(name);
    return std::any_of(f.qualifiers.begin(), f.qualifiers.end(),
                       [&](const std::string& q) { return q == flag || q.rfind(flag + "=", 0) == 0; });
}

char complementOf(char b) {
    switch (b) {
        case 'G': return 'C';
        case 'C': return 'G';
        case 'A': return 'T';
        default: return 'A';
    }
}

void readGenBankRecord(const std::vector<std::string_view>& lines, size_t& i, const std::string& source,
                       std::vector<Coding>& out, std::vector<std::string>& notes) {
    const size_t locusLine = i + 1;
    std::string locus;
    {
        const std::string rest = trim(lines[i].substr(5));
        locus = rest.substr(0, rest.find(' '));
    }
    const std::string where = source + ": record " + locus + " (line " + std::to_string(locusLine) + ")";
    std::vector<Feature> features;
    std::string sequence;
    std::vector<size_t> sequenceLine;
    enum class Section { Header, Features, Origin } section = Section::Header;
    bool ended = false;
    for (++i; i < lines.size(); ++i) {
        const std::string_view line = lines[i];
        if (line.rfind("//", 0) == 0) {
            ++i;
            ended = true;
            break;
        }
        if (line.rfind("FEATURES", 0) == 0) {
            section = Section::Features;
            continue;
        }
        if (line.rfind("ORIGIN", 0) == 0) {
            section = Section::Origin;
            continue;
        }
        if (line.rfind("LOCUS", 0) == 0) throw ImportError{where + ", line " + std::to_string(i + 1) + ": a new record begins before \"//\" ends this one"};
        if (section == Section::Features) {
            if (!line.empty() && line[0] != ' ') {
                section = Section::Header;
                continue;
            }
            if (line.size() > 5 && line[5] != ' ') {
                Feature f;
                f.line = i + 1;
                const std::string content = trim(line);
                const size_t gap = content.find(' ');
                f.key = content.substr(0, gap);
                if (gap != std::string::npos) f.location = trim(content.substr(gap));
                features.push_back(std::move(f));
            } else if (!features.empty()) {
                const std::string content = trim(line);
                Feature& f = features.back();
                if (content.rfind('/', 0) == 0)
                    f.qualifiers.push_back(content);
                else if (!f.qualifiers.empty())
                    f.qualifiers.back() += " " + content;
                else
                    f.location += content;
            }
        } else if (section == Section::Origin) {
            for (char ch : line) {
                if (std::isspace(static_cast<unsigned char>(ch)) || std::isdigit(static_cast<unsigned char>(ch))) continue;
                sequence += static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
                sequenceLine.push_back(i + 1);
            }
        }
    }
    if (!ended) throw ImportError{where + ": the record has no \"//\" at its end"};

    // Each CDS: its bases in reading order, and where each came from.
    int taken = 0;
    for (const Feature& cds : features) {
        if (cds.key != "CDS") continue;
        const std::string at = where + ", line " + std::to_string(cds.line);
        if (cds.location.find(':') != std::string::npos || hasQualifier(cds, "pseudo")) {
            notes.push_back(at + ": CDS left out (" + std::string(hasQualifier(cds, "pseudo") ? "a pseudogene" : "its location lies in another record") + ")");
            continue;
        }
        const auto spans = LocationParser(cds.location).parse();
        if (!spans) throw ImportError{at + ": CDS location \"" + cds.location + "\" can't be read"};
        std::string bases;
        std::vector<long> origin;  // 1-based position in the record of each base
        for (const Span& s : *spans) {
            if (s.last > static_cast<long>(sequence.size()))
                throw ImportError{at + ": CDS reaches base " + std::to_string(s.last) + " of a sequence of " + std::to_string(sequence.size())};
            for (long k = 0; k <= s.last - s.first; ++k) {
                const long pos = s.minus ? s.last - k : s.first + k;
                const char b = sequence[static_cast<size_t>(pos - 1)];
                if (bio::baseCode(b) < 0)
                    throw ImportError{where + ", line " + std::to_string(sequenceLine[static_cast<size_t>(pos - 1)]) +
                                      ": base " + std::to_string(pos) + " is '" + std::string(1, b) + "', not G, A, C or T, inside a CDS"};
                const char plain = bio::kBaseLetters[static_cast<size_t>(bio::baseCode(b))];
                bases += s.minus ? complementOf(plain) : plain;
                origin.push_back(pos);
            }
        }
        const std::string start = qualifier(cds, "codon_start");
        const size_t skip = start == "2" ? 1 : start == "3" ? 2 : 0;
        bases.erase(0, std::min(skip, bases.size()));
        origin.erase(origin.begin(), origin.begin() + static_cast<std::ptrdiff_t>(std::min(skip, origin.size())));
        if (bases.size() < 6) {
            notes.push_back(at + ": CDS left out (shorter than two codons)");
            continue;
        }
        Coding coding;
        std::string gene = qualifier(cds, "gene");
        if (gene.empty()) gene = qualifier(cds, "product");
        if (gene.empty()) gene = qualifier(cds, "locus_tag");
        if (gene.empty()) gene = qualifier(cds, "protein_id");
        coding.name = gene.empty() ? locus : locus + " " + gene;
        const size_t codons = bases.size() / 3;
        coding.bases = std::move(bases);
        coding.flags.assign(codons, 0);
        for (const Feature& f : features) {
            const int pair = featurePairOf(f.key);
            if (pair < 0 || &f == &cds || f.location.find(':') != std::string::npos) continue;
            const auto fs = LocationParser(f.location).parse();
            if (!fs) continue;  // a mark we can't place is only a mark
            bool inside = false;
            for (size_t p = 0; p <= codons; ++p) {
                bool covered = false;
                for (size_t b = 3 * p; p < codons && b < 3 * p + 3 && !covered; ++b)
                    for (const Span& s : *fs)
                        if (origin[b] >= s.first && origin[b] <= s.last) covered = true;
                if (covered && !inside) {
                    coding.flags[p] |= static_cast<uint16_t>(1u << pair);
                    if (coding.features < 32767) ++coding.features;
                }
                if (!covered && inside) coding.flags[p - 1] |= static_cast<uint16_t>(1u << (pair + 7));
                inside = covered;
            }
        }
        out.push_back(std::move(coding));
        ++taken;
    }
    if (taken == 0) notes.push_back(where + ": no coding sequence (no CDS feature that can be read)");
}

}  // namespace

int featurePairOf(std::string_view key) {
    if (key == "CDS" || key == "source") return -1;
    if (key == "gene") return 0;
    if (key == "exon") return 1;
    if (key == "sig_peptide" || key == "transit_peptide" || key == "mat_peptide" || key == "propeptide") return 2;
    if (key == "misc_feature" || key == "Region" || key == "domain") return 3;
    if (key == "variation" || key == "mutation" || key == "conflict" || key == "misc_difference" || key == "modified_base")
        return 4;
    if (key == "repeat_region" || key == "repeat_unit" || key == "STS" || key == "misc_binding" || key == "protein_bind")
        return 5;
    return 6;
}

bool importBioText(std::string_view text, const std::string& source, BioImportResult& result, std::string& error) {
    const std::vector<std::string_view> lines = splitLines(text);
    size_t first = 0;
    while (first < lines.size() && trim(lines[first]).empty()) ++first;
    if (first == lines.size()) {
        error = source + ": empty: neither FASTA nor GenBank";
        return false;
    }
    std::vector<Coding> codings;
    std::vector<std::string> notes;
    std::string nonCoding;
    try {
        if (lines[first][0] == '>') {
            readFasta(std::vector<std::string_view>(lines.begin() + static_cast<std::ptrdiff_t>(first), lines.end()), source,
                      codings);
        } else if (lines[first].rfind("LOCUS", 0) == 0) {
            size_t i = first;
            while (i < lines.size()) {
                if (trim(lines[i]).empty()) {
                    ++i;
                    continue;
                }
                if (lines[i].rfind("LOCUS", 0) != 0)
                    throw ImportError{source + ", line " + std::to_string(i + 1) + ": a GenBank record must begin with LOCUS"};
                const size_t before = codings.size();
                readGenBankRecord(lines, i, source, codings, notes);
                if (codings.size() == before && nonCoding.empty()) nonCoding = notes.back();
            }
            // Records without a coding sequence are left out; only none at all is an error.
            if (codings.empty()) throw ImportError{nonCoding};
        } else {
            throw ImportError{source + ", line " + std::to_string(first + 1) +
                              ": neither FASTA (\">\") nor GenBank (\"LOCUS\")"};
        }
    } catch (const ImportError& e) {
        error = e.text;
        return false;
    }
    if (codings.size() > kBioSequences)
        notes.push_back(source + ": " + std::to_string(codings.size()) + " coding sequences; the first " +
                        std::to_string(kBioSequences) + " were taken");
    BioImportResult r;
    r.sequences = static_cast<int>(std::min<size_t>(codings.size(), kBioSequences));
    for (int s = 0; s < r.sequences; ++s) r.set.sequences[static_cast<size_t>(s)] = toSequence(codings[static_cast<size_t>(s)]);
    rankAminos(r.set);
    r.notes = std::move(notes);
    result = std::move(r);
    return true;
}

bool importBioFile(const std::string& path, BioImportResult& result, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kMaxInputBytes + 1, bytes, reason)) {
        error = "Unable to read " + path + ": " + reason;
        return false;
    }
    if (bytes.size() > kMaxInputBytes) {
        error = path + ": larger than the " + std::to_string(kMaxInputBytes >> 20) + " MB a sequence file may have";
        return false;
    }
    if (std::find(bytes.begin(), bytes.end(), uint8_t{0}) != bytes.end()) {
        error = path + ": a binary file, neither FASTA nor GenBank";
        return false;
    }
    return importBioText(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), path, result, error);
}

}  // namespace quillmer
