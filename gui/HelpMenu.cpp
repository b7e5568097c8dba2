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

void visitWebSite(const QString& address, UserDialogs& dialogs) {
    if (address.isEmpty()) {
        dialogs.information(kProduct, QStringLiteral("No web site is set. Put its address under \"WebSite\" "
                                                     "in the section \"Settings\" of Quillmer's settings."));
        return;
    }
    QDesktopServices::openUrl(QUrl::fromUserInput(address));
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
