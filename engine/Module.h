#pragma once
// One placed module: its record (head, stored connections per snapshot, the type's own
// fields) and its live state (input bus ids and positions, output cache, position cache).
// A type derives from Module, declares its inputs once as data, and implements update().
// Everything here needs the engine lock.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Constants.h"
#include "engine/InlineIds.h"
#include "engine/OutputBus.h"
#include "engine/RecordBytes.h"
#include "engine/SnapshotRows.h"

namespace quillmer {

class Engine;
class OutputNames;

// One input of a type, as its panel shows it.
struct InputSpec {
    std::string_view label;    // above the button, with its leading blank: " Divisor"
    std::string_view tip;
    BusId preset = sysbus::Off;  // Off, On or Mid: the system names whose position equals their id
};

// Stored priority values and the update pass each selects.
namespace priority {
constexpr int16_t First = 1;
constexpr int16_t Default = 0;
constexpr int16_t Late = 2;
constexpr int16_t Last = 3;
constexpr int16_t AbsClockA = 4;
constexpr int16_t AbsClockB = 5;
constexpr int16_t MidiInput = 6;
}  // namespace priority

// A module's first line of memory holds what a tick reads (flags, position check, bus,
// input ids); names, stored connections and geometry come after.
class alignas(64) Module {
public:
    Module(ModuleTypeId type, std::span<const InputSpec> inputs);
    virtual ~Module() = default;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // --- record head (Priority, below, too) ---
    int16_t Active = 0;    // -1 placed, 0 free slot
    int16_t Enabled = -1;  // 0: only tracks its position

private:
    int16_t priority_ = priority::Default;
    uint8_t lastOutput_ = 0;

public:
    // Set when the output or another shown value changed; the panel clears it after drawing.
    bool viewChanged = false;
    int32_t Top = 0;   // twips
    int32_t Left = 0;  // twips

private:
    int32_t seenTop_ = 0;
    int32_t seenLeft_ = 0;
    OutputBus* bus_ = nullptr;

public:
    BusId OutBus = 0;

private:
    uint32_t inputMemo_ = 0;  // see sameInputsAsLastUpdate

public:
    // --- live state ---
    InlineIds<6> InputBus;
    InlineIds<6> InputPosition;
    int16_t Index = 0;  // place in its type's arrays
    NameSlot OutSlot = 0;
    int16_t Page = 0;
    std::string Name;
    int32_t Width = 1800;   // panel size in twips, told by the panel; used for page-edge moves
    int32_t Height = 1200;

    int16_t priority() const { return priority_; }
    // The update pass (a priority value below); the engine's pass lists follow.
    void setPriority(int16_t value);

    ModuleTypeId type() const { return type_; }
    const TypeInfo& info() const { return typeInfo(type_); }
    int inputCount() const { return static_cast<int>(inputs_.size()); }
    const InputSpec& inputSpec(int k) const { return inputs_[static_cast<size_t>(k)]; }
    // The input behind button `row` of the panel's connection menu. Inputs are declared in
    // stored order; a type whose panel lists them in another order overrides this.
    virtual int menuInput(int row) const { return row; }
    uint8_t lastOutput() const { return lastOutput_; }

    // What snapshot `snapshot` stores for input k, and its name's text.
    StoredInput stored(int snapshot, int input) const { return rows_.get(snapshot, input); }
    const std::string& storedName(int snapshot, int input) const;
    const SnapshotRows& snapshotRows() const { return rows_; }

    // Called once when the instance is placed: output id, inputs at their presets.
    void attach(Engine& engine, int16_t index);
    // Presets of non-Off inputs into every snapshot (a new module only).
    void presetInputsInAllSnapshots(OutputNames& names);

    // One update: position tracking, then, when enabled, the type's own computation.
    void UpdateModule(Engine& engine) {
        if (moved()) followMove(engine);
        if (Enabled == 0) return;
        update(engine);
    }
    // The panel was moved since the last update.
    bool moved() const { return Top != seenTop_ || Left != seenLeft_; }
    // Snaps to the grid when asked and flips the page at an edge.
    void followMove(Engine& engine);
    // The type's computation (inputs read, output written on change). The engine calls it
    // through UpdateModule; a type marked final lets the pass call it directly.
    virtual void update(Engine& engine) = 0;

    // Recall snapshot `CurrentSnapshot` into the live state / store the live state there.
    void PatchChange(Engine& engine);
    void PatchStore(Engine& engine);
    // Re-label after the sorted list changed; InputBus stays as it is, deliberately.
    void ResetInputs(const OutputNames& names);
    // Connect input k to sorted position `position` (live fields only).
    void connect(int k, uint16_t position, const OutputNames& names);
    // The name the input's button shows.
    const std::string& inputCaption(int k, const OutputNames& names) const;
    // Looks every stored name up in the sorted list, for snapshots 0..count-1.
    void resolveStoredNames(const OutputNames& names, int snapshotCount);

    // True for a type whose logic isn't built yet: it is kept, shown and saved, but does nothing.
    virtual bool isPlaceholder() const { return false; }
    static constexpr std::string_view kPlaceholderNote =
        "This module type doesn't run yet in Quillmer: it keeps its place and settings and "
        "is saved with the patch, but its output stays as it is.";

    // The record after its head, as the module file stores it. The usual form: the input
    // names of every snapshot, their positions, then writeFields. A type laid out another way
    // overrides both. Names are interned in `names` as they are read.
    virtual void writeBody(ByteWriter& out, const OutputNames& names) const;
    virtual void readBody(ByteReader& in, OutputNames& names);
    // The type's own bytes of the module file, after the input names and positions of every
    // snapshot: per-snapshot settings, then per-module ones, at the exact size the file
    // layout gives the type.
    virtual void writeFields(ByteWriter& /*out*/) const {}
    virtual void readFields(ByteReader& /*in*/) {}
    // A type whose record starts with raw words instead of the usual head writes and reads
    // those words (and its name) in its body; the file leaves them alone.
    virtual bool writesOwnHead() const { return false; }
    // Bytes a layout keeps between the head's Left and Name (one whose leading raw block is
    // longer than the head).
    virtual void writeHeadTail(ByteWriter& /*out*/) const {}
    virtual void readHeadTail(ByteReader& /*in*/) {}
    // A type whose record keeps Top as an i16 with a word of its own beside it: that word.
    virtual std::optional<uint16_t> headWord() const { return std::nullopt; }
    virtual void setHeadWord(uint16_t /*word*/) {}

protected:
    // Called when the instance is placed or loaded, before its first update.
    virtual void onAttach(Engine& /*engine*/) {}
    // Per-snapshot settings of the type besides its inputs.
    virtual void recallSettings(int /*snapshot*/) {}
    virtual void storeSettings(int /*snapshot*/) {}

    uint8_t in(int k) const { return (*bus_)[InputBus[static_cast<size_t>(k)]]; }
    uint8_t busValue(BusId id) const { return (*bus_)[id]; }
    // Writes the output only when it changes.
    void setOutput(int value) {
        const auto v = static_cast<uint8_t>(value);
        if (v == lastOutput_) return;
        lastOutput_ = v;
        (*bus_)[OutBus] = v;
        viewChanged = true;
    }
    // For a type whose output is a pure function of its first `count` inputs (at most 3):
    // true when they hold the values they held at the last call, so that the computation,
    // which would write the same output, can be skipped.
    bool sameInputsAsLastUpdate(int count) {
        uint32_t packed = 1u << 31;  // never the initial 0
        for (int k = 0; k < count; ++k) packed |= static_cast<uint32_t>(in(k)) << (8 * k);
        if (packed == inputMemo_) return true;
        inputMemo_ = packed;
        return false;
    }
    // Forgets the last inputs: a setting the computation reads has changed.
    void forgetInputs() { inputMemo_ = 0; }

private:
    ModuleTypeId type_;
    std::span<const InputSpec> inputs_;
    SnapshotRows rows_;
    const OutputNames* names_ = nullptr;
    bool* passListsStale_ = nullptr;
};

// A type whose logic isn't built yet. It keeps its place, name and output slot, and its
// whole record as it was read, to be written back byte for byte.
class PlaceholderModule final : public Module {
public:
    explicit PlaceholderModule(ModuleTypeId type) : Module(type, {}) {}
    bool isPlaceholder() const override { return true; }
    std::vector<uint8_t> record;  // head included; empty for one made in this session
    void update(Engine&) override {}
};

}  // namespace quillmer
