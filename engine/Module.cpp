#include "engine/Module.h"

#include "engine/Engine.h"
#include "engine/OutputNames.h"
#include "engine/Placement.h"

namespace quillmer {

Module::Module(ModuleTypeId type, std::span<const InputSpec> inputs)
    : type_(type),
      inputs_(inputs),
      storedInputs_(static_cast<size_t>(kSnapshotCount) * inputs.size()) {
    InputBus.reserve(inputs.size());
    InputPosition.reserve(inputs.size());
    for (const InputSpec& spec : inputs) {
        InputBus.push_back(spec.preset);
        InputPosition.push_back(spec.preset);  // Off, On and mid stand at positions 0, 1, 2
    }
}

StoredInput& Module::stored(int snapshot, int input) {
    return storedInputs_.at(static_cast<size_t>(snapshot * inputCount() + input));
}

const StoredInput& Module::stored(int snapshot, int input) const {
    return storedInputs_.at(static_cast<size_t>(snapshot * inputCount() + input));
}

void Module::attach(Engine& engine, int16_t index) {
    Index = index;
    bus_ = &engine.bus;
    const int16_t family = info().busFamily;
    OutBus = family == kNoBusFamily ? BusId{0} : busIdOf(family, index);
    seenTop_ = Top;
    seenLeft_ = Left;
    onAttach(engine);
}

void Module::presetInputsInAllSnapshots(const OutputNames& names) {
    for (int k = 0; k < inputCount(); ++k) {
        const BusId preset = inputs_[static_cast<size_t>(k)].preset;
        if (preset == sysbus::Off) continue;
        for (int s = 0; s < kSnapshotCount; ++s) {
            StoredInput& in = stored(s, k);
            in.position = preset;
            in.name = names.sortedName(preset);
        }
    }
}

void Module::UpdateModule(Engine& engine) {
    if (Top != seenTop_ || Left != seenLeft_) {
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
    if (Enabled == 0) return;
    update(engine);
}

void Module::PatchChange(Engine& engine) {
    const int s = engine.CurrentSnapshot;
    for (int k = 0; k < inputCount(); ++k) {
        const uint16_t position = stored(s, k).position;
        InputPosition[static_cast<size_t>(k)] = position;
        InputBus[static_cast<size_t>(k)] = engine.names.sortedId(position);
    }
    recallSettings(s);
    viewChanged = true;
}

void Module::PatchStore(Engine& engine) {
    const int s = engine.CurrentSnapshot;
    for (int k = 0; k < inputCount(); ++k) {
        StoredInput& in = stored(s, k);
        in.position = InputPosition[static_cast<size_t>(k)];
        in.name = engine.names.sortedName(in.position);
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
    for (int s = 0; s < snapshotCount && s < kSnapshotCount; ++s) {
        for (int k = 0; k < inputCount(); ++k) {
            StoredInput& in = stored(s, k);
            const int position = names.sortedPosition(in.name);
            if (position >= 0) {
                in.position = static_cast<uint16_t>(position);
            } else {
                in.position = 0;
                in.name = names.SortedNameList().front();
            }
        }
    }
}

// The per-snapshot block after the names holds each input's position in the sorted output
// list (the stored InputPositions that PatchChange turns into bus ids), not the bus id that
// the block is named for: kept so on purpose. On load the names decide and the positions are
// rewritten from them.
void Module::writeBody(ByteWriter& out) const {
    for (int s = 0; s < kSnapshotCount; ++s)
        for (int k = 0; k < inputCount(); ++k) out.str(stored(s, k).name);
    for (int s = 0; s < kSnapshotCount; ++s)
        for (int k = 0; k < inputCount(); ++k) out.u16(stored(s, k).position);
    writeFields(out);
}

void Module::readBody(ByteReader& in) {
    for (int s = 0; s < kSnapshotCount; ++s)
        for (int k = 0; k < inputCount(); ++k) stored(s, k).name = in.str();
    for (int s = 0; s < kSnapshotCount; ++s)
        for (int k = 0; k < inputCount(); ++k) stored(s, k).position = in.u16();
    readFields(in);
}

}  // namespace quillmer
