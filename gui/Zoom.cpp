#include "gui/Zoom.h"

#include <QVariant>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "engine/Constants.h"

namespace quillmer::gui {

namespace {
constexpr const char* kZoomProperty = "quillmerZoom";
}

int nearestZoomStep(int percent) {
    int best = kNormalZoom;
    for (int step : kZoomSteps)
        if (std::abs(step - percent) < std::abs(best - percent)) best = step;
    return best;
}

int zoomStep(int percent, int steps) {
    const auto at = std::find(kZoomSteps.begin(), kZoomSteps.end(), nearestZoomStep(percent));
    const long index = std::clamp<long>((at - kZoomSteps.begin()) + steps, 0, static_cast<long>(kZoomSteps.size()) - 1);
    return kZoomSteps[static_cast<size_t>(index)];
}

int zoomedPixels(int twips, int percent) {
    return static_cast<int>(static_cast<long long>(twips) * percent / (kTwipsPerPixel * 100LL));
}

int pixelsToTwips(int pixels, int percent) {
    return static_cast<int>(std::lround(static_cast<double>(pixels) * kTwipsPerPixel * 100.0 / std::max(1, percent)));
}

int zoomedFontPixels(int pixels, int percent) {
    return std::max(1, static_cast<int>(std::lround(pixels * percent / 100.0)));
}

int zoomOf(const QWidget* widget) {
    for (const QWidget* w = widget; w; w = w->parentWidget()) {
        const QVariant zoom = w->property(kZoomProperty);
        if (zoom.isValid()) return zoom.toInt();
    }
    return kNormalZoom;
}

void setZoomOf(QWidget* canvas, int percent) { canvas->setProperty(kZoomProperty, percent); }

}  // namespace quillmer::gui
