#include "gui/StripBar.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>

#include "engine/Placement.h"
#include "gui/CpuMeter.h"
#include "gui/Editing.h"
#include "gui/Lamp.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
constexpr int kMaxTempo = 254;
constexpr int kMaxExtendedTempo = 1000;
const char* const kPageCaptions[] = {"North", "East", "South", "West"};

QFrame* divider(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::VLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

QHBoxLayout* tightRow(QWidget* owner) {
    auto* row = new QHBoxLayout(owner);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    return row;
}
}  // namespace

QColor saveLightColor(int state) {
    switch (state) {
        case 2: return {255, 208, 40};   // changed, and the warning is armed
        case 3: return {112, 104, 84};   // changed, warning switched off
        default: return {52, 140, 88};   // clean
    }
}

StripState StripState::read(Session& session) {
    Engine& e = session.engine;
    StripState s;
    s.tempo = e.Tempo();
    s.maxTempo = e.options.extendedTempo ? kMaxExtendedTempo : kMaxTempo;
    s.page = e.CurrentPage();
    s.pageFlip = e.pageFlip;
    s.lamps = e.lamps;
    s.saveLight = session.saveLight();
    s.currentSnapshot = e.CurrentSnapshot;
    const auto& names = session.snapshots.SnapshotNames;
    s.snapshotNames.assign(names.begin(), names.begin() + std::clamp<int>(e.SnapshotCount, 0, kSnapshotCount));
    s.comboText = session.snapshots.comboText;
    s.snapshotEdited = session.snapshots.liveEdited && e.SnapshotCount > 0;
    return s;
}

StripBar::StripBar(Session& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* row = tightRow(this);
    row->setContentsMargins(6, 3, 6, 3);
    row->setSpacing(8);
    row->addWidget(makeSnapshotControls());
    row->addWidget(divider(this));
    row->addWidget(makeTempoControls(), 1);
    row->addWidget(divider(this));
    row->addWidget(makePageControls());
    row->addWidget(divider(this));
    row->addWidget(makeLamps());
}

QWidget* StripBar::makeSnapshotControls() {
    auto* box = new QWidget(this);
    auto* row = tightRow(box);
    snapshotBox_ = new QComboBox(box);
    snapshotBox_->setObjectName(QStringLiteral("Combo2"));
    snapshotBox_->setEditable(true);
    snapshotBox_->setInsertPolicy(QComboBox::NoInsert);
    snapshotBox_->setToolTip(QStringLiteral("Name of Snapshot"));
    snapshotBox_->setMinimumContentsLength(16);
    snapshotBox_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    snapshotSpin_ = new QSpinBox(box);
    snapshotSpin_->setObjectName(QStringLiteral("UpDownPatch"));
    snapshotSpin_->setToolTip(QStringLiteral("Next/Previous Snapshot"));
    snapshotSpin_->setRange(0, 0);
    editedMark_ = new QLabel(QStringLiteral("\u270E"), box);
    editedMark_->setObjectName(QStringLiteral("lblSnapEdited"));
    editedMark_->setToolTip(QStringLiteral("Settings changed since this snapshot was stored or recalled: "
                                           "Store Current Snapshot keeps them in it"));
    editedMark_->setFixedWidth(editedMark_->fontMetrics().horizontalAdvance(QStringLiteral("\u270E")) + 4);
    editedMark_->setEnabled(false);
    row->addWidget(snapshotBox_);
    row->addWidget(editedMark_);
    row->addWidget(snapshotSpin_);

    // The typed text names the next stored snapshot.
    connect(snapshotBox_->lineEdit(), &QLineEdit::textEdited, this, [this](const QString& text) {
        auto held = session_.engine.lock();
        session_.snapshots.comboText = text.toStdString();
        shownComboText_ = session_.snapshots.comboText;
    });
    connect(snapshotBox_, &QComboBox::activated, this, &StripBar::chooseSnapshot);
    connect(snapshotSpin_, &QSpinBox::valueChanged, this, &StripBar::chooseSnapshot);
    return box;
}

QWidget* StripBar::makeTempoControls() {
    auto* box = new QWidget(this);
    auto* row = tightRow(box);
    row->addWidget(new QLabel(QStringLiteral("Tempo"), box));
    tempoSlider_ = new QSlider(Qt::Horizontal, box);
    tempoSlider_->setObjectName(QStringLiteral("sVal"));
    tempoSlider_->setToolTip(QStringLiteral("Tempo in BPM"));
    tempoSlider_->setRange(1, kMaxTempo);
    tempoSlider_->setValue(120);
    tempoSlider_->setMinimumWidth(120);
    tempoSpin_ = new QSpinBox(box);
    tempoSpin_->setObjectName(QStringLiteral("UpDownTempo"));
    tempoSpin_->setToolTip(QStringLiteral("Change Tempo"));
    tempoSpin_->setRange(1, kMaxTempo);
    tempoSpin_->setValue(120);
    tempoSpin_->setKeyboardTracking(false);
    row->addWidget(tempoSlider_, 1);
    row->addWidget(tempoSpin_);
    connect(tempoSlider_, &QSlider::valueChanged, this, &StripBar::setTempo);
    // A drag of the slider is one undo step; the next change starts another.
    const auto seal = [this] {
        auto held = session_.engine.lock();
        session_.history.seal();
    };
    connect(tempoSlider_, &QSlider::sliderReleased, this, seal);
    connect(tempoSpin_, &QSpinBox::editingFinished, this, [this, seal] {
        if (auto* line = tempoSpin_->findChild<QLineEdit*>()) line->setModified(false);
        seal();
    });
    connect(tempoSpin_, &QSpinBox::valueChanged, this, &StripBar::setTempo);
    return box;
}

QWidget* StripBar::makePageControls() {
    auto* box = new QWidget(this);
    auto* row = tightRow(box);
    row->setSpacing(2);
    pageGroup_ = new QButtonGroup(box);
    pageGroup_->setExclusive(true);
    for (int i = 0; i < 4; ++i) {
        auto* button = new QToolButton(box);
        button->setObjectName(QStringLiteral("btnPage%1").arg(i));
        button->setText(QLatin1String(kPageCaptions[i]));
        button->setCheckable(true);
        button->setAutoRaise(false);
        pageGroup_->addButton(button, i);
        pageButtons_[static_cast<size_t>(i)] = button;
        row->addWidget(button);
    }
    pageButtons_[0]->setChecked(true);
    connect(pageGroup_, &QButtonGroup::idClicked, this, &StripBar::choosePage);

    groupButton_ = new QToolButton(box);
    groupButton_->setObjectName(QStringLiteral("btnPageBank"));
    groupButton_->setToolTip(QStringLiteral("Change Group of NESW Pages"));
    groupButton_->setText(QStringLiteral("1"));
    groupButton_->setMinimumWidth(groupButton_->fontMetrics().horizontalAdvance(QStringLiteral("00")) + 12);
    connect(groupButton_, &QToolButton::clicked, this, &StripBar::nextGroup);

    flipButton_ = new QToolButton(box);
    flipButton_->setObjectName(QStringLiteral("btnFlip"));
    flipButton_->setToolTip(QStringLiteral("Enable Page Flip on Edges & Screen Resize on Loads"));
    flipButton_->setText(QStringLiteral("Flip"));
    flipButton_->setCheckable(true);
    connect(flipButton_, &QToolButton::toggled, this, [this](bool on) {
        auto held = session_.engine.lock();
        session_.engine.pageFlip = on;
    });
    row->addSpacing(4);
    row->addWidget(groupButton_);
    row->addWidget(flipButton_);
    return box;
}

QWidget* StripBar::makeLamps() {
    auto* box = new QWidget(this);
    auto* row = tightRow(box);
    row->setSpacing(6);
    const auto lamp = [&](const char* name, const char* tip, QColor color) {
        auto* l = new Lamp(color, box);
        l->setObjectName(QLatin1String(name));
        l->setToolTip(QLatin1String(tip));
        row->addWidget(l);
        return l;
    };
    beatLamp_ = lamp("LEDTempo", "1/4 Note Tempo", QColor(70, 220, 110));
    timingLamp_ = lamp("LEDTiming", "Timing Error", QColor(240, 70, 60));
    midiInLamp_ = lamp("LEDMIDIIn", "MIDI Input", QColor(250, 170, 50));
    midiOutLamp_ = lamp("LEDMIDIOut", "MIDI Output", QColor(80, 180, 250));
    cpuMeter_ = new CpuMeter(box);
    cpuMeter_->setObjectName(QStringLiteral("bxCPU"));
    row->addWidget(cpuMeter_);
    saveLight_ = lamp("iLedSave", "Click to remove File Save warning (yellow), click again to restore it",
                      saveLightColor(1));
    saveLight_->setColor(saveLightColor(1));
    saveLight_->setCursor(Qt::PointingHandCursor);
    connect(saveLight_, &Lamp::clicked, this, [this] {
        {
            auto held = session_.engine.lock();
            session_.toggleSaveWarning();
        }
        emit edited();
    });
    return box;
}

void StripBar::setTempo(int value) {
    {
        auto held = session_.engine.lock();
        if (session_.engine.Tempo() == value) return;
        quillmer::setTempo(session_, value);
    }
    emit edited();
}

void StripBar::choosePage(int position) {
    {
        auto held = session_.engine.lock();
        session_.engine.showPage(pageOf(groupOf(session_.engine.CurrentPage()), static_cast<Compass>(position)));
    }
    emit edited();
}

void StripBar::nextGroup() {
    {
        auto held = session_.engine.lock();
        const int page = session_.engine.CurrentPage();
        session_.engine.showPage(pageOf((groupOf(page) + 1) % 4, compassOf(page)));
    }
    emit edited();
}

void StripBar::chooseSnapshot(int slot) {
    {
        auto held = session_.engine.lock();
        session_.snapshots.select(slot);
    }
    emit edited();
}

void StripBar::showState(const StripState& s) {
    {
        const QSignalBlocker a(tempoSlider_), b(tempoSpin_);
        tempoSlider_->setMaximum(s.maxTempo);
        if (!tempoSlider_->isSliderDown()) tempoSlider_->setValue(s.tempo);
        if (!beingEdited(tempoSpin_)) {
            tempoSpin_->setMaximum(s.maxTempo);
            tempoSpin_->setValue(s.tempo);
        }
    }
    {
        const QSignalBlocker a(pageGroup_);
        pageButtons_[static_cast<size_t>(s.page % 4)]->setChecked(true);
        groupButton_->setText(QString::number(s.page / 4 + 1));
    }
    {
        const QSignalBlocker a(flipButton_);
        flipButton_->setChecked(s.pageFlip);
    }
    {
        const QSignalBlocker a(snapshotBox_), b(snapshotSpin_);
        const bool typing = beingEdited(snapshotBox_);
        if (s.snapshotNames != shownNames_ && !typing) {
            snapshotBox_->clear();
            for (const std::string& name : s.snapshotNames) snapshotBox_->addItem(QString::fromStdString(name));
            shownNames_ = s.snapshotNames;
            shownComboText_.clear();
        }
        snapshotSpin_->setMaximum(std::max<int>(0, static_cast<int>(s.snapshotNames.size()) - 1));
        if (!beingEdited(snapshotSpin_)) snapshotSpin_->setValue(s.currentSnapshot);
        if (s.comboText != shownComboText_ && !typing) {
            snapshotBox_->setEditText(QString::fromStdString(s.comboText));
            shownComboText_ = s.comboText;
        }
    }
    // The mark keeps its place so the strip doesn't shift: shown lit or dimmed.
    if (editedMark_->isEnabled() != s.snapshotEdited) editedMark_->setEnabled(s.snapshotEdited);
    const QString markText = s.snapshotEdited ? QStringLiteral("\u270E") : QString();
    if (editedMark_->text() != markText) editedMark_->setText(markText);
    beatLamp_->setOn(s.lamps.tick);
    timingLamp_->setOn(s.lamps.timingError);
    midiInLamp_->setOn(s.lamps.midiIn);
    midiOutLamp_->setOn(s.lamps.midiOut);
    saveLight_->setColor(saveLightColor(s.saveLight));
}

}  // namespace quillmer::gui
