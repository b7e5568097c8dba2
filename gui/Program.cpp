#include "gui/Program.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <cmath>

#include "gui/FileCommands.h"
#include "gui/FormulaEditor.h"
#include "gui/MainWindow.h"
#include "gui/OptionFlags.h"
#include "gui/OptionsWindow.h"
#include "gui/ProgramPaths.h"
#include "gui/ProgramSettings.h"
#include "gui/RecentFiles.h"
#include "gui/UserDialogs.h"
#include "modules/generators/GeneratorTables.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
constexpr int kDrainPollMs = 10;
}

Program::Program(TimerService& timers, const ModuleRegistry& registry, QSettings& store, MidiDeviceProvider* provider,
                 UserDialogs* dialogs)
    : store_(store),
      session_(std::make_unique<Session>(timers, registry)),
      settings_(std::make_unique<ProgramSettings>()),
      recent_(std::make_unique<RecentFiles>()),
      ownDialogs_(dialogs ? nullptr : std::make_unique<QtUserDialogs>(nullptr)),
      dialogs_(dialogs ? dialogs : ownDialogs_.get()) {
    logicalDpi = [] {
        const QScreen* screen = QGuiApplication::primaryScreen();
        return screen ? screen->logicalDotsPerInch() : 96.0;
    };
    {
        auto held = session_->engine.lock();
        session_->engine.ports.setProvider(provider);
    }
    options_ = std::make_unique<OptionsWindow>(*session_, *settings_, *dialogs_);
    main_ = std::make_unique<MainWindow>(*session_, *dialogs_, *settings_, *recent_, *options_);
    if (ownDialogs_) static_cast<QtUserDialogs*>(ownDialogs_.get())->setParent(main_.get());
    connect(main_.get(), &MainWindow::closed, this, [this] {
        writeSettings();
        {
            auto held = session_->engine.lock();
            session_->engine.ports.beginExitDrain();
        }
        drainPoll_.start(kDrainPollMs);
    });
    connect(&drainPoll_, &QTimer::timeout, this, &Program::pollDrain);
    // At the end of a desktop session the save question can't be cancelled.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this] {
        main_->setSystemShutdown(true);
        main_->close();
    });
}

Program::~Program() {
    drainPoll_.stop();
    main_.reset();
    options_.reset();
}

void Program::start(const StartOptions& options) {
    Engine& engine = session_->engine;
    {
        auto held = engine.lock();
        engine.ports.startingUp = true;  // device errors show the options window now
    }
    recent_->load(store_);
    settings_->read(store_, examplesDir(), programDir());
    settings_->readPorts(store_);
    main_->restoreGeometryFromSettings();
    main_->refresh();
    {
        auto held = engine.lock();
        settings_->applyTo(engine);
        if (engine.options.randomSeed != 0) engine.seedRandom(engine.options.randomSeed);
        rebuildGeneratorTables(engine.options.randomSeed);
        session_->SeedUserFunctions(static_cast<uint32_t>(settings_->ufSeed));
    }
    tellUserFunctionProblem(*session_, *dialogs_);
    openSavedPorts(options.noMidi);
    {
        auto held = engine.lock();
        engine.StartTimers();  // from here on an empty workspace ticks
        session_->SetModified(false);
    }
    options_->reload();
    main_->rebuildRecentMenu();
    if (!options.file.isEmpty() && QFileInfo(options.file).isFile()) main_->files().openFile(options.file);
    if (options.playSong) playSong();
    main_->refresh();
    warnOfLargeFonts();
    {
        auto held = engine.lock();
        engine.ports.startingUp = false;
    }
}

void Program::warnOfLargeFonts() {
    const double dpi = logicalDpi ? logicalDpi() : 96.0;
    if (std::lround(dpi) == 96 || (settings_->sysFlags & sysflag::NoFontMsg)) return;
    dialogs_->information(QStringLiteral("Quillmer"),
                          QStringLiteral("Your display is set to a large or nonstandard font size.\n"
                                         "Quillmer is graphics intensive and may not display properly at this setting.\n"
                                         "For best graphics, set your display to small fonts and high (16 bit) color.\n"
                                         "[To disable this message, check Options/Warning Off.]"));
}

void Program::playSong() {
    main_->setComposer(true);
    auto held = session_->engine.lock();
    session_->composer.play();
}

void Program::openSavedPorts(bool noMidi) {
    Engine& engine = session_->engine;
    bool portAOpen = false;
    {
        auto held = engine.lock();
        if (!noMidi) {
            for (int port = 0; port < kPortCount; ++port) {
                const auto p = static_cast<size_t>(port);
                const std::string out = settings_->outputPorts[p].toStdString();
                const std::string in = settings_->inputPorts[p].toStdString();
                if (out != kNoDevice) engine.ports.chooseOutput(port, out);
                if (in != kNoDevice) engine.ports.chooseInput(port, in);
            }
        }
        portAOpen = engine.ports.outputOpen(0);
    }
    // With nothing on port A the user gets to choose at once (unless no MIDI was asked for).
    if (!portAOpen && !noMidi) options_->showOptions();
}

void Program::writeSettings() {
    {
        auto held = session_->engine.lock();
        settings_->takeFrom(session_->engine);
    }
    settings_->write(store_);
    recent_->save(store_);
    settings_->writePorts(store_);
    store_.sync();
}

void Program::pollDrain() {
    {
        auto held = session_->engine.lock();
        if (!session_->engine.ports.exitDrained()) return;
        session_->engine.ports.StopAllMIDI();
    }
    drainPoll_.stop();
    exitDone_ = true;
    emit finished();
}

}  // namespace quillmer::gui
