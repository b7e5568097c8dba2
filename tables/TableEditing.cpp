#include "tables/TableEditing.h"

#include <algorithm>

#include "tables/Scala.h"

namespace quillmer {

namespace {

template <class Rows, class Names>
PageTable copyOf(const Rows& rows, const Names& names) {
    PageTable table;
    for (int r = 0; r < PageTable::kRows; ++r) {
        const auto row = rows.row(r);
        std::copy(row.begin(), row.end(), table.row(r).begin());
        table.setName(r, names.name(r));
    }
    return table;
}

template <class Rows, class Names>
void store(const PageTable& table, Rows& rows, Names& names) {
    for (int r = 0; r < PageTable::kRows; ++r) {
        std::copy(table.row(r).begin(), table.row(r).end(), rows.row(r).begin());
        names.setName(r, table.name(r));
    }
}

constexpr size_t kCount = 127;
size_t at(int step) { return static_cast<size_t>(std::clamp(step, 0, kMaxScaleSteps - 1)); }

}  // namespace

PageTable workingCopy(const GeneralTables& tables) { return copyOf(tables.bank, tables.names); }
PageTable workingCopy(const ToneTables& tones) { return copyOf(tones.rows, tones.names); }
void storeWorkingCopy(const PageTable& table, GeneralTables& tables) { store(table, tables.bank, tables.names); }
void storeWorkingCopy(const PageTable& table, ToneTables& tones) { store(table, tones.rows, tones.names); }

int changedTables(const PageTable& table, const GeneralTables& tables) {
    int changed = -1;
    for (int r = 0; r < PageTable::kRows; ++r) {
        const auto row = tables.bank.row(r);
        if (std::equal(row.begin(), row.end(), table.row(r).begin()) && table.name(r) == tables.names.name(r)) continue;
        if (changed >= 0) return PageTable::kRows;
        changed = r;
    }
    return changed;
}

namespace tone {

void blank(Row& row) {
    row.fill(0);
    std::fill(row.begin() + 64, row.begin() + 64 + kBendSteps, kNoBend);
}

int steps(const Row& row) { return std::min<int>(row[kCount] + 1, kMaxScaleSteps); }

void setSteps(Row& row, int n) {
    n = std::clamp(n, 1, kMaxScaleSteps);
    for (int s = steps(row); s < n; ++s) {
        row[at(s)] = static_cast<uint8_t>(std::min(row[at(s - 1)] + 1, 127));
        if (s < kBendSteps) row[64 + at(s)] = kNoBend;
    }
    row[kCount] = static_cast<uint8_t>(n - 1);
}

void setSemitones(Row& row, int step, int semitones) { row[at(step)] = static_cast<uint8_t>(std::clamp(semitones, 0, 127)); }

void setBend(Row& row, int step, int bend) {
    if (at(step) < kBendSteps) row[64 + at(step)] = static_cast<uint8_t>(std::clamp(bend, int{kNoBend}, kBendUnitsPerSemitone));
}

bool setCents(Row& row, int step, double c) {
    TuningStep t;
    if (!tuningStep(c, t)) return false;
    if (at(step) >= kBendSteps && t.bend != 0) return false;
    row[at(step)] = static_cast<uint8_t>(t.semitones);
    if (at(step) < kBendSteps) row[64 + at(step)] = static_cast<uint8_t>(kNoBend + t.bend);
    return true;
}

double cents(const Row& row, int step) { return stepCents(ToneTable::ConstRow(row.data(), kToneRowSize), step); }

}  // namespace tone

}  // namespace quillmer
