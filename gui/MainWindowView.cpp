// The main window's View menu: the connection lines over the shown page and the zoom of the
// workspace.

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

#include "gui/ConnectionView.h"
#include "gui/MainWindow.h"
#include "gui/PanelBoard.h"
#include "gui/ProgramSettings.h"
#include "gui/Workspace.h"
#include "gui/panels/PanelFrame.h"
#include "shell/Session.h"

namespace quillmer::gui {

void MainWindow::buildViewMenu() {
    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    view->setObjectName(QStringLiteral("mnuView"));
    QAction* links = view->addAction(QStringLiteral("Show &Connections"));
    links->setObjectName(QStringLiteral("mnuViewLinks"));
    links->setCheckable(true);
    links->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    links->setToolTip(QStringLiteral("Draw the links between the panels of the page on show"));
    connections_ = new ConnectionView(workspace_);
    connections_->hide();
    connect(links, &QAction::toggled, this, [this](bool on) {
        connections_->setVisible(on);
        refreshConnections();
    });
    buildZoomEntries(view);
}

void MainWindow::buildZoomEntries(QMenu* view) {
    view->addSeparator();
    zoomShown_ = view->addAction(QString());
    zoomShown_->setObjectName(QStringLiteral("mnuViewZoomShown"));
    zoomShown_->setEnabled(false);
    const auto add = [this, view](const char* key, const char* caption, QList<QKeySequence> keys, auto slot) {
        QAction* a = view->addAction(QLatin1String(caption));
        a->setObjectName(QLatin1String(key));
        a->setShortcuts(keys);
        connect(a, &QAction::triggered, this, slot);
    };
    add("mnuViewZoomIn", "Zoom &In", {QKeySequence(Qt::CTRL | Qt::Key_Equal), QKeySequence::ZoomIn},
        [this] { workspace_->zoomBy(1); });
    add("mnuViewZoomOut", "Zoom &Out", {QKeySequence(Qt::CTRL | Qt::Key_Minus)},
        [this] { workspace_->zoomBy(-1); });
    add("mnuViewZoomReset", "&Actual Size", {QKeySequence(Qt::CTRL | Qt::Key_0)}, [this] { workspace_->setZoom(kNormalZoom); });
    connect(workspace_, &Workspace::zoomChanged, this, &MainWindow::zoomChanged);
    showZoom();
}

void MainWindow::zoomChanged(int percent) {
    settings_.zoom = percent;
    panels_->remakeFrames();
    refreshConnections();
    showZoom();
}

void MainWindow::showZoom() {
    zoomShown_->setText(QStringLiteral("Zoom: %1 %").arg(workspace_->zoom()));
    const int zoom = workspace_->zoom();
    action(QStringLiteral("mnuViewZoomIn"))->setEnabled(zoom < kZoomSteps.back());
    action(QStringLiteral("mnuViewZoomOut"))->setEnabled(zoom > kZoomSteps.front());
    action(QStringLiteral("mnuViewZoomReset"))->setEnabled(zoom != kNormalZoom);
}

void MainWindow::refreshConnections() {
    if (!connections_ || !action(QStringLiteral("mnuViewLinks"))->isChecked()) return;
    std::vector<Link> links;
    int page = 0;
    {
        auto held = session_.engine.lock();
        page = session_.engine.CurrentPage();
        links = readLinks(session_.engine, page);
    }
    connections_->showLinks(links, *panels_, workspace_->canvas(page));
    connections_->show();
    // What the pointer is on: an input button, or anywhere else on a panel.
    QString module;
    int row = -1;
    for (QWidget* w = QApplication::widgetAt(QCursor::pos()); w; w = w->parentWidget()) {
        if (auto* frame = qobject_cast<PanelFrame*>(w)) {
            module = frame->objectName().mid(6);  // "panel:" and the name
            for (int r = 0; r < frame->inputRows() && row < 0; ++r) {
                const QPushButton* button = frame->inputButton(r);
                if (button->rect().contains(button->mapFromGlobal(QCursor::pos()))) row = r;
            }
            break;
        }
    }
    connections_->setHovered(module, row);
}

}  // namespace quillmer::gui
