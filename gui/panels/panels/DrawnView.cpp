#include "gui/panels/panels/DrawnView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

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
    if (paint_) paint_(painter, rect(), shown_);
}

void DrawnView::send(Gesture::Kind kind, QMouseEvent* event) {
    Gesture g;
    g.kind = kind;
    g.x = static_cast<int>(event->position().x());
    g.y = static_cast<int>(event->position().y());
    g.button = event->buttons() & Qt::LeftButton ? 1 : event->buttons() & Qt::RightButton ? 2 : event->buttons() ? 4 : 0;
    const auto mods = event->modifiers();
    g.keys = (mods & Qt::ControlModifier ? 1 : 0) | (mods & Qt::ShiftModifier ? 2 : 0) | (mods & Qt::AltModifier ? 4 : 0);
    g.number = width();
    g.item = height();
    emit gesture(g);
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
    g.x = static_cast<int>(event->position().x());
    g.y = static_cast<int>(event->position().y());
    const auto mods = event->modifiers();
    g.keys = (mods & Qt::ControlModifier ? 1 : 0) | (mods & Qt::ShiftModifier ? 2 : 0) | (mods & Qt::AltModifier ? 4 : 0);
    g.notches = notches;
    g.number = width();
    g.item = height();
    emit gesture(g);
}

}  // namespace quillmer::gui
