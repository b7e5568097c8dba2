// The Fill dialog on a Slide128: opening it (made, shown, first drawn) and one operation
// applied with the live update (the table's UpdateSeq under the engine lock, then the bars
// and the panel redrawn). Offscreen unless a display is given.

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include "engine/VirtualTimerService.h"
#include "gui/FillDialog.h"
#include "gui/MainWindow.h"
#include "gui/PanelBoard.h"
#include "gui/Program.h"
#include "gui/TableDialogs.h"
#include "gui/UserDialogs.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

using namespace quillmer;

namespace {

struct NoQuestions final : gui::UserDialogs {
    gui::SaveAnswer askSaveChanges(const QString&, bool) override { return gui::SaveAnswer::No; }
    bool confirm(const QString&, const QString&) override { return false; }
    void critical(const QString&, const QString&) override {}
    void information(const QString&, const QString&) override {}
    QString openFileName(const QString&, const QString&, const QString&) override { return {}; }
    QString saveFileName(const QString&, const QString&, const QString&) override { return {}; }
};

struct Bench {
    QTemporaryDir scratch;
    QSettings store{scratch.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
    VirtualTimerService timers;
    NoQuestions dialogs;
    gui::Program program{timers, builtTypes(), store, nullptr, &dialogs};
    Module* slide = nullptr;

    Bench() {
        gui::StartOptions options;
        options.noMidi = true;
        program.start(options);
        program.mainWindow().show();
        {
            auto held = program.session().engine.lock();
            slide = &program.session().engine.New(*typeIdByName("Slide128"));
        }
        program.mainWindow().refresh();
        QApplication::processEvents();
    }
    gui::FillDialog* open() {
        Engine& e = program.session().engine;
        Module* m = slide;
        return gui::openFillDialog(e, dialogs, [m] { return m; }, QStringLiteral("1Slide128-"), &program.mainWindow());
    }
};

Bench* bench = nullptr;

void FillDialogOpen(benchmark::State& state) {
    for (auto _ : state) {
        gui::FillDialog* dialog = bench->open();
        dialog->repaint();
        state.PauseTiming();
        dialog->run(fillcmd::OK);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        state.ResumeTiming();
    }
}
BENCHMARK(FillDialogOpen)->Unit(benchmark::kMillisecond)->UseRealTime();

// One operation per index, each followed by what the user sees: the dialog's bars and the
// slide's panel drawn again.
void FillDialogApply(benchmark::State& state) {
    gui::FillDialog* dialog = bench->open();
    const int index = static_cast<int>(state.range(0));
    for (auto _ : state) {
        dialog->run(index);
        dialog->bars()->repaint();
        bench->program.mainWindow().refresh();
        QApplication::processEvents();
    }
    dialog->run(fillcmd::Cancel);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
BENCHMARK(FillDialogApply)
    ->Arg(fillcmd::Revrs)
    ->Arg(fillcmd::Rand)
    ->Arg(fillcmd::Smoth)
    ->Arg(fillcmd::Scat)
    ->Arg(fillcmd::Quantize)
    ->Arg(fillcmd::Undo)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Bench b;
    bench = &b;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    bench = nullptr;
    return 0;
}
