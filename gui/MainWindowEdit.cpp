// The main window's editing: the Edit menu with undo and redo, the module palette beside the
// menus, placing modules, and the first window's fit to the screen.

#include <QAction>
#include <QCursor>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <tuple>

#include "gui/MainWindow.h"
#include "gui/ModulePalette.h"
#include "gui/PanelBoard.h"
#include "gui/StripBar.h"
#include "gui/UserDialogs.h"
#include "gui/Workspace.h"
#include "engine/Placement.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
// The strip in a row that scrolls sideways when the window is narrower than the strip (a
// small screen, large scaling), and is as high as the strip otherwise.
class StripRow final : public QScrollArea {
public:
    explicit StripRow(QWidget* strip, QWidget* parent) : QScrollArea(parent) {
        setObjectName(QStringLiteral("stripRow"));
        setFrameShape(QFrame::NoFrame);
        setWidgetResizable(true);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setWidget(strip);
        fitHeight();
    }
    QSize minimumSizeHint() const override { return {0, height()}; }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        fitHeight();
    }

private:
    void fitHeight() {
        const bool scrolls = widget()->minimumSizeHint().width() > width();
        const int wanted = widget()->sizeHint().height() + (scrolls ? horizontalScrollBar()->sizeHint().height() : 0);
        if (height() != wanted) setFixedHeight(wanted);
    }
};
}  // namespace

QWidget* MainWindow::stripRow(QWidget* parent) { return new StripRow(strip_, parent); }

void MainWindow::buildEditMenu() {
    QMenu* edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    edit->setObjectName(QStringLiteral("mnuEdit"));
    undoAction_ = edit->addAction(QStringLiteral("&Undo"));
    undoAction_->setObjectName(QStringLiteral("mnuEditUndo"));
    undoAction_->setShortcut(QKeySequence::Undo);
    connect(undoAction_, &QAction::triggered, this, &MainWindow::undoEdit);
    redoAction_ = edit->addAction(QStringLiteral("&Redo"));
    redoAction_->setObjectName(QStringLiteral("mnuEditRedo"));
    redoAction_->setShortcuts({QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
    connect(redoAction_, &QAction::triggered, this, &MainWindow::redoEdit);
    edit->addSeparator();
    QAction* find = edit->addAction(QStringLiteral("&Find Module..."));
    find->setObjectName(QStringLiteral("mnuEditFind"));
    find->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_K));

    palette_ = new ModulePalette(session_.engine.registry(), menuBar());
    menuBar()->setCornerWidget(palette_, Qt::TopRightCorner);
    connect(palette_, &ModulePalette::moduleChosen, this, &MainWindow::placeModuleAtCursor);
    connect(find, &QAction::triggered, this, [this] {
        palette_->setFocus(Qt::ShortcutFocusReason);
        palette_->selectAll();
    });
    updateEditActions();
}

void MainWindow::updateEditActions() {
    if (!undoAction_) return;
    QString undoText, redoText;
    {
        auto held = session_.engine.lock();
        undoText = QString::fromStdString(session_.history.undoLabel());
        redoText = QString::fromStdString(session_.history.redoLabel());
    }
    const auto show = [](QAction* a, const QString& verb, const QString& what) {
        a->setEnabled(!what.isEmpty());
        const QString wanted = what.isEmpty() ? verb : verb + QLatin1Char(' ') + what;
        if (a->text() != wanted) a->setText(wanted);
    };
    show(undoAction_, QStringLiteral("&Undo"), undoText);
    show(redoAction_, QStringLiteral("&Redo"), redoText);
}

void MainWindow::undoEdit() {
    std::string error;
    bool failed = false;
    {
        auto held = session_.engine.lock();
        failed = session_.history.canUndo() && !session_.history.undo(error);
    }
    if (failed) dialogs_.critical(QStringLiteral("Quillmer"), QString::fromStdString(error));
    refresh();
}

void MainWindow::redoEdit() {
    std::string error;
    bool failed = false;
    {
        auto held = session_.engine.lock();
        failed = session_.history.canRedo() && !session_.history.redo(error);
    }
    if (failed) dialogs_.critical(QStringLiteral("Quillmer"), QString::fromStdString(error));
    refresh();
}

void MainWindow::placeModuleAtCursor(ModuleTypeId type) {
    int page = 0;
    {
        auto held = session_.engine.lock();
        page = session_.engine.CurrentPage();
    }
    QWidget* canvas = workspace_->canvas(page);
    const QPoint pixel = canvas->mapFromGlobal(QCursor::pos());
    const bool over = workspace_->rect().contains(workspace_->mapFromGlobal(QCursor::pos())) && pixel.x() >= 0 && pixel.y() >= 0;
    placeModuleAt(type, over ? std::optional<QPoint>(pixel) : std::nullopt);
}

void MainWindow::placeModuleAt(ModuleTypeId type, std::optional<QPoint> pixel) {
    const QSize size = panelSizeTwips(session_.engine.registry(), type);
    QString refused;
    {
        auto held = session_.engine.lock();
        Engine& e = session_.engine;
        int top = 0, left = 0;
        if (pixel) {
            top = workspace_->toTwips(pixel->y());
            left = workspace_->toTwips(pixel->x());
        } else {
            std::tie(top, left) = freeSpot(readPlacedModules(e), e.CurrentPage(), e.frameWidth, size);
        }
        try {
            quillmer::placeModule(session_, type, e.CurrentPage(), top, left);
        } catch (const PlacementError& error) {
            refused = QString::fromStdString(error.what());
        }
    }
    if (!refused.isEmpty()) dialogs_.critical(QStringLiteral("Quillmer"), refused);
    refresh();
}

void MainWindow::fitToScreen() {
    const QScreen* where = screen();
    if (!where) return;
    const QRect room = where->availableGeometry();
    // The frame's own border and title come on top of the client size.
    const QSize frame = frameGeometry().size() - geometry().size();
    const QSize most = room.size() - frame;
    const QSize wanted = size().boundedTo(most).expandedTo(minimumSizeHint().boundedTo(most));
    if (wanted != size()) resize(wanted);
    QPoint at = pos();
    at.setX(std::clamp(at.x(), room.left(), std::max(room.left(), room.right() - frameGeometry().width() + 1)));
    at.setY(std::clamp(at.y(), room.top(), std::max(room.top(), room.bottom() - frameGeometry().height() + 1)));
    if (at != pos()) move(at);
}

}  // namespace quillmer::gui
