#include "gui/RecentFiles.h"

#include <QSettings>

namespace quillmer::gui {

namespace {
const QString kGroup = QStringLiteral("MRU");
const QString kCount = QStringLiteral("MRU Entries");
QString tagKey(int n) { return QStringLiteral("MRUTag%1").arg(n); }
}  // namespace

void RecentFiles::load(QSettings& settings) {
    paths_.clear();
    settings.beginGroup(kGroup);
    const int count = std::clamp(settings.value(kCount, 0).toInt(), 0, kMaxItems);
    for (int n = 1; n <= count; ++n) {
        const QString path = settings.value(tagKey(n)).toString();
        if (!path.isEmpty() && !paths_.contains(path)) paths_.append(path);
    }
    settings.endGroup();
}

void RecentFiles::save(QSettings& settings) const {
    settings.beginGroup(kGroup);
    settings.setValue(kCount, static_cast<int>(paths_.size()));
    for (int n = 1; n <= kMaxItems; ++n) {
        if (n <= paths_.size())
            settings.setValue(tagKey(n), paths_[n - 1]);
        else
            settings.remove(tagKey(n));
    }
    settings.endGroup();
}

void RecentFiles::add(const QString& path) {
    paths_.removeAll(path);
    paths_.prepend(path);
    while (paths_.size() > kMaxItems) paths_.removeLast();
}

}  // namespace quillmer::gui
