// Sfile: steps read by Bank x 128 + Step, the file it reads, the formula doors and its record.

#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/sequencers/Sfile.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

using Bytes = std::vector<uint8_t>;

struct Scratch {
    Scratch() {
        dir = std::filesystem::temp_directory_path() / ("quillmer-sfile-" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
    }
    ~Scratch() { std::filesystem::remove_all(dir); }
    std::string write(const std::string& name, const Bytes& bytes) const {
        const std::string path = (dir / name).string();
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    std::filesystem::path dir;
};

Bytes ramp(size_t n) {
    Bytes b(n);
    for (size_t i = 0; i < n; ++i) b[i] = static_cast<uint8_t>(i * 7 % 251);  // bytes above 127 too
    return b;
}

Bytes wholeRecord(const Module& m, const Bytes& bodyBytes) {
    ByteWriter whole;
    for (int i = 0; i < 9; ++i) whole.i16(static_cast<int16_t>(i));
    m.writeHeadTail(whole);
    whole.str(m.Name);
    whole.raw(bodyBytes);
    return whole.bytes();
}

}  // namespace

TEST(Sfile, StepAndBankAddressTheDataModuloItsLength) {
    ModuleHarness h;
    auto& f = static_cast<Sfile&>(h.add("Sfile"));
    EXPECT_EQ(run(h, f, {5, 0, 0, 0}), 0) << "no data reads 0";
    f.setData(ramp(300));
    EXPECT_EQ(run(h, f, {5, 0, 0, 0}), 35);
    EXPECT_EQ(run(h, f, {5, 1, 0, 0}), (133 * 7 % 251) & 127) << "bank 1 starts at step 128, values AND 127";
    EXPECT_EQ(f.currentStep(), 133);
    EXPECT_EQ(run(h, f, {50, 2, 0, 0}), (6 * 7) & 127) << "306 wraps to step 6";
    EXPECT_EQ(run(h, f, {5, 0, 100, 0}), 127) << "the offset is cut at 127";
    EXPECT_EQ(run(h, f, {5, 0, 10, 0}), 45);
    EXPECT_EQ(run(h, f, {9, 0, 10, 127}), 45) << "held";
    EXPECT_EQ(run(h, f, {9, 0, 10, 0}), 73);
}

TEST(Sfile, StepsOverManyTicksFollowACounter) {
    ModuleHarness h;
    auto& f = static_cast<Sfile&>(h.add("Sfile"));
    f.setData({60, 62, 64});
    Module& counter = h.add("Stepper");
    h.connect(counter, 0, "~ 127");  // turbo: one count a tick
    h.connect(f, 0, counter.Name);
    f.setPriority(priority::Late);
    h.engine->passListsStale = true;
    std::vector<int> heard = h.values(f, 7);
    EXPECT_EQ(heard, (std::vector<int>{62, 64, 60, 62, 64, 60, 62}));
}

TEST(Sfile, FileIsReadWholeOrNotAtAll) {
    ModuleHarness h;
    Scratch scratch;
    auto& f = static_cast<Sfile&>(h.add("Sfile"));
    std::string error;
    ASSERT_TRUE(f.loadFile(scratch.write("row.seq", {1, 2, 200}), error)) << error;
    EXPECT_EQ(f.data(), (Bytes{1, 2, 200 & 127}));
    const Bytes before = f.data();
    for (const auto& [path, why] : std::vector<std::pair<std::string, std::string>>{
             {scratch.write("empty.seq", {}), "holds no steps"},
             {scratch.write("long.seq", Bytes(Sfile::kMaxSteps + 1, 1)), "longer than 16384"},
             {(scratch.dir / "absent.seq").string(), "Unable to read"},
             {scratch.dir.string(), "Unable to read"}}) {
        error.clear();
        EXPECT_FALSE(f.loadFile(path, error)) << path;
        EXPECT_NE(error.find(path), std::string::npos) << error;
        EXPECT_NE(error.find(why), std::string::npos) << error;
        EXPECT_EQ(f.data(), before);
        EXPECT_EQ(f.problem, error) << "the panel shows why";
    }
    EXPECT_TRUE(f.loadFile(scratch.write("full.seq", Bytes(Sfile::kMaxSteps, 3)), error)) << "16384 steps fit";
    EXPECT_TRUE(f.problem.empty());
}

TEST(Sfile, FormulaDoorsReadWriteAndReportChanges) {
    ModuleHarness h;
    auto& f = static_cast<Sfile&>(h.add("Sfile"));
    StepData& door = f;
    EXPECT_EQ(door.dataStep(3), 0);
    door.writeDataStep(3, 9);  // no data: nothing to write
    f.setData({10, 20, 30});
    EXPECT_EQ(door.takeDataChanged(), 1);
    EXPECT_EQ(door.takeDataChanged(), 0) << "reported once";
    EXPECT_EQ(door.dataStep(4), 20);
    door.writeDataStep(5, 300);
    EXPECT_EQ(f.data()[2], 127);
    EXPECT_EQ(door.takeDataChanged(), 1);
    door.writeDataStep(2, 127);
    EXPECT_EQ(door.takeDataChanged(), 0) << "the same value is no change";
    EXPECT_EQ(run(h, f, {2, 0, 0, 0}), 127);
    door.writeDataStep(2, 5);
    EXPECT_EQ(run(h, f, {2, 0, 0, 0}), 5) << "a write shows though the inputs stay";
}

TEST(Sfile, RecordFitsTheLayoutAndKeepsOddBytes) {
    ModuleHarness h;
    auto& f = static_cast<Sfile&>(h.add("Sfile"));
    f.setData(ramp(200));
    f.PatchStore(*h.engine);
    const Bytes bytes = body(h, f);
    {
        const Bytes whole = wholeRecord(f, bytes);
        ByteReader in(whole);
        skipRecord(in, parseLayout(fileSlotOf(f.type()).layout));
        EXPECT_EQ(in.remaining(), 0u);
    }
    auto back = readBack(h, "Sfile", bytes);
    EXPECT_EQ(static_cast<Sfile&>(*back).data(), f.data()) << "kept as stored";
    EXPECT_EQ(body(h, *back), bytes);

    // A head tail of its own and an array with a lower bound of 1 come back as they were.
    Bytes odd(bytes.begin(), bytes.end() - 200 - 10);
    ByteWriter array;
    array.u16(1);
    array.i32(3);
    array.i32(1);
    array.raw(Bytes{1, 2, 3});
    odd.insert(odd.end(), array.bytes().begin(), array.bytes().end());
    auto oddBack = readBack(h, "Sfile", odd);
    EXPECT_EQ(static_cast<Sfile&>(*oddBack).data(), (Bytes{1, 2, 3}));
    EXPECT_EQ(body(h, *oddBack), odd);
    const Bytes tail{9, 8, 7, 6};
    ByteReader tailIn(tail);
    oddBack->readHeadTail(tailIn);
    ByteWriter tailOut;
    oddBack->writeHeadTail(tailOut);
    EXPECT_EQ(tailOut.bytes(), tail);

    Bytes empty(bytes.begin(), bytes.end() - 200 - 10);
    empty.push_back(0);
    empty.push_back(0);
    auto emptyBack = readBack(h, "Sfile", empty);
    EXPECT_TRUE(static_cast<Sfile&>(*emptyBack).data().empty());
    EXPECT_EQ(body(h, *emptyBack), empty);

    Bytes shortened(bytes.begin(), bytes.end() - 1);
    EXPECT_THROW(readBack(h, "Sfile", shortened), RecordFormatError) << "steps past the end";
}
