#pragma once
// A control that its panel description draws itself: the description's painter draws what
// the module shows, and mouse presses, drags and releases go back as gestures with the point
// in pixels at 100 % whatever the zoom (Gesture::number and Gesture::item carry the view's
// width and height).

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

private:
    void send(Gesture::Kind kind, QMouseEvent* event);
    // The view's area in pixels at 100 %: what the description draws in and gestures count in.
    QRect unzoomedRect() const;
    Painter paint_;
    Shown shown_;
};

}  // namespace quillmer::gui
