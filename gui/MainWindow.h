#pragma once
// The main window, fMain: menus, toolbar, the strip and the sixteen-page workspace. It
// owns the file commands and module creation; the tick never runs here. Views are redrawn
// from a copy of the engine's state taken under the lock: the panels at most 60 times a
// second, the strip at half that.

#include <QList>
#include <QMainWindow>
#include <QTimer>
#include <QUrl>
#include <array>
#include <memory>
#include <optional>

#include "engine/Catalogue.h"

class QAction;
class QMenu;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class ComposerWindow;
class FormulaEditor;
class ConnectionView;
class FileCommands;
class ModulePalette;
class ModulesMenu;
class OptionsWindow;
class ModuleMap;
class PanelBoard;
class RecentFiles;
class StripBar;
class UserDialogs;
class Workspace;
struct ProgramSettings;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(Session& session, UserDialogs& dialogs, ProgramSettings& settings, RecentFiles& recent,
               OptionsWindow& options, QWidget* parent = nullptr);
    ~MainWindow() override;

    FileCommands& files() { return *files_; }
    StripBar& strip() { return *strip_; }
    Workspace& workspace() { return *workspace_; }
    ModulesMenu& modulesMenu() { return *modulesMenu_; }
    PanelBoard& panels() { return *panels_; }
    ModuleMap& moduleMap() { return *map_; }
    // fModMap, from the "M&ap" menu.
    void openModuleMap();
    // The toolbar's Composer button (MISC31): the Composer on with its window, or off.
    void setComposer(bool on);
    ComposerWindow* composerWindow() const { return composer_; }  // made at the first use
    // fUCalc, from the "&UF-Prog" menu; made at the first use and kept.
    void openFormulaEditor();
    FormulaEditor* formulaEditor() const { return formulaEditor_; }
    QAction* action(const QString& key) const;  // toolbar and menu actions by key

    // Reads the engine and redraws what changed: the strip and the panels.
    void refresh();
    // Places one module of `type` on the current page.
    void placeModule(ModuleTypeId type);
    // The first .qmp file of a drop is opened.
    void dropFiles(const QList<QUrl>& urls);
    // The desktop session is ending: the save question offers no Cancel.
    void setSystemShutdown(bool on) { systemShutdown_ = on; }
    // Window position and state into the settings.
    void storeGeometry();
    void restoreGeometryFromSettings();
    // The recent files into the File menu.
    void rebuildRecentMenu();

    // --- editing (MainWindowEdit.cpp) ---
    // Undo and redo of the last patch edit; the Edit menu's entries follow.
    void undoEdit();
    void redoEdit();
    ModulePalette& palette() { return *palette_; }
    // Places a module of `type` under the mouse pointer when it is over the shown page, else
    // where there is room.
    void placeModuleAtCursor(ModuleTypeId type);
    // The first window fits into the screen's free area, however large the settings say.
    void fitToScreen();

    // --- the View menu (MainWindowView.cpp) ---
    ConnectionView& connections() { return *connections_; }
    // The connection lines follow the panels and the pointer.
    void refreshConnections();

signals:
    // The close was accepted and the last tick has run: the program goes on with its exit.
    void closed();

protected:
    // Keys pressed anywhere in this window reach the key outputs of the bus.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildEditMenu();
    void buildViewMenu();
    void buildZoomEntries(QMenu* view);
    void zoomChanged(int percent);
    void showZoom();
    QWidget* stripRow(QWidget* parent);
    void updateEditActions();
    void placeModuleAt(ModuleTypeId type, std::optional<QPoint> pixel);
    void buildMenus();
    void buildToolbar();
    void wireEngineEvents();
    void setRun(bool run);
    void setMidiMute(bool muted);
    void storeSnapshot(bool asNew);
    void tellEngineFrameSize();
    void refreshOnTimer();
    void refreshStrip();
    void refreshPanels();

    Session& session_;
    UserDialogs& dialogs_;
    ProgramSettings& settings_;
    RecentFiles& recent_;
    OptionsWindow& options_;
    FileCommands* files_ = nullptr;
    StripBar* strip_ = nullptr;
    Workspace* workspace_ = nullptr;
    ModulesMenu* modulesMenu_ = nullptr;
    std::unique_ptr<PanelBoard> panels_;
    ModuleMap* map_ = nullptr;
    ComposerWindow* composer_ = nullptr;
    FormulaEditor* formulaEditor_ = nullptr;
    ModulePalette* palette_ = nullptr;
    ConnectionView* connections_ = nullptr;
    QAction* undoAction_ = nullptr;
    QAction* redoAction_ = nullptr;
    QAction* zoomShown_ = nullptr;
    QMenu* fileMenu_ = nullptr;
    std::array<QAction*, 5> recentActions_{};
    QTimer refreshTimer_;
    int refreshCount_ = 0;
    bool systemShutdown_ = false;
    bool closing_ = false;
    struct KeySeen {
        int type = 0;
        int key = 0;
        unsigned long long timestamp = 0;
        bool operator==(const KeySeen&) const = default;
    };
    KeySeen lastKey_;
};

}  // namespace quillmer::gui
