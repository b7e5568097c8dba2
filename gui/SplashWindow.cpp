#include "gui/SplashWindow.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>

namespace quillmer::gui {

namespace {
// A bar of sixteen steps, the lit ones a little rhythm.
constexpr bool kLit[16] = {true, false, false, true, false, false, true, false,
                           true, false, true, false, false, true, false, false};
}  // namespace

SplashWindow::SplashWindow(const QString& version)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint), version_(version) {
    setObjectName(QStringLiteral("frmSplash"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setFixedSize(kWidth, kHeight);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}

void SplashWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient back(0, 0, 0, height());
    back.setColorAt(0, QColor(38, 42, 52));
    back.setColorAt(1, QColor(18, 20, 26));
    p.fillRect(rect(), back);

    QFont title = font();
    title.setPixelSize(44);
    title.setBold(true);
    p.setFont(title);
    p.setPen(QColor(236, 232, 220));
    p.drawText(QRect(24, 22, width() - 48, 56), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Quillmer"));

    QFont line = font();
    line.setPixelSize(14);
    p.setFont(line);
    p.setPen(QColor(170, 176, 190));
    p.drawText(QRect(26, 80, width() - 52, 22), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("Modular MIDI step sequencer"));
    p.drawText(QRect(26, 80, width() - 52, 22), Qt::AlignRight | Qt::AlignVCenter, version_);

    const int side = 20, gap = 6, left = (width() - 16 * side - 15 * gap) / 2;
    for (int step = 0; step < 16; ++step) {
        const QRect lamp(left + step * (side + gap), 128, side, side);
        p.setPen(Qt::NoPen);
        p.setBrush(kLit[step] ? QColor(255, 60, 40) : QColor(96, 24, 20));
        p.drawRoundedRect(lamp, 4, 4);
    }
    p.setPen(QColor(110, 116, 130));
    line.setPixelSize(11);
    p.setFont(line);
    p.drawText(QRect(0, height() - 28, width(), 20), Qt::AlignCenter, QStringLiteral("Starting…"));
}

}  // namespace quillmer::gui
