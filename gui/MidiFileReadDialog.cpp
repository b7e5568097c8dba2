#include "gui/MidiFileReadDialog.h"

#include <QButtonGroup>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/UserDialogs.h"

namespace quillmer::gui {

namespace {
const QString kTitle = QStringLiteral("MIDI File Translation");
}  // namespace

MidiFileReadDialog::MidiFileReadDialog(UserDialogs& dialogs, QWidget* parent) : QDialog(parent), dialogs_(dialogs) {
    setObjectName(QStringLiteral("frmMIDIFileRead"));
    setWindowTitle(kTitle);
    auto* getName = new QPushButton(QStringLiteral("MIDI File..."), this);
    getName->setObjectName(QStringLiteral("btnGetName"));
    getName->setToolTip(QStringLiteral("Select MIDI File to Translate"));
    file_ = new QLabel(this);
    file_->setObjectName(QStringLiteral("lblFile"));
    bpm_ = new QLabel(this);
    bpm_->setObjectName(QStringLiteral("lblBPM"));
    notes_ = new QLabel(this);
    notes_->setObjectName(QStringLiteral("lblNotes"));
    notes_->setWordWrap(true);
    tracks_ = new QListWidget(this);
    tracks_->setObjectName(QStringLiteral("lstTracks"));
    trackName_ = new QLabel(this);
    trackName_->setObjectName(QStringLiteral("lblTrack"));
    classes_ = new QListWidget(this);
    classes_->setObjectName(QStringLiteral("lstMMsgs"));
    events_ = new QLabel(this);
    events_->setObjectName(QStringLiteral("lblEvents"));
    save_ = new QPushButton(QStringLiteral("Save..."), this);
    save_->setObjectName(QStringLiteral("btnSave"));
    save_->setEnabled(false);

    auto* channelRow = new QGridLayout;
    auto* group = new QButtonGroup(this);
    for (int c = 0; c < 16; ++c) {
        auto* b = new QPushButton(QString::number(c + 1), this);
        b->setObjectName(QStringLiteral("opChan%1").arg(c));
        b->setCheckable(true);
        b->setEnabled(false);
        b->setFixedWidth(32);
        group->addButton(b, c);
        channelRow->addWidget(b, c / 8, c % 8);
        channels_[static_cast<size_t>(c)] = b;
    }

    auto* top = new QHBoxLayout;
    top->addWidget(getName);
    top->addWidget(file_, 1);
    top->addWidget(bpm_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(notes_);
    layout->addWidget(new QLabel(QStringLiteral("Tracks"), this));
    layout->addWidget(tracks_);
    layout->addWidget(trackName_);
    layout->addLayout(channelRow);
    layout->addWidget(new QLabel(QStringLiteral("Messages"), this));
    layout->addWidget(classes_);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(events_, 1);
    bottom->addWidget(save_);
    layout->addLayout(bottom);
    resize(460, 560);

    connect(getName, &QPushButton::clicked, this, &MidiFileReadDialog::getName);
    connect(tracks_, &QListWidget::currentRowChanged, this, &MidiFileReadDialog::chooseTrack);
    connect(group, &QButtonGroup::idClicked, this, &MidiFileReadDialog::chooseChannel);
    connect(classes_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        if (item) chooseClass(item->data(Qt::UserRole).toInt());
    });
    connect(save_, &QPushButton::clicked, this, &MidiFileReadDialog::save);
}

void MidiFileReadDialog::getName() {
    const QString path = dialogs_.openFileName(QStringLiteral("Select MIDI File to Translate"),
                                               path_.isEmpty() ? QString() : QFileInfo(path_).absolutePath(),
                                               QStringLiteral("MIDI Files (*.mid *.midi *.kar)"));
    if (!path.isEmpty()) openFile(path);
}

bool MidiFileReadDialog::openFile(const QString& path) {
    MidiFileTranslation t;
    std::string error, reason;
    if (!t.open(path.toStdString(), error, reason)) {
        dialogs_.critical(kTitle, QString::fromStdString(error) + QStringLiteral("\n") + QString::fromStdString(reason));
        return false;
    }
    translation_ = std::move(t);
    path_ = path;
    file_->setText(QFileInfo(path).fileName());
    file_->setToolTip(path);
    bpm_->setText(QStringLiteral("BPM: %1").arg(translation_.fileBpm()));
    QStringList notes;
    for (const std::string& n : translation_.notes()) notes << QString::fromStdString(n);
    notes_->setText(notes.join(QStringLiteral("\n")));
    notes_->setVisible(!notes.isEmpty());
    track_ = -1;
    const QSignalBlocker quiet(tracks_);
    tracks_->clear();
    for (int i = 0; i < translation_.trackCount(); ++i) tracks_->addItem(QString::fromStdString(translation_.trackCaption(i)));
    trackName_->clear();
    clearChannels();
    clearClasses();
    return true;
}

void MidiFileReadDialog::clearChannels() {
    channel_ = -1;
    for (QPushButton* b : channels_) {
        b->setEnabled(false);
        b->setChecked(false);
        b->setToolTip(QString());
    }
}

void MidiFileReadDialog::clearClasses() {
    const QSignalBlocker quiet(classes_);
    classes_->clear();
    list_ = MfxList{};
    events_->clear();
    save_->setEnabled(false);
}

void MidiFileReadDialog::chooseTrack(int track) {
    if (track < 0 || track >= translation_.trackCount()) return;
    track_ = track;
    if (tracks_->currentRow() != track) {
        const QSignalBlocker quiet(tracks_);
        tracks_->setCurrentRow(track);
    }
    trackName_->setText(QString::fromStdString(translation_.trackName(track)));
    clearChannels();
    clearClasses();
    const auto counts = translation_.channelCounts(track);
    int first = -1;
    for (int c = 0; c < 16; ++c) {
        QPushButton* b = channels_[static_cast<size_t>(c)];
        const int n = counts[static_cast<size_t>(c)];
        b->setEnabled(n > 0);
        b->setToolTip(QStringLiteral("%1 messages").arg(n));
        if (n > 0 && first < 0) first = c;
    }
    if (first >= 0) chooseChannel(first);
}

void MidiFileReadDialog::chooseChannel(int channel) {
    if (track_ < 0 || channel < 0 || channel > 15) return;
    channel_ = channel;
    channels_[static_cast<size_t>(channel)]->setChecked(true);
    clearClasses();
    const auto counts = translation_.classCounts(track_, channel);
    const QSignalBlocker quiet(classes_);
    for (int cls = 0; cls < kMessageClasses; ++cls) {
        const int n = counts[static_cast<size_t>(cls)];
        if (n == 0) continue;
        auto* item = new QListWidgetItem(QString::fromStdString(messageClassName(cls)) + QStringLiteral(" [%1]").arg(n), classes_);
        item->setData(Qt::UserRole, cls);
    }
}

void MidiFileReadDialog::chooseClass(int cls) {
    if (track_ < 0 || channel_ < 0 || cls < 0 || cls >= kMessageClasses) return;
    list_ = translation_.translate(track_, channel_, cls);
    for (int row = 0; row < classes_->count(); ++row) {
        if (classes_->item(row)->data(Qt::UserRole).toInt() != cls) continue;
        const QSignalBlocker quiet(classes_);
        classes_->setCurrentRow(row);
    }
    events_->setText(QStringLiteral("%1 events, %2 steps long").arg(list_.values.size()).arg(static_cast<double>(list_.lastTime()), 0, 'f', 1));
    save_->setEnabled(!list_.empty());
}

void MidiFileReadDialog::save() {
    if (list_.empty()) return;
    const QString suggested = QFileInfo(path_).absolutePath();
    const QString path = dialogs_.saveFileName(QStringLiteral("Save MIDI File Translation"), suggested,
                                               QStringLiteral("MIDI File Translation (*.mfx)"));
    if (path.isEmpty()) return;
    std::string error, reason;
    if (!saveMfxFile(path.toStdString(), list_, error, reason)) {
        dialogs_.critical(kTitle, QString::fromStdString(error) + QStringLiteral("\n") + QString::fromStdString(reason));
        return;
    }
    events_->setText(QStringLiteral("Saved: ") + path);
}

void showMidiFileReadDialog(UserDialogs& dialogs, QWidget* parent) {
    auto* dialog = new MidiFileReadDialog(dialogs, parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

}  // namespace quillmer::gui
