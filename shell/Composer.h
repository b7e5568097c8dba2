#pragma once
// The Composer: a song made of snapshots. Each line of its list is a snapshot and a number
// of measures; while it plays, the measure hook of the tick steps through the lines from
// Begin to End, recalls each line's snapshot and can record what is sent to a MIDI file.
// The list itself lives in the file header. Needs the engine lock, like the session.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace quillmer {

class Engine;
class Snapshots;
struct FileHeader;

enum class Transport : uint8_t { Stopped, Playing, Paused };

class Composer {
public:
    Composer(Engine& engine, Snapshots& snapshots, FileHeader& list);

    static constexpr int kTicksPerMeasure = 96;
    static constexpr int kLines = 1000;
    static constexpr int kDefaultMeasures = 8;
    static constexpr int kMostMeasures = 32767;

    // --- the list ---
    int count() const;
    int beginLine() const;
    int endLine() const;
    int snapshotOf(int line) const;
    int measuresOf(int line) const;  // 1 or more
    // " B " at Begin, " E " at End, " X " where they meet, " - " elsewhere.
    static const char* mark(int line, int begin, int end);
    // "000 B 001 Intro  008": index, mark, snapshot name, two blanks, measures.
    std::string lineText(int line) const;
    std::vector<std::string> lineTexts() const;
    // The sum of the measures from Begin to End; 0 when Begin is after End.
    int totalMeasures() const;

    // Editing; each returns the line to highlight afterwards. Add puts the line at the
    // count, which wraps to 0 at 1000 lines, and makes it the End.
    int add(int snapshot);
    int insert(int at, int snapshot);  // before `at`; at or past the end it adds
    int remove(int line);
    int moveUp(int line);
    int moveDown(int line);
    void markBegin(int line);
    void markEnd(int line);
    // The measures box: a whole number (limited to 1..32767) for `line`; false when the text
    // isn't one.
    bool setMeasures(int line, const std::string& typed);

    // --- on and off (the toolbar button) ---
    bool active() const { return active_; }
    void on();
    void off();
    void toggle();
    // Off for the length of a command that could run into the hook, and back on after it.
    void offTempIf();
    void onIf();

    // --- transport ---
    Transport transport() const { return transport_; }
    // False when there is nothing to play or it is already playing.
    bool play();
    void pause();
    void stop();
    // A remote start (131), continue (137) or stop (138) from MIDI input port A.
    void remoteButton(int code);

    // --- recording ---
    bool recording() const { return recording_; }
    // The record button; with the song playing it stops first.
    void toggleRecord();
    std::string recordingPath;  // where a stop writes the recording
    const std::string& lastRecording() const { return lastRecording_; }
    std::function<void(const std::string& path)> recordingSaved;
    std::function<void(const std::string& error)> recordingFailed;

    // --- the tick ---
    // Every whole note.
    void measureHook();
    // Every tick of a recording under Run: true when its measures have all been played.
    bool recordingElapsed();
    // A recording whose measures have all been played: notes start no more.
    bool recordingTimeUp() const;

    // --- what the window shows ---
    int position() const { return pos_; }
    int measuresLeft() const { return measuresLeft_ + 1; }  // on this line, this one included
    int currentMeasure() const { return currentMeasure_; }
    // "Total Measures : Current Measure".
    std::string stepText() const;
    // Grows with every change a view should redraw.
    uint64_t changes() const { return changes_; }
    // A patch was loaded or the list cleared: the next Play begins at Begin.
    void resetPosition();

private:
    int lineIndex(int line) const;
    void setLine(int line, int snapshot, int storedMeasures);
    void clampMarks();
    void recallLine();
    void halt(bool restartAtBegin);

    Engine& engine_;
    Snapshots& snapshots_;
    FileHeader& list_;
    bool active_ = false;
    bool tempOff_ = false;
    bool runBeforeOn_ = false;  // the toolbar's Run, given back when the Composer goes off
    Transport transport_ = Transport::Stopped;
    bool restartAtBegin_ = true;
    bool stopAsked_ = true;
    bool pauseAsked_ = false;
    bool recording_ = false;
    int pos_ = 0;
    int measuresLeft_ = 0;
    int currentMeasure_ = -1;
    int32_t hookTicks_ = 0;
    std::string lastRecording_;
    uint64_t changes_ = 0;
};

// The short form of a file name for old systems: the base name cut to eight letters and
// digits, the extension to three, in capitals; the folder stays.
std::string shortFileName(const std::string& path);

}  // namespace quillmer
