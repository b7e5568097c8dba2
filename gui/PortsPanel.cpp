#include "gui/PortsPanel.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

#include "engine/Engine.h"

namespace quillmer::gui {

namespace {
struct OptionBox {
    int bit;
    const char* name;
    const char* caption;
};
constexpr OptionBox kPortOptions[] = {
    {portoption::ActiveSensing, "chActiveSensing", "Active Sensing"},
    {portoption::AllNotesOff, "chAllNotesOff", "All Notes Off"},
    {portoption::AllKeysOff, "chAllKeysOff", "All Keys Off"},
    {portoption::ResetControls, "chResetControls", "Reset Controls"},
};
constexpr OptionBox kTriggers[] = {
    {trigger::NoteOn, "chkMINoteOn", "Note On"},      {trigger::NoteOff, "chkMINoteOff", "Note Off"},
    {trigger::PitchBend, "chkMINPBend", "Pitch Bend"}, {trigger::Control, "chkMINCtrl", "Controllers"},
    {trigger::Poly, "chkMINPoly", "Poly Pressure"},   {trigger::NrpnLsb, "chkNrpnLsb", "NRPN LSB"},
    {trigger::NrpnMsb, "chkNrpnMsb", "NRPN MSB"},
};
const char* const kModeCaptions[3][3] = {{"None", "Master", "Slave"}, {"None", "Send", "Receive"}};

QString portLetter(int port) { return QString(QLatin1Char(static_cast<char>('A' + port))); }

void fill(QComboBox* box, const std::vector<std::string>& names, const std::string& chosen) {
    const QSignalBlocker blocker(box);
    box->clear();
    for (const std::string& name : names) box->addItem(QString::fromStdString(name));
    int index = box->findText(QString::fromStdString(chosen));
    if (index < 0) index = box->count() - 1;  // "None Selected"
    box->setCurrentIndex(index);
}
}  // namespace

PortsPanel::PortsPanel(Engine& engine, QWidget* parent) : QWidget(parent), engine_(engine) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("SSTab1"));
    for (int port = 0; port < kPortCount; ++port) tabs_->addTab(makePortPage(port), QStringLiteral("Port ") + portLetter(port));
    column->addWidget(tabs_);
    auto* row = new QHBoxLayout;
    row->addWidget(makeTimingBox(), 1);
    row->addWidget(makeTriggerBox(), 1);
    column->addLayout(row);
    reload();
}

QWidget* PortsPanel::makePortPage(int port) {
    auto* page = new QWidget(tabs_);
    auto* form = new QFormLayout(page);
    const auto p = static_cast<size_t>(port);
    outputBoxes_[p] = new QComboBox(page);
    outputBoxes_[p]->setObjectName(QStringLiteral("cbMIDIOut%1").arg(port));
    inputBoxes_[p] = new QComboBox(page);
    inputBoxes_[p]->setObjectName(QStringLiteral("cbMIDIIn%1").arg(port));
    form->addRow(QStringLiteral("MIDI Out"), outputBoxes_[p]);
    form->addRow(QStringLiteral("MIDI In"), inputBoxes_[p]);
    connect(outputBoxes_[p], &QComboBox::textActivated, this, [this, port](const QString& name) { chooseOutput(port, name); });
    connect(inputBoxes_[p], &QComboBox::textActivated, this, [this, port](const QString& name) { chooseInput(port, name); });

    auto* options = new QGridLayout;
    for (size_t i = 0; i < std::size(kPortOptions); ++i) {
        const OptionBox& o = kPortOptions[i];
        auto* box = new QCheckBox(QLatin1String(o.caption), page);
        box->setObjectName(QLatin1String(o.name) + QString::number(port));
        options->addWidget(box, static_cast<int>(i / 2), static_cast<int>(i % 2));
        portOptionBoxes_[p][i] = box;
        connect(box, &QCheckBox::toggled, this, [this, port, bit = o.bit](bool on) { setPortOption(port, bit, on); });
    }
    form->addRow(QString(), options);
    return page;
}

QWidget* PortsPanel::makeTimingBox() {
    auto* box = new QWidget(this);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    auto* latencyRow = new QFormLayout;
    latency_ = new QLineEdit(box);
    latency_->setObjectName(QStringLiteral("txLatency"));
    latency_->setMaximumWidth(latency_->fontMetrics().horizontalAdvance(QStringLiteral("000000")) + 12);
    latency_->setToolTip(QStringLiteral("MIDI latency in milliseconds, 0 to 1000; 0 sends at once"));
    latencyRow->addRow(QStringLiteral("Latency (ms)"), latency_);
    column->addLayout(latencyRow);
    connect(latency_, &QLineEdit::editingFinished, this, [this] {
        std::string shown;
        {
            auto held = engine_.lock();
            shown = engine_.ports.setLatencyText(latency_->text().trimmed().toStdString());
        }
        latency_->setText(QString::fromStdString(shown));
    });

    const auto modeGroup = [&](const char* title, const char* name, int which, std::array<QRadioButton*, 3>& buttons) {
        auto* group = new QGroupBox(QLatin1String(title), box);
        group->setObjectName(QLatin1String(name));
        auto* row = new QHBoxLayout(group);
        auto* exclusive = new QButtonGroup(group);
        for (int i = 0; i < 3; ++i) {
            auto* b = new QRadioButton(QLatin1String(kModeCaptions[which][i]), group);
            buttons[static_cast<size_t>(i)] = b;
            exclusive->addButton(b, i);
            row->addWidget(b);
        }
        column->addWidget(group);
        return exclusive;
    };
    QButtonGroup* sync = modeGroup("MIDI Sync", "Option1", 0, syncButtons_);
    QButtonGroup* remote = modeGroup("Remote Ctrl", "Option2", 1, remoteButtons_);
    connect(sync, &QButtonGroup::idClicked, this, [this](int mode) {
        auto held = engine_.lock();
        const auto chosen = static_cast<SyncMode>(mode);
        if (chosen == engine_.options.syncMode) return;
        // The tick's clock changes hands: a slave is clocked by port A, the others by the timer.
        engine_.StopTimers();
        engine_.options.syncMode = chosen;
        engine_.StartTimers();
    });
    connect(remote, &QButtonGroup::idClicked, this, [this](int mode) {
        auto held = engine_.lock();
        engine_.ports.remoteMode = static_cast<RemoteMode>(mode);
    });
    column->addStretch(1);
    return box;
}

QWidget* PortsPanel::makeTriggerBox() {
    auto* group = new QGroupBox(QStringLiteral("MIDI Input Triggers"), this);
    group->setToolTip(QStringLiteral("Input that runs the patch at once rather than at the next tick"));
    auto* grid = new QGridLayout(group);
    for (size_t i = 0; i < std::size(kTriggers); ++i) {
        const OptionBox& t = kTriggers[i];
        auto* box = new QCheckBox(QLatin1String(t.caption), group);
        box->setObjectName(QLatin1String(t.name));
        grid->addWidget(box, static_cast<int>(i / 2), static_cast<int>(i % 2));
        triggerBoxes_[i] = box;
        connect(box, &QCheckBox::toggled, this, [this, bit = t.bit](bool on) { setTrigger(bit, on); });
    }
    return group;
}

QCheckBox* PortsPanel::triggerBox(int bit) const {
    for (size_t i = 0; i < std::size(kTriggers); ++i)
        if (kTriggers[i].bit == bit) return triggerBoxes_[i];
    return nullptr;
}

void PortsPanel::chooseOutput(int port, const QString& name) {
    {
        auto held = engine_.lock();
        engine_.ports.chooseOutput(port, name.toStdString());
    }
    showState();  // a device chosen here may have left another port
}

void PortsPanel::chooseInput(int port, const QString& name) {
    {
        auto held = engine_.lock();
        engine_.ports.chooseInput(port, name.toStdString());
    }
    showState();
}

void PortsPanel::setPortOption(int port, int bit, bool on) {
    auto held = engine_.lock();
    int32_t& options = engine_.ports.PortOptions[static_cast<size_t>(port)];
    options = on ? options | bit : options & ~bit;
}

void PortsPanel::setTrigger(int bit, bool on) {
    {
        auto held = engine_.lock();
        engine_.ports.setTrigger(bit, on);
    }
    showState();  // the controller and NRPN triggers exclude each other
}

void PortsPanel::reload() {
    std::vector<std::string> outputs, inputs;
    std::array<std::string, kPortCount> outputNames, inputNames;
    {
        auto held = engine_.lock();
        outputs = engine_.ports.outputChoices();
        inputs = engine_.ports.inputChoices();
        for (int port = 0; port < kPortCount; ++port) {
            outputNames[static_cast<size_t>(port)] = engine_.ports.outputName(port);
            inputNames[static_cast<size_t>(port)] = engine_.ports.inputName(port);
        }
    }
    for (size_t p = 0; p < kPortCount; ++p) {
        fill(outputBoxes_[p], outputs, outputNames[p]);
        fill(inputBoxes_[p], inputs, inputNames[p]);
    }
    showState();
}

void PortsPanel::showState() {
    auto held = engine_.lock();
    MidiPorts& ports = engine_.ports;
    for (int port = 0; port < kPortCount; ++port) {
        const auto p = static_cast<size_t>(port);
        for (QComboBox* box : {outputBoxes_[p], inputBoxes_[p]}) {
            const QSignalBlocker blocker(box);
            const std::string& name = box == outputBoxes_[p] ? ports.outputName(port) : ports.inputName(port);
            const int index = box->findText(QString::fromStdString(name));
            box->setCurrentIndex(index < 0 ? box->count() - 1 : index);
        }
        for (size_t i = 0; i < std::size(kPortOptions); ++i) {
            const QSignalBlocker blocker(portOptionBoxes_[p][i]);
            portOptionBoxes_[p][i]->setChecked((ports.PortOptions[p] & kPortOptions[i].bit) != 0);
        }
    }
    latency_->setText(QString::number(ports.Latency()));
    for (size_t i = 0; i < std::size(kTriggers); ++i) {
        const QSignalBlocker blocker(triggerBoxes_[i]);
        triggerBoxes_[i]->setChecked((ports.MidiInTriggerMask() & kTriggers[i].bit) != 0);
    }
    syncButtons_[static_cast<size_t>(engine_.options.syncMode)]->setChecked(true);
    remoteButtons_[static_cast<size_t>(ports.remoteMode)]->setChecked(true);
}

}  // namespace quillmer::gui
