#pragma once
// A small round light of the strip: beat, timing error, MIDI activity, the save warning.
// It draws a colour; a clickable one (the save light) says so when clicked.

#include <QColor>
#include <QWidget>

namespace quillmer::gui {

class Lamp : public QWidget {
    Q_OBJECT
public:
    explicit Lamp(QColor onColor, QWidget* parent = nullptr);

    void setOn(bool on);
    bool isOn() const { return on_; }
    // Overrides the on/off colours, for a light with more than two states.
    void setColor(QColor color);
    QColor color() const { return color_; }

    QSize sizeHint() const override;

signals:
    void clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QColor onColor_;
    QColor color_;
    bool on_ = false;
};

// The colour of a light that is off: the on colour, darkened nearly to the panel.
QColor lampOffColor(QColor onColor);

}  // namespace quillmer::gui
