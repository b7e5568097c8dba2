#pragma once
// Where the side files live: the user's own copies under $XDG_DATA_HOME/quillmer (or
// ~/.local/share/quillmer), then the files shipped with the program.

#include <string>

namespace quillmer {

// The shipped data folder: $QUILLMER_DATA_DIR when set, else the source tree's data/ for a
// program run from its build, else /usr/share/quillmer.
std::string shippedDataDir();
// The user's writable data folder.
std::string userDataDir();
// A side file by name, the user's copy first; empty when neither exists.
std::string findDataFile(const std::string& name);

}  // namespace quillmer
