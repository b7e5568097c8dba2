#pragma once
// The picture of Keybd's two octaves: draws the keys, the held one marked, and passes the
// mouse on as fractions of its size. Which key lies where is the module's to say.

#include <QWidget>
#include <functional>

namespace quillmer::gui {

class KeyboardPicture : public QWidget {
public:
    enum class Press { Down, Drag, Up };
    explicit KeyboardPicture(QWidget* parent);
    // x and y from 0 to 1 over the picture.
    std::function<void(Press, double x, double y)> onMouse;
    void setHeld(int key);  // 0..23, -1 none
    int held() const { return held_; }
    QSize sizeHint() const override { return {224, 56}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void tell(Press press, QPointF at);
    int held_ = -1;
};

}  // namespace quillmer::gui
