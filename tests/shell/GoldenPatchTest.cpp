// Patches whose saved bytes are pinned by files in tests/data: any change to how modules
// and their snapshots are kept in memory that moves a byte of a save shows here.

#include <gtest/gtest.h>

#include <cstdlib>

#include "SessionHarness.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

std::string dataFile(const std::string& name) { return std::string(QUILLMER_SOURCE_DIR) + "/tests/data/" + name; }

// Every built type twice, wired differently in four snapshots, with a late, disabled
// module and a deleted one (a free slot, and inputs that read " Off (0)" after it).
void buildEveryTypeInFourSnapshots(Session& s) {
    Engine& e = s.engine;
    std::vector<Module*> placed;
    for (const TypeInfo& info : allTypes()) {
        if (!e.registry().isBuilt(info.id)) continue;
        placed.push_back(&e.New(info.id));
        placed.push_back(&e.New(info.id));
    }
    for (int snapshot = 0; snapshot < 4; ++snapshot) {
        for (size_t i = 0; i < placed.size(); ++i) {
            Module& m = *placed[i];
            for (int k = 0; k < m.inputCount(); ++k) {
                const size_t turn = i * 7 + static_cast<size_t>(k) * 13 + static_cast<size_t>(snapshot) * 31;
                e.connectInput(m, k, static_cast<uint16_t>(turn % e.names.sortedCount()));
            }
        }
        s.snapshots.StoreNewPatch();
    }
    StatusChoice late;
    late.priorityIndex = 3;
    late.enabled = false;
    e.applyStatus(*placed[3], late);
    e.Delete(*placed[6]);
}

// Saves the session and compares with the pinned file; QUILLMER_WRITE_GOLDEN=1 pins anew.
void expectSavedAsPinned(SessionHarness& h, const std::string& pinned) {
    ScratchDir dir;
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    const std::vector<uint8_t> saved = readBytes(dir.file("p.qmp"));
    if (std::getenv("QUILLMER_WRITE_GOLDEN")) writeBytes(dataFile(pinned), saved);
    const std::vector<uint8_t> expected = readBytes(dataFile(pinned));
    ASSERT_EQ(saved.size(), expected.size());
    for (size_t i = 0; i < saved.size(); ++i) ASSERT_EQ(saved[i], expected[i]) << "first difference at byte " << i;
}

}  // namespace

TEST(GoldenPatch, EveryBuiltTypeInFourSnapshotsSavesTheBytesItAlwaysHas) {
    SessionHarness h;
    h.session.userName = "Golden";
    buildEveryTypeInFourSnapshots(h.session);
    expectSavedAsPinned(h, "every-type.qmp");
}

TEST(GoldenPatch, TheDemoLoadsAndSavesTheBytesItAlwaysHas) {
    SessionHarness h;
    ASSERT_EQ(h.load(std::string(QUILLMER_SOURCE_DIR) + "/examples/demo.qmp"), "");
    h.session.userName = "Golden";
    expectSavedAsPinned(h, "demo-resaved.qmp");
}
