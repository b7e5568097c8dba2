#pragma once
// The Fill dialog's working state, alive for the whole program run: the row being edited
// (Hold), the knobs, five working buffers, the clipboard, a ring of 64 undo steps and the
// harmonic sort keys. Buffers, clipboard and undo steps outlive a closing of the dialog.
// The dialog only draws this and forwards gestures; after every change it sends Hold to
// the table that opened it.

#include <array>
#include <functional>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/RandomSource.h"
#include "tables/HarmonicKeys.h"
#include "tables/RowOps.h"

namespace quillmer {

// The dialog's command buttons, by their index.
namespace fillcmd {
constexpr int OK = 0, Copy = 1, Sub = 2, Add = 3, Fill = 4, Help = 5, Rand = 6, Count = 7, Dups = 8, Invert = 9,
              Sort = 10, Undo = 12, Cancel = 13, Scat = 14, Revrs = 15, Redo = 16, Quantize = 17, Norm = 18,
              Erase = 19, Rwalk = 20, Zap = 21, Xchg = 22, Trim = 23, Smoth = 24, PatAdd = 25, Paste = 26,
              Restore = 27, ReZero = 28, Make = 30;
constexpr int kLast = 30;
}  // namespace fillcmd

struct FillCommandInfo {
    int index = -1;  // -1: no button at this index
    const char* caption = "";
    const char* tip = "";
};
// Caption and tip of command `index` (0..30).
const FillCommandInfo& fillCommand(int index);

struct ScaleChoiceInfo {
    const char* caption;
    const char* tip;
};
const ScaleChoiceInfo& scaleChoiceInfo(int index);

class FillState {
public:
    static constexpr int kBuffers = 5;
    static constexpr int kUndoSteps = 64;

    Row hold{};
    int last = 127;  // the caller's last stage
    FillKnobs knobs;
    int scaleSelect = 0;
    std::array<Row, kBuffers> buffers{};
    int bufferCurrent = 0;
    int bufferPrevious = 0;
    Row clipboard{};
    Row original{};
    bool restoreOnExit = false;
    bool keyboard = false;
    bool fullView = false;
    HarmonicKeys hsort;
    RandomSource random;

    // A caller opens: its values and last stage; `scale` is its ceiling (0: none, 127).
    void open(std::span<const uint8_t> values, int lastStage, int scale = 0);
    // OK: the changes stay.
    void accept() { restoreOnExit = false; }
    // Closing for any reason: without OK, Hold goes back to the original and `send` takes
    // it to the caller once more, with the caller's scale; then the scale is cleared.
    // True when it went back.
    bool close(const std::function<void()>& send = {});

    // Runs command `index`; true when Hold may have changed and the caller wants it. OK,
    // Cancel and Help are the dialog's own.
    bool command(int index);
    bool canUndo() const { return undoCount_ > 0; }
    bool canRedo() const { return redoCount_ > 0; }
    int undoCount() const { return undoCount_; }
    int redoCount() const { return redoCount_; }
    void push();
    bool undo();
    bool redo();

    // A buffer button: Hold saved into the current buffer, buffer i loaded; undoable.
    void selectBuffer(int i);
    // A double click on a buffer button: the zeros of the current buffer and of Hold take
    // the previous buffer's values. False when there is nothing to merge from.
    bool mergeBuffer();

    // The shift slider: begin (push, copy), move to a position, end.
    void beginShift();
    void shiftTo(int position);

    // The bars drawn with the mouse. A press pushes; then each stage takes a value.
    int visibleLast() const { return fullView ? kRowLength - 1 : last; }
    void beginDrawing() { push(); }
    void setStage(int stage, int value);

    // Load: up to 128 bytes of `bytes`, from `offset` (Low x 128 + High with Append), each
    // AND 127, into Hold from index 0; the number read.
    int loadBytes(std::span<const uint8_t> bytes, size_t offset = 0);
    int appendOffset() const { return knobs.low * kRowLength + knobs.high; }
    bool loadFile(const std::string& path, bool append, int& bytesRead, std::string& reason);
    bool saveFile(const std::string& path, bool append, std::string& reason) const;
    // The text form: the 128 values with blanks between.
    std::string holdText() const;
    // Values read from text, as many as it holds, from index 0; the number read.
    int loadText(std::string_view text);

    // The harmonic sort of Start..End with the current key.
    void harmonicSort();

    // The bars drawn in a view `height` pixels high, `barWidth` pixels a bar.
    int stageAtPixel(double x, double barWidth) const;
    int valueAtPixel(double y, double height) const;

private:
    std::array<Row, kUndoSteps> undoRows_{};
    std::array<uint8_t, kUndoSteps> undoMarks_{};
    int undoIndex_ = 0;
    int undoCount_ = 0;
    int redoCount_ = 0;
    Row shiftCopy_{};
    void swapWithRing();
};

// The key under a point of the virtual keyboard, in twips: 0..71 over six octaves of
// 1260 twips, white keys below 675 twips and black keys above; -1 off the keys.
int keyboardKeyAt(int x, int y);

// The one Fill state of the program.
FillState& fillState();

}  // namespace quillmer
