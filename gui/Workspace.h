#pragma once
// The workspace of the main window: sixteen pages, one shown at a time, each a scrollable
// canvas on which module panels lie at their positions (twips, 15 to a pixel). A press on
// a panel stays with the panel; a right click on the bare canvas is reported.

#include <QColor>
#include <QSize>
#include <QStackedWidget>
#include <array>

#include "engine/Constants.h"

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

signals:
    void frameResized();
    // A right click on a page where no panel lies, in pixels of that page.
    void emptyRightClicked(int page, QPoint pixel);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::array<QWidget*, kPageCount> canvases_{};
    QColor backColor_;
};

}  // namespace quillmer::gui
