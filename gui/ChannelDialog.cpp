#include "gui/ChannelDialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>

#include "engine/MidiPorts.h"

namespace quillmer::gui {

ChannelDialog::ChannelDialog(QWidget* parent) : QDialog(parent, Qt::Tool) {
    setObjectName(QStringLiteral("fChannel"));
    auto* grid = new QGridLayout(this);
    grid->setSpacing(2);
    for (int port = 0; port < kPortCount; ++port) {
        auto* head = new QLabel(QStringLiteral("Port %1").arg(QChar(u'A' + port)), this);
        head->setAlignment(Qt::AlignCenter);
        grid->addWidget(head, 0, port);
    }
    for (int slot = 0; slot < kPortCount * 16; ++slot) {
        auto* button = new QPushButton(QString::fromStdString(channelSlotCaption(slot)), this);
        button->setObjectName(QStringLiteral("slot%1").arg(slot));
        button->setCheckable(true);
        button->setAutoDefault(false);
        grid->addWidget(button, 1 + slot % 16, slot / 16);
        connect(button, &QPushButton::clicked, this, [this, slot] {
            accept();
            emit chosen(slot);
        });
        buttons_.push_back(button);
    }
}

void ChannelDialog::ask(const QString& title, int chanPort, QPoint at) {
    setWindowTitle(title);
    for (size_t slot = 0; slot < buttons_.size(); ++slot) buttons_[slot]->setChecked(static_cast<int>(slot) == chanPort);
    adjustSize();
    const QScreen* screen = parentWidget() ? parentWidget()->screen() : nullptr;
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1920, 1080);
    at.setX(std::max(area.left(), std::min(at.x(), area.right() + 1 - width())));
    at.setY(std::max(area.top(), std::min(at.y(), area.bottom() + 1 - height())));
    move(at);
    open();
}

}  // namespace quillmer::gui
