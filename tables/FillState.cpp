#include "tables/FillState.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "engine/RegularFile.h"

namespace quillmer {

namespace {

constexpr uint8_t kSwitchMark = 0x80;

constexpr FillCommandInfo kNoCommand{};
constexpr std::array<FillCommandInfo, fillcmd::kLast + 1> kCommands = {{
    {0, "OK", "Exit with changes; use titlebar \"X\" to discard changes and exit."},
    {1, "Copy", "Copy entire 0-127 range  to Clipboard"},
    {2, "Sub", "Subtract Low from all values from Start to End"},
    {3, "Add", "Add Low to all values from Start to End"},
    {4, "Fill", "Fill  from Start to End with value at Start"},
    {5, "Help", "Open online manual"},
    {6, "Rand", "Fill from Start to End  with random values between Low and High"},
    {7, "Count", "Count-fill from Start to End, starting with value in Start,  step size of Low"},
    {8, "Dups", "Remove duplicate values and closes the gaps; range is 0-127"},
    {9, "Invert", "Invert values (subtract from Scale); range is Start to End"},
    {10, "Sort", "Sort (ascending - use Revers for decending); range is Start to End"},
    {-1, "", ""},
    {12, "Undo", "Undo changes (up to 64)"},
    {13, "Cancel", "Exit without changes"},
    {14, "Scat", "Scatter to random positions without changing values; range is Start to End"},
    {15, "Revrs", "Reverse ordering from Start to End"},
    {16, "Redo", "Undo the Undos"},
    {17, "Quantize", "Quantize (force to a scale) values from Start to End, according to option button selection"},
    {18, "Norm", "Normalize (rescale)  to fit between Low and High; range is Start to End"},
    {19, "Erase", "Fill  from Start to End with 0"},
    {20, "Rwalk", "Random Walk from Start to End, starting with value in Start,  step size +/- Low"},
    {21, "Zap", "Removes all of Low in and closes the gaps; range is 0-127"},
    {22, "Xchg", "Changes all of Low to High; range is Start to End"},
    {23, "Trim", "Remove all values  equal or greater than Low; range is Start to End"},
    {24, "Smoth", "Smooth peaks from Start to End"},
    {25, "PatAdd", "Duplicate steps 0 - End, incrementing each group  by Low; range is 0 to 127"},
    {26, "Paste", "Paste from Copy Clipboard range of Start to End, but starting with clipboard 0"},
    {27, "Restore", "Restore to calling sequencer's  original values"},
    {28, "ReZero", "Restore 0 values from previous operation from Start to End"},
    {-1, "", ""},
    {30, "Make", "Make a scale from Start to End, starting with Low value"},
}};

constexpr std::array<ScaleChoiceInfo, kScaleChoices> kScaleInfo = {{
    {"Major", "Adjust to Major Scale"},
    {"Minor", "Adjust to Minor Scale"},
    {"Pentatonic", "Adjust to Pentatonic Scale"},
    {"WholeTone", "Adjust to Whole Tone Scale"},
    {"8ve/5ths", "Adjust to Octave/Fifths"},
    {"Jitter", "Add Random Jitter"},
    {"Min Triad", "Adjust to minor triads: 0, 3, 7"},
    {"Maj Triad", "Adjust to major triads: 0, 4, 7"},
}};

}  // namespace

const FillCommandInfo& fillCommand(int index) {
    if (index < 0 || index > fillcmd::kLast) return kNoCommand;
    return kCommands[static_cast<size_t>(index)];
}

const ScaleChoiceInfo& scaleChoiceInfo(int index) { return kScaleInfo.at(static_cast<size_t>(index)); }

void FillState::open(std::span<const uint8_t> values, int lastStage, int scale) {
    const size_t n = std::min(values.size(), hold.size());
    for (size_t i = 0; i < n; ++i) hold[i] = static_cast<uint8_t>(values[i] & 127);
    last = std::clamp(lastStage, 0, kRowLength - 1);
    knobs.scale = scale == 0 ? 127 : std::clamp(scale, 1, 127);
    knobs.start = 0;
    knobs.end = last;
    knobs.low = 0;
    knobs.high = knobs.scale;
    original = hold;
    restoreOnExit = true;
}

bool FillState::close(const std::function<void()>& send) {
    const bool restored = restoreOnExit;
    restoreOnExit = false;
    if (restored) {
        hold = original;
        if (send) send();
    }
    knobs.scale = 0;
    return restored;
}

int FillState::stageAtPixel(double x, double barWidth) const {
    if (barWidth <= 0) return 0;
    return std::clamp(static_cast<int>(x / barWidth), 0, visibleLast());
}

int FillState::valueAtPixel(double y, double height) const {
    const int scale = knobs.scale == 0 ? 127 : knobs.scale;
    if (height <= 0) return 0;
    return std::clamp(static_cast<int>((height - y) / (height / scale)), 0, 127);
}

int keyboardKeyAt(int x, int y) {
    static constexpr int kOctave = 1260;
    static constexpr int kWhiteTop = 675;
    static constexpr int kBlackTop = 280;
    static constexpr std::array<int, 7> kWhiteKeys = {0, 2, 4, 5, 7, 9, 11};
    static constexpr std::array<int, 7> kWhiteLefts = {45, 225, 405, 570, 765, 945, 1140};
    if (x < 0 || y < kBlackTop || x >= 6 * kOctave) return -1;
    const int octave = x / kOctave;
    const int at = x % kOctave;
    int white = 0;
    for (size_t i = 0; i < kWhiteLefts.size(); ++i)
        if (at >= kWhiteLefts[i]) white = static_cast<int>(i);
    if (y < kWhiteTop) {
        // A black key sits over the seam between two white keys.
        for (size_t i = 1; i < kWhiteLefts.size(); ++i) {
            const int key = kWhiteKeys[i] - 1;
            if (key == kWhiteKeys[i - 1]) continue;  // no black key between E and F
            if (std::abs(at - kWhiteLefts[i]) <= 60) return octave * 12 + key;
        }
    }
    return octave * 12 + kWhiteKeys[static_cast<size_t>(white)];
}

void FillState::push() {
    const auto at = static_cast<size_t>(undoIndex_);
    undoRows_[at] = hold;
    undoMarks_[at] = static_cast<uint8_t>(bufferCurrent);
    undoIndex_ = (undoIndex_ - 1) & (kUndoSteps - 1);
    undoCount_ = std::min(undoCount_ + 1, kUndoSteps - 1);
    redoCount_ = 0;  // the column a redo would take back is overwritten
}

void FillState::swapWithRing() {
    const auto at = static_cast<size_t>(undoIndex_);
    std::swap(hold, undoRows_[at]);
    uint8_t& mark = undoMarks_[at];
    if (mark & kSwitchMark) {
        const int to = mark & 63;
        mark = static_cast<uint8_t>(kSwitchMark | bufferCurrent);
        bufferCurrent = std::min(to, kBuffers - 1);
    }
}

bool FillState::undo() {
    if (undoCount_ == 0) return false;
    undoIndex_ = (undoIndex_ + 1) & (kUndoSteps - 1);
    swapWithRing();
    --undoCount_;
    ++redoCount_;
    return true;
}

bool FillState::redo() {
    if (redoCount_ == 0) return false;
    swapWithRing();
    undoIndex_ = (undoIndex_ - 1) & (kUndoSteps - 1);
    --redoCount_;
    ++undoCount_;
    return true;
}

void FillState::selectBuffer(int i) {
    i = std::clamp(i, 0, kBuffers - 1);
    buffers[static_cast<size_t>(bufferCurrent)] = hold;
    push();
    undoMarks_[static_cast<size_t>((undoIndex_ + 1) & (kUndoSteps - 1))] = static_cast<uint8_t>(kSwitchMark | bufferCurrent);
    bufferPrevious = bufferCurrent;
    bufferCurrent = i;
    hold = buffers[static_cast<size_t>(i)];
}

bool FillState::mergeBuffer() {
    if (bufferPrevious == bufferCurrent) return false;
    push();
    const Row& from = buffers[static_cast<size_t>(bufferPrevious)];
    rowops::mergeZeros(buffers[static_cast<size_t>(bufferCurrent)], from);
    rowops::mergeZeros(hold, from);
    return true;
}

void FillState::beginShift() {
    push();
    shiftCopy_ = hold;
}

void FillState::shiftTo(int position) { rowops::rotate(hold, shiftCopy_, position); }

void FillState::setStage(int stage, int value) {
    stage = std::clamp(stage, 0, visibleLast());
    hold[static_cast<size_t>(stage)] = static_cast<uint8_t>(std::clamp(value, 0, 127));
}

void FillState::harmonicSort() {
    push();
    rowops::harmonicSort(hold, knobs, hsort.currentKey());
}

bool FillState::command(int index) {
    using namespace fillcmd;
    const ScaleChoice choice = static_cast<ScaleChoice>(std::clamp(scaleSelect, 0, kScaleChoices - 1));
    switch (index) {
        case Copy: clipboard = hold; return false;
        case Undo: return undo();
        case Redo: return redo();
        case ReZero: {
            if (!canUndo()) return false;
            const Row earlier = undoRows_[static_cast<size_t>((undoIndex_ + 1) & (kUndoSteps - 1))];
            push();
            rowops::restoreZeros(hold, earlier, knobs);
            return true;
        }
        case OK:
        case Cancel:
        case Help: return false;
        default: break;
    }
    if (fillCommand(index).index < 0) return false;
    push();
    switch (index) {
        case Sub: rowops::subtractLow(hold, knobs); break;
        case Add: rowops::addLow(hold, knobs); break;
        case Fill: rowops::fillFromStart(hold, knobs); break;
        case Rand: rowops::randomFill(hold, knobs, random); break;
        case Count: rowops::count(hold, knobs); break;
        case Dups: rowops::removeDuplicates(hold); break;
        case Invert: rowops::invert(hold, knobs); break;
        case Sort: rowops::sortAscending(hold, knobs); break;
        case Scat: rowops::scatter(hold, knobs, random); break;
        case Revrs: rowops::reverse(hold, knobs); break;
        case Quantize: rowops::quantize(hold, knobs, choice, random); break;
        case Norm: rowops::normalise(hold, knobs); break;
        case Erase: rowops::erase(hold, knobs); break;
        case Rwalk: rowops::randomWalk(hold, knobs, random); break;
        case Zap: rowops::zap(hold, knobs); break;
        case Xchg: rowops::exchange(hold, knobs); break;
        case Trim: rowops::trim(hold, knobs); break;
        case Smoth: rowops::smooth(hold, knobs); break;
        case PatAdd: rowops::patternAdd(hold, knobs); break;
        case Paste: rowops::paste(hold, clipboard, knobs); break;
        case Restore: hold = original; break;
        case Make: rowops::makeScale(hold, knobs, choice, random); break;
        default: break;
    }
    return true;
}

int FillState::loadBytes(std::span<const uint8_t> bytes, size_t offset) {
    if (offset >= bytes.size()) return 0;
    const size_t n = std::min<size_t>(kRowLength, bytes.size() - offset);
    for (size_t i = 0; i < n; ++i) hold[i] = static_cast<uint8_t>(bytes[offset + i] & 127);
    return static_cast<int>(n);
}

bool FillState::loadFile(const std::string& path, bool append, int& bytesRead, std::string& reason) {
    RegularFile file;
    std::vector<uint8_t> bytes;
    const size_t offset = append ? static_cast<size_t>(appendOffset()) : 0;
    if (!file.open(path, reason) || !file.readAt(offset, kRowLength, bytes, reason)) return false;
    push();
    bytesRead = loadBytes(bytes);
    return true;
}

bool FillState::saveFile(const std::string& path, bool append, std::string& reason) const {
    std::ofstream file(path, std::ios::binary | (append ? std::ios::app : std::ios::trunc));
    if (file) file.write(reinterpret_cast<const char*>(hold.data()), static_cast<std::streamsize>(hold.size()));
    if (file) file.flush();
    if (!file) {
        reason = errno != 0 ? std::strerror(errno) : "the file could not be written";
        return false;
    }
    return true;
}

std::string FillState::holdText() const {
    std::string text;
    for (size_t i = 0; i < hold.size(); ++i) {
        if (i) text += ' ';
        text += std::to_string(hold[i]);
    }
    return text;
}

int FillState::loadText(std::string_view text) {
    int n = 0;
    std::string word;
    auto take = [&] {
        if (word.empty() || n >= kRowLength) return;
        hold[static_cast<size_t>(n++)] = static_cast<uint8_t>(std::min(std::stoi(word.substr(0, 4)), 9999) & 127);
        word.clear();
    };
    for (char c : text) {
        if (c >= '0' && c <= '9')
            word += c;
        else
            take();
    }
    take();
    return n;
}

FillState& fillState() {
    static FillState state;
    return state;
}

}  // namespace quillmer
