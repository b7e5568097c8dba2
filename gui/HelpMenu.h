#pragma once
// What the Help menu opens: the local manual in the desktop's browser, the web site when one
// is configured, and the About box.

#include <QString>

class QWidget;

namespace quillmer::gui {

class UserDialogs;

void openManual(UserDialogs& dialogs);
// `address` comes from the setting "WebSite"; nothing to open when it is empty.
void visitWebSite(const QString& address, UserDialogs& dialogs);
void showAbout(QWidget* parent);

}  // namespace quillmer::gui
