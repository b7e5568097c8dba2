#include "gui/PageTableEditor.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>

#include "gui/FillDialog.h"

namespace quillmer::gui {

// --- PageGraph ---

PageGraph::PageGraph(const PageTable& table, QWidget* parent) : QWidget(parent), table_(table) {
    setObjectName(QStringLiteral("pData"));
    setFixedSize(384, 128);
}

void PageGraph::setRow(int row) {
    row_ = row;
    update();
}

void PageGraph::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), QColor(24, 28, 24));
    const int n = table_.length();
    const double w = static_cast<double>(width()) / n;
    const Row& row = table_.row(row_);
    for (int i = 0; i < n; ++i) {
        const int h = row[static_cast<size_t>(i)] * height() / 128;
        p.fillRect(QRectF(i * w, height() - h, std::max(1.0, w - 1), h), QColor(0, 190, 70));
    }
}

// --- PageTableEditor ---

PageTableEditor::PageTableEditor(PageTable& table, int firstRow, UserDialogs& dialogs, QWidget* parent)
    : QDialog(parent), table_(table), dialogs_(dialogs) {
    setObjectName(QStringLiteral("frmTablaName"));
    setWindowTitle(QStringLiteral("Page Table"));
    setModal(true);
    auto* grid = new QGridLayout(this);
    list_ = new QListWidget(this);
    list_->setObjectName(QStringLiteral("List1"));
    list_->setFont(QFont(QStringLiteral("monospace")));
    for (int r = 0; r < PageTable::kRows; ++r) list_->addItem(QString::fromStdString(table.listLine(r)));
    grid->addWidget(list_, 0, 0, 4, 1);
    name_ = new QLineEdit(this);
    name_->setObjectName(QStringLiteral("txTable"));
    name_->setMaxLength(PageTable::kNameLength);
    grid->addWidget(name_, 0, 1, 1, 5);
    graph_ = new PageGraph(table, this);
    grid->addWidget(graph_, 1, 1, 1, 5);

    auto add = [&](const char* role, const char* caption, int column) {
        auto* b = new QPushButton(QLatin1String(caption), this);
        b->setObjectName(QLatin1String(role));
        b->setAutoDefault(false);
        grid->addWidget(b, 2, column);
        return b;
    };
    undo_ = add("btnUndo", "Undo", 1);
    QPushButton* copy = add("btnCopy", "Copy", 2);
    QPushButton* cut = add("btnCut", "Cut", 3);
    QPushButton* paste = add("btnPaste", "Paste", 4);
    QPushButton* fill = add("btnFill", "Fill", 5);
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("btnOK"));
    grid->addWidget(ok, 3, 5);

    connect(list_, &QListWidget::currentRowChanged, this, [this](int) { showRow(); });
    connect(name_, &QLineEdit::textEdited, this, [this](const QString& text) {
        const int r = currentRow();
        table_.setName(r, text.toStdString());
        list_->item(r)->setText(QString::fromStdString(table_.listLine(r)));
    });
    connect(undo_, &QPushButton::clicked, this, [this] {
        table_.undo();
        edited();
    });
    connect(copy, &QPushButton::clicked, this, [this] { table_.copy(currentRow()); });
    connect(cut, &QPushButton::clicked, this, [this] {
        table_.cut(currentRow());
        edited();
    });
    connect(paste, &QPushButton::clicked, this, [this] {
        table_.paste(currentRow());
        edited();
    });
    connect(fill, &QPushButton::clicked, this, [this] {
        const int r = currentRow();
        FillState& state = fillState();
        table_.keep(r);
        state.open(std::span<const uint8_t>(table_.row(r).data(), static_cast<size_t>(table_.length())), table_.length() - 1);
        auto send = [this, r, &state] {
            for (int i = 0; i < table_.length(); ++i) table_.row(r)[static_cast<size_t>(i)] = state.hold[static_cast<size_t>(i)];
            edited();
        };
        fill_ = new FillDialog(state, send, dialogs_, QStringLiteral("Table Page ") + QString::number(r), this);
        fill_->setAttribute(Qt::WA_DeleteOnClose);
        connect(fill_, &QObject::destroyed, this, [this] { fill_ = nullptr; });
        fill_->open();
    });
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    selectRow(firstRow);
}

int PageTableEditor::currentRow() const { return std::max(0, list_->currentRow()); }

void PageTableEditor::selectRow(int row) {
    list_->setCurrentRow(std::clamp(row, 0, PageTable::kRows - 1));
    showRow();
}

QPushButton* PageTableEditor::button(const char* role) const { return findChild<QPushButton*>(QLatin1String(role)); }

FillDialog* PageTableEditor::fillDialog() const { return fill_; }

void PageTableEditor::showRow() {
    const int r = currentRow();
    name_->setText(QString::fromStdString(table_.name(r)));
    graph_->setRow(r);
    undo_->setEnabled(table_.canUndo());
}

void PageTableEditor::edited() {
    graph_->update();
    undo_->setEnabled(table_.canUndo());
}

}  // namespace quillmer::gui
