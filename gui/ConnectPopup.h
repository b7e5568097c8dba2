#pragma once
// bxc, the connection list: every output name in sorted order, in columns of 24 rows,
// titled "Connect: " with the module and the input. A click on a name chooses it and closes
// the list; Escape closes it without a choice. Window-modal, without a nested event loop.

#include <QDialog>
#include <QSize>
#include <QStringList>

class QListWidget;

namespace quillmer::gui {

constexpr int kConnectRows = 24;

// How the list is laid out in `room` pixels: columns of 24 rows, or of as many as the room's
// height takes on a short screen; the columns for the names; the list's size, no wider than
// the room, which then scrolls sideways.
struct ConnectLayout {
    int rows = kConnectRows;
    int columns = 1;
    QSize size;
    bool scrolls = false;
};
ConnectLayout connectLayout(int count, QSize cell, QSize room);

// Where the list opens: right of the panel at its top. When that leaves the screen to the
// right, a quarter of the main window's width from its left; to the bottom, half its height
// from its top. Whatever still sticks out is then pulled back inside.
QPoint connectPopupPlace(const QRect& panel, const QRect& mainWindow, QSize popup, const QRect& screen);

class ConnectPopup : public QDialog {
    Q_OBJECT
public:
    explicit ConnectPopup(QWidget* parent);

    // Shows the names with `position` selected, at the panel's side.
    void popUp(const QString& title, const QStringList& names, int position, const QRect& panel, const QRect& mainWindow);
    QListWidget* list() const { return list_; }
    int columns() const { return columns_; }

signals:
    void chosen(int position, const QString& name);

private:
    QListWidget* list_;
    int columns_ = 1;
};

}  // namespace quillmer::gui
