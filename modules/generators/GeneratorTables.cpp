#include "modules/generators/GeneratorTables.h"

#include <cmath>
#include <memory>
#include <numbers>

#include "engine/RandomSource.h"

namespace quillmer {

namespace {
constexpr float kMinJump = 0.02f;
constexpr float kMaxWander = 0.2f;
constexpr int kDiscarded = 101;

std::unique_ptr<GeneratorTables>& current() {
    static std::unique_ptr<GeneratorTables> tables;
    return tables;
}
}  // namespace

GeneratorTables buildGeneratorTables(int32_t ranSeed) {
    GeneratorTables t;
    t.seed = ranSeed;
    RandomSource source;
    // Seeds near each other give unrelated tables.
    source.seed(static_cast<int32_t>(static_cast<uint32_t>(ranSeed) * 2654435761u ^ 0x51ED270Bu));
    for (int i = 0; i < kDiscarded; ++i) source.next();

    float last = source.next();
    float lastWander = last;
    for (size_t k = 0; k < t.ranFun.size(); ++k) {
        float v = source.next();
        while (std::fabs(v - last) < kMinJump) v = source.next();
        t.ranFun[k] = last = v;

        float mean = lastWander;
        if (k >= 4) mean = (t.oneOverF[k - 1] + t.oneOverF[k - 2] + t.oneOverF[k - 3] + t.oneOverF[k - 4]) / 4.0f;
        float w = source.next();
        while (std::fabs(w - mean) < kMinJump || std::fabs(w - mean) >= kMaxWander) w = source.next();
        t.oneOverF[k] = lastWander = w;
    }
    for (int i = 0; i < 128; ++i) {
        t.sine[static_cast<size_t>(i)] = static_cast<uint8_t>(std::lround(127.0 * std::sin(i * std::numbers::pi / 128.0)));
    }
    for (int i = 0; i < 64; ++i) {
        t.triangle[static_cast<size_t>(i)] = static_cast<uint8_t>(2 * i);
        t.triangle[static_cast<size_t>(127 - i)] = static_cast<uint8_t>(2 * i + 1);
    }
    return t;
}

const GeneratorTables& generatorTables() {
    auto& tables = current();
    if (!tables) tables = std::make_unique<GeneratorTables>(buildGeneratorTables(0));
    return *tables;
}

void rebuildGeneratorTables(int32_t ranSeed) {
    auto& tables = current();
    if (tables && tables->seed == ranSeed) return;
    tables = std::make_unique<GeneratorTables>(buildGeneratorTables(ranSeed));
}

}  // namespace quillmer
