#include "gui/ProgramPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace quillmer::gui {

namespace {
QStringList dataRoots() {
    const QString here = programDir();
    QStringList roots{here, here + QStringLiteral("/../share/quillmer")};
#ifdef QUILLMER_SOURCE_DIR
    roots << QStringLiteral(QUILLMER_SOURCE_DIR);
#endif
    return roots;
}

QString firstExisting(const QString& relative, bool folder) {
    for (const QString& root : dataRoots()) {
        const QFileInfo info(root + QLatin1Char('/') + relative);
        if (info.exists() && info.isDir() == folder) return QDir::cleanPath(info.absoluteFilePath());
    }
    return {};
}
}  // namespace

QString programDir() { return QCoreApplication::applicationDirPath(); }

QString examplesDir() {
    const QString found = firstExisting(QStringLiteral("examples"), true);
    return found.isEmpty() ? QDir::homePath() : found;
}

QString manualPath() { return firstExisting(QStringLiteral("docs/manual.html"), false); }

}  // namespace quillmer::gui
