// CPU of the GUI thread while 100 Slide128 panels on the page on show play: each reads its
// stage from a stepper, so its lamp and output move every other tick at tempo 120, on the
// real-time timer service. Offscreen unless a display is given. Prints the GUI thread's
// CPU time over the measured span (10 s unless told otherwise) as a share of one core.
//   slide_panels_cpu [SECONDS]

#include <QApplication>
#include <array>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "gui/MainWindow.h"
#include "gui/PanelBoard.h"
#include "gui/Program.h"
#include "modules/BuiltTypes.h"
#include "modules/sequencers/FillTarget.h"
#include "platform/RealTimeTimerService.h"
#include "shell/Session.h"

using namespace quillmer;

namespace {
constexpr int kPanels = 100;
constexpr int kColumns = 4;
constexpr int kCellWidth = 660;   // pixels
constexpr int kCellHeight = 150;
constexpr int kWarmUpMs = 2000;

double threadCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

double wallSeconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

void connectByName(Engine& e, const std::string& module, int input, const char* source) {
    Module* m = e.findModule(module);
    const int position = e.names.sortedPosition(source);
    if (m && position >= 0) e.connectInput(*m, input, static_cast<uint16_t>(position));
}

// One stepper feeding the stages of every slide; the slides' bars a ramp.
void placeBusyPatch(Session& session) {
    Engine& e = session.engine;
    Module& stepper = e.placeForBulk(*typeIdByName("Stepper"));
    stepper.Top = 0;
    std::array<uint8_t, 128> ramp{};
    for (int i = 0; i < 128; ++i) ramp[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    for (int i = 0; i < kPanels; ++i) {
        Module& m = e.placeForBulk(*typeIdByName("Slide128"));
        m.Left = (8 + (i % kColumns) * kCellWidth) * kTwipsPerPixel;
        m.Top = (40 + (i / kColumns) * kCellHeight) * kTwipsPerPixel;
        dynamic_cast<FillTarget&>(m).UpdateSeq(ramp, 127);
    }
    e.endBulk();
    connectByName(e, "1Stepper-", 0, "~   2");
    connectByName(e, "1Stepper-", 4, "~ 127");
    for (int n = 1; n <= kPanels; ++n) connectByName(e, std::to_string(n) + "Slide128-", 0, "1Stepper-");
    e.setRun(true);
}
}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;

    QTemporaryDir scratch;
    QSettings store(scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    RealTimeTimerService timers;
    int status = 0;
    {
        gui::Program program(timers, builtTypes(), store, nullptr);
        gui::StartOptions options;
        options.noMidi = true;
        program.start(options);
        gui::MainWindow& window = program.mainWindow();
        window.resize(kColumns * kCellWidth + 40, 25 * kCellHeight + 200);
        window.show();
        {
            auto held = program.session().engine.lock();
            placeBusyPatch(program.session());
        }

        double cpuStart = 0, wallStart = 0;
        QTimer::singleShot(kWarmUpMs, [&] {
            cpuStart = threadCpuSeconds();
            wallStart = wallSeconds();
        });
        QTimer::singleShot(kWarmUpMs + seconds * 1000, [&] {
            const double cpu = threadCpuSeconds() - cpuStart;
            const double wall = wallSeconds() - wallStart;
            uint64_t ticks = 0;
            {
                auto held = program.session().engine.lock();
                ticks = program.session().engine.ticksRun();
            }
            std::printf("platform %s, %d panels on the page on show, tempo 120, %llu ticks so far\n",
                        qPrintable(QGuiApplication::platformName()), window.panels().count(),
                        static_cast<unsigned long long>(ticks));
            std::printf("GUI thread CPU: %.3f s over %.2f s = %.1f %% of one core\n", cpu, wall, 100.0 * cpu / wall);
            timers.stop();
            QCoreApplication::exit(0);
        });
        status = app.exec();
        timers.stop();
    }
    return status;
}
