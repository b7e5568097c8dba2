#pragma once
// Writing a file so that readers see either the old file or the whole new one: the data
// goes to a temporary file in the same folder, which is renamed over the target at the end.
//
// Only a regular file is replaced. A symbolic link is followed: its target gets the new
// content and the link stays. A file that exists keeps its mode (and its owner where the
// program may set it); one without write permission is refused with a message. The
// temporary file is named "." + the target's name + ".quillmer-" + six characters; such
// files left behind by a save that was killed are removed by the next save of the target.
//
// A file with more than one hard link would lose the other names to a rename: its new
// content, once whole and synced in the temporary file, is copied into it in place instead,
// so that every name sees it. Only for such a file can a save killed during that copy leave
// it part new, part old (with the whole new content still in the temporary file).

#include <string>
#include <sys/types.h>

namespace quillmer {

class AtomicFile {
public:
    explicit AtomicFile(std::string target) : target_(std::move(target)) {}
    // Removes the temporary file unless commit() succeeded.
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Makes the temporary file (empty) beside the file that will be replaced. False with
    // `error` naming the target when the target can't be replaced (a folder, read-only, ...).
    bool create(std::string& error);
    const std::string& tempPath() const { return temp_; }
    // The path as given, which every message names.
    const std::string& target() const { return target_; }
    // The file that is replaced: the target, or where its symbolic links lead (after create()).
    const std::string& resolvedTarget() const { return resolved_; }
    // Whether the resolved target existed when create() looked.
    bool targetExists() const { return exists_; }
    // Syncs and renames the temporary file over the resolved target.
    bool commit(std::string& error);
    // Gives up: the temporary file goes, the target is left as it was.
    void discard();

    // The temporary files of our naming beside `resolvedTarget`, as a pattern's prefix.
    static std::string tempPrefix(const std::string& resolvedTarget);

private:
    std::string target_;
    std::string resolved_;
    std::string temp_;
    bool exists_ = false;
    bool linked_ = false;  // the target has other hard links
};

// "Unable to save <path>: <reason>" — the one wording of every failed save.
std::string saveError(const std::string& path, const std::string& reason);

}  // namespace quillmer
