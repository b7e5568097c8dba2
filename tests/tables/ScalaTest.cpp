// Scala scales and keyboard maps into tuning rows and back: comments, ratios, cents,
// negative and out-of-reach pitches, too many steps, garbled files.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "tables/Scala.h"

using namespace quillmer;

namespace {

std::array<uint8_t, 128> rowOf(const std::string& scl, const std::string& kbm = {}) {
    ScalaScale scale;
    std::string problem;
    EXPECT_TRUE(parseScala(scl, scale, problem)) << problem;
    KeyMap map;
    if (!kbm.empty()) {
        EXPECT_TRUE(parseKeyMap(kbm, map, problem)) << problem;
    }
    std::array<uint8_t, 128> row{};
    std::vector<std::string> notes;
    EXPECT_TRUE(scaleToToneRow(scale, kbm.empty() ? nullptr : &map, row, problem, notes)) << problem;
    return row;
}

std::string refusal(const std::string& scl) {
    ScalaScale scale;
    std::string problem;
    if (!parseScala(scl, scale, problem)) return problem;
    std::array<uint8_t, 128> row{};
    row.fill(9);
    std::vector<std::string> notes;
    if (scaleToToneRow(scale, nullptr, row, problem, notes)) return "accepted";
    for (uint8_t b : row) EXPECT_EQ(b, 9) << "a refused scale leaves the row as it was";
    return problem;
}

std::string equalScale(int n) {
    std::string text = "! equal.scl\n!\n" + std::to_string(n) + " equal\n" + std::to_string(n) + "\n";
    for (int i = 1; i < n; ++i) text += std::to_string(1200.0 * i / n) + "\n";
    return text + "2/1\n";
}

}  // namespace

TEST(ScalaImport, CommentsRatiosAndCentsLandOnTheNearestSixtyFourthOfASemitone) {
    const auto row = rowOf(
        "! just.scl\n"
        "! a comment line, then the description\n"
        "Just major\n"
        " 7\n"
        "!\n"
        " 9/8        whole tone\n"
        " 5/4\n"
        " 4/3\n"
        " 3/2\n"
        " 5/3\n"
        " 1100.0 a cents value\n"
        " 2\n");
    EXPECT_EQ(row[127], 6) << "seven steps";
    // 9/8 is 203.91 cents: 130.5 sixty-fourths rounds to 131 = 2 semitones and 3.
    EXPECT_EQ(row[1], 2);
    EXPECT_EQ(row[65], 1 + 3);
    // 5/4 is 386.31 cents: 247.24 -> 247 = 3 semitones and 55.
    EXPECT_EQ(row[2], 3);
    EXPECT_EQ(row[66], 1 + 55);
    // 1100.0 cents is exactly 11 semitones, unbent.
    EXPECT_EQ(row[6], 11);
    EXPECT_EQ(row[70], 1);
    EXPECT_EQ(row[0], 0);
    EXPECT_EQ(row[64], 1) << "the root is step 0, unbent";
}

TEST(ScalaImport, NineteenEqualGivesTheBytesANoteModulePlaysByHand) {
    const auto row = rowOf(equalScale(19));
    EXPECT_EQ(row[127], 18);
    // Step 5 is 315.79 cents: 3 semitones and 10/64 (byte 11); step 18 is 1136.84 cents,
    // 727.6 sixty-fourths: 11 semitones and 24 (byte 25), rounded rather than cut.
    EXPECT_EQ(row[5], 3);
    EXPECT_EQ(row[64 + 5], 11);
    EXPECT_EQ(row[18], 11);
    EXPECT_EQ(row[64 + 18], 25);
    EXPECT_EQ(row[64 + 19], 1) << "unused steps stay unbent";
}

TEST(ScalaImport, RefusesWhatATableCannotHoldNamingTheStep) {
    EXPECT_NE(refusal("neg\n2\n-50.0\n2/1\n").find("Step 1 (-50.0000 cents) lies below the root"), std::string::npos);
    EXPECT_NE(refusal(equalScale(65)).find("Step 64 and those after it"), std::string::npos);
    // 64 equal steps: step 63 is 1181.25 cents, 11 semitones and 52/64, and it has no bend byte.
    EXPECT_NE(refusal(equalScale(64)).find("Step 63"), std::string::npos);
    // The same count is fine when step 63 lands on a semitone.
    std::string scl = "64 steps\n64\n";
    for (int i = 1; i < 64; ++i) scl += std::to_string(i < 63 ? i * 10.0 : 1100.0) + "\n";
    EXPECT_EQ(refusal(scl + "2/1\n"), "accepted");
    EXPECT_NE(refusal("high\n2\n12900.0\n2/1\n").find("more than 127 semitones"), std::string::npos);
}

TEST(ScalaImport, RefusesGarbledFilesAndNonOctavePeriods) {
    EXPECT_NE(refusal("only a description\n").find("not a Scala scale"), std::string::npos);
    EXPECT_NE(refusal("x\nseven\n").find("Line 2"), std::string::npos);
    EXPECT_NE(refusal("x\n3\n100.0\n2/1\n").find("names 3 notes but the file holds only 2"), std::string::npos);
    EXPECT_NE(refusal("x\n2\nabc\n2/1\n").find("\"abc\""), std::string::npos);
    EXPECT_NE(refusal("x\n2\n-3/2\n2/1\n").find("Line 3"), std::string::npos) << "a ratio is positive";
    EXPECT_NE(refusal("x\n2\n3/0\n2/1\n").find("Line 3"), std::string::npos);
    EXPECT_NE(refusal("Bohlen-Pierce\n2\n300.0\n3/1\n").find("repeats at 1901.9550 cents"), std::string::npos);
    EXPECT_EQ(refusal("stretched a hair\n1\n1200.5\n"), "accepted") << "within half a sixty-fourth";
}

TEST(ScalaImport, AKeyboardMapChoosesDegreesPerKeyAndFillsUnmappedKeys) {
    const std::string map =
        "! white keys\n12\n0\n127\n60\n69\n440.0\n7\n0\nx\n1\nx\n2\n3\nx\n4\nx\n5\nx\n6\n";
    const auto row = rowOf(
        "Pythagorean-ish major\n7\n9/8\n81/64\n4/3\n3/2\n27/16\n243/128\n2/1\n", map);
    EXPECT_EQ(row[127], 11) << "twelve keys";
    EXPECT_EQ(row[1], row[0]) << "an unmapped key plays the key before it";
    EXPECT_EQ(row[65], row[64]);
    EXPECT_EQ(row[2], 2);  // 9/8
    EXPECT_EQ(row[11], 11);  // 243/128 = 1109.78 cents
    std::string problem;
    // The same map over a scale of 31 steps repeats at 7/31 of an octave.
    ScalaScale equal31;
    KeyMap white;
    ASSERT_TRUE(parseScala(equalScale(31), equal31, problem));
    ASSERT_TRUE(parseKeyMap(map, white, problem));
    std::array<uint8_t, 128> row31{};
    std::vector<std::string> notes;
    EXPECT_FALSE(scaleToToneRow(equal31, &white, row31, problem, notes));
    EXPECT_NE(problem.find("keyboard map repeats at degree 7 of the scale"), std::string::npos) << problem;
    KeyMap bad;
    EXPECT_FALSE(parseKeyMap("12\n0\n127\n60\n69\n440\n7\n0\ny\n", bad, problem));
    EXPECT_NE(problem.find("key 1"), std::string::npos) << problem;
    EXPECT_FALSE(parseKeyMap("12\n0\n200\n60\n69\n440\n7\n", bad, problem));
    EXPECT_FALSE(parseKeyMap("12\n0\n127\n60\n69\n-440\n7\n", bad, problem));
}

TEST(ScalaExport, ARowWrittenAndReadAgainGivesTheSameBytes) {
    const auto row = rowOf(equalScale(31));
    std::string text, problem;
    ASSERT_TRUE(toneRowToScala(ToneTable::ConstRow(row.data(), 128), "31 equal", text, problem));
    EXPECT_NE(text.find("\n 31\n"), std::string::npos);
    EXPECT_EQ(rowOf(text), row);

    std::array<uint8_t, 128> shifted = row;
    shifted[0] = 2;
    EXPECT_FALSE(toneRowToScala(ToneTable::ConstRow(shifted.data(), 128), "x", text, problem));
    EXPECT_NE(problem.find("Step 0"), std::string::npos);
}

TEST(ScalaFiles, TheShippedScalesAllLoadIntoATable) {
    const std::filesystem::path folder = std::filesystem::path(QUILLMER_SOURCE_DIR) / "data" / "scales";
    int scales = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".scl") continue;
        ScalaScale scale;
        std::string error, problem;
        ASSERT_TRUE(LoadScala(entry.path().string(), scale, error)) << error;
        std::array<uint8_t, 128> row{};
        std::vector<std::string> notes;
        EXPECT_TRUE(scaleToToneRow(scale, nullptr, row, problem, notes)) << entry.path() << problem;
        ++scales;
    }
    EXPECT_GE(scales, 4);
    ScalaScale scale;
    std::string error;
    EXPECT_FALSE(LoadScala(folder.string(), scale, error)) << "a folder is no scale";
    EXPECT_EQ(error.rfind("Unable to Load: " + folder.string(), 0), 0u) << error;
}
