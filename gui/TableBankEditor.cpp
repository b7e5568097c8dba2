#include "gui/TableBankEditor.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QListWidget>
#include <QPushButton>
#include <filesystem>
#include <memory>

#include "gui/PageTableEditor.h"
#include "gui/UserDialogs.h"
#include "shell/DataFiles.h"
#include "shell/Session.h"
#include "tables/TableEditing.h"
#include "tables/TableFiles.h"

namespace quillmer::gui {

namespace {

const QString kTableFilter = QStringLiteral("Table Files (*.tbl)");

// The list and the chosen row show the working table again after a load.
void reshow(PageTableEditor* editor, const PageTable& table) {
    for (int r = 0; r < PageTable::kRows; ++r) editor->list()->item(r)->setText(QString::fromStdString(table.listLine(r)));
    editor->selectRow(editor->currentRow());
}

QString folderOf(Session& session) {
    auto held = session.engine.lock();
    return QFileInfo(QString::fromStdString(session.CurrentFileName)).absolutePath();
}

}  // namespace

PageTableEditor* openTableBankEditor(Session& session, UserDialogs& dialogs, int table, QWidget* parent) {
    auto working = std::make_shared<PageTable>();
    {
        auto held = session.engine.lock();
        *working = workingCopy(session.tables);
    }
    auto* editor = new PageTableEditor(*working, table, dialogs, parent);
    editor->setWindowTitle(QStringLiteral("Tables"));
    editor->setAttribute(Qt::WA_DeleteOnClose);
    auto* grid = static_cast<QGridLayout*>(editor->layout());
    const auto add = [&](const char* role, const char* caption, int column) {
        auto* b = new QPushButton(QLatin1String(caption), editor);
        b->setObjectName(QLatin1String(role));
        b->setAutoDefault(false);
        grid->addWidget(b, 4, column);
        return b;
    };
    QPushButton* load = add("btnLoad", "Load...", 1);
    QPushButton* save = add("btnSave", "Save...", 2);
    QPushButton* loadDefault = add("btnLoadDefault", "Load Default", 3);
    QPushButton* saveDefault = add("btnSaveDefault", "Save Default", 4);
    if (QPushButton* ok = editor->button("btnOK")) {
        ok->setObjectName(QStringLiteral("btnClose"));
        ok->setText(QStringLiteral("Close"));
    }

    // A whole bank read into the working table, or nothing when the file is refused.
    const auto loadBank = [editor, working, &dialogs](const std::string& path) {
        GeneralTables read;
        storeWorkingCopy(*working, read);
        std::string error;
        if (!LoadTableFile(path, read, error)) {
            dialogs.critical(QStringLiteral("Tables"), QString::fromStdString(error));
            return;
        }
        *working = workingCopy(read);
        reshow(editor, *working);
    };
    const auto saveBank = [working, &dialogs](const std::string& path) {
        GeneralTables out;
        storeWorkingCopy(*working, out);
        std::string error;
        if (!SaveTableFile(path, out, error)) dialogs.critical(QStringLiteral("Tables"), QString::fromStdString(error));
    };
    QObject::connect(load, &QPushButton::clicked, editor, [editor, working, &dialogs, &session, loadBank] {
        const QString path = dialogs.openFileName(QStringLiteral("Open Table File"), folderOf(session),
                                                  kTableFilter + QStringLiteral(";;Text Files (*.txt)"));
        if (path.isEmpty()) return;
        if (!path.endsWith(QStringLiteral(".txt"), Qt::CaseInsensitive)) {
            loadBank(path.toStdString());
            return;
        }
        GeneralTables names;
        storeWorkingCopy(*working, names);
        std::string error;
        if (!LoadTableNames(path.toStdString(), names.names, error)) {
            dialogs.critical(QStringLiteral("Tables"), QString::fromStdString(error));
            return;
        }
        for (int r = 0; r < PageTable::kRows; ++r) working->setName(r, names.names.name(r));
        reshow(editor, *working);
    });
    QObject::connect(save, &QPushButton::clicked, editor, [&dialogs, &session, saveBank] {
        const QString path = dialogs.saveFileName(QStringLiteral("Save Current Table File"), folderOf(session), kTableFilter);
        if (!path.isEmpty()) saveBank(path.toStdString());
    });
    QObject::connect(loadDefault, &QPushButton::clicked, editor, [&dialogs, loadBank] {
        const std::string path = findDataFile("default.tbl");
        if (path.empty())
            dialogs.critical(QStringLiteral("Tables"), QStringLiteral("Unable to Load: default.tbl\nNo such file."));
        else
            loadBank(path);
    });
    QObject::connect(saveDefault, &QPushButton::clicked, editor, [&dialogs, saveBank] {
        std::error_code ignored;
        std::filesystem::create_directories(userDataDir(), ignored);
        saveBank((std::filesystem::path(userDataDir()) / "default.tbl").string());
    });
    QObject::connect(editor, &QDialog::finished, editor, [&session, working] {
        auto held = session.engine.lock();
        const int changed = changedTables(*working, session.tables);
        if (changed < 0) return;
        storeWorkingCopy(*working, session.tables);
        session.engine.markGeneralTablesChanged();
        session.engine.requestTableLoadStrobe(static_cast<uint8_t>(changed));
    });
    editor->open();
    return editor;
}

}  // namespace quillmer::gui
