// Writes the shipped tuning tables: make_default_tones OUT.pbt
// The build's default_pbt target runs it over data/default.pbt.

#include <iostream>

#include "tables/DefaultTones.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_default_tones OUT.pbt\n";
        return 2;
    }
    if (!quillmer::SaveToneTables(argv[1], quillmer::DefaultToneTables())) {
        std::cerr << "Unable to write: " << argv[1] << "\n";
        return 1;
    }
    return 0;
}
