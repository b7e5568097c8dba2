#include "gui/HelpMenu.h"

#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

#include "gui/ProgramPaths.h"
#include "gui/UserDialogs.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
const QString kProduct = QStringLiteral("Quillmer");
}

void openManual(UserDialogs& dialogs) {
    const QString path = manualPath();
    if (path.isEmpty() || !QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        dialogs.information(kProduct, QStringLiteral("The manual (docs/manual.html) could not be opened."));
}

QString homePage() { return QStringLiteral(QUILLMER_HOMEPAGE); }

void visitWebSite(UserDialogs& dialogs) {
    if (!QDesktopServices::openUrl(QUrl(homePage())))
        dialogs.information(kProduct, QStringLiteral("The web site ") + homePage() + QStringLiteral(" could not be opened."));
}

void showAbout(QWidget* parent) {
    const QString version =
        QStringLiteral("%1.%2.%3").arg(ProgramVersion::major).arg(ProgramVersion::minor).arg(ProgramVersion::revision);
    QMessageBox::about(parent, QStringLiteral("About Quillmer"),
                       QStringLiteral("<h3>Quillmer %1</h3>"
                                      "<p>A modular MIDI step sequencer for the Linux desktop.</p>"
                                      "<p>Place modules on sixteen pages, connect each input to a named "
                                      "output, and let the patch tick 96 times a whole note.</p>")
                           .arg(version));
}

}  // namespace quillmer::gui
