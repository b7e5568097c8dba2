#include "tables/DefaultTones.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace quillmer {

namespace {

constexpr double kCentsPerSemitone = 100.0;
constexpr double kCentsPerOctave = 1200.0;

double centsOf(double ratio) { return kCentsPerOctave * std::log2(ratio); }

std::vector<double> semitoneSteps(std::initializer_list<int> semitones) {
    std::vector<double> cents;
    for (int s : semitones) cents.push_back(s * kCentsPerSemitone);
    return cents;
}

struct Ratio {
    int num;
    int den;
};

std::vector<double> ratioSteps(std::initializer_list<Ratio> ratios) {
    std::vector<double> cents;
    for (const Ratio& r : ratios) cents.push_back(centsOf(static_cast<double>(r.num) / r.den));
    return cents;
}

std::vector<double> equalSteps(int steps) {
    std::vector<double> cents;
    for (int i = 0; i < steps; ++i) cents.push_back(kCentsPerOctave * i / steps);
    return cents;
}

// Twelve notes from a chain of equal fifths, Eb to G#, folded into one octave.
std::vector<double> fifthChain(double fifth) {
    constexpr int kFifthsFromC[12] = {0, 7, 2, -3, 4, -1, 6, 1, 8, 3, -2, 5};  // C C# D Eb ... B
    std::vector<double> cents;
    for (int k : kFifthsFromC) {
        double c = std::fmod(k * fifth, kCentsPerOctave);
        if (c < 0) c += kCentsPerOctave;
        cents.push_back(c);
    }
    return cents;
}

struct NamedScale {
    std::string_view name;
    std::vector<double> cents;
};

std::vector<NamedScale> shippedScales() {
    const double pureFifth = centsOf(1.5);
    const double syntonicComma = centsOf(81.0 / 80.0);
    return {
        {"Chromatic", semitoneSteps({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})},
        {"Major", semitoneSteps({0, 2, 4, 5, 7, 9, 11})},
        {"Natural Minor", semitoneSteps({0, 2, 3, 5, 7, 8, 10})},
        {"Harmonic Minor", semitoneSteps({0, 2, 3, 5, 7, 8, 11})},
        {"Melodic Minor", semitoneSteps({0, 2, 3, 5, 7, 9, 11})},
        {"Major Pentatonic", semitoneSteps({0, 2, 4, 7, 9})},
        {"Minor Pentatonic", semitoneSteps({0, 3, 5, 7, 10})},
        {"Whole Tone", semitoneSteps({0, 2, 4, 6, 8, 10})},
        {"Blues", semitoneSteps({0, 3, 5, 6, 7, 10})},
        {"Dorian", semitoneSteps({0, 2, 3, 5, 7, 9, 10})},
        {"Phrygian", semitoneSteps({0, 1, 3, 5, 7, 8, 10})},
        {"Lydian", semitoneSteps({0, 2, 4, 6, 7, 9, 11})},
        {"Mixolydian", semitoneSteps({0, 2, 4, 5, 7, 9, 10})},
        {"Locrian", semitoneSteps({0, 1, 3, 5, 6, 8, 10})},
        {"Diminished", semitoneSteps({0, 2, 3, 5, 6, 8, 9, 11})},
        {"Augmented", semitoneSteps({0, 3, 4, 7, 8, 11})},
        {"Major Triad", semitoneSteps({0, 4, 7})},
        {"Minor Triad", semitoneSteps({0, 3, 7})},
        {"Quarter Tone", equalSteps(24)},
        {"Just Chromatic", ratioSteps({{1, 1}, {16, 15}, {9, 8}, {6, 5}, {5, 4}, {4, 3},
                                       {45, 32}, {3, 2}, {8, 5}, {5, 3}, {9, 5}, {15, 8}})},
        {"Just Major", ratioSteps({{1, 1}, {9, 8}, {5, 4}, {4, 3}, {3, 2}, {5, 3}, {15, 8}})},
        {"Pythagorean", ratioSteps({{1, 1}, {256, 243}, {9, 8}, {32, 27}, {81, 64}, {4, 3},
                                    {729, 512}, {3, 2}, {128, 81}, {27, 16}, {16, 9}, {243, 128}})},
        {"Meantone 1/4 Comma", fifthChain(pureFifth - syntonicComma / 4)},
        {"19 Equal", equalSteps(19)},
        {"31 Equal", equalSteps(31)},
        {"Harmonics 8-15", ratioSteps({{8, 8}, {9, 8}, {10, 8}, {11, 8}, {12, 8}, {13, 8}, {14, 8}, {15, 8}})},
    };
}

}  // namespace

void setScaleRow(ToneTable::Row row, std::span<const double> cents) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    const size_t steps = std::min<size_t>(cents.size(), kMaxScaleSteps);
    for (size_t i = 0; i < steps; ++i) {
        // In 1/64 semitones; cents are never negative here.
        const auto units = static_cast<long>(std::lround(cents[i] * kBendUnitsPerSemitone / kCentsPerSemitone));
        row[i] = static_cast<uint8_t>(units / kBendUnitsPerSemitone);
        if (i < kBendSteps) row[64 + i] = static_cast<uint8_t>(kNoBend + units % kBendUnitsPerSemitone);
    }
    row[127] = static_cast<uint8_t>(steps == 0 ? 0 : steps - 1);
}

ToneTables DefaultToneTables() {
    ToneTables tables;
    const std::vector<NamedScale> scales = shippedScales();
    for (int t = 0; t < kToneTableCount; ++t) {
        // Rows past the named ones repeat the chromatic row, so no table number plays
        // the one-step scale of an empty row.
        const NamedScale& scale = scales[static_cast<size_t>(t) < scales.size() ? static_cast<size_t>(t) : 0];
        setScaleRow(tables.rows.row(t), scale.cents);
        tables.names.setName(t, scale.name);
    }
    return tables;
}

}  // namespace quillmer
