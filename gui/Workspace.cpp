#include "gui/Workspace.h"

#include <QApplication>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>
#include <cmath>

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
        setZoomOf(canvas, zoom_);
        canvas->setAutoFillBackground(true);
        canvas->installEventFilter(this);
        scroll->setWidget(canvas);
        canvases_[static_cast<size_t>(page)] = canvas;
        addWidget(scroll);
    }
    setBackColor(QColor(0x23, 0x27, 0x2e));
    // Ctrl and the wheel zoom wherever the pointer is on the workspace, also over a control
    // that takes the wheel itself.
    qApp->installEventFilter(this);
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
    return {toTwips(pixels.width()), toTwips(pixels.height())};
}

void Workspace::bringIntoView(QWidget* panel) {
    auto* scroll = static_cast<QScrollArea*>(currentWidget());
    if (panel && scroll && panel->parentWidget() == scroll->widget()) scroll->ensureWidgetVisible(panel);
}

int Workspace::toPixels(int twips) const { return zoomedPixels(twips, zoom_); }
int Workspace::toTwips(int pixels) const { return pixelsToTwips(pixels, zoom_); }

void Workspace::setZoom(int percent, std::optional<QPoint> anchor) {
    percent = nearestZoomStep(percent);
    if (percent == zoom_) return;
    const int was = zoom_;
    zoom_ = percent;
    const auto rescale = [was, percent](int pixels) {
        return static_cast<int>(std::lround(static_cast<double>(pixels) * percent / was));
    };
    for (int page = 0; page < kPageCount; ++page) {
        QWidget* canvas = canvases_[static_cast<size_t>(page)];
        auto* scroll = static_cast<QScrollArea*>(widget(page));
        const QPoint at = page == currentIndex() && anchor ? *anchor : QPoint();
        const QPoint seen(scroll->horizontalScrollBar()->value() + at.x(), scroll->verticalScrollBar()->value() + at.y());
        setZoomOf(canvas, percent);
        canvas->setFixedSize(kCanvasWidth * percent / kNormalZoom, kCanvasHeight * percent / kNormalZoom);
        scroll->horizontalScrollBar()->setValue(rescale(seen.x()) - at.x());
        scroll->verticalScrollBar()->setValue(rescale(seen.y()) - at.y());
    }
    emit zoomChanged(percent);
    emit frameResized();
}

bool Workspace::wheelZooms(QObject* watched, QEvent* event) {
    auto* wheel = static_cast<QWheelEvent*>(event);
    if (!(wheel->modifiers() & Qt::ControlModifier)) return false;
    auto* target = qobject_cast<QWidget*>(watched);
    if (!target || !(target == this || isAncestorOf(target))) return false;
    const QPoint delta = wheel->angleDelta();
    wheelRest_ += delta.y() != 0 ? delta.y() : delta.x();
    const int steps = wheelRest_ / 120;
    wheelRest_ %= 120;
    if (steps != 0) {
        const QWidget* view = static_cast<const QScrollArea*>(currentWidget())->viewport();
        zoomBy(steps, view->mapFromGlobal(wheel->globalPosition().toPoint()));
    }
    return true;
}

bool Workspace::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Wheel) return wheelZooms(watched, event) || QStackedWidget::eventFilter(watched, event);
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
