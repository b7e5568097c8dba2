#pragma once
// A control that its panel description draws itself: the description's painter draws what
// the module shows, and mouse presses, drags and releases go back as gestures with the point
// in pixels at 100 % whatever the zoom (Gesture::number and Gesture::item carry the view's
// width and height); a wheel turn goes as Gesture::Kind::Wheel with its whole notches.

#include <QWidget>
#include <functional>

#include "gui/panels/PanelSpec.h"

namespace quillmer::gui {

class DrawnView : public QWidget {
    Q_OBJECT
public:
    DrawnView(Painter paint, QWidget* parent);
    void show(const Shown& shown);

signals:
    void gesture(const Gesture& g);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void send(Gesture::Kind kind, QMouseEvent* event);
    // The point, the keys held and the view's size, all at 100 %.
    void fill(Gesture& g, QPointF at, Qt::KeyboardModifiers mods) const;
    // The view's area in pixels at 100 %: what the description draws in and gestures count in.
    QRect unzoomedRect() const;
    Painter paint_;
    Shown shown_;
    int wheelRest_ = 0;
};

}  // namespace quillmer::gui
