#include "gui/ConnectPopup.h"

#include <QListWidget>
#include <QScreen>
#include <QStyle>
#include <algorithm>
#include <QVBoxLayout>

namespace quillmer::gui {

QPoint connectPopupPlace(const QRect& panel, const QRect& mainWindow, QSize popup, const QRect& screen) {
    QPoint at(panel.right() + 1, panel.top());
    if (at.x() + popup.width() > screen.right() + 1) at.setX(mainWindow.left() + mainWindow.width() / 4);
    if (at.y() + popup.height() > screen.bottom() + 1) at.setY(mainWindow.top() + mainWindow.height() / 2);
    at.setX(std::max(screen.left(), std::min(at.x(), screen.right() + 1 - popup.width())));
    at.setY(std::max(screen.top(), std::min(at.y(), screen.bottom() + 1 - popup.height())));
    return at;
}

ConnectLayout connectLayout(int count, QSize cell, QSize room) {
    ConnectLayout layout;
    const int cellHeight = std::max(1, cell.height()), cellWidth = std::max(1, cell.width());
    layout.rows = std::clamp(room.height() / cellHeight, 1, kConnectRows);
    layout.columns = count / layout.rows + 1;
    int width = layout.columns * cellWidth;
    const int roomWidth = std::max(cellWidth, room.width() - room.width() % cellWidth);
    if (width > roomWidth) {
        width = roomWidth;
        layout.scrolls = true;
    }
    layout.size = QSize(width, layout.rows * cellHeight);
    return layout;
}

ConnectPopup::ConnectPopup(QWidget* parent) : QDialog(parent, Qt::Tool), list_(new QListWidget(this)) {
    setObjectName(QStringLiteral("bxc"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    column->addWidget(list_);
    list_->setObjectName(QStringLiteral("List1"));
    list_->setFlow(QListView::TopToBottom);
    list_->setWrapping(true);
    list_->setResizeMode(QListView::Adjust);
    list_->setUniformItemSizes(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QFont small = list_->font();
    small.setPixelSize(11);
    list_->setFont(small);
    // A click chooses, and so does Enter on the selected name.
    const auto choose = [this](QListWidgetItem* item) {
        if (!isVisible()) return;  // the click of a double click already chose
        const int position = list_->row(item);
        hide();
        emit chosen(position, item->text());
    };
    connect(list_, &QListWidget::itemClicked, this, choose);
    connect(list_, &QListWidget::itemActivated, this, choose);
}

void ConnectPopup::popUp(const QString& title, const QStringList& names, int position, const QRect& panel,
                         const QRect& mainWindow) {
    setWindowTitle(title);
    if (list_->count() != names.size() || [&] {
            for (int i = 0; i < names.size(); ++i)
                if (list_->item(i)->text() != names[i]) return true;
            return false;
        }()) {
        list_->clear();
        list_->addItems(names);
    }
    int widest = 0;
    for (const QString& name : names) widest = std::max(widest, list_->fontMetrics().horizontalAdvance(name));
    const QSize cell(widest + 14, list_->fontMetrics().height() + 3);
    list_->setGridSize(cell);
    const QScreen* screen = parentWidget() ? parentWidget()->screen() : nullptr;
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1920, 1080);
    // The window's title bar and edges, and a scroll bar's height, take some of the screen.
    const int frame = 2 * list_->frameWidth() + 2;
    const int scrollBar = list_->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    const ConnectLayout layout = connectLayout(static_cast<int>(names.size()), cell,
                                               area.size() - QSize(frame + 24, frame + scrollBar + 64));
    columns_ = layout.columns;
    list_->setHorizontalScrollBarPolicy(layout.scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    list_->setFixedSize(layout.size.width() + frame, layout.size.height() + frame + (layout.scrolls ? scrollBar : 0));
    adjustSize();
    if (position >= 0 && position < list_->count()) {
        list_->setCurrentRow(position);
        list_->scrollToItem(list_->item(position));
    }
    move(connectPopupPlace(panel, mainWindow, frameGeometry().size(), area));
    open();
}

}  // namespace quillmer::gui
