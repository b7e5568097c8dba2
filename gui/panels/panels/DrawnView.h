#pragma once
// A control that its panel description draws itself: the description's painter draws what
// the module shows, and mouse presses, drags and releases go back as gestures with the point
// in pixels (Gesture::number and Gesture::item carry the view's width and height); a wheel
// turn goes as Gesture::Kind::Wheel with its whole notches.

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
    Painter paint_;
    Shown shown_;
    int wheelRest_ = 0;
};

}  // namespace quillmer::gui
