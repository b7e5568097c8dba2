#include "modules/sequencers/MatrixTypes.h"

#include <algorithm>
#include <charconv>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxValue = 127;

std::string sizeName(int columns, int rows) { return std::to_string(columns) + "x" + std::to_string(rows); }

std::string trimmedName(const std::string& fixed) {
    const size_t end = fixed.find_last_not_of(' ');
    return end == std::string::npos ? std::string() : fixed.substr(0, end + 1);
}

// A page name read as a number; 0 when it isn't one.
int nameAsNumber(const std::string& name) {
    const size_t start = name.find_first_not_of(' ');
    if (start == std::string::npos) return 0;
    int value = 0;
    std::from_chars(name.data() + start, name.data() + name.size(), value);
    return value;
}
}  // namespace

ModuleTypeId matrixTypeId(int columns, int rows) { return *typeIdByName("Matrix" + sizeName(columns, rows)); }
ModuleTypeId matrixOutputTypeId(int columns, int rows) { return *typeIdByName("MOut" + sizeName(columns, rows)); }

MatrixSequencer* findMatrix(Engine& engine, int columns, int rows, int index) {
    if (index < 0 || index > INT16_MAX) return nullptr;
    Module* m = engine.typeSlot(matrixTypeId(columns, rows)).at(static_cast<int16_t>(index));
    if (m == nullptr || m->Active == 0) return nullptr;
    return dynamic_cast<MatrixSequencer*>(m);
}

// --- MatrixSequencer ---

MatrixSequencer::MatrixSequencer(ModuleTypeId type, GridSize size, MatrixAutomata automata)
    : Module(type, kInputs),
      size_(size),
      automata_(automata),
      Pages(static_cast<size_t>(kPages * size.cells()), 0),
      storedRows_(static_cast<size_t>(snapshotBytes()) * kSnapshotCount, 0) {
    if (automata_ == MatrixAutomata::EightRowModes) {
        for (int s = 0; s < kSnapshotCount; ++s)
            storedRows_[static_cast<size_t>((s + 1) * snapshotBytes() - 1)] = kDefaultRule;
    }
}

int MatrixSequencer::reduceColumn(int value) const {
    return size_.columns == 12 ? value % 12 : value & (size_.columns - 1);
}

int MatrixSequencer::snapshotBytes() const {
    return size_.cells() + 2 + (automata_ == MatrixAutomata::EightRowModes ? 1 : 0);
}

void MatrixSequencer::update(Engine& engine) {
    if (grid_->outsideWrite) {
        grid_->outsideWrite = false;
        std::copy_n(grid_->cells.begin(), size_.cells(), Pages.begin() + static_cast<ptrdiff_t>(pageInForce() * size_.cells()));
        cellsChanged();
        SendOut();
    }

    const int p = in(kPage);
    if (p != LastPage) {
        LastPage = p;
        if (p != 0) {
            if (Mode == CAMode) {
                // In CA mode a page is a stored rule, its name the rule's text.
                const int rule = nameAsNumber(pageName(p));
                if (rule != 0) {
                    Rule = static_cast<uint8_t>(rule);
                    viewChanged = true;
                }
            } else {
                const auto stored = page(p);
                bool changed = false;
                for (size_t i = 0; i < stored.size(); ++i) {
                    if (grid_->cells[i] == stored[i]) continue;
                    grid_->cells[i] = stored[i];
                    changed = true;
                }
                if (changed) cellsChanged();
                SendOut();
            }
        }
    }

    if (!Lock) {
        const int strobe = in(kStrobe);
        if (strobe == 0) {
            StrobeArmed = true;
        } else if (StrobeArmed) {
            StrobeArmed = false;
            runGeneration(engine, strobe);
        }
    }

    const int c = reduceColumn(in(kColumn));
    const int r = reduceRow(in(kRow));
    if (c == Column && r == Row) return;
    Column = c;
    Row = r;
    viewChanged = true;
    SendOut();
}

void MatrixSequencer::runGeneration(Engine& engine, int strobe) {
    if (automata_ == MatrixAutomata::None) return;
    const std::span<uint8_t> grid(grid_->cells.data(), static_cast<size_t>(size_.cells()));
    bool changed = false;
    if (automata_ == MatrixAutomata::EightRowModes && Mode == CAMode) {
        changed = caGeneration(grid, size_, memory_, Rule, Kick && memory_.stable, Ran, engine.random);
    } else {
        const bool fourRow = automata_ == MatrixAutomata::FourRowLife;
        if (memory_.stable && (Kick || strobe == kKickStrobe)) kickGrid(grid, engine.random);
        LifeRules rules;
        rules.hi = fourRow && Hi;
        rules.randomised = Ran;
        rules.mutate = fourRow && Hi && Ran && Kick;
        rules.shortStability = fourRow;
        changed = lifeGeneration(grid, size_, memory_, rules, engine.random);
    }
    grid_->stable = memory_.stable;
    if (changed) cellsChanged();
    SendOut();
}

void MatrixSequencer::SendOut() { setOutput(cell(Column, Row)); }

void MatrixSequencer::cellsChanged() {
    ++grid_->version;
    viewChanged = true;
}

void MatrixSequencer::setCell(int column, int row, int value) {
    const auto i = static_cast<size_t>(size_.at(column, row));
    const auto v = static_cast<uint8_t>(value & kMaxValue);
    Pages[static_cast<size_t>(pageInForce() * size_.cells()) + i] = v;
    if (grid_->cells[i] == v) return;
    grid_->cells[i] = v;
    cellsChanged();
}

bool MatrixSequencer::writeFromOutside(int column, int row, int value) {
    if (column < 0 || column >= size_.columns || row < 0 || row >= size_.rows) return false;
    return grid_->writeFromOutside(size_.at(column, row), value);
}

// --- the panel ---

void MatrixSequencer::pressCell(int x, int y, int button, int keys) {
    const int column = x / kKnobTwips;
    const int row = y / kKnobTwips;
    if (x < 0 || y < 0 || column >= size_.columns || row >= size_.rows) return;
    if (!knobEdit_.active) {  // a second button during a drag keeps the first press's saved state
        savedColumn_ = Column;
        savedRow_ = Row;
        knobEdit_.begin(*this, 0);
    }
    Column = column;
    Row = row;
    if (button != 0) {
        knobEdit_.active = true;
        const int keyed = knobKeyValue(keys);
        if (button == 1 && !Lock && keyed >= 0) setCell(column, row, keyed);
    }
    viewChanged = true;
    SendOut();
}

void MatrixSequencer::dragCell(int x, int y, int button) {
    if (button != 1 || !knobEdit_.active || Lock) return;
    setCell(Column, Row, knobValueInCell(x, y, Column, Row));
    SendOut();
}

void MatrixSequencer::releaseCell() {
    if (knobEdit_.end(*this)) {
        Column = savedColumn_;
        Row = savedRow_;
    }
    viewChanged = true;
    SendOut();
}

void MatrixSequencer::wheelCell(int column, int row, int notches, int keys) {
    if (Lock || column < 0 || row < 0 || column >= size_.columns || row >= size_.rows || notches == 0) return;
    const int step = keys & 2 ? 10 : 1;
    setCell(column, row, std::clamp(cell(column, row) + notches * step, 0, kMaxValue));
    viewChanged = true;
    SendOut();
}

std::string MatrixSequencer::fillTitleTail() const { return RowFill ? " Row: " + std::to_string(Row) : std::string(); }

void MatrixSequencer::stepMode() {
    if (automata_ != MatrixAutomata::EightRowModes) return;
    Mode = static_cast<uint8_t>((Mode + 1) % 3);
    viewChanged = true;
}

void MatrixSequencer::stepKnobSet() {
    KnobSet = (KnobSet + 1) % kKnobSets;
    cellsChanged();
}

void MatrixSequencer::setRuleBit(int bit, bool on) {
    if (bit < 0 || bit > 7) return;
    Rule = static_cast<uint8_t>(on ? Rule | (1 << bit) : Rule & ~(1 << bit));
    viewChanged = true;
}

// --- pages ---

std::span<const uint8_t> MatrixSequencer::page(int p) const {
    const auto n = static_cast<size_t>(size_.cells());
    return {Pages.data() + static_cast<size_t>(p & (kPages - 1)) * n, n};
}

namespace {
std::vector<uint8_t> asTableRow(std::span<const uint8_t> grid, GridSize size) {
    std::vector<uint8_t> row(static_cast<size_t>(size.cells()));
    for (int c = 0; c < size.columns; ++c)
        for (int r = 0; r < size.rows; ++r) row[static_cast<size_t>(r * size.columns + c)] = grid[static_cast<size_t>(size.at(c, r))];
    return row;
}
}  // namespace

std::vector<uint8_t> MatrixSequencer::pageAsTableRow(int p) const { return asTableRow(page(p), size_); }
std::vector<uint8_t> MatrixSequencer::liveAsTableRow() const { return asTableRow(cells(), size_); }

void MatrixSequencer::tableClosed() {
    const auto live = page(0);
    std::copy(live.begin(), live.end(), grid_->cells.begin());
    LastPage = -1;  // a page in force other than 0 comes back as edited
    cellsChanged();
}

void MatrixSequencer::setPageFromTableRow(int p, std::span<const uint8_t> row) {
    uint8_t* to = Pages.data() + static_cast<size_t>((p & (kPages - 1)) * size_.cells());
    for (int c = 0; c < size_.columns; ++c) {
        for (int r = 0; r < size_.rows; ++r) {
            const auto from = static_cast<size_t>(r * size_.columns + c);
            if (from < row.size()) to[size_.at(c, r)] = static_cast<uint8_t>(row[from] & kMaxValue);
        }
    }
    if ((p & (kPages - 1)) == pageInForce()) LastPage = -1;  // the next pass shows it again
}

void MatrixSequencer::setPageName(int p, std::string name) {
    if (name.size() > kNameLength) name.resize(kNameLength);
    PageNames.at(static_cast<size_t>(p & (kPages - 1))) = std::move(name);
}

std::string MatrixSequencer::liveRowName() const {
    return automata_ == MatrixAutomata::EightRowModes ? std::to_string(Rule) : "AutoUpdate";
}

// --- the Fill dialog ---

void MatrixSequencer::copyToFill(std::span<uint8_t> hold) const {
    const int C = size_.columns;
    if (RowFill) {
        for (int c = 0; c < C && static_cast<size_t>(c) < hold.size(); ++c) hold[static_cast<size_t>(c)] = static_cast<uint8_t>(cell(c, Row));
        return;
    }
    for (int r = 0; r < size_.rows; ++r)
        for (int c = 0; c < C; ++c)
            if (static_cast<size_t>(r * C + c) < hold.size()) hold[static_cast<size_t>(r * C + c)] = static_cast<uint8_t>(cell(c, r));
}

void MatrixSequencer::UpdateSeq(std::span<const uint8_t> hold, int) {
    const int C = size_.columns;
    for (int r = 0; r < size_.rows; ++r) {
        if (RowFill && r != Row) continue;
        for (int c = 0; c < C; ++c) {
            const auto from = static_cast<size_t>(RowFill ? c : r * C + c);
            if (from >= hold.size()) continue;
            const int v = hold[from] & kMaxValue;
            if (v != cell(c, r)) setCell(c, r, v);
        }
    }
    SendOut();
}

// --- snapshots and the record ---

uint16_t MatrixSequencer::flagWord() const {
    const auto set = static_cast<uint16_t>(KnobSet & 15);
    switch (automata_) {
        case MatrixAutomata::FourRowLife:
            return static_cast<uint16_t>(set | Lock << 4 | Kick << 5 | Ran << 6 | Hi << 7);
        case MatrixAutomata::EightRowModes:
            return static_cast<uint16_t>(set | (Mode & 15) << 4 | Lock << 8 | Kick << 9 | Ran << 10);
        case MatrixAutomata::None: break;
    }
    return static_cast<uint16_t>(set | Lock << 4);
}

void MatrixSequencer::takeFlagWord(uint16_t flags) {
    KnobSet = std::min<int>(flags & 15, kKnobSets - 1);
    switch (automata_) {
        case MatrixAutomata::FourRowLife:
            Lock = flags & 16;
            Kick = flags & 32;
            Ran = flags & 64;
            Hi = flags & 128;
            break;
        case MatrixAutomata::EightRowModes:
            Mode = static_cast<uint8_t>(std::min((flags >> 4) & 15, 2));
            Lock = flags & 256;
            Kick = flags & 512;
            Ran = flags & 1024;
            break;
        case MatrixAutomata::None: Lock = flags & 16; break;
    }
}

void MatrixSequencer::loadSnapshot(int snapshot) {
    const uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot * snapshotBytes());
    const int n = size_.cells();
    for (int i = 0; i < n; ++i) grid_->cells[static_cast<size_t>(i)] = static_cast<uint8_t>(row[i] & kMaxValue);
    takeFlagWord(static_cast<uint16_t>(row[n] | row[n + 1] << 8));
    if (automata_ == MatrixAutomata::EightRowModes) Rule = row[n + 2];
    LastPage = -1;
    cellsChanged();
}

void MatrixSequencer::recallSettings(int snapshot) {
    loadSnapshot(snapshot);
    SendOut();
}

void MatrixSequencer::storeSettings(int snapshot) {
    uint8_t* row = storedRows_.data() + static_cast<size_t>(snapshot * snapshotBytes());
    const int n = size_.cells();
    std::copy_n(grid_->cells.begin(), n, row);
    const uint16_t flags = flagWord();
    row[n] = static_cast<uint8_t>(flags & 0xFF);
    row[n + 1] = static_cast<uint8_t>(flags >> 8);
    if (automata_ == MatrixAutomata::EightRowModes) row[n + 2] = Rule;
}

void MatrixSequencer::onAttach(Engine& engine) {
    GridCells& shared = engine.gridCells.grid(GridCellStore::sizeIndex(size_.columns, size_.rows), Index);
    shared = own_;
    grid_ = &shared;
    recallSettings(engine.CurrentSnapshot);
    StrobeArmed = true;
}

void MatrixSequencer::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.raw(Pages);
    for (const std::string& name : PageNames) out.fixed(name, kNameLength);
    Module::writeBody(out, names);
}

void MatrixSequencer::readBody(ByteReader& in, OutputNames& names) {
    for (uint8_t& b : Pages) b = static_cast<uint8_t>(in.u8() & kMaxValue);
    for (std::string& name : PageNames) name = trimmedName(in.fixed(kNameLength));
    Module::readBody(in, names);
}

void MatrixSequencer::writeFields(ByteWriter& out) const { out.raw(storedRows_); }

void MatrixSequencer::readFields(ByteReader& in) {
    for (uint8_t& b : storedRows_) b = in.u8();
    loadSnapshot(0);
}

// --- MatrixOutput ---

MatrixOutput::MatrixOutput(ModuleTypeId type, GridSize size) : Module(type, kInputs), size_(size) {}

void MatrixOutput::onAttach(Engine& engine) {
    parentsSeen_ = 0;
    followParents(engine);
}

void MatrixOutput::followParents(Engine& engine) {
    uint32_t seen = 1;
    engine.typeSlot(matrixTypeId(size_.columns, size_.rows)).forEachActive([&seen](Module& m) {
        seen = seen * 31u + static_cast<uint32_t>(m.Index) + 1u;
    });
    if (seen == parentsSeen_) return;
    parentsSeen_ = seen;
    parents_ = parentChoices(engine);
    viewChanged = true;
}

int MatrixOutput::parentRow() const {
    const auto it = std::find(parents_.begin(), parents_.end(), Parent + 1);
    return it == parents_.end() ? -1 : static_cast<int>(it - parents_.begin());
}

void MatrixOutput::chooseParentRow(int row) {
    if (row < 0 || row >= static_cast<int>(parents_.size())) return;
    setParent(parents_[static_cast<size_t>(row)] - 1);
}

void MatrixOutput::update(Engine& engine) {
    followParents(engine);
    const GridCells* parent = engine.gridCells.find(GridCellStore::sizeIndex(size_.columns, size_.rows), Parent);
    const int v = parent ? parent->cells[static_cast<size_t>(size_.at(reduceColumn(in(0)), in(1) & (size_.rows - 1)))] : 0;
    if (v == ShownValue) return;
    ShownValue = v;
    setOutput(v);
    viewChanged = true;
}

std::vector<int> MatrixOutput::parentChoices(Engine& engine) const {
    std::vector<int> numbers;
    engine.typeSlot(matrixTypeId(size_.columns, size_.rows)).forEachActive([&](Module& m) {
        numbers.push_back(m.Index + 1);
    });
    if (numbers.empty()) numbers.push_back(1);
    return numbers;
}

void MatrixOutput::setParent(int index) {
    Parent = std::clamp(index, 0, 255);
    ShownValue = -1;
    viewChanged = true;
}

void MatrixOutput::recallSettings(int snapshot) { setParent(storedParents_[static_cast<size_t>(snapshot)]); }
void MatrixOutput::storeSettings(int snapshot) { storedParents_[static_cast<size_t>(snapshot)] = static_cast<uint8_t>(Parent); }

void MatrixOutput::writeFields(ByteWriter& out) const {
    for (uint8_t parent : storedParents_) {
        out.u8(parent);
        out.u8(0);
    }
}

void MatrixOutput::readFields(ByteReader& in) {
    for (uint8_t& parent : storedParents_) {
        parent = in.u8();
        in.u8();
    }
    setParent(storedParents_[0]);
}

void registerMatrixTypes(ModuleRegistry& registry) {
    registry.add<Matrix4x4>("Matrix4x4");
    registry.add<Matrix8x4>("Matrix8x4");
    registry.add<Matrix8x8>("Matrix8x8");
    registry.add<Matrix12x8>("Matrix12x8");
    registry.add<Matrix16x4>("Matrix16x4");
    registry.add<Matrix16x8>("Matrix16x8");
    registry.add<MOut4x4>("MOut4x4");
    registry.add<MOut8x4>("MOut8x4");
    registry.add<MOut8x8>("MOut8x8");
    registry.add<MOut12x8>("MOut12x8");
    registry.add<MOut16x4>("MOut16x4");
    registry.add<MOut16x8>("MOut16x8");
}

}  // namespace quillmer
