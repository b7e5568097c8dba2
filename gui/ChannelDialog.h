#pragma once
// The channel dialog of the sending modules: the 64 channel slots "1 A" to "16D", one
// column per output port. A click chooses and closes.

#include <QDialog>
#include <vector>

class QPushButton;

namespace quillmer::gui {

class ChannelDialog : public QDialog {
    Q_OBJECT
public:
    explicit ChannelDialog(QWidget* parent);

    void ask(const QString& title, int chanPort, QPoint at);
    QPushButton* slotButton(int slot) const { return buttons_.at(static_cast<size_t>(slot)); }

signals:
    void chosen(int chanPort);

private:
    std::vector<QPushButton*> buttons_;
};

}  // namespace quillmer::gui
