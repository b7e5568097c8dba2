#include "gui/PlaceholderPanels.h"

#include <QLabel>
#include <QRect>

#include "engine/Engine.h"
#include "gui/Workspace.h"

namespace quillmer::gui {

namespace {
constexpr int kSpacingTwips = 120;  // one snap-grid step between stand-ins
constexpr int kDefaultWidth = 1800;
constexpr int kDefaultHeight = 1200;

QRect pixelRect(const PlacedModule& m) {
    return {m.left / kTwipsPerPixel, m.top / kTwipsPerPixel, std::max(m.width, 600) / kTwipsPerPixel,
            std::max(m.height, 450) / kTwipsPerPixel};
}
}  // namespace

std::vector<PlacedModule> readPlacedModules(Engine& engine) {
    std::vector<PlacedModule> placed;
    engine.forEachModule([&](Module& m) {
        PlacedModule p;
        p.type = m.type();
        p.index = m.Index;
        p.name = QString::fromStdString(m.Name);
        p.caption = QString::fromUtf8(m.info().caption.data(), static_cast<qsizetype>(m.info().caption.size()));
        p.page = m.Page;
        p.top = m.Top;
        p.left = m.Left;
        p.width = m.Width;
        p.height = m.Height;
        p.enabled = m.Enabled != 0;
        p.placeholder = m.isPlaceholder();
        placed.push_back(std::move(p));
    });
    return placed;
}

std::pair<int, int> freeSpot(const std::vector<PlacedModule>& placed, int page, int frameWidth) {
    const int cellWidth = kDefaultWidth + kSpacingTwips;
    const int cellHeight = kDefaultHeight + kSpacingTwips;
    const int columns = std::max(1, (frameWidth - kSpacingTwips) / cellWidth);
    for (int cell = 0;; ++cell) {
        const QRect wanted(kSpacingTwips + cell % columns * cellWidth, kSpacingTwips + cell / columns * cellHeight,
                           kDefaultWidth, kDefaultHeight);
        bool taken = false;
        for (const PlacedModule& m : placed)
            if (m.page == page && wanted.intersects(QRect(m.left, m.top, m.width, m.height))) taken = true;
        if (!taken) return {wanted.top(), wanted.left()};
    }
}

PlaceholderPanels::~PlaceholderPanels() = default;  // the canvases own the frames

void PlaceholderPanels::sync(const std::vector<PlacedModule>& placed) {
    if (placed == shown_) return;
    for (QLabel* frame : frames_) delete frame;
    frames_.clear();
    for (const PlacedModule& m : placed) {
        if (m.page < 0 || m.page >= kPageCount) continue;
        auto* frame = new QLabel(workspace_.canvas(m.page));
        frame->setObjectName(QStringLiteral("panel:") + m.name);
        frame->setFrameShape(QFrame::Box);
        frame->setAlignment(Qt::AlignCenter);
        frame->setWordWrap(true);
        frame->setText(QStringLiteral("<b>%1</b><br>%2").arg(m.name.toHtmlEscaped(), m.caption.toHtmlEscaped()));
        frame->setToolTip(m.placeholder ? QString::fromUtf8(Module::kPlaceholderNote.data(),
                                                             static_cast<qsizetype>(Module::kPlaceholderNote.size()))
                                        : m.caption);
        frame->setProperty("placeholder", m.placeholder);
        frame->setProperty("moduleDisabled", !m.enabled);
        frame->setGeometry(pixelRect(m));
        frame->show();
        frames_.push_back(frame);
    }
    shown_ = placed;
}

}  // namespace quillmer::gui
