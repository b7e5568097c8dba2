#pragma once
// Fractal's orbit picture: 128 x 128 points, one byte a point (0 blank, 1 plotted, 2
// plotted after a click), drawn scaled to the widget. A click is passed on: 1 left, 2 right.

#include <QImage>
#include <QWidget>
#include <functional>
#include <string>

namespace quillmer::gui {

class OrbitPicture : public QWidget {
public:
    explicit OrbitPicture(QWidget* parent);
    std::function<void(int button)> onClick;
    void setPoints(const std::string& pens);
    QSize sizeHint() const override { return {128, 128}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QImage image_;
};

}  // namespace quillmer::gui
