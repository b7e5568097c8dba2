#pragma once
// The module panels on the workspace. At most 60 times a second refresh() takes the engine
// lock, notes which modules came, went or moved, copies the display values of the modules on
// the shown page that the engine marked changed (clearing their marks), lets the lock go,
// and only then draws. Gestures on a panel come back here and go to the module or the
// engine under the lock; the pop-ups they need (connection list, status, channel, file)
// are opened from here.

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QString>
#include <vector>

#include "engine/Catalogue.h"
#include "gui/panels/PanelFrame.h"

namespace quillmer {
class Engine;
class Module;
class ModuleRegistry;
class Session;
struct StatusChoice;
}  // namespace quillmer

namespace quillmer::gui {

class ChannelDialog;
class FillDialog;
class PageTableEditor;
class ConnectPopup;
class ModuleStatusDialog;
class UserDialogs;
class Workspace;

// One placed module where it lies, copied under the engine lock.
struct PlacedModule {
    QString name;
    int page = 0;
    int top = 0;  // twips
    int left = 0;
    int width = 0;
    int height = 0;
    bool enabled = true;
    bool operator==(const PlacedModule&) const = default;
};

// Every placed module, in type and index order (lock held).
std::vector<PlacedModule> readPlacedModules(Engine& engine);
// The first free place for a new panel of `size` on `page`, row by row within `frameWidth`
// twips: {top, left} in twips.
std::pair<int, int> freeSpot(const std::vector<PlacedModule>& placed, int page, int frameWidth, QSize size);
// The size in twips of a type's panel (no lock needed).
QSize panelSizeTwips(const ModuleRegistry& registry, ModuleTypeId type);

class PanelBoard : public QObject {
    Q_OBJECT
public:
    PanelBoard(Session& session, UserDialogs& dialogs, Workspace& workspace, QWidget* mainWindow);
    ~PanelBoard() override;

    void refresh();
    // A right click on the empty workspace: one more of the last type made, at the cursor.
    void createAtCursor(int page, QPoint pixel);
    // The workspace's zoom changed: every panel is made again at it, showing what it showed.
    void remakeFrames();

    int count() const { return static_cast<int>(slots_.size()); }
    int shownPage() const { return shownPage_; }  // as last read
    PanelFrame* frame(const QString& name) const;
    // The placed modules as last read, for the module map.
    const std::vector<PlacedModule>& placed() const { return placed_; }
    ConnectPopup& connectPopup() const { return *connect_; }
    ModuleStatusDialog& statusDialog() const { return *status_; }
    ChannelDialog& channelDialog() const { return *channel_; }
    // The table dialogs a panel opened, while they are open.
    FillDialog* fillDialog() const;
    PageTableEditor* pageTable() const;

signals:
    // Modules came or went, or changed page or name: the module map redraws.
    void modulesChanged();
    // A panel's button asked for a table editor (Dialog::TableBank or Dialog::ToneTable) on
    // a table; the main window owns those windows.
    void tableEditorWanted(quillmer::gui::Dialog which, int table);

private:
    struct Slot {
        Module* module = nullptr;  // identity only: dereferenced under the lock once found live
        ModuleTypeId type = 0;
        int16_t index = 0;
        QString name;
        QString caption;
        std::vector<InputFace> inputs;
        PanelFrame* frame = nullptr;
        QSize sizeTwips;         // the frame's, once made
        int page = -1, top = 0, left = 0;
        QPoint shownAt;          // the frame's pixels for `shownTwips`, as last placed
        QPoint shownTwips;       // left, top
        bool enabled = true;
        bool moved = true;       // place the frame again
        bool valuesRead = false; // at least once
        bool valuesDue = false;  // draw `values`
        PanelValues values;
    };

    void collect(Engine& engine);
    bool rosterChanged(Engine& engine);
    void rebuildRoster();
    void draw();
    // The new frames' sizes into their modules' Width and Height.
    void tellSizes();
    PanelFrame* makeFrame(Slot& slot);
    Slot* slotOf(const PanelFrame* frame);
    // The module behind a panel or a pop-up, when it is still placed (lock held).
    static Module* live(Engine& engine, Module* module, ModuleTypeId type, int16_t index);
    static Module* live(Engine& engine, const Slot& slot) { return live(engine, slot.module, slot.type, slot.index); }

    void connectInput(PanelFrame* frame, int row);
    void inputChosen(int position, const QString& name);
    void askStatus(PanelFrame* frame);
    void statusDecided(const StatusChoice& choice);
    void forward(PanelFrame* frame, int control, const Gesture& g);
    void askDialog(PanelFrame* frame, int control);
    void dragEnded(PanelFrame* frame, QPoint topLeft);

    Session& session_;
    UserDialogs& dialogs_;
    Workspace& workspace_;
    QWidget* mainWindow_;
    ConnectPopup* connect_;
    ModuleStatusDialog* status_;
    ChannelDialog* channel_;

    std::vector<Slot> slots_;
    std::vector<Module*> roster_;        // the modules the slots were made for, in order
    std::vector<Module*> rosterScratch_;
    std::vector<PanelFrame*> leaving_;   // frames of modules that went, deleted at the draw
    std::vector<PlacedModule> placed_;
    int shownPage_ = -1;
    bool mapDue_ = true;

    // What a pop-up is open for.
    struct Target {
        Module* module = nullptr;
        ModuleTypeId type = 0;
        int16_t index = 0;
        int input = 0;
        int control = 0;
    };
    Target pending_;
    QPointer<FillDialog> fill_;
    QPointer<PageTableEditor> pageTable_;
};

}  // namespace quillmer::gui
