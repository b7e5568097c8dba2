#pragma once
// fModStatus, the status dialog of one module ("Set: " and its name): the seven update
// passes, Enable or Disable, Delete and Cancel. Choosing a pass closes it at once. While
// the module is disabled the passes are greyed and the button reads "Enable".

#include <QDialog>
#include <array>

#include "engine/Engine.h"

class QPushButton;
class QRadioButton;

namespace quillmer::gui {

class ModuleStatusDialog : public QDialog {
    Q_OBJECT
public:
    explicit ModuleStatusDialog(QWidget* parent);

    void ask(const QString& name, int priorityIndex, bool enabled, QPoint at);

    QRadioButton* option(int index) const { return options_.at(static_cast<size_t>(index)); }
    QPushButton* enableButton() const { return enable_; }
    QPushButton* deleteButton() const { return delete_; }
    QPushButton* cancelButton() const { return cancel_; }

signals:
    void decided(const StatusChoice& choice);

protected:
    void reject() override;

private:
    void finish(StatusChoice choice);

    std::array<QRadioButton*, 7> options_{};
    QPushButton* enable_;
    QPushButton* delete_;
    QPushButton* cancel_;
    int priorityIndex_ = 1;
    bool enabled_ = true;
    bool answered_ = false;
};

// The dialog's place: beside the panel, pulled back inside the screen.
QPoint statusDialogPlace(QPoint panelOnMainWindow, const QRect& mainWindow, QSize dialog, const QRect& screen);

}  // namespace quillmer::gui
