#pragma once
// Drawn controls of the table panels: the bars of a slide table and a knob. They draw what
// the module shows and report mouse gestures in the module's own units; the module decides.

#include <QWidget>

#include "gui/panels/PanelSpec.h"

namespace quillmer::gui {

// The bars of Slide<N>: stage lamps above, the bars in the painted area, stage numbers
// below. Gestures carry pixels of the module's area (x from 85, y from the top line).
class BarsView : public QWidget {
    Q_OBJECT
public:
    static constexpr int kLeft = 85;     // module x of the view's first column
    static constexpr int kTop = 2;       // module y of the view's first line
    static constexpr int kHeight = 92;   // module y of the line below the view
    BarsView(int stages, int barWidth, int rightEdge, QWidget* parent);
    static int widthTwips(int rightEdge);
    static int heightTwips();
    void show(const Shown& now);
    const Shown& shown() const { return shown_; }
    // A point in module pixels as the view's own.
    static QPoint local(int x, int y) { return {x - kLeft, y - kTop}; }

signals:
    void gesture(const Gesture& g);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    Gesture at(Gesture::Kind kind, QMouseEvent* event, int button) const;
    // The pointer in the view's pixels at 100 %, whatever the zoom.
    QPoint modulePoint(const QMouseEvent* event) const;
    int stages_;
    int barWidth_;
    int rightEdge_;
    Shown shown_;
};

// A knob: 23 pixels square, 0..127 round the dial with the seam at the bottom. Gestures
// carry twips inside the knob and the Ctrl, Shift and Alt keys. Every knob also takes the
// wheel (Shift for tens), the arrow, page, Home and End keys, and a double-click that opens
// a box to type the value in (Enter keeps it, Escape leaves the knob alone); these send a
// Value gesture with the new number.
class KnobView : public QWidget {
    Q_OBJECT
public:
    static constexpr int kSideTwips = 345;
    explicit KnobView(QWidget* parent);
    void setValue(int value);
    int value() const { return value_; }

signals:
    void gesture(const Gesture& g);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void sendValue(int value);
    int twipsAt(double pixels) const;  // a pointer coordinate in twips of the knob
    int value_ = 0;
    int wheelRest_ = 0;
};

// The knob's pointer angle for a value, counter-clockwise from the right.
double knobAngle(int value);
// Ctrl, Shift and Alt of a mouse event as Gesture::keys.
int gestureKeys(Qt::KeyboardModifiers modifiers);

}  // namespace quillmer::gui
