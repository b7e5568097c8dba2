#pragma once
// The general-table editor: the page-table editor on the patch's 128 tables, with the table
// files' buttons besides (Load, Save, Load Default, Save Default) and Close. The tables take
// the edits when it closes, and the table modules show the new names at the next tick.

#include <QString>

class QWidget;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class PageTableEditor;
class UserDialogs;

// Opens the editor on `table`; it deletes itself when closed.
PageTableEditor* openTableBankEditor(Session& session, UserDialogs& dialogs, int table, QWidget* parent);

}  // namespace quillmer::gui
