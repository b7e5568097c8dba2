// A .tbl beside a patch loads with it; the next patch without one gets the default back;
// a broken one is told and counts as none. Table modules see the new names at once.

#include <gtest/gtest.h>

#include <filesystem>

#include "SessionHarness.h"
#include "tables/DefaultTables.h"
#include "tables/TableFiles.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(TableSideFiles, LoadWithThePatchAndGiveWayToTheDefault) {
    ScratchDir dir;
    const std::string demo = std::string(QUILLMER_SOURCE_DIR) + "/examples/demo.qmp";
    for (const char* name : {"own.qmp", "plain.qmp", "broken.qmp"}) std::filesystem::copy_file(demo, dir.file(name));
    GeneralTables own;
    own.bank.row(127)[127] = 77;
    own.names.setName(0, "Own");
    std::string error;
    ASSERT_TRUE(SaveTableFile(dir.file("own.tbl"), own, error));
    writeBytes(dir.file("broken.tbl"), std::vector<uint8_t>(18944, 200));

    SessionHarness h;
    Session& session = h.session;
    const std::string shippedName = DefaultGeneralTables().names.name(0);
    EXPECT_EQ(session.tables.names.name(0), shippedName) << "a new patch starts on the shipped tables";
    ASSERT_TRUE(session.OpenFile(dir.file("own.qmp"), error)) << error;
    EXPECT_EQ(session.engine.generalTableStep(127, 127), 77);
    EXPECT_EQ(session.engine.generalTableName(0), "Own");

    ASSERT_TRUE(session.OpenFile(dir.file("plain.qmp"), error)) << error;
    EXPECT_EQ(session.tables.names.name(0), shippedName) << "the default comes back";

    ASSERT_TRUE(session.OpenFile(dir.file("broken.qmp"), error)) << error;
    EXPECT_NE(session.loadProblem.find("Unable to Load: " + dir.file("broken.tbl")), std::string::npos) << session.loadProblem;
    EXPECT_EQ(session.tables.names.name(0), shippedName);
}
