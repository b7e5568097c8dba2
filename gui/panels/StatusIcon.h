#pragma once
// iControl, the status icon of a panel: the update pass the module runs in (pictures 1 to 7,
// by option index) or picture 9 while it is disabled. Drawn as vector art, sharp at any
// scale; a click opens the status dialog.

#include <QWidget>

namespace quillmer::gui {

class StatusIcon : public QWidget {
    Q_OBJECT
public:
    explicit StatusIcon(QWidget* parent = nullptr);

    void setPicture(int picture);  // 1..7, or 9
    int picture() const { return picture_; }

signals:
    void clicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    int picture_ = 2;
};

}  // namespace quillmer::gui
