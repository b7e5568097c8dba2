#include "gui/UserDialogs.h"

#include <QFileDialog>
#include <QMessageBox>

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

QString QtUserDialogs::openFileName(const QString& title, const QString& folder, const QString& filter) {
    return QFileDialog::getOpenFileName(parent_, title, folder, filter);
}

QString QtUserDialogs::saveFileName(const QString& title, const QString& folder, const QString& filter) {
    QString path = QFileDialog::getSaveFileName(parent_, title, folder, filter);
    // The dialog leaves the extension to the user; a patch always gets ours.
    if (!path.isEmpty() && !path.endsWith(QStringLiteral(".qmp"), Qt::CaseInsensitive)) path += QStringLiteral(".qmp");
    return path;
}

}  // namespace quillmer::gui
