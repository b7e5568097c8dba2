#include "gui/FormulaEditor.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>
#include <filesystem>

#include "expression/UserFunctionLists.h"
#include "gui/FormulaHighlighter.h"
#include "gui/FormulaImportDialog.h"
#include "gui/UserDialogs.h"
#include "shell/DataFiles.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
QString q(const std::string& s) { return QString::fromStdString(s); }
std::string s(const QString& text) { return text.toStdString(); }
const QString kFilter = QStringLiteral("User Functions (*.ufn)");
const QString kTitle = QStringLiteral("User Functions");

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(QString::fromLatin1(name));
    return b;
}
QLineEdit* field(QWidget* parent, const char* name, const QString& hint) {
    auto* f = new QLineEdit(parent);
    f->setObjectName(QString::fromLatin1(name));
    f->setPlaceholderText(hint);
    return f;
}
}  // namespace

FormulaEditor::FormulaEditor(Session& session, UserDialogs& dialogs, QWidget* parent)
    : QMainWindow(parent), session_(session), dialogs_(dialogs) {
    setObjectName(QStringLiteral("fUCalc"));
    setWindowTitle(kTitle);
    build();
    refresh();
}

void FormulaEditor::build() {
    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("&New"), this, &FormulaEditor::newFile)->setObjectName(QStringLiteral("mnuNew"));
    file->addAction(QStringLiteral("&Open..."), this, &FormulaEditor::openFile)->setObjectName(QStringLiteral("mnuOpen"));
    file->addAction(QStringLiteral("Save &As..."), this, [this] { saveFileAs(); })->setObjectName(QStringLiteral("mnuSaveAs"));
    file->addAction(QStringLiteral("Save &Default"), this, &FormulaEditor::saveDefault)->setObjectName(QStringLiteral("mnuSaveDefault"));
    file->addAction(QStringLiteral("&Import..."), this, &FormulaEditor::importFrom)->setObjectName(QStringLiteral("mnuImport"));

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    searchBox_ = field(central, "txSearch", QStringLiteral("Search the lists"));
    layout->addWidget(searchBox_);
    connect(searchBox_, &QLineEdit::textChanged, this, &FormulaEditor::search);

    auto* lists = new QGridLayout;
    vars_ = new QListWidget(central);
    vars_->setObjectName(QStringLiteral("lstVars"));
    funcs_ = new QListWidget(central);
    funcs_->setObjectName(QStringLiteral("lstUserFuncs"));
    formulas_ = new QListWidget(central);
    formulas_->setObjectName(QStringLiteral("lstModFuncs"));
    lists->addWidget(new QLabel(QStringLiteral("Variables"), central), 0, 0);
    lists->addWidget(new QLabel(QStringLiteral("User functions"), central), 0, 1);
    lists->addWidget(vars_, 1, 0);
    lists->addWidget(funcs_, 1, 1);
    lists->addWidget(new QLabel(QStringLiteral("Formulas"), central), 2, 0, 1, 2);
    lists->addWidget(formulas_, 3, 0, 1, 2);
    layout->addLayout(lists, 1);
    connect(formulas_, &QListWidget::currentRowChanged, this, [this] { showSelectedFormula(); });

    auto* varRow = new QHBoxLayout;
    varName_ = field(central, "txVarName", QStringLiteral("name"));
    varValue_ = field(central, "txVarValue", QStringLiteral("value"));
    QPushButton* addVar = button(central, "bAddVar", QStringLiteral("Add Var"));
    varRow->addWidget(varName_);
    varRow->addWidget(varValue_);
    varRow->addWidget(addVar);
    layout->addLayout(varRow);
    connect(addVar, &QPushButton::clicked, this, &FormulaEditor::addVariable);

    auto* fnRow = new QHBoxLayout;
    fnName_ = field(central, "txFnName", QStringLiteral("name(args)"));
    fnBody_ = field(central, "txFnBody", QStringLiteral("body"));
    QPushButton* addFn = button(central, "bAddFn", QStringLiteral("Add Fn"));
    fnRow->addWidget(fnName_);
    fnRow->addWidget(fnBody_, 2);
    fnRow->addWidget(addFn);
    layout->addLayout(fnRow);
    connect(addFn, &QPushButton::clicked, this, &FormulaEditor::addFunction);

    auto* formulaRow = new QHBoxLayout;
    formulaName_ = field(central, "txFuncName", QStringLiteral("title and documentation"));
    formulaBody_ = field(central, "txFuncBody", QStringLiteral("formula"));
    formulaRow->addWidget(formulaName_);
    formulaRow->addWidget(formulaBody_, 2);
    layout->addLayout(formulaRow);
    auto* commands = new QHBoxLayout;
    const std::pair<const char*, const char*> names[] = {{"bFuncPaste", "Paste"}, {"bFuncErase", "Erase"},
                                                         {"bFuncInsert", "Insert"}, {"bFuncDelete", "Delete"},
                                                         {"bCopy", "Copy"}, {"bTest", "Test"}};
    for (const auto& [name, caption] : names) {
        QPushButton* b = button(central, name, QString::fromLatin1(caption));
        commands->addWidget(b);
        const std::string n = name;
        connect(b, &QPushButton::clicked, this, [this, n] {
            if (n == "bFuncPaste") pasteFormula();
            else if (n == "bFuncErase") eraseFormula();
            else if (n == "bFuncInsert") insertFormula();
            else if (n == "bFuncDelete") deleteFormula();
            else if (n == "bCopy") copySelection();
            else test();
        });
    }
    layout->addLayout(commands);

    testBox_ = new QPlainTextEdit(central);
    testBox_->setObjectName(QStringLiteral("txTest"));
    testBox_->setPlaceholderText(QStringLiteral("A formula to test; select part of it to test only that"));
    testBox_->setMaximumHeight(90);
    new FormulaHighlighter(testBox_->document());
    layout->addWidget(testBox_);
    result_ = field(central, "txResult", QString());
    result_->setReadOnly(true);
    layout->addWidget(result_);
    status_ = new QLabel(central);
    status_->setObjectName(QStringLiteral("lblStatus"));
    layout->addWidget(status_);
    setCentralWidget(central);
    resize(760, 640);
}

void FormulaEditor::refresh() {
    const UserFunctions& lists = session_.userFunctions;
    const CompileReport& report = session_.userFunctionReport;
    const auto fill = [](QListWidget* list, const std::vector<std::string>& rows, const std::vector<std::string>& errors) {
        const int keep = list->currentRow();
        list->clear();
        for (size_t i = 0; i < rows.size(); ++i) {
            const std::string error = i < errors.size() && !errors[i].empty() ? "    Error: " + errors[i] : std::string();
            list->addItem(q(rows[i] + error));
        }
        list->setCurrentRow(std::min(keep, list->count() - 1));
    };
    fill(vars_, lists.variables, report.variables);
    fill(funcs_, lists.functions, report.functions);
    const int keep = formulas_->currentRow();
    formulas_->clear();
    for (int n = 0; n < kFormulaCount; ++n) {
        const std::string& error = report.expressions[static_cast<size_t>(n)];
        formulas_->addItem(q(shownFormula(n, lists.expressions[static_cast<size_t>(n)]) + (error.empty() ? "" : "    Error: " + error)));
    }
    formulas_->setCurrentRow(keep < 0 ? 0 : keep);
    status_->setText(q(session_.userFunctionFile.empty() ? std::string("No file") : "File: " + session_.userFunctionFile) +
                     (report.errors > 0 ? QStringLiteral("   Errors: %1").arg(report.errors) : QString()));
    search(searchBox_->text());
}

QString FormulaEditor::status() const { return status_->text(); }

void FormulaEditor::apply(UserFunctions lists) {
    {
        auto held = session_.engine.lock();
        session_.applyUserFunctions(std::move(lists));
    }
    changed_ = true;
    refresh();
}

int FormulaEditor::formulaRow() const { return formulas_->currentRow(); }

void FormulaEditor::showSelectedFormula() {
    const int row = formulaRow();
    if (row < 0 || row >= kFormulaCount) return;
    const FormulaLine line = splitFormulaLine(session_.userFunctions.expressions[static_cast<size_t>(row)]);
    formulaName_->setText(q(line.title));
    formulaBody_->setText(q(line.body));
}

namespace {
// Runs a list command, asking its question first when it has one.
template <class Command>
void run(UserDialogs& dialogs, UserFunctions& lists, Command command) {
    ListOutcome outcome = command(lists, false);
    if (!outcome.question.empty() && dialogs.confirm(kTitle, q(outcome.question))) outcome = command(lists, true);
    if (!outcome.message.empty()) dialogs.information(kTitle, q(outcome.message));
}
}  // namespace

#define QUILLMER_LIST_COMMAND(body)                                                  \
    UserFunctions lists = session_.userFunctions;                                    \
    run(dialogs_, lists, [&](UserFunctions& l, bool confirmed) { return body; });    \
    if (!(lists == session_.userFunctions)) apply(std::move(lists));

void FormulaEditor::pasteFormula() {
    const int row = formulaRow();
    QUILLMER_LIST_COMMAND(quillmer::pasteFormula(l, row, s(formulaName_->text()), s(formulaBody_->text()), confirmed))
}
void FormulaEditor::eraseFormula() {
    const int row = formulaRow();
    QUILLMER_LIST_COMMAND(quillmer::eraseFormula(l, row, confirmed))
}
void FormulaEditor::insertFormula() {
    const int row = formulaRow();
    QUILLMER_LIST_COMMAND(quillmer::insertFormula(l, row, confirmed))
}
void FormulaEditor::deleteFormula() {
    const int row = formulaRow();
    QUILLMER_LIST_COMMAND(quillmer::deleteFormula(l, row, confirmed))
}
#undef QUILLMER_LIST_COMMAND

void FormulaEditor::addVariable() {
    UserFunctions lists = session_.userFunctions;
    const ListOutcome outcome = quillmer::addVariable(lists, s(varName_->text()), s(varValue_->text()));
    if (!outcome.done) {
        dialogs_.information(kTitle, q(outcome.message));
        return;
    }
    apply(std::move(lists));
}

void FormulaEditor::addFunction() {
    UserFunctions lists = session_.userFunctions;
    const ListOutcome outcome = quillmer::addFunction(lists, s(fnName_->text()), s(fnBody_->text()));
    if (!outcome.done) {
        dialogs_.information(kTitle, q(outcome.message));
        return;
    }
    apply(std::move(lists));
    const auto& errors = session_.userFunctionReport.functions;
    const std::string prototype = s(fnName_->text());
    std::string error;
    for (size_t k = 0; k < session_.userFunctions.functions.size(); ++k)
        if (session_.userFunctions.functions[k].rfind(prototype, 0) == 0 && k < errors.size()) error = errors[k];
    result_->setText(error.empty() ? QStringLiteral("Eval OK: ") + q(prototype) : QStringLiteral("Error in Eval: ") + q(error));
}

void FormulaEditor::copySelection() {
    const QListWidgetItem* item = formulas_->currentItem();
    if (item == nullptr) {
        dialogs_.information(kTitle, QStringLiteral("Nothing to copy."));
        return;
    }
    QGuiApplication::clipboard()->setText(item->text());
}

void FormulaEditor::test() {
    QTextCursor cursor = testBox_->textCursor();
    const bool selection = cursor.hasSelection();
    const QString text = selection ? cursor.selectedText().replace(QChar::ParagraphSeparator, u'\n') : testBox_->toPlainText();
    const int offset = selection ? cursor.selectionStart() : 0;
    TestOutcome outcome;
    {
        auto held = session_.engine.lock();
        outcome = testFormula(session_.formulas, s(text), std::max(0, formulaRow()));
    }
    result_->setText(q(outcome.result));
    if (!outcome.ok && outcome.errorAt != std::string::npos)
        markError(static_cast<size_t>(offset) + static_cast<size_t>(QString::fromStdString(s(text).substr(0, outcome.errorAt)).size()));
    else
        testBox_->setExtraSelections({});
}

void FormulaEditor::markError(size_t at) {
    QTextEdit::ExtraSelection mark;
    mark.format.setBackground(QColor(255, 200, 200));
    mark.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    mark.format.setUnderlineColor(Qt::red);
    mark.cursor = QTextCursor(testBox_->document());
    mark.cursor.setPosition(static_cast<int>(at));
    mark.cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    testBox_->setExtraSelections({mark});
}

void FormulaEditor::search(const QString& text) {
    const std::string needle = s(text);
    for (QListWidget* list : {vars_, funcs_, formulas_}) {
        std::vector<std::string> rows;
        for (int i = 0; i < list->count(); ++i) rows.push_back(s(list->item(i)->text()));
        const std::vector<int> found = findRows(rows, needle);
        for (int i = 0; i < list->count(); ++i) list->item(i)->setHidden(true);
        for (int i : found) list->item(i)->setHidden(false);
    }
}

bool FormulaEditor::askSave() {
    if (!changed_) return true;
    const SaveAnswer answer = dialogs_.askSaveChanges(QStringLiteral("Current setup was changed.  Save?"), true);
    if (answer == SaveAnswer::Cancel) return false;
    if (answer == SaveAnswer::Yes) return saveFileAs();
    return true;
}

void FormulaEditor::newFile() {
    if (!askSave()) return;
    apply(UserFunctions{});
    {
        auto held = session_.engine.lock();
        session_.userFunctionFile.clear();
    }
    changed_ = false;
    refresh();
}

void FormulaEditor::openFile() {
    if (!askSave()) return;
    const QString path = dialogs_.openFileName(QStringLiteral("Open User Function File"), QString(), kFilter);
    if (path.isEmpty()) return;
    std::string error;
    bool loaded = false;
    {
        auto held = session_.engine.lock();
        loaded = session_.LoadUserFunctions(s(path), error);
    }
    if (!loaded) {
        dialogs_.critical(kTitle, q(error));
        return;
    }
    changed_ = false;
    refresh();
}

bool FormulaEditor::saveFileAs() {
    const QString path = dialogs_.saveFileName(QStringLiteral("Save User Function File"), QString(), kFilter);
    return !path.isEmpty() && saveTo(path);
}

bool FormulaEditor::saveTo(const QString& path) {
    std::string error;
    if (!writeUserFunctionFile(s(path), session_.userFunctions, error)) {
        dialogs_.critical(kTitle, QStringLiteral("Error writing to  ") + path + QStringLiteral("\n") + q(error));
        return false;
    }
    {
        auto held = session_.engine.lock();
        session_.userFunctionFile = s(path);
    }
    changed_ = false;
    refresh();
    status_->setText(QStringLiteral("Saved: ") + path);
    return true;
}

void FormulaEditor::saveDefault() {
    std::error_code ignored;
    std::filesystem::create_directories(userDataDir(), ignored);
    const std::string target = (std::filesystem::path(userDataDir()) / "default.ufn").string();
    const std::string current = findDataFile("default.ufn");
    if (!current.empty())
        std::filesystem::copy_file(current, (std::filesystem::path(userDataDir()) / "backup.ufn").string(),
                                   std::filesystem::copy_options::overwrite_existing, ignored);
    saveTo(q(target));
}

void FormulaEditor::importFrom() {
    FormulaImportDialog dialog(dialogs_, this);
    if (dialog.exec() != QDialog::Accepted) return;
    UserFunctions lists = session_.userFunctions;
    dialog.importInto(lists);
    if (!(lists == session_.userFunctions)) apply(std::move(lists));
}

void FormulaEditor::closeEvent(QCloseEvent* event) {
    hide();
    event->ignore();  // kept for the next use
}

}  // namespace quillmer::gui

namespace quillmer::gui {

void tellUserFunctionProblem(Session& session, UserDialogs& dialogs) {
    std::string problem;
    {
        auto held = session.engine.lock();
        problem = session.userFunctionProblem;
    }
    if (!problem.empty()) dialogs.critical(QStringLiteral("Quillmer"), QString::fromStdString(problem));
}

}  // namespace quillmer::gui
