// The MIDI side modules: a controller sent on change, a SysEx message built from a table
// and a bus value, a .syx file sent on a strobe; their records as the file keeps them.

#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "../engine/FakeDevices.h"
#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/midi/ControllerOutput.h"
#include "modules/midi/SysExOutputs.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

using Bytes = std::vector<uint8_t>;

struct SendingHarness : ModuleHarness {
    SendingHarness() {
        for (int p = 0; p < 2; ++p)
            engine->ports.attachOutput(p, std::make_unique<FakeOutput>("Synth" + std::to_string(p), timers, &sent[static_cast<size_t>(p)]));
        engine->setGeneralTables(tables.data());
    }
    std::vector<Bytes> take(int port = 0) {
        std::vector<Bytes> all;
        for (const SentMessage& m : sent[static_cast<size_t>(port)])
            if (m.bytes[0] != 0xF9 && m.bytes[0] != 0xF8) all.push_back(m.bytes);
        sent[static_cast<size_t>(port)].clear();
        return all;
    }
    std::array<std::vector<SentMessage>, 2> sent;
    std::vector<uint8_t> tables = std::vector<uint8_t>(128 * 128, 0);
};

struct TempFile {
    explicit TempFile(const Bytes& bytes, const std::string& name = "patch.syx") {
        dir = std::filesystem::temp_directory_path() / ("quillmer-side-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(dir);
        path = (dir / name).string();
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~TempFile() { std::filesystem::remove_all(dir); }
    std::filesystem::path dir;
    std::string path;
    static inline int counter = 0;
};

// The record's body parses with the type's layout from the file format's table.
void expectLayoutFits(const Module& m, const Bytes& bodyBytes) {
    ByteWriter whole;
    for (int i = 0; i < 9; ++i) whole.i16(0);  // the head's words: 18 bytes
    m.writeHeadTail(whole);
    whole.str(m.Name);
    whole.raw(bodyBytes);
    ByteReader in(whole.bytes());
    skipRecord(in, parseLayout(fileSlotOf(m.type()).layout));
    EXPECT_EQ(in.remaining(), 0u) << m.info().type;
}

}  // namespace

TEST(MIDICtrl, SendsOnChangeOnlyAndAgainOnResyncOrANewController) {
    SendingHarness h;
    auto& ctrl = static_cast<MIDICtrl&>(h.add("MIDICtrl"));
    ASSERT_EQ(ctrl.ChanPort, 0);
    h.set(ctrl, 0, 40);
    h.ticks(3);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 1, 40}})) << "once, however many ticks";
    h.set(ctrl, 0, 41);
    h.ticks(1);
    h.set(ctrl, 0, 41);
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 1, 41}}));
    EXPECT_EQ(ctrl.setControllerText("300"), "127") << "cut to the controller range";
    EXPECT_EQ(ctrl.setControllerText("74"), "74");
    h.ticks(1);
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 74, 41}})) << "the new controller gets the value at once";
    h.engine->ResyncPending = true;
    ctrl.update(*h.engine);
    h.engine->ResyncPending = false;
    EXPECT_EQ(h.take(), (std::vector<Bytes>{{0xB0, 74, 41}})) << "a resync resends";
}

TEST(MIDICtrl, ChannelAndControllerFollowTheSnapshots) {
    SendingHarness h;
    auto& ctrl = static_cast<MIDICtrl&>(h.add("MIDICtrl"));
    h.set(ctrl, 0, 10);
    ctrl.setControllerText("7");
    ctrl.ChanPort = 16 + 3;  // 4 B
    h.engine->CurrentSnapshot = 1;
    ctrl.PatchStore(*h.engine);
    ctrl.setControllerText("11");
    ctrl.ChanPort = 0;
    h.ticks(1);
    h.take();
    ctrl.PatchChange(*h.engine);
    h.ticks(1);
    EXPECT_EQ(h.take(1), (std::vector<Bytes>{{0xB3, 7, 10}})) << "snapshot 1 brings back controller 7 on 4 B";
}

TEST(MIDICtrl, RecordKeepsEverySnapshotAndOddBytes) {
    SendingHarness h;
    auto& ctrl = static_cast<MIDICtrl&>(h.add("MIDICtrl"));
    ctrl.setControllerText("64");
    ctrl.PatchStore(*h.engine);
    Bytes bytes = body(h, ctrl);
    expectLayoutFits(ctrl, bytes);
    bytes[bytes.size() - 1] = 200;  // a byte out of range in the last snapshot's controller
    auto back = readBack(h, "MIDICtrl", bytes);
    EXPECT_EQ(static_cast<MIDICtrl&>(*back).controller, 64);
    EXPECT_EQ(body(h, *back), bytes) << "byte for byte";
}

TEST(SysEx, TypedMessageGoesToTheTableAndOutOnEachRisingStrobe) {
    SendingHarness h;
    auto& sx = static_cast<SysEx&>(h.add("SysEx"));
    h.set(sx, 0, 127);
    h.set(sx, 1, 5);  // table 5
    h.set(sx, 2, 99);
    h.ticks(1);
    std::string error;
    ASSERT_TRUE(sx.setMessageText(*h.engine, "F0 43 10 4c 02 01 00 v F7", error)) << error;
    EXPECT_EQ(sx.messageText(*h.engine), "F0 43 10 4C 02 01 00 v F7");
    EXPECT_EQ(h.engine->generalTableStep(5, sysextable::Length), 7);
    sx.setPort(*h.engine, 1);
    h.ticks(2);
    EXPECT_TRUE(h.take(1).empty()) << "a strobe already high when placed sends nothing";
    EXPECT_EQ(sx.shownMessage, "F0 43 10 4C 02 01 00 v F7");
    EXPECT_EQ(sx.shownPort, 1);
    h.edge(sx, 0);
    h.ticks(3);
    EXPECT_EQ(h.take(1), (std::vector<Bytes>{{0xF0, 0x43, 0x10, 0x4C, 0x02, 0x01, 0x00, 99, 0xF7}})) << "once per edge";
    h.set(sx, 2, 200 & 127);
    h.edge(sx, 0);
    EXPECT_EQ(h.take(1).at(0).at(7), 200 & 127);
    EXPECT_TRUE(h.take(0).empty());
}

TEST(SysEx, BadTextLeavesTheTableAsItWas) {
    SendingHarness h;
    auto& sx = static_cast<SysEx&>(h.add("SysEx"));
    std::string error;
    ASSERT_TRUE(sx.setMessageText(*h.engine, "7E 7F 09 01", error));
    const std::vector<uint8_t> before = h.tables;
    for (const char* bad : {"7E 90 01", "7E zz", "v 01 v", "123"}) {
        error.clear();
        EXPECT_FALSE(sx.setMessageText(*h.engine, bad, error)) << bad;
        EXPECT_FALSE(error.empty()) << bad;
        EXPECT_EQ(h.tables, before) << bad;
    }
    EXPECT_FALSE(sx.setMessageText(*h.engine, repeat("01 ", sysextable::MaxLength + 1), error));
    EXPECT_TRUE(sx.setMessageText(*h.engine, repeat("01 ", sysextable::MaxLength), error));
    EXPECT_TRUE(sx.setMessageText(*h.engine, "", error)) << "an empty message is F0 F7";
    EXPECT_EQ(sx.messageText(*h.engine), "F0 F7");
}

TEST(SysExFile, GoodFileSendsEveryMessageOnEachEdge) {
    SendingHarness h;
    TempFile file({0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7, 0xF0, 0x41, 0x10, 0xF7});
    auto& sf = static_cast<SysExFile&>(h.add("SysExFile"));
    std::string error;
    ASSERT_TRUE(sf.chooseFile(file.path, error)) << error;
    EXPECT_EQ(sf.status, "2 messages");
    h.set(sf, 1, 1 + 4);  // port B: the value's two low bits
    h.edge(sf, 0);
    h.ticks(2);
    EXPECT_EQ(h.take(1), (std::vector<Bytes>{{0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7}, {0xF0, 0x41, 0x10, 0xF7}}));
    h.edge(sf, 0);
    EXPECT_EQ(h.take(1).size(), 2u);
}

TEST(SysExFile, BrokenFilesAreNamedAndChangeNothing) {
    SendingHarness h;
    TempFile good({0xF0, 0x01, 0xF7});
    auto& sf = static_cast<SysExFile&>(h.add("SysExFile"));
    std::string error;
    ASSERT_TRUE(sf.chooseFile(good.path, error));
    const std::vector<std::pair<Bytes, std::string>> broken{
        {{}, "holds no SysEx message"},
        {{0xF0, 0x01, 0x02}, "no F7"},
        {{0x90, 0x3C, 0x40}, "must begin with F0"},
        {{0xF0, 0x01, 0x90, 0xF7}, "status byte inside"},
        {{0xF0, 0x01, 0xF7, 0x00}, "must begin with F0"},
    };
    for (const auto& [bytes, why] : broken) {
        TempFile bad(bytes, "bad.syx");
        error.clear();
        EXPECT_FALSE(sf.chooseFile(bad.path, error));
        EXPECT_NE(error.find(bad.path), std::string::npos) << error;
        EXPECT_NE(error.find(why), std::string::npos) << error;
        EXPECT_EQ(sf.fileName, good.path);
        EXPECT_EQ(sf.messageCount(), 1u);
    }
    EXPECT_FALSE(sf.chooseFile(good.dir.string(), error)) << "a folder";
    EXPECT_NE(error.find(good.dir.string()), std::string::npos);
    EXPECT_FALSE(sf.chooseFile((good.dir / "absent.syx").string(), error));
    EXPECT_NE(error.find("absent.syx"), std::string::npos);
}

TEST(SysExFile, RecordKeepsTheFileAndAMissingOneSaysSo) {
    SendingHarness h;
    auto& sf = static_cast<SysExFile&>(h.add("SysExFile"));
    sf.fileName = "/nowhere/bank.syx";
    sf.note = "Strings bank";
    const Bytes bytes = body(h, sf);
    expectLayoutFits(sf, bytes);
    auto back = readBack(h, "SysExFile", bytes);
    auto& read = static_cast<SysExFile&>(*back);
    EXPECT_EQ(read.fileName, "/nowhere/bank.syx");
    EXPECT_EQ(read.note, "Strings bank");
    EXPECT_EQ(body(h, read), bytes);
    std::string error;
    EXPECT_FALSE(read.reload(error));
    EXPECT_NE(read.status.find("/nowhere/bank.syx"), std::string::npos) << read.status;
    EXPECT_FALSE(read.loaded());
}
