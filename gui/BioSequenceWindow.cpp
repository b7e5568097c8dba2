#include "gui/BioSequenceWindow.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "gui/UserDialogs.h"
#include "shell/BioFile.h"
#include "shell/BioImport.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
const QString kOpenTitle = QStringLiteral("Open Bio Sequencer File");
const QString kFilter = QStringLiteral("Bio Sequence (*.bst)");
}  // namespace

BioSequenceWindow::BioSequenceWindow(UserDialogs& dialogs, Session& session, QWidget* parent)
    : QDialog(parent), dialogs_(dialogs), session_(session), table_(new QTableWidget(kBioSequences, 3, this)) {
    setObjectName(QStringLiteral("BioSequenceWindow"));
    setWindowTitle(QStringLiteral("Bio Sequences"));
    table_->setObjectName(QStringLiteral("tblSequences"));
    table_->setHorizontalHeaderLabels({QStringLiteral("Name"), QStringLiteral("Codons"), QStringLiteral("Features")});
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    QStringList rows;
    for (int s = 0; s < kBioSequences; ++s) rows << QString::number(s);
    table_->setVerticalHeaderLabels(rows);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* open = buttons->addButton(QStringLiteral("&Open..."), QDialogButtonBox::ActionRole);
    auto* import = buttons->addButton(QStringLiteral("&Import FASTA/GenBank..."), QDialogButtonBox::ActionRole);
    auto* save = buttons->addButton(QStringLiteral("&Save As..."), QDialogButtonBox::ActionRole);
    open->setObjectName(QStringLiteral("btnOpen"));
    import->setObjectName(QStringLiteral("btnImport"));
    save->setObjectName(QStringLiteral("btnSave"));
    connect(open, &QPushButton::clicked, this, [this] { openFile(); });
    connect(import, &QPushButton::clicked, this, [this] { importFile(); });
    connect(save, &QPushButton::clicked, this, [this] { saveFile(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_);
    layout->addWidget(buttons);
    resize(520, 560);
    refresh();
}

void BioSequenceWindow::refresh() {
    auto held = session_.engine.lock();
    const BioSet& set = bioSet();
    for (int s = 0; s < kBioSequences; ++s) {
        const BioSequence& seq = set.sequences[static_cast<size_t>(s)];
        const bool filled = seq.hasData();
        table_->setItem(s, 0, new QTableWidgetItem(filled ? QString::fromStdString(seq.name) : QStringLiteral("<no data>")));
        table_->setItem(s, 1, new QTableWidgetItem(filled ? QString::number(seq.last + 1) : QString()));
        table_->setItem(s, 2, new QTableWidgetItem(filled ? QString::number(seq.count) : QString()));
    }
}

bool BioSequenceWindow::openFile(QString path) {
    if (path.isEmpty()) path = dialogs_.openFileName(kOpenTitle, {}, kFilter);
    if (path.isEmpty()) return false;
    std::string error;
    bool loaded = false;
    {
        auto held = session_.engine.lock();
        loaded = loadBioFile(path.toStdString(), error);
    }
    if (!loaded) dialogs_.critical(kOpenTitle, QString::fromStdString(error));
    refresh();
    return loaded;
}

bool BioSequenceWindow::importFile(QString path) {
    const QString title = QStringLiteral("Import Sequences");
    if (path.isEmpty())
        path = dialogs_.openFileName(title, {}, QStringLiteral("Sequences (*.fa *.fasta *.fna *.faa *.gb *.gbk *.genbank *.seq);;All files (*)"));
    if (path.isEmpty()) return false;
    BioImportResult result;
    std::string error;
    if (!importBioFile(path.toStdString(), result, error)) {
        dialogs_.critical(title, QString::fromStdString(error));
        return false;
    }
    {
        auto held = session_.engine.lock();
        installBioSet(std::move(result.set));
    }
    if (!result.notes.empty()) {
        QString notes;
        for (const std::string& n : result.notes) notes += QString::fromStdString(n) + QLatin1Char('\n');
        dialogs_.information(title, notes.trimmed());
    }
    refresh();
    return true;
}

bool BioSequenceWindow::saveFile(QString path) {
    const QString title = QStringLiteral("Save Bio Sequence File");
    if (path.isEmpty()) path = dialogs_.saveFileName(title, {}, kFilter);
    if (path.isEmpty()) return false;
    BioSet copy;
    {
        auto held = session_.engine.lock();
        copy = bioSet();
    }
    std::string error;
    if (!writeBioFile(path.toStdString(), copy, error)) {
        dialogs_.critical(title, QString::fromStdString(error));
        return false;
    }
    return true;
}

void showBioSequenceWindow(UserDialogs& dialogs, Session& session, QWidget* parent) {
    auto* window = new BioSequenceWindow(dialogs, session, parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->openFile();
    window->show();
}

}  // namespace quillmer::gui
