#pragma once
// The formula modules: one design in ten shapes. Each picks one of the 128 shared formulas,
// fills the evaluation context from its inputs and switches, runs the formula and acts on
// what it left in the mailbox (output, the next formula, lamps, tool tips, label). A shape
// is data: inputs, clock, switches, lamps and the record's layout.
// Everything here needs the engine lock.

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "engine/Module.h"
#include "expression/FormulaPanels.h"

namespace quillmer {

class FormulaRuntime;

struct FormulaShape {
    int16_t evalBase;         // EvalModuleId = base + instance index
    bool clocked;             // input 0 is the clock
    uint8_t busIns;           // inputs read into In1..
    uint8_t switches;         // pressed-or-not switches, entering after the bus inputs
    bool clockEntersAsZero;   // a clockless type that sets EvalInC to 0
    bool formulaInput;        // the last input chooses the formula (GOTO and labels ignored)
    bool lampMatrix;          // 32 x 32 lamps shown through the LM matrix; clicks enter as context
    bool mousePad;            // a pad whose mouse readings UFOMouse reads
    uint8_t rowLamps;         // lamps of a row
    bool label;               // shows the label text
    uint8_t toolTips;         // input tool tips a ToolTip call sets (clock included)
    uint8_t leadBytes;        // record bytes before the input names
    uint8_t snapshotBytes;    // per snapshot after the positions: formula, then switches/lock
    bool lampsAreSwitches = false;  // LED and nLED press the switches
};

constexpr int kMatrixSize = 32;
constexpr int kLampOn = 255;
constexpr int kLampOff = 128;
constexpr const char* kClockTip = "Strobe to process; Turbo (126)  = continuous";

// The lamp matrix as its panel draws it, in pixels at the panel's own scale: a margin left
// of column 0, then cells 10 wide and 12 high.
constexpr int kMatrixMargin = 12;
constexpr int kMatrixCellWidth = 10;
constexpr int kMatrixCellHeight = 12;
constexpr int kMatrixPixelWidth = kMatrixMargin + kMatrixSize * kMatrixCellWidth;
constexpr int kMatrixPixelHeight = kMatrixSize * kMatrixCellHeight;
// The mouse pad's position units: 15 to a pixel.
constexpr int kPadUnitsPerPixel = 15;

// What a press on the lamp matrix did.
enum class MatrixPress { Toggled, Locked, Ignored, Menu };

class FormulaModule : public Module {
public:
    const FormulaShape& shape() const { return shape_; }

    // --- the panel's controls ---
    int formulaNumber() const { return formulaNumber_; }
    int currentFormula() const { return currentFormula_; }
    // The formula list: stores the choice and runs it from the next update.
    void chooseFormula(int n);
    bool switchPressed(int i) const { return (switches_ >> i) & 1; }
    void setSwitch(int i, bool pressed);
    // Lamp i of the row (or of the switches): kLampOn or kLampOff.
    int lamp(int i) const { return ((lampBits_ >> i) & 1) != 0 ? kLampOn : kLampOff; }
    uint32_t lampBits() const { return lampBits_; }
    int lastOut() const { return lastOut_; }
    const std::string& label() const { return label_; }
    // The tool tip of input k (clock first on clocked types): what ToolTip set, else the
    // input's own.
    std::string inputTip(int k) const;
    // The tool tip of switch i: what ToolTip set for the input it enters as, else "In n: pressed=1".
    std::string switchTip(int i) const;
    // The documentation of the formula that runs, for the name's tool tip.
    std::string formulaDoc(const Engine& engine) const;
    // The same as the last update saw it (empty before the first), for readers without the engine.
    const std::string& shownDoc() const { return doc_ != nullptr ? *doc_ : kNoDoc; }

    // Lamp matrix: cell (col, row) and the lock against clicks.
    bool cell(int col, int row) const;
    bool locked() const { return lock_; }
    void setLocked(bool on);
    // A left click on cell (col, row): toggles it unless locked. False when outside the grid.
    bool clickCell(Engine& engine, int col, int row);
    // A press at pixel (x, y) of the drawn matrix with `button` (1 left): a left press on a
    // cell clicks it, one in the margin left of column 0 asks for the module's menu, any
    // other press is ignored.
    MatrixPress pressMatrix(Engine& engine, int x, int y, int button);

    // Mouse pad.
    void padDown(int button, int shift, int x, int y);
    void padMove(int x, int y);
    void padUp() { pad_.moving = 0; }
    int padReading(int reading) const;

    void update(Engine& engine) override;
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;

protected:
    FormulaModule(ModuleTypeId type, std::span<const InputSpec> inputs, const FormulaShape& shape);
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    bool clockGate(const Engine& engine, const FormulaRuntime& runtime, int clock);
    void fillContext(FormulaRuntime& runtime, int clock) const;
    void actOnMailbox(FormulaRuntime& runtime, int evalId);
    void showLampNumber(int n, int negative);
    void showLampBits(uint32_t bits);
    void followMatrix(FormulaRuntime& runtime, int uid);
    int evalId() const { return shape_.evalBase + Index; }
    bool sameRunAsLast(FormulaRuntime& runtime);

    static inline const std::string kNoDoc;
    const FormulaShape& shape_;
    const std::string* doc_ = nullptr;  // inside the runtime's formula table
    uint8_t formulaNumber_ = 0;
    uint8_t currentFormula_ = 0;
    uint8_t switches_ = 0;
    bool lock_ = false;
    int8_t clockArmed_ = 0;
    uint8_t lastOut_ = 255;
    uint8_t spareLead_ = 0;
    int16_t lastFormulaInput_ = -1;
    uint32_t lampBits_ = 0;
    // The last evaluation: a pure formula run again on the same context is skipped.
    struct LastRun {
        uint64_t generation = 0;  // of the runtime; 0: none yet
        uint64_t inputsLow = 0;   // In1..In8
        uint64_t inputsHigh = 0;  // In9..In16
        uint8_t clock = 0;        // InC
        uint8_t formula = 0;
    } lastRun_;
    int lastLedNumber_ = -1;
    std::string label_;
    std::unique_ptr<std::array<std::string, 17>> tips_;
    // The matrix as shown, and a click not yet seen by the formula.
    std::array<uint32_t, kMatrixSize> rows_{};
    bool rowsToRuntime_ = false;
    uint8_t clickCol_ = 0, clickRow_ = 0, clickState_ = 0;
    struct Pad {
        int button = 0, shift = 0, originX = 0, originY = 0, dx = 0, dy = 0, moving = 0;
    } pad_;
    // Per snapshot: formula number, then switches or lock, then a spare byte.
    std::array<std::array<uint8_t, 3>, kSnapshotCount> stored_{};
};

#define QUILLMER_FORMULA_TYPE(T)                  \
    class T final : public FormulaModule {        \
    public:                                       \
        static const InputSpec kInputs[];         \
        static const FormulaShape kShape;         \
        T();                                      \
    };
QUILLMER_FORMULA_TYPE(UCalc0)
QUILLMER_FORMULA_TYPE(UCalc1)
QUILLMER_FORMULA_TYPE(UCalc2)
QUILLMER_FORMULA_TYPE(UCalc3)
QUILLMER_FORMULA_TYPE(UCalc4)
QUILLMER_FORMULA_TYPE(UCalc5)
QUILLMER_FORMULA_TYPE(UCalc6)
QUILLMER_FORMULA_TYPE(UCalcXC)
QUILLMER_FORMULA_TYPE(UCalcXV)
#undef QUILLMER_FORMULA_TYPE

class UCalc7 final : public FormulaModule, public FormulaMousePad {
public:
    static const InputSpec kInputs[];
    static const FormulaShape kShape;
    UCalc7();
    int mouseReading(int reading) const override { return padReading(reading); }
};

}  // namespace quillmer
