#include "gui/ComposerWindow.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <fstream>
#include <iterator>

#include "engine/AtomicFile.h"
#include "gui/Lamp.h"
#include "gui/ProgramSettings.h"
#include "gui/UserDialogs.h"
#include "platform/StandardMidiFile.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
constexpr int kRefreshMs = 50;
const QString kTitle = QStringLiteral("Play List Composer");

// Copies a finished recording to where the user wants it; the old file stays whole on failure.
bool copyRecording(const std::string& from, const std::string& to, std::string& error) {
    std::ifstream in(from, std::ios::binary);
    if (!in) {
        error = "the recording " + from + " can't be read";
        return false;
    }
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    AtomicFile file(to);
    if (!file.create(error)) return false;
    {
        std::ofstream out(file.tempPath(), std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush()) {
            error = saveError(to, "it couldn't be written");
            return false;
        }
    }
    return file.commit(error);
}
}  // namespace

ComposerWindow::ComposerWindow(Session& session, UserDialogs& dialogs, ProgramSettings& settings, QWidget* parent)
    : QDialog(parent), session_(session), dialogs_(dialogs), settings_(settings), writer_(std::make_unique<MidiFileWriter>()) {
    setObjectName(QStringLiteral("Composer"));
    setWindowTitle(kTitle);
    openWithDesktop = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
    startProgram = [](const QString& program, const QStringList& arguments) {
        return QProcess::startDetached(program, arguments);
    };
    build();
    {
        // Told with the engine lock held, often on the timer thread: post, never call in.
        auto held = session_.engine.lock();
        Composer& c = session_.composer;
        c.recordingPath = recordings_.filePath(QStringLiteral("recording.mid")).toStdString();
        c.recordingSaved = [this](const std::string& path) {
            const QString file = QString::fromStdString(path);
            QMetaObject::invokeMethod(this, [this, file] { playFile_ = file; }, Qt::QueuedConnection);
        };
        c.recordingFailed = [this](const std::string& error) {
            const QString text = QString::fromStdString(error);
            QMetaObject::invokeMethod(this, [this, text] { showSaveResult({}, text); }, Qt::QueuedConnection);
        };
        session_.engine.ports.setRecordSink(writer_.get());
    }
    connect(&refreshTimer_, &QTimer::timeout, this, &ComposerWindow::refresh);
    refreshTimer_.start(kRefreshMs);
    wakeUp();
}

ComposerWindow::~ComposerWindow() {
    auto held = session_.engine.lock();
    Composer& c = session_.composer;
    c.recordingSaved = nullptr;
    c.recordingFailed = nullptr;
    if (c.recording()) c.toggleRecord();  // a recording under way goes into the folder that goes now
    c.recordingPath.clear();
    session_.engine.ports.setRecording(false);
    session_.engine.ports.setRecordSink(nullptr);
}

void ComposerWindow::build() {
    const auto button = [this](const char* name, const QString& text, const QString& tip = {}) {
        auto* b = new QPushButton(text, this);
        b->setObjectName(QLatin1String(name));
        b->setToolTip(tip.isEmpty() ? text : tip);
        return b;
    };
    auto* column = new QVBoxLayout(this);

    // The transport and the recording.
    auto* transport = new QHBoxLayout;
    QPushButton* play = button("btnPlay", QStringLiteral("Play"));
    QPushButton* pause = button("btnPause", QStringLiteral("Pause"));
    QPushButton* stop = button("btnStop", QStringLiteral("Stop/Reset"));
    QPushButton* record = button("btnRecord", QStringLiteral("Record"));
    for (QPushButton* b : {play, pause, stop, record}) {
        b->setCheckable(true);
        transport->addWidget(b);
    }
    led_ = new Lamp(QColor(0xe0, 0x30, 0x30), this);
    led_->setObjectName(QStringLiteral("LEDRecording"));
    led_->setToolTip(QStringLiteral("Recording"));
    transport->addWidget(led_);
    transport->addWidget(new QLabel(QStringLiteral("Recording"), this));
    transport->addStretch(1);
    QPushButton* save = button("btnSave", QStringLiteral("Save MIDI File"));
    transport->addWidget(save);
    for (int i = 0; i < kPlayers; ++i) {
        QPushButton* p = i == 0 ? button("btnPlayers0", QStringLiteral("Player"), QStringLiteral("Run Default MIDI Player"))
                                : button(QStringLiteral("btnPlayers%1").arg(i).toLatin1().constData(),
                                         QStringLiteral("Player %1").arg(i + 1),
                                         QStringLiteral("Run Custom MIDI Player; Right click to change."));
        players_[static_cast<size_t>(i)] = p;
        transport->addWidget(p);
        connect(p, &QPushButton::clicked, this, [this, i] { runPlayer(i); });
        if (i > 0) {
            p->setContextMenuPolicy(Qt::CustomContextMenu);
            connect(p, &QWidget::customContextMenuRequested, this, [this] { choosePlayer(); });
        }
    }
    column->addLayout(transport);

    auto* where = new QHBoxLayout;
    chQuotes_ = new QCheckBox(QStringLiteral("Check for Win 3.1 filename compatibility."), this);
    chQuotes_->setObjectName(QStringLiteral("chQuotes"));
    where->addWidget(chQuotes_);
    where->addStretch(1);
    where->addWidget(new QLabel(QStringLiteral("Total Measures : Current Measure"), this));
    bxStep_ = new QLineEdit(this);
    bxStep_->setObjectName(QStringLiteral("bxStep"));
    bxStep_->setReadOnly(true);
    bxStep_->setToolTip(QStringLiteral("Total Measures : Current Measure"));
    bxStep_->setMaximumWidth(120);
    where->addWidget(bxStep_);
    lbMeasures_ = new QLabel(this);
    lbMeasures_->setObjectName(QStringLiteral("lbMeasures"));
    lbMeasures_->setToolTip(QStringLiteral("Measures to go on this line"));
    lbMeasures_->setMinimumWidth(40);
    where->addWidget(lbMeasures_);
    QPushButton* showLists = button("btnShowLists", QStringLiteral("Close/Open Play List"));
    where->addWidget(showLists);
    column->addLayout(where);

    // The two lists and the commands between them.
    lists_ = new QWidget(this);
    auto* row = new QHBoxLayout(lists_);
    row->setContentsMargins(0, 0, 0, 0);
    list1_ = new QListWidget(lists_);
    list1_->setObjectName(QStringLiteral("List1"));
    list1_->setMinimumWidth(180);
    row->addWidget(list1_, 1);
    auto* commands = new QVBoxLayout;
    QPushButton* add = button("cmdAdd", QStringLiteral("Add new snap"));
    QPushButton* insert = button("cmdInsert", QStringLiteral("Insert snap at highlight bar"));
    QPushButton* remove = button("cmdDelete", QStringLiteral("Delete highlighted step"));
    QPushButton* up = button("cmdUp", QStringLiteral("Move step up"));
    QPushButton* down = button("cmdDown", QStringLiteral("Move step down"));
    QPushButton* begin = button("cmdBegin", QStringLiteral("Mark Begin of Play"));
    QPushButton* end = button("cmdEnd", QStringLiteral("Mark End of Play"));
    for (QPushButton* b : {add, insert, remove, up, down, begin, end}) commands->addWidget(b);
    commands->addSpacing(8);
    txMeasures_ = new QLineEdit(QStringLiteral("8"), lists_);
    txMeasures_->setObjectName(QStringLiteral("txMeasures"));
    txMeasures_->setToolTip(QStringLiteral("Measures of the highlighted line"));
    commands->addWidget(txMeasures_);
    QPushButton* updateMeasures = button("btnUpdateMeasures", QStringLiteral("Update Measures to Run/Record"));
    commands->addWidget(updateMeasures);
    commands->addStretch(1);
    QPushButton* exit = button("cmdExit", QStringLiteral("Exit"));
    commands->addWidget(exit);
    row->addLayout(commands);
    list2_ = new QListWidget(lists_);
    list2_->setObjectName(QStringLiteral("List2"));
    list2_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    list2_->setMinimumWidth(260);
    row->addWidget(list2_, 2);
    column->addWidget(lists_, 1);

    Composer* c = &session_.composer;
    const auto locked = [this](auto f) {
        return [this, f] {
            {
                auto held = session_.engine.lock();
                f();
            }
            refresh();
        };
    };
    connect(play, &QPushButton::clicked, this, locked([c] { c->play(); }));
    connect(pause, &QPushButton::clicked, this, locked([c] { c->pause(); }));
    connect(stop, &QPushButton::clicked, this, locked([c] { c->stop(); }));
    connect(record, &QPushButton::clicked, this, locked([c] { c->toggleRecord(); }));
    connect(add, &QPushButton::clicked, this, [this, c] { edit([c](int, int s) { return s < 0 ? -1 : c->add(s); }); });
    connect(insert, &QPushButton::clicked, this,
            [this, c] { edit([c](int line, int s) { return s < 0 ? line : c->insert(std::max(line, 0), s); }); });
    connect(remove, &QPushButton::clicked, this, [this, c] { edit([c](int line, int) { return c->remove(line); }); });
    connect(up, &QPushButton::clicked, this, [this, c] { edit([c](int line, int) { return c->moveUp(line); }); });
    connect(down, &QPushButton::clicked, this, [this, c] { edit([c](int line, int) { return c->moveDown(line); }); });
    connect(begin, &QPushButton::clicked, this, [this, c] {
        edit([c](int line, int) {
            c->markBegin(line);
            return line;
        });
    });
    connect(end, &QPushButton::clicked, this, [this, c] {
        edit([c](int line, int) {
            c->markEnd(line);
            return line;
        });
    });
    connect(updateMeasures, &QPushButton::clicked, this, &ComposerWindow::updateMeasures);
    connect(txMeasures_, &QLineEdit::returnPressed, this, &ComposerWindow::updateMeasures);
    connect(save, &QPushButton::clicked, this, &ComposerWindow::saveMidiFile);
    connect(showLists, &QPushButton::clicked, this, [this] { lists_->setVisible(!lists_->isVisible()); });
    connect(exit, &QPushButton::clicked, this, &QDialog::close);
    connect(list2_, &QListWidget::currentRowChanged, this, [this](int line) {
        if (line < 0) return;
        auto held = session_.engine.lock();
        txMeasures_->setText(QString::number(session_.composer.measuresOf(line)));
    });
}

QPushButton* ComposerWindow::button(const char* objectName) const {
    return findChild<QPushButton*>(QLatin1String(objectName));
}

void ComposerWindow::edit(const std::function<int(int line, int snapshot)>& command) {
    int line = list2_->currentRow();
    {
        auto held = session_.engine.lock();
        line = command(line, list1_->currentRow());
    }
    refresh();
    if (line >= 0 && line < list2_->count()) list2_->setCurrentRow(line);
}

void ComposerWindow::updateMeasures() {
    const int line = list2_->currentRow();
    {
        auto held = session_.engine.lock();
        if (!session_.composer.setMeasures(line, txMeasures_->text().toStdString())) return;
    }
    refresh();
    list2_->setCurrentRow(line);
}

void ComposerWindow::wakeUp() {
    shownChanges_ = ~uint64_t{0};
    shownSnapshots_.clear();
    refresh();
}

void ComposerWindow::refresh() {
    QStringList snapshots;
    QStringList lines;
    uint64_t changes = 0;
    int position = 0;
    Transport transport = Transport::Stopped;
    bool recording = false;
    QString step;
    int measuresLeft = 0;
    {
        auto held = session_.engine.lock();
        const Composer& c = session_.composer;
        changes = c.changes();
        for (int i = 0; i < session_.engine.SnapshotCount; ++i)
            snapshots << QString::fromStdString(session_.snapshots.SnapshotNames[static_cast<size_t>(i)]);
        if (changes != shownChanges_) {
            for (const std::string& text : c.lineTexts()) lines << QString::fromStdString(text);
            position = c.position();
            transport = c.transport();
            recording = c.recording();
            step = QString::fromStdString(c.stepText());
            measuresLeft = c.measuresLeft();
        }
    }
    if (snapshots != shownSnapshots_) {
        const int row = list1_->currentRow();
        list1_->clear();
        list1_->addItems(snapshots);
        list1_->setCurrentRow(std::min(row, static_cast<int>(snapshots.size()) - 1));
        shownSnapshots_ = snapshots;
    }
    if (changes == shownChanges_) return;
    shownChanges_ = changes;

    const int selected = list2_->currentRow();
    bool same = list2_->count() == lines.size();
    for (int i = 0; same && i < lines.size(); ++i) same = list2_->item(i)->text() == lines[i];
    if (!same) {
        const QSignalBlocker blocker(list2_);
        list2_->clear();
        list2_->addItems(lines);
        if (selected >= 0 && selected < lines.size()) list2_->setCurrentRow(selected);
    }
    // Where the song is: the line in play stands out.
    const bool running = transport != Transport::Stopped;
    for (int i = 0; i < list2_->count(); ++i) {
        QFont font = list2_->font();
        font.setBold(running && i == position);
        list2_->item(i)->setFont(font);
    }
    if (running && position < list2_->count()) list2_->scrollToItem(list2_->item(position));

    button("btnPlay")->setChecked(transport == Transport::Playing);
    button("btnPause")->setChecked(transport == Transport::Paused);
    button("btnStop")->setChecked(transport == Transport::Stopped);
    button("btnRecord")->setChecked(recording);
    led_->setOn(recording);
    bxStep_->setText(step);
    lbMeasures_->setText(running ? QString::number(measuresLeft) : QString());
}

void ComposerWindow::showSaveResult(const QString& path, const QString& error) {
    if (!error.isEmpty()) {
        dialogs_.critical(kTitle, QStringLiteral("File Save Error: ") + error);
        return;
    }
    playFile_ = path;
}

void ComposerWindow::saveMidiFile() {
    std::string recorded;
    {
        auto held = session_.engine.lock();
        recorded = session_.composer.lastRecording();
    }
    if (recorded.empty()) {
        dialogs_.information(kTitle, QStringLiteral("Nothing has been recorded yet: press Record, then Play."));
        return;
    }
    const QString folder = settings_.currentDir;
    QString path = dialogs_.saveFileName(QStringLiteral("Save MIDI File"), folder, QStringLiteral("MIDI File (*.mid)"));
    if (path.isEmpty()) return;
    if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".mid");
    if (chQuotes_->isChecked()) path = QString::fromStdString(shortFileName(path.toStdString()));
    std::string error;
    if (!copyRecording(recorded, path.toStdString(), error)) {
        showSaveResult({}, QString::fromStdString(error));
        return;
    }
    showSaveResult(path, {});
}

void ComposerWindow::choosePlayer() {
    const QString program = dialogs_.openFileName(QStringLiteral("Select MIDI Player/Sequencer"), QString(),
                                                  QStringLiteral("Executables (*)"));
    if (!program.isEmpty()) settings_.filePlayer = program;
}

void ComposerWindow::runPlayer(int i) {
    if (playFile_.isEmpty()) {
        dialogs_.information(kTitle, QStringLiteral("Nothing has been recorded yet: press Record, then Play."));
        return;
    }
    if (i == 0) {
        if (!openWithDesktop(QUrl::fromLocalFile(playFile_)))
            dialogs_.critical(kTitle, QStringLiteral("No program opens MIDI files here: ") + playFile_);
        return;
    }
    if (settings_.filePlayer.isEmpty()) choosePlayer();
    if (settings_.filePlayer.isEmpty()) return;
    if (!startProgram(settings_.filePlayer, {playFile_}))
        dialogs_.critical(kTitle, QStringLiteral("Unable to run ") + settings_.filePlayer);
}

void ComposerWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    emit closedByUser();
}

}  // namespace quillmer::gui
