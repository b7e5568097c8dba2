// Files and paths that are not what a patch expects: folders, devices, pipes, links,
// read-only files, names at the length limit, left-over temporary files.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <future>

#include "SessionHarness.h"
#include "engine/AtomicFile.h"
#include "engine/FileLayout.h"
#include "engine/RegularFile.h"
#include "modules/panels/Chain.h"

using namespace quillmer;
using namespace quillmer::testing;
namespace fs = std::filesystem;

namespace {

unsigned modeOf(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

// Runs `load` on a path that may block; a load still waiting after 10 s fails the test and
// is released by opening the FIFO for writing.
template <typename Load>
void loadWithoutWaiting(const std::string& fifo, Load load) {
    auto done = std::async(std::launch::async, load);
    if (done.wait_for(std::chrono::seconds(10)) == std::future_status::ready) return done.get();
    ADD_FAILURE() << "the load waits on the pipe";
    const int fd = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
    if (fd >= 0) ::close(fd);
    done.get();
}

}  // namespace

// --- a folder named as a patch ---

TEST(HostileFiles, AFolderIsNoPatchAndTheMessageNamesIt) {
    ScratchDir dir;
    fs::create_directory(dir.path / "folder.qmp");
    SessionHarness h;
    std::string error;
    EXPECT_NO_THROW(EXPECT_FALSE(h.session.OpenFile(dir.file("folder.qmp"), error)));
    EXPECT_EQ(error, "Unable to Load: " + dir.file("folder.qmp"));
    EXPECT_EQ(h.session.loadProblem, "it is a folder, not a file");
    EXPECT_EQ(h.moduleCount(), 0u);
    EXPECT_TRUE(h.session.engine.timersRunning());
}

TEST(HostileFiles, AChainToAFolderReportsTheLoadFailureInsteadOfThrowingFromItsTimer) {
    ScratchDir dir;
    fs::create_directory(dir.path / "next.qmp");
    SessionHarness h;
    Engine& e = h.session.engine;
    std::vector<std::string> failures;
    h.session.chainFailed = [&](const std::string& error) { failures.push_back(error); };
    auto& chain = static_cast<Chain&>(h.add("Chain"));
    chain.fileName = dir.file("next.qmp");
    h.connect(chain, 0, " On (127)");
    e.StartTimers();
    h.timers.advanceByMs(21);
    h.connect(chain, 1, " On (127)");
    EXPECT_NO_THROW(h.timers.advanceByMs(21 * 2 + 100));
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_EQ(failures[0], "Unable to Load: " + dir.file("next.qmp"));
    EXPECT_TRUE(e.timersRunning()) << "time goes on with the empty patch";
}

// --- saving onto a folder; the saved mark follows success ---

TEST(HostileFiles, SavingOntoAFolderFailsWithAMessageAndThePatchStillNeedsSaving) {
    ScratchDir dir;
    fs::create_directory(dir.path / "p.qmp");
    SessionHarness h;
    h.add("Div");
    h.session.SetModified(true);
    std::string error;
    EXPECT_NO_THROW(EXPECT_FALSE(h.session.SaveModuleFile(dir.file("p.qmp"), error)));
    EXPECT_EQ(error, "Unable to save " + dir.file("p.qmp") + ": it is a folder, not a file");
    EXPECT_TRUE(h.session.ModifiedMark);
    EXPECT_TRUE(fs::is_directory(dir.path / "p.qmp"));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), {}), 1) << "no temporary left behind";

    EXPECT_EQ(h.save(dir.file("q.qmp")), "");
    EXPECT_FALSE(h.session.ModifiedMark) << "a save that worked clears it";
}

TEST(HostileFiles, APipeIsNotReplaced) {
    ScratchDir dir;
    const std::string fifo = dir.file("pipe.qmp");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    SessionHarness h;
    h.add("Div");
    EXPECT_EQ(h.save(fifo), "Unable to save " + fifo + ": it is a pipe, not a file");
    EXPECT_TRUE(fs::is_fifo(fifo));
}

// --- devices and pipes; no more than the format allows ---

TEST(HostileFiles, DevZeroIsRefusedAtOnce) {
    SessionHarness h;
    EXPECT_EQ(h.load("/dev/zero"), "Unable to Load: /dev/zero");
    EXPECT_EQ(h.session.loadProblem, "it is a device, not a file");
    ToneTables tables;
    EXPECT_EQ(LoadToneTables("/dev/zero", tables), ToneLoad::Missing);
}

TEST(HostileFiles, APipeIsRefusedWithoutWaitingForAWriter) {
    ScratchDir dir;
    const std::string fifo = dir.file("pipe.qmp");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    SessionHarness h;
    loadWithoutWaiting(fifo, [&] { EXPECT_EQ(h.load(fifo), "Unable to Load: " + fifo); });
    EXPECT_EQ(h.session.loadProblem, "it is a pipe, not a file");
    ToneTables tables;
    loadWithoutWaiting(fifo, [&] { EXPECT_EQ(LoadToneTables(fifo, tables), ToneLoad::Missing); });
}

TEST(HostileFiles, AFolderIsNoTuningFile) {
    ScratchDir dir;
    ToneTables tables;
    EXPECT_NO_THROW(EXPECT_EQ(LoadToneTables(dir.path.string(), tables), ToneLoad::Missing));
}

TEST(HostileFiles, AReaderTakesNoMoreThanItsFormatAllows) {
    ScratchDir dir;
    SessionHarness h;
    ASSERT_EQ(h.save(dir.file("empty.qmp")), "");
    auto bytes = readBytes(dir.file("empty.qmp"));
    ASSERT_EQ(bytes.size(), kHeaderSize);
    bytes.resize(kHeaderSize + 3'000'000, 0x55);  // a long tail no header count asks for
    writeBytes(dir.file("tail.qmp"), bytes);
    std::vector<uint8_t> read;
    std::string reason;
    ASSERT_TRUE(readModuleFileBytes(dir.file("tail.qmp"), read, reason)) << reason;
    EXPECT_EQ(read.size(), kHeaderSize);
    EXPECT_EQ(h.load(dir.file("tail.qmp")), "");

    // Two Bars ("H 128b"): their records at the longest they could be, and not a byte more.
    const FileSlot& bar = fileSlotOf(*typeIdByName("Bar"));
    bytes[bar.countOffset] = 2;
    writeBytes(dir.file("bar.qmp"), bytes);
    ASSERT_TRUE(readModuleFileBytes(dir.file("bar.qmp"), read, reason)) << reason;
    EXPECT_EQ(read.size(), kHeaderSize + 2 * (18 + 2 + 65535 + 128));

    ToneTables tables;
    std::vector<uint8_t> pbt(kToneFileSize + 5000, 3);
    writeBytes(dir.file("long.pbt"), pbt);
    EXPECT_EQ(LoadToneTables(dir.file("long.pbt"), tables), ToneLoad::Loaded);
    ASSERT_TRUE(readRegularFile(dir.file("long.pbt"), kToneFileSize, read, reason));
    EXPECT_EQ(read.size(), kToneFileSize);
}

// --- links, modes, read-only files, left-over temporaries ---

TEST(HostileFiles, SavingThroughASymbolicLinkReplacesItsTargetAndKeepsTheLink) {
    ScratchDir dir;
    fs::create_directory(dir.path / "real");
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("real/p.qmp")), "");
    fs::create_symlink("real/p.qmp", dir.path / "link.qmp");  // relative to the link's folder
    fs::create_symlink(dir.path / "link.qmp", dir.path / "link2.qmp");  // a link to a link
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("link2.qmp")), "");
    EXPECT_TRUE(fs::is_symlink(dir.path / "link.qmp"));
    EXPECT_TRUE(fs::is_symlink(dir.path / "link2.qmp"));
    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("real/p.qmp")), "");
    EXPECT_EQ(loaded.moduleCount(), 2u) << "the target has the new patch";

    // A link whose target doesn't exist yet: the save makes the target.
    fs::create_symlink("real/new.qmp", dir.path / "dangling.qmp");
    ASSERT_EQ(h.save(dir.file("dangling.qmp")), "");
    EXPECT_TRUE(fs::is_symlink(dir.path / "dangling.qmp"));
    EXPECT_TRUE(fs::is_regular_file(dir.path / "real/new.qmp"));

    fs::create_symlink("loop-b.qmp", dir.path / "loop-a.qmp");
    fs::create_symlink("loop-a.qmp", dir.path / "loop-b.qmp");
    std::string error = h.save(dir.file("loop-a.qmp"));
    EXPECT_EQ(error.rfind("Unable to save " + dir.file("loop-a.qmp") + ": ", 0), 0u) << error;
}

TEST(HostileFiles, SavingKeepsTheModeAndRefusesAReadOnlyFile) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    ::chmod(dir.file("p.qmp").c_str(), 0640);
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    EXPECT_EQ(modeOf(dir.file("p.qmp")), 0640u);

    ::chmod(dir.file("p.qmp").c_str(), 0444);
    const auto before = readBytes(dir.file("p.qmp"));
    h.add("Div");
    h.session.SetModified(true);
    EXPECT_EQ(h.save(dir.file("p.qmp")), "Unable to save " + dir.file("p.qmp") + ": the file is read-only");
    EXPECT_EQ(readBytes(dir.file("p.qmp")), before);
    EXPECT_EQ(modeOf(dir.file("p.qmp")), 0444u);
    EXPECT_TRUE(h.session.ModifiedMark);
}

TEST(HostileFiles, SavingAFileWithHardLinksKeepsThem) {
    ScratchDir dir;
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    fs::create_hard_link(dir.path / "p.qmp", dir.path / "q.qmp");
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    EXPECT_EQ(fs::hard_link_count(dir.path / "p.qmp"), 2u);
    EXPECT_EQ(readBytes(dir.file("q.qmp")), readBytes(dir.file("p.qmp")));
    SessionHarness loaded;
    ASSERT_EQ(loaded.load(dir.file("q.qmp")), "");
    EXPECT_EQ(loaded.moduleCount(), 2u);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), {}), 2) << "no temporary left behind";
}

TEST(HostileFiles, TemporaryFilesAKilledSaveLeftAreRemovedByTheNextSave) {
    ScratchDir dir;
    const std::string prefix = AtomicFile::tempPrefix(dir.file("p.qmp"));
    EXPECT_EQ(prefix, ".p.qmp.quillmer-");
    writeBytes(dir.file(prefix + "Ab12Cd"), {1, 2, 3});
    writeBytes(dir.file(prefix + "zzzzzz"), {1});
    writeBytes(dir.file("p.qmp.backup"), {4});           // the user's own: kept
    writeBytes(dir.file(prefix + "Ab12Cd.keep"), {5});   // not of our naming: kept
    writeBytes(dir.file(".other.qmp.quillmer-Ab12Cd"), {6});  // another file's: kept
    SessionHarness h;
    h.add("Div");
    ASSERT_EQ(h.save(dir.file("p.qmp")), "");
    EXPECT_FALSE(fs::exists(dir.path / (prefix + "Ab12Cd")));
    EXPECT_FALSE(fs::exists(dir.path / (prefix + "zzzzzz")));
    EXPECT_TRUE(fs::exists(dir.path / "p.qmp.backup"));
    EXPECT_TRUE(fs::exists(dir.path / (prefix + "Ab12Cd.keep")));
    EXPECT_TRUE(fs::exists(dir.path / ".other.qmp.quillmer-Ab12Cd"));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), {}), 4);
}

// --- names at the length limit ---

TEST(HostileFiles, APatchNameAtTheLengthLimitOpensAndSavesWithoutItsSideFiles) {
    ScratchDir dir;
    for (size_t length : {252u, 253u, 255u}) {
        const std::string path = dir.file(std::string(length, 'n'));  // no extension
        SessionHarness h;
        h.add("Div");
        ASSERT_EQ(h.save(path), "") << length;
        std::string error;
        bool opened = false;
        EXPECT_NO_THROW(opened = h.session.OpenFile(path, error)) << length;
        EXPECT_TRUE(opened) << error;
        EXPECT_EQ(h.moduleCount(), 1u);
        EXPECT_FALSE(h.session.usesOwnToneTables());
    }
}
