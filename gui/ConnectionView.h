#pragma once
// The links between the panels of the shown page, drawn over the page: from a source
// panel's output to each input button it feeds, and from an input fed from another page to
// the page's left edge, named. Hovering a panel or an input button brings out its sources
// and listeners. The view only draws; what is linked is read under the engine lock.

#include <QLine>
#include <QString>
#include <QStringList>
#include <QWidget>
#include <vector>

namespace quillmer {
class Engine;
}

namespace quillmer::gui {

class PanelBoard;

// One input fed by a module's output.
struct Link {
    QString source;      // the feeding module
    int sourcePage = 0;
    QString target;      // the module whose input it is
    int row = 0;         // the input's button row on the target's panel
    bool operator==(const Link&) const = default;
};

// Every link into the modules on `page` (lock held). Constants and the system outputs are
// not modules and have no line.
std::vector<Link> readLinks(Engine& engine, int page);

class ConnectionView : public QWidget {
    Q_OBJECT
public:
    struct Segment {
        QLine line;
        Link link;
        bool offPage = false;  // drawn to the page edge
    };

    explicit ConnectionView(QWidget* parent = nullptr);

    // Lays the lines over `canvas` (the shown page) from the panels' places.
    void showLinks(const std::vector<Link>& links, const PanelBoard& panels, QWidget* canvas);
    const std::vector<Segment>& segments() const { return segments_; }
    // The module (and input row, or -1 for the whole panel) under the pointer; empty for none.
    void setHovered(const QString& module, int row = -1);
    // The sources and listeners of what is hovered.
    QStringList highlighted() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool touchesHovered(const Segment& s) const;

    std::vector<Link> links_;
    std::vector<Segment> segments_;
    QString hovered_;
    int hoveredRow_ = -1;
};

}  // namespace quillmer::gui
