#include "gui/MainWindow.h"

#include "gui/FormulaEditor.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QFileInfo>
#include <QMenuBar>
#include <QMimeData>
#include <QToolBar>
#include <QVBoxLayout>

#include "gui/ComposerWindow.h"
#include "gui/FileCommands.h"
#include "gui/BioSequenceWindow.h"
#include "gui/MidiFileReadDialog.h"
#include "gui/HelpMenu.h"
#include "gui/ModulesMenu.h"
#include "gui/OptionFlags.h"
#include "gui/OptionsWindow.h"
#include "gui/ModuleMap.h"
#include "gui/PanelBoard.h"
#include "gui/TableBankEditor.h"
#include "gui/ToneTableEditor.h"
#include "gui/ProgramSettings.h"
#include "gui/RecentFiles.h"
#include "gui/StripBar.h"
#include "gui/Look.h"
#include "gui/UserDialogs.h"
#include "gui/Workspace.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
constexpr int kRefreshMs = 16;          // panels at about 60 Hz
constexpr int kStripRefreshEvery = 2;   // the strip at about 30 Hz
const QString kProduct = QStringLiteral("Quillmer");
constexpr Qt::Key kTransportKey = Qt::Key_F5;

bool isTransportKey(int key) { return key == kTransportKey || key == Qt::Key_MediaTogglePlayPause; }

QString qmpPath(const QUrl& url) {
    if (!url.isLocalFile()) return {};
    const QString path = url.toLocalFile();
    return path.endsWith(QStringLiteral(".qmp"), Qt::CaseInsensitive) ? path : QString();
}
}  // namespace

MainWindow::MainWindow(Session& session, UserDialogs& dialogs, ProgramSettings& settings, RecentFiles& recent,
                       OptionsWindow& options, QWidget* parent)
    : QMainWindow(parent), session_(session), dialogs_(dialogs), settings_(settings), recent_(recent), options_(options) {
    setObjectName(QStringLiteral("fMain"));
    setAcceptDrops(true);
    qApp->installEventFilter(this);  // key events for the bus, whichever widget has the focus
    files_ = new FileCommands(session_, dialogs_, recent_, settings_, this);

    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    strip_ = new StripBar(session_, central);
    workspace_ = new Workspace(central);
    workspace_->setBackColor(settings_.backColor);
    column->addWidget(stripRow(central));
    column->addWidget(workspace_, 1);
    setCentralWidget(central);
    panels_ = std::make_unique<PanelBoard>(session_, dialogs_, *workspace_, this);
    map_ = new ModuleMap(session_, dialogs_, this);
    connect(map_, &ModuleMap::changed, this, &MainWindow::refresh);
    connect(map_, &ModuleMap::moduleClicked, this, [this](const QString& name) {
        panels_->refresh();
        workspace_->bringIntoView(panels_->frame(name));
    });
    connect(panels_.get(), &PanelBoard::tableEditorWanted, this, [this](Dialog which, int table) {
        if (which == Dialog::ToneTable)
            openToneTableEditor(session_, dialogs_, table, this);
        else
            openTableBankEditor(session_, dialogs_, table, this);
    });
    connect(panels_.get(), &PanelBoard::modulesChanged, this, [this] {
        if (map_->isVisible()) map_->showModules(panels_->placed(), panels_->shownPage());
    });
    connect(workspace_, &Workspace::emptyRightClicked, this,
            [this](int page, QPoint pixel) { panels_->createAtCursor(page, pixel); });

    buildMenus();
    buildToolbar();
    wireEngineEvents();

    connect(files_, &FileCommands::patchReplaced, this, [this] {
        options_.reload();
        refresh();
    });
    connect(files_, &FileCommands::recentFilesChanged, this, &MainWindow::rebuildRecentMenu);
    connect(strip_, &StripBar::edited, this, &MainWindow::refresh);
    connect(&options_, &OptionsWindow::edited, this, &MainWindow::refresh);
    connect(workspace_, &Workspace::frameResized, this, &MainWindow::tellEngineFrameSize);
    connect(&refreshTimer_, &QTimer::timeout, this, &MainWindow::refreshOnTimer);
    refreshTimer_.start(kRefreshMs);
    resize(settings_.mainSize);
    fitToScreen();
    refresh();
}

MainWindow::~MainWindow() {
    // Children going away can still signal (a focused snapshot box commits its text on focus
    // out); nothing of ours may answer once the members they would reach are gone.
    for (QObject* child : findChildren<QObject*>()) QObject::disconnect(child, nullptr, this, nullptr);
    auto held = session_.engine.lock();
    session_.engine.events.tempoChanged = nullptr;
    session_.engine.events.pageChanged = nullptr;
    session_.engine.ports.onError = nullptr;
    session_.snapshots.showMessage = nullptr;
    session_.exitRequested = nullptr;
    session_.chainFailed = nullptr;
}

void MainWindow::buildMenus() {
    fileMenu_ = menuBar()->addMenu(QStringLiteral("&File"));
    const auto add = [this](QMenu* menu, const char* key, const char* caption, auto slot, QKeySequence shortcut = {}) {
        QAction* a = menu->addAction(QLatin1String(caption));
        a->setObjectName(QLatin1String(key));
        a->setShortcut(shortcut);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    add(fileMenu_, "mnuFileNew", "&New", [this] { files_->fileNew(); }, QKeySequence::New);
    add(fileMenu_, "mnuFileOpen", "&Open...", [this] { files_->fileOpen(); }, QKeySequence::Open);
    add(fileMenu_, "mnuFileSave", "&Save", [this] { files_->fileSave(); }, QKeySequence::Save);
    add(fileMenu_, "mnuFileSaveAs", "Save &As...", [this] { files_->fileSaveAs(); }, QKeySequence::SaveAs);
    fileMenu_->addSeparator();
    add(fileMenu_, "mnuFileImportMidi", "Import &MIDI File...", [this] { showMidiFileReadDialog(dialogs_, this); });
    add(fileMenu_, "mnuFileBio", "&Bio Sequence...", [this] { showBioSequenceWindow(dialogs_, session_, this); });
    add(fileMenu_, "mnuFileTuning", "&Tuning Table...", [this] { openToneTableEditor(session_, dialogs_, 0, this); });
    fileMenu_->addSeparator();
    add(fileMenu_, "mnuFileExit", "E&xit", [this] { close(); }, QKeySequence::Quit);
    fileMenu_->addSeparator();
    for (size_t i = 0; i < recentActions_.size(); ++i) {
        QAction* a = fileMenu_->addAction(QString());
        a->setObjectName(QStringLiteral("mnuFileMRU%1").arg(i));
        connect(a, &QAction::triggered, this, [this, i] {
            // A copy: opening the file moves it to the top of the very list it is read from.
            const QString path = recent_.paths().value(static_cast<qsizetype>(i));
            if (!path.isEmpty()) files_->openChosenFile(path);
        });
        recentActions_[i] = a;
    }
    rebuildRecentMenu();
    buildEditMenu();
    buildViewMenu();

    modulesMenu_ = new ModulesMenu(session_.engine.registry(), this);
    menuBar()->addMenu(modulesMenu_);
    connect(modulesMenu_, &ModulesMenu::moduleChosen, this, &MainWindow::placeModule);

    QAction* optionsEntry = menuBar()->addAction(QStringLiteral("&Options"));
    optionsEntry->setObjectName(QStringLiteral("mnuFilemnuOptions"));
    connect(optionsEntry, &QAction::triggered, &options_, &OptionsWindow::showOptions);
    QAction* ufProg = menuBar()->addAction(QStringLiteral("&UF-Prog"));
    ufProg->setObjectName(QStringLiteral("mnuFilemnuUCalc"));
    connect(ufProg, &QAction::triggered, this, &MainWindow::openFormulaEditor);
    QAction* map = menuBar()->addAction(QStringLiteral("M&ap"));
    map->setObjectName(QStringLiteral("mnuModuleMap"));
    connect(map, &QAction::triggered, this, &MainWindow::openModuleMap);

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    add(help, "mnuHelpContents", "&Quillmer Help...", [this] { openManual(dialogs_); }, QKeySequence::HelpContents);
    add(help, "mnuHelpWeb", "&Visit Web Site...", [this] { visitWebSite(dialogs_); });
    add(help, "mnuHelpAbout", "&About Quillmer...", [this] { showAbout(this); });
}

void MainWindow::buildToolbar() {
    QToolBar* bar = addToolBar(QStringLiteral("Toolbar1"));
    bar->setObjectName(QStringLiteral("Toolbar1"));
    bar->setMovable(false);
    bar->setIconSize(QSize(20, 20));
    const auto add = [&](const char* key, ToolIcon icon, const char* tip, bool checkable = false) {
        QAction* a = bar->addAction(toolIcon(icon), QLatin1String(tip));
        a->setObjectName(QLatin1String(key));
        a->setCheckable(checkable);
        return a;
    };
    connect(add("New", ToolIcon::New, "New"), &QAction::triggered, this, [this] { files_->fileNew(); });
    connect(add("Open", ToolIcon::Open, "Open"), &QAction::triggered, this, [this] { files_->fileOpen(); });
    connect(add("Save", ToolIcon::Save, "Save"), &QAction::triggered, this, [this] { files_->fileSave(); });
    connect(add("Help", ToolIcon::Help, "Help"), &QAction::triggered, this, [this] { openManual(dialogs_); });
    bar->addSeparator();
    connect(add("MISC31", ToolIcon::Composer, "Composer", true), &QAction::toggled, this, &MainWindow::setComposer);
    connect(add("Camera", ToolIcon::StoreNew, "Store New Snapshot"), &QAction::triggered, this, [this] { storeSnapshot(true); });
    connect(add("FRONT", ToolIcon::StoreCurrent, "Store Current Snapshot"), &QAction::triggered, this,
            [this] { storeSnapshot(false); });
    bar->addSeparator();
    connect(add("MISC06", ToolIcon::MidiMute, "MIDI Mute: All Notes Off while held", true), &QAction::toggled, this,
            &MainWindow::setMidiMute);
    QAction* run = add("Forward", ToolIcon::Run, "Run / Stop (F5)", true);
    // Keys a patch can read all go to the bus; the transport's are kept from it.
    run->setShortcuts({QKeySequence(kTransportKey), QKeySequence(Qt::Key_MediaTogglePlayPause)});
    connect(run, &QAction::toggled, this, &MainWindow::setRun);
}

QAction* MainWindow::action(const QString& key) const { return findChild<QAction*>(key); }

void MainWindow::wireEngineEvents() {
    // These arrive with the engine lock held, often on the timer thread: post, never call in.
    const auto later = [this](auto f) { QMetaObject::invokeMethod(this, f, Qt::QueuedConnection); };
    auto held = session_.engine.lock();
    session_.engine.events.tempoChanged = [this, later](int) { later([this] { refresh(); }); };
    session_.engine.events.pageChanged = [this, later](int) { later([this] { refresh(); }); };
    session_.snapshots.showMessage = [this, later](const std::string& text) {
        later([this, text] { dialogs_.information(kProduct, QString::fromStdString(text)); });
    };
    session_.exitRequested = [this, later] { later([this] { close(); }); };
    session_.chainFailed = [this, later](const std::string& error) {
        later([this, error] {
            refresh();
            dialogs_.critical(kProduct, QString::fromStdString(error));
        });
    };
    session_.engine.ports.onError = [this, later](const PortError& e) {
        later([this, e] {
            options_.reload();
            if (!e.input) options_.showPortProblem(QString::fromStdString(e.text));
            if (e.showOptions)
                options_.showOptions();
            else
                dialogs_.critical(QString::fromStdString(e.title), QString::fromStdString(e.text));
        });
    };
}

void MainWindow::refresh() {
    refreshStrip();
    refreshPanels();
}

void MainWindow::refreshOnTimer() {
    if (++refreshCount_ % kStripRefreshEvery == 0) refreshStrip();
    refreshPanels();
}

void MainWindow::refreshStrip() {
    StripState state;
    QString caption;
    bool running = false;
    bool composerOn = false;
    {
        auto held = session_.engine.lock();
        state = StripState::read(session_);
        caption = QString::fromStdString(session_.caption());
        running = session_.engine.bus[sysbus::Run] != 0;
        composerOn = session_.composer.active();
    }
    strip_->showState(state);
    workspace_->showPage(state.page);
    if (windowTitle() != caption) setWindowTitle(caption);
    updateEditActions();
    QAction* run = action(QStringLiteral("Forward"));
    if (run->isChecked() != running) {
        const QSignalBlocker blocker(run);
        run->setChecked(running);
    }
    QAction* composer = action(QStringLiteral("MISC31"));
    if (composer->isChecked() != composerOn) {  // File New turned it off
        const QSignalBlocker blocker(composer);
        composer->setChecked(composerOn);
        run->setEnabled(!composerOn);
        if (!composerOn && composer_) composer_->hide();
    }
}

void MainWindow::setComposer(bool on) {
    if (!composer_) {
        composer_ = new ComposerWindow(session_, dialogs_, settings_, this);
        connect(composer_, &ComposerWindow::closedByUser, this, [this] { action(QStringLiteral("MISC31"))->setChecked(false); });
    }
    {
        auto held = session_.engine.lock();
        if (on)
            session_.composer.on();
        else
            session_.composer.off();
    }
    action(QStringLiteral("Forward"))->setEnabled(!on);  // the Composer alone runs the patch
    if (on) {
        composer_->wakeUp();
        composer_->show();
        composer_->raise();
    } else {
        composer_->hide();
    }
    refresh();
}

void MainWindow::refreshPanels() {
    panels_->refresh();
    refreshConnections();
    if (map_->isVisible()) map_->showModules(panels_->placed(), panels_->shownPage());
}

void MainWindow::openFormulaEditor() {
    if (formulaEditor_ == nullptr) formulaEditor_ = new FormulaEditor(session_, dialogs_, this);
    formulaEditor_->refresh();
    formulaEditor_->show();
    formulaEditor_->raise();
}

void MainWindow::openModuleMap() {
    refresh();
    map_->showModules(panels_->placed(), panels_->shownPage());
    map_->show();
    map_->raise();
}

void MainWindow::placeModule(ModuleTypeId type) { placeModuleAt(type, std::nullopt); }

void MainWindow::setRun(bool run) {
    auto held = session_.engine.lock();
    session_.engine.setRun(run);
    if (run && (settings_.sysFlags & sysflag::PlayResets)) session_.engine.ResyncPending = true;
}

void MainWindow::setMidiMute(bool muted) {
    auto held = session_.engine.lock();
    MidiPorts& ports = session_.engine.ports;
    if (muted) {
        ports.AllNotesOffActive = true;
        ports.AllNotesOff();
    } else {
        ports.AllNotesOffActive = false;
        session_.engine.ResetClocks();
    }
}

void MainWindow::storeSnapshot(bool asNew) {
    {
        auto held = session_.engine.lock();
        session_.composer.offTempIf();
        quillmer::storeSnapshot(session_, asNew);
        session_.composer.onIf();
    }
    refresh();
}

void MainWindow::rebuildRecentMenu() {
    const QStringList& paths = recent_.paths();
    for (size_t i = 0; i < recentActions_.size(); ++i) {
        const auto n = static_cast<qsizetype>(i);
        QAction* a = recentActions_[i];
        a->setVisible(n < paths.size());
        if (n < paths.size()) {
            a->setText(QStringLiteral("&%1 %2").arg(n + 1).arg(QFileInfo(paths[n]).fileName()));
            a->setToolTip(paths[n]);
            a->setStatusTip(paths[n]);
        }
    }
}

void MainWindow::tellEngineFrameSize() {
    const QSize twips = workspace_->frameTwips();
    auto held = session_.engine.lock();
    session_.engine.frameWidth = twips.width();
    session_.engine.frameHeight = twips.height();
}

void MainWindow::dropFiles(const QList<QUrl>& urls) {
    if (urls.isEmpty()) return;
    const QString path = qmpPath(urls.first());
    if (!path.isEmpty()) files_->openChosenFile(path);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QMimeData* mime = event->mimeData();
    if (mime->hasUrls() && !mime->urls().isEmpty() && !qmpPath(mime->urls().first()).isEmpty()) event->acceptProposedAction();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::KeyPress || type == QEvent::KeyRelease) {
        auto* widget = qobject_cast<QWidget*>(watched);
        const auto* key = static_cast<QKeyEvent*>(event);
        if (widget && widget->window() == this && !isTransportKey(key->key())) {
            // An event a child ignores goes on to its parents: count it once.
            const KeySeen seen{type, key->key(), key->timestamp()};
            if (seen == lastKey_) return QMainWindow::eventFilter(watched, event);
            lastKey_ = seen;
            auto held = session_.engine.lock();
            if (type == QEvent::KeyRelease) {
                if (!key->isAutoRepeat()) session_.engine.keyUp();
            } else {
                const Qt::KeyboardModifiers m = key->modifiers();
                const int modifiers = (m & Qt::ShiftModifier ? 1 : 0) | (m & Qt::ControlModifier ? 2 : 0) |
                                      (m & Qt::AltModifier ? 4 : 0);
                session_.engine.keyDown(key->key(), modifiers);
            }
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    event->acceptProposedAction();
    // Opened once the drop is over, so that a question or an error box doesn't hold it up.
    QMetaObject::invokeMethod(this, [this, urls] { dropFiles(urls); }, Qt::QueuedConnection);
}

void MainWindow::storeGeometry() {
    settings_.mainState = isMinimized() ? WindowState::Minimised : isMaximized() ? WindowState::Maximised : WindowState::Normal;
    const QRect normal = normalGeometry();
    settings_.mainPos = normal.topLeft();
    settings_.mainSize = normal.size();
}

void MainWindow::restoreGeometryFromSettings() {
    workspace_->setZoom(settings_.zoom);
    resize(settings_.mainSize);
    if (settings_.mainPos) move(*settings_.mainPos);
    fitToScreen();
    if (settings_.mainState == WindowState::Maximised) setWindowState(windowState() | Qt::WindowMaximized);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (closing_) {
        event->accept();
        return;
    }
    if (!files_->promptSaveChanges(!systemShutdown_)) {
        event->ignore();
        return;
    }
    closing_ = true;
    refreshTimer_.stop();
    storeGeometry();
    {
        auto held = session_.engine.lock();
        session_.engine.ShutdownStopTimers();  // the last tick: note modules send their note-offs
    }
    options_.hide();
    event->accept();
    emit closed();
}

}  // namespace quillmer::gui
