#pragma once
// The options window, "ops": MIDI ports and their options on one page, the program's
// options on the other. It lives as long as the program; "Exit" only hides it.

#include <QDialog>

class QLabel;

namespace quillmer {
class Session;
}

namespace quillmer::gui {

class PortsPanel;
class ProgramOptionsPanel;
class UserDialogs;
struct ProgramSettings;

class OptionsWindow : public QDialog {
    Q_OBJECT
public:
    OptionsWindow(Session& session, ProgramSettings& settings, UserDialogs& dialogs, QWidget* parent = nullptr);

    // Shows it with the engine's present state, device lists read again.
    void showOptions();
    void reload();
    // A device that could not be opened, with what to do about it, above the tabs until it
    // is shown again with an empty text.
    void showPortProblem(const QString& text);
    QLabel* portProblem() const { return problem_; }

    PortsPanel* ports() const { return ports_; }
    ProgramOptionsPanel* program() const { return program_; }

signals:
    void edited();

private:
    PortsPanel* ports_;
    ProgramOptionsPanel* program_;
    QLabel* problem_;
};

}  // namespace quillmer::gui
