#include "gui/UserDialogs.h"

#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScreen>

namespace quillmer::gui {

namespace {
const QString kProduct = QStringLiteral("Quillmer");
}

SaveAnswer QtUserDialogs::askSaveChanges(const QString& text, bool canCancel) {
    QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No;
    if (canCancel) buttons |= QMessageBox::Cancel;
    switch (QMessageBox::question(parent_, kProduct, text, buttons, QMessageBox::Yes)) {
        case QMessageBox::Yes: return SaveAnswer::Yes;
        case QMessageBox::No: return SaveAnswer::No;
        default: return canCancel ? SaveAnswer::Cancel : SaveAnswer::No;
    }
}

bool QtUserDialogs::confirm(const QString& title, const QString& text) {
    return QMessageBox::question(parent_, title, text, QMessageBox::Ok | QMessageBox::Cancel,
                                 QMessageBox::Cancel) == QMessageBox::Ok;
}

void QtUserDialogs::critical(const QString& title, const QString& text) {
    QMessageBox::critical(parent_, title, text);
}

void QtUserDialogs::information(const QString& title, const QString& text) {
    QMessageBox::information(parent_, title, text);
}

namespace {
// Qt's own file dialog at a size that shows names and folders side by side, within the
// screen the program is on.
QString askFile(QWidget* parent, const QString& title, const QString& folder, const QString& filter, bool save) {
    QFileDialog dialog(parent, title, folder, filter);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::DontUseNativeDialog, true);
    QSize size(dialog.fontMetrics().horizontalAdvance(QLatin1Char('M')) * 70, dialog.fontMetrics().height() * 30);
    if (const QScreen* screen = parent ? parent->screen() : QGuiApplication::primaryScreen())
        size = size.boundedTo(screen->availableGeometry().size() * 9 / 10);
    dialog.resize(size.expandedTo(dialog.minimumSizeHint()));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return dialog.selectedFiles().first();
}
}  // namespace

QString QtUserDialogs::openFileName(const QString& title, const QString& folder, const QString& filter) {
    return askFile(parent_, title, folder, filter, false);
}

QString QtUserDialogs::saveFileName(const QString& title, const QString& folder, const QString& filter) {
    return withExtensionOf(askFile(parent_, title, folder, filter, true), filter);
}

QString withExtensionOf(const QString& path, const QString& filter) {
    if (path.isEmpty() || filter.contains(QStringLiteral("(*)"))) return path;
    static const QRegularExpression pattern(QStringLiteral("\\*(\\.[A-Za-z0-9]+)"));
    QString first;
    for (auto it = pattern.globalMatch(filter); it.hasNext();) {
        const QString extension = it.next().captured(1);
        if (path.endsWith(extension, Qt::CaseInsensitive)) return path;
        if (first.isEmpty()) first = extension;
    }
    return path + first;
}

}  // namespace quillmer::gui
