#pragma once
// The desktop program from start to exit, in the order that matters: settings first, then
// the ports and the timers (so that an empty workspace already ticks), then a file from the
// command line; at exit the save question, one last tick for the note-offs, the settings,
// time for queued MIDI to drain, and the ports closed.

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>

namespace quillmer {
class MidiDeviceProvider;
class ModuleRegistry;
class Session;
class TimerService;
}  // namespace quillmer

class QSettings;

namespace quillmer::gui {

class MainWindow;
class OptionsWindow;
class RecentFiles;
class UserDialogs;
struct ProgramSettings;

struct StartOptions {
    bool noMidi = false;  // -m: start with every port on "None Selected"
    QString file;         // a patch to open
    bool playSong = false;  // --song: the Composer on and playing once the patch is open
};

class Program : public QObject {
    Q_OBJECT
public:
    // `provider` may be null (no devices); `dialogs` null means Qt's own boxes.
    Program(TimerService& timers, const ModuleRegistry& registry, QSettings& store, MidiDeviceProvider* provider,
            UserDialogs* dialogs = nullptr);
    ~Program() override;

    void start(const StartOptions& options);
    // The Composer on, its window shown, and its list playing from Begin.
    void playSong();

    Session& session() { return *session_; }
    MainWindow& mainWindow() { return *main_; }
    OptionsWindow& optionsWindow() { return *options_; }
    ProgramSettings& settings() { return *settings_; }
    RecentFiles& recentFiles() { return *recent_; }
    bool exitDone() const { return exitDone_; }
    // The display's logical dots per inch, read at the end of the start; anything but 96
    // brings the font message unless the option turns it off.
    std::function<double()> logicalDpi;

signals:
    // Everything is closed; the event loop may end.
    void finished();

private:
    void openSavedPorts(bool noMidi);
    void writeSettings();
    void pollDrain();
    void warnOfLargeFonts();

    QSettings& store_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<ProgramSettings> settings_;
    std::unique_ptr<RecentFiles> recent_;
    std::unique_ptr<UserDialogs> ownDialogs_;
    UserDialogs* dialogs_;
    std::unique_ptr<OptionsWindow> options_;
    std::unique_ptr<MainWindow> main_;
    QTimer drainPoll_;
    bool exitDone_ = false;
};

}  // namespace quillmer::gui
