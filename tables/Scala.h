#pragma once
// Scala scales (.scl) and keyboard maps (.kbm): reading both into a tuning table, and writing
// a tuning table back as a scale. A tuning table holds up to 64 steps of an octave, each a
// semitone offset and a bend of 1/64 semitone upwards, so a pitch lands on the nearest 1/64
// of a semitone; a scale the table can't hold is refused with a message naming the step.

#include <string>
#include <string_view>
#include <vector>

#include "tables/ToneTables.h"

namespace quillmer {

struct ScalaScale {
    std::string description;
    std::vector<double> cents;  // degrees 1..N above the root; the last is the period
};

// A keyboard map: `degrees` gives the scale degree of each key of the repeating pattern
// (-1 for a key left unmapped, "x"); an empty pattern maps key i to degree i.
struct KeyMap {
    int first = 0;
    int last = 127;
    int middle = 60;
    int reference = 69;
    double frequency = 440.0;
    int octaveDegree = 0;  // 0: the scale's own period
    std::vector<int> degrees;
};

// Parsers of the text of a file; false with `problem` naming the line.
bool parseScala(std::string_view text, ScalaScale& scale, std::string& problem);
bool parseKeyMap(std::string_view text, KeyMap& map, std::string& problem);

// Cents as a tuning step: the semitone below and the bend up from it, in 1/64 semitones.
struct TuningStep {
    int semitones = 0;
    int bend = 0;  // 0..63, stored in the row as bend + 1
};
// False for a pitch below the root or more than 127 semitones above it.
bool tuningStep(double cents, TuningStep& step);
// The pitch of step `step` of a row, in cents above the root.
double stepCents(ToneTable::ConstRow row, int step);

// Fills a row (steps, bends, step count) from a scale and an optional map. False with
// `problem` naming the step when the table can't hold it; the row is then unchanged.
// `notes` gets what was adapted (unmapped keys play the key before them).
bool scaleToToneRow(const ScalaScale& scale, const KeyMap* map, ToneTable::Row row, std::string& problem,
                    std::vector<std::string>& notes);
// A tuning row as the text of a .scl file; false with `problem` when step 0 isn't the root.
bool toneRowToScala(ToneTable::ConstRow row, std::string_view name, std::string& text, std::string& problem);

// Files; false with `error`: "Unable to Load: PATH" or "Error writing to: PATH", then the reason.
bool LoadScala(const std::string& path, ScalaScale& scale, std::string& error);
bool LoadKeyMap(const std::string& path, KeyMap& map, std::string& error);
bool SaveScala(const std::string& path, ToneTable::ConstRow row, std::string_view name, std::string& error);

}  // namespace quillmer
