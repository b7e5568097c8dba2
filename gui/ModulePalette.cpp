#include "gui/ModulePalette.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QStringListModel>

#include "engine/ModuleRegistry.h"

namespace quillmer::gui {

namespace {
QString qtext(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }
}  // namespace

QString ModulePalette::entryText(ModuleTypeId type) {
    const TypeInfo& info = typeInfo(type);
    for (const MenuGroupInfo& group : menuGroups())
        for (std::string_view entry : group.entries)
            if (entry == info.type) return qtext(info.caption) + QStringLiteral("  \u2014 ") + qtext(group.caption);
    return qtext(info.caption);
}

ModulePalette::ModulePalette(const ModuleRegistry& registry, QWidget* parent)
    : QLineEdit(parent), model_(new QStringListModel(this)), completer_(new QCompleter(this)) {
    setObjectName(QStringLiteral("txtPalette"));
    setPlaceholderText(QStringLiteral("Find module\u2026"));
    setToolTip(QStringLiteral("Type part of a module's name, Enter places it at the cursor"));
    setClearButtonEnabled(true);
    setMaximumWidth(fontMetrics().horizontalAdvance(QLatin1Char('M')) * 18);
    for (const MenuGroupInfo& group : menuGroups()) {
        for (std::string_view name : group.entries) {
            const std::optional<ModuleTypeId> id = typeIdByName(name);
            if (!id || !registry.isBuilt(*id)) continue;
            entries_.push_back({*id, qtext(typeInfo(*id).caption), qtext(name), qtext(group.caption)});
        }
    }
    // The list shows what narrow() finds, in its order; the completer doesn't filter again.
    completer_->setModel(model_);
    completer_->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    completer_->setMaxVisibleItems(12);
    completer_->setWidget(this);
    connect(this, &QLineEdit::textEdited, this, &ModulePalette::narrow);
    connect(completer_, qOverload<const QModelIndex&>(&QCompleter::activated), this, [this](const QModelIndex& index) {
        const std::vector<ModuleTypeId> found = matches(text());
        const auto row = static_cast<size_t>(index.row());
        if (row < found.size()) {
            clear();
            emit moduleChosen(found[row]);
        }
    });
}

std::vector<ModuleTypeId> ModulePalette::matches(const QString& typed) const {
    const QString wanted = typed.trimmed();
    std::vector<ModuleTypeId> found;
    if (wanted.isEmpty()) return found;
    const auto pass = [&](auto accepts) {
        for (const Entry& e : entries_)
            if (accepts(e) && std::find(found.begin(), found.end(), e.type) == found.end()) found.push_back(e.type);
    };
    const Qt::CaseSensitivity any = Qt::CaseInsensitive;
    pass([&](const Entry& e) { return e.caption.compare(wanted, any) == 0 || e.name.compare(wanted, any) == 0; });
    pass([&](const Entry& e) { return e.caption.startsWith(wanted, any) || e.name.startsWith(wanted, any); });
    pass([&](const Entry& e) { return e.caption.contains(wanted, any) || e.name.contains(wanted, any); });
    pass([&](const Entry& e) { return e.group.contains(wanted, any); });
    return found;
}

void ModulePalette::narrow(const QString& typed) {
    QStringList lines;
    for (ModuleTypeId type : matches(typed)) lines << entryText(type);
    model_->setStringList(lines);
    if (lines.isEmpty()) {
        completer_->popup()->hide();
        return;
    }
    completer_->complete();
    completer_->popup()->setCurrentIndex(model_->index(0, 0));
}

void ModulePalette::choose() {
    const std::vector<ModuleTypeId> found = matches(text());
    if (found.empty()) return;
    size_t row = 0;
    if (completer_->popup()->isVisible() && completer_->popup()->currentIndex().isValid())
        row = static_cast<size_t>(completer_->popup()->currentIndex().row());
    completer_->popup()->hide();
    clear();
    emit moduleChosen(found[std::min(row, found.size() - 1)]);
}

void ModulePalette::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        choose();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        clear();
        completer_->popup()->hide();
        clearFocus();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

}  // namespace quillmer::gui
