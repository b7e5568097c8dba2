#pragma once
// The zoom of the workspace, in percent. Modules keep their places and sizes in twips (15 to
// a pixel at 100 %); only the drawing scales. The zoom of a page is kept on its canvas, so
// a panel and the views inside it find theirs through their parents; off the workspace
// everything is drawn at 100 %.

#include <array>

class QWidget;

namespace quillmer::gui {

inline constexpr std::array<int, 10> kZoomSteps{50, 67, 75, 90, 100, 110, 125, 150, 175, 200};
inline constexpr int kNormalZoom = 100;

// The step nearest to `percent` (a value read from the settings, say).
int nearestZoomStep(int percent);
// `steps` steps in (positive) or out (negative) from `percent`, held within the steps.
int zoomStep(int percent, int steps);

// Twips to pixels at a zoom, cut toward zero as the 100 % layout always was.
int zoomedPixels(int twips, int percent);
// Pixels at a zoom back to twips, rounded to the nearest twip.
int pixelsToTwips(int pixels, int percent);
// A font size or a line at 100 % in pixels, at the zoom; never below 1.
int zoomedFontPixels(int pixels, int percent);

// The zoom `widget` is drawn at: that of the first parent that carries one.
int zoomOf(const QWidget* widget);
void setZoomOf(QWidget* canvas, int percent);
inline double zoomFactorOf(const QWidget* widget) { return zoomOf(widget) / 100.0; }

}  // namespace quillmer::gui
