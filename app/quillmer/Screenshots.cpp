#include "app/quillmer/Screenshots.h"

#include <QCoreApplication>
#include <QDir>
#include <QTabWidget>
#include <QTimer>
#include <cstdio>

#include "gui/MainWindow.h"
#include "gui/OptionsWindow.h"
#include "gui/Program.h"
#include "shell/Session.h"

namespace quillmer {

namespace {
constexpr int kSettleMs = 1500;  // a few beats, so the lamps and the CPU meter have something to show

struct Placement {
    const char* type;
    int top;
    int left;
};
// Clocks driving step sequencers into note outputs, on the first page; the random source
// is a type that doesn't run yet, shown as such.
constexpr Placement kDemo[] = {
    {"Clock", 240, 240},     {"Counter", 240, 2280},    {"Step8", 240, 4320},   {"MIDITone", 240, 6360},
    {"Stepper", 1680, 240},  {"Div", 1680, 2280},       {"Step16", 1680, 4320}, {"MIDIVoice", 1680, 6360},
    {"Rand", 3120, 240},     {"Notes", 3120, 2280},     {"Chain", 3120, 4320},
};

bool save(QWidget& window, const QString& path) {
    const bool saved = window.grab().save(path);
    std::fprintf(stderr, "%s %s\n", saved ? "saved" : "could not save", qPrintable(path));
    return saved;
}
}  // namespace

void takeScreenshotsLater(gui::Program& program, const QString& folder) {
    Session& session = program.session();
    {
        auto held = session.engine.lock();
        for (const Placement& p : kDemo) {
            const std::optional<ModuleTypeId> id = typeIdByName(p.type);
            if (!id) continue;
            session.engine.placeAtCursor(p.top, p.left);
            session.engine.New(*id);
        }
        session.snapshots.StoreNewPatch();
        session.engine.setRun(true);
        session.SetModified(false);
    }
    program.optionsWindow().showOptions();
    QTimer::singleShot(kSettleMs, &program, [&program, folder] {
        QDir().mkpath(folder);
        program.mainWindow().refresh();
        gui::OptionsWindow& options = program.optionsWindow();
        auto* pages = options.findChild<QTabWidget*>();
        bool ok = save(program.mainWindow(), folder + QStringLiteral("/quillmer-main.png")) &&
                  save(options, folder + QStringLiteral("/quillmer-options.png"));
        if (ok && pages) {
            pages->setCurrentIndex(1);
            ok = save(options, folder + QStringLiteral("/quillmer-options-program.png"));
        }
        program.mainWindow().close();
        if (!ok) QCoreApplication::exit(1);
    });
}

}  // namespace quillmer
