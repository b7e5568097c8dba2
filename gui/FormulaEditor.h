#pragma once
// fUCalc: the editor of the user functions, variables and the 128 formulas. It edits a copy
// of the session's lists; every change compiles them into the session's runtime at once
// (under the engine lock), so that running modules follow. File commands read and write .ufn
// files; Import copies chosen entries from another file.

#include <QMainWindow>
#include <QString>

#include "expression/UserFunctionFile.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class UserDialogs;

class FormulaEditor : public QMainWindow {
    Q_OBJECT
public:
    FormulaEditor(Session& session, UserDialogs& dialogs, QWidget* parent = nullptr);

    // Shows the lists as the session holds them now.
    void refresh();
    bool changed() const { return changed_; }

    // The commands, as the buttons and menu call them.
    void addVariable();
    void addFunction();
    void pasteFormula();
    void eraseFormula();
    void insertFormula();
    void deleteFormula();
    void copySelection();
    void test();
    void newFile();
    void openFile();
    bool saveFileAs();
    bool saveTo(const QString& path);
    void saveDefault();
    void importFrom();
    void search(const QString& text);
    QString status() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void build();
    void apply(UserFunctions lists);
    bool askSave();
    int formulaRow() const;
    void showSelectedFormula();
    void markError(size_t at);

    Session& session_;
    UserDialogs& dialogs_;
    bool changed_ = false;
    QListWidget* vars_ = nullptr;
    QListWidget* funcs_ = nullptr;
    QListWidget* formulas_ = nullptr;
    QLineEdit* searchBox_ = nullptr;
    QLineEdit* varName_ = nullptr;
    QLineEdit* varValue_ = nullptr;
    QLineEdit* fnName_ = nullptr;
    QLineEdit* fnBody_ = nullptr;
    QLineEdit* formulaName_ = nullptr;
    QLineEdit* formulaBody_ = nullptr;
    QPlainTextEdit* testBox_ = nullptr;
    QLineEdit* result_ = nullptr;
    QLabel* status_ = nullptr;
};

// Tells the user why the last user function file didn't load, naming the file and the line;
// nothing when it loaded. Takes the engine lock.
void tellUserFunctionProblem(Session& session, UserDialogs& dialogs);

}  // namespace quillmer::gui
