#pragma once
// The random generator that all random modules share: numbers from 0 up to 1 and whole
// numbers between two bounds, the same sequence again for the same seed. One per engine;
// needs the engine lock. Unseeded, it starts from a fixed seed, so that a run in virtual
// time repeats exactly.

#include <cstdint>

namespace quillmer {

class RandomSource {
public:
    RandomSource() { seed(kStartSeed); }
    void seed(int32_t seed) { state_ = static_cast<uint64_t>(static_cast<uint32_t>(seed)) * 0x9E3779B97F4A7C15ull + 1; }
    // 0 <= value < 1, single precision.
    float next() { return static_cast<float>(step() >> 40) * (1.0f / 16777216.0f); }
    // low..high, both included; low when high is below it.
    int between(int low, int high) {
        if (high <= low) return low;
        const uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
        return static_cast<int>(low + static_cast<int64_t>(((step() >> 11) * span) >> 53));
    }

private:
    static constexpr int32_t kStartSeed = 1;
    // splitmix64: a full-period sequence of well-mixed 64-bit numbers.
    uint64_t step() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    uint64_t state_ = 0;
};

}  // namespace quillmer
