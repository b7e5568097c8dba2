#pragma once
// Stand-in panels: every placed module shows as a plain labelled frame at its Top and Left,
// on its page, until the real panels of each family take over. Everything a panel system
// needs from the engine goes through readPlacedModules, so replacing this class touches
// nothing else.

#include <QString>
#include <utility>
#include <vector>

#include "engine/Catalogue.h"

class QLabel;

namespace quillmer {
class Engine;
}

namespace quillmer::gui {

class Workspace;

// One placed module as a panel needs it, copied under the engine lock.
struct PlacedModule {
    ModuleTypeId type = 0;
    int index = 0;
    QString name;     // "1Div-"
    QString caption;  // the type's menu caption
    int page = 0;
    int top = 0;      // twips
    int left = 0;
    int width = 0;
    int height = 0;
    bool enabled = true;
    bool placeholder = false;  // the type's logic isn't built yet

    bool operator==(const PlacedModule&) const = default;
};

// Every placed module, in type and index order (lock held).
std::vector<PlacedModule> readPlacedModules(Engine& engine);

// The first free place for a new panel on `page`, row by row within `frameWidth` twips:
// {top, left} in twips.
std::pair<int, int> freeSpot(const std::vector<PlacedModule>& placed, int page, int frameWidth);

class PlaceholderPanels {
public:
    explicit PlaceholderPanels(Workspace& workspace) : workspace_(workspace) {}
    ~PlaceholderPanels();

    // Makes the frames match the modules; does nothing when nothing changed.
    void sync(const std::vector<PlacedModule>& placed);
    int count() const { return static_cast<int>(frames_.size()); }

private:
    Workspace& workspace_;
    std::vector<PlacedModule> shown_;
    std::vector<QLabel*> frames_;
};

}  // namespace quillmer::gui
