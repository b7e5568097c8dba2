// Text variables, text sets and files, which stay inside the data folder.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "tests/expression/RuntimeHarness.h"

using namespace quillmer;
using namespace quillmer::testing;
namespace fs = std::filesystem;

namespace {

struct TempFolder {
    TempFolder() {
        path = fs::temp_directory_path() / ("quillmer-formula-" + std::to_string(::getpid()) + "-" +
                                            std::to_string(counter++));
        fs::remove_all(path);
        fs::create_directories(path / "data");
        fs::create_directories(path / "outside");
    }
    ~TempFolder() { fs::remove_all(path); }
    std::string data() const { return (path / "data").string(); }
    void write(const fs::path& rel, const std::string& text) const {
        std::ofstream(path / rel, std::ios::binary) << text;
    }
    fs::path path;
    static inline int counter = 0;
};

}  // namespace

TEST(TextFunctions, LetFamilyNamesVariablesThroughThePreParse) {
    RuntimeHarness h;
    EXPECT_EQ(h.value("LETStr(greeting, 'Hello', ', ', 'world')"), 12);
    EXPECT_EQ(h.text("greeting$"), "Hello, world");
    EXPECT_EQ(h.text("greeting & '!'"), "Hello, world!");
    EXPECT_EQ(h.runtime.calc().eval("1 + greeting").error, expr::kArgType);  // text isn't a number
    EXPECT_EQ(h.value("LET(count, 4) + count"), 8);
    EXPECT_EQ(h.value("LET(A, 9) + A"), 18);  // a letter keeps its handle
    EXPECT_EQ(h.runtime.calc().variable(599), 9);
    h.value("LETNUM(n, 2.5) + LETNUM(m, 2.5, 1)");
    EXPECT_EQ(h.text("n & '|' & m"), "2.5|3");
    h.value("LETJUSTIFY(j, 'ab', 1, 5) + LETJUSTIFY(k, 'ab', 2, 6) + LETJUSTIFY(l, 'abcdef', 0, 3)");
    EXPECT_EQ(h.text("j & '|' & k & '|' & l"), "   ab|  ab  |abc");
    h.value("LETJUSTIFY(d, 'x')");
    EXPECT_EQ(h.text("d"), "x" + std::string(23, ' '));
    EXPECT_EQ(h.value("LETCHR(c, 65) + LETCHR(e, 233)"), 65 + 233);
    EXPECT_EQ(h.text("c & e"), "A\xC3\xA9");  // Windows-1252 233 is é
    EXPECT_EQ(h.value("ChrNum(e) + ChrNum('') + TxtNum(' 12.5 ') + TxtNum('x')"), 233 + 12.5);
    EXPECT_EQ(h.value("SubStr(s, 'abcdef', 2, 3)"), 3);
    EXPECT_EQ(h.text("s"), "bcd");
    h.value("SubStr(s, 'abcdef', 5) + SubStr(t, 'abc', 9) + SubStr(u, 'abc', 0, 0)");
    EXPECT_EQ(h.text("s & '|' & t & '|' & u"), "ef||");
    EXPECT_EQ(h.value("TX3.('reg' & 3) + TX3(r3)"), 8);
    EXPECT_EQ(h.text("r3"), "reg3");
    EXPECT_EQ(h.value("TX4(r4)"), 0);
    EXPECT_EQ(h.value("TxtStoreX(5, 6, 'cell') + TxtFetchX(tc, 5, 6) + TxtFetchX(td, 6, 5)"), 8);
    EXPECT_EQ(h.text("tc & td"), "cell");
    EXPECT_EQ(h.value("InfoBox(3, 'Az') + GetInfoBox(3, 0) + GetInfoBox(3, 1) + GetInfoBox(3, 3)"), 1 + 2 + 65);
    EXPECT_EQ(h.runtime.infoBox(3), "Az");
}

TEST(TextFunctions, TextSetsFromFilesInTheDataFolder) {
    TempFolder dir;
    dir.write("data/words.txt", "one two\r\n\r\n  three  \nfour\n~~~~\nfive\n");
    dir.write("data/notes.txt", "x\n");
    dir.write("data/sub.dat", "y\n");
    RuntimeHarness h(dir.data());
    EXPECT_EQ(h.value("TxtOpen(1, 'words.txt')"), 6);
    EXPECT_EQ(h.value("TxtLines(1)"), 6);
    EXPECT_EQ(h.value("LetTxtLine(line, 1, 2)"), 9);
    EXPECT_EQ(h.text("line"), "  three  ");
    EXPECT_EQ(h.value("LetTxtLine(line, 1, 6) + TxtLines(10)"), 0);
    EXPECT_EQ(h.value("TxtWordList(2, 1)"), 4);  // stops at the ~~~~ line
    EXPECT_EQ(h.value("LetTxtLine(w, 2, 3)"), 4);
    EXPECT_EQ(h.text("w"), "four");
    EXPECT_EQ(h.value("TxtWordList(3, 1, 2, 1)"), 1);
    EXPECT_EQ(h.value("TxtDelEmpty(1)"), 5);
    EXPECT_EQ(h.value("TxtOpen(1, 'notes.txt', 1)"), 1);  // added to the set
    EXPECT_EQ(h.value("TxtLines(1)"), 6);
    EXPECT_EQ(h.value("TxtHash(1, 128)"), 6);
    const double hash = h.value("TxtGetHash(1, 0)");
    EXPECT_GE(hash, 0);
    EXPECT_LT(hash, 128);
    EXPECT_EQ(h.value("TxtHashFileSeq(1, 0)"), hash);
    EXPECT_EQ(h.value("TxtInfoBox(7, 1, 2) + TxtInfoBox(7, 1, 99)"), 1);
    EXPECT_EQ(h.runtime.infoBox(7), "four");
    EXPECT_EQ(h.value("SetFileNameList('', 'txt', 2)"), 2);
    EXPECT_EQ(h.value("GetFileName(f, 1, 2)"), 1);
    EXPECT_EQ(h.text("f"), "words.txt");
    EXPECT_EQ(h.value("SetFileNameList()"), 3);  // "c:\" is the data folder itself
    EXPECT_EQ(h.value("FileExists('notes.txt') + FileExists('c:\\notes.txt') + FileExists('nope')"), 2);
}

TEST(TextFunctions, FilesNeverLeaveTheDataFolder) {
    TempFolder dir;
    dir.write("outside/secret.txt", "S");
    fs::create_directory_symlink(dir.path / "outside", dir.path / "data" / "link");
    RuntimeHarness h(dir.data());
    EXPECT_EQ(h.value("FileExists('../outside/secret.txt')"), 0);
    EXPECT_EQ(h.value("FileExists('link/secret.txt')"), 0);  // out through a link
    EXPECT_EQ(h.value("TxtOpen(0, 'link/secret.txt') + TxtOpen(0, '..\\outside\\secret.txt')"), 0);
    EXPECT_EQ(h.value("OpenFile('W', '../outside/new.txt', 1) + OpenFile('W', 'link/new.txt', 2)"), 0);
    EXPECT_FALSE(fs::exists(dir.path / "outside" / "new.txt"));
    EXPECT_EQ(h.value("OpenFile('R', '" + (dir.path / "outside" / "secret.txt").string() + "')"), 0);
    EXPECT_EQ(h.value("SetFileNameList('..', '*')"), 0);
    RuntimeHarness none;  // no data folder: no files at all
    EXPECT_EQ(none.value("FileExists('x') + OpenFile('W', 'x')"), 0);
}

TEST(TextFunctions, ByteFilesRoundTripByHandle) {
    TempFolder dir;
    RuntimeHarness h(dir.data());
    EXPECT_EQ(h.value("OpenFile('W', 'bytes.bin', 5)"), 1);
    EXPECT_EQ(h.value("WriteToFile(65, 1, 5) + WriteToFile(300, 3, 5) + WriteToFile(1, 0, 5)"), 2);
    EXPECT_EQ(h.value("ReadFromFile(1, 5) * 1000 + ReadFromFile(2, 5) * 10 + ReadFromFile(3, 5)"), 65000 + 255);
    EXPECT_EQ(h.value("ReadFromFile(4, 5) + ReadFromFile(1, 6) + ReadFromFile(1, 128)"), 0);
    EXPECT_EQ(h.value("OpenFile('', '', 5)"), 0);  // closes
    EXPECT_EQ(h.value("ReadFromFile(1, 5)"), 0);
    std::ifstream in(dir.path / "data" / "bytes.bin", std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(bytes, std::string("A\0\xFF", 3));
    EXPECT_EQ(h.value("OpenFile('A', 'bytes.bin', 127) + WriteToFile(66, 2, 127) + ReadFromFile(1, 127)"), 1 + 1 + 65);
    EXPECT_EQ(h.value("OpenFile('R', 'bytes.bin', 0) + OpenFile('R', 'bytes.bin', 128)"), 0);
    EXPECT_EQ(h.value("OpenCOM() + SendCOM(1, 'x') + CloseCOM(1) + GetCOM(c)"), 0);
    h.runtime.start();  // start-up closes every handle
    EXPECT_EQ(h.value("ReadFromFile(1, 127)"), 0);
}

TEST(TextFunctions, CopyingTextInALoopSpendsTheBudget) {
    RuntimeHarness h;
    h.formula(2, "LETStr(w, '" + std::string(20000, 'w') + "') + Put(0, Jx)");
    const auto start = std::chrono::steady_clock::now();
    h.run("Loop(1e9, 2)");
    EXPECT_NE(h.runtime.calc().errorMessage().find("steps"), std::string::npos);
    // Each pass copies 20000 characters: the budget allows far fewer passes than calls.
    EXPECT_LT(h.value("Get(0)"), 20000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_EQ(h.text("w").size(), 20000u);
}
