#include "gui/ProgramOptionsPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include "gui/OptionFlags.h"
#include "gui/ProgramSettings.h"
#include "gui/UserDialogs.h"
#include "platform/DesktopDevices.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
constexpr int kMaxAbsClockMs = 32767;
constexpr int kMaxWholeDelay = 32767;

// The chosen devices open again the new way (lock held).
void switchJackPath(MidiPorts& ports, bool sampleAccurate) {
    if (sampleAccurateJack() == sampleAccurate) return;
    setSampleAccurateJack(sampleAccurate);
    const std::string jack = apiPrefix(MidiPortApi::Jack);
    for (int port = 0; port < kPortCount; ++port) {
        if (const std::string name = ports.outputName(port); name.rfind(jack, 0) == 0) ports.chooseOutput(port, name);
        if (const std::string name = ports.inputName(port); name.rfind(jack, 0) == 0) ports.chooseInput(port, name);
    }
}

QSpinBox* numberBox(QWidget* parent, const char* name, int highest, const char* tip) {
    auto* box = new QSpinBox(parent);
    box->setObjectName(QLatin1String(name));
    box->setRange(0, highest);
    box->setKeyboardTracking(false);
    box->setToolTip(QLatin1String(tip));
    return box;
}
}  // namespace

ProgramOptionsPanel::ProgramOptionsPanel(Session& session, ProgramSettings& settings, UserDialogs& dialogs,
                                         QWidget* parent)
    : QWidget(parent), session_(session), settings_(settings), dialogs_(dialogs) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(makeOptionBoxes());
    auto* row = new QHBoxLayout;
    row->addWidget(makeValues(), 1);
    row->addWidget(makeProgramChange(), 1);
    column->addLayout(row);
    column->addStretch(1);
    reload();
}

QCheckBox* ProgramOptionsPanel::addFlag(const char* name, const char* caption, const char* tip,
                                        std::function<bool()> read, std::function<void(bool)> write) {
    auto* box = new QCheckBox(QLatin1String(caption), flagBox_);
    box->setObjectName(QLatin1String(name));
    if (tip) box->setToolTip(QLatin1String(tip));
    connect(box, &QCheckBox::toggled, this, [this, write](bool on) {
        {
            auto held = session_.engine.lock();
            write(on);
        }
        emit edited();
    });
    flags_.emplace_back(box, std::move(read));
    return box;
}

QWidget* ProgramOptionsPanel::makeOptionBoxes() {
    auto* group = new QGroupBox(QStringLiteral("Program Options"), this);
    flagBox_ = group;
    EngineOptions& o = session_.engine.options;
    const auto option = [&o](bool EngineOptions::*field) {
        return std::pair{std::function<bool()>([&o, field] { return o.*field; }),
                         std::function<void(bool)>([&o, field](bool on) { o.*field = on; })};
    };
    std::vector<QCheckBox*> boxes;
    const auto add = [&](const char* name, const char* caption, const char* tip, auto readWrite) {
        boxes.push_back(addFlag(name, caption, tip, readWrite.first, readWrite.second));
    };
    add("chkResetModules", "Reset Modules", "Starting the clock makes modules resend their settings",
        option(&EngineOptions::resetModules));
    add("chkTrigs", "Triggers Off", "Check to inhibit TLoad, TStart, etc.", option(&EngineOptions::triggersOff));
    // Bits of the program's settings that the engine doesn't hold.
    const auto programFlag = [this](int bit) {
        return std::pair{std::function<bool()>([this, bit] { return (settings_.sysFlags & bit) != 0; }),
                         std::function<void(bool)>([this, bit](bool on) {
                             settings_.sysFlags = on ? settings_.sysFlags | bit : settings_.sysFlags & ~bit;
                         })};
    };
    add("chkPlayResets", "Play Resets", "Run resets the modules", programFlag(sysflag::PlayResets));
    add("chkXpTempo", "Extended Tempo", "Tempo up to 1000 rather than 254",
        std::pair{std::function<bool()>([&o] { return o.extendedTempo; }),
                  std::function<void(bool)>([this](bool on) { session_.engine.setExtendedTempo(on); })});
    extendedTempo_ = boxes.back();
    add("chkHighPriority", "High Priority", "Keep the program at high priority", option(&EngineOptions::highPriority));
    add("chkAutoAlign", "Auto Align", "Snap panels to the grid", option(&EngineOptions::autoAlign));
    add("chkLockModules", "Lock Modules", "No moving or connecting of this patch's modules (kept in the patch)",
        std::pair{std::function<bool()>([&o] { return o.lockModules; }), std::function<void(bool)>([this](bool on) {
                      session_.engine.options.lockModules = on;
                      session_.SetModified(true);
                  })});
    add("chkBankMSB", "Bank MSB", "A bank is Control Change 0 alone", option(&EngineOptions::bankMsb));
    add("chkNoFontMsg", "Warning Off", "No message at start about a large or nonstandard font size",
        programFlag(sysflag::NoFontMsg));
    add("chkExactTempo", "Exact Tempo", "The tick lasts exactly 2500/Tempo ms rather than whole milliseconds",
        std::pair{std::function<bool()>([&o] { return o.exactTempo; }),
                  std::function<void(bool)>([this](bool on) { session_.engine.setExactTempo(on); })});
    add("chkSampleAccurateJack", "Sample-accurate JACK",
        "JACK ports go through Quillmer's own client, every message at its frame; off: through RtMidi",
        std::pair{std::function<bool()>([] { return sampleAccurateJack(); }),
                  std::function<void(bool)>([this](bool on) { switchJackPath(session_.engine.ports, on); })});

    auto* grid = new QGridLayout(group);
    for (size_t i = 0; i < boxes.size(); ++i) grid->addWidget(boxes[i], static_cast<int>(i / 4), static_cast<int>(i % 4));
    return group;
}

QWidget* ProgramOptionsPanel::makeValues() {
    auto* group = new QGroupBox(QStringLiteral("Clocks and Seeds"), this);
    auto* form = new QFormLayout(group);
    absClockA_ = numberBox(group, "txAbsClk0", kMaxAbsClockMs, "First absolute clock in ms, 0 off (kept in the patch)");
    absClockB_ = numberBox(group, "txAbsClk1", kMaxAbsClockMs, "Second absolute clock in ms, 0 off (kept in the patch)");
    randomSeed_ = numberBox(group, "bxRanSeed", std::numeric_limits<int32_t>::max(), "Random seed, 0 for none");
    wholeDelay_ = numberBox(group, "bxWholeDelay", kMaxWholeDelay, "Whole notes before \"~ Whole\" counts");
    form->addRow(QStringLiteral("Abs Clock A (ms)"), absClockA_);
    form->addRow(QStringLiteral("Abs Clock B (ms)"), absClockB_);
    form->addRow(QStringLiteral("Random Seed"), randomSeed_);
    form->addRow(QStringLiteral("Whole Delay"), wholeDelay_);

    const auto setAbsClock = [this](bool first, int ms) {
        {
            auto held = session_.engine.lock();
            Engine& e = session_.engine;
            (first ? e.options.absClockA : e.options.absClockB) = ms;
            if (e.timersRunning()) e.timers().setInterval(first ? e.absClockATimer() : e.absClockBTimer(), ms);
            session_.SetModified(true);
        }
        emit edited();
    };
    connect(absClockA_, &QSpinBox::valueChanged, this, [setAbsClock](int ms) { setAbsClock(true, ms); });
    connect(absClockB_, &QSpinBox::valueChanged, this, [setAbsClock](int ms) { setAbsClock(false, ms); });
    connect(randomSeed_, &QSpinBox::valueChanged, this, [this](int seed) {
        auto held = session_.engine.lock();
        session_.engine.options.randomSeed = seed;
    });
    connect(wholeDelay_, &QSpinBox::valueChanged, this, [this](int wholes) {
        auto held = session_.engine.lock();
        session_.engine.options.wholeDelay = static_cast<int16_t>(wholes);
    });
    return group;
}

QWidget* ProgramOptionsPanel::makeProgramChange() {
    auto* group = new QGroupBox(QStringLiteral("Snapshots"), this);
    auto* column = new QVBoxLayout(group);
    auto* row = new QHBoxLayout;
    progChg_ = new QCheckBox(QStringLiteral("ProgChg -> Snapshots"), group);
    progChg_->setObjectName(QStringLiteral("chkProgChg"));
    progChg_->setToolTip(QStringLiteral("A program change on this channel recalls that snapshot"));
    progChgChannel_ = new QComboBox(group);
    progChgChannel_->setObjectName(QStringLiteral("cbChan"));
    for (int slot = 0; slot < kChannelSlots; ++slot) progChgChannel_->addItem(QString::fromStdString(channelSlotCaption(slot)));
    row->addWidget(progChg_);
    row->addWidget(progChgChannel_);
    row->addStretch(1);
    column->addLayout(row);
    clearSnapshots_ = new QPushButton(QStringLiteral("Clear snapshots"), group);
    clearSnapshots_->setObjectName(QStringLiteral("cmdClearPatches"));
    column->addWidget(clearSnapshots_, 0, Qt::AlignLeft);
    column->addStretch(1);

    connect(progChg_, &QCheckBox::toggled, this, [this](bool on) {
        auto held = session_.engine.lock();
        session_.engine.ports.progChgToSnapshot = on;
    });
    connect(progChgChannel_, &QComboBox::currentIndexChanged, this, [this](int slot) {
        auto held = session_.engine.lock();
        session_.engine.ports.progChgChannelSlot = slot;
    });
    connect(clearSnapshots_, &QPushButton::clicked, this, &ProgramOptionsPanel::clearSnapshots);
    return group;
}

void ProgramOptionsPanel::clearSnapshots() {
    if (!dialogs_.confirm(QStringLiteral("Quillmer"), QString::fromLatin1(kClearQuestion))) return;
    {
        auto held = session_.engine.lock();
        session_.snapshots.WipePatchList();
        session_.SetModified(true);
    }
    emit edited();
}

void ProgramOptionsPanel::reload() {
    auto held = session_.engine.lock();
    const Engine& e = session_.engine;
    for (auto& [box, read] : flags_) {
        const QSignalBlocker blocker(box);
        box->setChecked(read());
    }
    const std::pair<QSpinBox*, int> values[] = {{absClockA_, e.options.absClockA}, {absClockB_, e.options.absClockB},
                                                {randomSeed_, e.options.randomSeed}, {wholeDelay_, e.options.wholeDelay}};
    for (auto [box, value] : values) {
        const QSignalBlocker blocker(box);
        box->setValue(value);
    }
    const QSignalBlocker a(progChg_), b(progChgChannel_);
    progChg_->setChecked(e.ports.progChgToSnapshot);
    progChgChannel_->setCurrentIndex(e.ports.progChgChannelSlot);
}

}  // namespace quillmer::gui
