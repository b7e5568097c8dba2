#pragma once
// fModMap, the module map: one list per page, titled with its compass point and group, the
// names of the modules on it below. The selected modules can be moved to a page clicked
// next, cleared (deleted) after a confirmation and shown again right after, enabled and
// disabled; each command is one step of the edit history. The list of the page on show
// is highlighted; a click on a name goes to its page and brings the panel into view.

#include <QDialog>
#include <QStringList>
#include <array>
#include <cstdint>
#include <vector>

#include "engine/Constants.h"
#include "gui/PanelBoard.h"

class QCheckBox;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class UserDialogs;

class ModuleMap : public QDialog {
    Q_OBJECT
public:
    enum Command { Move = 0, Delete = 1, Enable = 2, Disable = 3 };

    ModuleMap(Session& session, UserDialogs& dialogs, QWidget* parent);

    // Redraws the lists when the modules or the page on show differ from what is shown.
    void showModules(const std::vector<PlacedModule>& placed, int currentPage);

    QListWidget* pageList(int page) const { return lists_[static_cast<size_t>(page)]; }
    QPushButton* commandButton(Command c) const { return commands_[static_cast<size_t>(c)]; }
    QCheckBox* wideBox() const { return wide_; }
    QCheckBox* tallBox() const { return tall_; }
    QCheckBox* onTopBox() const { return onTop_; }
    int highlightedPage() const { return mapPage_; }
    // The title line of a page's list: "  North-1" .. "  West-4".
    static QString pageTitle(int page);

signals:
    // A command or a click changed the patch or the page: the main window redraws.
    void changed();
    // A module's name was clicked: its panel is to be brought into view.
    void moduleClicked(const QString& name);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void rebuild();
    void highlight(int page);
    void run(Command command);
    void applyToSelected(int action, int argument);
    bool restorable();
    void restoreCleared();
    void updateClearCaption();
    QStringList selectedNames() const;
    void lineClicked(int page, QListWidgetItem* item);
    void resizeToBoxes();

    Session& session_;
    UserDialogs& dialogs_;
    std::array<QListWidget*, kPageCount> lists_{};
    std::array<QPushButton*, 4> commands_{};
    QCheckBox* wide_;
    QCheckBox* tall_;
    QCheckBox* onTop_;
    std::vector<PlacedModule> shown_;
    QStringList held_;  // liHold: the selection across a rebuild
    int mapPage_ = -1;
    bool choosingTarget_ = false;
    uint64_t clearedStep_ = 0;  // the edit step of the last clear, while "Show" may undo it
};

}  // namespace quillmer::gui
