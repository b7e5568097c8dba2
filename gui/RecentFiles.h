#pragma once
// The five most recent patches, newest first, as the File menu lists them. Kept in the
// settings store under "MRU": the count in "MRU Entries", the paths in "MRUTag1".."MRUTag5".

#include <QStringList>

class QSettings;

namespace quillmer::gui {

class RecentFiles {
public:
    static constexpr int kMaxItems = 5;

    void load(QSettings& settings);
    void save(QSettings& settings) const;

    // Puts `path` at the top; a path already in the list moves up, the oldest drops off.
    void add(const QString& path);
    const QStringList& paths() const { return paths_; }

private:
    QStringList paths_;
};

}  // namespace quillmer::gui
