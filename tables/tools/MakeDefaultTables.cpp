// Writes the shipped general tables: make_default_tables OUT.tbl
// The build's default_tbl target runs it over data/default.tbl.

#include <iostream>

#include "tables/DefaultTables.h"
#include "tables/TableFiles.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: make_default_tables OUT.tbl\n";
        return 2;
    }
    std::string error;
    if (!quillmer::SaveTableFile(argv[1], quillmer::DefaultGeneralTables(), error)) {
        std::cerr << error << "\n";
        return 1;
    }
    return 0;
}
