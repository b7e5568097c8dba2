// quillmer [-m] [--song] [FILE.qmp]: the desktop program.
//   -m                 start with no MIDI ports, whatever the settings say
//   --song             play the patch's Composer list from Begin
//   --screenshot DIR   save pictures of the windows into DIR and quit
//   --help, --version  print and exit

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

#include "app/quillmer/ManagedStart.h"
#include "app/quillmer/MidiDevices.h"
#include "app/quillmer/Screenshots.h"
#include "gui/SplashWindow.h"
#include "gui/Look.h"
#include "gui/MainWindow.h"
#include "gui/Program.h"
#include "gui/SessionManagerLink.h"
#include "modules/BuiltTypes.h"
#include "platform/NsmClient.h"
#include "platform/RealTimeTimerService.h"

using namespace quillmer;

namespace {

struct Arguments {
    gui::StartOptions start;
    QString screenshotDir;
    bool ok = true;
};

constexpr const char* kUsage =
    "Usage: quillmer [-m] [--song] [FILE.qmp|FILE.qmj]\n"
    "Quillmer, the modular MIDI step sequencer: the desktop program.\n"
    "\n"
    "  FILE.qmp           open this patch (or its text form, FILE.qmj)\n"
    "  -m                 start with no MIDI ports, whatever the settings say\n"
    "  --song             play the patch's Composer list (its song) from Begin\n"
    "  --screenshot DIR   save pictures of the windows into DIR and quit\n"
    "  -h, --help         print this help and exit\n"
    "  --version          print the version and exit\n"
    "\n"
    "Under a session manager (NSM_URL set) the manager chooses the patch, which is\n"
    "patch.qmp in the project's folder, and saves it; FILE is then ignored.\n"
    "Without windows: quillmer-cli --help.\n";

// --help and --version answer before anything needs a display.
int earlyAnswer(int argc, char* argv[]) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (std::strcmp(argv[i], "--version") == 0) {
            std::printf("quillmer %s\n", QUILLMER_VERSION);
            return 0;
        }
    }
    return -1;
}

bool hasDisplay() {
    const auto set = [](const char* name) {
        const char* value = std::getenv(name);
        return value && *value;
    };
    return set("QT_QPA_PLATFORM") || set("DISPLAY") || set("WAYLAND_DISPLAY");
}

Arguments parse(const QStringList& args) {
    Arguments a;
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (arg == QStringLiteral("-m")) {
            a.start.noMidi = true;
        } else if (arg == QStringLiteral("--song")) {
            a.start.playSong = true;
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

// A display that is named but can't be opened ends Qt's start with a fatal message and an
// abort. While the application starts, such a message is told plainly and the program ends
// with status 1; afterwards messages go to Qt's own handler.
QtMessageHandler qtHandler = nullptr;
bool startingUp = true;

void startupMessages(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    // Qt's own fatal text speaks of reinstalling; the lines before it name the real cause.
    if (type == QtFatalMsg && startingUp) {
        const char* display = std::getenv("WAYLAND_DISPLAY");
        if (!display || !*display) display = std::getenv("DISPLAY");
        std::fprintf(stderr,
                     "quillmer: the display \"%s\" can't be opened, so no window can be shown.\n"
                     "Check that the desktop session is running and reachable, or use quillmer-cli to play patches "
                     "without windows.\n",
                     display ? display : "");
        std::_Exit(1);
    }
    if (qtHandler) qtHandler(type, context, message);
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
    if (const int answered = earlyAnswer(argc, argv); answered >= 0) return answered;
    QStringList given;
    for (int i = 0; i < argc; ++i) given << QString::fromLocal8Bit(argv[i]);
    const Arguments args = parse(given);
    if (!args.ok) {
        std::fprintf(stderr, "quillmer: unknown option or more than one file\n%s", kUsage);
        return 2;
    }
    if (!hasDisplay()) {
        std::fputs("quillmer: there is no display to open the windows on (neither DISPLAY nor WAYLAND_DISPLAY "
                   "is set).\nRun it in a desktop session, or use quillmer-cli to play patches without windows.\n",
                   stderr);
        return 1;
    }
    qtHandler = qInstallMessageHandler(startupMessages);
    Application app(argc, argv);
    startingUp = false;
    QCoreApplication::setOrganizationName(QStringLiteral("Brindlewick"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillmer"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillmer"));
    app.setQuitOnLastWindowClosed(false);  // the exit waits for queued MIDI to drain
    gui::applyDarkStyle(app);


    // Pictures for the documentation never touch the user's own settings.
    QTemporaryDir scratch;
    std::unique_ptr<QSettings> store =
        args.screenshotDir.isEmpty()
            ? std::make_unique<QSettings>()
            : std::make_unique<QSettings>(scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);

    // The splash shows while the devices are found and the patch loads.
    auto splash = std::make_unique<gui::SplashWindow>(QStringLiteral(QUILLMER_VERSION));
    splash->show();
    QCoreApplication::processEvents();
    // Under a session manager the project comes from it, before any MIDI port opens.
    NsmClient sessionManager;
    const std::optional<ManagedStart> managed =
        args.screenshotDir.isEmpty() ? joinSessionManager(sessionManager, "quillmer") : std::nullopt;
    gui::StartOptions start = args.start;
    if (managed) start.file.clear();

    RealTimeTimerService timers;
    int status = 0;
    {
        std::unique_ptr<MidiDeviceProvider> devices = makeMidiDeviceProvider(timers);
        gui::Program program(timers, builtTypes(), *store, devices.get());
        QObject::connect(&program, &gui::Program::finished, &app, &QCoreApplication::quit);
        program.start(start);
        splash.reset();
        program.mainWindow().show();
        std::unique_ptr<gui::SessionManagerLink> link;
        if (managed) {
            link = std::make_unique<gui::SessionManagerLink>(sessionManager, program);
            link->quitOnTermination();
            link->open(QString::fromStdString(managed->folder));
        }
        if (!args.screenshotDir.isEmpty()) takeScreenshotsLater(program, args.screenshotDir);
        status = app.exec();
        timers.stop();  // no timer callback may run while the session goes
    }
    return status;
}
