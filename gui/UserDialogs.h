#pragma once
// Every question the program puts to the user goes through this interface: the windows ask,
// and whatever stands behind it answers. The desktop program shows Qt's boxes and file
// dialogs; tests answer from a script.

#include <QString>

class QWidget;

namespace quillmer::gui {

enum class SaveAnswer { Yes, No, Cancel };

class UserDialogs {
public:
    virtual ~UserDialogs() = default;

    // "FILE has been changed.  Save it now?" with Yes, No and, when allowed, Cancel.
    virtual SaveAnswer askSaveChanges(const QString& text, bool canCancel) = 0;
    // OK and Cancel; true for OK.
    virtual bool confirm(const QString& title, const QString& text) = 0;
    virtual void critical(const QString& title, const QString& text) = 0;
    virtual void information(const QString& title, const QString& text) = 0;
    // A path, or empty when the user cancelled. `filter` is a Qt name filter.
    virtual QString openFileName(const QString& title, const QString& folder, const QString& filter) = 0;
    virtual QString saveFileName(const QString& title, const QString& folder, const QString& filter) = 0;
};

// `path` as chosen in a save dialog on `filter` ("Name (*.qmp);;Text (*.qmj)"): kept when
// it ends in one of the filter's extensions or the filter takes any name "(*)", else given
// the first extension.
QString withExtensionOf(const QString& path, const QString& filter);

// The real thing: modal boxes and file dialogs over `parent`.
class QtUserDialogs final : public UserDialogs {
public:
    explicit QtUserDialogs(QWidget* parent) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }

    SaveAnswer askSaveChanges(const QString& text, bool canCancel) override;
    bool confirm(const QString& title, const QString& text) override;
    void critical(const QString& title, const QString& text) override;
    void information(const QString& title, const QString& text) override;
    QString openFileName(const QString& title, const QString& folder, const QString& filter) override;
    QString saveFileName(const QString& title, const QString& folder, const QString& filter) override;

private:
    QWidget* parent_;
};

}  // namespace quillmer::gui
