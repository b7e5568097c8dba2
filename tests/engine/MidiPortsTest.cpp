#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "FakeDevices.h"
#include "Harness.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

// Sends a note-on on port A in every tick while its input is non-zero.
class Sender final : public Module {
public:
    static constexpr InputSpec kInputs[] = {{" Gate", "Gate", sysbus::On}};
    explicit Sender(ModuleTypeId type) : Module(type, kInputs) {}
    int track = 3;

protected:
    void update(Engine& engine) override {
        if (in(0) != 0) engine.ports.SendMIDI(0, 0x90, 60, 100, track);
    }
};

struct PortHarness : Harness {
    PortHarness() : Harness({"Unity", "Clock"}) {
        registry.replace("MIDIKey", [] { return std::make_unique<Sender>(*typeIdByName("MIDIKey")); });
        engine = std::make_unique<Engine>(timers, registry);
    }
    FakeOutput& attach(int port, std::string name = "Synth") {
        auto device = std::make_unique<FakeOutput>(name, timers, &sent);
        FakeOutput& ref = *device;
        engine->ports.attachOutput(port, std::move(device));
        return ref;
    }
    std::vector<std::vector<uint8_t>> bytes() const {
        std::vector<std::vector<uint8_t>> all;
        for (const SentMessage& m : sent) all.push_back(m.bytes);
        return all;
    }
    std::vector<SentMessage> sent;
};

class FakeProvider final : public MidiDeviceProvider {
public:
    FakeProvider(const TimerService& clock, std::vector<SentMessage>* log) : clock_(clock), log_(log) {}
    std::vector<std::string> outputNames() override { return {"Synth", "Broken"}; }
    std::vector<std::string> inputNames() override { return {"Keys"}; }
    std::unique_ptr<MidiOutputDevice> makeOutput(const std::string& name, int) override {
        if (name != "Synth" && name != "Broken") return nullptr;
        return std::make_unique<FakeOutput>(name, clock_, log_, name == "Broken");
    }
    std::unique_ptr<MidiInputDevice> makeInput(const std::string& name, int) override {
        return name == "Keys" ? std::make_unique<FakeInput>(name) : nullptr;
    }

private:
    const TimerService& clock_;
    std::vector<SentMessage>* log_;
};

std::vector<uint8_t> msg(std::initializer_list<uint8_t> b) { return b; }

}  // namespace

TEST(Panic, ControllerSequencePerPortOptionIsByteExact) {
    PortHarness h;
    FakeOutput& a = h.attach(0, "A");
    h.attach(1, "B");
    h.engine->ports.PortOptions = {portoption::AllNotesOff, portoption::ResetControls, 0, 0};
    h.engine->ports.AllNotesOff();
    const auto sent = h.bytes();
    ASSERT_EQ(sent.size(), 16u + 16u * 5u);
    for (uint8_t ch = 0; ch < 16; ++ch) {
        EXPECT_EQ(sent[ch], msg({static_cast<uint8_t>(0xB0 | ch), 123, 0}));
        const size_t at = 16 + ch * 5u;
        EXPECT_EQ(sent[at + 0], msg({static_cast<uint8_t>(0xB0 | ch), 121, 0}));
        EXPECT_EQ(sent[at + 1], msg({static_cast<uint8_t>(0xB0 | ch), 7, 112}));
        EXPECT_EQ(sent[at + 2], msg({static_cast<uint8_t>(0xB0 | ch), 64, 0}));
        EXPECT_EQ(sent[at + 3], msg({static_cast<uint8_t>(0xB0 | ch), 1, 0}));
        EXPECT_EQ(sent[at + 4], msg({static_cast<uint8_t>(0xE0 | ch), 0, 63}));
    }
    EXPECT_EQ(a.flushes, 1);
    EXPECT_TRUE(std::all_of(h.sent.begin(), h.sent.end(), [](const SentMessage& m) { return m.stampMs < 0; }));
}

TEST(Panic, KeySweepIsPacedAsThirtyTwoWaitsOfSixtyMsPerPort) {
    PortHarness h;
    h.attach(0, "A");
    h.attach(1, "B");
    h.engine->ports.PortOptions = {portoption::AllKeysOff, portoption::AllNotesOff, 0, 0};
    h.engine->ports.setLatency(50);  // panic ignores latency
    h.engine->ports.AllNotesOff();
    h.timers.advanceByMs(32 * 60 + 1);
    EXPECT_FALSE(h.engine->ports.sweepRunning());

    std::vector<int64_t> batchTimes;
    int middleNotes = 0, outerNotes = 0;
    for (const SentMessage& m : h.sent) {
        if ((m.bytes[0] & 0xF0) != 0x80) continue;
        EXPECT_EQ(m.stampMs, -1);
        if (batchTimes.empty() || batchTimes.back() != m.atMicros) batchTimes.push_back(m.atMicros);
        (m.bytes[1] >= 32 && m.bytes[1] <= 96 ? middleNotes : outerNotes)++;
    }
    ASSERT_EQ(batchTimes.size(), 32u);
    for (size_t i = 0; i < batchTimes.size(); ++i) EXPECT_EQ(batchTimes[i], static_cast<int64_t>(i) * 60000);
    EXPECT_EQ(middleNotes, 16 * 65);
    EXPECT_EQ(outerNotes, 16 * 63);
    // The first batch is the middle keys of channel 1, the last the outer keys of channel 16.
    EXPECT_EQ(h.sent.front().bytes, msg({0x80, 32, 0}));
    // Port B's controllers wait for port A's sweep to end.
    const auto firstOnB = std::find_if(h.sent.begin(), h.sent.end(), [](const SentMessage& m) {
        return m.bytes == msg({0xB0, 123, 0});
    });
    ASSERT_NE(firstOnB, h.sent.end());
    EXPECT_EQ(firstOnB->atMicros, 32 * 60000);
}

TEST(Latency, MessagesAreStampedAndTheFillerKeepsTheQueueFed) {
    PortHarness h;
    h.attach(0);
    h.engine->ports.setLatency(50);
    Module& sender = h.add("MIDIKey");
    h.engine->StartTimers();
    h.ticks(1);  // the send reopens the ports, restarting the stamp at the latency
    ASSERT_FALSE(h.sent.empty());
    EXPECT_EQ(h.sent.back().bytes, msg({0x90, 60, 100}));
    EXPECT_EQ(h.sent.back().stampMs, 50);
    h.ticks(1);
    EXPECT_EQ(h.sent.back().stampMs, 71);

    h.engine->connectInput(sender, 0, 0);  // gate off: nothing sent, so the filler goes
    h.sent.clear();
    h.ticks(2);
    ASSERT_EQ(h.sent.size(), 2u);
    EXPECT_EQ(h.sent[0].bytes, msg({249}));
    EXPECT_EQ(h.sent[1].stampMs - h.sent[0].stampMs, 21);
}

TEST(Latency, ARaisedLatencyReopensThePortsAndLosesWhatWasQueued) {
    PortHarness h;
    FakeOutput& out = h.attach(0);
    h.add("MIDIKey");
    h.engine->StartTimers();
    h.ticks(2);
    const int flushesBefore = out.flushes;
    const int opensBefore = out.opens;
    EXPECT_EQ(h.engine->ports.setLatencyText("120"), "120");
    EXPECT_EQ(h.engine->ports.setLatencyText("lots"), "120");
    EXPECT_EQ(h.engine->ports.setLatencyText("1001"), "120");
    h.ticks(1);
    EXPECT_EQ(out.flushes, flushesBefore + 1) << "the queue was thrown away";
    EXPECT_EQ(out.opens, opensBefore + 1);
    EXPECT_EQ(h.sent.back().stampMs, 120);
}

TEST(Latency, SysExIsAlwaysImmediate) {
    PortHarness h;
    h.attach(0);
    h.engine->ports.setLatency(200);
    const uint8_t sysex[] = {0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7};
    h.engine->ports.SendMIDISysEx(0, sysex);
    ASSERT_EQ(h.sent.size(), 1u);
    EXPECT_EQ(h.sent[0].stampMs, -1);
    EXPECT_EQ(h.sent[0].bytes.size(), 6u);
}

TEST(PerTickBytes, ActiveSensingTakesTheClockBranchSoNoFiller) {
    PortHarness h;
    h.attach(0, "A");
    h.attach(1, "B");
    h.engine->ports.setLatency(30);
    h.engine->ports.PortOptions[1] = portoption::ActiveSensing;
    h.engine->options.syncMode = SyncMode::Master;
    h.engine->StartTimers();
    h.ticks(3);
    int clocks = 0, sensing = 0, fillers = 0;
    for (const SentMessage& m : h.sent) {
        clocks += m.bytes == msg({248});
        sensing += m.bytes == msg({254});
        fillers += m.bytes == msg({249});
    }
    EXPECT_EQ(clocks, 3);
    EXPECT_EQ(sensing, 3);
    EXPECT_EQ(fillers, 0);
}

TEST(PerTickBytes, AMasterSendsItsResetOnEveryPort) {
    PortHarness h;
    h.attach(0, "A");
    h.attach(2, "C");
    h.engine->options.syncMode = SyncMode::Master;
    h.engine->StartTimers();
    h.sent.clear();
    h.engine->ResetClocks();
    EXPECT_EQ(std::count_if(h.sent.begin(), h.sent.end(), [](const SentMessage& m) { return m.bytes == msg({244}); }), 2);
}

TEST(Sending, PanicHeldSilencesModulesAndShutdownToo) {
    PortHarness h;
    h.attach(0);
    h.engine->ports.AllNotesOffActive = true;
    h.engine->ports.SendMIDI(0, 0x90, 60, 1);
    EXPECT_TRUE(h.sent.empty());
    h.engine->ports.AllNotesOffActive = false;
    h.engine->ports.SendMIDI(0, 0xC0, 5, 0);
    ASSERT_EQ(h.sent.size(), 1u);
    EXPECT_EQ(h.sent[0].bytes, msg({0xC0, 5})) << "a program change is two bytes on the wire";

    h.engine->StartTimers();
    h.engine->ShutdownStopTimers();
    ASSERT_TRUE(h.engine->shutdown());
    h.sent.clear();
    h.engine->ports.SendMIDI(0, 0x90, 60, 1);
    h.engine->ports.sendPerTickBytes();
    EXPECT_TRUE(h.sent.empty()) << "nothing leaves after shutdown";
}

TEST(SlaveMode, ClocksOnPortATickTheEngineWhileAbsoluteClocksGoOn) {
    PortHarness h;
    Module& abs = h.add("Unity");
    abs.setPriority(priority::AbsClockA);
    h.engine->options.syncMode = SyncMode::Slave;
    h.engine->options.absClockA = 10;
    auto keys = std::make_unique<FakeInput>("Keys");
    FakeInput& portA = *keys;
    h.engine->ports.attachInput(0, std::move(keys));
    auto other = std::make_unique<FakeInput>("Pads");
    FakeInput& portB = *other;
    h.engine->ports.attachInput(1, std::move(other));
    h.engine->StartTimers();
    h.timers.advanceByMs(100);
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 0) << "no tick without input clocks";
    EXPECT_EQ(h.log.size(), 10u) << "absolute clock A ran on";

    portA.feed({{248, 0, 0}, {248, 0, 0}, {248, 0, 0}});
    portB.feed({{248, 0, 0}});
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 3);
    EXPECT_FALSE(h.engine->lamps.midiInFlag) << "clocks don't flash the input lamp";
    portA.feed({{244, 0, 0}});
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 0);
    EXPECT_EQ(h.timers.interval(h.engine->tickTimer()), 0) << "the tick timer stays off";
}

TEST(InputTables, TheNinthNoteOnOneSlotIsDroppedAndUnheldNoteOffsChangeNothing) {
    PortHarness h;
    std::vector<MidiInputMessage> notes;
    for (uint8_t n = 0; n < 9; ++n) notes.push_back({0x92, static_cast<uint8_t>(60 + n), 100});
    h.engine->ports.onInputData(1, notes);
    const size_t slot = 2 + 16;
    const MidiInputTables& t = h.engine->ports.in;
    EXPECT_EQ(t.InNoteActive[slot], 0xFF);
    EXPECT_EQ(t.InVoiceNote[7][slot], 67);
    EXPECT_EQ(t.InLastNote[slot], 67) << "the ninth isn't entered, not even as the last note";
    h.engine->ports.onInputData(1, {{0x82, 90, 0}});
    EXPECT_EQ(t.InNoteActive[slot], 0xFF);
    h.engine->ports.onInputData(1, {{0x92, 63, 0}});  // note-on with velocity 0 is a note-off
    EXPECT_EQ(t.InNoteActive[slot], 0xFF & ~(1 << 3));
    h.engine->ports.onInputData(1, {{0x92, 99, 80}});
    EXPECT_EQ(t.InVoiceNote[3][slot], 99) << "the lowest free voice is taken";
    EXPECT_EQ(t.InNoteFlag[slot], -1);
}

TEST(InputTables, NrpnAndRpnValuesReachTheirTablesOnceAllocated) {
    PortHarness h;
    MidiPorts& p = h.engine->ports;
    p.onInputData(0, {{0xB0, 99, 3}, {0xB0, 98, 7}, {0xB0, 6, 90}});
    EXPECT_EQ(p.in.InDataMsb[0], 90);
    EXPECT_TRUE(p.in.InNrpnTable.empty());
    p.in.allocateParameterTables();
    p.onInputData(0, {{0xB0, 6, 90}});
    EXPECT_EQ(p.in.InNrpnTable[MidiInputTables::parameterIndex(3, 7, 0)], 90);
    p.onInputData(0, {{0xB0, 38, 5}});
    EXPECT_EQ(p.in.InNrpnTable[MidiInputTables::parameterIndex(3, 7, 0)], (90 - 64) * 128 + 5);
    p.onInputData(0, {{0xB5, 101, 0}, {0xB5, 100, 0}, {0xB5, 6, 12}});
    EXPECT_EQ(p.in.InRpnTable[MidiInputTables::parameterIndex(0, 0, 5)], 12);
    EXPECT_EQ(p.in.InRpnSelect[5], 0);
    EXPECT_EQ(p.in.InControl[101][5], 0);
    EXPECT_EQ(p.in.InControl[6][5], 12);
}

TEST(InputTriggers, ControllerAndNrpnTriggersExcludeEachOther) {
    PortHarness h;
    MidiPorts& p = h.engine->ports;
    p.setTrigger(trigger::NrpnLsb, true);
    p.setTrigger(trigger::NrpnMsb, true);
    p.setTrigger(trigger::Control, true);
    EXPECT_EQ(p.MidiInTriggerMask(), trigger::Control);
    p.setTrigger(trigger::NrpnMsb, true);
    EXPECT_EQ(p.MidiInTriggerMask(), trigger::NrpnMsb);
}

TEST(InputTriggers, ATriggeringNoteRunsTheInputPassAtOnceAndTheTickSkipsItOnce) {
    PortHarness h;
    Module& reader = h.add("Unity");
    reader.setPriority(priority::MidiInput);
    h.engine->StartTimers();
    h.engine->ports.onInputData(0, {{0x90, 60, 1}});
    EXPECT_TRUE(h.log.empty()) << "no trigger set";
    h.engine->ports.setTrigger(trigger::NoteOn, true);
    h.engine->ports.onInputData(0, {{0x80, 60, 0}});
    EXPECT_TRUE(h.log.empty()) << "a note-off isn't a note-on";
    h.engine->ports.onInputData(0, {{0x90, 60, 1}});
    EXPECT_EQ(h.log.size(), 1u);
    h.ticks(1);
    EXPECT_EQ(h.log.size(), 1u);
    h.ticks(1);
    EXPECT_EQ(h.log.size(), 2u);
}

TEST(DeviceChoice, ADeviceLivesOnOnePortAndFailuresAreReported) {
    PortHarness h;
    FakeProvider provider(h.timers, &h.sent);
    MidiPorts& p = h.engine->ports;
    p.setProvider(&provider);
    std::vector<PortError> errors;
    p.onError = [&](const PortError& e) { errors.push_back(e); };
    EXPECT_EQ(p.outputChoices().back(), "None Selected");
    EXPECT_TRUE(p.chooseOutput(0, "Synth"));
    EXPECT_TRUE(p.chooseOutput(2, "Synth"));
    EXPECT_EQ(p.outputName(0), "None Selected");
    EXPECT_FALSE(p.outputOpen(0));
    EXPECT_TRUE(p.outputOpen(2));
    EXPECT_FALSE(p.chooseOutput(1, "Broken"));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].title, "MIDI Output Error");
    EXPECT_NE(errors[0].text.find("Broken"), std::string::npos);
    EXPECT_EQ(p.outputName(1), "None Selected");
    p.startingUp = true;
    EXPECT_FALSE(p.chooseInput(3, "Nowhere"));
    EXPECT_TRUE(errors.back().showOptions);
    EXPECT_EQ(errors.back().title, "MIDI Input Error");
    EXPECT_TRUE(p.chooseInput(3, "Keys"));
    EXPECT_TRUE(p.InputOpen[3]);
    EXPECT_EQ(outputPortKey(2), "2MidiOutPort");
    EXPECT_EQ(channelSlotCaption(0), "1 A");
    EXPECT_EQ(channelSlotCaption(63), "16D");
}

TEST(DeviceEvents, ARunDryQueueLightsTheLateLampAndReopens) {
    PortHarness h;
    FakeOutput& out = h.attach(0);
    h.engine->StartTimers();
    h.ticks(1);
    h.engine->ports.ReopenOutputs = false;
    out.raiseQueueEmpty();
    h.ticks(1);
    EXPECT_TRUE(h.engine->ports.ReopenOutputs || out.opens > 1);
    EXPECT_TRUE(h.engine->lamps.timingErrorFlag || h.engine->lamps.timingError);
}

namespace {
struct RecordedEvent {
    int track;
    uint32_t delta;
    std::vector<uint8_t> bytes;
};
class ListSink final : public MidiFileSink {
public:
    void begin(int t) override { tempo = t; }
    void add(int track, uint32_t delta, std::span<const uint8_t> bytes) override {
        events.push_back({track, delta, {bytes.begin(), bytes.end()}});
    }
    bool save(const std::string&, std::span<const int> tracks, std::string&) override {
        savedTracks.assign(tracks.begin(), tracks.end());
        return saved = true;
    }
    int tempo = 0;
    bool saved = false;
    std::vector<int> savedTracks;
    std::vector<RecordedEvent> events;
};
}  // namespace

TEST(Recording, DeltasCountTicksSinceTheTracksLastMessageInFileTicks) {
    PortHarness h;
    h.attach(0);
    ListSink sink;
    MidiPorts& p = h.engine->ports;
    p.setRecordSink(&sink);
    auto& sender = static_cast<Sender&>(h.add("MIDIKey"));
    sender.track = p.allocateRecordingTrack();
    const int controlTrack = p.allocateRecordingTrack();
    h.engine->connectInput(sender, 0, 0);
    p.setRecording(true);
    h.engine->setRun(true);
    h.engine->StartTimers();
    h.ticks(1);  // run starts: new tracks
    EXPECT_EQ(sink.tempo, 120);
    h.ticks(4);
    h.engine->connectInput(sender, 0, 1);  // gate on from the sixth tick
    h.ticks(2);
    p.SendMIDI(0, 0xB0, 7, 100, controlTrack);
    p.SendMIDI(0, 0xB0, 7, 90, controlTrack);
    p.SendMIDI(0, 248, 0, 0, controlTrack);  // real-time bytes are not recorded
    ASSERT_EQ(sink.events.size(), 4u);
    EXPECT_EQ(sink.events[0].track, sender.track + 1) << "track 1 is the first after the tempo track";
    EXPECT_EQ(sink.events[0].delta, 5u * 20u);
    EXPECT_EQ(sink.events[1].delta, 20u) << "one tick later";
    EXPECT_EQ(sink.events[2].track, controlTrack + 1);
    EXPECT_EQ(sink.events[2].delta, 7u * 20u);
    EXPECT_EQ(sink.events[3].delta, 0u) << "a second message in the same tick";
    std::string error;
    EXPECT_TRUE(p.SaveMidiFile("out.mid", error));
    EXPECT_FALSE(p.recording());
    EXPECT_EQ(sink.savedTracks, (std::vector<int>{sender.track + 1, controlTrack + 1}))
        << "only the tracks that were used: track 0 stays out";
}

// A device thread never waits for the engine: closing a device can wait for its callback
// without a deadlock. What arrives while the engine is busy is handled the moment the
// engine comes free, by whoever lets go of it, not at the next tick.
TEST(InputWhileBusy, InputRunsAsTheEngineComesFreeAndNotAtTheNextTick) {
    PortHarness h;
    Module& reader = h.add("Unity");
    reader.setPriority(priority::MidiInput);
    h.engine->ports.setTrigger(trigger::NoteOn, true);
    h.engine->StartTimers();
    const uint64_t ticks = h.engine->ticksRun();
    {
        auto held = h.engine->lock();
        std::thread device([&] { h.engine->ports.onInputData(0, {{0x90, 61, 90}}); });
        device.join();  // returned although the lock is held
        EXPECT_EQ(h.engine->ports.in.InLastNote[0], 0);
        EXPECT_TRUE(h.log.empty());
    }
    EXPECT_EQ(h.engine->ports.in.InLastNote[0], 61) << "handled on release";
    EXPECT_EQ(h.log.size(), 1u) << "and its trigger ran the input pass then";
    EXPECT_EQ(h.engine->ticksRun(), ticks) << "without a tick";
}

// In slave mode a clock that came while the engine was busy ticks as the engine comes free;
// the last clock before the sender stops is not lost waiting for a tick that never comes.
TEST(InputWhileBusy, ASlavesLastClockTicksOnReleaseAndNoClockIsLostUnderContention) {
    PortHarness h;
    h.engine->options.syncMode = SyncMode::Slave;
    auto keys = std::make_unique<FakeInput>("Clock");
    FakeInput& portA = *keys;
    h.engine->ports.attachInput(0, std::move(keys));
    h.engine->StartTimers();
    const uint64_t before = h.engine->ticksRun();
    {
        auto held = h.engine->lock();
        std::thread sender([&] { portA.feed({{248, 0, 0}}); });
        sender.join();
        EXPECT_EQ(h.engine->ticksRun(), before);
    }
    EXPECT_EQ(h.engine->ticksRun(), before + 1);
    EXPECT_EQ(h.engine->bus[sysbus::Turbo], 1);

    // A sender thread and an editing thread fight for the engine: every clock ticks once.
    constexpr int kClocks = 3000;
    std::thread sender([&] {
        for (int i = 0; i < kClocks; ++i) portA.feed({{248, 0, 0}});
    });
    for (int i = 0; i < kClocks; ++i) {
        auto held = h.engine->lock();
        h.engine->bus[sysbus::FirstSlider] = static_cast<uint8_t>(i & 127);
    }
    sender.join();
    EXPECT_EQ(h.engine->ticksRun(), before + 1 + kClocks);
}
