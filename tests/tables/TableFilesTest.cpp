// The .tbl and .pbt files as the editors and the command line open them: round trips, and
// short, long, garbled and folder paths refused with the file named and nothing changed.
// Also the working copies of the editors, the tuning-row edits and the shipped tables.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tables/DefaultTables.h"
#include "tables/ScaleFit.h"
#include "tables/TableEditing.h"
#include "tables/TableFiles.h"

using namespace quillmer;

namespace {

struct Scratch {
    Scratch() {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        dir = std::filesystem::temp_directory_path() / (std::string("quillmer-tables-") + test->name() + "-" + std::to_string(getpid()));
        std::filesystem::create_directories(dir);
    }
    ~Scratch() { std::filesystem::remove_all(dir); }
    std::string file(const std::string& name, const std::vector<uint8_t>& bytes) const {
        const std::string path = (dir / name).string();
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    std::filesystem::path dir;
};

GeneralTables sample() {
    GeneralTables t;
    for (int r = 0; r < 128; ++r)
        for (int s = 0; s < 128; ++s) t.bank.row(r)[static_cast<size_t>(s)] = static_cast<uint8_t>((r * 7 + s) & 127);
    t.names.setName(0, "First");
    t.names.setName(127, "A name much longer than twenty");
    return t;
}

bool sameBank(const GeneralTables& a, const GeneralTables& b) { return tableFileBytes(a) == tableFileBytes(b); }

}  // namespace

TEST(TableFiles, ATblRoundTripKeepsRowAndStep127AndCutsAndPadsNames) {
    Scratch s;
    const GeneralTables out = sample();
    const std::string path = (s.dir / "song.tbl").string();
    std::string error;
    ASSERT_TRUE(SaveTableFile(path, out, error)) << error;
    EXPECT_EQ(std::filesystem::file_size(path), 18944u);
    GeneralTables in;
    ASSERT_TRUE(LoadTableFile(path, in, error)) << error;
    EXPECT_TRUE(sameBank(in, out));
    EXPECT_EQ(in.bank.row(127)[127], (127 * 7 + 127) & 127);
    EXPECT_EQ(in.names.name(127), "A name much longer t");
    const auto bytes = tableFileBytes(in);
    EXPECT_EQ(std::string(bytes.begin() + 16384, bytes.begin() + 16404), "First               ");
}

TEST(TableFiles, ShortLongGarbledAndFolderFilesAreRefusedAndChangeNothing) {
    Scratch s;
    const GeneralTables before = sample();
    std::vector<uint8_t> good = tableFileBytes(GeneralTables{});
    std::vector<uint8_t> garbled = good;
    garbled[5 * 128 + 9] = 200;
    std::vector<uint8_t> longer = good;
    longer.push_back(0);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {s.file("short.tbl", std::vector<uint8_t>(good.begin(), good.end() - 1)), "too short"},
        {s.file("long.tbl", longer), "too long"},
        {s.file("garbled.tbl", garbled), "Table 5 step 9 holds 200"},
        {s.dir.string(), "folder"},
        {(s.dir / "missing.tbl").string(), "No such file"},
    };
    for (const auto& [path, why] : cases) {
        GeneralTables t = before;
        std::string error;
        EXPECT_FALSE(LoadTableFile(path, t, error)) << path;
        EXPECT_EQ(error.rfind("Unable to Load: " + path + "\n", 0), 0u) << error;
        EXPECT_NE(error.find(why), std::string::npos) << error;
        EXPECT_TRUE(sameBank(t, before)) << path;
    }
    ToneTables tones;
    tones.rows.row(3)[0] = 42;
    std::string error;
    EXPECT_FALSE(LoadToneFile(s.file("short.pbt", std::vector<uint8_t>(100, 1)), tones, error));
    EXPECT_EQ(tones.rows.row(3)[0], 42) << "a short tuning file changes nothing either";
    EXPECT_FALSE(SaveTableFile(s.dir.string(), before, error));
    EXPECT_EQ(error, "Error writing to: " + s.dir.string());
}

TEST(TableFiles, APbtRoundTripKeepsEveryByte) {
    Scratch s;
    ToneTables out;
    for (size_t i = 0; i < kToneRowsBytes; ++i) out.rows.data()[i] = static_cast<uint8_t>(i * 31);
    out.names.setName(5, "Meantone");
    std::string error;
    const std::string path = (s.dir / "song.pbt").string();
    ASSERT_TRUE(SaveToneFile(path, out, error)) << error;
    ToneTables in;
    ASSERT_TRUE(LoadToneFile(path, in, error)) << error;
    EXPECT_EQ(toneTableFileBytes(in), toneTableFileBytes(out));
}

TEST(TableFiles, ATextFileNamesTablesLineByLine) {
    Scratch s;
    const std::string text = "Bass line\r\nLead\n\nA line longer than twenty characters\n";
    const std::string path = s.file("names.txt", std::vector<uint8_t>(text.begin(), text.end()));
    TableNames names;
    names.setName(4, "kept");
    std::string error;
    ASSERT_TRUE(LoadTableNames(path, names, error)) << error;
    EXPECT_EQ(names.name(0), "Bass line");
    EXPECT_EQ(names.name(1), "Lead");
    EXPECT_EQ(names.name(2), "");
    EXPECT_EQ(names.name(3), "A line longer than t");
    EXPECT_EQ(names.name(4), "kept") << "tables past the last line keep their names";
    EXPECT_FALSE(LoadTableNames(s.file("binary.txt", {'a', 0, 'b'}), names, error));
    EXPECT_EQ(names.name(0), "Bass line");
}

TEST(TableEditing, WorkingCopiesGoBackUnchangedAndTellWhichTablesChanged) {
    GeneralTables tables = sample();
    PageTable working = workingCopy(tables);
    EXPECT_EQ(changedTables(working, tables), -1);
    working.row(127)[127] = 1;
    EXPECT_EQ(changedTables(working, tables), 127);
    working.setName(3, "Renamed");
    EXPECT_EQ(changedTables(working, tables), 128);
    storeWorkingCopy(working, tables);
    EXPECT_EQ(tables.bank.row(127)[127], 1);
    EXPECT_EQ(tables.names.name(3), "Renamed");
    EXPECT_EQ(changedTables(working, tables), -1);
}

TEST(TableEditing, ToneRowEditsKeepTheCountByteAndTheBendRules) {
    Row row{};
    tone::blank(row);
    EXPECT_EQ(tone::steps(row), 1);
    tone::setSteps(row, 5);
    EXPECT_EQ(row[127], 4);
    EXPECT_EQ(row[4], 4) << "new steps climb a semitone at a time";
    EXPECT_EQ(row[68], 1);
    EXPECT_TRUE(tone::setCents(row, 2, 250.0));  // 160/64: 2 semitones and 32
    EXPECT_EQ(row[2], 2);
    EXPECT_EQ(row[66], 33);
    EXPECT_DOUBLE_EQ(tone::cents(row, 2), 250.0);
    EXPECT_FALSE(tone::setCents(row, 2, -1.0));
    EXPECT_FALSE(tone::setCents(row, 63, 1150.0)) << "step 63 has no bend byte";
    EXPECT_TRUE(tone::setCents(row, 63, 1100.0));
    EXPECT_EQ(row[127], 4) << "step 63's semitone is not the count byte";
    tone::setBend(row, 63, 30);
    EXPECT_EQ(row[127], 4);
    tone::setSteps(row, 100);
    EXPECT_EQ(tone::steps(row), 64);
}

TEST(ScaleFit, EdgesOfEveryScale) {
    EXPECT_EQ(fitToScale(61, 1), 60);
    EXPECT_EQ(fitToScale(71, 7), 60) << "11 falls to the root of its own octave";
    EXPECT_EQ(fitToScale(66, 6), 72);
    EXPECT_EQ(fitToScale(65, 6), 60);
    EXPECT_EQ(fitToScale(0, 3), 1) << "pentatonic lifts 0 to the black key above";
    EXPECT_EQ(fitToScale(127, 3), 128) << "past 127: the caller cuts";
    EXPECT_EQ(fitToScale(68, 4), 69);
    EXPECT_EQ(fitToScale(68, 1), 67);
    EXPECT_EQ(fitToScale(70, 5), 60);
    EXPECT_EQ(fitToScale(69, 5), 67);
    EXPECT_EQ(fitToScale(64, 8), 63);
    for (int scale : {0, 9, 127, -1}) EXPECT_EQ(fitToScale(50, scale), 50);
    EXPECT_EQ(fitToScale(-1, 1), -1) << "negative values keep their pitch class";
}

TEST(DefaultTables, ShippedFileIsTheGeneratorsOutputWithNoValueAbove127) {
    const GeneralTables made = DefaultGeneralTables();
    GeneralTables shipped;
    std::string error;
    ASSERT_TRUE(LoadTableFile(std::string(QUILLMER_SOURCE_DIR) + "/data/default.tbl", shipped, error)) << error;
    EXPECT_EQ(tableFileBytes(shipped), tableFileBytes(made)) << "run the default_tbl target";
    EXPECT_EQ(shipped.names.name(10), "Major Notes");
    // The major notes ascend, so TFit finds every one of them.
    const auto major = shipped.bank.row(10);
    EXPECT_TRUE(std::is_sorted(major.begin(), major.end()));
    EXPECT_EQ(major[0], 0);
    EXPECT_EQ(major[7], 12);
}
