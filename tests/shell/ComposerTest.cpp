#include <gtest/gtest.h>

#include <map>

#include "SessionHarness.h"
#include "engine/MidiDevice.h"
#include "engine/MidiRecording.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

// An output that keeps what was sent to it.
class KeptOutput final : public MidiOutputDevice {
public:
    const std::string& name() const override { return name_; }
    bool open() override { return open_ = true; }
    void close() override { open_ = false; }
    bool isOpen() const override { return open_; }
    void sendNow(std::span<const uint8_t> bytes) override { sent.emplace_back(bytes.begin(), bytes.end()); }
    void sendAt(std::span<const uint8_t> bytes, int32_t) override { sendNow(bytes); }
    void flush() override {}
    void startTimeBase() override {}
    void stopTimeBase() override {}
    void reset() override {}
    std::vector<std::vector<uint8_t>> sent;

private:
    std::string name_ = "Kept";
    bool open_ = false;
};

struct Note {
    uint32_t at;  // file ticks since the start
    int key;
    bool operator==(const Note&) const = default;
};

// A MIDI file in memory: the note-ons of every track at their absolute times.
class NoteSink final : public MidiFileSink {
public:
    void begin(int bpm) override {
        ++begun;
        tempo = bpm;
        clock.clear();
        notes.clear();
    }
    void add(int track, uint32_t delta, std::span<const uint8_t> bytes) override {
        uint32_t& now = clock[track];
        now += delta;
        if ((bytes[0] & 0xF0) == 0x90 && bytes[2] != 0) notes.push_back({now, bytes[1]});
    }
    bool save(const std::string& path, std::span<const int>, std::string& error) override {
        if (path.find("/no/such/") != std::string::npos) {
            error = "Unable to save " + path;
            return false;
        }
        saved.push_back(path);
        return true;
    }
    int begun = 0;
    int tempo = 0;
    std::map<int, uint32_t> clock;
    std::vector<Note> notes;
    std::vector<std::string> saved;
};

// A patch whose snapshots 1..3 play notes 60, 64 and 67 on every quarter, with the
// clock held while "~ Run" is off, and a Composer list over them.
struct SongHarness : SessionHarness {
    explicit SongHarness(bool holdWhileStopped = true) {
        Engine& e = session.engine;
        Module& quarters = add("Clock");
        connect(quarters, 0, "~  24");
        connect(quarters, 1, "~  50");
        if (holdWhileStopped) connect(quarters, 2, "~ Stop");
        key = &add("MIDIKey");
        connect(*key, 0, quarters.Name);
        snapshots().comboText = "AutoSave";
        snapshots().StoreNewPatch();
        for (int note : {60, 64, 67}) {
            connect(*key, 1, note == 60 ? "~  60" : note == 64 ? "~  64" : "~  67");
            snapshots().comboText = "Line" + std::to_string(note);
            snapshots().StoreNewPatch();
        }
        auto device = std::make_unique<KeptOutput>();
        output = device.get();
        e.ports.attachOutput(0, std::move(device));
        e.ports.setRecordSink(&sink);
        e.setRun(false);
    }
    Snapshots& snapshots() { return session.snapshots; }
    Composer& c() { return session.composer; }
    Engine& e() { return session.engine; }
    void ticks(int n) {
        for (int i = 0; i < n; ++i) session.engine.tick();
    }
    // Lines of (snapshot, measures).
    void lines(std::initializer_list<std::pair<int, int>> list) {
        for (auto [snapshot, measures] : list) {
            const int line = c().add(snapshot);
            c().setMeasures(line, std::to_string(measures));
        }
    }
    Module* key = nullptr;
    KeptOutput* output = nullptr;
    NoteSink sink;
};

}  // namespace

TEST(ComposerList, LinesReadIndexMarkNameAndMeasures) {
    SongHarness h;
    Composer& c = h.c();
    EXPECT_EQ(c.add(1), 0);
    EXPECT_EQ(c.lineText(0), "000 X 001 Line60  008") << "one line is Begin and End at once";
    c.add(2);
    c.add(3);
    EXPECT_EQ(c.lineTexts(), (std::vector<std::string>{"000 B 001 Line60  008", "001 - 002 Line64  008", "002 E 003 Line67  008"}));
    EXPECT_TRUE(c.setMeasures(1, " 12 "));
    EXPECT_FALSE(c.setMeasures(1, "12a"));
    EXPECT_FALSE(c.setMeasures(1, ""));
    EXPECT_FALSE(c.setMeasures(7, "3")) << "no such line";
    EXPECT_EQ(c.measuresOf(1), 12);
    EXPECT_EQ(h.session.kept.composerMeasures[1], 11) << "stored as measures minus one";
    EXPECT_TRUE(c.setMeasures(2, "99999999999"));
    EXPECT_EQ(c.measuresOf(2), 32767) << "limited to a word";
    EXPECT_TRUE(c.setMeasures(2, "0"));
    EXPECT_EQ(c.measuresOf(2), 1);
    EXPECT_EQ(c.totalMeasures(), 8 + 12 + 1);
    c.markBegin(2);
    c.markEnd(0);
    EXPECT_EQ(c.totalMeasures(), 0) << "Begin after End";
    EXPECT_EQ(c.lineText(2).substr(3, 3), " B ");
    EXPECT_EQ(c.lineText(0).substr(3, 3), " E ");
    EXPECT_EQ(Composer::mark(5, 2, 9), std::string(" - "));
}

TEST(ComposerList, EditsMoveSnapshotAndMeasuresTogetherAndKeepTheMarksInside) {
    SongHarness h;
    Composer& c = h.c();
    h.lines({{1, 1}, {2, 2}, {3, 3}});
    c.markBegin(1);
    EXPECT_EQ(c.insert(0, 3), 0);
    EXPECT_EQ(c.count(), 4);
    EXPECT_EQ(c.snapshotOf(0), 3);
    EXPECT_EQ(c.measuresOf(0), 8) << "a new line has the default eight measures";
    EXPECT_EQ(c.beginLine(), 2) << "the marks stay on their lines";
    EXPECT_EQ(c.endLine(), 3);
    EXPECT_EQ(c.moveDown(1), 2);
    EXPECT_EQ(c.snapshotOf(2), 1);
    EXPECT_EQ(c.measuresOf(2), 1);
    EXPECT_EQ(c.snapshotOf(1), 2);
    EXPECT_EQ(c.measuresOf(1), 2);
    EXPECT_EQ(c.moveUp(0), 0) << "the first line can't go up";
    EXPECT_EQ(c.moveDown(3), 3) << "nor the last down";
    EXPECT_EQ(c.remove(3), 2);
    EXPECT_EQ(c.count(), 3);
    EXPECT_EQ(c.endLine(), 2) << "End was on the removed last line";
    c.remove(0);
    c.remove(0);
    c.remove(0);
    EXPECT_EQ(c.count(), 0);
    EXPECT_EQ(c.beginLine(), 0);
    EXPECT_EQ(c.endLine(), 0);
    EXPECT_EQ(c.insert(5, 2), 0) << "past the end it adds";
    EXPECT_EQ(c.lineText(0), "000 X 002 Line64  008");
}

TEST(ComposerList, TheThousandAndFirstLineOverwritesTheFirst) {
    SongHarness h;
    Composer& c = h.c();
    for (int i = 0; i < 999; ++i) c.add(1);
    EXPECT_EQ(c.count(), 999);
    c.markBegin(500);
    EXPECT_EQ(c.add(2), 999);
    EXPECT_EQ(c.count(), 0) << "the count wraps silently";
    EXPECT_EQ(h.session.kept.composerEnd, 999);
    EXPECT_EQ(c.add(3), 0);
    EXPECT_EQ(c.count(), 1);
    EXPECT_EQ(c.snapshotOf(0), 3);
    EXPECT_EQ(c.beginLine(), 0) << "Begin follows End down";
    EXPECT_EQ(c.snapshotOf(999), 2) << "the rest stays in the arrays";
}

TEST(ComposerList, FieldsOfAHostileFileStayInTheArrays) {
    SongHarness h;
    h.session.kept.composerCount = 5000;
    h.session.kept.composerBegin = -7;
    h.session.kept.composerEnd = 31000;
    h.session.kept.composerMeasures[0] = -300;
    Composer& c = h.c();
    EXPECT_EQ(c.count(), 999);
    EXPECT_EQ(c.beginLine(), 0);
    EXPECT_EQ(c.endLine(), 999);
    EXPECT_EQ(c.measuresOf(0), 1);
    EXPECT_EQ(c.lineTexts().size(), 999u);
}

TEST(ComposerHook, StepsThroughLinesOfDifferentLengthsAndStopsAfterTheEnd) {
    SongHarness h;
    h.lines({{1, 2}, {2, 1}, {3, 3}});
    Composer& c = h.c();
    c.on();
    EXPECT_EQ(h.e().bus[sysbus::Run], 0) << "on, stopped";
    ASSERT_TRUE(c.play());
    EXPECT_FALSE(c.play()) << "already playing";
    EXPECT_EQ(h.e().CurrentSnapshot, 1) << "the first line is recalled at once";
    EXPECT_EQ(h.e().bus[sysbus::Run], 127);
    EXPECT_EQ(c.stepText(), "6 : 0");
    h.ticks(1);
    EXPECT_EQ(c.currentMeasure(), 0) << "the first measure shows 0";
    EXPECT_EQ(c.measuresLeft(), 2);
    EXPECT_EQ(h.e().bus[sysbus::Begin], 127);
    h.ticks(96 * 2 - 1);
    EXPECT_EQ(h.e().CurrentSnapshot, 1) << "the last tick of the second measure";
    h.ticks(1);
    EXPECT_EQ(h.e().CurrentSnapshot, 2) << "recalled on the first tick of the third measure";
    EXPECT_EQ(c.position(), 1);
    EXPECT_EQ(c.currentMeasure(), 2);
    EXPECT_EQ(h.e().bus[sysbus::Begin], 0);
    EXPECT_EQ(h.e().bus[sysbus::End], 0);
    h.ticks(96);
    EXPECT_EQ(h.e().CurrentSnapshot, 3);
    EXPECT_EQ(h.e().bus[sysbus::End], 127) << "the End line is flagged to the patch";
    EXPECT_EQ(c.measuresLeft(), 3);
    h.ticks(96 * 3 - 1);
    EXPECT_EQ(c.transport(), Transport::Playing);
    EXPECT_EQ(c.stepText(), "6 : 5");
    h.ticks(1);
    EXPECT_EQ(c.transport(), Transport::Stopped) << "no loop after the last line";
    EXPECT_EQ(h.e().bus[sysbus::Run], 0);
    EXPECT_EQ(h.e().bus[sysbus::Stop], 127);
    EXPECT_EQ(h.e().bus[sysbus::End], 0);
    h.ticks(96 * 4);
    EXPECT_EQ(c.position(), 2) << "stopped, the list stands still";
    ASSERT_TRUE(c.play());
    EXPECT_EQ(c.position(), 0) << "Play after Stop begins at Begin";
    EXPECT_EQ(h.e().CurrentSnapshot, 1);
}

TEST(ComposerHook, OnlyActiveItMovesAndProgramChangesHoldIt) {
    SongHarness h;
    h.lines({{1, 1}, {2, 1}});
    Composer& c = h.c();
    c.on();
    c.play();
    h.e().ports.progChgToSnapshot = true;
    h.ticks(96 * 3);
    EXPECT_EQ(c.position(), 0);
    EXPECT_EQ(c.currentMeasure(), -1);
    h.e().ports.progChgToSnapshot = false;
    c.off();
    EXPECT_EQ(c.transport(), Transport::Paused) << "off pauses a song that runs";
    h.ticks(96 * 3);
    EXPECT_EQ(c.position(), 0);
}

TEST(ComposerHook, ALineOnTheSameSnapshotRecallsNothing) {
    SongHarness h;
    h.lines({{1, 1}, {1, 1}, {2, 1}});
    Composer& c = h.c();
    c.on();
    c.play();
    h.ticks(1);
    h.connect(*h.key, 1, "~  99");  // a live edit
    h.ticks(96);
    EXPECT_EQ(c.position(), 1);
    EXPECT_EQ(h.key->inputCaption(1, h.e().names), "~  99") << "the edit stands";
    h.ticks(96);
    EXPECT_EQ(h.key->inputCaption(1, h.e().names), "~  64");
}

TEST(ComposerTransport, PauseContinuesTheSameLineAndStopResetsToBegin) {
    SongHarness h;
    h.e().ports.remoteMode = RemoteMode::Send;
    h.lines({{1, 1}, {2, 3}, {3, 1}});
    Composer& c = h.c();
    c.on();
    c.play();
    h.ticks(96 + 50);
    ASSERT_EQ(c.position(), 1);
    h.output->sent.clear();
    c.pause();
    EXPECT_EQ(c.transport(), Transport::Paused);
    EXPECT_EQ(h.e().bus[sysbus::Run], 0);
    h.ticks(96 * 5);
    EXPECT_EQ(c.position(), 1) << "paused, the list doesn't move";
    c.play();
    EXPECT_EQ(c.position(), 1);
    EXPECT_EQ(h.e().CurrentSnapshot, 2);
    std::vector<std::vector<uint8_t>> remote;
    for (const auto& m : h.output->sent)
        if (m[0] >= 250 && m[0] <= 252) remote.push_back(m);
    EXPECT_EQ(remote, (std::vector<std::vector<uint8_t>>{{252}, {251}})) << "stop, then continue, not start";
    h.ticks(1);
    EXPECT_EQ(c.measuresLeft(), 3) << "the line plays again from its start";
    h.ticks(96 * 3);
    EXPECT_EQ(c.position(), 2);
    c.stop();
    h.output->sent.clear();
    c.play();
    EXPECT_EQ(c.position(), 0);
    ASSERT_FALSE(h.output->sent.empty());
    EXPECT_EQ(h.output->sent.back(), (std::vector<uint8_t>{250})) << "start";
}

TEST(ComposerTransport, BeginAfterEndPlaysTheBeginLineOnly) {
    SongHarness h;
    h.lines({{1, 1}, {2, 1}, {3, 2}});
    Composer& c = h.c();
    c.markBegin(2);
    c.markEnd(0);
    c.on();
    c.play();
    EXPECT_EQ(h.e().CurrentSnapshot, 3);
    h.ticks(96 * 2);
    EXPECT_EQ(c.transport(), Transport::Playing);
    h.ticks(1);
    EXPECT_EQ(c.transport(), Transport::Stopped);
    EXPECT_EQ(c.position(), 2);
}

TEST(ComposerTransport, OneLinePlaysAndStops) {
    SongHarness h;
    h.lines({{2, 1}});
    Composer& c = h.c();
    EXPECT_EQ(c.lineText(0).substr(3, 3), " X ");
    c.on();
    c.play();
    h.ticks(96);
    EXPECT_EQ(c.transport(), Transport::Playing);
    h.ticks(1);
    EXPECT_EQ(c.transport(), Transport::Stopped);
    EXPECT_EQ(h.e().bus[sysbus::End], 0);
}

TEST(ComposerTransport, AnEmptyListDoesNotPlay) {
    SongHarness h;
    h.c().on();
    EXPECT_FALSE(h.c().play());
    EXPECT_EQ(h.e().bus[sysbus::Run], 0);
}

TEST(ComposerTransport, RemoteStartContinueAndStopOnlyWhileOn) {
    SongHarness h;
    h.lines({{1, 1}, {2, 1}});
    Composer& c = h.c();
    c.remoteButton(sysbus::Begin);
    EXPECT_EQ(c.transport(), Transport::Stopped) << "off, remote control is ignored";
    c.on();
    c.remoteButton(sysbus::Begin);
    EXPECT_EQ(c.transport(), Transport::Playing);
    h.ticks(97);
    c.remoteButton(sysbus::Stop);
    EXPECT_EQ(c.transport(), Transport::Paused);
    c.remoteButton(sysbus::Run);
    EXPECT_EQ(c.position(), 1) << "continue";
    c.remoteButton(sysbus::Stop);
    c.remoteButton(sysbus::Begin);
    EXPECT_EQ(c.position(), 0) << "start";
}

TEST(ComposerSwitch, OffGivesBackTheRunButtonAndTempOffComesBackOn) {
    SongHarness h;
    h.lines({{1, 1}});
    Composer& c = h.c();
    h.e().setRun(true);  // the toolbar's Run was in
    c.on();
    EXPECT_EQ(h.e().bus[sysbus::Run], 0) << "the Composer's own stop state";
    c.play();
    c.offTempIf();
    EXPECT_FALSE(c.active());
    EXPECT_EQ(h.e().bus[sysbus::Run], 127) << "back to the toolbar's state";
    c.onIf();
    EXPECT_TRUE(c.active());
    EXPECT_EQ(h.e().bus[sysbus::Run], 0) << "paused by the way";
    c.onIf();
    c.off();
    c.onIf();
    EXPECT_FALSE(c.active()) << "only what offTempIf turned off comes back";
    c.toggle();
    EXPECT_TRUE(c.active());
}

TEST(ComposerSwitch, ALoadPutsThePositionAtZeroAndTheListRoundTrips) {
    ScratchDir dir;
    SongHarness h;
    h.lines({{1, 2}, {2, 1}, {3, 4}});
    h.c().markBegin(1);
    h.c().on();
    h.c().play();
    h.ticks(96 * 2 + 1);
    ASSERT_EQ(h.c().position(), 2);
    ASSERT_EQ(h.save(dir.file("song.qmp")), "");
    std::string error;
    ASSERT_TRUE(h.session.OpenFile(dir.file("song.qmp"), error)) << error;
    EXPECT_EQ(h.c().position(), 0);
    EXPECT_TRUE(h.c().active()) << "on again after the load";
    EXPECT_EQ(h.c().transport(), Transport::Stopped);
    EXPECT_EQ(h.c().lineTexts(), (std::vector<std::string>{"000 - 001 Line60  002", "001 B 002 Line64  001", "002 E 003 Line67  004"}));
    h.c().play();
    EXPECT_EQ(h.c().position(), 1) << "Play begins at Begin";
    h.session.newPatch();
    EXPECT_FALSE(h.c().active());
    EXPECT_EQ(h.c().count(), 0);
}

TEST(ComposerRecording, TheFileHoldsTheNotesOfEveryLineAtTheirTimes) {
    SongHarness h;
    h.lines({{1, 2}, {2, 1}, {3, 1}});
    Composer& c = h.c();
    c.recordingPath = "song.mid";
    std::string saved;
    c.recordingSaved = [&](const std::string& path) { saved = path; };
    c.on();
    c.toggleRecord();
    ASSERT_TRUE(c.recording());
    c.play();
    int ranOut = 0;
    for (int t = 1; t <= 96 * 4 + 1; ++t) {
        h.ticks(1);
        if (h.e().bus[sysbus::Run] == 0 && ranOut == 0) ranOut = t;
    }
    EXPECT_EQ(ranOut, 96 * 4 - 1) << "Run goes off when the measures to record have run";
    EXPECT_EQ(c.transport(), Transport::Stopped);
    EXPECT_FALSE(c.recording()) << "the record button is released";
    EXPECT_EQ(saved, "song.mid");
    EXPECT_EQ(h.sink.saved, (std::vector<std::string>{"song.mid"}));
    EXPECT_EQ(c.lastRecording(), "song.mid");
    EXPECT_EQ(h.sink.tempo, h.e().Tempo());
    // Quarters, 480 file ticks apart. A line's snapshot is recalled after the modules of its
    // first tick have run, so its downbeat still sounds the line before.
    std::vector<Note> expected;
    const int keys[4][4] = {{60, 60, 60, 60}, {60, 60, 60, 60}, {60, 64, 64, 64}, {64, 67, 67, 67}};
    for (uint32_t m = 0; m < 4; ++m)
        for (uint32_t q = 0; q < 4; ++q) expected.push_back({(m * 4 + q) * 480, keys[m][q]});
    EXPECT_EQ(h.sink.notes, expected);
}

TEST(ComposerRecording, NotesStartNoMoreOnceTheMeasuresToRecordHaveRun) {
    SongHarness h(false);  // the clock ignores "~ Run"
    h.lines({{1, 1}, {2, 1}});
    Composer& c = h.c();
    c.recordingPath = "song.mid";
    c.on();
    c.toggleRecord();
    c.play();
    h.ticks(96 * 2 - 2);
    EXPECT_FALSE(c.recordingTimeUp());
    h.ticks(1);
    EXPECT_TRUE(c.recordingTimeUp());
    h.ticks(2);  // the clock strikes again on the first tick after the song
    EXPECT_EQ(c.transport(), Transport::Stopped);
    EXPECT_FALSE(c.recordingTimeUp());
    ASSERT_FALSE(h.sink.notes.empty());
    EXPECT_EQ(h.sink.notes.size(), 8u);
    EXPECT_LT(h.sink.notes.back().at, 2u * 1920u);
}

TEST(ComposerRecording, PauseWritesTheFileAndRecordWhilePlayingStopsFirst) {
    SongHarness h;
    h.lines({{1, 2}, {2, 2}});
    Composer& c = h.c();
    c.recordingPath = "take.mid";
    c.on();
    c.toggleRecord();
    c.play();
    h.ticks(10);
    c.pause();
    EXPECT_EQ(h.sink.saved.size(), 1u);
    EXPECT_FALSE(h.e().ports.recording());
    c.toggleRecord();
    c.play();
    h.ticks(10);
    c.toggleRecord();  // release while playing
    EXPECT_EQ(c.transport(), Transport::Stopped);
    EXPECT_FALSE(c.recording());
    EXPECT_EQ(h.sink.saved.size(), 2u);
    c.play();
    c.toggleRecord();  // pressed in while playing: it stops first and stays in
    EXPECT_EQ(c.transport(), Transport::Stopped);
    EXPECT_EQ(h.sink.saved.size(), 2u) << "nothing was being recorded";
    EXPECT_TRUE(c.recording());
}

TEST(ComposerRecording, AFailedSaveIsReported) {
    SongHarness h;
    h.lines({{1, 1}});
    Composer& c = h.c();
    c.recordingPath = "/no/such/folder/take.mid";
    std::string failure;
    c.recordingFailed = [&](const std::string& error) { failure = error; };
    c.on();
    c.toggleRecord();
    c.play();
    h.ticks(97);
    EXPECT_EQ(failure, "Unable to save /no/such/folder/take.mid");
    EXPECT_TRUE(c.lastRecording().empty());
}

TEST(ComposerFiles, ShortFileNames) {
    EXPECT_EQ(shortFileName("/home/me/My Song (final).mid"), "/home/me/MYSONGFI.MID");
    EXPECT_EQ(shortFileName("take.midi"), "TAKE.MID");
    EXPECT_EQ(shortFileName("/tmp/.mid"), "/tmp/SONG.MID");
    EXPECT_EQ(shortFileName("noext"), "NOEXT");
}
