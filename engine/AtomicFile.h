#pragma once
// Writing a file so that readers see either the old file or the whole new one: the data
// goes to a temporary file in the same folder, which is renamed over the target at the end.

#include <string>

namespace quillmer {

class AtomicFile {
public:
    explicit AtomicFile(std::string target) : target_(std::move(target)) {}
    // Removes the temporary file unless commit() succeeded.
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Makes the temporary file (empty) beside the target. False with `error` naming the target.
    bool create(std::string& error);
    const std::string& tempPath() const { return temp_; }
    const std::string& target() const { return target_; }
    // Syncs and renames the temporary file over the target.
    bool commit(std::string& error);
    // Gives up: the temporary file goes, the target is left as it was.
    void discard();

private:
    std::string target_;
    std::string temp_;
};

// "Unable to save <path>: <reason>" — the one wording of every failed save.
std::string saveError(const std::string& path, const std::string& reason);

}  // namespace quillmer
