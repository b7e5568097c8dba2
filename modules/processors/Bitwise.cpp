#include "modules/processors/Bitwise.h"

#include <cstdlib>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kBitsId = *typeIdByName("Bits");
const ModuleTypeId kTestId = *typeIdByName("Test");
}  // namespace

uint8_t shiftLeftByte(uint8_t v, int places) {
    return places >= 8 ? uint8_t{0} : static_cast<uint8_t>((v << places) & 0xFF);
}

uint8_t shiftRightByte(uint8_t v, int places) { return places >= 8 ? uint8_t{0} : static_cast<uint8_t>(v >> places); }

uint8_t rotateLeftByte(uint8_t v, int places) {
    const int n = places & 7;
    return n == 0 ? v : static_cast<uint8_t>(((v << n) | (v >> (8 - n))) & 0xFF);
}

uint8_t rotateRightByte(uint8_t v, int places) {
    const int n = places & 7;
    return n == 0 ? v : static_cast<uint8_t>(((v >> n) | (v << (8 - n))) & 0xFF);
}

const std::array<uint8_t, 128> TestMasks = [] {
    std::array<uint8_t, 128> t{};
    for (size_t a = 0; a < t.size(); ++a) t[a] = static_cast<uint8_t>(1u << (a % 7));
    return t;
}();

Computed ShiftOp::compute(std::span<const int> in, const std::array<uint8_t, 2>& settings) {
    const auto v = static_cast<uint8_t>(in[0]);
    const int n = in[1];
    const bool left = settings[kLeft] != 0;
    uint8_t r;
    if (settings[kRotate] != 0)
        r = left ? rotateLeftByte(v, n) : rotateRightByte(v, n);
    else
        r = left ? shiftLeftByte(v, n) : shiftRightByte(v, n);
    return Computed{clampBus(r)};
}

// --- Bits ---

Bits::Bits() : SettingsModule<0>(kBitsId, kInputs) {}

std::string Bits::bitsText() const {
    std::string s(8, '0');
    for (int b = 0; b < 8; ++b)
        if (bitLit(b)) s[static_cast<size_t>(7 - b)] = '1';
    return s;
}

void Bits::update(Engine&) {
    const int v = in(0);
    if (v == shown_) return;
    shown_ = v;
    viewChanged = true;
}

// --- Test ---

const std::array<std::string_view, Test::kTestCount> Test::kTestNames = {
    "A = B",           "A >= B",          "A > B",           "A <= B",        "A < B",
    "A <> B",          "R mod 4 = 2",     "R mod 4 = 3",     "R mod 4 = 1",   "R > 3",
    "Mask(A) and B",   "|A - prev| >= B", "|A - prev|",      "Rise of A",     "Fall of A",
};

Test::Test() : SettingsModule<1>(kTestId, kInputs) {}

void Test::chooseTest(int index) { setByteAt(0, std::clamp(index, 0, kTestCount - 1)); }

int Test::evaluate(int index, int a, int b, int p, int r) {
    auto gate = [](bool c) { return c ? kStrobe : 0; };
    switch (index) {
        case 0: return gate(a == b);
        case 1: return gate(a >= b);
        case 2: return gate(a > b);
        case 3: return gate(a <= b);
        case 4: return gate(a < b);
        case 5: return gate(a != b);
        case 6: return gate(r % 4 == 2);
        case 7: return gate(r % 4 == 3);
        case 8: return gate(r % 4 == 1);
        case 9: return gate(r > 3);
        case 10: return gate((TestMasks[static_cast<size_t>(a & 127)] & b) != 0);
        case 11: return gate(std::abs(a - p) >= b);
        case 12: return std::abs(a - p);
        case 13: return a > p ? a - p : 0;
        case 14: return a < p ? p - a : 0;
        default: return 0;
    }
}

void Test::update(Engine&) {
    const int a = in(0);
    const size_t above = static_cast<size_t>(InputBus[0]) + 128;
    const int r = above < kBusSize ? busValue(static_cast<BusId>(above)) : 0;
    setOutput(evaluate(test(), a, in(1), previous_, r));
    previous_ = a;
}

}  // namespace quillmer
