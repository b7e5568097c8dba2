#include "gui/ConnectionView.h"

#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "engine/Engine.h"
#include "gui/PanelBoard.h"
#include "gui/Zoom.h"
#include "gui/panels/PanelFrame.h"

namespace quillmer::gui {

namespace {
const QColor kLine(90, 170, 240, 150);
const QColor kLit(255, 208, 40);
const QColor kDim(110, 120, 135, 90);
}  // namespace

std::vector<Link> readLinks(Engine& engine, int page) {
    std::unordered_map<BusId, const Module*> owners;
    engine.forEachModule([&](Module& m) {
        if (m.info().hasOutput()) owners[m.OutBus] = &m;
    });
    std::vector<Link> links;
    engine.forEachModule([&](Module& m) {
        if (m.Page != page) return;
        for (int row = 0; row < m.inputCount(); ++row) {
            const auto found = owners.find(m.InputBus[static_cast<size_t>(m.menuInput(row))]);
            if (found == owners.end()) continue;
            links.push_back({QString::fromStdString(found->second->Name), found->second->Page,
                             QString::fromStdString(m.Name), row});
        }
    });
    return links;
}

ConnectionView::ConnectionView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("connectionView"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
}

void ConnectionView::showLinks(const std::vector<Link>& links, const PanelBoard& panels, QWidget* canvas) {
    if (parentWidget() != canvas) {
        setParent(canvas);
        show();
    }
    if (geometry() != canvas->rect()) setGeometry(canvas->rect());
    raise();
    std::vector<Segment> next;
    for (const Link& link : links) {
        PanelFrame* target = panels.frame(link.target);
        if (!target || target->parentWidget() != canvas || link.row >= target->inputRows()) continue;
        const QPushButton* button = target->inputButton(link.row);
        const QPoint in = button->mapTo(canvas, QPoint(0, button->height() / 2));
        PanelFrame* source = panels.frame(link.source);
        if (source && source->parentWidget() == canvas && source->isVisible()) {
            const QRect r = source->geometry();
            next.push_back({QLine(QPoint(r.right(), r.top() + zoomedFontPixels(10, zoomOf(canvas))), in), link, false});
        } else {
            next.push_back({QLine(QPoint(0, in.y()), in), link, true});
        }
    }
    const bool same = next.size() == segments_.size() &&
                      std::equal(next.begin(), next.end(), segments_.begin(), [](const Segment& a, const Segment& b) {
                          return a.line == b.line && a.link == b.link && a.offPage == b.offPage;
                      });
    links_ = links;
    if (same) return;
    segments_ = std::move(next);
    update();
}

void ConnectionView::setHovered(const QString& module, int row) {
    if (module == hovered_ && row == hoveredRow_) return;
    hovered_ = module;
    hoveredRow_ = row;
    update();
}

bool ConnectionView::touchesHovered(const Segment& s) const {
    if (hovered_.isEmpty()) return false;
    if (s.link.target == hovered_) return hoveredRow_ < 0 || hoveredRow_ == s.link.row;
    return s.link.source == hovered_ && hoveredRow_ < 0;
}

QStringList ConnectionView::highlighted() const {
    QStringList names;
    if (hovered_.isEmpty()) return names;
    for (const Link& link : links_) {
        QString other;
        if (link.target == hovered_ && (hoveredRow_ < 0 || hoveredRow_ == link.row))
            other = link.source;
        else if (link.source == hovered_ && hoveredRow_ < 0)
            other = link.target;
        if (!other.isEmpty() && !names.contains(other)) names << other;
    }
    return names;
}

void ConnectionView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const bool anyHovered = !hovered_.isEmpty();
    for (const Segment& s : segments_) {
        const bool lit = touchesHovered(s);
        QPen pen(lit ? kLit : anyHovered ? kDim : kLine, lit ? 2.5 : 1.5);
        if (s.offPage) pen.setStyle(Qt::DashLine);
        p.setPen(pen);
        const QPointF a = s.line.p1(), b = s.line.p2();
        QPainterPath path(a);
        const qreal bend = std::max<qreal>(30, std::abs(b.x() - a.x()) / 2);
        path.cubicTo(a + QPointF(bend, 0), b - QPointF(bend, 0), b);
        p.drawPath(path);
        p.setBrush(pen.color());
        p.drawEllipse(b, 2.5, 2.5);
        p.setBrush(Qt::NoBrush);
        if (s.offPage) {
            p.setPen(lit ? kLit : kLine);
            p.drawText(QPointF(2, a.y() - 3), s.link.source + QStringLiteral(" (page %1)").arg(s.link.sourcePage + 1));
        }
    }
}

}  // namespace quillmer::gui
