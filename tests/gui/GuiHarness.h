#pragma once
// The desktop program in virtual time, with a private settings file and every question
// answered from a script.

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>
#include <deque>
#include <fstream>
#include <memory>
#include <vector>

#include "engine/VirtualTimerService.h"
#include "gui/MainWindow.h"
#include "gui/Program.h"
#include "gui/UserDialogs.h"
#include "modules/BuiltTypes.h"
#include "shell/Session.h"

namespace quillmer::testing {

using gui::SaveAnswer;

// Answers questions from queues and remembers what was asked. An unexpected question fails
// the test and gets the harmless answer.
struct ScriptedDialogs final : gui::UserDialogs {
    struct Asked {
        QString title;
        QString text;
    };

    std::deque<SaveAnswer> saveAnswers;
    std::deque<bool> confirmAnswers;
    std::deque<QString> openAnswers;
    std::deque<QString> saveAsAnswers;

    std::vector<QString> saveQuestions;
    std::vector<bool> cancelOffered;
    std::vector<Asked> confirms, criticals, informations, openDialogs, saveDialogs;

    SaveAnswer askSaveChanges(const QString& text, bool canCancel) override {
        saveQuestions.push_back(text);
        cancelOffered.push_back(canCancel);
        return take(saveAnswers, canCancel ? SaveAnswer::Cancel : SaveAnswer::No, "save question");
    }
    bool confirm(const QString& title, const QString& text) override {
        confirms.push_back({title, text});
        return take(confirmAnswers, false, "confirmation");
    }
    void critical(const QString& title, const QString& text) override { criticals.push_back({title, text}); }
    void information(const QString& title, const QString& text) override { informations.push_back({title, text}); }
    QString openFileName(const QString& title, const QString&, const QString& filter) override {
        openDialogs.push_back({title, filter});
        return take(openAnswers, QString(), "open dialog");
    }
    QString saveFileName(const QString& title, const QString&, const QString& filter) override {
        saveDialogs.push_back({title, filter});
        return take(saveAsAnswers, QString(), "save dialog");
    }

private:
    template <class T>
    static T take(std::deque<T>& answers, T fallback, const char* what) {
        if (answers.empty()) {
            ADD_FAILURE() << "unexpected " << what;
            return fallback;
        }
        T answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

inline void processEvents() {
    for (int i = 0; i < 3; ++i) QApplication::processEvents();
}

// Lets the program's own Qt timers (the exit's drain poll) have their turn: a little real
// time with events processed.
inline void letQtTimersRun(int rounds = 4) {
    for (int i = 0; i < rounds; ++i) {
        QThread::msleep(4);
        QApplication::processEvents();
    }
}

struct GuiHarness {
    explicit GuiHarness(gui::StartOptions options = noMidi(), MidiDeviceProvider* provider = nullptr)
        : store(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat) {
        start(options, provider);
    }
    ~GuiHarness() { program.reset(); }

    static gui::StartOptions noMidi() {
        gui::StartOptions o;
        o.noMidi = true;
        return o;
    }

    void start(gui::StartOptions options = noMidi(), MidiDeviceProvider* provider = nullptr) {
        program = std::make_unique<gui::Program>(timers, builtTypes(), store, provider, &dialogs);
        program->logicalDpi = [this] { return dpi; };
        program->start(options);
        window().show();
        processEvents();
    }
    // Closes the main window and lets the exit run to its end in virtual time.
    bool exitProgram(int64_t drainMs = 1200) {
        window().close();
        processEvents();
        for (int64_t ms = 0; ms < drainMs && !program->exitDone(); ms += 50) {
            timers.advanceByMs(50);
            letQtTimersRun();
        }
        return program->exitDone();
    }
    // A restart of the program on the same settings.
    void restart(gui::StartOptions options = noMidi()) {
        program.reset();
        start(options);
    }

    gui::MainWindow& window() { return program->mainWindow(); }
    Session& session() { return program->session(); }
    Engine& engine() { return program->session().engine; }

    size_t moduleCount() {
        auto held = engine().lock();
        size_t n = 0;
        engine().forEachModule([&](Module&) { ++n; });
        return n;
    }
    void placeModule(std::string_view type) {
        window().placeModule(*typeIdByName(type));
        processEvents();
    }
    QString file(const QString& name) const { return folder.filePath(name); }
    void writeFile(const QString& name, const std::string& bytes) const {
        std::ofstream out(file(name).toStdString(), std::ios::binary);
        out << bytes;
    }

    QTemporaryDir folder;
    VirtualTimerService timers;
    QSettings store;
    ScriptedDialogs dialogs;
    double dpi = 96;  // the screen the program believes it has
    std::unique_ptr<gui::Program> program;
};

}  // namespace quillmer::testing
