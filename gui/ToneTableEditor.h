#pragma once
// The tuning-table editor: the 128 tuning tables with their names, the chosen table's steps
// by semitone, bend and cents, one-table undo, copy, cut and paste, the .pbt files (load,
// save, the default), and Scala scales in and out. Every edit plays at once: the patch's
// tuning tables take it as it is made.

#include <QDialog>

#include "tables/PageTable.h"

class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class UserDialogs;

class ToneTableEditor : public QDialog {
    Q_OBJECT
public:
    ToneTableEditor(Session& session, UserDialogs& dialogs, int table, QWidget* parent);
    int currentRow() const;
    void selectRow(int row);
    QListWidget* list() const { return list_; }
    QLineEdit* nameEdit() const { return name_; }
    QSpinBox* stepsBox() const { return steps_; }
    QTableWidget* stepsGrid() const { return grid_; }
    QPushButton* button(const char* role) const;

    // The file buttons' work once a file is chosen; false when refused (the message shown).
    bool loadTables(const QString& path);
    bool saveTables(const QString& path);
    bool importScale(const QString& scale, const QString& keyMap);
    bool exportScale(const QString& path);

private:
    void buildButtons();
    void showRow();
    void showList();
    void stepEdited(int step, int column);
    // Before an edit of the chosen table: what Undo gives back.
    void keep();
    // The patch's tuning tables take the working copy.
    void commit();
    void refuse(const std::string& message);

    Session& session_;
    UserDialogs& dialogs_;
    PageTable working_;
    QListWidget* list_ = nullptr;
    QLineEdit* name_ = nullptr;
    QSpinBox* steps_ = nullptr;
    QTableWidget* grid_ = nullptr;
    QPushButton* undo_ = nullptr;
    bool showing_ = false;
};

// Opens the editor on `table`; it deletes itself when closed.
ToneTableEditor* openToneTableEditor(Session& session, UserDialogs& dialogs, int table, QWidget* parent);

}  // namespace quillmer::gui
