#include "gui/panels/PanelFrame.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QWheelEvent>
#include <algorithm>
#include <cstdlib>

#include "engine/Constants.h"
#include "gui/Editing.h"
#include "gui/Lamp.h"
#include "gui/Zoom.h"
#include "gui/panels/StatusIcon.h"
#include "gui/panels/sequencers/TableViews.h"
#include "gui/panels/generators/OrbitPicture.h"
#include "gui/panels/midi/KeyboardPicture.h"
#include "gui/panels/panels/DrawnView.h"
#include "modules/sequencers/Steps.h"

namespace quillmer::gui {

namespace {
// The grid of a panel, in twips (15 to a pixel).
constexpr int kPad = 60;
constexpr int kTitleHeight = 270;
constexpr int kStatusSide = 225;
constexpr int kCellWidth = 840;      // one input: its label above its button
constexpr int kLabelHeight = 165;
constexpr int kButtonHeight = 270;
constexpr int kGap = 45;
constexpr int kRowHeight = 270;
constexpr int kStageWidth = 345;     // one stage: number, box, lamp
constexpr int kStagesPerLine = 16;
constexpr int kStageNumberHeight = 135;
constexpr int kStageLampHeight = 150;
constexpr int kMinWidth = 1800;
constexpr int kLampSide = 165;

const QColor kLampOn(255, 0, 0);
const QColor kLampOff(128, 0, 0);
const QColor kWarn(255, 255, 0);

QFont sized(QFont f, int pixels, bool bold = false) {
    f.setPixelSize(pixels);
    f.setBold(bold);
    return f;
}

// The largest font up to `pixels` high in which `sample` fits into `room` pixels.
QFont fitting(const QFont& base, const QString& sample, int room, int pixels) {
    QFont f = sized(base, pixels);
    while (f.pixelSize() > 6 && QFontMetrics(f).horizontalAdvance(sample) > room) f.setPixelSize(f.pixelSize() - 1);
    return f;
}

// Wheel notches and vertical drags on a stage box: a notch or this many pixels a step.
constexpr int kDragPixelsPerStep = 3;

void setElided(QAbstractButton* button, const QString& text) {
    const int room = button->width() - 6;
    const QString shown = button->fontMetrics().elidedText(text, Qt::ElideRight, room);
    if (button->text() != shown) button->setText(shown);
}

void setElided(QLabel* label, const QString& text) {
    const QString shown = label->fontMetrics().elidedText(text, Qt::ElideRight, label->width() - 2);
    if (label->text() != shown) label->setText(shown);
}

// A part that paints its own background in the panel's face colour.
void fillWithFace(QWidget* w) {
    QPalette colours = w->palette();
    colours.setColor(QPalette::Window, w->parentWidget()->palette().color(QPalette::Window));
    w->setPalette(colours);
    w->setAutoFillBackground(true);
}

void paintWarn(QWidget* w, bool warn) {
    if (w->property("warn").toBool() == warn) return;
    w->setProperty("warn", warn);
    w->setStyleSheet(warn ? QStringLiteral("background: #ffff00; color: black;") : QString());
}
}  // namespace

PanelFrame::PanelFrame(const PanelSpec& spec, const QString& name, const QString& typeCaption,
                       const std::vector<InputFace>& inputs, QWidget* canvas)
    : QFrame(canvas), spec_(spec), zoom_(zoomOf(canvas)) {
    setObjectName(QStringLiteral("panel:") + name);
    setFont(sized(font(), fontPx(11)));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setToolTip(typeCaption);
    // The panel's face is its palette's window colour; the parts that change often fill
    // their own background with it, so that a new value repaints the part alone.
    QPalette face = palette();
    face.setColor(QPalette::Window, face.color(QPalette::Window).lighter(118));
    setPalette(face);

    status_ = new StatusIcon(this);
    status_->setObjectName(QStringLiteral("iControl"));
    status_->setGeometry(px(kPad), px(kPad + (kTitleHeight - kStatusSide) / 2), px(kStatusSide), px(kStatusSide));
    connect(status_, &StatusIcon::clicked, this, &PanelFrame::statusClicked);
    name_ = new QLabel(name, this);
    name_->setObjectName(QStringLiteral("lblName"));
    name_->setFont(sized(font(), fontPx(11), true));
    name_->setCursor(Qt::SizeAllCursor);
    name_->installEventFilter(this);

    int y = kPad + kTitleHeight + kGap;
    buildInputs(inputs, y);
    int width = std::max(kMinWidth, std::min<int>(spec.inputColumns, static_cast<int>(inputs.size())) * kCellWidth + 2 * kPad);
    buildControls(y, width);
    int titleWidth = kPad + kStatusSide + kGap + 1200 + kPad;  // room for a name
    for (const auto& [item, itemWidth] : titleItems_) titleWidth += itemWidth + kGap;
    width = std::max(width, titleWidth);

    // The title row now that the width is known: its items at the right end, in order.
    int itemsWidth = 0;
    for (const auto& [item, itemWidth] : titleItems_) itemsWidth += itemWidth + kGap;
    int x = width - kPad - itemsWidth + kGap;
    const int nameLeft = kPad + kStatusSide + kGap;
    name_->setGeometry(px(nameLeft), px(kPad), px(x - kGap - nameLeft), px(kTitleHeight));
    for (const auto& [item, itemWidth] : titleItems_) {
        const int height = item->inherits("quillmer::gui::Lamp") ? kLampSide : kTitleHeight - kGap;
        item->setGeometry(px(x), px(kPad + (kTitleHeight - height) / 2), px(itemWidth), px(height));
        x += itemWidth + kGap;
    }
    // What the module keeps does not depend on the zoom: whole pixels at 100 %.
    const int height = y + kPad - kGap;
    twips_ = QSize(width / kTwipsPerPixel * kTwipsPerPixel, height / kTwipsPerPixel * kTwipsPerPixel);
    resize(px(width), px(height));
}

int PanelFrame::px(int twips) const { return zoomedPixels(twips, zoom_); }
int PanelFrame::fontPx(int pixels) const { return zoomedFontPixels(pixels, zoom_); }

void PanelFrame::buildInputs(const std::vector<InputFace>& inputs, int& y) {
    const int columns = std::max(1, spec_.inputColumns);
    for (size_t row = 0; row < inputs.size(); ++row) {
        const int column = static_cast<int>(row) % columns;
        const int line = static_cast<int>(row) / columns;
        const int left = kPad + column * kCellWidth;
        const int top = y + line * (kLabelHeight + kButtonHeight + kGap);
        auto* label = new QLabel(inputs[row].label, this);
        label->setObjectName(QStringLiteral("Label1_%1").arg(row));
        label->setFont(sized(font(), fontPx(9)));
        label->setAlignment(Qt::AlignCenter);
        label->setGeometry(px(left), px(top), px(kCellWidth - kGap), px(kLabelHeight));
        auto* button = new QPushButton(this);
        button->setFont(sized(font(), fontPx(10)));
        button->setObjectName(QStringLiteral("cmInput%1").arg(row));
        button->setToolTip(inputs[row].tip);
        button->setFocusPolicy(Qt::NoFocus);
        button->setGeometry(px(left), px(top + kLabelHeight), px(kCellWidth - kGap), px(kButtonHeight));
        const int r = static_cast<int>(row);
        connect(button, &QPushButton::clicked, this, [this, r] { emit inputClicked(r); });
        inputLabels_.push_back(label);
        inputButtons_.push_back(button);
    }
    if (!inputs.empty()) {
        const int lines = (static_cast<int>(inputs.size()) + columns - 1) / columns;
        y += lines * (kLabelHeight + kButtonHeight + kGap);
    }
}

int PanelFrame::besideInputsLeft() const {
    const int used = std::min(static_cast<int>(inputButtons_.size()), std::max(1, spec_.inputColumns));
    return kPad + used * kCellWidth;
}

void PanelFrame::buildControls(int& y, int& width) {
    int x = kPad;
    int besideX = besideInputsLeft();
    const int besideY = kPad + kTitleHeight + kGap + (inputButtons_.empty() ? 0 : kLabelHeight);
    bool rowUsed = false;
    int rowHeight = kRowHeight;
    controls_.resize(spec_.controls.size());
    // Lamps go right of every other title item.
    for (size_t i = 0; i < spec_.controls.size(); ++i) {
        const ControlSpec& c = spec_.controls[i];
        if (c.kind == ControlKind::Lamp || c.place != ControlSpec::Place::Title) continue;
        QWidget* w = makeControl(static_cast<int>(i), c);
        controls_[i].widget = w;
        titleItems_.emplace_back(w, c.widthTwips);
    }
    for (size_t i = 0; i < spec_.controls.size(); ++i) {
        const ControlSpec& c = spec_.controls[i];
        const int index = static_cast<int>(i);
        if (c.kind == ControlKind::Lamp) {
            auto* lamp = new Lamp(kLampOn, this);
            fillWithFace(lamp);
            lamp->setObjectName(c.objectName);
            lamp->setColor(kLampOff);
            titleItems_.emplace_back(lamp, kLampSide);
            controls_[i].widget = lamp;
            continue;
        }
        if (c.place == ControlSpec::Place::Title) continue;
        if (c.place == ControlSpec::Place::BesideInputs) {
            QWidget* w = makeControl(index, c);
            w->setGeometry(px(besideX), px(besideY), px(c.widthTwips), px(kButtonHeight));
            controls_[i].widget = w;
            besideX += c.widthTwips + kGap;
            width = std::max(width, besideX - kGap + kPad);
            continue;
        }
        if (c.kind == ControlKind::StageRow) {
            if (rowUsed) y += rowHeight + kGap;
            rowHeight = kRowHeight;
            y = buildStageRow(index, y, c.stages);
            width = std::max(width, std::min(kStagesPerLine, c.stages) * kStageWidth + 2 * kPad);
            x = kPad;
            rowUsed = false;
            continue;
        }
        if (c.newRow && rowUsed) {
            y += rowHeight + kGap;
            x = kPad;
            rowHeight = kRowHeight;
        }
        const int height = c.heightTwips > 0 ? c.heightTwips : kRowHeight;
        QWidget* w = makeControl(index, c);
        w->setGeometry(px(x), px(y), px(c.widthTwips), px(height));
        controls_[i].widget = w;
        x += c.widthTwips + kGap;
        width = std::max(width, x - kGap + kPad);
        rowHeight = std::max(rowHeight, height);
        rowUsed = true;
    }
    if (rowUsed) y += rowHeight + kGap;
}

QWidget* PanelFrame::makeControl(int index, const ControlSpec& c) {
    QWidget* w = nullptr;
    switch (c.kind) {
        case ControlKind::ValueBox: {
            auto* box = new QLabel(this);
            fillWithFace(box);
            box->setFrameShape(QFrame::Panel);
            box->setFrameShadow(QFrame::Sunken);
            box->setAlignment(Qt::AlignCenter);
            box->setText(c.textual ? QString() : QStringLiteral("0"));
            w = box;
            break;
        }
        case ControlKind::Caption: {
            auto* line = new QLabel(this);
            fillWithFace(line);
            line->setFont(sized(font(), fontPx(10)));
            w = line;
            break;
        }
        case ControlKind::Switch: {
            auto* sw = new QPushButton(c.caption, this);
            sw->setCheckable(true);
            sw->setFocusPolicy(Qt::NoFocus);
            connect(sw, &QPushButton::clicked, this, [this, index](bool in) {
                Gesture g;
                g.number = in ? 1 : 0;
                emit gesture(index, g);
            });
            w = sw;
            break;
        }
        case ControlKind::Button: {
            auto* button = new QPushButton(c.caption, this);
            button->setFocusPolicy(Qt::NoFocus);
            button->setEnabled(c.enabled);
            const bool asks = c.dialog != Dialog::None;
            connect(button, &QPushButton::clicked, this, [this, index, asks] {
                if (asks)
                    emit dialogWanted(index);
                else
                    emit gesture(index, Gesture{});
            });
            w = button;
            break;
        }
        case ControlKind::EditBox: {
            auto* edit = new QLineEdit(this);
            edit->setAlignment(Qt::AlignCenter);
            connect(edit, &QLineEdit::editingFinished, this, [this, index, edit] {
                if (!edit->isModified()) return;  // focus passing by is no edit
                edit->setModified(false);
                Gesture g;
                g.kind = Gesture::Kind::Text;
                g.text = edit->text().toStdString();
                emit gesture(index, g);
            });
            w = edit;
            break;
        }
        case ControlKind::Choice: {
            auto* menu = new QComboBox(this);
            for (const QString& choice : c.choices) menu->addItem(choice);
            menu->setMaxVisibleItems(static_cast<int>(c.choices.size()));
            connect(menu, &QComboBox::activated, this, [this, index](int row) {
                Gesture g;
                g.item = row;
                emit gesture(index, g);
            });
            w = menu;
            break;
        }
        case ControlKind::UpDown: {
            auto* spin = new QSpinBox(this);
            spin->setRange(c.minimum, c.maximum);
            spin->setKeyboardTracking(false);
            connect(spin, &QSpinBox::valueChanged, this, [this, index](int value) {
                Gesture g;
                g.kind = Gesture::Kind::Value;
                g.number = value;
                emit gesture(index, g);
            });
            w = spin;
            break;
        }
        case ControlKind::Bars: {
            auto* bars = new BarsView(c.stages, c.barWidth, c.rightEdge, this);
            connect(bars, &BarsView::gesture, this, [this, index](const Gesture& g) { emit gesture(index, g); });
            w = bars;
            break;
        }
        case ControlKind::Knob: {
            auto* knob = new KnobView(this);
            connect(knob, &KnobView::gesture, this, [this, index](const Gesture& g) { emit gesture(index, g); });
            w = knob;
            break;
        }
        case ControlKind::Slider: {
            auto* slider = new QSlider(Qt::Horizontal, this);
            slider->setRange(c.minimum, c.maximum);
            slider->setFocusPolicy(Qt::NoFocus);
            connect(slider, &QSlider::sliderMoved, this, [this, index](int value) {
                Gesture g;
                g.kind = Gesture::Kind::Value;
                g.number = value;
                emit gesture(index, g);
            });
            w = slider;
            break;
        }
        case ControlKind::Keyboard: {
            auto* keys = new KeyboardPicture(this);
            keys->onMouse = [this, index](KeyboardPicture::Press press, double x, double y) {
                Gesture g;
                g.kind = Gesture::Kind::Value;
                g.text = press == KeyboardPicture::Press::Down ? "down" : press == KeyboardPicture::Press::Drag ? "drag" : "up";
                g.item = static_cast<int>(x * 10000);
                g.number = static_cast<int>(y * 10000);
                emit gesture(index, g);
            };
            w = keys;
            break;
        }
        case ControlKind::Drawn: {
            auto* view = new DrawnView(c.paint, this);
            connect(view, &DrawnView::gesture, this, [this, index](const Gesture& g) { emit gesture(index, g); });
            w = view;
            break;
        }
        case ControlKind::Picture: {
            auto* picture = new OrbitPicture(this);
            picture->onClick = [this, index](int button) {
                Gesture g;
                g.button = button;
                emit gesture(index, g);
            };
            w = picture;
            break;
        }
        case ControlKind::Lamp:
        case ControlKind::StageRow: break;
    }
    w->setObjectName(c.objectName);
    if (!c.tip.isEmpty()) w->setToolTip(c.tip);
    return w;
}

int PanelFrame::buildStageRow(int index, int y, int stages) {
    Control& control = controls_[static_cast<size_t>(index)];
    const ControlSpec& c = spec_.controls[static_cast<size_t>(index)];
    const int lineHeight = kStageNumberHeight + kButtonHeight + kStageLampHeight;
    for (int i = 0; i < stages; ++i) {
        const int left = kPad + (i % kStagesPerLine) * kStageWidth;
        const int top = y + (i / kStagesPerLine) * (lineHeight + kGap);
        auto* number = new QLabel(QString::number(i), this);
        number->setObjectName(QStringLiteral("lbStage%1").arg(i));
        number->setFont(sized(font(), fontPx(8)));
        number->setAlignment(Qt::AlignCenter);
        number->setGeometry(px(left), px(top), px(kStageWidth - kGap), px(kStageNumberHeight));
        auto* box = new QLineEdit(QStringLiteral("0"), this);
        box->setObjectName(QStringLiteral("bxV1_%1").arg(i));
        box->setToolTip(c.tip);
        box->setAlignment(Qt::AlignCenter);
        box->setTextMargins(0, 0, 0, 0);
        // A thin border and no padding: three digits fit in the narrow box.
        box->setFrame(false);
        box->setStyleSheet(QStringLiteral("QLineEdit { padding: 0px; margin: 0px; border: 1px solid palette(mid); }"));
        box->setGeometry(px(left), px(top + kStageNumberHeight), px(kStageWidth - kGap), px(kButtonHeight));
        box->setFont(fitting(font(), QStringLiteral("127"), box->width() - 3, fontPx(10)));
        box->installEventFilter(this);
        connect(box, &QLineEdit::textEdited, this, [this, index, i](const QString& text) {
            Gesture g;
            g.kind = Gesture::Kind::Text;
            g.item = i;
            g.text = text.toStdString();
            emit gesture(index, g);
        });
        // Once the typing is over the box shows what the module made of it.
        connect(box, &QLineEdit::editingFinished, this, [this, index] {
            if (static_cast<size_t>(index) >= shown_.controls.size()) return;
            showStages(controls_[static_cast<size_t>(index)], shown_.controls.at(static_cast<size_t>(index)), true);
        });
        auto* lamp = new Lamp(kLampOn, this);
        fillWithFace(lamp);
        lamp->setObjectName(QStringLiteral("Shape1_%1").arg(i));
        lamp->setColor(kLampOff);
        const int side = kStageLampHeight - kGap;
        lamp->setGeometry(px(left + (kStageWidth - kGap - side) / 2), px(top + kStageNumberHeight + kButtonHeight + kGap / 2),
                          px(side), px(side));
        control.stageBoxes.push_back(box);
        control.stageLamps.push_back(lamp);
    }
    const int lines = (stages + kStagesPerLine - 1) / kStagesPerLine;
    return y + lines * (lineHeight + kGap);
}

void PanelFrame::show(const PanelValues& values) {
    const bool first = !anythingShown_;
    for (size_t row = 0; row < inputButtons_.size() && row < values.inputCaptions.size(); ++row) {
        if (first || values.inputCaptions[row] != shown_.inputCaptions[row])
            setElided(inputButtons_[row], QString::fromStdString(values.inputCaptions[row]));
    }
    for (size_t row = 0; row < inputButtons_.size() && row < values.inputTips.size(); ++row)
        if (first || row >= shown_.inputTips.size() || values.inputTips[row] != shown_.inputTips[row])
            inputButtons_[row]->setToolTip(QString::fromStdString(values.inputTips[row]));
    if (spec_.nameTip && (first || values.nameTip != shown_.nameTip)) name_->setToolTip(QString::fromStdString(values.nameTip));
    if (!inputLabels_.empty() && spec_.durationLabel && (first || values.durationLabel != shown_.durationLabel)) {
        QLabel* label = inputLabels_.front();
        if (values.durationLabel == DurationLabel::Turbo)
            label->setText(QStringLiteral("Turbo"));
        else if (!spec_.inputLabels.empty())
            label->setText(spec_.inputLabels.front());
        else
            label->setText(QStringLiteral("Dur"));
        paintWarn(label, values.durationLabel != DurationLabel::Dur);
    }
    for (size_t i = 0; i < controls_.size() && i < values.controls.size(); ++i)
        showControl(static_cast<int>(i), first ? Shown{} : shown_.controls[i], values.controls[i], first);
    if (first || values.statusPicture != shown_.statusPicture) status_->setPicture(values.statusPicture);
    shown_ = values;
    anythingShown_ = true;
}

void PanelFrame::showControl(int index, const Shown& was, const Shown& now, bool first) {
    const ControlSpec& c = spec_.controls[static_cast<size_t>(index)];
    Control& control = controls_[static_cast<size_t>(index)];
    if (!c.read || (!first && was == now)) return;
    if (c.tipFromModule) control.widget->setToolTip(QString::fromStdString(now.tip));
    switch (c.kind) {
        case ControlKind::ValueBox:
            static_cast<QLabel*>(control.widget)->setText(c.textual ? QString::fromStdString(now.text)
                                                                      : QString::number(now.number));
            break;
        case ControlKind::Caption: {
            auto* line = static_cast<QLabel*>(control.widget);
            setElided(line, QString::fromStdString(now.text));
            if (c.objectName == QLatin1String("lblFile") || c.tip.isEmpty()) line->setToolTip(QString::fromStdString(now.text));
            break;
        }
        case ControlKind::Lamp: static_cast<Lamp*>(control.widget)->setColor(now.on ? kLampOn : kLampOff); break;
        case ControlKind::Switch: {
            auto* sw = static_cast<QPushButton*>(control.widget);
            const QSignalBlocker quiet(sw);
            sw->setChecked(now.on);
            if (!now.text.empty()) sw->setText(QString::fromStdString(now.text));
            if (c.enableColours)
                sw->setStyleSheet(now.on ? QStringLiteral("background: #c0392b; color: white;")
                                         : QStringLiteral("background: #00c000; color: black;"));
            break;
        }
        case ControlKind::Button:
            if (c.enabledFromModule)
                control.widget->setEnabled(now.on);
            else
                setElided(static_cast<QPushButton*>(control.widget), QString::fromStdString(now.text));
            break;
        case ControlKind::EditBox: {
            auto* edit = static_cast<QLineEdit*>(control.widget);
            if (!beingEdited(edit)) edit->setText(c.textual ? QString::fromStdString(now.text) : QString::number(now.number));
            break;
        }
        case ControlKind::Choice: {
            auto* menu = static_cast<QComboBox*>(control.widget);
            const QSignalBlocker quiet(menu);
            if (c.itemsFromModule && (first || now.items != was.items)) {
                menu->clear();
                for (const std::string& item : now.items) menu->addItem(QString::fromStdString(item));
                menu->setMaxVisibleItems(std::max(1, static_cast<int>(now.items.size())));
            }
            menu->setCurrentIndex(now.selected);
            break;
        }
        case ControlKind::UpDown: {
            auto* spin = static_cast<QSpinBox*>(control.widget);
            if (beingEdited(spin)) break;
            const QSignalBlocker quiet(spin);
            if (c.rangeFromModule && spin->maximum() != now.selected) spin->setMaximum(now.selected);
            spin->setValue(now.number);
            break;
        }
        case ControlKind::Slider: {
            auto* slider = static_cast<QSlider*>(control.widget);
            if (!slider->isSliderDown()) {
                const QSignalBlocker quiet(slider);
                slider->setValue(now.number);
            }
            break;
        }
        case ControlKind::Keyboard: static_cast<KeyboardPicture*>(control.widget)->setHeld(now.number); break;
        case ControlKind::Picture: static_cast<OrbitPicture*>(control.widget)->setPoints(now.text); break;
        case ControlKind::StageRow: showStages(control, now); break;
        case ControlKind::Bars: static_cast<BarsView*>(control.widget)->show(now); break;
        case ControlKind::Knob: static_cast<KnobView*>(control.widget)->setValue(now.number); break;
        case ControlKind::Drawn: static_cast<DrawnView*>(control.widget)->show(now); break;
    }
}

void PanelFrame::showStages(Control& control, const Shown& now, bool typingOver) {
    for (size_t i = 0; i < control.stageBoxes.size() && i < now.row.size(); ++i) {
        auto* box = static_cast<QLineEdit*>(control.stageBoxes[i]);
        const QString value = QString::number(now.row[i]);
        if (typingOver) box->setModified(false);
        if (box->text() == value) continue;
        // Typing goes on undisturbed; the box shows the module's value once it is left.
        if (!typingOver && beingEdited(box)) continue;
        box->setText(value);
    }
    for (size_t i = 0; i < control.stageLamps.size(); ++i)
        static_cast<Lamp*>(control.stageLamps[i])->setColor(static_cast<int>(i) == now.number ? kLampOn : kLampOff);
}

QWidget* PanelFrame::stageBox(int stage) const {
    for (const Control& c : controls_)
        if (!c.stageBoxes.empty()) return c.stageBoxes.at(static_cast<size_t>(stage));
    return nullptr;
}

QSize PanelFrame::sizeTwips() const { return twips_; }

bool PanelFrame::eventFilter(QObject* watched, QEvent* event) {
    if (watched == name_) {
        // The type first: only a mouse event may be taken as one.
        switch (event->type()) {
            case QEvent::MouseButtonPress: return pressToDrag(static_cast<QMouseEvent*>(event));
            case QEvent::MouseMove: return moveWhileDragging(static_cast<QMouseEvent*>(event));
            case QEvent::MouseButtonRelease: return releaseDrag(static_cast<QMouseEvent*>(event));
            default: return false;
        }
    }
    const QEvent::Type type = event->type();
    if (type == QEvent::MouseButtonPress || type == QEvent::MouseMove || type == QEvent::MouseButtonRelease ||
        type == QEvent::Wheel) {
        for (Control& c : controls_) {
            for (size_t i = 0; i < c.stageBoxes.size(); ++i) {
                if (c.stageBoxes[i] != watched) continue;
                return stageBoxEvent(static_cast<int>(&c - controls_.data()), static_cast<int>(i),
                                     static_cast<QLineEdit*>(c.stageBoxes[i]), event);
            }
        }
    }
    return QFrame::eventFilter(watched, event);
}

void PanelFrame::setStageValue(int control, int stage, QLineEdit* box, int value) {
    const QString text = QString::number(std::clamp(value, 0, 127));
    if (box->text() == text) return;
    box->setText(text);
    Gesture g;
    g.kind = Gesture::Kind::Text;
    g.item = stage;
    g.text = text.toStdString();
    emit gesture(control, g);
}

// A press selects the stage and takes the focus as usual; a drag up or down from it, or the
// wheel, changes the value as the knobs do.
bool PanelFrame::stageBoxEvent(int control, int stage, QLineEdit* box, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress: {
            auto* press = static_cast<QMouseEvent*>(event);
            Gesture g;
            g.item = stage;
            emit gesture(control, g);
            if (press->button() == Qt::LeftButton) {
                stageDrag_ = {box, press->globalPosition().toPoint().y(), ParseBusValue(box->text().toStdString()), false};
            }
            return false;
        }
        case QEvent::MouseMove: {
            if (stageDrag_.box != box || !(static_cast<QMouseEvent*>(event)->buttons() & Qt::LeftButton)) return false;
            const int rise = stageDrag_.startY - static_cast<QMouseEvent*>(event)->globalPosition().toPoint().y();
            if (!stageDrag_.moved && std::abs(rise) < kDragPixelsPerStep) return false;
            stageDrag_.moved = true;
            setStageValue(control, stage, box, stageDrag_.startValue + rise / kDragPixelsPerStep);
            return true;
        }
        case QEvent::MouseButtonRelease: {
            const bool dragged = stageDrag_.box == box && stageDrag_.moved;
            stageDrag_ = {};
            return dragged;
        }
        case QEvent::Wheel: {
            auto* wheel = static_cast<QWheelEvent*>(event);
            wheelRest_ += wheel->angleDelta().y();
            const int notches = wheelRest_ / 120;
            wheelRest_ %= 120;
            if (notches != 0) {
                const int step = wheel->modifiers() & Qt::ShiftModifier ? 10 : 1;
                setStageValue(control, stage, box, ParseBusValue(box->text().toStdString()) + notches * step);
            }
            return true;
        }
        default: return false;
    }
}

void PanelFrame::mousePressEvent(QMouseEvent* event) {
    pressToDrag(event);
    event->accept();  // a press on a panel is never a press on the empty workspace
}
void PanelFrame::mouseMoveEvent(QMouseEvent* event) { moveWhileDragging(event); }
void PanelFrame::mouseReleaseEvent(QMouseEvent* event) { releaseDrag(event); }

bool PanelFrame::pressToDrag(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || (mayDrag && !mayDrag())) return false;
    dragging_ = true;
    grabOffset_ = event->globalPosition().toPoint() - pos();
    raise();
    return true;
}

bool PanelFrame::moveWhileDragging(QMouseEvent* event) {
    if (!dragging_) return false;
    move(event->globalPosition().toPoint() - grabOffset_);
    return true;
}

bool PanelFrame::releaseDrag(QMouseEvent* event) {
    if (!dragging_ || event->button() != Qt::LeftButton) return false;
    move(event->globalPosition().toPoint() - grabOffset_);
    dragging_ = false;
    emit dragFinished(pos());
    return true;
}

void PanelFrame::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor face = palette().color(QPalette::Window);
    p.fillRect(rect(), parentWidget() ? parentWidget()->palette().color(QPalette::Window) : face);
    QPen edge(palette().color(QPalette::Mid).lighter(130), 1.0);
    if (spec_.placeholder) edge.setStyle(Qt::DashLine);
    p.setPen(edge);
    p.setBrush(face);
    p.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    // The title row's underline.
    p.setPen(QPen(face.darker(140), 1.0));
    const qreal line = px(kPad + kTitleHeight) + 1.5;
    p.drawLine(QPointF(px(kPad), line), QPointF(width() - px(kPad), line));
}

}  // namespace quillmer::gui
