#include "gui/panels/StatusIcon.h"

#include <QMouseEvent>
#include <QPainter>
#include <array>

namespace quillmer::gui {

namespace {
constexpr int kDisabledPicture = 9;

struct Picture {
    const char* glyph;
    QColor fill;
};
// By picture number 1..7: the four tick passes, the absolute clocks, MIDI input.
const std::array<Picture, 7> kPictures{{
    {"1", QColor(70, 150, 230)},
    {"2", QColor(90, 170, 110)},
    {"3", QColor(200, 160, 60)},
    {"4", QColor(210, 110, 60)},
    {"A", QColor(150, 100, 210)},
    {"B", QColor(190, 90, 180)},
    {"M", QColor(60, 170, 180)},
}};
}  // namespace

StatusIcon::StatusIcon(QWidget* parent) : QWidget(parent) {
    setCursor(Qt::PointingHandCursor);
    setToolTip(QStringLiteral("Set Module Status"));
}

void StatusIcon::setPicture(int picture) {
    if (picture == picture_) return;
    picture_ = picture;
    update();
}

void StatusIcon::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal side = std::min(width(), height()) - 1.0;
    const QRectF box(0.5, 0.5, side, side);
    if (picture_ == kDisabledPicture) {
        p.setPen(QPen(QColor(20, 20, 20), 1.0));
        p.setBrush(QColor(200, 50, 45));
        p.drawRoundedRect(box, side / 5, side / 5);
        p.setPen(QPen(Qt::white, side / 7, Qt::SolidLine, Qt::RoundCap));
        const qreal in = side * 0.3;
        p.drawLine(box.topLeft() + QPointF(in, in), box.bottomRight() - QPointF(in, in));
        p.drawLine(box.topRight() + QPointF(-in, in), box.bottomLeft() + QPointF(in, -in));
        return;
    }
    const Picture& pic = kPictures[static_cast<size_t>(std::clamp(picture_, 1, 7) - 1)];
    p.setPen(QPen(QColor(20, 20, 20), 1.0));
    p.setBrush(pic.fill);
    p.drawRoundedRect(box, side / 5, side / 5);
    QFont f = font();
    f.setPixelSize(std::max(6, static_cast<int>(side * 0.72)));
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(box, Qt::AlignCenter, QLatin1String(pic.glyph));
}

void StatusIcon::mousePressEvent(QMouseEvent* event) { event->accept(); }

void StatusIcon::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) emit clicked();
}

}  // namespace quillmer::gui
