// Recording files: what is written reads back with libsmf as the same tracks, meta events,
// deltas and absolute times; a save that fails leaves nothing half-written and names the file.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/StandardMidiFile.h"

using namespace quillmer;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<uint8_t>;
constexpr int kTrackOne[] = {1};

class MidiFile : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("quillmer-midifile-" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override {
        std::error_code ignored;
        fs::permissions(folder, fs::perms::owner_all, ignored);
        fs::remove_all(folder, ignored);
    }
    void add(int track, uint32_t delta, Bytes bytes) { writer.add(track, delta, bytes); }
    size_t filesIn(const fs::path& dir) const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(dir), fs::directory_iterator{}));
    }

    fs::path folder;
    MidiFileWriter writer;
};

}  // namespace

TEST_F(MidiFile, ReadsBackWithMetaEventsTracksAndDeltas) {
    writer.begin(120);
    add(1, 0, {0x90, 60, 100});
    add(3, 40, {0xC1, 5});
    add(2, 0, {0xB1, 7, 1});  // a track that isn't asked for stays out of the file
    add(1, 20, {0x80, 60, 0});
    add(1, 0, {0x90, 62, 90});
    add(3, 480, {0xE1, 0, 64});
    std::string error;
    const int tracks[] = {1, 3, 4};  // 4 was never added to: an empty track
    ASSERT_TRUE(writer.save((folder / "take.mid").string(), tracks, error)) << error;

    const auto file = readMidiFile((folder / "take.mid").string());
    ASSERT_TRUE(file);
    EXPECT_EQ(file->format, 1);
    EXPECT_EQ(file->division, 480);
    ASSERT_EQ(file->tracks.size(), 4u);

    const auto& meta = file->tracks[0];
    ASSERT_EQ(meta.size(), 4u);
    EXPECT_EQ(meta[0].bytes, (Bytes{0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20}));  // 500000 µs a quarter
    EXPECT_EQ(meta[1].bytes, (Bytes{0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08}));
    EXPECT_EQ(meta[2].bytes, (Bytes{0xFF, 0x59, 0x02, 0x00, 0x00}));
    EXPECT_EQ(meta[3].bytes, (Bytes{0xFF, 0x2F, 0x00}));

    const auto& one = file->tracks[1];
    ASSERT_EQ(one.size(), 4u);
    EXPECT_EQ(one[0].bytes, (Bytes{0x90, 60, 100}));
    EXPECT_EQ(one[1].bytes, (Bytes{0x80, 60, 0}));
    EXPECT_EQ(one[1].delta, 20u);
    EXPECT_EQ(one[2].bytes, (Bytes{0x90, 62, 90}));
    EXPECT_EQ(one[2].delta, 0u);
    EXPECT_EQ(one[2].absolute, 20u);

    EXPECT_EQ(file->tracks[3].size(), 1u);  // end of track only

    const auto& three = file->tracks[2];
    ASSERT_EQ(three.size(), 3u);
    EXPECT_EQ(three[0].bytes, (Bytes{0xC1, 5}));
    EXPECT_EQ(three[0].absolute, 40u);
    EXPECT_EQ(three[1].bytes, (Bytes{0xE1, 0, 64}));
    EXPECT_EQ(three[1].absolute, 520u);
}

TEST_F(MidiFile, TempoIsMicrosecondsAQuarterAndBeginStartsAFreshFile) {
    writer.begin(97);
    add(2, 10, {0x90, 1, 1});
    writer.begin(97);  // a new recording: nothing of the last one
    add(1, 0, {0x90, 2, 2});
    add(1, 5, {249});   // not a channel message: not recorded
    add(1, 5, {0x90});  // too short
    std::string error;
    ASSERT_TRUE(writer.save((folder / "tempo.mid").string(), kTrackOne, error)) << error;
    const auto file = readMidiFile((folder / "tempo.mid").string());
    ASSERT_TRUE(file);
    ASSERT_EQ(file->tracks.size(), 2u);
    const uint32_t micros = 60'000'000 / 97;  // 618556
    EXPECT_EQ(file->tracks[0][0].bytes, (Bytes{0xFF, 0x51, 0x03, static_cast<uint8_t>(micros >> 16),
                                               static_cast<uint8_t>(micros >> 8), static_cast<uint8_t>(micros)}));
    ASSERT_EQ(file->tracks[1].size(), 2u);
    EXPECT_EQ(file->tracks[1][0].bytes, (Bytes{0x90, 2, 2}));
}

TEST_F(MidiFile, SavingOverAFileReplacesItWholeAndLeavesNoTemporaryFile) {
    const fs::path path = folder / "over.mid";
    std::ofstream(path) << std::string(10'000, 'x');
    writer.begin(120);
    add(1, 0, {0x90, 60, 100});
    std::string error;
    ASSERT_TRUE(writer.save(path.string(), kTrackOne, error)) << error;
    EXPECT_LT(fs::file_size(path), 200u);
    EXPECT_TRUE(readMidiFile(path.string()));
    EXPECT_EQ(filesIn(folder), 1u);
}

TEST_F(MidiFile, AFailedSaveLeavesNoFileNamesItAndKeepsTheOldOne) {
    writer.begin(120);
    add(1, 0, {0x90, 60, 100});

    // An unwritable folder. Root writes anywhere it may, so there the kernel's own folder
    // stands in.
    fs::path locked = folder / "locked";
    fs::create_directories(locked);
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    if (::access(locked.c_str(), W_OK) == 0) locked = "/sys";
    const std::string target = (locked / "take.mid").string();
    std::string error;
    EXPECT_FALSE(writer.save(target, kTrackOne, error));
    EXPECT_NE(error.find(target), std::string::npos) << error;
    EXPECT_FALSE(fs::exists(target));

    // A target that can't be replaced (a folder of that name) fails after writing: the
    // written temporary file goes too, and the old one stays.
    const fs::path taken = folder / "taken.mid";
    fs::create_directories(taken / "inside");
    error.clear();
    EXPECT_FALSE(writer.save(taken.string(), kTrackOne, error));
    EXPECT_NE(error.find(taken.string()), std::string::npos) << error;
    EXPECT_TRUE(fs::is_directory(taken / "inside"));
    EXPECT_EQ(filesIn(folder), 2u);  // "locked" and "taken.mid"
}

TEST_F(MidiFile, ReadingWhatIsNotAMidiFileGivesNothing) {
    std::ofstream(folder / "text.mid") << "MThd? no.";
    EXPECT_FALSE(readMidiFile((folder / "text.mid").string()));
    EXPECT_FALSE(readMidiFile((folder / "absent.mid").string()));
    // Only a regular file is read; a folder, a pipe or a device gives nothing at once.
    std::filesystem::create_directory(folder / "folder.mid");
    EXPECT_FALSE(readMidiFile((folder / "folder.mid").string()));
    ASSERT_EQ(::mkfifo((folder / "pipe.mid").c_str(), 0600), 0);
    EXPECT_FALSE(readMidiFile((folder / "pipe.mid").string()));
    EXPECT_FALSE(readMidiFile("/dev/zero"));
}
