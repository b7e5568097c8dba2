// MIDI file players and .mfx files: play by tick with tempo scaling, end and loop, the
// slider, a slave on its master's time line across loops and resets; the file and the
// record round trips, and files that lie about themselves.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "ModuleHarness.h"
#include "modules/midi/MidiFilePlayers.h"

using namespace quillmer;
using namespace quillmer::testing;
namespace fs = std::filesystem;

namespace {

MfxList listOf(std::vector<std::pair<float, int>> events, std::string name = "list") {
    MfxList list;
    list.listName = std::move(name);
    for (auto [t, v] : events) {
        list.times.push_back(t);
        list.values.push_back(static_cast<uint8_t>(v));
    }
    return list;
}

struct PlayerHarness : ModuleHarness {
    PlayerHarness() {
        ticks(4);  // past the start's resync pulse
    }
    MIDIFile& file(const MfxList& list) {
        auto& m = static_cast<MIDIFile&>(add("MIDIFile"));
        m.setList(list);
        return m;
    }
};

}  // namespace

TEST(MidiFilePlayer, PlaysEachEventAtItsStepAndEndsWithoutLoop) {
    PlayerHarness h;
    MIDIFile& m = h.file(listOf({{0, 10}, {2, 20}, {3, 30}, {6, 40}}));
    // Tick n sees PlayTime n-1 before it adds one step.
    EXPECT_EQ(h.values(m, 8), (std::vector<int>{10, 10, 20, 30, 30, 30, 40, 40}));
    EXPECT_EQ(m.EndFlag, 1);
    EXPECT_EQ(m.NextEvent, 0);
    h.ticks(20);
    EXPECT_EQ(h.out(m), 40);  // ended: stays until a reset
    h.set(m, MIDIFile::kReset, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 10);
    EXPECT_EQ(m.EndFlag, 0);
    EXPECT_EQ(m.ResetOut, 127);
    h.set(m, MIDIFile::kReset, 0);
    EXPECT_EQ(h.values(m, 3), (std::vector<int>{10, 10, 20}));
}

TEST(MidiFilePlayer, AListOfOneEventPlaysItAndEnds) {
    PlayerHarness h;
    MIDIFile& m = h.file(listOf({{5, 99}}));
    h.ticks(5);
    EXPECT_EQ(h.out(m), 0);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 99);
    EXPECT_EQ(m.EndFlag, 0);
    h.ticks(1);
    EXPECT_EQ(m.EndFlag, 1);
    EXPECT_EQ(h.out(m), 99);
}

TEST(MidiFilePlayer, LoopingReturnsToTheStartAndKeepsTheEndFlagDown) {
    PlayerHarness h;
    MIDIFile& m = h.file(listOf({{0, 1}, {1, 2}, {2, 3}}));
    m.setLoop(true);
    std::vector<int> trace = h.values(m, 9);
    EXPECT_EQ(trace, (std::vector<int>{1, 2, 3, 1, 2, 3, 1, 2, 3}));
    EXPECT_EQ(m.EndFlag, 0);
    // Many loops later the position hasn't drifted.
    h.ticks(3000);
    EXPECT_EQ(h.values(m, 3), (std::vector<int>{1, 2, 3}));
}

TEST(MidiFilePlayer, TempoInputScalesTheRate) {
    PlayerHarness h;
    std::vector<std::pair<float, int>> events;
    for (int i = 0; i < 64; ++i) events.emplace_back(static_cast<float>(i), i);
    MIDIFile& m = h.file(listOf(events));
    h.set(m, MIDIFile::kTempo, 96);
    h.ticks(10);
    EXPECT_FLOAT_EQ(m.PlayTime, 20.0f);
    EXPECT_FLOAT_EQ(m.TempoStep, 2.0f);
    h.set(m, MIDIFile::kTempo, 32);
    h.ticks(4);
    EXPECT_FLOAT_EQ(m.PlayTime, 22.0f);
    h.set(m, MIDIFile::kTempo, 0);
    h.ticks(4);
    EXPECT_FLOAT_EQ(m.PlayTime, 23.0f);
    // With chkTempo out the input is ignored.
    m.setTempoOn(false);
    h.ticks(2);
    EXPECT_FLOAT_EQ(m.PlayTime, 25.0f);
    // At double speed the events of two steps come in one tick: the later one shows.
    m.setTempoOn(true);
    h.set(m, MIDIFile::kTempo, 96);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 25);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 27);
}

TEST(MidiFilePlayer, TheSliderSeeksAndFollowsThePosition) {
    PlayerHarness h;
    MIDIFile& m = h.file(listOf({{0, 1}, {50, 2}, {100, 3}}));
    h.ticks(25);
    EXPECT_EQ(m.slider, 25);
    m.seek(50);
    EXPECT_EQ(m.NextEvent, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(m), 2);
    EXPECT_EQ(m.slider, 51);
    m.seek(400);
    EXPECT_EQ(m.slider, 100);
}

TEST(MidiFilePlayer, TimesThatArentNumbersStallTheListButNothingElse) {
    PlayerHarness h;
    MfxList odd = listOf({{0, 1}, {2, 2}, {3, 3}});
    odd.times[1] = std::numeric_limits<float>::quiet_NaN();
    odd.times[2] = std::numeric_limits<float>::infinity();
    MIDIFile& m = h.file(odd);
    m.setLoop(true);
    h.ticks(50);
    EXPECT_EQ(h.out(m), 1);
    EXPECT_EQ(m.slider, 0);
    m.seek(50);
    h.ticks(5);
    EXPECT_GE(m.slider, 0);
}

TEST(MidiFilePlayer, AModuleWithoutAListDoesNothingAndStoppedRunsReset) {
    PlayerHarness h;
    auto& empty = static_cast<MIDIFile&>(h.add("MIDIFile"));
    h.ticks(5);
    EXPECT_EQ(h.out(empty), 0);
    EXPECT_FLOAT_EQ(empty.PlayTime, 0.0f);
    MIDIFile& m = h.file(listOf({{0, 5}, {3, 6}}));
    h.ticks(6);
    h.engine->ResyncPending = true;  // a run start resets as Reset 127 does
    h.ticks(1);
    EXPECT_EQ(m.ResetOut, 127);
    EXPECT_EQ(h.out(m), 5);
}

TEST(MidiFileSlave, FollowsItsMasterAcrossLoopsAndResets) {
    PlayerHarness h;
    MIDIFile& master = h.file(listOf({{0, 1}, {3, 2}, {5, 3}}));
    master.setLoop(true);
    auto& slave = static_cast<MIDIFileSlave&>(h.add("MIDIFileSlave"));
    slave.setList(listOf({{0, 100}, {1, 101}, {4, 104}, {7, 107}}));
    slave.setMaster(master.Index);
    std::vector<int> masterTrace, slaveTrace;
    for (int i = 0; i < 14; ++i) {
        h.ticks(1);
        masterTrace.push_back(h.out(master));
        slaveTrace.push_back(h.out(slave));
    }
    // The master loops after step 5 back to 0; the slave's event at 7 never comes, and it
    // starts over with its master.
    EXPECT_EQ(masterTrace, (std::vector<int>{1, 1, 1, 2, 2, 3, 1, 1, 1, 2, 2, 3, 1, 1}));
    EXPECT_EQ(slaveTrace, (std::vector<int>{100, 101, 101, 101, 104, 104, 100, 101, 101, 101, 104, 104, 100, 101}));

    h.set(master, MIDIFile::kReset, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(slave), 100);
    EXPECT_EQ(slave.NextEvent, 0);
}

TEST(MidiFileSlave, StopsWhenItsMasterEndsAndWithoutAMaster) {
    PlayerHarness h;
    MIDIFile& master = h.file(listOf({{0, 1}, {2, 2}}));
    auto& slave = static_cast<MIDIFileSlave&>(h.add("MIDIFileSlave"));
    slave.setList(listOf({{0, 50}, {2, 60}, {5, 70}}));
    auto& alone = static_cast<MIDIFileSlave&>(h.add("MIDIFileSlave"));
    alone.setList(listOf({{0, 50}}));
    slave.setMaster(master.Index);
    h.ticks(10);
    EXPECT_EQ(master.EndFlag, 1);
    EXPECT_EQ(h.out(slave), 60);  // its event at 5 never comes
    EXPECT_EQ(h.out(alone), 0);   // no master chosen
    slave.setMaster(7);           // no such master
    h.set(master, MIDIFile::kReset, 127);
    h.ticks(2);
    EXPECT_EQ(h.out(slave), 60);
}

TEST(MfxFiles, WriteAndReadBackAndRefuseLies) {
    const fs::path folder = fs::temp_directory_path() / ("quillmer-mfx-" + std::to_string(::getpid()));
    fs::create_directories(folder);
    MfxList list = listOf({{0, 1}, {0.5f, 127}, {1e6f, 64}}, "Volume \xC3\xA9");  // é in UTF-8
    list.fileBpm = 93;
    list.trackInfo[0] = 7;
    list.trackInfo[63] = 9;
    const std::string path = (folder / "a.mfx").string();
    std::string error, reason;
    ASSERT_TRUE(saveMfxFile(path, list, error, reason)) << error << reason;
    EXPECT_EQ(fs::file_size(path), MfxList::kHeaderBytes + 3 * 5);
    MfxList back;
    ASSERT_TRUE(loadMfxFile(path, back, error, reason)) << error << reason;
    EXPECT_EQ(back.values, list.values);
    EXPECT_EQ(back.times, list.times);
    EXPECT_EQ(back.fileBpm, 93);
    EXPECT_EQ(back.trackInfo, list.trackInfo);
    EXPECT_EQ(back.listName, list.listName);
    EXPECT_EQ(mfxBytes(back), mfxBytes(list));

    // An empty list is EventTop -1 and nothing after the head.
    EXPECT_EQ(mfxBytes(MfxList{}).size(), MfxList::kHeaderBytes);
    ASSERT_TRUE(parseMfx(mfxBytes(MfxList{}).data(), MfxList::kHeaderBytes, back, reason));
    EXPECT_TRUE(back.empty());

    const auto refuse = [&](std::vector<uint8_t> bytes, const std::string& why) {
        MfxList kept = list;
        EXPECT_FALSE(parseMfx(bytes.data(), bytes.size(), kept, reason)) << why;
        EXPECT_EQ(kept.values, list.values) << why;  // left as it was
        EXPECT_FALSE(reason.empty());
    };
    std::vector<uint8_t> bytes = mfxBytes(list);
    bytes.pop_back();
    refuse(bytes, "one byte short");
    bytes = mfxBytes(list);
    bytes[0] = bytes[1] = bytes[2] = 0xFF;
    bytes[3] = 0x7F;  // two thousand million events
    refuse(bytes, "a huge count");
    bytes[0] = bytes[1] = bytes[2] = bytes[3] = 0xFE;
    refuse(bytes, "a negative count");
    bytes = mfxBytes(list);
    const size_t time1 = MfxList::kHeaderBytes + 3 + 4;
    bytes[time1] = bytes[time1 + 1] = 0xFF;
    bytes[time1 + 2] = 0xC0;
    bytes[time1 + 3] = 0x7F;  // NaN
    refuse(bytes, "a time that isn't a number");
    refuse({1, 2, 3}, "a stub");

    // Values above 127 are cut; a longer file keeps only what the head counts.
    bytes = mfxBytes(list);
    bytes[MfxList::kHeaderBytes] = 0xC5;
    bytes.push_back(1);
    ASSERT_TRUE(parseMfx(bytes.data(), bytes.size(), back, reason));
    EXPECT_EQ(back.values[0], 0x45);

    // The messages name the file.
    EXPECT_FALSE(loadMfxFile((folder / "none.mfx").string(), back, error, reason));
    EXPECT_EQ(error, "File not found: " + (folder / "none.mfx").string());
    EXPECT_FALSE(loadMfxFile(folder.string(), back, error, reason));
    EXPECT_EQ(error, "Can't load: " + folder.string());
    std::ofstream(folder / "huge.mfx", std::ios::binary).write("\xff\xff\xff\x0f", 4);
    EXPECT_FALSE(loadMfxFile((folder / "huge.mfx").string(), back, error, reason));
    EXPECT_EQ(error, "Can't load: " + (folder / "huge.mfx").string());
    EXPECT_FALSE(saveMfxFile((folder / "no" / "x.mfx").string(), list, error, reason));
    EXPECT_EQ(error, "Could not save: " + (folder / "no" / "x.mfx").string());
    fs::remove_all(folder);
}

TEST(MfxFiles, PlayersKeepTheirListAndSettingsInTheRecord) {
    PlayerHarness h;
    MIDIFile& m = h.file(listOf({{0, 3}, {2.5f, 4}}, "Pan"));
    m.list.trackInfo[5] = 42;
    auto& slave = static_cast<MIDIFileSlave&>(h.add("MIDIFileSlave"));
    slave.setList(listOf({{1, 9}}));
    for (int s : {0, 9}) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        m.setLoop(s == 9);
        m.setTempoOn(s != 9);
        h.set(m, MIDIFile::kTempo, 70 + s);
        slave.setMaster(s);
        h.engine->StoreAllPatches();
    }
    for (Module* x : std::initializer_list<Module*>{&m, &slave}) {
        const std::vector<uint8_t> first = body(h, *x);
        const std::unique_ptr<Module> copy = readBack(h, typeInfo(x->type()).type, first);
        EXPECT_EQ(body(h, *copy), first);
    }
    const std::unique_ptr<Module> copy = readBack(h, "MIDIFile", body(h, m));
    const auto& back = static_cast<MIDIFile&>(*copy);
    EXPECT_EQ(back.list.values, m.list.values);
    EXPECT_EQ(back.list.times, m.list.times);
    EXPECT_EQ(back.list.trackInfo[5], 42);
    EXPECT_EQ(back.stored(9, MIDIFile::kTempo).position, h.position("~  79"));

    // A record with a two-dimensional array and an odd lower bound comes back as it was.
    ByteWriter odd;
    odd.i16(120);
    odd.u16(2);
    odd.i32(2);
    odd.i32(1);
    odd.i32(1);
    odd.i32(0);
    odd.u8(5);
    odd.u8(6);
    odd.u16(0);  // no times: nothing plays
    odd.fixed("", 20);
    odd.fixed("", 3);
    for (int i = 0; i < 64; ++i) odd.u8(0);
    for (int s = 0; s < 128; ++s) odd.i16(-1);
    const std::unique_ptr<Module> oddSlave = readBack(h, "MIDIFileSlave", odd.bytes());
    EXPECT_EQ(body(h, *oddSlave), odd.bytes());

    // An array longer than the record is refused as a record that doesn't parse.
    std::vector<uint8_t> lying = odd.bytes();
    lying[2] = 1;  // one dimension...
    lying[6] = 0xFF;
    lying[7] = 0xFF;  // ... of some 65 thousand
    ByteReader in(lying);
    std::unique_ptr<Module> fresh = h.registry.make(*typeIdByName("MIDIFileSlave"));
    EXPECT_THROW(fresh->readBody(in, h.engine->names), RecordFormatError);
}
