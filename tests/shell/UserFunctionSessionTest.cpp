// A session's user functions: the default at start, a .ufn beside the patch, the default back
// for a patch without one, a broken file refused with its line, formula modules saved and
// loaded with their formulas.

#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "expression/UserFunctionFile.h"
#include "modules/formulas/FormulaModules.h"

namespace quillmer::testing {
namespace {

void writeText(const std::string& path, const std::string& text) {
    writeBytes(path, std::vector<uint8_t>(text.begin(), text.end()));
}

TEST(SessionUserFunctions, StartWithTheDefaultAndFollowThePatchesSideFile) {
    ScratchDir dir;
    SessionHarness h;
    auto held = h.session.engine.lock();
    ASSERT_TRUE(h.session.formulas.started());
    EXPECT_FALSE(h.session.formulas.formula(1).doc.empty()) << "the shipped default.ufn";
    const std::string defaultDoc = h.session.formulas.formula(1).doc;

    auto& m = static_cast<FormulaModule&>(h.add("UCalc4"));
    m.chooseFormula(3);
    ASSERT_EQ(h.save(dir.file("song.qmp")), "");
    writeText(dir.file("song.ufn"), "0\n0\n4\n\n\n\nthree = out(33)\n");
    std::string error;
    ASSERT_TRUE(h.session.OpenFile(dir.file("song.qmp"), error)) << error;
    EXPECT_TRUE(h.session.usesOwnUserFunctions());
    EXPECT_EQ(h.session.formulas.formula(3).doc, "three");
    EXPECT_EQ(h.session.formulas.formula(1).doc, "") << "the patch's file replaces the lists";
    Module* loaded = h.session.engine.findModule(m.Name);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(static_cast<FormulaModule*>(loaded)->formulaNumber(), 3);
    for (int i = 0; i < 3; ++i) h.session.engine.tick();
    EXPECT_EQ(h.session.engine.bus[loaded->OutBus], 33);

    ASSERT_EQ(h.save(dir.file("other.qmp")), "");
    std::filesystem::remove(dir.file("other.ufn"));
    ASSERT_TRUE(h.session.OpenFile(dir.file("other.qmp"), error)) << error;
    EXPECT_FALSE(h.session.usesOwnUserFunctions());
    EXPECT_EQ(h.session.formulas.formula(1).doc, defaultDoc) << "the default comes back";
}

TEST(SessionUserFunctions, ABrokenFileIsRefusedWithItsLineAndChangesNothing) {
    ScratchDir dir;
    SessionHarness h;
    auto held = h.session.engine.lock();
    const UserFunctions before = h.session.userFunctions;
    writeText(dir.file("broken.ufn"), "1\n0\n0\nnot a variable\n");
    std::string error;
    EXPECT_FALSE(h.session.LoadUserFunctions(dir.file("broken.ufn"), error));
    EXPECT_NE(error.find("broken.ufn: line 4"), std::string::npos) << error;
    EXPECT_EQ(h.session.userFunctions, before);
    EXPECT_EQ(h.session.userFunctionProblem, error);
}

TEST(SessionUserFunctions, ABrokenSideFileIsToldOnceAndTheNextPatchClearsIt) {
    ScratchDir dir;
    SessionHarness h;
    auto held = h.session.engine.lock();
    ASSERT_EQ(h.save(dir.file("song.qmp")), "");
    writeText(dir.file("song.ufn"), "0\n1\n0\nno body here\n");
    std::string error;
    ASSERT_TRUE(h.session.OpenFile(dir.file("song.qmp"), error)) << "a broken .ufn doesn't stop the patch";
    EXPECT_NE(h.session.userFunctionProblem.find(dir.file("song.ufn") + ": line 4"), std::string::npos)
        << h.session.userFunctionProblem;
    ASSERT_EQ(h.save(dir.file("plain.qmp")), "");
    std::filesystem::remove(dir.file("plain.ufn"));
    ASSERT_TRUE(h.session.OpenFile(dir.file("plain.qmp"), error)) << error;
    EXPECT_EQ(h.session.userFunctionProblem, "") << "the problem belonged to the patch before";
}

TEST(SessionUserFunctions, TheSeedRebuildsTheRandomTablesAndKeepsTheFormulas) {
    SessionHarness h;
    auto held = h.session.engine.lock();
    const std::string doc = h.session.formulas.formula(1).doc;
    const auto draws = [&] {
        std::vector<double> v;
        for (int i = 0; i < 6; ++i) v.push_back(h.session.formulas.calc().eval("RRAN").value);
        return v;
    };
    h.session.SeedUserFunctions(4321);
    const std::vector<double> seeded = draws();
    EXPECT_EQ(h.session.formulas.seed(), 4321u);
    EXPECT_EQ(h.session.formulas.formula(1).doc, doc) << "the lists compile again";
    h.session.SeedUserFunctions(99);
    EXPECT_NE(draws(), seeded);
    h.session.SeedUserFunctions(4321);
    EXPECT_EQ(draws(), seeded) << "the same seed gives the same table from its start";
}

}  // namespace
}  // namespace quillmer::testing
