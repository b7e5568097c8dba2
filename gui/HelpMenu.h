#pragma once
// What the Help menu opens: the local manual in the desktop's browser, the project's web
// page (set when the program is built), and the About box.

#include <QString>

class QWidget;

namespace quillmer::gui {

class UserDialogs;

void openManual(UserDialogs& dialogs);
QString homePage();
void visitWebSite(UserDialogs& dialogs);
void showAbout(QWidget* parent);

}  // namespace quillmer::gui
