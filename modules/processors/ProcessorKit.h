#pragma once
// What the small processors share: settings kept per snapshot as raw bytes, the rising-edge
// detector, the overflow light, the one update of the pure types (a row of data and a
// compute function per type), and the companion taps' choice of a master instance.
// Everything here needs the engine lock.

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Constants.h"
#include "engine/Module.h"
#include "engine/RecordBytes.h"

namespace quillmer {

constexpr int kStrobe = 127;

inline int clampBus(int v) { return std::clamp(v, 0, 127); }

// A float to a whole number, halves to even (the conversion the value boxes use too).
int roundToInt(double v);

// 0 to not zero, once per rise.
class RisingEdge {
public:
    bool rose(int value) {
        const bool high = value != 0;
        const bool r = high && !high_;
        high_ = high;
        return r;
    }

private:
    bool high_ = false;
};

// A module's own settings of each snapshot: W bytes per snapshot, snapshot after snapshot,
// after the input ids in the record. The live copy is what the computation reads; bytes
// nothing changed are written back as they were read.
template <size_t W>
class SettingsModule : public Module {
public:
    using Bytes = std::array<uint8_t, W>;
    static constexpr size_t kSettingBytes = W;

    void writeFields(ByteWriter& out) const override {
        for (uint8_t b : stored_) out.u8(b);
    }
    void readFields(ByteReader& in) override {
        for (uint8_t& b : stored_) b = in.u8();
        load(0);
    }
    const Bytes& settingBytes() const { return live_; }

protected:
    SettingsModule(ModuleTypeId type, std::span<const InputSpec> inputs, const Bytes& initial = {})
        : Module(type, inputs), live_(initial) {
        for (size_t s = 0; s < kSnapshotCount; ++s) std::copy(initial.begin(), initial.end(), stored_.begin() + static_cast<std::ptrdiff_t>(s * W));
    }
    void recallSettings(int snapshot) override {
        load(static_cast<size_t>(snapshot));
        viewChanged = true;
    }
    void storeSettings(int snapshot) override {
        std::copy(live_.begin(), live_.end(), stored_.begin() + static_cast<std::ptrdiff_t>(static_cast<size_t>(snapshot) * W));
    }
    // The live settings were replaced (recall or load).
    virtual void settingsChanged() {}

    int byteAt(size_t i) const { return live_[i]; }
    int wordAt(size_t i) const { return static_cast<int16_t>(live_[i] | (live_[i + 1] << 8)); }
    bool flagAt(size_t i) const { return live_[i] != 0; }
    // A panel edit: the computation sees it at the next update.
    void setByteAt(size_t i, int v) {
        const auto b = static_cast<uint8_t>(v);
        if (live_[i] == b) return;
        live_[i] = b;
        edited();
    }
    void setWordAt(size_t i, int v) {
        if (wordAt(i) == v) return;
        const auto u = static_cast<uint16_t>(static_cast<int16_t>(v));
        live_[i] = static_cast<uint8_t>(u & 0xFF);
        live_[i + 1] = static_cast<uint8_t>(u >> 8);
        edited();
    }
    // A switch: 1 for in; a byte read as any other non-zero value stays while the switch is in.
    void setFlagAt(size_t i, bool on) {
        if (flagAt(i) != on) setByteAt(i, on ? 1 : 0);
    }

private:
    void load(size_t snapshot) {
        std::copy_n(stored_.begin() + static_cast<std::ptrdiff_t>(snapshot * W), W, live_.begin());
        forgetInputs();
        settingsChanged();
    }
    void edited() {
        forgetInputs();
        viewChanged = true;
        settingsChanged();
    }
    std::array<uint8_t, kSnapshotCount * W> stored_{};
    Bytes live_{};
};

// What a pure type computes from its inputs and settings.
struct Computed {
    int value = 0;
    bool over = false;  // the overflow light
    bool hold = false;  // leave the output as it is
};

// A type whose output is a pure function of its inputs and settings: one row of data (Op)
// per type. Op gives kType, kInputs, kSettingBytes, optionally kInitial, and
//   static Computed compute(std::span<const int> in, const Bytes& settings).
template <class Op>
class Pure final : public SettingsModule<Op::kSettingBytes> {
    using Base = SettingsModule<Op::kSettingBytes>;
    static constexpr int kCount = static_cast<int>(std::size(Op::kInputs));

public:
    using Bytes = typename Base::Bytes;
    static constexpr auto& kInputs = Op::kInputs;

    Pure() : Base(typeId(), Op::kInputs, initial()) {}

    bool over() const { return over_; }
    int byteSetting(int i) const { return this->byteAt(static_cast<size_t>(i)); }
    int wordSetting(int i) const { return this->wordAt(static_cast<size_t>(i)); }
    // Panel gestures on the type's settings (the panel knows which byte is which).
    void setByteSetting(int i, int v) { this->setByteAt(static_cast<size_t>(i), v); }
    void setWordSetting(int i, int v) { this->setWordAt(static_cast<size_t>(i), v); }
    void setFlagSetting(int i, bool on) { this->setFlagAt(static_cast<size_t>(i), on); }
    // A bit button of a 7-bit mask in byte i.
    bool bit(int i, int b) const { return (byteSetting(i) >> b) & 1; }
    void toggleBit(int i, int b) { setByteSetting(i, (byteSetting(i) ^ (1 << b)) & 127); }

    void update(Engine&) override {
        if constexpr (kCount <= 3)
            if (this->sameInputsAsLastUpdate(kCount)) return;
        std::array<int, kCount> values;
        for (int k = 0; k < kCount; ++k) values[static_cast<size_t>(k)] = this->in(k);
        const Computed r = Op::compute(values, this->settingBytes());
        if (!r.hold) this->setOutput(r.value);
        if (r.over != over_) {
            over_ = r.over;
            this->viewChanged = true;
        }
    }

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName(Op::kType);
        return id;
    }
    static Bytes initial() {
        if constexpr (requires { Op::kInitial; })
            return Op::kInitial;
        else
            return Bytes{};
    }
    bool over_ = false;
};

// --- companion taps ---

// One placed instance a tap may follow.
struct MasterChoice {
    int16_t index = 0;
    std::string name;
};
// The placed instances of a type, in index order.
std::vector<MasterChoice> placedInstances(Engine& engine, ModuleTypeId type);
// The placed instance at `index`, or nullptr (none chosen, deleted, never placed).
Module* placedInstance(Engine& engine, ModuleTypeId type, int index);

// A tap's master: stored as instance index + 1 (0 is none), so a blank record follows
// nothing and the choice survives save, load and renumbered bus ids. MasterBytes is what
// the record gives it per snapshot (1 or 2), at offset 0 of the settings; a master whose
// index doesn't fit there can't be chosen.
template <size_t W, size_t MasterBytes>
class TapModule : public SettingsModule<W> {
public:
    static constexpr int kMaxStored = MasterBytes == 2 ? 32767 : 255;
    // The master's instance index, or -1 for none.
    int masterIndex() const {
        const int stored = MasterBytes == 2 ? this->wordAt(0) : this->byteAt(0);
        return stored - 1;
    }
    // The panel's list: the placed masters that can be chosen.
    std::vector<MasterChoice> masterChoices() const {
        std::vector<MasterChoice> list;
        if (engine_) list = placedInstances(*engine_, masterType_);
        std::erase_if(list, [](const MasterChoice& c) { return c.index + 1 > kMaxStored; });
        return list;
    }
    // Picks a master by instance index (-1, or one that can't be stored: none).
    void chooseMaster(int index) {
        const int stored = index < 0 || index + 1 > kMaxStored ? 0 : index + 1;
        if constexpr (MasterBytes == 2)
            this->setWordAt(0, stored);
        else
            this->setByteAt(0, stored);
    }

protected:
    TapModule(ModuleTypeId type, ModuleTypeId masterType, std::span<const InputSpec> inputs)
        : SettingsModule<W>(type, inputs), masterType_(masterType) {}
    void onAttach(Engine& engine) override { engine_ = &engine; }
    // The master, when it is placed.
    Module* master(Engine& engine) const { return placedInstance(engine, masterType_, masterIndex()); }
    // True when instances of the master type were added since the last look: the list changed.
    bool mastersGrew(Engine& engine);

private:
    ModuleTypeId masterType_;
    Engine* engine_ = nullptr;
    size_t seenSlots_ = 0;
};

size_t instanceSlots(Engine& engine, ModuleTypeId type);

template <size_t W, size_t MasterBytes>
bool TapModule<W, MasterBytes>::mastersGrew(Engine& engine) {
    const size_t count = instanceSlots(engine, masterType_);
    if (count == seenSlots_) return false;
    seenSlots_ = count;
    return true;
}

}  // namespace quillmer
