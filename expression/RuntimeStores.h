#pragma once
// The private stores of the function library and the small functions its callbacks share.

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "expression/FormulaRuntime.h"

namespace quillmer {

struct FormulaRuntime::Stores {
    // By Uid.
    std::array<std::array<double, 10>, kUidCount> v{};
    std::array<std::array<double, 16>, kUidCount> slots{};
    std::array<std::array<uint32_t, 32>, kUidCount> lm{};
    std::array<uint8_t, kUidCount> timeCode{};
    std::array<uint8_t, kUidCount> tailTicks{};
    std::array<uint8_t, kUidCount> onFired{};   // the beat's formula ran in this beat
    std::array<uint8_t, kUidCount> offFired{};  // the tail's formula ran in this tail
    std::array<uint8_t, kUidCount> gateState{};

    // Global, made at first touch.
    std::vector<float> store;   // 1024 x 32
    std::vector<float> storeX;  // 128 x 128
    std::array<uint8_t, 128> risingHigh{};
    std::array<uint8_t, 128> fallingHigh{};
    std::array<std::vector<std::string>, 10> textSets;
    std::array<std::vector<uint32_t>, 10> textHashes;
    std::array<std::string, 10> textRegisters;
    std::map<int, std::string> textGrid;  // P * 128 + I
    std::array<std::vector<std::string>, 10> fileNameLists;
    std::vector<float> randomTable;
    std::vector<float> walkTable;
    int randomIndex = 0;
    int walkIndex = 0;
    std::array<std::FILE*, 128> files{};  // 1..127
    bool carry = false;
    std::vector<int> ix;  // innermost List or Loop last
    std::vector<int> jx;  // innermost Loop last
    std::array<Picture, 128> pictures;

    ~Stores() { closeFiles(); }
    void closeFiles() {
        for (std::FILE*& f : files)
            if (f != nullptr) {
                std::fclose(f);
                f = nullptr;
            }
    }
};

namespace fx {

// A double as a whole number, NaN and huge values made safe.
inline int64_t whole(double x) {
    if (!(x == x)) return 0;
    if (x >= 9.0e18) return INT64_C(9000000000000000000);
    if (x <= -9.0e18) return -INT64_C(9000000000000000000);
    return static_cast<int64_t>(x);
}
inline int cut(double x, int lo, int hi) {
    const int64_t v = whole(x);
    return static_cast<int>(v < lo ? lo : v > hi ? hi : v);
}
inline uint8_t byte127(double x) { return static_cast<uint8_t>(cut(x, 0, 127)); }
inline bool inRange(double x, int lo, int hi) {
    const int64_t v = whole(x);
    return v >= lo && v <= hi;
}
// A 32-bit pattern: up to 2^31 - 1 as it is, above that 2^31 taken off and the top bit set.
inline uint32_t fold32(double x) {
    int64_t v = whole(x);
    if (v > INT64_C(2147483647)) return static_cast<uint32_t>((v - INT64_C(2147483648)) & 0x7FFFFFFF) | 0x80000000u;
    return static_cast<uint32_t>(v);
}

inline FormulaRuntime& rt(const expr::Args& a) { return *static_cast<FormulaRuntime*>(a.user); }

struct Definition {
    const char* prototype;
    expr::NativeFn fn;
};

}  // namespace fx

// The families of the vocabulary, defined in the order of the list.
struct Vocabulary {
    static void mailboxFlowAndTiming(FormulaRuntime& r);
    static void storesAndBitMatrix(FormulaRuntime& r);
    static void midiAndGrids(FormulaRuntime& r);
    static void bits(FormulaRuntime& r);
    static void textAndFiles(FormulaRuntime& r);
    static void randomAndAngle(FormulaRuntime& r);
    static void pixels(FormulaRuntime& r);
    static void letFamily(FormulaRuntime& r);

    static void define(FormulaRuntime& r, const fx::Definition* defs, size_t count);
    // Runs formula n (cut to 0..127) with EvalFormula set to it, then restores EvalFormula.
    static double runFormula(FormulaRuntime& r, double n);
    // The pre-parse of functions that name a variable: the name becomes its handle; a new name
    // is defined first.
    static std::string variableToHandle(expr::Calc& calc, void* user, std::string_view name);
    static std::vector<uint8_t>& uidsOf(FormulaRuntime& r) { return r.moduleUid_; }
    static std::array<bool, 10>& aclocks(FormulaRuntime& r) { return r.aclock_; }
    static std::array<bool, 20>& timers(FormulaRuntime& r) { return r.timers_; }
    static std::array<std::string, 128>& infoBoxes(FormulaRuntime& r) { return r.infoBoxes_; }
    static const std::array<int, 26>& letters(FormulaRuntime& r) { return r.letterHandles_; }
};

}  // namespace quillmer
