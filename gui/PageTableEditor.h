#pragma once
// The page table editor: the 128 pages of a table, each with its name, a graph of the
// chosen page, one-row undo, copy, cut and paste, and the Fill dialog on the chosen page.

#include <QDialog>
#include <functional>

#include "tables/PageTable.h"

class QLineEdit;
class QListWidget;
class QPushButton;

namespace quillmer::gui {

class FillDialog;
class UserDialogs;

class PageGraph : public QWidget {
    Q_OBJECT
public:
    PageGraph(const PageTable& table, QWidget* parent);
    void setRow(int row);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const PageTable& table_;
    int row_ = 0;
};

class PageTableEditor : public QDialog {
    Q_OBJECT
public:
    PageTableEditor(PageTable& table, int firstRow, UserDialogs& dialogs, QWidget* parent);
    int currentRow() const;
    void selectRow(int row);
    QListWidget* list() const { return list_; }
    QLineEdit* nameEdit() const { return name_; }
    QPushButton* button(const char* role) const;
    // The Fill dialog the editor opened on a page, while it is open.
    FillDialog* fillDialog() const;

private:
    void showRow();
    void edited();
    PageTable& table_;
    UserDialogs& dialogs_;
    QListWidget* list_ = nullptr;
    QLineEdit* name_ = nullptr;
    PageGraph* graph_ = nullptr;
    QPushButton* undo_ = nullptr;
    FillDialog* fill_ = nullptr;
};

}  // namespace quillmer::gui
