#include "gui/panels/panels/DrawnView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <cmath>

#include "gui/Zoom.h"

namespace quillmer::gui {

DrawnView::DrawnView(Painter paint, QWidget* parent) : QWidget(parent), paint_(std::move(paint)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void DrawnView::show(const Shown& shown) {
    if (shown == shown_) return;
    shown_ = shown;
    update();
}

void DrawnView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(24, 24, 28));
    if (!paint_) return;
    // The description draws at 100 %; the painter scales it to the zoom.
    const double zoom = zoomFactorOf(this);
    painter.scale(zoom, zoom);
    paint_(painter, unzoomedRect(), shown_);
}

QRect DrawnView::unzoomedRect() const {
    const double zoom = zoomFactorOf(this);
    return {0, 0, static_cast<int>(std::lround(width() / zoom)), static_cast<int>(std::lround(height() / zoom))};
}

void DrawnView::send(Gesture::Kind kind, QMouseEvent* event) {
    Gesture g;
    g.kind = kind;
    g.button = event->buttons() & Qt::LeftButton ? 1 : event->buttons() & Qt::RightButton ? 2 : event->buttons() ? 4 : 0;
    fill(g, event->position(), event->modifiers());
    emit gesture(g);
}

void DrawnView::fill(Gesture& g, QPointF at, Qt::KeyboardModifiers mods) const {
    const double zoom = zoomFactorOf(this);
    g.x = static_cast<int>(at.x() / zoom);
    g.y = static_cast<int>(at.y() / zoom);
    g.keys = (mods & Qt::ControlModifier ? 1 : 0) | (mods & Qt::ShiftModifier ? 2 : 0) | (mods & Qt::AltModifier ? 4 : 0);
    const QRect area = unzoomedRect();
    g.number = area.width();
    g.item = area.height();
}

void DrawnView::mousePressEvent(QMouseEvent* event) { send(Gesture::Kind::Press, event); }

void DrawnView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() != Qt::NoButton) send(Gesture::Kind::Move, event);
}

void DrawnView::mouseReleaseEvent(QMouseEvent* event) { send(Gesture::Kind::Release, event); }

void DrawnView::wheelEvent(QWheelEvent* event) {
    wheelRest_ += event->angleDelta().y();
    const int notches = wheelRest_ / 120;
    wheelRest_ %= 120;
    event->accept();
    if (notches == 0) return;
    Gesture g;
    g.kind = Gesture::Kind::Wheel;
    g.notches = notches;
    fill(g, event->position(), event->modifiers());
    emit gesture(g);
}

}  // namespace quillmer::gui
