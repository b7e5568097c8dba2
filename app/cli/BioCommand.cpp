// `bio import IN OUT.bst`: a FASTA or GenBank file's coding sequences as a bio sequence
// file, so that any gene can be played by BioSeq.

#include <CLI/CLI.hpp>

#include <iostream>

#include "app/cli/Commands.h"
#include "modules/sequencers/BioCodes.h"
#include "shell/BioFile.h"
#include "shell/BioImport.h"

namespace quillmer {

namespace {

struct BioImportRequest {
    std::string in;
    std::string out;
};

int importToBst(const BioImportRequest& r) {
    const auto fail = [](const std::string& message) {
        std::cerr << "quillmer-cli: " << message << '\n';
        return 1;
    };
    if (r.out.size() < 4 || r.out.substr(r.out.size() - 4) != ".bst") return fail(r.out + ": the output must be a .bst file");
    BioImportResult result;
    std::string error;
    if (!importBioFile(r.in, result, error)) return fail(error);
    for (const std::string& note : result.notes) std::cerr << "quillmer-cli: " << note << '\n';
    if (!writeBioFile(r.out, result.set, error)) return fail(error);
    for (int s = 0; s < result.sequences; ++s) {
        const BioSequence& seq = result.set.sequences[static_cast<size_t>(s)];
        std::cout << s << '\t' << seq.name << '\t' << seq.last + 1 << " codons\t" << seq.count << " features\n";
    }
    std::cout << result.sequences << " sequences to " << r.out << '\n';
    return 0;
}

}  // namespace

void addBioCommand(CLI::App& app, int& exitStatus) {
    auto* bio = app.add_subcommand("bio", "Bio sequence files for BioSeq");
    bio->require_subcommand(1);
    auto* import = bio->add_subcommand("import", "Read the coding sequences of a FASTA or GenBank file into a .bst file");
    auto r = std::make_shared<BioImportRequest>();
    import->add_option("IN", r->in, "The FASTA or GenBank file")->required();
    import->add_option("OUT", r->out, "The bio sequence file to write (.bst)")->required();
    import->callback([r, &exitStatus] { exitStatus = importToBst(*r); });
}

}  // namespace quillmer
