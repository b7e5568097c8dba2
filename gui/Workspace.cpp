#include "gui/Workspace.h"

#include <QMouseEvent>
#include <QScrollArea>

namespace quillmer::gui {

namespace {
// A page is larger than most screens; the scroll bars reach the rest.
constexpr int kCanvasWidth = 2400;
constexpr int kCanvasHeight = 1600;
}  // namespace

Workspace::Workspace(QWidget* parent) : QStackedWidget(parent) {
    setObjectName(QStringLiteral("workspace"));
    for (int page = 0; page < kPageCount; ++page) {
        auto* scroll = new QScrollArea(this);
        scroll->setFrameShape(QFrame::NoFrame);
        auto* canvas = new QWidget;
        canvas->setObjectName(QStringLiteral("page%1").arg(page));
        canvas->setFixedSize(kCanvasWidth, kCanvasHeight);
        canvas->setAutoFillBackground(true);
        canvas->installEventFilter(this);
        scroll->setWidget(canvas);
        canvases_[static_cast<size_t>(page)] = canvas;
        addWidget(scroll);
    }
    setBackColor(QColor(0x23, 0x27, 0x2e));
}

void Workspace::showPage(int page) {
    if (page >= 0 && page < kPageCount && page != currentIndex()) setCurrentIndex(page);
}

void Workspace::setBackColor(QColor color) {
    backColor_ = color;
    for (QWidget* canvas : canvases_) {
        QPalette palette = canvas->palette();
        palette.setColor(QPalette::Window, color);
        canvas->setPalette(palette);
    }
}

QSize Workspace::frameTwips() const {
    const auto* scroll = static_cast<const QScrollArea*>(currentWidget());
    const QSize pixels = scroll ? scroll->viewport()->size() : size();
    return {pixels.width() * kTwipsPerPixel, pixels.height() * kTwipsPerPixel};
}

bool Workspace::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress) {
        auto* press = static_cast<QMouseEvent*>(event);
        for (int page = 0; page < kPageCount; ++page) {
            if (canvases_[static_cast<size_t>(page)] != watched || press->button() != Qt::RightButton) continue;
            emit emptyRightClicked(page, press->position().toPoint());
            return true;
        }
    }
    return QStackedWidget::eventFilter(watched, event);
}

void Workspace::resizeEvent(QResizeEvent* event) {
    QStackedWidget::resizeEvent(event);
    emit frameResized();
}

}  // namespace quillmer::gui
