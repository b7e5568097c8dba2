#include "tables/Scala.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "engine/AtomicFile.h"
#include "engine/RegularFile.h"

namespace quillmer {

namespace {

constexpr double kCentsPerSemitone = 100.0;
constexpr double kOctave = 1200.0;
constexpr size_t kMaxTextBytes = 1 << 20;
// A period counts as an octave when it rounds to the same 1/64 semitone.
constexpr double kOctaveTolerance = kCentsPerSemitone / kBendUnitsPerSemitone / 2;

// The lines of a file that aren't comments, with their numbers from 1.
struct Line {
    int number;
    std::string_view text;
};

std::vector<Line> contentLines(std::string_view text) {
    std::vector<Line> lines;
    int number = 0;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        ++number;
        if (line.empty() || line.front() != '!') lines.push_back({number, line});
        start = end + 1;
    }
    return lines;
}

std::string_view firstWord(std::string_view line) {
    const size_t from = line.find_first_not_of(" \t");
    if (from == std::string_view::npos) return {};
    const size_t to = line.find_first_of(" \t", from);
    return line.substr(from, to == std::string_view::npos ? std::string_view::npos : to - from);
}

template <class T>
bool number(std::string_view word, T& value) {
    if (!word.empty() && word.front() == '+') word.remove_prefix(1);
    const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
    return ec == std::errc() && end == word.data() + word.size();
}

std::string lineText(int number) { return "Line " + std::to_string(number) + ": "; }

// One pitch of a scale: cents when it has a point, else a ratio "n/d" or a whole number.
bool pitchCents(std::string_view word, double& cents) {
    if (word.find('.') != std::string_view::npos) return number(word, cents) && std::isfinite(cents);
    const size_t slash = word.find('/');
    long long num = 0, den = 1;
    if (!number(word.substr(0, slash), num)) return false;
    if (slash != std::string_view::npos && !number(word.substr(slash + 1), den)) return false;
    if (num <= 0 || den <= 0) return false;
    cents = kOctave * std::log2(static_cast<double>(num) / static_cast<double>(den));
    return true;
}

std::string centsText(double cents) {
    char text[40];
    std::snprintf(text, sizeof text, "%.4f", cents);
    return text;
}

bool readText(const std::string& path, std::string& text, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kMaxTextBytes + 1, bytes, reason)) {
        error = "Unable to Load: " + path + "\n" + reason;
        return false;
    }
    if (bytes.size() > kMaxTextBytes) {
        error = "Unable to Load: " + path + "\nThe file is too long for a scale.";
        return false;
    }
    text.assign(bytes.begin(), bytes.end());
    if (text.find('\0') != std::string::npos) {
        error = "Unable to Load: " + path + "\nThis is not a text file.";
        return false;
    }
    return true;
}

}  // namespace

bool parseScala(std::string_view text, ScalaScale& scale, std::string& problem) {
    const std::vector<Line> lines = contentLines(text);
    if (lines.size() < 2) {
        problem = "The file ends before the number of notes: this is not a Scala scale.";
        return false;
    }
    ScalaScale read;
    read.description = std::string(lines[0].text);
    long count = 0;
    if (!number(firstWord(lines[1].text), count) || count < 0) {
        problem = lineText(lines[1].number) + "the number of notes should stand here, not \"" + std::string(lines[1].text) + "\".";
        return false;
    }
    if (static_cast<size_t>(count) > lines.size() - 2) {
        problem = "The scale names " + std::to_string(count) + " notes but the file holds only " +
                  std::to_string(lines.size() - 2) + ".";
        return false;
    }
    for (long i = 0; i < count; ++i) {
        const Line& line = lines[static_cast<size_t>(i) + 2];
        double cents = 0;
        const std::string_view word = firstWord(line.text);
        if (!pitchCents(word, cents)) {
            problem = lineText(line.number) + "\"" + std::string(word) + "\" is neither cents (with a point) nor a positive ratio.";
            return false;
        }
        read.cents.push_back(cents);
    }
    scale = std::move(read);
    return true;
}

bool parseKeyMap(std::string_view text, KeyMap& map, std::string& problem) {
    const std::vector<Line> lines = contentLines(text);
    constexpr int kHeadLines = 7;
    if (lines.size() < kHeadLines) {
        problem = "The file ends before its seven header values: this is not a Scala keyboard map.";
        return false;
    }
    KeyMap read;
    int size = 0;
    int* const keys[] = {&size, &read.first, &read.last, &read.middle, &read.reference};
    const char* const names[] = {"the map size", "the first key", "the last key", "the middle key", "the reference key"};
    for (size_t i = 0; i < 5; ++i) {
        const bool isSize = i == 0;
        if (!number(firstWord(lines[i].text), *keys[i]) || *keys[i] < 0 || (!isSize && *keys[i] > 127) ||
            (isSize && *keys[i] > 128)) {
            problem = lineText(lines[i].number) + std::string(names[i]) + (isSize ? " (0 to 128)" : " (0 to 127)") +
                      " should stand here, not \"" + std::string(lines[i].text) + "\".";
            return false;
        }
    }
    if (!number(firstWord(lines[5].text), read.frequency) || !(read.frequency > 0) || !std::isfinite(read.frequency)) {
        problem = lineText(lines[5].number) + "the reference frequency should stand here, not \"" + std::string(lines[5].text) + "\".";
        return false;
    }
    if (!number(firstWord(lines[6].text), read.octaveDegree) || read.octaveDegree < 0) {
        problem = lineText(lines[6].number) + "the degree of the formal octave should stand here, not \"" +
                  std::string(lines[6].text) + "\".";
        return false;
    }
    // Keys the file doesn't reach are unmapped.
    read.degrees.assign(static_cast<size_t>(size), -1);
    for (size_t k = 0; k < static_cast<size_t>(size) && kHeadLines + k < lines.size(); ++k) {
        const Line& line = lines[kHeadLines + k];
        const std::string_view word = firstWord(line.text);
        if (word == "x" || word == "X") continue;
        int degree = 0;
        if (!number(word, degree) || degree < 0) {
            problem = lineText(line.number) + "key " + std::to_string(k) + " of the map should be a scale degree or x, not \"" +
                      std::string(word) + "\".";
            return false;
        }
        read.degrees[k] = degree;
    }
    map = std::move(read);
    return true;
}

bool tuningStep(double cents, TuningStep& step) {
    // Far out of reach either way: no rounding of a huge number.
    if (!(std::abs(cents) < kOctave * 100)) return false;
    const long units = std::lround(cents * kBendUnitsPerSemitone / kCentsPerSemitone);
    if (units < 0 || units / kBendUnitsPerSemitone > 127) return false;
    step.semitones = static_cast<int>(units / kBendUnitsPerSemitone);
    step.bend = static_cast<int>(units % kBendUnitsPerSemitone);
    return true;
}

double stepCents(ToneTable::ConstRow row, int step) {
    const auto s = static_cast<size_t>(step & 63);
    const int bend = s < kBendSteps ? row[64 + s] - kNoBend : 0;
    return (row[s] * kBendUnitsPerSemitone + bend) * (kCentsPerSemitone / kBendUnitsPerSemitone);
}

bool scaleToToneRow(const ScalaScale& scale, const KeyMap* map, ToneTable::Row row, std::string& problem,
                    std::vector<std::string>& notes) {
    const int n = static_cast<int>(scale.cents.size());
    const double period = n == 0 ? kOctave : scale.cents.back();
    // The pitch of any degree, octaves of the period included.
    const auto degreeCents = [&](int d) {
        if (n == 0) return kOctave * d;
        const int r = d % n;
        return (d / n) * period + (r == 0 ? 0.0 : scale.cents[static_cast<size_t>(r - 1)]);
    };
    std::vector<double> pitches;
    double repeat = period;
    if (map && !map->degrees.empty()) {
        repeat = degreeCents(map->octaveDegree == 0 ? n : map->octaveDegree);
        double before = 0;
        for (size_t k = 0; k < map->degrees.size(); ++k) {
            const int d = map->degrees[k];
            if (d < 0) {
                notes.push_back("Key " + std::to_string(k) + " of the map is unmapped: it plays the pitch of the key before it.");
                pitches.push_back(before);
                continue;
            }
            before = degreeCents(d);
            pitches.push_back(before);
        }
    } else {
        pitches.push_back(0.0);
        for (int i = 0; i + 1 < n; ++i) pitches.push_back(scale.cents[static_cast<size_t>(i)]);
    }
    if (std::abs(repeat - kOctave) > kOctaveTolerance) {
        const bool mapped = map && !map->degrees.empty();
        problem = (mapped ? "The keyboard map repeats at degree " + std::to_string(map->octaveDegree == 0 ? n : map->octaveDegree) +
                                " of the scale, "
                          : std::string("The scale repeats at ")) +
                  centsText(repeat) + " cents; a tuning table repeats at the octave (1200 cents), so it can't play this.";
        return false;
    }
    if (pitches.size() > kMaxScaleSteps) {
        problem = "Step " + std::to_string(kMaxScaleSteps) + " and those after it don't fit: a tuning table holds at most " +
                  std::to_string(kMaxScaleSteps) + " steps and this scale has " + std::to_string(pitches.size()) + ".";
        return false;
    }
    std::array<uint8_t, kToneRowSize> made{};
    for (size_t s = 0; s < pitches.size(); ++s) {
        TuningStep step;
        const std::string where = "Step " + std::to_string(s) + " (" + centsText(pitches[s]) + " cents)";
        if (!tuningStep(pitches[s], step)) {
            problem = where + (pitches[s] < 0 ? " lies below the root: a tuning table only bends up from it."
                                              : " lies more than 127 semitones above the root.");
            return false;
        }
        if (s >= kBendSteps && step.bend != 0) {
            problem = where + " needs a bend, and the last step of a 64-step table has none.";
            return false;
        }
        made[s] = static_cast<uint8_t>(step.semitones);
        if (s < kBendSteps) made[64 + s] = static_cast<uint8_t>(kNoBend + step.bend);
    }
    for (size_t s = pitches.size(); s < kBendSteps; ++s) made[64 + s] = kNoBend;
    made[127] = static_cast<uint8_t>(pitches.size() - 1);
    std::copy(made.begin(), made.end(), row.begin());
    return true;
}

bool toneRowToScala(ToneTable::ConstRow row, std::string_view name, std::string& text, std::string& problem) {
    const int steps = std::min<int>(row[127] + 1, kMaxScaleSteps);
    if (stepCents(row, 0) != 0.0) {
        problem = "Step 0 lies " + centsText(stepCents(row, 0)) + " cents above the root; a Scala scale starts on its root.";
        return false;
    }
    text = "! " + std::string(name) + ".scl\n!\n" + std::string(name) + "\n " + std::to_string(steps) + "\n!\n";
    for (int s = 1; s < steps; ++s) text += " " + centsText(stepCents(row, s)) + "\n";
    text += " 2/1\n";
    return true;
}

bool LoadScala(const std::string& path, ScalaScale& scale, std::string& error) {
    std::string text, problem;
    if (!readText(path, text, error)) return false;
    if (parseScala(text, scale, problem)) return true;
    error = "Unable to Load: " + path + "\n" + problem;
    return false;
}

bool LoadKeyMap(const std::string& path, KeyMap& map, std::string& error) {
    std::string text, problem;
    if (!readText(path, text, error)) return false;
    if (parseKeyMap(text, map, problem)) return true;
    error = "Unable to Load: " + path + "\n" + problem;
    return false;
}

bool SaveScala(const std::string& path, ToneTable::ConstRow row, std::string_view name, std::string& error) {
    std::string text, problem;
    if (!toneRowToScala(row, name, text, problem)) {
        error = "Error writing to: " + path + "\n" + problem;
        return false;
    }
    AtomicFile file(path);
    std::string reason;
    bool ok = file.create(reason);
    if (ok) {
        std::ofstream out(file.tempPath(), std::ios::binary | std::ios::trunc);
        out << text;
        ok = static_cast<bool>(out.flush());
    }
    if (ok) ok = file.commit(reason);
    if (!ok) error = "Error writing to: " + path + (reason.empty() ? "" : "\n" + reason);
    return ok;
}

}  // namespace quillmer
