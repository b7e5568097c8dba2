#include "gui/FillDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDesktopServices>
#include <QDial>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QUrl>
#include <QVBoxLayout>
#include <filesystem>

#include "engine/Constants.h"
#include "gui/ProgramPaths.h"
#include "gui/UserDialogs.h"
#include "shell/DataFiles.h"
#include "tables/ToneTables.h"

namespace quillmer::gui {

namespace {
constexpr int kBarsHeight = 160;
constexpr int kBarsWidth = 640;
constexpr int kKeyboardOctaves = 6;
constexpr int kOctaveTwips = 1260;
constexpr int kKeyboardHeightTwips = 1005;
const QColor kInUse(0, 190, 70);
const QColor kPastLast(150, 150, 150);
const char* const kKnobNames[] = {"Start", "End", "Low", "High", "Scale"};
const QString kTitle = QStringLiteral("Quillmer");
// Where the dialog stood when it last closed; the next one opens there.
QPoint lastPlace;
bool placed = false;

QString noteText(int value) {
    const std::string_view name = PitchNames[static_cast<size_t>(value % 12)];
    return QString::number(value / 12) + QStringLiteral(" : ") + QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}
}  // namespace

// --- KeyedButton ---

void KeyedButton::mouseReleaseEvent(QMouseEvent* event) {
    const bool over = rect().contains(event->position().toPoint()) && event->button() == Qt::LeftButton;
    const Qt::KeyboardModifiers keys = event->modifiers();
    QPushButton::mouseReleaseEvent(event);
    if (over) emit clickedWith(keys);
}

void KeyedButton::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) emit doubleClicked();
    QPushButton::mouseDoubleClickEvent(event);
}

// --- FillBars ---

FillBars::FillBars(FillState& state, QWidget* parent) : QWidget(parent), state_(state) {
    setObjectName(QStringLiteral("iSliders"));
    setFixedSize(kBarsWidth, kBarsHeight);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

double FillBars::barWidth() const { return static_cast<double>(width()) / (state_.visibleLast() + 1); }

void FillBars::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), QColor(24, 28, 24));
    const int count = state_.visibleLast() + 1;
    const double w = barWidth();
    const int scale = state_.knobs.scale == 0 ? 127 : state_.knobs.scale;
    for (int i = 0; i < count; ++i) {
        const int h = std::min(height(), static_cast<int>(state_.hold[static_cast<size_t>(i)] * static_cast<double>(height()) / scale + 0.5));
        const int left = static_cast<int>(i * w);
        const int right = std::max(left + 1, static_cast<int>((i + 1) * w) - 1);
        p.fillRect(left, height() - h, right - left, h, i > state_.last ? kPastLast : kInUse);
    }
}

void FillBars::mousePressEvent(QMouseEvent* event) {
    const QPointF at = event->position();
    pressStage_ = state_.stageAtPixel(at.x(), barWidth());
    state_.beginDrawing();
    state_.setStage(pressStage_, state_.valueAtPixel(at.y(), height()));
    emit drawn(pressStage_);
}

void FillBars::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() == Qt::NoButton) return;
    const QPointF at = event->position();
    // The left button stays on the stage it pressed; another follows the pointer.
    const int stage = event->buttons() & Qt::LeftButton ? pressStage_ : state_.stageAtPixel(at.x(), barWidth());
    state_.setStage(stage, state_.valueAtPixel(at.y(), height()));
    emit drawn(stage);
}

// --- FillKeyboard ---

FillKeyboard::FillKeyboard(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("Picture1"));
    setFixedSize(kKeyboardOctaves * kOctaveTwips / kTwipsPerPixel, kKeyboardHeightTwips / kTwipsPerPixel);
    setMouseTracking(true);
}

void FillKeyboard::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), Qt::white);
    p.setPen(Qt::black);
    const double whiteWidth = static_cast<double>(kOctaveTwips) / 7 / kTwipsPerPixel;
    for (int i = 0; i <= kKeyboardOctaves * 7; ++i) p.drawLine(QPointF(i * whiteWidth, 0), QPointF(i * whiteWidth, height()));
    for (int octave = 0; octave < kKeyboardOctaves; ++octave) {
        for (int white : {1, 2, 4, 5, 6}) {
            const double centre = (octave * 7 + white) * whiteWidth;
            p.fillRect(QRectF(centre - whiteWidth / 3, 0, whiteWidth * 2 / 3, height() * 0.6), Qt::black);
        }
    }
}

void FillKeyboard::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint() * kTwipsPerPixel;
    const int key = keyboardKeyAt(at.x(), at.y());
    if (key >= 0) emit keyClicked(key);
}

void FillKeyboard::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint() * kTwipsPerPixel;
    const int key = keyboardKeyAt(at.x(), at.y());
    if (key >= 0) emit keyHovered(key);
}

// --- FillDialog ---

FillDialog::FillDialog(FillState& state, std::function<void()> send, UserDialogs& dialogs, const QString& title, QWidget* parent)
    : QDialog(parent), state_(state), send_(std::move(send)), dialogs_(dialogs) {
    setObjectName(QStringLiteral("Dialog"));
    setWindowTitle(title);
    setModal(true);
    build();
    changed(false);
    if (placed) move(lastPlace);
}

FillDialog::~FillDialog() {
    if (!closed_) state_.close();
}

void FillDialog::build() {
    auto* layout = new QVBoxLayout(this);
    bars_ = new FillBars(state_, this);
    connect(bars_, &FillBars::drawn, this, [this](int stage) {
        showStage(stage);
        changed(true);
    });
    layout->addWidget(bars_);

    // The stage under edit, its value and note, the full view, the keyboard and the shift.
    auto* row = new QHBoxLayout;
    auto* full = new QCheckBox(QStringLiteral("Full"), this);
    full->setObjectName(QStringLiteral("chkFull"));
    full->setToolTip(QStringLiteral("Check to show full 128 sliders"));
    full->setChecked(state_.fullView);
    connect(full, &QCheckBox::toggled, this, [this](bool on) {
        state_.fullView = on;
        changed(false);
    });
    row->addWidget(full);
    row->addWidget(new QLabel(QStringLiteral("Stage"), this));
    stageNumber_ = new QSpinBox(this);
    stageNumber_->setObjectName(QStringLiteral("UpDnNum"));
    stageNumber_->setToolTip(QStringLiteral("Set Stage Number"));
    connect(stageNumber_, &QSpinBox::valueChanged, this, [this](int stage) {
        if (!updating_) showStage(stage);
    });
    row->addWidget(stageNumber_);
    row->addWidget(new QLabel(QStringLiteral("Value"), this));
    stageValue_ = new QSpinBox(this);
    stageValue_->setObjectName(QStringLiteral("UpDnVal"));
    stageValue_->setToolTip(QStringLiteral("Set Stage Value"));
    stageValue_->setRange(0, 127);
    connect(stageValue_, &QSpinBox::valueChanged, this, [this](int value) {
        if (updating_) return;
        state_.push();
        state_.setStage(stageNumber_->value(), value);
        changed(true);
    });
    row->addWidget(stageValue_);
    note_ = new QLabel(this);
    note_->setObjectName(QStringLiteral("lblNote"));
    note_->setMinimumWidth(60);
    row->addWidget(note_);
    auto* keyboardCheck = new QCheckBox(QStringLiteral("Keybd"), this);
    keyboardCheck->setObjectName(QStringLiteral("chkKeybd"));
    keyboardCheck->setToolTip(QStringLiteral("Show/hide virtual keyboard"));
    row->addWidget(keyboardCheck);
    row->addWidget(new QLabel(QStringLiteral("Shift"), this));
    shift_ = new QSlider(Qt::Horizontal, this);
    shift_->setObjectName(QStringLiteral("GSlider1"));
    shift_->setToolTip(QStringLiteral("Shift position of Hold values"));
    shift_->setRange(0, 127);
    connect(shift_, &QSlider::sliderPressed, this, [this] { state_.beginShift(); });
    connect(shift_, &QSlider::valueChanged, this, [this](int position) {
        if (!shift_->isSliderDown()) return;
        state_.shiftTo(position);
        changed(true);
    });
    connect(shift_, &QSlider::sliderReleased, this, [this] {
        const QSignalBlocker quiet(shift_);
        shift_->setValue(0);
    });
    row->addWidget(shift_, 1);
    layout->addLayout(row);

    // The keyboard, hidden until asked for.
    auto* keyboardRow = new QHBoxLayout;
    keyboard_ = new FillKeyboard(this);
    keyboardRow->addWidget(keyboard_);
    octave_ = new QSpinBox(this);
    octave_->setObjectName(QStringLiteral("UpDown1"));
    octave_->setToolTip(QStringLiteral("increments/decrements the octave offset"));
    octave_->setRange(0, 10);
    octave_->setValue(4);
    keyboardRow->addWidget(octave_);
    auto* keyboardBox = new QWidget(this);
    keyboardBox->setLayout(keyboardRow);
    keyboardBox->setVisible(state_.keyboard);
    keyboardCheck->setChecked(state_.keyboard);
    connect(keyboardCheck, &QCheckBox::toggled, this, [this, keyboardBox](bool on) {
        state_.keyboard = on;
        keyboardBox->setVisible(on);
        adjustSize();
    });
    connect(keyboard_, &FillKeyboard::keyClicked, this, [this](int key) {
        const int stage = stageNumber_->value();
        state_.push();
        state_.setStage(stage, std::min(127, octave_->value() * 12 + key));
        showStage(std::min(stage + 1, state_.visibleLast()));
        changed(true);
    });
    connect(keyboard_, &FillKeyboard::keyHovered, this,
            [this](int key) { note_->setText(noteText(std::min(127, octave_->value() * 12 + key))); });
    layout->addWidget(keyboardBox);

    // The five knobs.
    auto* knobRow = new QHBoxLayout;
    for (int i = 0; i < 5; ++i) {
        auto* column = new QVBoxLayout;
        auto* name = new QLabel(QLatin1String(kKnobNames[i]), this);
        name->setAlignment(Qt::AlignCenter);
        auto* dial = new QDial(this);
        dial->setObjectName(QStringLiteral("iKnobs%1").arg(i));
        dial->setRange(0, 127);
        dial->setFixedSize(40, 40);
        auto* value = new QLabel(this);
        value->setAlignment(Qt::AlignCenter);
        connect(dial, &QDial::valueChanged, this, [this, i, value](int v) {
            value->setText(QString::number(v));
            if (updating_) return;
            int* knob[] = {&state_.knobs.start, &state_.knobs.end, &state_.knobs.low, &state_.knobs.high, &state_.knobs.scale};
            *knob[i] = v;
            if (i == 4) bars_->update();
        });
        column->addWidget(name);
        column->addWidget(dial, 0, Qt::AlignHCenter);
        column->addWidget(value);
        knobRow->addLayout(column);
        knobs_.push_back(dial);
        knobValues_.push_back(value);
    }
    knobRow->addStretch();

    // Buffers, harmonic sort, files.
    auto* side = new QGridLayout;
    for (int i = 0; i < FillState::kBuffers; ++i) {
        auto* b = new KeyedButton(QString::number(i + 1), this);
        b->setObjectName(QStringLiteral("FillSet%1").arg(i));
        b->setToolTip(QStringLiteral("Select buffer to use; double click to merge from previous"));
        b->setCheckable(true);
        b->setFixedWidth(28);
        connect(b, &KeyedButton::clickedWith, this, [this, i](Qt::KeyboardModifiers) {
            if (i != state_.bufferCurrent) state_.selectBuffer(i);
            changed(true);
        });
        connect(b, &KeyedButton::doubleClicked, this, [this] {
            if (state_.mergeBuffer()) changed(true);
        });
        side->addWidget(b, 0, i);
        buffers_.push_back(b);
    }
    auto* sort = new KeyedButton(QStringLiteral("HSort"), this);
    sort->setObjectName(QStringLiteral("bHSort"));
    sort->setToolTip(QStringLiteral("Harmonic Sort from Start to End: Ctrl-Click to select table"));
    connect(sort, &KeyedButton::clickedWith, this, [this](Qt::KeyboardModifiers keys) { sortOrAsk(keys); });
    side->addWidget(sort, 1, 0, 1, 2);
    auto* loadButton = new KeyedButton(QStringLiteral("Load"), this);
    loadButton->setObjectName(QStringLiteral("bLoad"));
    connect(loadButton, &KeyedButton::clickedWith, this, [this](Qt::KeyboardModifiers keys) { load(keys); });
    side->addWidget(loadButton, 1, 2);
    auto* saveButton = new KeyedButton(QStringLiteral("Save"), this);
    saveButton->setObjectName(QStringLiteral("bSave"));
    connect(saveButton, &KeyedButton::clickedWith, this, [this](Qt::KeyboardModifiers keys) { save(keys); });
    side->addWidget(saveButton, 1, 3);
    append_ = new QCheckBox(QStringLiteral("Append"), this);
    append_->setObjectName(QStringLiteral("chkAppend"));
    append_->setToolTip(QStringLiteral("If checked: Save appends to file; Load reads file at LOW*128 + HIGH"));
    side->addWidget(append_, 2, 0, 1, 3);
    bytesRead_ = new QLabel(this);
    bytesRead_->setObjectName(QStringLiteral("Label1"));
    bytesRead_->setToolTip(QStringLiteral("File bytes read"));
    side->addWidget(bytesRead_, 2, 3, 1, 2);
    knobRow->addLayout(side);
    layout->addLayout(knobRow);

    // The scale choices.
    auto* scales = new QHBoxLayout;
    for (int i = 0; i < kScaleChoices; ++i) {
        auto* choice = new QRadioButton(QLatin1String(scaleChoiceInfo(i).caption), this);
        choice->setObjectName(QStringLiteral("FillScale%1").arg(i));
        choice->setToolTip(QLatin1String(scaleChoiceInfo(i).tip));
        choice->setChecked(i == state_.scaleSelect);
        connect(choice, &QRadioButton::toggled, this, [this, i](bool on) {
            if (on) state_.scaleSelect = i;
        });
        scales->addWidget(choice);
    }
    layout->addLayout(scales);

    // The commands, in rows of ten.
    auto* grid = new QGridLayout;
    commands_.assign(fillcmd::kLast + 1, nullptr);
    int place = 0;
    for (int i = 0; i <= fillcmd::kLast; ++i) {
        const FillCommandInfo& info = fillCommand(i);
        if (info.index < 0) continue;
        auto* b = new QPushButton(QLatin1String(info.caption), this);
        b->setObjectName(QStringLiteral("Command%1").arg(i));
        b->setToolTip(QString::fromLatin1(info.tip));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, [this, i] { run(i); });
        grid->addWidget(b, place / 10, place % 10);
        commands_[static_cast<size_t>(i)] = b;
        ++place;
    }
    layout->addLayout(grid);
}

QPushButton* FillDialog::command(int index) const { return commands_.at(static_cast<size_t>(index)); }
QPushButton* FillDialog::bufferButton(int i) const { return buffers_.at(static_cast<size_t>(i)); }
QDial* FillDialog::knob(int i) const { return knobs_.at(static_cast<size_t>(i)); }
QWidget* FillDialog::part(const char* role) const { return findChild<QWidget*>(QLatin1String(role)); }

void FillDialog::run(int index) {
    switch (index) {
        case fillcmd::OK:
            state_.accept();
            accept();
            return;
        case fillcmd::Cancel: reject(); return;
        case fillcmd::Help: {
            const QString page = programDir() + QStringLiteral("/help/alldocs/qmfillhelp.htm");
            const QString manual = manualPath();
            if (QFileInfo::exists(page))
                QDesktopServices::openUrl(QUrl::fromLocalFile(page));
            else if (!manual.isEmpty())
                QDesktopServices::openUrl(QUrl::fromLocalFile(manual));
            return;
        }
        default: changed(state_.command(index));
    }
}

void FillDialog::changed(bool send) {
    if (send && send_) send_();
    updating_ = true;
    const int knobValues[] = {state_.knobs.start, state_.knobs.end, state_.knobs.low, state_.knobs.high, state_.knobs.scale};
    for (size_t i = 0; i < knobs_.size(); ++i) {
        knobs_[i]->setValue(knobValues[i]);
        knobValues_[i]->setText(QString::number(knobValues[i]));
    }
    stageNumber_->setRange(0, state_.visibleLast());
    const int stage = stageNumber_->value();
    stageValue_->setValue(state_.hold[static_cast<size_t>(stage)]);
    note_->setText(noteText(state_.hold[static_cast<size_t>(stage)]));
    for (size_t i = 0; i < buffers_.size(); ++i) buffers_[i]->setChecked(static_cast<int>(i) == state_.bufferCurrent);
    command(fillcmd::Undo)->setEnabled(state_.canUndo());
    command(fillcmd::Redo)->setEnabled(state_.canRedo());
    updating_ = false;
    bars_->update();
}

void FillDialog::showStage(int stage) {
    updating_ = true;
    stageNumber_->setValue(stage);
    stageValue_->setValue(state_.hold[static_cast<size_t>(stageNumber_->value())]);
    note_->setText(noteText(state_.hold[static_cast<size_t>(stageNumber_->value())]));
    updating_ = false;
}

void FillDialog::load(Qt::KeyboardModifiers keys) {
    if (keys & Qt::ShiftModifier) {
        state_.push();
        bytesRead_->setText(QString::number(state_.loadText(QApplication::clipboard()->text().toStdString())));
        changed(true);
        return;
    }
    const QString file = dialogs_.openFileName(QStringLiteral("Select File to Load into Hold"), examplesDir(),
                                               QStringLiteral("All Files (*);;Sequencer Files (*.seq);;Text Files (*.txt)"));
    if (file.isEmpty()) return;
    int read = 0;
    std::string reason;
    if (!state_.loadFile(file.toStdString(), append_->isChecked(), read, reason)) {
        dialogs_.critical(kTitle, QStringLiteral("Unable to Load: ") + file);
        return;
    }
    bytesRead_->setText(QString::number(read));
    changed(true);
}

void FillDialog::save(Qt::KeyboardModifiers keys) {
    if (keys & Qt::ShiftModifier) {
        QApplication::clipboard()->setText(QString::fromStdString(state_.holdText()));
        return;
    }
    const QString file = dialogs_.saveFileName(QStringLiteral("Save Hold"), examplesDir(),
                                               QStringLiteral("All Files (*);;Sequencer Files (*.seq)"));
    if (file.isEmpty()) return;
    std::string reason;
    if (!state_.saveFile(file.toStdString(), append_->isChecked(), reason))
        dialogs_.critical(kTitle, QStringLiteral("Unable to Save: ") + file);
}

void FillDialog::sortOrAsk(Qt::KeyboardModifiers keys) {
    if (keys & Qt::ControlModifier) {
        auto* ask = new HarmonicKeysDialog(state_.hsort, state_.random, this);
        ask->setAttribute(Qt::WA_DeleteOnClose);
        ask->open();
        return;
    }
    state_.harmonicSort();
    changed(true);
}

void FillDialog::done(int result) {
    if (!closed_) {
        closed_ = true;
        state_.close(send_);
        lastPlace = pos();
        placed = true;
    }
    QDialog::done(result);
}

// --- HarmonicKeysDialog ---

HarmonicKeysDialog::HarmonicKeysDialog(HarmonicKeys& keys, RandomSource& random, QWidget* parent)
    : QDialog(parent), keys_(keys), random_(random) {
    setObjectName(QStringLiteral("fHSort"));
    setWindowTitle(QStringLiteral("Harmonic Sort Keys"));
    setModal(true);
    auto* grid = new QGridLayout(this);
    for (int row = 0; row < HarmonicKeys::kRows; ++row) {
        auto* choice = new QRadioButton(QString::number(row), this);
        choice->setObjectName(QStringLiteral("opKey%1").arg(row));
        choice->setChecked(row == keys.current);
        connect(choice, &QRadioButton::toggled, this, [this](bool) { showCurrent(); });
        auto* key = new QLineEdit(QString::fromStdString(keys.keyText(row)), this);
        key->setObjectName(QStringLiteral("txKey%1").arg(row));
        connect(key, &QLineEdit::textEdited, this, [key](const QString& typed) {
            const int at = key->cursorPosition();
            key->setText(QString::fromStdString(HarmonicKeys::filterTyped(typed.toStdString())));
            key->setCursorPosition(at);
        });
        key->installEventFilter(this);
        auto* doc = new QLineEdit(QString::fromStdString(keys.name(row)), this);
        doc->setObjectName(QStringLiteral("txDoc%1").arg(row));
        grid->addWidget(choice, row, 0);
        grid->addWidget(key, row, 1);
        grid->addWidget(doc, row, 2);
        choices_.push_back(choice);
        keyTexts_.push_back(key);
        docTexts_.push_back(doc);
    }
    keyCurrent_ = new QLabel(this);
    keyCurrent_->setObjectName(QStringLiteral("txKeyCurrent"));
    docCurrent_ = new QLabel(this);
    docCurrent_->setObjectName(QStringLiteral("txDocCurrent"));
    grid->addWidget(keyCurrent_, HarmonicKeys::kRows, 1);
    grid->addWidget(docCurrent_, HarmonicKeys::kRows, 2);
    auto* ok = new QPushButton(QStringLiteral("Save and Exit"), this);
    ok->setObjectName(QStringLiteral("bOK"));
    connect(ok, &QPushButton::clicked, this, &HarmonicKeysDialog::saveAndExit);
    grid->addWidget(ok, HarmonicKeys::kRows + 1, 2, Qt::AlignRight);
    showCurrent();
}

void HarmonicKeysDialog::showCurrent() {
    for (size_t row = 0; row < choices_.size(); ++row) {
        if (!choices_[row]->isChecked()) continue;
        keyCurrent_->setText(keyTexts_[row]->text());
        docCurrent_->setText(docTexts_[row]->text());
    }
}

bool HarmonicKeysDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick) {
        for (int row = HarmonicKeys::kBuiltIn; row < HarmonicKeys::kRows; ++row) {
            if (watched != keyTexts_[static_cast<size_t>(row)]) continue;
            keys_.randomKey(row, random_);
            keyTexts_[static_cast<size_t>(row)]->setText(QString::fromStdString(keys_.keyText(row)));
            docTexts_[static_cast<size_t>(row)]->setText(QString::fromStdString(keys_.name(row)));
            showCurrent();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void HarmonicKeysDialog::saveAndExit() {
    for (int row = 0; row < HarmonicKeys::kRows; ++row) {
        keys_.setKeyText(row, keyTexts_[static_cast<size_t>(row)]->text().toStdString());
        keys_.setName(row, docTexts_[static_cast<size_t>(row)]->text().toStdString());
        if (choices_[static_cast<size_t>(row)]->isChecked()) keys_.current = row;
    }
    std::string reason;
    saveHarmonicKeys(keys_, reason);  // kept for this run even when the file can't be written
    accept();
}

void loadHarmonicKeys(HarmonicKeys& keys) {
    const std::string file = findDataFile(HarmonicKeys::kFileName);
    std::string reason;
    if (!file.empty()) keys.load(file, reason);
}

bool saveHarmonicKeys(const HarmonicKeys& keys, std::string& reason) {
    std::error_code error;
    std::filesystem::create_directories(userDataDir(), error);
    return keys.save((std::filesystem::path(userDataDir()) / HarmonicKeys::kFileName).string(), reason);
}

}  // namespace quillmer::gui
