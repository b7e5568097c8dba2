#pragma once
// The matrices Matrix4x4..Matrix16x8: a grid of knobs read at a column and a row, 128
// stored pages of the grid, and an automaton that rewrites the grid on each rising edge of
// the Strobe input (Life on all sizes but 12x8, and the one-dimensional automaton on the
// 8-row ones). The satellites MOut<C>x<R> read a parent's grid at their own column and row.
// The grid itself is plain bytes (MatrixGrid.h) that formulas read and write as well.
// Needs the engine lock.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/GridCells.h"
#include "engine/Module.h"
#include "engine/ModuleRegistry.h"
#include "modules/sequencers/FillTarget.h"
#include "modules/sequencers/KnobEdit.h"
#include "modules/sequencers/MatrixGrid.h"

namespace quillmer {

class Engine;

// What a size of matrix has beyond its grid.
enum class MatrixAutomata : uint8_t {
    None,           // 12x8
    FourRowLife,    // Life with the Hi mode and the mutation side door; the short stability test
    EightRowModes,  // Life, "HiLife" (the same generations) and the one-dimensional automaton
};

class MatrixSequencer : public Module, public FillTarget {
public:
    static constexpr InputSpec kInputs[] = {
        {" Stage Column", "Stage Column Select", sysbus::Off},
        {" Stage Row", "Stage Row Select", sysbus::Off},
        {" Strobe Life Cycle", "Strobe next Life generation", sysbus::Off},
        {" Page", "Table Page", sysbus::Off},
    };
    static constexpr int kColumn = 0;
    static constexpr int kRow = 1;
    static constexpr int kStrobe = 2;
    static constexpr int kPage = 3;
    static constexpr int kPages = 128;
    static constexpr int kNameLength = 20;
    static constexpr uint8_t kKickStrobe = 126;
    static constexpr uint8_t kDefaultRule = 90;
    enum Mode : uint8_t { LifeMode = 0, HiLifeMode = 1, CAMode = 2 };

    MatrixSequencer(ModuleTypeId type, GridSize size, MatrixAutomata automata);

    GridSize size() const { return size_; }
    MatrixAutomata automata() const { return automata_; }
    int reduceColumn(int value) const;
    int reduceRow(int value) const { return value & (size_.rows - 1); }
    int cell(int column, int row) const { return grid_->cells[static_cast<size_t>(size_.at(column, row))]; }
    std::span<const uint8_t> cells() const { return {grid_->cells.data(), static_cast<size_t>(size_.cells())}; }
    // Counts every change of a cell, for views that redraw what changed.
    uint32_t cellsVersion() const { return grid_->version; }

    // A write from outside the panel (a formula): stored at once; the next pass copies the
    // grid into the page in force and the panel redraws. False when the cell held the value
    // already or lies outside the grid.
    bool writeFromOutside(int column, int row, int value);
    bool outsideWritten() const { return grid_->outsideWrite; }

    // Live settings (a snapshot keeps them).
    bool Lock = false;
    bool Kick = false;
    bool Ran = false;
    bool Hi = false;   // 4-row sizes
    uint8_t Mode = LifeMode;  // 8-row automaton sizes
    uint8_t Rule = kDefaultRule;
    int KnobSet = 0;

    // Run-time state.
    int Column = 0;
    int Row = 0;
    int LastPage = -1;  // the last Page input read; -1: read it again
    bool StrobeArmed = true;
    bool RowFill = false;
    bool stable() const { return grid_->stable; }
    // The page that edits go to.
    int pageInForce() const { return LastPage < 0 ? 0 : LastPage & (kPages - 1); }

    // One generation, as a rising Strobe edge of value `strobe` runs it.
    void runGeneration(Engine& engine, int strobe);

    // Panel gestures on the grid (twips from its top left; button 1 left, 2 other; keys
    // 1 Ctrl, 2 Shift, 4 Alt).
    void pressCell(int x, int y, int button, int keys);
    void dragCell(int x, int y, int button);
    void releaseCell();
    // The wheel over a cell: a notch is one step, ten with Shift (keys 2); the lock holds it.
    void wheelCell(int column, int row, int notches, int keys);
    bool editing() const { return knobEdit_.active; }
    // btnFill (false) and cmdFillRow (true): what the Fill dialog about to open works on.
    void chooseFill(bool currentRow) { RowFill = currentRow; }
    // The tail of the Fill dialog's title: " Row: " and the row for a row fill.
    std::string fillTitleTail() const;
    // cmdType: Life, HiLife, CA/1D and round again.
    void stepMode();
    // cmdKnobSet.
    void stepKnobSet();
    void setRuleBit(int bit, bool on);

    // Pages and their names, for the page table: a table row is row x C + column.
    std::span<const uint8_t> page(int p) const;
    std::vector<uint8_t> pageAsTableRow(int p) const;
    std::vector<uint8_t> liveAsTableRow() const;
    // The page table editor closed: the live grid takes row 0 (page 0), as the editor
    // showed it; the next pass loads the page in force again.
    void tableClosed();
    void setPageFromTableRow(int p, std::span<const uint8_t> row);
    const std::string& pageName(int p) const { return PageNames.at(static_cast<size_t>(p & (kPages - 1))); }
    void setPageName(int p, std::string name);
    // What the table shows in row 0's name: "AutoUpdate", or the rule where there is one.
    std::string liveRowName() const;

    // The Fill dialog: the whole grid, or with RowFill the current row; row x C + column.
    int fillStages() const override { return RowFill ? size_.columns : size_.cells(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;
    void fillOpened(bool open) override {
        if (!open) RowFill = false;
    }

    // Pages, names, the inputs, then per snapshot the grid, the flag word and (8-row
    // automaton sizes) the rule.
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void onAttach(Engine& engine) override;
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void SendOut();
    void loadSnapshot(int snapshot);
    // A cell set by the user or the Fill dialog: into the grid and the page in force.
    void setCell(int column, int row, int value);
    void cellsChanged();
    int snapshotBytes() const;
    uint16_t flagWord() const;
    void takeFlagWord(uint16_t flags);

    GridSize size_;
    MatrixAutomata automata_;
    // The cells live in the engine's store once the module is placed.
    GridCells own_;
    GridCells* grid_ = &own_;
    std::vector<uint8_t> Pages;  // [page][column][row]
    std::array<std::string, kPages> PageNames;
    std::vector<uint8_t> storedRows_;  // [snapshot][cells, flags lo, flags hi, rule]
    AutomatonMemory memory_;
    KnobEdit knobEdit_;
    int savedColumn_ = 0;
    int savedRow_ = 0;
};

// The type of a size's matrix, by the columns and rows of its grid.
ModuleTypeId matrixTypeId(int columns, int rows);
// Instance `index` of the matrix of that size, or nullptr when there is none.
MatrixSequencer* findMatrix(Engine& engine, int columns, int rows, int index);

template <int C, int R>
class Matrix final : public MatrixSequencer {
public:
    Matrix() : MatrixSequencer(matrixTypeId(C, R), GridSize{C, R}, automataOf()) {}

private:
    static constexpr MatrixAutomata automataOf() {
        if (C == 12) return MatrixAutomata::None;
        return R == 4 ? MatrixAutomata::FourRowLife : MatrixAutomata::EightRowModes;
    }
};

using Matrix4x4 = Matrix<4, 4>;
using Matrix8x4 = Matrix<8, 4>;
using Matrix8x8 = Matrix<8, 8>;
using Matrix12x8 = Matrix<12, 8>;
using Matrix16x4 = Matrix<16, 4>;
using Matrix16x8 = Matrix<16, 8>;

// A satellite: reads its parent matrix's grid at its own column and row. The parent is an
// instance index of the matrices of its size, kept per snapshot.
class MatrixOutput : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Stage Column", "Stage Column Select", sysbus::Off},
        {" Stage Row", "Stage Row Select", sysbus::Off},
    };
    static constexpr std::string_view kParentTip = "Parent module #";

    MatrixOutput(ModuleTypeId type, GridSize size);
    GridSize size() const { return size_; }
    int Parent = 0;  // instance index
    int ShownValue = -1;
    // The column as this satellite reduces it: AND (C-1), and AND 11 on the 12-column size,
    // which leaves columns 4..7 out of its reach.
    int reduceColumn(int value) const { return value & (size_.columns == 12 ? 11 : size_.columns - 1); }
    // cbXmID: the numbers (1..) of the existing parents, "1" alone when there are none.
    std::vector<int> parentChoices(Engine& engine) const;
    // The same list as this satellite last saw it on a pass (or when placed).
    const std::vector<int>& parentChoices() const { return parents_; }
    // The row of cbXmID that shows the parent; -1 when the parent is gone.
    int parentRow() const;
    void chooseParentRow(int row);
    void setParent(int index);

    // Per snapshot the parent byte and a spare one.
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void onAttach(Engine& engine) override;
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    // Reads the parents' list again when the matrices of this size changed.
    void followParents(Engine& engine);
    GridSize size_;
    std::array<uint8_t, kSnapshotCount> storedParents_{};
    std::vector<int> parents_{1};
    uint32_t parentsSeen_ = 0;  // a fingerprint of the placed matrices of this size
};

ModuleTypeId matrixOutputTypeId(int columns, int rows);

template <int C, int R>
class MOut final : public MatrixOutput {
public:
    MOut() : MatrixOutput(matrixOutputTypeId(C, R), GridSize{C, R}) {}
};

using MOut4x4 = MOut<4, 4>;
using MOut8x4 = MOut<8, 4>;
using MOut8x8 = MOut<8, 8>;
using MOut12x8 = MOut<12, 8>;
using MOut16x4 = MOut<16, 4>;
using MOut16x8 = MOut<16, 8>;

// Every matrix and satellite size.
void registerMatrixTypes(ModuleRegistry& registry);

}  // namespace quillmer
