#pragma once
// The "&Modules" menu: one sub-menu per group of the catalogue, in menu order, one entry
// per type. "Pickers" sits inside "Values" and the matrix outputs under "M.Out", as users
// know them. A type whose logic isn't built yet is listed but can't be chosen.

#include <QMenu>

#include "engine/Catalogue.h"

namespace quillmer {
class ModuleRegistry;
}

namespace quillmer::gui {

class ModulesMenu : public QMenu {
    Q_OBJECT
public:
    static constexpr const char* kNotYet = "This module type isn't available yet.";

    ModulesMenu(const ModuleRegistry& registry, QWidget* parent = nullptr);

    // The sub-menu of a catalogue group, wherever it sits.
    QMenu* groupMenu(MenuGroup group) const;

signals:
    void moduleChosen(ModuleTypeId type);

private:
    void addEntries(QMenu* menu, const MenuGroupInfo& group, const ModuleRegistry& registry);
    std::array<QMenu*, kMenuGroupCount> groupMenus_{};
};

}  // namespace quillmer::gui
