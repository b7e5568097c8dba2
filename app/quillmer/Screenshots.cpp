#include "app/quillmer/Screenshots.h"

#include <QCoreApplication>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <cstdio>

#include "gui/ConnectPopup.h"
#include "gui/MainWindow.h"
#include "gui/ModuleMap.h"
#include "gui/OptionsWindow.h"
#include "gui/PanelBoard.h"
#include "gui/Program.h"
#include "gui/Workspace.h"
#include "gui/panels/PanelFrame.h"
#include "shell/Session.h"

namespace quillmer {

namespace {
constexpr int kSettleMs = 1500;  // a few beats, so the lamps and the CPU meter have something to show

struct Placement {
    const char* type;
    int top;
    int left;
};
// Without a patch to show: clocks driving step sequencers into note outputs, on the first
// page; the random source is a type that doesn't run yet, shown as such.
constexpr Placement kDemo[] = {
    {"Clock", 240, 240},     {"Counter", 240, 3000},    {"Step8", 240, 5880},   {"MIDITone", 240, 10200},
    {"Stepper", 2160, 240},  {"Div", 2160, 3000},       {"Step16", 2160, 5880}, {"MIDIVoice", 3720, 240},
    {"Rand", 4920, 3000},    {"Notes", 4920, 5880},     {"Chain", 4920, 8760},
};
struct Wire {
    const char* module;
    int input;
    const char* source;
};
constexpr Wire kWires[] = {
    {"1Countr-", 0, "1Clock-"}, {"1Step08-", 0, "1Countr-"}, {"1Tone-", 0, "1Clock-"},  {"1Tone-", 1, "1Step08-"},
    {"1Stepper-", 0, "~   6"},  {"1Step16-", 0, "1Stepper-"}, {"1Div-", 0, "~ Turbo"}, {"1Div-", 1, "~   4"},
};

bool save(QWidget& window, const QString& path) {
    const bool saved = window.grab().save(path);
    std::fprintf(stderr, "%s %s\n", saved ? "saved" : "could not save", qPrintable(path));
    return saved;
}

void buildSmallPatch(Session& session) {
    Engine& e = session.engine;
    for (const Placement& p : kDemo) {
        const std::optional<ModuleTypeId> id = typeIdByName(p.type);
        if (!id) continue;
        e.placeAtCursor(p.top, p.left);
        e.New(*id);
    }
    for (const Wire& w : kWires) {
        Module* m = e.findModule(w.module);
        const int position = e.names.sortedPosition(w.source);
        if (m && position >= 0) e.connectInput(*m, w.input, static_cast<uint16_t>(position));
    }
    session.snapshots.StoreNewPatch();
    e.setRun(true);
    session.SetModified(false);
}

// The first panel on the shown page that has an input: its first button opens the list.
QPushButton* someInputButton(gui::MainWindow& window) {
    for (gui::PanelFrame* frame : window.workspace().canvas(window.workspace().page())->findChildren<gui::PanelFrame*>())
        if (frame->inputRows() > 1) return frame->inputButton(1);
    return nullptr;
}
}  // namespace

void takeScreenshotsLater(gui::Program& program, const QString& folder) {
    Session& session = program.session();
    {
        auto held = session.engine.lock();
        if (session.CurrentFileName.empty()) buildSmallPatch(session);
    }
    program.optionsWindow().showOptions();
    QTimer::singleShot(kSettleMs, &program, [&program, folder] {
        QDir().mkpath(folder);
        gui::MainWindow& window = program.mainWindow();
        window.refresh();
        gui::OptionsWindow& options = program.optionsWindow();
        auto* pages = options.findChild<QTabWidget*>();
        bool ok = save(window, folder + QStringLiteral("/quillmer-main.png")) &&
                  save(options, folder + QStringLiteral("/quillmer-options.png"));
        if (ok && pages) {
            pages->setCurrentIndex(1);
            ok = save(options, folder + QStringLiteral("/quillmer-options-program.png"));
        }
        options.hide();
        if (QPushButton* input = someInputButton(window); ok && input) {
            input->click();
            gui::ConnectPopup& popup = window.panels().connectPopup();
            QCoreApplication::processEvents();
            ok = save(popup, folder + QStringLiteral("/quillmer-connect.png"));
            popup.hide();
        }
        if (ok) {
            window.openModuleMap();
            QCoreApplication::processEvents();
            ok = save(window.moduleMap(), folder + QStringLiteral("/quillmer-map.png"));
            window.moduleMap().hide();
        }
        window.close();
        if (!ok) QCoreApplication::exit(1);
    });
}

}  // namespace quillmer
