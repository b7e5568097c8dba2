#include "gui/ToneTableEditor.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <filesystem>

#include "gui/UserDialogs.h"
#include "shell/DataFiles.h"
#include "shell/Session.h"
#include "tables/Scala.h"
#include "tables/TableEditing.h"
#include "tables/TableFiles.h"

namespace quillmer::gui {

namespace {
const QString kTitle = QStringLiteral("Tuning Tables");
const QString kToneFilter = QStringLiteral("Tuning Table (*.pbt)");
enum Column { kSemitones, kBend, kCents };
}  // namespace

ToneTableEditor::ToneTableEditor(Session& session, UserDialogs& dialogs, int table, QWidget* parent)
    : QDialog(parent), session_(session), dialogs_(dialogs) {
    setObjectName(QStringLiteral("frmToneTable"));
    setWindowTitle(kTitle);
    setModal(true);
    {
        auto held = session_.engine.lock();
        working_ = workingCopy(session_.tones);
    }
    auto* grid = new QGridLayout(this);
    list_ = new QListWidget(this);
    list_->setObjectName(QStringLiteral("List1"));
    list_->setFont(QFont(QStringLiteral("monospace")));
    for (int r = 0; r < PageTable::kRows; ++r) list_->addItem(QString());
    showList();
    grid->addWidget(list_, 0, 0, 5, 1);

    name_ = new QLineEdit(this);
    name_->setObjectName(QStringLiteral("txTable"));
    name_->setMaxLength(PageTable::kNameLength);
    grid->addWidget(name_, 0, 1, 1, 4);
    grid->addWidget(new QLabel(QStringLiteral("Steps"), this), 0, 5);
    steps_ = new QSpinBox(this);
    steps_->setObjectName(QStringLiteral("UpDnSteps"));
    steps_->setRange(1, kMaxScaleSteps);
    steps_->setToolTip(QStringLiteral("Number of scale steps in the octave"));
    grid->addWidget(steps_, 0, 6);

    grid_ = new QTableWidget(0, 3, this);
    grid_->setObjectName(QStringLiteral("grdSteps"));
    grid_->setHorizontalHeaderLabels({QStringLiteral("Semitones"), QStringLiteral("Bend (1 none)"), QStringLiteral("Cents")});
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid_->setMinimumSize(360, 260);
    grid->addWidget(grid_, 1, 1, 1, 6);
    buildButtons();

    connect(list_, &QListWidget::currentRowChanged, this, [this](int) { showRow(); });
    connect(name_, &QLineEdit::textEdited, this, [this](const QString& text) {
        const int r = currentRow();
        working_.setName(r, text.toStdString());
        list_->item(r)->setText(QString::fromStdString(working_.listLine(r)));
        commit();
    });
    connect(steps_, &QSpinBox::valueChanged, this, [this](int n) {
        if (showing_ || n == tone::steps(working_.row(currentRow()))) return;
        keep();
        tone::setSteps(working_.row(currentRow()), n);
        commit();
        showRow();
    });
    connect(grid_, &QTableWidget::cellChanged, this, [this](int step, int column) {
        if (!showing_) stepEdited(step, column);
    });
    selectRow(table);
}

void ToneTableEditor::buildButtons() {
    auto* grid = static_cast<QGridLayout*>(layout());
    const auto add = [&](const char* role, const char* caption, int row, int column) {
        auto* b = new QPushButton(QLatin1String(caption), this);
        b->setObjectName(QLatin1String(role));
        b->setAutoDefault(false);
        grid->addWidget(b, row, column);
        return b;
    };
    undo_ = add("btnUndo", "Undo", 2, 1);
    QPushButton* copy = add("btnCopy", "Copy", 2, 2);
    QPushButton* cut = add("btnCut", "Cut", 2, 3);
    QPushButton* paste = add("btnPaste", "Paste", 2, 4);
    QPushButton* import = add("btnImport", "Import Scala...", 2, 5);
    QPushButton* exportScl = add("btnExport", "Export Scala...", 2, 6);
    QPushButton* load = add("btnLoad", "Load...", 3, 1);
    QPushButton* save = add("btnSave", "Save...", 3, 2);
    QPushButton* loadDefault = add("btnLoadDefault", "Load Default", 3, 3);
    QPushButton* saveDefault = add("btnSaveDefault", "Save Default", 3, 4);
    QPushButton* close = add("btnClose", "Close", 3, 6);

    connect(undo_, &QPushButton::clicked, this, [this] {
        working_.undo();
        commit();
        showRow();
    });
    connect(copy, &QPushButton::clicked, this, [this] { working_.copy(currentRow()); });
    connect(cut, &QPushButton::clicked, this, [this] {
        working_.cut(currentRow());
        tone::blank(working_.row(currentRow()));
        commit();
        showRow();
    });
    connect(paste, &QPushButton::clicked, this, [this] {
        working_.paste(currentRow());
        commit();
        showRow();
    });
    const auto folder = [this] {
        auto held = session_.engine.lock();
        return QFileInfo(QString::fromStdString(session_.CurrentFileName)).absolutePath();
    };
    connect(import, &QPushButton::clicked, this, [this, folder] {
        const QString scale = dialogs_.openFileName(QStringLiteral("Import Scala Scale"), folder(), QStringLiteral("Scala Scale (*.scl)"));
        if (scale.isEmpty()) return;
        // A map is optional: cancelling this one imports the scale key by degree.
        const QString map = dialogs_.openFileName(QStringLiteral("Keyboard Map (Cancel for none)"), QFileInfo(scale).absolutePath(),
                                                  QStringLiteral("Scala Keyboard Map (*.kbm)"));
        importScale(scale, map);
    });
    connect(exportScl, &QPushButton::clicked, this, [this, folder] {
        const QString path = dialogs_.saveFileName(QStringLiteral("Export Scala Scale"), folder(), QStringLiteral("Scala Scale (*.scl)"));
        if (!path.isEmpty()) exportScale(path);
    });
    connect(load, &QPushButton::clicked, this, [this, folder] {
        const QString path = dialogs_.openFileName(QStringLiteral("Open Tuning Table"), folder(), kToneFilter);
        if (!path.isEmpty()) loadTables(path);
    });
    connect(save, &QPushButton::clicked, this, [this, folder] {
        const QString path = dialogs_.saveFileName(QStringLiteral("Save Tuning Table"), folder(), kToneFilter);
        if (!path.isEmpty()) saveTables(path);
    });
    connect(loadDefault, &QPushButton::clicked, this, [this] {
        const std::string path = findDataFile("default.pbt");
        if (path.empty())
            refuse("Unable to Load: default.pbt\nNo such file.");
        else
            loadTables(QString::fromStdString(path));
    });
    connect(saveDefault, &QPushButton::clicked, this, [this] {
        std::error_code ignored;
        std::filesystem::create_directories(userDataDir(), ignored);
        saveTables(QString::fromStdString((std::filesystem::path(userDataDir()) / "default.pbt").string()));
    });
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
}

int ToneTableEditor::currentRow() const { return std::max(0, list_->currentRow()); }

void ToneTableEditor::selectRow(int row) {
    list_->setCurrentRow(std::clamp(row, 0, PageTable::kRows - 1));
    showRow();
}

QPushButton* ToneTableEditor::button(const char* role) const { return findChild<QPushButton*>(QLatin1String(role)); }

void ToneTableEditor::showList() {
    for (int r = 0; r < PageTable::kRows; ++r) list_->item(r)->setText(QString::fromStdString(working_.listLine(r)));
}

void ToneTableEditor::showRow() {
    showing_ = true;
    const Row& row = working_.row(currentRow());
    name_->setText(QString::fromStdString(working_.name(currentRow())));
    const int n = tone::steps(row);
    steps_->setValue(n);
    grid_->setRowCount(n);
    for (int s = 0; s < n; ++s) {
        // Items are kept: this runs inside their own change signal too.
        const auto cell = [&](int column, const QString& text, bool editable = true) {
            QTableWidgetItem* item = grid_->item(s, column);
            if (!item) {
                item = new QTableWidgetItem;
                grid_->setItem(s, column, item);
            }
            item->setText(text);
            item->setFlags(editable ? item->flags() | Qt::ItemIsEditable : item->flags() & ~Qt::ItemIsEditable);
        };
        const auto step = static_cast<size_t>(s);
        cell(kSemitones, QString::number(row[step]));
        cell(kBend, s < kBendSteps ? QString::number(row[64 + step]) : QStringLiteral("-"), s < kBendSteps);
        cell(kCents, QString::number(tone::cents(row, s), 'f', 2));
    }
    grid_->setVerticalHeaderLabels([n] {
        QStringList labels;
        for (int s = 0; s < n; ++s) labels << QString::number(s);
        return labels;
    }());
    undo_->setEnabled(working_.canUndo());
    showing_ = false;
}

void ToneTableEditor::stepEdited(int step, int column) {
    bool number = false;
    const QString text = grid_->item(step, column)->text().trimmed();
    const double value = text.toDouble(&number);
    Row edited = working_.row(currentRow());
    bool ok = number;
    if (ok && column == kSemitones) tone::setSemitones(edited, step, static_cast<int>(value));
    if (ok && column == kBend) tone::setBend(edited, step, static_cast<int>(value));
    if (ok && column == kCents) ok = tone::setCents(edited, step, value);
    if (ok) {
        keep();
        working_.row(currentRow()) = edited;
        commit();
    } else {
        refuse("Step " + std::to_string(step) + ": \"" + text.toStdString() +
               "\" can't be played by a tuning table: cents from 0 up to 127 semitones, and no bend on step 63.");
    }
    showRow();
}

void ToneTableEditor::keep() { working_.keep(currentRow()); }

void ToneTableEditor::commit() {
    auto held = session_.engine.lock();
    storeWorkingCopy(working_, session_.tones);
    session_.engine.requestTableLoadStrobe(Engine::kAllTablesStrobe);
}

void ToneTableEditor::refuse(const std::string& message) { dialogs_.critical(kTitle, QString::fromStdString(message)); }

bool ToneTableEditor::loadTables(const QString& path) {
    ToneTables read;
    std::string error;
    if (!LoadToneFile(path.toStdString(), read, error)) {
        refuse(error);
        return false;
    }
    working_ = workingCopy(read);
    commit();
    showList();
    showRow();
    return true;
}

bool ToneTableEditor::saveTables(const QString& path) {
    ToneTables out;
    storeWorkingCopy(working_, out);
    std::string error;
    if (SaveToneFile(path.toStdString(), out, error)) return true;
    refuse(error);
    return false;
}

bool ToneTableEditor::importScale(const QString& scalePath, const QString& keyMapPath) {
    ScalaScale scale;
    KeyMap map;
    std::string error;
    if (!LoadScala(scalePath.toStdString(), scale, error) ||
        (!keyMapPath.isEmpty() && !LoadKeyMap(keyMapPath.toStdString(), map, error))) {
        refuse(error);
        return false;
    }
    ToneTables tones;
    std::vector<std::string> notes;
    const int r = currentRow();
    ToneTable::Row row = tones.rows.row(r);
    std::string problem;
    if (!scaleToToneRow(scale, keyMapPath.isEmpty() ? nullptr : &map, row, problem, notes)) {
        refuse(scalePath.toStdString() + "\n" + problem);
        return false;
    }
    keep();
    std::copy(row.begin(), row.end(), working_.row(r).begin());
    working_.setName(r, scale.description.empty() ? QFileInfo(scalePath).completeBaseName().toStdString() : scale.description);
    list_->item(r)->setText(QString::fromStdString(working_.listLine(r)));
    commit();
    showRow();
    if (!notes.empty()) {
        std::string text;
        for (const std::string& note : notes) text += note + "\n";
        dialogs_.information(kTitle, QString::fromStdString(text));
    }
    return true;
}

bool ToneTableEditor::exportScale(const QString& path) {
    const Row& row = working_.row(currentRow());
    std::string error;
    if (SaveScala(path.toStdString(), ToneTable::ConstRow(row.data(), kToneRowSize), working_.name(currentRow()), error))
        return true;
    refuse(error);
    return false;
}

ToneTableEditor* openToneTableEditor(Session& session, UserDialogs& dialogs, int table, QWidget* parent) {
    auto* editor = new ToneTableEditor(session, dialogs, table, parent);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->open();
    return editor;
}

}  // namespace quillmer::gui
