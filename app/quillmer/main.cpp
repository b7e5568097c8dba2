// quillmer [-m] [FILE.qmp]: the desktop program.
//   -m                 start with no MIDI ports, whatever the settings say
//   --screenshot DIR   save pictures of the windows into DIR and quit

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <cstdio>
#include <exception>
#include <memory>

#include "app/quillmer/MidiDevices.h"
#include "app/quillmer/Screenshots.h"
#include "gui/Look.h"
#include "gui/MainWindow.h"
#include "gui/Program.h"
#include "modules/BuiltTypes.h"
#include "platform/RealTimeTimerService.h"

using namespace quillmer;

namespace {

struct Arguments {
    gui::StartOptions start;
    QString screenshotDir;
    bool ok = true;
};

Arguments parse(const QStringList& args) {
    Arguments a;
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (arg == QStringLiteral("-m")) {
            a.start.noMidi = true;
        } else if (arg == QStringLiteral("--screenshot") && i + 1 < args.size()) {
            a.screenshotDir = args[++i];
        } else if (arg.startsWith(QLatin1Char('-')) || !a.start.file.isEmpty()) {
            a.ok = false;
        } else {
            a.start.file = arg;
        }
    }
    return a;
}

// Nothing may escape an event handler: Qt can't unwind through its event loop. What would
// have ended the program is told on stderr, and the program goes on.
class Application : public QApplication {
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "quillmer: %s\n", e.what());
        } catch (...) {
            std::fprintf(stderr, "quillmer: an event handler failed\n");
        }
        return false;
    }
};

}  // namespace

int main(int argc, char* argv[]) {
    Application app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brindlewick"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillmer"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillmer"));
    app.setQuitOnLastWindowClosed(false);  // the exit waits for queued MIDI to drain
    gui::applyDarkStyle(app);

    const Arguments args = parse(QCoreApplication::arguments());
    if (!args.ok) {
        std::fprintf(stderr, "usage: quillmer [-m] [FILE.qmp]\n");
        return 2;
    }

    // Pictures for the documentation never touch the user's own settings.
    QTemporaryDir scratch;
    std::unique_ptr<QSettings> store =
        args.screenshotDir.isEmpty()
            ? std::make_unique<QSettings>()
            : std::make_unique<QSettings>(scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);

    RealTimeTimerService timers;
    int status = 0;
    {
        std::unique_ptr<MidiDeviceProvider> devices = makeMidiDeviceProvider(timers);
        gui::Program program(timers, builtTypes(), *store, devices.get());
        QObject::connect(&program, &gui::Program::finished, &app, &QCoreApplication::quit);
        program.start(args.start);
        program.mainWindow().show();
        if (!args.screenshotDir.isEmpty()) takeScreenshotsLater(program, args.screenshotDir);
        status = app.exec();
        timers.stop();  // no timer callback may run while the session goes
    }
    return status;
}
