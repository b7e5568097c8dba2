// The GUI thread's share of one core while a patch plays on the real-time timer service:
// the program starts with no MIDI ports, `place` builds the patch under the engine lock,
// and after a two-second warm-up the thread's CPU time is measured over SECONDS (argv[1],
// 10 unless told otherwise). Offscreen unless a display is given.
#pragma once

#include <QApplication>
#include <QSettings>
#include <QSize>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

#include "gui/MainWindow.h"
#include "gui/PanelBoard.h"
#include "gui/Program.h"
#include "modules/BuiltTypes.h"
#include "platform/RealTimeTimerService.h"
#include "shell/Session.h"

namespace quillmer::bench {

inline double threadCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

inline double wallSeconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

inline void connectByName(Engine& e, const std::string& module, int input, const char* source) {
    Module* m = e.findModule(module);
    const int position = e.names.sortedPosition(source);
    if (m && position >= 0) e.connectInput(*m, input, static_cast<uint16_t>(position));
}

inline int measureGuiThread(int argc, char** argv, QSize windowSize, const std::function<void(Session&)>& place) {
    constexpr int kWarmUpMs = 2000;
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
        window.resize(windowSize);
        window.show();
        {
            auto held = program.session().engine.lock();
            place(program.session());
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

}  // namespace quillmer::bench
