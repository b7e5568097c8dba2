#include "examples/DemoPatch.h"

#include <array>
#include <string>
#include <utility>

#include "modules/midi/NoteOutputs.h"
#include "modules/sequencers/Steps.h"
#include "shell/Session.h"

namespace quillmer {

namespace {

constexpr int kDemoTempo = 112;
constexpr int kTwipsColumn = 2700;
constexpr int kTwipsRow = 1500;

// Tuning tables of the shipped default.pbt.
constexpr int kNaturalMinor = 2;
constexpr int kMinorPentatonic = 6;

// General MIDI programs, counted from 0.
constexpr int kVibraphone = 11;
constexpr int kFingeredBass = 33;
constexpr int kDrumChannel = 9;  // channel 10 of port A

class DemoBuilder {
public:
    explicit DemoBuilder(Session& session) : s_(session), e_(session.engine) {}

    Module& place(std::string_view type, int page, int column, int row) {
        if (e_.CurrentPage() != page) e_.showPage(page);
        Module& m = e_.New(*typeIdByName(type));
        m.Left = 240 + column * kTwipsColumn;
        m.Top = 240 + row * kTwipsRow;
        return m;
    }
    void connect(Module& m, int input, std::string_view output) {
        const int position = e_.names.sortedPosition(output);
        e_.connectInput(m, input, static_cast<uint16_t>(position < 0 ? 0 : position));
    }
    static std::string constant(int value) {
        std::string digits = std::to_string(value);
        return "~ " + std::string(3 - digits.size(), ' ') + digits;
    }
    void connectConstant(Module& m, int input, int value) { connect(m, input, constant(value)); }
    // Held while the transport is stopped: a clock's gate drops, so its notes end at the stop.
    void holdOnStop(Module& m, int holdInput) { connect(m, holdInput, "~ Stop"); }
    void stages(Module& m, std::initializer_list<uint8_t> values) {
        static_cast<StepSequencer&>(m).UpdateSeq(std::span<const uint8_t>(values.begin(), values.size()));
    }
    void store(const std::string& name) {
        s_.snapshots.comboText = name;
        s_.snapshots.StoreNewPatch();
    }

private:
    Session& s_;
    Engine& e_;
};

}  // namespace

void buildDemoPatch(Session& session) {
    Engine& e = session.engine;
    DemoBuilder b(session);
    session.userName = "Quillmer";
    e.SetNewTempo(kDemoTempo);

    // Page North: time and the melody.
    Module& eighths = b.place("Clock", 0, 0, 0);
    b.connectConstant(eighths, 0, 12);
    b.connectConstant(eighths, 1, 70);
    b.holdOnStop(eighths, 2);
    Module& melodyCount = b.place("Stepper", 0, 0, 1);
    b.connectConstant(melodyCount, 0, 12);
    b.connectConstant(melodyCount, 4, 15);  // Limit
    b.holdOnStop(melodyCount, Stepper::kHold);
    Module& melody = b.place("Step16", 0, 0, 2);
    b.connect(melody, 0, melodyCount.Name);
    auto& vibes = static_cast<MIDITone&>(b.place("MIDITone", 0, 0, 4));
    vibes.setChanPort(e, 0);
    b.connect(vibes, 0, eighths.Name);
    b.connect(vibes, 1, melody.Name);
    b.connectConstant(vibes, 2, 9);   // root A
    b.connectConstant(vibes, 6, kVibraphone);
    b.connectConstant(vibes, 7, kMinorPentatonic);
    b.connectConstant(vibes, 8, 1);   // octave

    // The bass: quarters in A natural minor.
    Module& quarters = b.place("Clock", 0, 2, 0);
    b.connectConstant(quarters, 0, 24);
    b.connectConstant(quarters, 1, 85);
    b.holdOnStop(quarters, 2);
    Module& bassCount = b.place("Stepper", 0, 2, 1);
    b.connectConstant(bassCount, 0, 24);
    b.connectConstant(bassCount, 4, 7);
    b.holdOnStop(bassCount, Stepper::kHold);
    Module& bassLine = b.place("Step8", 0, 3, 1);
    b.connect(bassLine, 0, bassCount.Name);
    b.stages(bassLine, {0, 0, 4, 4, 5, 5, 3, 4});
    auto& bass = static_cast<MIDITone&>(b.place("MIDITone", 0, 3, 4));
    bass.setChanPort(e, 1);
    b.connect(bass, 0, quarters.Name);
    b.connect(bass, 1, bassLine.Name);
    b.connectConstant(bass, 2, 9);
    b.connectConstant(bass, 3, 105);
    b.connectConstant(bass, 6, kFingeredBass);
    b.connectConstant(bass, 7, kNaturalMinor);
    b.connectConstant(bass, 8, 2);

    // Page East: drums on channel 10, accents from step tables.
    Module& sixteenths = b.place("Clock", 1, 0, 0);
    b.connectConstant(sixteenths, 0, 6);
    b.connectConstant(sixteenths, 1, 40);
    b.holdOnStop(sixteenths, 2);
    Module& hatCount = b.place("Stepper", 1, 0, 1);
    b.connectConstant(hatCount, 0, 6);
    b.connectConstant(hatCount, 4, 7);
    b.holdOnStop(hatCount, Stepper::kHold);
    Module& hatAccents = b.place("Step8", 1, 1, 1);
    b.connect(hatAccents, 0, hatCount.Name);
    b.stages(hatAccents, {92, 38, 70, 38, 92, 38, 70, 55});
    Module& kickAccents = b.place("Step4", 1, 1, 2);
    b.connect(kickAccents, 0, bassCount.Name);
    b.stages(kickAccents, {120, 0, 112, 0});
    Module& snareAccents = b.place("Step4", 1, 1, 3);
    b.connect(snareAccents, 0, bassCount.Name);
    b.stages(snareAccents, {0, 104, 0, 112});
    struct Drum {
        int note;
        Module* clock;
        Module* velocity;
    };
    const std::array<Drum, 3> drums{{{36, &quarters, &kickAccents}, {38, &quarters, &snareAccents}, {42, &sixteenths, &hatAccents}}};
    int row = 1;
    for (const Drum& d : drums) {
        auto& key = static_cast<MIDIKey&>(b.place("MIDIKey", 1, 3, row++));
        key.setChanPort(e, kDrumChannel);
        b.connect(key, 0, d.clock->Name);
        b.connectConstant(key, 1, d.note);
        b.connect(key, 3, d.velocity->Name);
    }
    e.showPage(0);

    // Snapshots: slot 0 is the one every save refreshes with the live state.
    b.store("AutoSave");
    b.stages(melody, {10, 12, 13, 12, 11, 10, 8, 10, 12, 13, 15, 14, 13, 12, 11, 10});
    b.connect(vibes, 3, " Off (0)");  // the melody rests
    b.store("Intro");
    b.connectConstant(vibes, 3, 96);
    b.store("Verse");
    b.stages(melody, {15, 17, 18, 17, 15, 14, 13, 12, 13, 15, 17, 18, 20, 18, 17, 15});
    b.stages(snareAccents, {0, 118, 0, 127});
    b.connectConstant(vibes, 3, 112);
    b.store("Chorus");
    session.snapshots.select(2);  // the patch opens on the verse

    // The song of the Composer: Intro, Verse, Chorus, Verse, Chorus.
    Composer& song = session.composer;
    for (const auto& [snapshot, measures] : {std::pair{1, 4}, {2, 8}, {3, 8}, {2, 8}, {3, 8}})
        song.setMeasures(song.add(snapshot), std::to_string(measures));
    e.setRun(true);
}

bool writeDemoPatch(Session& session, const std::string& path, std::string& error) {
    buildDemoPatch(session);
    return session.SaveModuleFile(path, error) && session.LoadModuleFile(path, error) &&
           session.SaveModuleFile(path, error);
}

}  // namespace quillmer
