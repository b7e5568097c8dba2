#include "gui/ModulesMenu.h"

#include "engine/ModuleRegistry.h"

namespace quillmer::gui {

namespace {
QString text(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }
// A caption shows as written: an ampersand is not an accelerator here.
QString entryCaption(std::string_view caption) { return text(caption).replace(QLatin1Char('&'), QStringLiteral("&&")); }
bool isMatrixOutput(std::string_view type) { return type.starts_with("MOut"); }
}  // namespace

ModulesMenu::ModulesMenu(const ModuleRegistry& registry, QWidget* parent) : QMenu(QStringLiteral("&Modules"), parent) {
    setObjectName(QStringLiteral("mnuTools"));
    QMenu* values = nullptr;
    for (const MenuGroupInfo& group : menuGroups()) {
        // The pickers are a sub-menu at the end of the values.
        QMenu* parentMenu = group.group == MenuGroup::Pickers && values ? values : this;
        QMenu* menu = parentMenu->addMenu(text(group.caption));
        menu->setObjectName(QStringLiteral("mnuTools") + text(group.caption));
        menu->setToolTipsVisible(true);
        groupMenus_[static_cast<size_t>(group.group)] = menu;
        if (group.group == MenuGroup::Values) values = menu;
        addEntries(menu, group, registry);
    }
}

void ModulesMenu::addEntries(QMenu* menu, const MenuGroupInfo& group, const ModuleRegistry& registry) {
    QMenu* outputs = nullptr;
    for (std::string_view type : group.entries) {
        if (type == "-") {
            menu->addSeparator();
            continue;
        }
        const std::optional<ModuleTypeId> id = typeIdByName(type);
        if (!id) continue;
        QMenu* target = menu;
        if (group.group == MenuGroup::Matrix && isMatrixOutput(type)) {
            if (!outputs) {
                outputs = menu->addMenu(QStringLiteral("M.Out"));
                outputs->setToolTipsVisible(true);
            }
            target = outputs;
        }
        QAction* entry = target->addAction(entryCaption(typeInfo(*id).caption));
        entry->setObjectName(QStringLiteral("mnuTools") + text(type));
        entry->setData(static_cast<int>(*id));
        if (registry.isBuilt(*id)) {
            const ModuleTypeId chosen = *id;
            connect(entry, &QAction::triggered, this, [this, chosen] { emit moduleChosen(chosen); });
        } else {
            entry->setEnabled(false);
            entry->setToolTip(QString::fromLatin1(kNotYet));
        }
    }
}

QMenu* ModulesMenu::groupMenu(MenuGroup group) const { return groupMenus_[static_cast<size_t>(group)]; }

}  // namespace quillmer::gui
