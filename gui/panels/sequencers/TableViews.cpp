#include "gui/panels/sequencers/TableViews.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/Constants.h"
#include "gui/Zoom.h"
#include "modules/sequencers/Slides.h"
#include "modules/sequencers/Steps.h"

namespace quillmer::gui {

namespace {
const QColor kBack(40, 48, 40);
const QColor kFront(0, 200, 80);
const QColor kLampOn(255, 0, 0);
const QColor kLampOff(110, 0, 0);
constexpr int kLampTop = 3;
constexpr int kLampHeight = 5;

// The box a double-click opens on a knob; Escape closes it with nothing sent.
class KnobEntry final : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape) {
            deleteLater();
            return;
        }
        QLineEdit::keyPressEvent(event);
    }
};

int buttonOf(Qt::MouseButton b) { return b == Qt::LeftButton ? 1 : b == Qt::NoButton ? 0 : 2; }
int heldOf(Qt::MouseButtons held) { return held & Qt::LeftButton ? 1 : held == Qt::NoButton ? 0 : 2; }

// A rectangle of 100 % pixels on a zoomed view, with a pixel to spare for the rounding.
QRect zoomedRect(const QRect& r, double zoom) {
    return QRectF(r.x() * zoom, r.y() * zoom, r.width() * zoom, r.height() * zoom).toAlignedRect().adjusted(-1, -1, 1, 1);
}
}  // namespace

int gestureKeys(Qt::KeyboardModifiers modifiers) {
    return (modifiers & Qt::ControlModifier ? 1 : 0) | (modifiers & Qt::ShiftModifier ? 2 : 0) |
           (modifiers & Qt::AltModifier ? 4 : 0);
}

double knobAngle(int value) {
    const int t = ((value & 127) + 96) & 127;  // the inverse of (t + 160) AND 127
    return std::numbers::pi - t / 20.212677;
}

// --- BarsView ---

BarsView::BarsView(int stages, int barWidth, int rightEdge, QWidget* parent)
    : QWidget(parent), stages_(stages), barWidth_(barWidth), rightEdge_(rightEdge) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    shown_.row.assign(static_cast<size_t>(stages), 0);
    shown_.number = SlideSequencer::kDefaultLimit;
}

int BarsView::widthTwips(int rightEdge) { return (rightEdge - kLeft + 2) * kTwipsPerPixel; }
int BarsView::heightTwips() { return (kHeight - kTop) * kTwipsPerPixel; }

void BarsView::show(const Shown& now) {
    if (now == shown_) return;
    // Only what changed is drawn again: a moving lamp is two small squares.
    const bool sameScale = now.number == shown_.number && now.row.size() == shown_.row.size();
    if (!sameScale) {
        shown_ = now;
        update();
        return;
    }
    const double zoom = zoomFactorOf(this);
    auto column = [this, zoom](int i) {
        return zoomedRect(QRect(SlideSequencer::kAreaLeft - kLeft + i * barWidth_, 0, barWidth_, kHeight - kTop), zoom);
    };
    auto lamp = [this, zoom](int i) {
        return zoomedRect(QRect(SlideSequencer::kAreaLeft - kLeft + i * barWidth_, kLampTop, barWidth_, kLampHeight), zoom);
    };
    if (now.selected != shown_.selected) {
        update(lamp(shown_.selected));
        update(lamp(now.selected));
    }
    for (size_t i = 0; i < now.row.size(); ++i)
        if (now.row[i] != shown_.row[i]) update(column(static_cast<int>(i)));
    shown_ = now;
}

void BarsView::paintEvent(QPaintEvent* event) {
    QPainter p(this);
    const QColor face = parentWidget() ? parentWidget()->palette().color(QPalette::Window) : palette().color(QPalette::Window);
    p.fillRect(event->rect(), face);
    // Drawn in the module's pixels, scaled to the zoom.
    const double zoom = zoomFactorOf(this);
    p.scale(zoom, zoom);
    const QRect dirty = QRectF(event->rect().x() / zoom, event->rect().y() / zoom, event->rect().width() / zoom,
                               event->rect().height() / zoom).toAlignedRect();
    const float scale = static_cast<float>(SlideSequencer::kBarRoom) / static_cast<float>(std::max(1, shown_.number));
    const int floor = SlideSequencer::kFloor - kTop;
    const int barPixels = std::max(1, barWidth_ - 1);
    QFont small = font();
    small.setPixelSize(8);
    p.setFont(small);
    const int labelEvery = std::max(1, (14 + barWidth_ - 1) / barWidth_);
    const int firstColumn = std::max(0, (dirty.left() - (SlideSequencer::kAreaLeft - kLeft)) / barWidth_ - labelEvery);
    const int lastColumn = std::min(stages_ - 1, (dirty.right() - (SlideSequencer::kAreaLeft - kLeft)) / barWidth_ + 1);
    for (int i = firstColumn; i <= lastColumn; ++i) {
        const int left = SlideSequencer::kAreaLeft - kLeft + i * barWidth_;
        p.fillRect(left, floor - SlideSequencer::kBarRoom, barPixels, SlideSequencer::kBarRoom, kBack);
        const int value = i < static_cast<int>(shown_.row.size()) ? shown_.row[static_cast<size_t>(i)] : 0;
        const int h = std::min(static_cast<int>(std::lround(static_cast<float>(value) * scale)), SlideSequencer::kBarRoom);
        if (h > 0) p.fillRect(left, floor - h, barPixels, h, kFront);
        p.fillRect(left, kLampTop, barPixels, kLampHeight, i == shown_.selected ? kLampOn : kLampOff);
        if (i % labelEvery == 0 && dirty.bottom() > floor) {
            p.setPen(palette().color(QPalette::WindowText));
            p.drawText(QRect(left - 4, floor + 2, barWidth_ * labelEvery + 8, 11), Qt::AlignLeft | Qt::AlignTop, QString::number(i));
        }
    }
}

Gesture BarsView::at(Gesture::Kind kind, QMouseEvent* event, int button) const {
    Gesture g;
    g.kind = kind;
    const QPoint pos = modulePoint(event);
    g.x = pos.x() + kLeft;
    g.y = pos.y() + kTop;
    g.button = button;
    g.keys = gestureKeys(event->modifiers());
    return g;
}

QPoint BarsView::modulePoint(const QMouseEvent* event) const {
    return (event->position() / zoomFactorOf(this)).toPoint();
}

void BarsView::mousePressEvent(QMouseEvent* event) {
    const QPoint pos = modulePoint(event);
    const int x = pos.x() + kLeft;
    const int y = pos.y() + kTop;
    const bool inArea = y >= SlideSequencer::kAreaTop && y <= SlideSequencer::kAreaBottom &&
                        x >= SlideSequencer::kAreaLeft && x <= rightEdge_;
    if (!inArea) {
        event->ignore();  // the panel takes it: a drag
        return;
    }
    emit gesture(at(Gesture::Kind::Press, event, buttonOf(event->button())));
}

void BarsView::mouseMoveEvent(QMouseEvent* event) { emit gesture(at(Gesture::Kind::Move, event, heldOf(event->buttons()))); }

void BarsView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->buttons() != Qt::NoButton) return;  // the last button up ends the edit
    emit gesture(at(Gesture::Kind::Release, event, buttonOf(event->button())));
}

void BarsView::leaveEvent(QEvent*) {
    Gesture g;
    g.kind = Gesture::Kind::Leave;
    emit gesture(g);
}

// --- KnobView ---

KnobView::KnobView(QWidget* parent) : QWidget(parent) {
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
}

void KnobView::setValue(int value) {
    if (value == value_) return;
    value_ = value;
    update();
}

void KnobView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor face = parentWidget() ? parentWidget()->palette().color(QPalette::Window) : palette().color(QPalette::Window);
    p.fillRect(rect(), face);
    const QRectF dial = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    p.setPen(QPen(face.darker(170), 1.0));
    p.setBrush(face.darker(115));
    p.drawEllipse(dial);
    const double angle = knobAngle(value_);
    const QPointF centre = dial.center();
    const double r = dial.width() / 2 - 2;
    p.setPen(QPen(QColor(20, 20, 20), 2.0, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(centre, centre + QPointF(r * std::cos(angle), -r * std::sin(angle)));
}

void KnobView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    Gesture g;
    g.kind = Gesture::Kind::Press;
    g.x = twipsAt(event->position().x());
    g.y = twipsAt(event->position().y());
    g.button = 1;
    g.keys = gestureKeys(event->modifiers());
    emit gesture(g);
}

void KnobView::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton) || gestureKeys(event->modifiers()) != 0) return;
    Gesture g;
    g.kind = Gesture::Kind::Move;
    g.x = twipsAt(event->position().x());
    g.y = twipsAt(event->position().y());
    g.button = 1;
    emit gesture(g);
}

int KnobView::twipsAt(double pixels) const { return static_cast<int>(pixels * kTwipsPerPixel / zoomFactorOf(this)); }

void KnobView::sendValue(int value) {
    value = std::clamp(value, 0, 127);
    if (value == value_) return;
    setValue(value);
    Gesture g;
    g.kind = Gesture::Kind::Value;
    g.number = value;
    emit gesture(g);
}

void KnobView::wheelEvent(QWheelEvent* event) {
    wheelRest_ += event->angleDelta().y();
    const int notches = wheelRest_ / 120;
    wheelRest_ %= 120;
    if (notches != 0) sendValue(value_ + notches * (event->modifiers() & Qt::ShiftModifier ? 10 : 1));
    event->accept();
}

void KnobView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Up:
        case Qt::Key_Right: sendValue(value_ + 1); break;
        case Qt::Key_Down:
        case Qt::Key_Left: sendValue(value_ - 1); break;
        case Qt::Key_PageUp: sendValue(value_ + 10); break;
        case Qt::Key_PageDown: sendValue(value_ - 10); break;
        case Qt::Key_Home: sendValue(0); break;
        case Qt::Key_End: sendValue(127); break;
        default: QWidget::keyPressEvent(event); return;
    }
    event->accept();
}

void KnobView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    auto* entry = new KnobEntry(QString::number(value_), this);
    entry->setObjectName(QStringLiteral("knobEntry"));
    entry->setGeometry(rect());
    entry->setAlignment(Qt::AlignCenter);
    entry->setMaxLength(3);
    entry->selectAll();
    entry->show();
    entry->setFocus();
    connect(entry, &QLineEdit::returnPressed, this, [this, entry] {
        const std::string typed = entry->text().toStdString();
        entry->deleteLater();
        sendValue(ParseBusValue(typed));
    });
    connect(entry, &QLineEdit::editingFinished, entry, &QObject::deleteLater);
}

}  // namespace quillmer::gui
