#pragma once
// The formula runtime: one Calc set up with the whole function library, the 128 shared
// formulas, the evaluation context a formula module writes before it runs one, the result
// mailbox it reads afterwards, and the private stores of formula modules.
//
// Everything runs under the engine lock, on the tick. Callbacks never throw; an argument out
// of range is cut to range or makes the function do nothing and return 0.
//
// Files (OpenFile, TxtOpen, SetFileNameList, ...) are confined to the data folder given at
// construction: a drive prefix ("c:\") and leading slashes are dropped, ".." is refused, and a
// path that leads out through a link is refused.
//
// Pictures: the pixel functions draw into a picture per module number (0..127) of
// kPictureSize x kPictureSize colours, made at first touch, that image modules show:
//   PEN(mid, c)        pen colour of picture mid; returns the old one
//   ClsPix(mid)        fills the picture with its pen colour; returns 1
//   WPix(mid, x, y, c) sets a pixel (c < 0: the pen colour); returns c, 0 outside
//   RPix(mid, x, y)    a pixel's colour, 0 outside or before the first touch
//   RGB(r, g, b)       r + g * 256 + b * 65536, each cut to 0..255
//   InfoPix(mid, x, y) 1 when (x, y) lies in the picture, else 0
// Colours are 24-bit numbers in that order (pRed, pGreen and pBlue take them apart). Where
// the stores have a picture of that number (an Image module), the functions draw there.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "expression/Calc.h"
#include "expression/FormulaStores.h"

namespace quillmer {

constexpr int kFormulaCount = 128;
constexpr int kEvalModuleIds = 1028;  // 0..1027; the editor's test runs as 1027
constexpr int kEditorModuleId = 1027;
constexpr int kUidCount = 128;        // 1..127 handed out; 0 is never given
constexpr int kPictureSize = 128;
constexpr const char* kDefaultFormula = "out(in1+in2+in3+in4)";
constexpr const char* kUidExhausted = "Out of Module ID allocation, Module ID set to 127.";

// ResultFlags bits.
enum ResultFlag : uint8_t {
    kFlagOut = 1,
    kFlagGoto = 2,
    kFlagLed = 4,
    kFlagLedNumber = 8,
    kFlagToolTip = 16,
    kFlagLabel = 32,
};

// The texts of a mailbox, kept apart so that the numbers every tick touches stay small.
struct MailText {
    std::array<std::string, 17> toolTips;  // clock, In1..In16
    std::string label;
};

struct Mailbox {
    uint8_t flags = 0;
    uint8_t outValue = 0;
    uint8_t gotoTarget = 0;
    uint8_t ledNumber = 0;
    uint8_t ledNumberNegative = 0;  // the size of a negative lamp number
    uint32_t ledBits = 0;
    MailText* text = nullptr;  // owned by the runtime, never null there
};

struct Picture {
    std::vector<uint32_t> pixels;  // row after row
    uint32_t pen = 0;
    uint32_t changes = 0;  // counts every drawing call, for the panel to notice
};

class FormulaRuntime {
public:
    // `stores` may be null: then every outside store answers 0. `dataFolder` is where formulas
    // may read and write files; empty refuses every file.
    explicit FormulaRuntime(FormulaStores* stores = nullptr, std::string dataFolder = {});
    ~FormulaRuntime();
    FormulaRuntime(const FormulaRuntime&) = delete;
    FormulaRuntime& operator=(const FormulaRuntime&) = delete;

    // The start-up of the expression engine, once, before any formula runs.
    void start();
    // The seed of the random tables of RRAN and RW, taken at the next start (0: the tables
    // every Quillmer has without a seed).
    void setSeed(uint32_t seed) { seed_ = seed; }
    uint32_t seed() const { return seed_; }
    bool started() const { return started_; }

    expr::Calc& calc() { return calc_; }
    FormulaStores& stores() { return *stores_; }

    // --- the evaluation context ---
    uint16_t EvalModuleId = 0;
    uint8_t EvalFormula = 0;
    uint8_t EvalInC = 0;
    std::array<uint8_t, 17> EvalIn{};  // 1..16

    // Runs formula `formula` (cut to 0..127) for module `moduleId` with the context as set.
    double evaluate(uint16_t moduleId, int formula);

    // --- the shared formulas ---
    struct FormulaEntry {
        expr::Handle handle = 0;
        std::string doc;
        bool pure = false;
        uint64_t pureAsOf = 0;  // Calc::definitions() + 1 when `pure` was found
    };
    const FormulaEntry& formula(int n) const { return formulas_[static_cast<size_t>(n & 127)]; }
    // Compiles `text` into entry n; on an error the entry stays as it was. Returns the error.
    int setFormula(int n, std::string_view text, std::string_view doc = {});
    expr::Handle defaultHandle() const { return defaultHandle_; }
    // Formula n reads nothing but the evaluation context and leaves the same mail each time
    // it runs on the same context: running it again on that context changes nothing.
    bool isPure(int n);
    // Changes with every start and every formula replaced, never the same in two runtimes.
    uint64_t generation() const { return generation_; }

    // --- the mailbox ---
    Mailbox& mailbox(int moduleId) { return mailboxes_[static_cast<size_t>(clampId(moduleId))]; }
    void clearFlags(int moduleId) { mailbox(moduleId).flags = 0; }

    // --- module identities ---
    // This module's Uid, handed out on first use.
    int uidOf(int moduleId);
    int uidCount() const { return uidCount_; }

    // A row of a module's lamp matrix (LM), by Uid 1..127; others read 0 and take nothing.
    uint32_t matrixRow(int uid, int row) const;
    void setMatrixRow(int uid, int row, uint32_t word);
    // All 32 rows of a Uid's matrix, or null for a Uid that has none.
    const uint32_t* matrixRows(int uid) const;

    // --- the tick and timers ---
    bool autoStart = false;
    // The tick's Run and Start variables.
    void setRunVariables(bool run, bool start);
    int runHandle() const { return runHandle_; }
    int startHandle() const { return startHandle_; }
    int letterHandle(char letter) const { return letterHandles_[static_cast<size_t>((letter - 'A') & 31) % 26]; }
    // A formula timer's period passed: its state flips.
    void timerFired(int kind, int n);
    bool aclockState(int n) const { return n >= 0 && n < 10 && aclock_[static_cast<size_t>(n)]; }
    bool timerState(int n) const { return n >= 0 && n < 20 && timers_[static_cast<size_t>(n)]; }

    // --- what panels read ---
    const Picture* picture(int mid) const;
    const std::string& infoBox(int mid) const { return infoBoxes_[static_cast<size_t>(mid & 127)]; }
    const std::string& dataFolder() const { return dataFolder_; }

    // The stores of the function library, reached by its callbacks.
    struct Stores;
    Stores& state() { return *state_; }

private:
    static int clampId(int id) { return id < 0 ? 0 : id >= kEvalModuleIds ? kEvalModuleIds - 1 : id; }
    void defineVocabulary();

    expr::Calc calc_;
    FormulaStores ownStores_;
    FormulaStores* stores_;
    std::string dataFolder_;
    bool started_ = false;
    uint32_t seed_ = 0;
    uint64_t generation_ = 0;

    std::array<FormulaEntry, kFormulaCount> formulas_{};
    expr::Handle defaultHandle_ = 0;
    void clearMailboxes();
    std::vector<Mailbox> mailboxes_;
    std::vector<MailText> mailTexts_;
    std::vector<uint8_t> moduleUid_;
    int uidCount_ = 0;
    int runHandle_ = -1;
    int startHandle_ = -1;
    std::array<int, 26> letterHandles_{};
    std::array<bool, 10> aclock_{};
    std::array<bool, 20> timers_{};
    std::array<std::string, 128> infoBoxes_;
    std::unique_ptr<Stores> state_;

    friend struct Vocabulary;
};

}  // namespace quillmer
