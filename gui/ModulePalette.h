#pragma once
// The module palette beside the menus: type part of a type name, a menu caption or a group,
// pick from the list that narrows as you type, and Enter places the module at the cursor.
// Only types that run are offered.

#include <QLineEdit>
#include <vector>

#include "engine/Catalogue.h"

class QCompleter;
class QStringListModel;

namespace quillmer {
class ModuleRegistry;
}

namespace quillmer::gui {

class ModulePalette : public QLineEdit {
    Q_OBJECT
public:
    explicit ModulePalette(const ModuleRegistry& registry, QWidget* parent = nullptr);

    // The types that `text` finds, best first: a caption or type name that starts with it
    // before one that only holds it, then a group's caption; menu order within each.
    std::vector<ModuleTypeId> matches(const QString& text) const;
    // The line a type shows in the list.
    static QString entryText(ModuleTypeId type);

signals:
    void moduleChosen(ModuleTypeId type);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void narrow(const QString& text);
    void choose();

    struct Entry {
        ModuleTypeId type;
        QString caption, name, group;
    };
    std::vector<Entry> entries_;
    QStringListModel* model_;
    QCompleter* completer_;
};

}  // namespace quillmer::gui
