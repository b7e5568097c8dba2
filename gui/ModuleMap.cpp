#include "gui/ModuleMap.h"

#include <QApplication>
#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "engine/Placement.h"
#include "gui/UserDialogs.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
const QString kTitle = QStringLiteral("Module Map");
const QString kChooseTarget = QStringLiteral("Click on destination page to place");
const char* const kCompass[] = {"North", "East", "South", "West"};
// The lists take their colours from the look: the shown page's list a shade towards the
// highlight, the others the ordinary field colour.
QColor otherPageColor() { return QApplication::palette().color(QPalette::Base); }
QColor shownPageColor() {
    const QColor base = otherPageColor(), mark = QApplication::palette().color(QPalette::Highlight);
    return QColor((base.red() * 3 + mark.red()) / 4, (base.green() * 3 + mark.green()) / 4, (base.blue() * 3 + mark.blue()) / 4);
}
QColor disabledColor() {
    return QApplication::palette().color(QPalette::Base).lightness() < 128 ? QColor(240, 110, 100) : QColor(160, 40, 40);
}
// Window sizes in twips: tall or short, wide or narrow.
constexpr int kTallHeight = 8880;
constexpr int kShortHeight = 6060;
constexpr int kWideWidth = 13200;
constexpr int kNarrowWidth = 8400;

struct CommandFace {
    const char* caption;
    const char* tip;
};
const CommandFace kCommands[] = {
    {"Move", "Move selected modules to target page"},
    {"Clear", "Clear/Restore selected modules"},
    {"Enable", "Enable selected modules"},
    {"Disable", "Disable selected modules"},
};
const QString kClear = QStringLiteral("Clear");
const QString kShow = QStringLiteral("Show");
}  // namespace

QString ModuleMap::pageTitle(int page) {
    return QStringLiteral("  %1-%2").arg(QLatin1String(kCompass[page % 4])).arg(page / 4 + 1);
}

ModuleMap::ModuleMap(Session& session, UserDialogs& dialogs, QWidget* parent)
    : QDialog(parent, Qt::Tool), session_(session), dialogs_(dialogs) {
    setObjectName(QStringLiteral("fModMap"));
    setWindowTitle(kTitle);
    auto* column = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    grid->setSpacing(3);
    for (int page = 0; page < kPageCount; ++page) {
        auto* list = new QListWidget(this);
        list->setObjectName(QStringLiteral("liMap%1").arg(page));
        list->setSelectionMode(QAbstractItemView::ExtendedSelection);
        QFont small = list->font();
        small.setPixelSize(11);
        list->setFont(small);
        QPalette colours = list->palette();
        colours.setColor(QPalette::Base, otherPageColor());
        list->setPalette(colours);
        list->viewport()->installEventFilter(this);
        connect(list, &QListWidget::itemClicked, this, [this, page](QListWidgetItem* item) { lineClicked(page, item); });
        grid->addWidget(list, groupOf(page), page % 4);
        lists_[static_cast<size_t>(page)] = list;
    }
    column->addLayout(grid, 1);

    auto* row = new QHBoxLayout;
    for (int c = 0; c < 4; ++c) {
        auto* button = new QPushButton(QLatin1String(kCommands[c].caption), this);
        button->setObjectName(QStringLiteral("bFunc%1").arg(c));
        button->setToolTip(QLatin1String(kCommands[c].tip));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, c] { run(static_cast<Command>(c)); });
        commands_[static_cast<size_t>(c)] = button;
        row->addWidget(button);
    }
    row->addStretch(1);
    wide_ = new QCheckBox(QStringLiteral("Wide"), this);
    wide_->setObjectName(QStringLiteral("ckWide"));
    wide_->setToolTip(QStringLiteral("Display wide view"));
    tall_ = new QCheckBox(QStringLiteral("Tall"), this);
    tall_->setObjectName(QStringLiteral("ckTall"));
    tall_->setToolTip(QStringLiteral("Display Tall view"));
    onTop_ = new QCheckBox(QStringLiteral("On top"), this);
    onTop_->setObjectName(QStringLiteral("ckTop"));
    onTop_->setToolTip(QStringLiteral("Make Module Map always on top"));
    for (QCheckBox* box : {wide_, tall_, onTop_}) row->addWidget(box);
    column->addLayout(row);
    connect(wide_, &QCheckBox::toggled, this, &ModuleMap::resizeToBoxes);
    connect(tall_, &QCheckBox::toggled, this, &ModuleMap::resizeToBoxes);
    connect(onTop_, &QCheckBox::toggled, this, [this](bool on) {
        const bool wasVisible = isVisible();
        setWindowFlag(Qt::WindowStaysOnTopHint, on);
        if (wasVisible) show();
    });
    resizeToBoxes();
}

void ModuleMap::resizeToBoxes() {
    resize((wide_->isChecked() ? kWideWidth : kNarrowWidth) / kTwipsPerPixel,
           (tall_->isChecked() ? kTallHeight : kShortHeight) / kTwipsPerPixel);
}

void ModuleMap::showModules(const std::vector<PlacedModule>& placed, int currentPage) {
    if (clearedStep_ != 0) updateClearCaption();
    if (placed != shown_) {
        shown_ = placed;
        rebuild();
    }
    if (mapPage_ != currentPage) highlight(currentPage);
}

void ModuleMap::rebuild() {
    held_ = selectedNames();
    for (int page = 0; page < kPageCount; ++page) {
        QListWidget* list = lists_[static_cast<size_t>(page)];
        list->clear();
        auto* title = new QListWidgetItem(pageTitle(page), list);
        title->setFlags(Qt::ItemIsEnabled);
        QFont bold = list->font();
        bold.setBold(true);
        title->setFont(bold);
    }
    for (const PlacedModule& m : shown_) {
        if (m.page < 0 || m.page >= kPageCount) continue;
        auto* item = new QListWidgetItem(m.name, lists_[static_cast<size_t>(m.page)]);
        if (!m.enabled) item->setForeground(disabledColor());
        if (held_.contains(m.name)) item->setSelected(true);
    }
}

void ModuleMap::highlight(int page) {
    mapPage_ = page;
    for (int p = 0; p < kPageCount; ++p) {
        QListWidget* list = lists_[static_cast<size_t>(p)];
        QPalette colours = list->palette();
        const QColor wanted = p == page ? shownPageColor() : otherPageColor();
        if (colours.color(QPalette::Base) == wanted) continue;
        colours.setColor(QPalette::Base, wanted);
        list->setPalette(colours);
    }
}

QStringList ModuleMap::selectedNames() const {
    QStringList names;
    for (QListWidget* list : lists_)
        for (QListWidgetItem* item : list->selectedItems()) names << item->text();
    return names;
}

void ModuleMap::run(Command command) {
    switch (command) {
        case Move:
            choosingTarget_ = true;
            setWindowTitle(kChooseTarget);
            return;
        case Delete:
            if (restorable()) {
                restoreCleared();
                return;
            }
            if (!dialogs_.confirm(kTitle, QStringLiteral("Confirm Delete Modules - Can Not Undo"))) return;
            applyToSelected(1, 0);
            return;
        case Enable: applyToSelected(3, 0); return;
        case Disable: applyToSelected(2, 0); return;
    }
}

// The clear button deletes the selection, as the question says; until anything else is
// edited it reads "Show" and brings the cleared modules back, which the edit history allows.
bool ModuleMap::restorable() {
    auto held = session_.engine.lock();
    return clearedStep_ != 0 && session_.history.undoSerial() == clearedStep_;
}

void ModuleMap::restoreCleared() {
    std::string error;
    {
        auto held = session_.engine.lock();
        if (!session_.history.undo(error)) {
            clearedStep_ = 0;
            dialogs_.critical(kTitle, QString::fromStdString(error));
        }
    }
    clearedStep_ = 0;
    updateClearCaption();
    emit changed();
}

void ModuleMap::updateClearCaption() {
    commands_[Delete]->setText(restorable() ? kShow : kClear);
}

void ModuleMap::applyToSelected(int action, int argument) {
    held_ = selectedNames();
    static const char* const kLabels[] = {"Move", "Clear", "Disable", "Enable"};
    static const EditKind kKinds[] = {EditKind::Move, EditKind::Delete, EditKind::Setting, EditKind::Setting};
    {
        auto held = session_.engine.lock();
        const auto a = static_cast<size_t>(action);
        // One command is one step of the edit history.
        session_.history.apply(kKinds[a], std::string(kLabels[a]) + " selected modules", {}, [&] {
            for (const QString& name : held_) session_.engine.MapCommand(name.toStdString(), action, argument);
        });
        clearedStep_ = action == 1 ? session_.history.undoSerial() : 0;
    }
    updateClearCaption();
    emit changed();
}

bool ModuleMap::eventFilter(QObject* watched, QEvent* event) {
    if (choosingTarget_ && event->type() == QEvent::MouseButtonPress) {
        for (int page = 0; page < kPageCount; ++page) {
            if (lists_[static_cast<size_t>(page)]->viewport() != watched) continue;
            choosingTarget_ = false;
            setWindowTitle(kTitle);
            applyToSelected(0, page);
            return true;  // the click names the page; it leaves the selection alone
        }
    }
    return QDialog::eventFilter(watched, event);
}

void ModuleMap::lineClicked(int page, QListWidgetItem* item) {
    if (!(item->flags() & Qt::ItemIsSelectable)) return;
    highlight(page);
    bool turned = false;
    {
        auto held = session_.engine.lock();
        turned = session_.engine.CurrentPage() != page;
        if (turned) session_.engine.showPage(page);
    }
    if (turned) emit changed();
    emit moduleClicked(item->text());
}

}  // namespace quillmer::gui
