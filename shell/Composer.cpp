#include "shell/Composer.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>

#include "engine/Engine.h"
#include "shell/FileHeader.h"
#include "shell/Snapshots.h"

namespace quillmer {

Composer::Composer(Engine& engine, Snapshots& snapshots, FileHeader& list)
    : engine_(engine), snapshots_(snapshots), list_(list) {}

// --- the list ---

// A file may hold anything in these fields: every read keeps to the arrays.
int Composer::lineIndex(int line) const { return std::clamp(line, 0, kLines - 1); }
int Composer::count() const { return std::clamp<int>(list_.composerCount, 0, kLines - 1); }
int Composer::beginLine() const { return lineIndex(list_.composerBegin); }
int Composer::endLine() const { return lineIndex(list_.composerEnd); }
int Composer::snapshotOf(int line) const { return list_.composerSnapshots[static_cast<size_t>(lineIndex(line))]; }
int Composer::measuresOf(int line) const {
    return std::max(1, list_.composerMeasures[static_cast<size_t>(lineIndex(line))] + 1);
}

const char* Composer::mark(int line, int begin, int end) {
    if (line == begin && line == end) return " X ";
    if (line == begin) return " B ";
    if (line == end) return " E ";
    return " - ";
}

std::string Composer::lineText(int line) const {
    const int snapshot = snapshotOf(line);
    std::string name = snapshots_.SnapshotNames[static_cast<size_t>(snapshot & 127)];
    if (name.empty()) {
        char number[8];
        std::snprintf(number, sizeof number, "%03d", snapshot);
        name = number;
    }
    char index[16];
    char measures[16];
    std::snprintf(index, sizeof index, "%03d", lineIndex(line));
    std::snprintf(measures, sizeof measures, "%03d", measuresOf(line));
    return std::string(index) + mark(line, beginLine(), endLine()) + name + "  " + measures;
}

std::vector<std::string> Composer::lineTexts() const {
    std::vector<std::string> lines;
    for (int i = 0; i < count(); ++i) lines.push_back(lineText(i));
    return lines;
}

int Composer::totalMeasures() const {
    int total = 0;
    for (int i = beginLine(); i <= endLine(); ++i) total += measuresOf(i);
    return total;
}

void Composer::setLine(int line, int snapshot, int storedMeasures) {
    list_.composerSnapshots[static_cast<size_t>(line)] = static_cast<uint8_t>(snapshot);
    list_.composerMeasures[static_cast<size_t>(line)] = static_cast<int16_t>(storedMeasures);
}

void Composer::clampMarks() {
    const int last = std::max(0, count() - 1);
    list_.composerBegin = static_cast<int16_t>(std::clamp<int>(list_.composerBegin, 0, last));
    list_.composerEnd = static_cast<int16_t>(std::clamp<int>(list_.composerEnd, 0, last));
}

int Composer::add(int snapshot) {
    const int line = count();
    setLine(line, snapshot, kDefaultMeasures - 1);
    list_.composerCount = static_cast<int16_t>((line + 1) % kLines);  // silently empty at 1000
    list_.composerEnd = static_cast<int16_t>(line);
    if (list_.composerBegin > line) list_.composerBegin = static_cast<int16_t>(line);
    ++changes_;
    return line;
}

int Composer::insert(int at, int snapshot) {
    const int n = count();
    at = std::max(at, 0);
    if (at >= n) return add(snapshot);
    for (int i = n; i > at; --i) setLine(i, snapshotOf(i - 1), list_.composerMeasures[static_cast<size_t>(i - 1)]);
    setLine(at, snapshot, kDefaultMeasures - 1);
    list_.composerCount = static_cast<int16_t>((n + 1) % kLines);
    // The marks stay on the lines they marked.
    if (list_.composerBegin >= at) ++list_.composerBegin;
    if (list_.composerEnd >= at) ++list_.composerEnd;
    clampMarks();
    ++changes_;
    return at;
}

int Composer::remove(int line) {
    const int n = count();
    if (line < 0 || line >= n) return line;
    for (int i = line; i + 1 < n; ++i) setLine(i, snapshotOf(i + 1), list_.composerMeasures[static_cast<size_t>(i + 1)]);
    setLine(n - 1, 0, kDefaultMeasures - 1);
    list_.composerCount = static_cast<int16_t>(n - 1);
    if (list_.composerBegin > line) --list_.composerBegin;
    if (list_.composerEnd > line) --list_.composerEnd;
    clampMarks();
    ++changes_;
    return std::max(0, std::min(line, n - 2));
}

int Composer::moveUp(int line) {
    if (line <= 0 || line >= count()) return line;
    const int snapshot = snapshotOf(line);
    const int16_t measures = list_.composerMeasures[static_cast<size_t>(line)];
    setLine(line, snapshotOf(line - 1), list_.composerMeasures[static_cast<size_t>(line - 1)]);
    setLine(line - 1, snapshot, measures);
    ++changes_;
    return line - 1;
}

int Composer::moveDown(int line) {
    if (line < 0 || line + 1 >= count()) return line;
    moveUp(line + 1);
    return line + 1;
}

void Composer::markBegin(int line) {
    if (line < 0 || line >= count()) return;
    list_.composerBegin = static_cast<int16_t>(line);
    ++changes_;
}

void Composer::markEnd(int line) {
    if (line < 0 || line >= count()) return;
    list_.composerEnd = static_cast<int16_t>(line);
    ++changes_;
}

bool Composer::setMeasures(int line, const std::string& typed) {
    const size_t first = typed.find_first_not_of(' ');
    const size_t last = typed.find_last_not_of(' ');
    if (first == std::string::npos || line < 0 || line >= count()) return false;
    const char* start = typed.data() + first;
    const char* stop = typed.data() + last + 1;
    if (*start == '+') ++start;
    long long value = 0;
    const auto [ptr, ec] = std::from_chars(start, stop, value);
    if (ptr != stop || (ec != std::errc() && ec != std::errc::result_out_of_range)) return false;
    if (ec == std::errc::result_out_of_range) value = *start == '-' ? 1 : kMostMeasures;
    value = std::clamp<long long>(value, 1, kMostMeasures);
    list_.composerMeasures[static_cast<size_t>(line)] = static_cast<int16_t>(value - 1);
    ++changes_;
    return true;
}

// --- on and off ---

void Composer::on() {
    if (active_) return;
    active_ = true;
    runBeforeOn_ = engine_.bus[sysbus::Run] != 0;
    engine_.setRun(transport_ == Transport::Playing);
    ++changes_;
}

void Composer::off() {
    if (!active_) return;
    if (transport_ == Transport::Playing || engine_.bus[sysbus::Run] != 0) pause();
    active_ = false;
    engine_.setRun(runBeforeOn_);
    ++changes_;
}

void Composer::toggle() {
    if (active_)
        off();
    else
        on();
}

void Composer::offTempIf() {
    if (!active_) return;
    off();
    tempOff_ = true;
}

void Composer::onIf() {
    if (!tempOff_) return;
    tempOff_ = false;
    on();
}

// --- transport ---

void Composer::recallLine() {
    const int snapshot = snapshotOf(pos_);
    if (snapshot >= engine_.SnapshotCount) return;
    engine_.CurrentSnapshot = static_cast<int16_t>(snapshot);
    snapshots_.SetNewPatch();
}

bool Composer::play() {
    if (transport_ == Transport::Playing || count() == 0) return false;
    engine_.ResetClocks();
    transport_ = Transport::Playing;
    engine_.setRun(true);
    engine_.bus[sysbus::End] = 0;
    currentMeasure_ = -1;
    snapshots_.doPatchAuto();
    if (restartAtBegin_) {
        restartAtBegin_ = false;
        pos_ = beginLine();
        engine_.ports.SendMidiRemote(sysbus::Begin);
    } else {
        engine_.ports.SendMidiRemote(sysbus::Run);
    }
    measuresLeft_ = measuresOf(pos_);
    hookTicks_ = totalMeasures() * kTicksPerMeasure - 1;
    recallLine();
    if (recording_) {
        engine_.ports.setRecording(true);
        engine_.ports.InitializeMIDITracks();  // also when Run was on already and no run edge comes
    }
    engine_.ResetClocks();
    stopAsked_ = false;
    pauseAsked_ = false;
    ++changes_;
    return true;
}

void Composer::halt(bool restartAtBegin) {
    transport_ = restartAtBegin ? Transport::Stopped : Transport::Paused;
    engine_.setRun(false);
    restartAtBegin_ = restartAtBegin;
    engine_.ports.SendMidiRemote(sysbus::Stop);
    stopAsked_ = restartAtBegin;
    pauseAsked_ = !restartAtBegin;
    ++changes_;
    if (!recording_) return;
    recording_ = false;
    std::string error;
    if (recordingPath.empty()) {
        engine_.ports.setRecording(false);
        error = "There is no file to record into.";
    } else if (engine_.ports.SaveMidiFile(recordingPath, error)) {
        lastRecording_ = recordingPath;
        if (recordingSaved) recordingSaved(recordingPath);
        return;
    }
    if (recordingFailed) recordingFailed(error);
}

void Composer::stop() { halt(true); }

void Composer::pause() {
    if (transport_ == Transport::Playing) halt(false);
}

void Composer::remoteButton(int code) {
    if (!active_) return;
    if (code == sysbus::Begin) {
        if (transport_ == Transport::Playing) return;
        restartAtBegin_ = true;
        play();
    } else if (code == sysbus::Run) {
        play();
    } else if (code == sysbus::Stop) {
        pause();
    }
}

// --- recording ---

void Composer::toggleRecord() {
    const bool wanted = !recording_;
    if (transport_ == Transport::Playing) stop();
    recording_ = wanted;
    ++changes_;
}

// --- the tick ---

void Composer::measureHook() {
    if (!active_) return;
    // The buttons acted at once; the list stands still while stopped or paused.
    if (stopAsked_ || pauseAsked_) return;
    if (engine_.ports.progChgToSnapshot) return;  // program changes rule the snapshots
    ++currentMeasure_;
    ++changes_;
    if (measuresLeft_ != 0) {
        --measuresLeft_;
        if (pos_ == beginLine()) engine_.bus[sysbus::Begin] = 127;
        return;
    }
    if (pos_ < endLine() && hookTicks_ != 0) {
        ++pos_;
        engine_.bus[sysbus::Begin] = pos_ == beginLine() ? 127 : 0;
        engine_.bus[sysbus::End] = pos_ == endLine() ? 127 : 0;
        measuresLeft_ = measuresOf(pos_) - 1;  // this measure is the line's first
        if (engine_.CurrentSnapshot != snapshotOf(pos_)) recallLine();
        return;
    }
    stop();  // the last line has played: there is no loop
    engine_.bus[sysbus::End] = 0;
}

bool Composer::recordingElapsed() {
    if (transport_ != Transport::Playing || hookTicks_ <= 0) return false;
    return --hookTicks_ == 0;
}

bool Composer::recordingTimeUp() const {
    return recording_ && transport_ == Transport::Playing && hookTicks_ == 0 && engine_.ports.recording();
}

// --- views ---

std::string Composer::stepText() const {
    return std::to_string(totalMeasures()) + " : " + std::to_string(std::max(currentMeasure_, 0));
}

void Composer::resetPosition() {
    pos_ = 0;
    measuresLeft_ = 0;
    currentMeasure_ = -1;
    transport_ = Transport::Stopped;
    restartAtBegin_ = true;
    stopAsked_ = true;
    pauseAsked_ = false;
    ++changes_;
}

std::string shortFileName(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    const std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.find_last_of('.');
    const auto squeeze = [](const std::string& text, size_t most) {
        std::string out;
        for (char c : text)
            if (std::isalnum(static_cast<unsigned char>(c)) && out.size() < most)
                out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return out;
    };
    std::string base = squeeze(dot == std::string::npos ? name : name.substr(0, dot), 8);
    const std::string extension = dot == std::string::npos ? std::string() : squeeze(name.substr(dot + 1), 3);
    if (base.empty()) base = "SONG";
    return folder + base + (extension.empty() ? std::string() : "." + extension);
}

}  // namespace quillmer
