// The side modules through a saved patch: a sequencer data file's steps and the spare bytes
// of its head, a SysEx file's name, a link's settings (and that it comes back off).

#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "modules/midi/Links.h"
#include "modules/midi/SysExOutputs.h"
#include "modules/sequencers/Sfile.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(SideRecords, SaveLoadSaveKeepsEveryByteAndTheLinkComesBackOff) {
    ScratchDir dir;
    SessionHarness first;
    first.add("Sfile");  // a first one, so the second has index 1
    auto& data = static_cast<Sfile&>(first.add("Sfile"));
    data.setData({60, 62, 64, 200});
    const std::vector<uint8_t> spare{1, 2, 3, 4};
    ByteReader spareIn(spare);
    data.readHeadTail(spareIn);
    auto& syx = static_cast<SysExFile&>(first.add("SysExFile"));
    syx.fileName = dir.file("missing.syx");
    syx.note = "Hall reverb";
    auto& link = static_cast<IPLink&>(first.add("IPLink"));
    LinkSettings s;
    s.host = "10.0.0.7";
    s.sendPort = 8000;
    s.listenPort = 8001;
    s.address = "/mix/fader3";
    std::string error;
    ASSERT_TRUE(link.setSettings(s, error));
    first.connect(data, 0, link.Name);
    ASSERT_EQ(first.save(dir.file("a.qmp")), "");

    SessionHarness second;
    ASSERT_EQ(second.load(dir.file("a.qmp")), "");
    auto* loaded = static_cast<Sfile*>(second.session.engine.findModule("2File-"));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->data(), (std::vector<uint8_t>{60, 62, 64, 200 & 127}));
    ByteWriter tail;
    loaded->writeHeadTail(tail);
    EXPECT_EQ(tail.bytes(), spare);
    auto* loadedLink = static_cast<IPLink*>(second.session.engine.findModule("1Link-"));
    ASSERT_NE(loadedLink, nullptr);
    EXPECT_EQ(loadedLink->settings(), s);
    EXPECT_FALSE(loadedLink->on());
    auto* loadedSyx = static_cast<SysExFile*>(second.session.engine.findModule("1SyxFile-"));
    ASSERT_NE(loadedSyx, nullptr);
    EXPECT_EQ(loadedSyx->note, "Hall reverb");
    EXPECT_NE(loadedSyx->status.find("missing.syx"), std::string::npos) << "the load says the file is gone";
    EXPECT_EQ(loadedSyx->fileName, dir.file("missing.syx")) << "and keeps its name";
    ASSERT_EQ(second.save(dir.file("b.qmp")), "");
    EXPECT_EQ(readBytes(dir.file("a.qmp")), readBytes(dir.file("b.qmp")));
}
