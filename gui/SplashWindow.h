#pragma once
// The window shown while the program starts: 466 pixels wide, no caption, centred on the
// screen, drawn by the program itself.

#include <QWidget>

namespace quillmer::gui {

class SplashWindow : public QWidget {
public:
    explicit SplashWindow(const QString& version);
    static constexpr int kWidth = 466;
    static constexpr int kHeight = 200;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString version_;
};

}  // namespace quillmer::gui
