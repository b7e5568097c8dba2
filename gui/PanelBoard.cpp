#include "gui/PanelBoard.h"

#include <QFileInfo>

#include "engine/Placement.h"
#include "gui/ChannelDialog.h"
#include "gui/FillDialog.h"
#include "gui/PageTableEditor.h"
#include "gui/PanelWindows.h"
#include "gui/SliderBankDialog.h"
#include "gui/TableDialogs.h"
#include "gui/ConnectPopup.h"
#include "gui/ModuleStatusDialog.h"
#include "gui/UserDialogs.h"
#include "gui/Workspace.h"
#include "gui/panels/StatusIcon.h"
#include "modules/midi/MfxFile.h"
#include "modules/midi/MidiInputs.h"
#include "modules/midi/NoteOutputs.h"
#include "shell/EditCommands.h"
#include "shell/Session.h"

namespace quillmer::gui {

namespace {
constexpr int kSpacingTwips = 120;  // one snap-grid step between new panels
constexpr int kDefaultWidth = 1800;
constexpr int kDefaultHeight = 1200;
const QString kProduct = QStringLiteral("Quillmer");

QString trimmedLabel(std::string_view label) { return text(label).trimmed(); }

// The input's label as the connection list's title carries it: with one leading blank.
QString titleLabel(std::string_view label) {
    const QString l = text(label);
    return l.startsWith(QLatin1Char(' ')) ? l : QLatin1Char(' ') + l;
}
}  // namespace

std::vector<PlacedModule> readPlacedModules(Engine& engine) {
    std::vector<PlacedModule> placed;
    engine.forEachModule([&](Module& m) {
        placed.push_back({QString::fromStdString(m.Name), m.Page, m.Top, m.Left, m.Width, m.Height, m.Enabled != 0});
    });
    return placed;
}

std::pair<int, int> freeSpot(const std::vector<PlacedModule>& placed, int page, int frameWidth, QSize size) {
    if (!size.isValid()) size = QSize(kDefaultWidth, kDefaultHeight);
    // A grid step apart, so that the place is already snapped.
    const int step = kSpacingTwips;
    const int columns = std::max(1, (frameWidth - size.width() - kSpacingTwips) / step + 1);
    for (int cell = 0;; ++cell) {
        const QRect wanted(kSpacingTwips + cell % columns * step, kSpacingTwips + cell / columns * step,
                           size.width(), size.height());
        bool taken = false;
        for (const PlacedModule& m : placed)
            if (m.page == page && wanted.intersects(QRect(m.left, m.top, m.width, m.height)
                                                        .adjusted(-kSpacingTwips, -kSpacingTwips, kSpacingTwips, kSpacingTwips)))
                taken = true;
        if (!taken) return {wanted.top(), wanted.left()};
    }
}

QSize panelSizeTwips(const ModuleRegistry& registry, ModuleTypeId type) {
    const std::unique_ptr<Module> sample = registry.make(type);
    std::vector<InputFace> inputs(static_cast<size_t>(sample->inputCount()));
    const PanelFrame frame(panelSpec(type), QString(), QString(), inputs, nullptr);
    return frame.sizeTwips();
}

PanelBoard::PanelBoard(Session& session, UserDialogs& dialogs, Workspace& workspace, QWidget* mainWindow)
    : session_(session),
      dialogs_(dialogs),
      workspace_(workspace),
      mainWindow_(mainWindow),
      connect_(new ConnectPopup(mainWindow)),
      status_(new ModuleStatusDialog(mainWindow)),
      channel_(new ChannelDialog(mainWindow)) {
    connect(connect_, &ConnectPopup::chosen, this, &PanelBoard::inputChosen);
    connect(status_, &ModuleStatusDialog::decided, this, &PanelBoard::statusDecided);
    connect(channel_, &ChannelDialog::chosen, this, [this](int slot) {
        Gesture g;
        g.number = slot;
        {
            auto held = session_.engine.lock();
            Module* m = live(session_.engine, pending_.module, pending_.type, pending_.index);
            if (!m) return;
            const Editor& edit = panelSpec(m->type()).controls.at(static_cast<size_t>(pending_.control)).edit;
            session_.history.apply(EditKind::Setting, "Channel of " + m->Name, {}, [&] { edit(*m, session_.engine, g); });
        }
        refresh();
    });
}

PanelBoard::~PanelBoard() = default;  // the canvases own the frames, the main window the pop-ups

// --- reading ---

void PanelBoard::refresh() {
    {
        auto held = session_.engine.lock();
        collect(session_.engine);
    }
    draw();
}

bool PanelBoard::rosterChanged(Engine& engine) {
    rosterScratch_.clear();
    engine.forEachModule([this](Module& m) { rosterScratch_.push_back(&m); });
    return rosterScratch_ != roster_;
}

void PanelBoard::rebuildRoster() {
    std::vector<Slot> next;
    next.reserve(rosterScratch_.size());
    size_t old = 0;
    for (Module* m : rosterScratch_) {
        // Both lists run in type and index order, so the old slots are met in order.
        while (old < slots_.size() && slots_[old].module != m &&
               (slots_[old].type < m->type() || (slots_[old].type == m->type() && slots_[old].index < m->Index))) {
            leaving_.push_back(slots_[old].frame);
            ++old;
        }
        if (old < slots_.size() && slots_[old].module == m && slots_[old].name == QString::fromStdString(m->Name)) {
            next.push_back(std::move(slots_[old++]));
            continue;
        }
        Slot slot;
        slot.module = m;
        slot.type = m->type();
        slot.index = m->Index;
        slot.name = QString::fromStdString(m->Name);
        slot.caption = text(m->info().caption);
        const PanelSpec& spec = panelSpec(m->type());
        for (int row = 0; row < m->inputCount(); ++row) {
            const InputSpec& in = m->inputSpec(m->menuInput(row));
            const size_t r = static_cast<size_t>(row);
            slot.inputs.push_back({r < spec.inputLabels.size() ? spec.inputLabels[r] : trimmedLabel(in.label), text(in.tip)});
        }
        next.push_back(std::move(slot));
    }
    for (; old < slots_.size(); ++old) leaving_.push_back(slots_[old].frame);
    slots_ = std::move(next);
    roster_ = rosterScratch_;
    mapDue_ = true;
}

void PanelBoard::collect(Engine& engine) {
    if (rosterChanged(engine)) rebuildRoster();
    shownPage_ = engine.CurrentPage();
    for (Slot& slot : slots_) {
        Module& m = *slot.module;
        if (m.Page != slot.page || m.Top != slot.top || m.Left != slot.left) {
            if (m.Page != slot.page) mapDue_ = true;
            slot.page = m.Page;
            slot.top = m.Top;
            slot.left = m.Left;
            slot.moved = true;
        }
        if (slot.enabled != (m.Enabled != 0)) {
            slot.enabled = m.Enabled != 0;
            mapDue_ = true;
        }
        // Hidden pages keep their marks until they are shown.
        if (m.Page != shownPage_ || (slot.valuesRead && !m.viewChanged)) continue;
        const PanelSpec& spec = panelSpec(m.type());
        PanelValues& v = slot.values;
        v.inputCaptions.resize(slot.inputs.size());
        for (size_t row = 0; row < slot.inputs.size(); ++row)
            v.inputCaptions[row] = m.inputCaption(m.menuInput(static_cast<int>(row)), engine.names);
        if (spec.inputTip) {
            v.inputTips.resize(slot.inputs.size());
            for (size_t row = 0; row < slot.inputs.size(); ++row) v.inputTips[row] = spec.inputTip(m, m.menuInput(static_cast<int>(row)));
        }
        if (spec.nameTip) v.nameTip = spec.nameTip(m);
        v.durationLabel = spec.durationLabel ? spec.durationLabel(m) : DurationLabel::Dur;
        v.controls.resize(spec.controls.size());
        for (size_t i = 0; i < spec.controls.size(); ++i)
            if (spec.controls[i].read) v.controls[i] = spec.controls[i].read(m);
        v.statusPicture = statusPicture(m.priority(), m.Enabled != 0);
        m.viewChanged = false;
        slot.valuesRead = true;
        slot.valuesDue = true;
    }
    if (mapDue_) {
        placed_.clear();
        for (const Slot& slot : slots_)
            placed_.push_back({slot.name, slot.page, slot.top, slot.left, 0, 0, slot.enabled});
    }
}

// --- drawing ---

void PanelBoard::draw() {
    for (PanelFrame* gone : leaving_) delete gone;
    leaving_.clear();
    bool made = false;
    for (Slot& slot : slots_) {
        if (slot.page < 0 || slot.page >= kPageCount) continue;
        if (!slot.frame) {
            slot.frame = makeFrame(slot);
            made = true;
        }
        PanelFrame* frame = slot.frame;
        if (slot.moved && !frame->dragging()) {
            QWidget* canvas = workspace_.canvas(slot.page);
            if (frame->parentWidget() != canvas) frame->setParent(canvas);
            slot.shownTwips = QPoint(slot.left, slot.top);
            slot.shownAt = QPoint(workspace_.toPixels(slot.left), workspace_.toPixels(slot.top));
            frame->move(slot.shownAt);
            frame->setVisible(true);
            slot.moved = false;
        }
        if (slot.valuesDue) {
            frame->show(slot.values);
            slot.valuesDue = false;
        }
    }
    if (made) tellSizes();
    if (mapDue_) {
        mapDue_ = false;
        emit modulesChanged();
    }
}

void PanelBoard::tellSizes() {
    auto held = session_.engine.lock();
    for (Slot& slot : slots_) {
        Module* m = live(session_.engine, slot);
        if (!m || !slot.sizeTwips.isValid()) continue;
        m->Width = slot.sizeTwips.width();
        m->Height = slot.sizeTwips.height();
    }
}

void PanelBoard::remakeFrames() {
    for (Slot& slot : slots_) {
        if (!slot.frame) continue;
        // The old frame may be in the middle of the event that zoomed: it goes once that is over.
        slot.frame->hide();
        slot.frame->setObjectName(QString());
        slot.frame->deleteLater();
        slot.frame = nullptr;
        slot.moved = true;
        slot.valuesDue = slot.valuesRead;
    }
    draw();
}

PanelFrame* PanelBoard::makeFrame(Slot& slot) {
    auto* frame = new PanelFrame(panelSpec(slot.type), slot.name, slot.caption, slot.inputs, workspace_.canvas(slot.page));
    slot.sizeTwips = frame->sizeTwips();
    frame->mayDrag = [this] {
        auto held = session_.engine.lock();
        return !session_.engine.options.lockModules;
    };
    connect(frame, &PanelFrame::inputClicked, this, [this, frame](int row) { connectInput(frame, row); });
    connect(frame, &PanelFrame::statusClicked, this, [this, frame] { askStatus(frame); });
    connect(frame, &PanelFrame::gesture, this, [this, frame](int control, const Gesture& g) { forward(frame, control, g); });
    connect(frame, &PanelFrame::dialogWanted, this, [this, frame](int control) { askDialog(frame, control); });
    connect(frame, &PanelFrame::dragFinished, this, [this, frame](QPoint at) { dragEnded(frame, at); });
    slot.moved = true;
    return frame;
}

PanelFrame* PanelBoard::frame(const QString& name) const {
    for (const Slot& slot : slots_)
        if (slot.name == name) return slot.frame;
    return nullptr;
}

PanelBoard::Slot* PanelBoard::slotOf(const PanelFrame* frame) {
    for (Slot& slot : slots_)
        if (slot.frame == frame) return &slot;
    return nullptr;
}

Module* PanelBoard::live(Engine& engine, Module* module, ModuleTypeId type, int16_t index) {
    if (!module || type < 1 || type > kTypeCount) return nullptr;
    Module* m = engine.typeSlot(type).at(index);
    return m == module && m->Active != 0 ? m : nullptr;
}

// --- gestures ---

void PanelBoard::connectInput(PanelFrame* frame, int row) {
    Slot* slot = slotOf(frame);
    if (!slot) return;
    QString title;
    QStringList names;
    int position = 0;
    {
        auto held = session_.engine.lock();
        Engine& e = session_.engine;
        Module* m = live(e, *slot);
        if (!m || e.options.lockModules || row >= m->inputCount()) return;
        const int k = m->menuInput(row);
        title = QStringLiteral("Connect: ") + slot->name + titleLabel(m->inputSpec(k).label);
        names.reserve(static_cast<qsizetype>(e.names.sortedCount()));
        for (const std::string& name : e.names.SortedNameList()) names.push_back(QString::fromStdString(name));
        position = m->InputPosition.at(static_cast<size_t>(k));
        pending_ = {m, slot->type, slot->index, k, 0};
    }
    const QRect panel(frame->mapToGlobal(QPoint(0, 0)), frame->size());
    connect_->popUp(title, names, position, panel, mainWindow_->frameGeometry());
}

void PanelBoard::inputChosen(int position, const QString& name) {
    {
        auto held = session_.engine.lock();
        Engine& e = session_.engine;
        Module* m = live(e, pending_.module, pending_.type, pending_.index);
        if (!m) return;
        // Names may have come or gone while the list was open: the name decides.
        const std::string chosen = name.toStdString();
        if (e.names.sortedName(static_cast<uint16_t>(position)) != chosen) {
            position = e.names.sortedPosition(chosen);
            if (position < 0) return;
        }
        quillmer::connectInput(session_, *m, pending_.input, static_cast<uint16_t>(position));
    }
    refresh();
}

void PanelBoard::askStatus(PanelFrame* frame) {
    Slot* slot = slotOf(frame);
    if (!slot) return;
    int priorityIndex = 1;
    bool enabled = true;
    {
        auto held = session_.engine.lock();
        Module* m = live(session_.engine, *slot);
        if (!m) return;
        priorityIndex = priorityIndexOf(m->priority());
        enabled = m->Enabled != 0;
        pending_ = {m, slot->type, slot->index, 0, 0};
    }
    status_->ask(slot->name, priorityIndex, enabled, frame->mapTo(mainWindow_, QPoint(0, 0)));
}

void PanelBoard::statusDecided(const StatusChoice& choice) {
    if (choice.cancelled) return;
    if (choice.remove && panelSpec(pending_.type).askBeforeDelete) {
        QString name;
        for (const Slot& slot : slots_)
            if (slot.module == pending_.module) name = slot.name;
        if (!dialogs_.confirm(kProduct, QStringLiteral("Delete ") + name + QLatin1Char('?'))) return;
    }
    {
        auto held = session_.engine.lock();
        Module* m = live(session_.engine, pending_.module, pending_.type, pending_.index);
        if (!m) return;
        if (choice.remove)
            deleteModule(session_, *m);
        else
            session_.history.apply(EditKind::Setting, "Status of " + m->Name, {},
                                   [&] { session_.engine.applyStatus(*m, choice); });
    }
    refresh();
}

void PanelBoard::forward(PanelFrame* frame, int control, const Gesture& g) {
    Slot* slot = slotOf(frame);
    if (!slot) return;
    {
        auto held = session_.engine.lock();
        Module* m = live(session_.engine, *slot);
        const ControlSpec& c = panelSpec(slot->type).controls.at(static_cast<size_t>(control));
        const Editor& edit = c.edit;
        if (!m || !edit) return;
        // Keys typed into one box and the notches of one wheel or drag are one step; a click
        // is a step of its own.
        const bool stages = c.kind == ControlKind::StageRow;
        std::string gesture;
        if (g.kind != Gesture::Kind::Click)
            gesture = m->Name + '/' + std::to_string(control) + '/' + std::to_string(g.item);
        session_.history.apply(stages ? EditKind::StageValue : EditKind::Setting,
                               (stages ? "Stage of " : "Setting of ") + m->Name, gesture,
                               [&] { edit(*m, session_.engine, g); });
    }
    refresh();
}

FillDialog* PanelBoard::fillDialog() const { return fill_; }
PageTableEditor* PanelBoard::pageTable() const { return pageTable_; }

void PanelBoard::askDialog(PanelFrame* frame, int control) {
    Slot* slot = slotOf(frame);
    if (!slot) return;
    const ControlSpec& c = panelSpec(slot->type).controls.at(static_cast<size_t>(control));
    if (c.dialog == Dialog::Fill || c.dialog == Dialog::PageTable) {
        ModuleFinder find = [this, module = slot->module, type = slot->type, index = slot->index] {
            return live(session_.engine, module, type, index);
        };
        if (c.dialog == Dialog::Fill) {
            // A fill button with an editor tells its module what to fill; its reader's first
            // item ends the dialog's title.
            QString title = slot->name;
            if (c.edit) {
                auto held = session_.engine.lock();
                Module* m = live(session_.engine, *slot);
                if (!m) return;
                c.edit(*m, session_.engine, Gesture{});
                if (c.read) {
                    const Shown shown = c.read(*m);
                    if (!shown.items.empty()) title += QString::fromStdString(shown.items.front());
                }
            }
            fill_ = openFillDialog(session_.engine, dialogs_, find, title, mainWindow_);
        } else {
            pageTable_ = openPageTable(session_.engine, dialogs_, find, mainWindow_);
        }
        return;
    }
    if (c.dialog == Dialog::SliderSetup) {
        openSliderBankDialog(
            session_.engine,
            [this, module = slot->module, type = slot->type, index = slot->index] {
                return dynamic_cast<UFSldr*>(live(session_.engine, module, type, index));
            },
            mainWindow_);
        return;
    }
    if (c.dialog == Dialog::TableBank || c.dialog == Dialog::ToneTable) {
        int table = 0;
        {
            auto held = session_.engine.lock();
            const Module* m = live(session_.engine, *slot);
            if (!m) return;
            table = c.read ? c.read(*m).number & 127 : 0;
        }
        emit tableEditorWanted(c.dialog, table);
        return;
    }
    if (c.dialog == Dialog::ControlSliders || c.dialog == Dialog::PixelWindow) {
        PanelModuleFinder find = [this, module = slot->module, type = slot->type, index = slot->index] {
            return live(session_.engine, module, type, index);
        };
        if (c.dialog == Dialog::ControlSliders)
            toggleControlSliders(session_.engine, std::move(find), mainWindow_);
        else
            openPixelWindow(session_.engine, std::move(find), mainWindow_);
        return;
    }
    if (c.dialog == Dialog::PictureFile) {
        Gesture g;
        g.kind = Gesture::Kind::Text;
        g.text = dialogs_.openFileName(QStringLiteral("Select Picture"), QString(),
                                       QStringLiteral("Pictures (*.png *.jpg *.jpeg *.bmp *.gif)"))
                     .toStdString();
        if (!g.text.empty()) forward(frame, control, g);
        return;
    }
    if (c.dialog == Dialog::ChainFile) {
        QString folder;
        {
            auto held = session_.engine.lock();
            folder = QFileInfo(QString::fromStdString(session_.CurrentFileName)).absolutePath();
        }
        Gesture g;
        g.kind = Gesture::Kind::Text;
        g.text = dialogs_.openFileName(QStringLiteral("Select Chain File"), folder, QStringLiteral("Quillmer Modules (*.qmp)"))
                     .toStdString();
        forward(frame, control, g);
        return;
    }
    if (c.dialog == Dialog::OpenFile) {
        Gesture g;
        g.kind = Gesture::Kind::Text;
        g.text = dialogs_.openFileName(c.choices.at(0), QString(), c.choices.at(1)).toStdString();
        if (!g.text.empty()) forward(frame, control, g);
        return;
    }
    if (c.dialog == Dialog::MfxFile) {
        Gesture g;
        g.kind = Gesture::Kind::Text;
        g.text = dialogs_.openFileName(QStringLiteral("Select File to Load into Set buffer"), QString(),
                                       QStringLiteral("MIDI File Translation (*.mfx)"))
                     .toStdString();
        if (g.text.empty()) return;
        MfxList list;
        std::string error, reason;
        if (!loadMfxFile(g.text, list, error, reason)) {
            dialogs_.critical(QStringLiteral("Quillmer"), QString::fromStdString(error + "\n" + reason));
            return;
        }
        forward(frame, control, g);
        return;
    }
    int chanPort = 0;
    {
        auto held = session_.engine.lock();
        Module* m = live(session_.engine, *slot);
        if (!m) return;
        const auto* in = dynamic_cast<const MidiInModule*>(m);
        chanPort = in ? in->ChanPort : static_cast<const ChannelModule*>(m)->ChanPort;
        pending_ = {m, slot->type, slot->index, 0, control};
    }
    channel_->ask(slot->name, chanPort, frame->mapToGlobal(QPoint(frame->width(), 0)));
}

void PanelBoard::dragEnded(PanelFrame* frame, QPoint topLeft) {
    Slot* slot = slotOf(frame);
    if (!slot) return;
    auto held = session_.engine.lock();
    Module* m = live(session_.engine, *slot);
    if (!m) return;
    // The way the panel went, in twips at the zoom, from where it was shown: a panel let go
    // where it was taken keeps its place to the twip. The next update snaps it under
    // auto-align and moves it to a neighbour page past an edge.
    const QPoint by = topLeft - slot->shownAt;
    moveModule(session_, *m, m->Page, slot->shownTwips.y() + workspace_.toTwips(by.y()),
               slot->shownTwips.x() + workspace_.toTwips(by.x()));
    slot->top = m->Top;
    slot->left = m->Left;
}

void PanelBoard::createAtCursor(int page, QPoint pixel) {
    QString refused;
    {
        auto held = session_.engine.lock();
        Engine& e = session_.engine;
        if (page != e.CurrentPage()) return;
        e.placeAtCursor(workspace_.toTwips(pixel.y()), workspace_.toTwips(pixel.x()));
        try {
            session_.history.apply(EditKind::Place, "Place", {}, [&] { e.NewLastModule(); });
        } catch (const PlacementError& error) {
            refused = QString::fromStdString(error.what());
        }
    }
    if (!refused.isEmpty()) dialogs_.critical(QStringLiteral("Quillmer"), refused);
    refresh();
}

}  // namespace quillmer::gui
