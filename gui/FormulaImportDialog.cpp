#include "gui/FormulaImportDialog.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "expression/UserFunctionLists.h"
#include "gui/UserDialogs.h"

namespace quillmer::gui {

namespace {
QListWidget* makeList(QWidget* parent, const char* name) {
    auto* list = new QListWidget(parent);
    list->setObjectName(QString::fromLatin1(name));
    list->setSelectionMode(QAbstractItemView::MultiSelection);
    return list;
}
std::vector<int> chosen(const QListWidget* list) {
    std::vector<int> rows;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->isSelected()) rows.push_back(list->item(i)->data(Qt::UserRole).toInt());
    return rows;
}
}  // namespace

FormulaImportDialog::FormulaImportDialog(UserDialogs& dialogs, QWidget* parent) : QDialog(parent), dialogs_(dialogs) {
    setObjectName(QStringLiteral("fUCalcImport"));
    setWindowTitle(QStringLiteral("Import User Functions"));
    auto* layout = new QVBoxLayout(this);
    from_ = new QLabel(QStringLiteral("Importing from: "), this);
    layout->addWidget(from_);
    auto* lists = new QGridLayout;
    vars_ = makeList(this, "lstVars");
    funcs_ = makeList(this, "lstUserFuncs");
    formulas_ = makeList(this, "lstModFuncs");
    lists->addWidget(vars_, 0, 0);
    lists->addWidget(funcs_, 0, 1);
    lists->addWidget(formulas_, 1, 0, 1, 2);
    layout->addLayout(lists, 1);
    auto* buttons = new QHBoxLayout;
    auto* open = new QPushButton(QStringLiteral("Open..."), this);
    open->setObjectName(QStringLiteral("bOpen"));
    auto* import = new QPushButton(QStringLiteral("Import"), this);
    import->setObjectName(QStringLiteral("bImport"));
    auto* none = new QPushButton(QStringLiteral("Deselect"), this);
    none->setObjectName(QStringLiteral("bDeselect"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    buttons->addWidget(open);
    buttons->addWidget(none);
    buttons->addStretch();
    buttons->addWidget(import);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    connect(open, &QPushButton::clicked, this, [this] { openFile(); });
    connect(none, &QPushButton::clicked, this, &FormulaImportDialog::deselect);
    connect(import, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    resize(640, 480);
}

bool FormulaImportDialog::openFile() {
    const QString path = dialogs_.openFileName(QStringLiteral("Open User Function File"), QString(),
                                               QStringLiteral("User Functions (*.ufn)"));
    return !path.isEmpty() && load(path);
}

bool FormulaImportDialog::load(const QString& path) {
    UserFunctions read;
    std::string error;
    if (!readUserFunctionFile(path.toStdString(), read, error)) {
        dialogs_.critical(windowTitle(), QString::fromStdString(error));
        return false;
    }
    source_ = std::move(read);
    from_->setText(QStringLiteral("Importing from: ") + path);
    const auto fill = [](QListWidget* list, const std::vector<std::string>& rows) {
        list->clear();
        for (size_t i = 0; i < rows.size(); ++i) {
            auto* item = new QListWidgetItem(QString::fromStdString(rows[i]), list);
            item->setData(Qt::UserRole, static_cast<int>(i));
        }
    };
    fill(vars_, source_.variables);
    fill(funcs_, source_.functions);
    formulas_->clear();
    for (int n = 0; n < kFormulaCount; ++n) {
        const std::string& line = source_.expressions[static_cast<size_t>(n)];
        if (line.empty()) continue;
        auto* item = new QListWidgetItem(QString::fromStdString(shownFormula(n, line)), formulas_);
        item->setData(Qt::UserRole, n);
    }
    return true;
}

void FormulaImportDialog::deselect() {
    vars_->clearSelection();
    funcs_->clearSelection();
    formulas_->clearSelection();
}

void FormulaImportDialog::importInto(UserFunctions& lists) const {
    importEntries(lists, source_, chosen(vars_), chosen(funcs_), chosen(formulas_));
}

}  // namespace quillmer::gui
