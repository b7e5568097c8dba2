#include "modules/processors/TableModules.h"

#include <algorithm>
#include <cstdlib>

#include "engine/Cp1252.h"
#include "engine/Engine.h"
#include "tables/ScaleFit.h"

namespace quillmer {

namespace {
const ModuleTypeId kToneTblId = *typeIdByName("ToneTbl");
const ModuleTypeId kTablaId = *typeIdByName("Tabla");
const ModuleTypeId kTFitId = *typeIdByName("TFit");
const ModuleTypeId kTWriteId = *typeIdByName("TWrite");
const ModuleTypeId kTNamesId = *typeIdByName("TNames");

std::string trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}
}  // namespace

// --- Qscale ---

Computed QscaleOp::compute(std::span<const int> in, const std::array<uint8_t, 0>&) {
    return {clampBus(static_cast<int>(fitToScale(in[0], in[1]))), false, false};
}

// --- ToneTbl ---

ToneTbl::ToneTbl() : SettingsModule<1>(kToneTblId, kInputs) {}

void ToneTbl::update(Engine& engine) {
    const int t = in(0);
    // A table load shows at once.
    if (t == table_ && !engine.tableLoadStrobe()) return;
    table_ = t;
    shownSteps_ = countsSteps();
    setOutput(engine.toneRow(t)[127] + (shownSteps_ ? 1 : 0));
    name_ = engine.toneTableName ? engine.toneTableName(t) : std::string();
    viewChanged = true;
}

// --- the general-table family ---

void GeneralTableModule::copyToFill(std::span<uint8_t> hold) const {
    const int t = std::max(table_, 0);
    for (size_t i = 0; i < hold.size() && i < kRowSteps; ++i)
        hold[i] = static_cast<uint8_t>(engine_ ? engine_->generalTableStep(t, static_cast<int>(i)) : 0);
}

void GeneralTableModule::UpdateSeq(std::span<const uint8_t> hold, int) {
    if (!engine_) return;
    const int t = std::max(table_, 0);
    for (size_t i = 0; i < hold.size() && i < kRowSteps; ++i) engine_->writeGeneralTableStep(t, static_cast<int>(i), hold[i]);
}

void GeneralTableModule::chooseTable(Engine& engine, int table) {
    const bool renamed = engine.tableLoadStrobe() &&
                         (engine.tableLoadValue() >= Engine::kAllTablesStrobe || engine.tableLoadValue() == table);
    if (table == table_ && !renamed) return;
    table_ = table;
    name_ = engine.generalTableName ? engine.generalTableName(table) : std::string();
    viewChanged = true;
}

// --- Tablx ---

Tablx::Tablx() : GeneralTableModule(kTablaId, kInputs) {}

void Tablx::update(Engine& engine) {
    chooseTable(engine, in(0));
    setOutput(engine.generalTableStep(table(), in(1)));
}

// --- TFit ---

TFit::TFit() : GeneralTableModule(kTFitId, kInputs) {}

int TFit::fit(std::span<const uint8_t, kRowSteps> row, int value) {
    int best = 0;
    int bound = 127;
    for (int s = 0; s < kRowSteps; ++s) {
        const int entry = row[static_cast<size_t>(s)];
        if (entry == value) return value;
        const int distance = std::abs(entry - value);
        if (distance < bound) {
            bound = distance;
            best = s;
        }
    }
    return row[static_cast<size_t>(best)];
}

void TFit::update(Engine& engine) {
    const int before = table();
    chooseTable(engine, in(0));
    const int v = in(1);
    if (v == value_ && table() == before && engine.generalTablesVersion() == version_) return;
    value_ = v;
    version_ = engine.generalTablesVersion();
    std::array<uint8_t, kRowSteps> row{};
    for (int s = 0; s < kRowSteps; ++s) row[static_cast<size_t>(s)] = static_cast<uint8_t>(engine.generalTableStep(table(), s));
    setOutput(fit(row, v));
}

void TFit::writeBody(ByteWriter& out, const OutputNames& names) const {
    for (uint8_t b : lead_) out.u8(b);
    Module::writeBody(out, names);
}

void TFit::readBody(ByteReader& in, OutputNames& names) {
    for (uint8_t& b : lead_) b = in.u8();
    Module::readBody(in, names);
}

void TFit::writeFields(ByteWriter& out) const {
    for (uint8_t b : spare_) out.u8(b);
}

void TFit::readFields(ByteReader& in) {
    for (uint8_t& b : spare_) b = in.u8();
}

// --- TWrite ---

TWrite::TWrite() : GeneralTableModule(kTWriteId, kInputs) {}

void TWrite::update(Engine& engine) {
    const int clock = in(0);
    const int s = in(1);
    chooseTable(engine, in(2));
    const int v = in(3);
    if (clock != 0 && (armed_ || clock == kTurbo)) {
        engine.writeGeneralTableStep(table(), s, v);
        armed_ = false;
    }
    if (clock == 0) armed_ = true;
    setOutput(engine.generalTableStep(table(), s));
    if (v != input_ || s != step_) {
        input_ = v;
        step_ = s;
        viewChanged = true;
    }
}

// --- TNames ---

TNames::TNames() : Module(kTNamesId, kInputs) {}

void TNames::setName(int slot, std::string_view text) {
    std::string bytes = utf8ToCp1252(text);
    if (bytes.size() > kNameLength) bytes.resize(kNameLength);
    names_[static_cast<size_t>(slot & 127)] = trimmed(cp1252ToUtf8(bytes));
    viewChanged = true;
}

void TNames::update(Engine&) {
    const int s = in(0) & 127;
    if (s == slot_) return;
    slot_ = s;
    std::string& name = names_[static_cast<size_t>(s)];
    name = trimmed(name);
    viewChanged = true;
}

void TNames::writeBody(ByteWriter& out, const OutputNames& names) const {
    for (const std::string& name : names_) out.fixed(name, kNameLength);
    Module::writeBody(out, names);
}

void TNames::readBody(ByteReader& in, OutputNames& names) {
    // The padding goes; writing pads again, so the bytes come back as they were.
    for (std::string& name : names_) {
        name = in.fixed(kNameLength);
        name.erase(name.find_last_not_of(' ') + 1);
    }
    Module::readBody(in, names);
}

void TNames::writeFields(ByteWriter& out) const {
    for (uint8_t b : spare_) out.u8(b);
}

void TNames::readFields(ByteReader& in) {
    for (uint8_t& b : spare_) b = in.u8();
}

}  // namespace quillmer
