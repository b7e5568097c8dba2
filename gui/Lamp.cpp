#include "gui/Lamp.h"

#include <QMouseEvent>
#include <QPainter>
#include <QRadialGradient>

namespace quillmer::gui {

QColor lampOffColor(QColor onColor) { return onColor.darker(420); }

Lamp::Lamp(QColor onColor, QWidget* parent) : QWidget(parent), onColor_(onColor), color_(lampOffColor(onColor)) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Lamp::setOn(bool on) {
    if (on == on_ && color_ == (on ? onColor_ : lampOffColor(onColor_))) return;
    on_ = on;
    setColor(on ? onColor_ : lampOffColor(onColor_));
}

void Lamp::setColor(QColor color) {
    if (color == color_) return;
    color_ = color;
    update();
}

QSize Lamp::sizeHint() const {
    const int side = fontMetrics().height() - 2;
    return {side, side};
}

void Lamp::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal side = std::min(width(), height()) - 2.0;
    const QRectF r((width() - side) / 2.0, (height() - side) / 2.0, side, side);
    QRadialGradient glow(r.center() - QPointF(side / 5.0, side / 5.0), side * 0.7);
    glow.setColorAt(0.0, color_.lighter(150));
    glow.setColorAt(1.0, color_);
    p.setBrush(glow);
    p.setPen(QPen(QColor(10, 10, 12), 1.0));
    p.drawEllipse(r);
}

void Lamp::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) emit clicked();
}

}  // namespace quillmer::gui
