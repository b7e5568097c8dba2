#include "gui/OptionsWindow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "gui/PortsPanel.h"
#include "gui/ProgramOptionsPanel.h"
#include "shell/Session.h"

namespace quillmer::gui {

OptionsWindow::OptionsWindow(Session& session, ProgramSettings& settings, UserDialogs& dialogs, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("ops"));
    setWindowTitle(QStringLiteral("Quillmer Options"));
    setModal(false);

    auto* column = new QVBoxLayout(this);
    problem_ = new QLabel(this);
    problem_->setObjectName(QStringLiteral("lblPortProblem"));
    problem_->setWordWrap(true);
    problem_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    problem_->setStyleSheet(QStringLiteral("QLabel { border: 1px solid #c0392b; padding: 6px; }"));
    problem_->hide();
    column->addWidget(problem_);
    auto* tabs = new QTabWidget(this);
    ports_ = new PortsPanel(session.engine, tabs);
    program_ = new ProgramOptionsPanel(session, settings, dialogs, tabs);
    tabs->addTab(ports_, QStringLiteral("MIDI"));
    tabs->addTab(program_, QStringLiteral("Program"));
    column->addWidget(tabs);

    auto* buttons = new QHBoxLayout;
    auto* rescan = new QPushButton(QStringLiteral("Rescan Devices"), this);
    rescan->setToolTip(QStringLiteral("Read the lists of MIDI devices again"));
    auto* exit = new QPushButton(QStringLiteral("Exit"), this);
    exit->setObjectName(QStringLiteral("cmdExit"));
    exit->setDefault(true);
    buttons->addWidget(rescan);
    buttons->addStretch(1);
    buttons->addWidget(exit);
    column->addLayout(buttons);

    connect(rescan, &QPushButton::clicked, ports_, &PortsPanel::reload);
    connect(exit, &QPushButton::clicked, this, &QDialog::hide);
    connect(program_, &ProgramOptionsPanel::edited, this, &OptionsWindow::edited);
}

void OptionsWindow::reload() {
    ports_->reload();
    program_->reload();
}

namespace {
// What a user can do about an output that didn't open.
QString remedyFor(const QString& text) {
    if (text.contains(QStringLiteral("no sound output")))
        return QStringLiteral("Start a sound server (PipeWire, PulseAudio or JACK) or plug in a sound card, then choose "
                              "the built-in synth again below; or choose another MIDI output.");
    if (text.contains(QStringLiteral("SoundFont"), Qt::CaseInsensitive) || text.contains(QStringLiteral(".sf2")))
        return QStringLiteral("Install a General MIDI SoundFont (the package timgm6mb-soundfont or fluid-soundfont-gm), "
                              "then choose the built-in synth again below.");
    return QStringLiteral("Choose another device below, or connect the device and press Rescan Devices.");
}
}  // namespace

void OptionsWindow::showPortProblem(const QString& text) {
    if (text.isEmpty()) {
        problem_->clear();
        problem_->hide();
        return;
    }
    problem_->setText(QStringLiteral("No MIDI output could be opened: ") + text + QStringLiteral("\n") + remedyFor(text));
    problem_->show();
}

void OptionsWindow::showOptions() {
    reload();
    show();
    raise();
    activateWindow();
}

}  // namespace quillmer::gui
