#include "gui/panels/generators/OrbitPicture.h"

#include <QMouseEvent>
#include <QPainter>

namespace quillmer::gui {

namespace {
constexpr int kSide = 128;
}

OrbitPicture::OrbitPicture(QWidget* parent) : QWidget(parent), image_(kSide, kSide, QImage::Format_RGB32) {
    image_.fill(Qt::black);
    setCursor(Qt::CrossCursor);
}

void OrbitPicture::setPoints(const std::string& pens) {
    const QRgb blank = qRgb(0, 0, 0), plotted = qRgb(255, 255, 255), afterClick = qRgb(0, 255, 255);
    for (int y = 0; y < kSide; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image_.scanLine(y));
        for (int x = 0; x < kSide; ++x) {
            const size_t i = static_cast<size_t>(y * kSide + x);
            const char pen = i < pens.size() ? pens[i] : 0;
            line[x] = pen == 0 ? blank : pen == 2 ? afterClick : plotted;
        }
    }
    update();
}

void OrbitPicture::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.drawImage(rect(), image_);
}

void OrbitPicture::mousePressEvent(QMouseEvent* event) {
    if (onClick) onClick(event->button() == Qt::LeftButton ? 1 : 2);
}

}  // namespace quillmer::gui
