#include "gui/Look.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QStyleFactory>

namespace quillmer::gui {

void applyDarkStyle(QApplication& app) {
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));

    const QColor window(0x2d, 0x31, 0x38);
    const QColor base(0x1e, 0x21, 0x26);
    const QColor text(0xdc, 0xdf, 0xe4);
    const QColor dimText(0x7a, 0x80, 0x8a);
    const QColor highlight(0x3d, 0x8b, 0xd9);

    QPalette p;
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window.darker(110));
    p.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3f, 0x48));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, dimText);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x38, 0x3d, 0x45));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, QColor(0xff, 0x66, 0x55));
    p.setColor(QPalette::Link, highlight.lighter(120));
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Light, window.lighter(150));
    p.setColor(QPalette::Midlight, window.lighter(125));
    p.setColor(QPalette::Mid, window.darker(130));
    p.setColor(QPalette::Dark, window.darker(160));
    p.setColor(QPalette::Shadow, QColor(0x10, 0x11, 0x13));
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        p.setColor(QPalette::Disabled, role, dimText);
    }
    p.setColor(QPalette::Disabled, QPalette::Highlight, window.lighter(130));
    app.setPalette(p);

    // Checked tool buttons (page, flip, run) need to read as pressed at a glance.
    app.setStyleSheet(QStringLiteral(
        "QToolButton:checked { background: #3d6f9f; border: 1px solid #5b93c9; border-radius: 3px; }"));
}

// --- toolbar pictures ---


namespace {

// Draws on a 24 x 24 grid, scaled to whatever size is asked for.
void draw(QPainter& p, ToolIcon which, QColor ink, QColor accent) {
    QPen pen(ink, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    switch (which) {
        case ToolIcon::New:
            p.drawPolygon(QPolygonF({QPointF(6, 3), QPointF(14, 3), QPointF(19, 8), QPointF(19, 21), QPointF(6, 21)}));
            p.drawPolyline(QPolygonF({QPointF(14, 3), QPointF(14, 8), QPointF(19, 8)}));
            break;
        case ToolIcon::Open:
            p.drawPolygon(QPolygonF({QPointF(3, 6), QPointF(9, 6), QPointF(11, 8), QPointF(20, 8), QPointF(20, 19), QPointF(3, 19)}));
            p.drawLine(QPointF(3, 11), QPointF(20, 11));
            break;
        case ToolIcon::Save:
            p.drawRoundedRect(QRectF(4, 4, 16, 16), 2, 2);
            p.drawRect(QRectF(8, 4, 8, 5));
            p.drawRect(QRectF(7, 13, 10, 7));
            break;
        case ToolIcon::Help: {
            p.drawEllipse(QRectF(3.5, 3.5, 17, 17));
            QPainterPath hook;
            hook.moveTo(9.5, 10);
            hook.cubicTo(9.5, 6.5, 14.5, 6.5, 14.5, 10);
            hook.cubicTo(14.5, 12, 12, 12.2, 12, 14.5);
            p.drawPath(hook);
            p.drawPoint(QPointF(12, 17.5));
            break;
        }
        case ToolIcon::Composer:
            for (int i = 0; i < 4; ++i) {
                p.drawLine(QPointF(8, 6 + i * 4), QPointF(20, 6 + i * 4));
                p.drawPoint(QPointF(4.5, 6 + i * 4));
            }
            break;
        case ToolIcon::StoreNew:
            p.drawRoundedRect(QRectF(3, 7, 18, 13), 2, 2);
            p.drawRect(QRectF(8, 4, 6, 3));
            p.drawEllipse(QRectF(8, 9.5, 8, 8));
            p.setPen(QPen(accent, 2.0, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(19, 1.5), QPointF(19, 6.5));
            p.drawLine(QPointF(16.5, 4), QPointF(21.5, 4));
            break;
        case ToolIcon::StoreCurrent:
            p.drawPolyline(QPolygonF({QPointF(4, 13), QPointF(4, 20), QPointF(20, 20), QPointF(20, 13)}));
            p.setPen(QPen(accent, 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            p.drawLine(QPointF(12, 3), QPointF(12, 15));
            p.drawPolyline(QPolygonF({QPointF(7.5, 10.5), QPointF(12, 15), QPointF(16.5, 10.5)}));
            break;
        case ToolIcon::MidiMute:
            p.drawPolygon(QPolygonF({QPointF(3, 9), QPointF(7, 9), QPointF(12, 5), QPointF(12, 19), QPointF(7, 15), QPointF(3, 15)}));
            p.setPen(QPen(accent, 2.0, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(QPointF(15, 9), QPointF(21, 15));
            p.drawLine(QPointF(21, 9), QPointF(15, 15));
            break;
        case ToolIcon::Run:
            p.setBrush(accent);
            p.setPen(QPen(accent, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            p.drawPolygon(QPolygonF({QPointF(7, 4.5), QPointF(19.5, 12), QPointF(7, 19.5)}));
            break;
    }
}

class LineArtEngine final : public QIconEngine {
public:
    explicit LineArtEngine(ToolIcon which) : which_(which) {}
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const QPalette palette = QApplication::palette();
        QColor ink = palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active, QPalette::WindowText);
        QColor accent = which_ == ToolIcon::MidiMute ? QColor(240, 90, 70) : QColor(90, 200, 130);
        if (which_ == ToolIcon::StoreNew || which_ == ToolIcon::StoreCurrent) accent = QColor(110, 170, 250);
        if (mode == QIcon::Disabled) accent = ink;
        if (state == QIcon::On && which_ == ToolIcon::Run) accent = accent.lighter(130);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 24.0, rect.height() / 24.0);
        draw(*painter, which_, ink, accent);
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }
    // Sharp on HiDPI screens: drawn at the device's pixels, not scaled up.
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override {
        QPixmap pixmap(size * scale);
        pixmap.setDevicePixelRatio(scale);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new LineArtEngine(which_); }

private:
    ToolIcon which_;
};

}  // namespace

QIcon toolIcon(ToolIcon which) { return QIcon(new LineArtEngine(which)); }

}  // namespace quillmer::gui
