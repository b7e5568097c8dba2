#include "gui/OptionsWindow.h"

#include <QHBoxLayout>
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

void OptionsWindow::showOptions() {
    reload();
    show();
    raise();
    activateWindow();
}

}  // namespace quillmer::gui
