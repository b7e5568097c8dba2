#include "shell/DataFiles.h"

#include <cstdlib>
#include <filesystem>

namespace quillmer {

namespace fs = std::filesystem;

std::string shippedDataDir() {
    if (const char* dir = std::getenv("QUILLMER_DATA_DIR"); dir && *dir) return dir;
    // An installed program finds its data beside it, wherever the prefix put both.
    std::error_code noLink;
    const fs::path self = fs::read_symlink("/proc/self/exe", noLink);
    if (!noLink) {
        const fs::path beside = self.parent_path().parent_path() / "share" / "quillmer";
        std::error_code noDir;
        if (fs::is_regular_file(beside / "default.pbt", noDir)) return beside.string();
    }
#ifdef QUILLMER_TREE_DATA_DIR
    if (fs::is_directory(QUILLMER_TREE_DATA_DIR)) return QUILLMER_TREE_DATA_DIR;
#endif
#ifdef QUILLMER_INSTALL_DATA_DIR
    return QUILLMER_INSTALL_DATA_DIR;
#else
    return "/usr/share/quillmer";
#endif
}

std::string userDataDir() {
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg) return (fs::path(xdg) / "quillmer").string();
    const char* home = std::getenv("HOME");
    return (fs::path(home && *home ? home : ".") / ".local" / "share" / "quillmer").string();
}

std::string findDataFile(const std::string& name) {
    for (const std::string& dir : {userDataDir(), shippedDataDir()}) {
        const fs::path candidate = fs::path(dir) / name;
        std::error_code error;
        if (fs::is_regular_file(candidate, error)) return candidate.string();
    }
    return {};
}

}  // namespace quillmer
