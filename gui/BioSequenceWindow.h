#pragma once
// The bio sequence window ("&Bio Sequence..."): the 24 slots of the program's bio set with
// each sequence's name, length and feature count; opening a .bst file, importing a FASTA or
// GenBank file, and saving the set as a .bst file.

#include <QDialog>

class QTableWidget;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class UserDialogs;

class BioSequenceWindow : public QDialog {
public:
    BioSequenceWindow(UserDialogs& dialogs, Session& session, QWidget* parent);
    // The file commands, also for tests (an empty path asks for one).
    bool openFile(QString path = {});
    bool importFile(QString path = {});
    bool saveFile(QString path = {});
    void refresh();

private:
    UserDialogs& dialogs_;
    Session& session_;
    QTableWidget* table_;
};

// Shows the window, asking for a .bst file first as the menu command does.
void showBioSequenceWindow(UserDialogs& dialogs, Session& session, QWidget* parent);

}  // namespace quillmer::gui
