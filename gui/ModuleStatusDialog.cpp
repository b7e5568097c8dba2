#include "gui/ModuleStatusDialog.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>

#include "engine/Placement.h"

namespace quillmer::gui {

namespace {
// The dialog opens this far right of and below the panel's corner, in twips.
constexpr int kRightOfPanel = 300;
constexpr int kBelowPanel = 1320;
}  // namespace

QPoint statusDialogPlace(QPoint panelOnMainWindow, const QRect& mainWindow, QSize dialog, const QRect& screen) {
    QPoint at = mainWindow.topLeft() + panelOnMainWindow +
                QPoint(kRightOfPanel / kTwipsPerPixel, kBelowPanel / kTwipsPerPixel);
    at.setX(std::max(screen.left(), std::min(at.x(), screen.right() + 1 - dialog.width())));
    at.setY(std::max(screen.top(), std::min(at.y(), screen.bottom() + 1 - dialog.height())));
    return at;
}

ModuleStatusDialog::ModuleStatusDialog(QWidget* parent) : QDialog(parent, Qt::Tool) {
    setObjectName(QStringLiteral("fModStatus"));
    auto* column = new QVBoxLayout(this);
    auto* group = new QButtonGroup(this);
    for (int i = 0; i < 7; ++i) {
        const std::string_view caption = priorityCaption(i);
        auto* option = new QRadioButton(QString::fromUtf8(caption.data(), static_cast<qsizetype>(caption.size())), this);
        option->setObjectName(QStringLiteral("opPriority%1").arg(i));
        group->addButton(option, i);
        column->addWidget(option);
        options_[static_cast<size_t>(i)] = option;
        connect(option, &QRadioButton::clicked, this, [this, i] { finish({i, enabled_, false, false}); });
    }
    auto* row = new QHBoxLayout;
    enable_ = new QPushButton(QStringLiteral("Disable"), this);
    enable_->setObjectName(QStringLiteral("cmdEnable"));
    delete_ = new QPushButton(QStringLiteral("Delete"), this);
    delete_->setObjectName(QStringLiteral("cmdDelete"));
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("cmdCancel"));
    for (QPushButton* b : {enable_, delete_, cancel_}) {
        b->setAutoDefault(false);
        row->addWidget(b);
    }
    column->addLayout(row);
    connect(enable_, &QPushButton::clicked, this, [this] { finish({priorityIndex_, !enabled_, false, false}); });
    connect(delete_, &QPushButton::clicked, this, [this] { finish({priorityIndex_, enabled_, true, false}); });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void ModuleStatusDialog::ask(const QString& name, int priorityIndex, bool enabled, QPoint at) {
    setWindowTitle(QStringLiteral("Set: ") + name);
    priorityIndex_ = priorityIndex;
    enabled_ = enabled;
    answered_ = false;
    for (int i = 0; i < 7; ++i) {
        QRadioButton* option = options_[static_cast<size_t>(i)];
        option->setChecked(i == priorityIndex);
        option->setEnabled(enabled);
    }
    enable_->setText(enabled ? QStringLiteral("Disable") : QStringLiteral("Enable"));
    adjustSize();
    const QScreen* screen = parentWidget() ? parentWidget()->screen() : nullptr;
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1920, 1080);
    const QRect main = parentWidget() ? parentWidget()->frameGeometry() : QRect();
    move(statusDialogPlace(at, main, frameGeometry().size(), area));
    open();
}

void ModuleStatusDialog::reject() {
    QDialog::reject();
    StatusChoice cancelled{priorityIndex_, enabled_, false, true};
    if (!answered_) {
        answered_ = true;
        emit decided(cancelled);
    }
}

void ModuleStatusDialog::finish(StatusChoice choice) {
    if (answered_) return;
    answered_ = true;
    accept();
    emit decided(choice);
}

}  // namespace quillmer::gui
