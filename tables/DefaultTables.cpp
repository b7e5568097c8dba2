#include "tables/DefaultTables.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <numbers>
#include <string_view>
#include <vector>

namespace quillmer {

namespace {

constexpr int kSteps = kGeneralTableSteps;
using Row = TableBank::Row;

uint8_t cut(double v) { return static_cast<uint8_t>(std::clamp(std::lround(v), 0L, 127L)); }

// A curve over the 128 steps, x running 0..1.
void curve(Row row, const std::function<double(double)>& f) {
    for (int i = 0; i < kSteps; ++i) row[static_cast<size_t>(i)] = cut(127.0 * f(i / 127.0));
}

// Every note 0..127 whose pitch class is in the scale, ascending; the last note fills the
// rest of the row, so a fit never lands below it.
void scaleNotes(Row row, std::initializer_list<int> pitchClasses) {
    std::vector<uint8_t> notes;
    for (int n = 0; n < 128; ++n)
        if (std::find(pitchClasses.begin(), pitchClasses.end(), n % 12) != pitchClasses.end()) notes.push_back(static_cast<uint8_t>(n));
    for (size_t i = 0; i < kSteps; ++i) row[i] = i < notes.size() ? notes[i] : notes.back();
}

// A pattern repeated over the row.
void repeat(Row row, std::initializer_list<int> pattern) {
    const std::vector<int> p(pattern);
    for (size_t i = 0; i < kSteps; ++i) row[i] = static_cast<uint8_t>(p[i % p.size()]);
}

// Hits spread as evenly as they go over `length` steps, 127 on a hit and 0 between.
void euclid(Row row, int hits, int length) {
    for (int i = 0; i < kSteps; ++i) {
        const int s = i % length;
        row[static_cast<size_t>(i)] = (s * hits) % length < hits ? 127 : 0;
    }
}

// The same notes of a chord climbing octave by octave from `root`.
void arpeggio(Row row, int root, std::initializer_list<int> chord) {
    const std::vector<int> c(chord);
    for (size_t i = 0; i < kSteps; ++i) {
        const int octave = static_cast<int>(i / c.size()) % 4;
        row[i] = cut(root + 12 * octave + c[i % c.size()]);
    }
}

struct Shipped {
    std::string_view name;
    std::function<void(Row)> make;
};

}  // namespace

GeneralTables DefaultGeneralTables() {
    const double pi = std::numbers::pi;
    const std::vector<Shipped> shipped = {
        {"Ramp Up", [](Row r) { curve(r, [](double x) { return x; }); }},
        {"Ramp Down", [](Row r) { curve(r, [](double x) { return 1 - x; }); }},
        {"Triangle", [](Row r) { curve(r, [](double x) { return 1 - std::abs(2 * x - 1); }); }},
        {"Sine", [pi](Row r) { curve(r, [pi](double x) { return 0.5 + 0.5 * std::sin(2 * pi * x); }); }},
        {"Cosine", [pi](Row r) { curve(r, [pi](double x) { return 0.5 + 0.5 * std::cos(2 * pi * x); }); }},
        {"Exponential Rise", [](Row r) { curve(r, [](double x) { return (std::exp(4 * x) - 1) / (std::exp(4.0) - 1); }); }},
        {"Logarithmic Rise", [](Row r) { curve(r, [](double x) { return std::log1p(15 * x) / std::log(16.0); }); }},
        {"Bell", [](Row r) { curve(r, [](double x) { return std::exp(-std::pow((x - 0.5) / 0.18, 2)); }); }},
        {"Square", [](Row r) { curve(r, [](double x) { return x < 0.5 ? 1.0 : 0.0; }); }},
        {"Chromatic Notes", [](Row r) { scaleNotes(r, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}); }},
        {"Major Notes", [](Row r) { scaleNotes(r, {0, 2, 4, 5, 7, 9, 11}); }},
        {"Minor Notes", [](Row r) { scaleNotes(r, {0, 2, 3, 5, 7, 8, 10}); }},
        {"Harmonic Minor Notes", [](Row r) { scaleNotes(r, {0, 2, 3, 5, 7, 8, 11}); }},
        {"Dorian Notes", [](Row r) { scaleNotes(r, {0, 2, 3, 5, 7, 9, 10}); }},
        {"Pentatonic Notes", [](Row r) { scaleNotes(r, {0, 2, 4, 7, 9}); }},
        {"Minor Penta Notes", [](Row r) { scaleNotes(r, {0, 3, 5, 7, 10}); }},
        {"Blues Notes", [](Row r) { scaleNotes(r, {0, 3, 5, 6, 7, 10}); }},
        {"Whole Tone Notes", [](Row r) { scaleNotes(r, {0, 2, 4, 6, 8, 10}); }},
        {"Major Triad Notes", [](Row r) { scaleNotes(r, {0, 4, 7}); }},
        {"Minor Triad Notes", [](Row r) { scaleNotes(r, {0, 3, 7}); }},
        {"Arp C Major", [](Row r) { arpeggio(r, 48, {0, 4, 7}); }},
        {"Arp A Minor 7", [](Row r) { arpeggio(r, 45, {0, 3, 7, 10}); }},
        {"Euclid 3 of 8", [](Row r) { euclid(r, 3, 8); }},
        {"Euclid 5 of 8", [](Row r) { euclid(r, 5, 8); }},
        {"Euclid 5 of 16", [](Row r) { euclid(r, 5, 16); }},
        {"Euclid 7 of 16", [](Row r) { euclid(r, 7, 16); }},
        {"Four On The Floor", [](Row r) { repeat(r, {127, 0, 0, 0}); }},
        {"Accents 4/4", [](Row r) { repeat(r, {120, 60, 85, 60}); }},
        {"Accents 3/4", [](Row r) { repeat(r, {120, 64, 72}); }},
        {"Swing Velocities", [](Row r) { repeat(r, {110, 70}); }},
    };
    GeneralTables tables;
    for (size_t t = 0; t < shipped.size(); ++t) {
        shipped[t].make(tables.bank.row(static_cast<int>(t)));
        tables.names.setName(static_cast<int>(t), shipped[t].name);
    }
    return tables;
}

}  // namespace quillmer
