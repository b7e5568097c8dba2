#pragma once
// fUCalcImport: reads another .ufn into three lists of its own; the chosen variables and
// functions are appended to the editor's lists, the chosen formulas replace theirs by number.

#include <QDialog>

#include "expression/UserFunctionFile.h"

class QLabel;
class QListWidget;

namespace quillmer::gui {

class UserDialogs;

class FormulaImportDialog : public QDialog {
    Q_OBJECT
public:
    FormulaImportDialog(UserDialogs& dialogs, QWidget* parent = nullptr);
    // bOpen: asks for a file and shows it. False when none was read.
    bool openFile();
    bool load(const QString& path);
    void deselect();
    // What bImport copies into `lists`.
    void importInto(UserFunctions& lists) const;
    QListWidget* list(int which) const { return which == 0 ? vars_ : which == 1 ? funcs_ : formulas_; }

private:
    UserDialogs& dialogs_;
    UserFunctions source_;
    QListWidget* vars_ = nullptr;
    QListWidget* funcs_ = nullptr;
    QListWidget* formulas_ = nullptr;
    QLabel* from_ = nullptr;
};

}  // namespace quillmer::gui
