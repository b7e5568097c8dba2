#pragma once
// Opening the dialogs of the table modules from their panels: the Fill dialog on any table
// and the page table editor on a Page<N>. `find` gives the module under the engine lock, or
// null once it has gone. The dialogs are modal, open at once and delete themselves on
// closing; the module gets every change while they are open.

#include <QString>
#include <functional>

class QWidget;

namespace quillmer {
class Engine;
class Module;
}  // namespace quillmer

namespace quillmer::gui {

class FillDialog;
class PageTableEditor;
class UserDialogs;

using ModuleFinder = std::function<Module*()>;

FillDialog* openFillDialog(Engine& engine, UserDialogs& dialogs, ModuleFinder find, const QString& name, QWidget* parent);
PageTableEditor* openPageTable(Engine& engine, UserDialogs& dialogs, ModuleFinder find, QWidget* parent);

}  // namespace quillmer::gui
