#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "engine/Engine.h"
#include "engine/VirtualTimerService.h"
#include "tables/DefaultTones.h"
#include "tables/ToneTables.h"

using namespace quillmer;

namespace {

// A file of its own for each test, removed after it.
struct TempFile {
    TempFile() {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        path = (std::filesystem::temp_directory_path() /
                (std::string("quillmer-") + test->name() + "-" + std::to_string(getpid()) + ".pbt"))
                   .string();
    }
    ~TempFile() { std::filesystem::remove(path); }
    void write(const std::vector<uint8_t>& bytes) const {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::string path;
};

// Tables whose every byte is `fill`, names included.
ToneTables filled(uint8_t fill) {
    ToneTables t;
    std::fill(t.rows.data(), t.rows.data() + kToneRowsBytes, fill);
    std::fill(t.names.data(), t.names.data() + kToneNamesBytes, fill);
    return t;
}

}  // namespace

TEST(LoadToneTables, AMissingFileChangesNothing) {
    ToneTables tables;
    EXPECT_EQ(LoadToneTables("/nonexistent/quillmer/default.pbt", tables), ToneLoad::Missing);
    for (int t = 0; t < kToneTableCount; ++t) EXPECT_EQ(tables.rows.steps(t), 1) << "zero tables have one step";
    ToneTables loaded = filled(7);
    LoadToneTables("/nonexistent/quillmer/default.pbt", loaded);
    EXPECT_EQ(toneTableFileBytes(loaded), toneTableFileBytes(filled(7)));
}

TEST(LoadToneTables, AShortFileLeavesTheRestAsItWas) {
    TempFile file;
    // Every row and the first name and a half.
    std::vector<uint8_t> bytes(kToneRowsBytes + kToneNameSize + 10, 3);
    file.write(bytes);
    ToneTables tables = filled('x');
    EXPECT_EQ(LoadToneTables(file.path, tables), ToneLoad::Short);
    EXPECT_EQ(tables.rows.row(127)[127], 3);
    EXPECT_EQ(tables.names.name(1), std::string(10, '\3') + std::string(10, 'x'));
    EXPECT_EQ(tables.names.name(2), std::string(20, 'x'));

    // Cut inside the rows: the names aren't touched at all.
    file.write(std::vector<uint8_t>(200, 9));
    ToneTables rowsOnly = filled(1);
    EXPECT_EQ(LoadToneTables(file.path, rowsOnly), ToneLoad::Short);
    EXPECT_EQ(rowsOnly.rows.row(1)[71], 9);
    EXPECT_EQ(rowsOnly.rows.row(1)[72], 1);
    EXPECT_EQ(rowsOnly.names.name(0), std::string(20, '\1'));
}

TEST(LoadToneTables, SaveAndLoadAgreeAndALongerFileIsReadToItsSize) {
    TempFile file;
    ToneTables tables = DefaultToneTables();
    tables.names.setName(5, "Échelle à sept notes, trop longue");
    ASSERT_TRUE(SaveToneTables(file.path, tables));
    EXPECT_EQ(std::filesystem::file_size(file.path), kToneFileSize);
    std::vector<uint8_t> longer = toneTableFileBytes(tables);
    longer.resize(kToneFileSize + 100, 0xEE);
    file.write(longer);
    ToneTables loaded = filled(0);
    EXPECT_EQ(LoadToneTables(file.path, loaded), ToneLoad::Loaded);
    EXPECT_EQ(toneTableFileBytes(loaded), toneTableFileBytes(tables));
    EXPECT_EQ(loaded.names.name(5), "Échelle à sept notes") << "20 characters, one byte each on disk";
}

TEST(DefaultTones, RowZeroIsTheChromaticTableAndEveryRowIsOneOctave) {
    const ToneTables tables = DefaultToneTables();
    const auto chromatic = tables.rows.row(0);
    EXPECT_EQ(chromatic[127], 11);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(chromatic[static_cast<size_t>(i)], i);
        EXPECT_EQ(chromatic[64 + static_cast<size_t>(i)], kNoBend);
    }
    for (int t = 0; t < kToneTableCount; ++t) {
        const int steps = tables.rows.steps(t);
        ASSERT_LE(steps, kMaxScaleSteps) << t;
        EXPECT_FALSE(tables.names.name(t).empty()) << t;
        int lastPitch = -1;  // in 1/64 semitones
        for (int i = 0; i < steps; ++i) {
            const int bend = tables.rows.bend(t, i);
            ASSERT_GE(bend, 1) << t;
            ASSERT_LE(bend, 64) << "sent as bend + 63, at most 127";
            const int pitch = tables.rows.semitones(t, i) * 64 + bend - kNoBend;
            EXPECT_GT(pitch, lastPitch) << tables.names.name(t) << " step " << i;
            EXPECT_LT(pitch, 12 * 64) << tables.names.name(t) << ": one octave per pass of the steps";
            lastPitch = pitch;
        }
    }
}

TEST(DefaultTones, MicrotonalRowsLandOnTheNearestSixtyFourthOfASemitone) {
    const ToneTables tables = DefaultToneTables();
    auto find = [&](std::string_view name) {
        for (int t = 0; t < kToneTableCount; ++t)
            if (tables.names.name(t) == name) return t;
        return -1;
    };
    const int quarter = find("Quarter Tone");
    ASSERT_GE(quarter, 0);
    EXPECT_EQ(tables.rows.steps(quarter), 24);
    EXPECT_EQ(tables.rows.semitones(quarter, 3), 1);
    EXPECT_EQ(tables.rows.bend(quarter, 3), 33) << "half a semitone above";
    const int just = find("Just Major");
    ASSERT_GE(just, 0);
    EXPECT_EQ(tables.rows.semitones(just, 2), 3) << "5/4 is 386 cents";
    EXPECT_EQ(tables.rows.bend(just, 2), 56);
    EXPECT_GE(find("Pythagorean"), 0);
    EXPECT_GE(find("Harmonic Minor"), 0);
}

TEST(DefaultTones, TheShippedFileIsTheGeneratorsOutput) {
    ToneTables shipped = filled(0);
    ASSERT_EQ(LoadToneTables(std::string(QUILLMER_SOURCE_DIR) + "/data/default.pbt", shipped), ToneLoad::Loaded);
    EXPECT_EQ(toneTableFileBytes(shipped), toneTableFileBytes(DefaultToneTables()))
        << "run the default_pbt target and commit data/default.pbt";
}

TEST(ToneTables, NoteModulesReadTheTablesTheEngineIsGiven) {
    VirtualTimerService timers;
    ModuleRegistry registry;
    Engine engine(timers, registry);
    const ToneTables tables = DefaultToneTables();
    engine.setToneTables(tables.rows.data());
    EXPECT_EQ(engine.toneRow(1)[127], 6) << "Major has seven steps";
    EXPECT_EQ(engine.toneRow(128 + 1), engine.toneRow(1));
}

TEST(NoteNames, NameColonOctave) {
    EXPECT_EQ(NoteName(0), "Cn : 0");
    EXPECT_EQ(NoteName(61), "C# : 5");
    EXPECT_EQ(NoteName(127), "Gn : 10");
    EXPECT_EQ(NoteNameTable[11], "Bn");
}
