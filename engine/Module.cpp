#include "engine/Module.h"

#include "engine/Engine.h"
#include "engine/OutputNames.h"
#include "engine/Placement.h"

namespace quillmer {

Module::Module(ModuleTypeId type, std::span<const InputSpec> inputs)
    : InputBus(inputs.size()),
      InputPosition(inputs.size()),
      type_(type),
      inputs_(inputs),
      rows_(static_cast<int>(inputs.size())) {
    for (size_t k = 0; k < inputs.size(); ++k) {
        InputBus[k] = inputs[k].preset;
        InputPosition[k] = inputs[k].preset;  // Off, On and mid stand at positions 0, 1, 2
    }
}

void Module::setPriority(int16_t value) {
    if (value == priority_) return;
    priority_ = value;
    if (passListsStale_) *passListsStale_ = true;
}

const std::string& Module::storedName(int snapshot, int input) const {
    static const std::string kNever;
    return names_ ? names_->text(stored(snapshot, input).name) : kNever;
}

void Module::attach(Engine& engine, int16_t index) {
    Index = index;
    bus_ = &engine.bus;
    names_ = &engine.names;
    passListsStale_ = &engine.passListsStale;
    engine.passListsStale = true;
    const int16_t family = info().busFamily;
    OutBus = family == kNoBusFamily ? BusId{0} : busIdOf(family, index);
    seenTop_ = Top;
    seenLeft_ = Left;
    onAttach(engine);
}

void Module::presetInputsInAllSnapshots(OutputNames& names) {
    for (int k = 0; k < inputCount(); ++k) {
        const BusId preset = inputs_[static_cast<size_t>(k)].preset;
        if (preset == sysbus::Off) continue;
        rows_.setInAll(k, StoredInput{names.sortedNameId(preset), preset});
    }
}

void Module::followMove(Engine& engine) {
    if (engine.options.autoAlign) {
        Left = snapToGrid(Left);
        Top = snapToGrid(Top);
    }
    seenTop_ = Top;
    seenLeft_ = Left;
    if (engine.pageFlip) {
        const int target = pageEdgeTarget(engine.CurrentPage(), Top, Left, Width, Height,
                                          engine.frameWidth, engine.frameHeight);
        if (target >= 0) {
            Page = static_cast<int16_t>(target);
            engine.showPage(target);
        }
    }
}

void Module::PatchChange(Engine& engine) {
    const int s = engine.CurrentSnapshot;
    for (int k = 0; k < inputCount(); ++k) {
        const uint16_t position = stored(s, k).position;
        InputPosition[static_cast<size_t>(k)] = position;
        InputBus[static_cast<size_t>(k)] = engine.names.sortedId(position);
    }
    recallSettings(s);
    forgetInputs();
    viewChanged = true;
}

void Module::PatchStore(Engine& engine) {
    const int s = engine.CurrentSnapshot;
    const size_t n = InputPosition.size();
    if (n > 0) {
        std::vector<StoredInput> row(n);
        for (size_t k = 0; k < n; ++k)
            row[k] = StoredInput{engine.names.sortedNameId(InputPosition[k]), InputPosition[k]};
        rows_.setRow(s, row);
    }
    storeSettings(s);
}

void Module::ResetInputs(const OutputNames& names) {
    for (uint16_t& position : InputPosition) position = names.mapPosition(position);
    viewChanged = true;
}

void Module::connect(int k, uint16_t position, const OutputNames& names) {
    InputPosition.at(static_cast<size_t>(k)) = position;
    InputBus.at(static_cast<size_t>(k)) = names.sortedId(position);
    viewChanged = true;
}

const std::string& Module::inputCaption(int k, const OutputNames& names) const {
    return names.sortedName(InputPosition.at(static_cast<size_t>(k)));
}

void Module::resolveStoredNames(const OutputNames& names, int snapshotCount) {
    const NameId first = names.sortedNameId(0);
    rows_.resolveFirst(std::min(snapshotCount, kSnapshotCount), [&](std::span<StoredInput> row) {
        bool changed = false;
        for (StoredInput& in : row) {
            const int position = names.sortedPosition(in.name);
            const StoredInput resolved = position >= 0 ? StoredInput{in.name, static_cast<uint16_t>(position)}
                                                       : StoredInput{first, 0};
            if (resolved != in) {
                in = resolved;
                changed = true;
            }
        }
        return changed;
    });
}

// The per-snapshot block after the names holds each input's position in the sorted output
// list (the stored InputPositions that PatchChange turns into bus ids), not the bus id that
// the block is named for: kept so on purpose. On load the names decide and the positions are
// rewritten from them.
void Module::writeBody(ByteWriter& out, const OutputNames& names) const {
    // Each distinct row is encoded once, then copied for every snapshot that holds it.
    const size_t distinct = rows_.distinctRows();
    std::vector<ByteWriter> nameBlocks(distinct), positionBlocks(distinct);
    for (size_t r = 0; r < distinct; ++r) {
        for (const StoredInput& in : rows_.distinctRow(r)) {
            nameBlocks[r].rawStr(names.cp1252(in.name));
            positionBlocks[r].u16(in.position);
        }
    }
    if (distinct > 0) {  // a type without inputs has no rows
        for (int s = 0; s < kSnapshotCount; ++s) out.raw(nameBlocks[rows_.rowIndex(s)].bytes());
        for (int s = 0; s < kSnapshotCount; ++s) out.raw(positionBlocks[rows_.rowIndex(s)].bytes());
    }
    writeFields(out);
}

void Module::readBody(ByteReader& in, OutputNames& names) {
    names_ = &names;
    const size_t n = static_cast<size_t>(inputCount());
    std::vector<StoredInput> rows(kSnapshotCount * n);
    // A snapshot mostly holds what the one before it held: compare before looking up.
    for (size_t i = 0; i < rows.size(); ++i) {
        const std::string_view raw = in.rawStr();
        rows[i].name = i >= n && raw == names.cp1252(rows[i - n].name) ? rows[i - n].name : names.internCp1252(raw);
    }
    for (StoredInput& entry : rows) entry.position = in.u16();
    rows_.assign(rows);
    readFields(in);
}

}  // namespace quillmer
