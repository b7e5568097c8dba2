#include "gui/SliderBankDialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "engine/Engine.h"

namespace quillmer::gui {

namespace {
QTableWidgetItem* number(double v) { return new QTableWidgetItem(QString::number(v, 'g', 10)); }
double read(const QTableWidget* t, int row, int col, double fallback) {
    bool ok = false;
    const double v = t->item(row, col) != nullptr ? t->item(row, col)->text().toDouble(&ok) : 0.0;
    return ok ? v : fallback;
}
}  // namespace

SliderBankDialog::SliderBankDialog(Engine& engine, std::function<UFSldr*()> find, QWidget* parent)
    : QDialog(parent), engine_(engine), find_(std::move(find)) {
    setObjectName(QStringLiteral("fVal32"));
    setWindowTitle(QStringLiteral("UF Slider Control Settings"));
    auto* layout = new QVBoxLayout(this);
    table_ = new QTableWidget(kBankSliders, 3, this);
    table_->setObjectName(QStringLiteral("grdSliders"));
    table_->setHorizontalHeaderLabels({QStringLiteral("Range"), QStringLiteral("Ofst"), QStringLiteral("Sens")});
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    doc_ = new QPlainTextEdit(this);
    doc_->setObjectName(QStringLiteral("txDoc"));
    doc_->setMaximumHeight(80);
    {
        auto held = engine_.lock();
        const UFSldr* bank = find_();
        for (int i = 0; i < kBankSliders; ++i) {
            const SliderSetup s = bank != nullptr ? bank->setup(i) : SliderSetup{};
            table_->setItem(i, 0, number(s.range));
            table_->setItem(i, 1, number(s.offset));
            table_->setItem(i, 2, number(s.sens));
        }
        if (bank != nullptr) doc_->setPlainText(QString::fromStdString(bank->doc()));
    }
    layout->addWidget(table_, 1);
    layout->addWidget(doc_);
    auto* buttons = new QHBoxLayout;
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("bOK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("bCancel"));
    auto* clearButton = new QPushButton(QStringLiteral("Clear"), this);
    clearButton->setObjectName(QStringLiteral("bClear"));
    buttons->addWidget(clearButton);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, [this] {
        applyToModule();
        accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(clearButton, &QPushButton::clicked, this, &SliderBankDialog::clear);
    resize(420, 520);
}

void SliderBankDialog::clear() {
    for (int i = 0; i < kBankSliders; ++i) {
        table_->setItem(i, 0, number(127));
        table_->setItem(i, 1, number(0));
        table_->setItem(i, 2, number(1));
    }
}

std::vector<SliderSetup> SliderBankDialog::setups() const {
    std::vector<SliderSetup> all(kBankSliders);
    for (int i = 0; i < kBankSliders; ++i) {
        all[static_cast<size_t>(i)].range = read(table_, i, 0, 127);
        all[static_cast<size_t>(i)].offset = read(table_, i, 1, 0);
        all[static_cast<size_t>(i)].sens = static_cast<float>(read(table_, i, 2, 1));
    }
    return all;
}

bool SliderBankDialog::applyToModule() {
    const std::vector<SliderSetup> all = setups();
    auto held = engine_.lock();
    UFSldr* bank = find_();
    if (bank == nullptr) return false;
    bank->applySetup(all, doc_->toPlainText().toStdString());
    engine_.MarkPatchChanged(true);
    return true;
}

void openSliderBankDialog(Engine& engine, std::function<UFSldr*()> find, QWidget* parent) {
    SliderBankDialog dialog(engine, std::move(find), parent);
    dialog.exec();
}

}  // namespace quillmer::gui
