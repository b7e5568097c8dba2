#pragma once
// The workspace of the main window: sixteen pages, one shown at a time, each a scrollable
// canvas on which module panels lie at their positions (twips, 15 to a pixel). A press on
// a panel stays with the panel; a right click on the bare canvas is reported. The pages are
// drawn at one zoom: Ctrl and the wheel anywhere over the workspace step it.

#include <QColor>
#include <QSize>
#include <QStackedWidget>
#include <array>
#include <optional>

#include "engine/Constants.h"
#include "gui/Zoom.h"

namespace quillmer::gui {

class Workspace : public QStackedWidget {
    Q_OBJECT
public:
    explicit Workspace(QWidget* parent = nullptr);

    void showPage(int page);
    int page() const { return currentIndex(); }
    // The canvas of a page, parent of its panels.
    QWidget* canvas(int page) const { return canvases_[static_cast<size_t>(page)]; }
    void setBackColor(QColor color);
    QColor backColor() const { return backColor_; }
    // The visible part of a page in twips: what the engine calls the frame.
    QSize frameTwips() const;

    int zoom() const { return zoom_; }  // percent
    // Draws the pages at `percent` (snapped to a step). The twip under `anchor`, a point of
    // the shown page's visible area, stays under it; without one the top-left corner stays.
    void setZoom(int percent, std::optional<QPoint> anchor = std::nullopt);
    void zoomBy(int steps, std::optional<QPoint> anchor = std::nullopt) { setZoom(zoomStep(zoom_, steps), anchor); }
    // Scrolls the shown page so that `panel`, one of its panels, is in view.
    void bringIntoView(QWidget* panel);
    // Places on a page at the zoom.
    int toPixels(int twips) const;
    int toTwips(int pixels) const;

signals:
    void frameResized();
    // A right click on a page where no panel lies, in pixels of that page.
    void emptyRightClicked(int page, QPoint pixel);
    // The pages are drawn at a new zoom: the panels are to be made again.
    void zoomChanged(int percent);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool wheelZooms(QObject* watched, QEvent* event);

    std::array<QWidget*, kPageCount> canvases_{};
    QColor backColor_;
    int zoom_ = kNormalZoom;
    int wheelRest_ = 0;  // eighths of a degree short of a step
};

}  // namespace quillmer::gui
